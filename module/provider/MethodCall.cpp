#include "MethodCall.h"

#include "itemconv/DisplayItems.h"
#include "itemconv/MsraidTrace.h"

#include "qel/CIWbemUtil.h"

#include <dlfcn.h>

#include <utility>

using msraid::kCategory;
using msraid::kFailure;
using msraid::kGeneralFailure;
using msraid::kSuccess;
using msraid::kToolOrXmlFailed;

namespace {

constexpr const char* kReasonConversion = "02";
constexpr const char* kReasonLibrary = "05";
constexpr const char* kReasonStore = "08";
constexpr const char* kXmlDataParameter = "XmlData";

}  // namespace

MethodCall::~MethodCall() {
    msraid::DeleteItems(m_Library, m_Scratch);
    msraid::DeleteItems(m_Library, m_Items);
    if (m_Handle != nullptr) {
        dlclose(m_Handle);
    }
}

ResultCode MethodCall::Load() {
    m_Handle = m_Library == nullptr ? nullptr : m_Library->Load();
    return m_Handle == nullptr ? Fail(kReasonLibrary, kGeneralFailure) : kSuccess;
}

void MethodCall::Unload() {
    if (m_Handle != nullptr) {
        m_Library->Unload(std::exchange(m_Handle, nullptr));
    }
}

ResultCode MethodCall::Convert() {
    return m_Library->XmlConvert(&m_Items, &m_Xml) ? kSuccess : Fail(kReasonConversion, kToolOrXmlFailed);
}

ResultCode MethodCall::Store(IWbemClassObject* outParams) {
    // Without an output instance there is nowhere to store the document, which is a failure to store it.
    const HRESULT status = outParams == nullptr
                               ? static_cast<HRESULT>(WBEM_E_INVALID_PARAMETER)
                               : CIWbemUtil::setStringToIWbemClassObject(outParams, kXmlDataParameter, m_Xml);
    if (status < 0) {
        // Meant: the message names another operation of the framework than the one called.
        CTraceUtility::WriteDebug(kCategory, kFailure,
                                  "setParameterClassArrayToIWbemClassObject %s is FAILED (hr=%08x).",
                                  kXmlDataParameter, static_cast<unsigned>(status));
        return Fail(kReasonStore, kGeneralFailure);
    }
    return kSuccess;
}

ResultCode MethodCall::Fail(const char* reason, ResultCode result) {
    m_Reason.insert(0, reason);
    return result;
}

ResultCode MethodCall::FailAs(const std::string& reason, ResultCode result) {
    m_Reason = reason;
    return result;
}
