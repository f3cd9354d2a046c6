#include "provider/CZORBALT_MngSrvRaid.h"

#include "CallObjects.h"
#include "CancellationHold.h"
#include "MethodCall.h"
#include "itemconv/CMSRAID_MngLib.h"
#include "itemconv/DisplayItems.h"
#include "itemconv/MsraidTrace.h"
#include "readers/CMSRAID_CtrlInfoGetter.h"
#include "readers/CMSRAID_LDInfoGetter.h"
#include "readers/CMSRAID_PDInfoGetter.h"
#include "readers/CMSRAID_PDSMInfoGetter.h"
#include "report/CMSRAID_VDK.h"

#include "qel/CIWbemUtil.h"
#include "qel/CStringUtil.h"
#include "qel/QelException.h"

#include <array>
#include <atomic>
#include <exception>
#include <new>
#include <utility>

using msraid::kCategory;
using msraid::kException;
using msraid::kFailure;
using msraid::kOperation;
using msraid::kResult;
using msraid::kSuccess;
using msraid::OperationTrace;

namespace {

constexpr const char* kClassName = "ZORBALT_MngSrvRaid";
// Meant: it differs in letter case from the module's own file name.
constexpr const char* kLoggedFileName = "libqelp_Zorbalt_MngSrvRaid.so";
constexpr const char* kFailureMessage = "MSGID_MNGSRV_RAID_0001_F";

constexpr const char* kReasonToolNotInstalled = "03";
constexpr const char* kReasonNoAuthority = "07";
constexpr const char* kReasonParameter = "09";

// A wrapper lives on when its provider is gone: whatever a host does while it exits, it may still call. All
// of them hang together here, where they can be found, or they would count as lost.
struct Wrapper final : CMSRAID_MngLib {
    Wrapper* m_Before = nullptr;
};
std::atomic<Wrapper*> g_lastWrapper{nullptr};

CMSRAID_MngLib* Keep(Wrapper* wrapper) noexcept {
    wrapper->m_Before = g_lastWrapper.exchange(wrapper);
    return wrapper;
}

// Not a static object's destructor, which would come before the handlers that a host had registered earlier:
// this comes when the module is unloaded, with the process behind all of them. Without the wrappers' own
// destructor and its words in the trace.
[[gnu::destructor]] void FreeWrappers() {
    for (Wrapper* wrapper = g_lastWrapper; wrapper != nullptr;) {
        ::operator delete(std::exchange(wrapper, wrapper->m_Before));
    }
}

// The sink gets the address of the call's own pointer, which lives until the call is over.
void Deliver(IWbemClassObject*& outParams, IWbemObjectSink* sink, ResultCode returnValue) {
    if (outParams != nullptr) {
        CIWbemUtil::setReturnValueToIWbemClassObject(outParams, returnValue);
        if (sink != nullptr) {
            sink->Indicate(1, &outParams);
        }
    }
}

void Complete(IWbemObjectSink* sink, DWORD status) {
    if (sink != nullptr) {
        sink->SetStatus(0, static_cast<HRESULT>(status), nullptr, nullptr);
    }
}

// For handlers: what failed once may fail again, and the call must still come to its status.
void DeliverException(IWbemClassObject*& outParams, IWbemObjectSink* sink) noexcept {
    try {
        Deliver(outParams, sink, msraid::kDispatchException);
    } catch (...) {
        return;
    }
}

void TraceException(const char* where, const std::exception& exception) noexcept {
    std::string words;
    const char* text = exception.what();  // Without memory for its words they go as they are.
    msraid::LoseFailure([&] {
        words = CStringUtil::StringToTstring(text);
        text = words.c_str();
    });
    msraid::LoseFailure(
        [&] { CTraceUtility::WriteDebug(kCategory, kException, "%s [exception:%s]", where, text); });
}

void TraceUnknownException(const char* where) noexcept {
    msraid::LoseFailure(
        [&] { CTraceUtility::WriteDebug(kCategory, kException, "%s unknown exception", where); });
}

// The sink has its status by now: it is too late for an exception.
void TraceEnd(ResultCode methodResult, DWORD status) noexcept {
    msraid::LoseFailure([&] {
        CTraceUtility::WriteDebug(kCategory, kResult, "CZORBALT_MngSrvRaid::ExecMethodAsync mr=0x%08x",
                                  methodResult);
    });
    if (status != WBEM_S_NO_ERROR) {
        msraid::LoseFailure([&] {
            CTraceUtility::WriteDebug(kCategory, kFailure, "CZORBALT_MngSrvRaid::ExecMethodAsync hr=0x%08x",
                                      status);
        });
    }
    msraid::LoseFailure([] {
        CTraceUtility::WriteDebug(kCategory, kOperation, "CZORBALT_MngSrvRaid::ExecMethodAsync() [END]");
    });
}

}  // namespace

CZORBALT_MngSrvRaid::CZORBALT_MngSrvRaid() : CZORBALT_SysService("msraid", "zorbalt", "2.10") {
    const OperationTrace operation("CZORBALT_MngSrvRaid::CZORBALT_MngSrvRaid");
    QelException::set_transrator();
    try {
        writeDLLFileVersionLog(kLoggedFileName);
        m_pMngLib = Keep(new Wrapper);
    } catch (const std::exception& exception) {
        TraceException("CZORBALT_MngSrvRaid::CZORBALT_MngSrvRaid()", exception);
    } catch (...) {
        TraceUnknownException("CZORBALT_MngSrvRaid::CZORBALT_MngSrvRaid()");
    }
}

CZORBALT_MngSrvRaid::~CZORBALT_MngSrvRaid() {
    const CancellationHold hold;
    const OperationTrace operation("CZORBALT_MngSrvRaid::~CZORBALT_MngSrvRaid", std::nothrow);
}

DWORD CZORBALT_MngSrvRaid::ExecMethodAsync(char* className, char* methodName, long flags,
                                           IWbemContext* context, IWbemClassObject* inParams,
                                           IWbemObjectSink* sink) {
    const CancellationHold hold;
    QelException::set_transrator();
    CTraceUtility::WriteDebug(kCategory, kOperation, "CZORBALT_MngSrvRaid::ExecMethodAsync() [START]");
    ShowMessage("CZORBALT_MngSrvRaid::ExecMethodAsync()", "CZORBALT_MngSrvRaid::ExecMethodAsync");

    CallObjects objects;
    FetchObjects(objects, methodName, context);
    if (objects.m_Class == nullptr) {
        objects.Release();
        Complete(sink, WBEM_E_NOT_SUPPORTED);
        return WBEM_E_NOT_SUPPORTED;
    }

    ResultCode methodResult = kSuccess;
    DWORD status = WBEM_S_NO_ERROR;
    try {
        if (lstrcmpW("GetInfo", methodName) == 0) {
            methodResult = GetInfo(inParams, objects.m_OutInstance);
            Deliver(objects.m_OutInstance, sink, methodResult);
        } else if (lstrcmpW("GetPDInfo", methodName) == 0) {
            methodResult = GetPDInfo(inParams, objects.m_OutInstance);
            Deliver(objects.m_OutInstance, sink, methodResult);
        } else {
            status = CZORBALT_ServerService::ExecMethodAsync(className, methodName, flags, context, inParams,
                                                             sink);
        }
    } catch (const std::exception& exception) {
        TraceException("CZORBALT_MngSrvRaid::ExecMethodAsync()", exception);
        DeliverException(objects.m_OutInstance, sink);
        status = WBEM_E_FAILED;
    } catch (...) {
        TraceUnknownException("CZORBALT_MngSrvRaid::ExecMethodAsync()");
        DeliverException(objects.m_OutInstance, sink);
        status = WBEM_E_FAILED;
    }

    Complete(sink, status);
    objects.Release();
    TraceEnd(methodResult, status);
    return status;
}

// Leaves null what the framework does not give: the class, or the output of a method that the class lacks.
void CZORBALT_MngSrvRaid::FetchObjects(CallObjects& objects, const char* methodName,
                                       IWbemContext* context) const {
    objects.m_ClassName = SysAllocString(kClassName);
    if (objects.m_ClassName == nullptr) {
        throw std::bad_alloc();
    }
    const std::string className = objects.m_ClassName;
    if (IWbemObjectManager* const manager = GetObjectManager()) {
        manager->GetObject(className, 0, context, &objects.m_Class, nullptr);
    }
    if (objects.m_Class != nullptr) {
        objects.m_Class->GetMethod(methodName, 0, nullptr, &objects.m_OutSignature);
    }
    if (objects.m_OutSignature != nullptr) {
        objects.m_OutSignature->SpawnInstance(0, &objects.m_OutInstance);
    }
}

void CZORBALT_MngSrvRaid::FreeItemList(ItemList& items) {
    const OperationTrace operation("CZORBALT_MngSrvRaid::FreeItemList");
    msraid::DeleteItems(m_pMngLib, items);
    items.clear();
}

ResultCode CZORBALT_MngSrvRaid::GetInfo(IWbemClassObject* inParams, IWbemClassObject* outParams) {
    const OperationTrace operation("CZORBALT_MngSrvRaid::GetInfo");
    MethodCall call(m_pMngLib);
    ResultCode result = ReadServer(call, inParams);
    if (result == kSuccess) {
        result = call.Convert();
        if (result != kSuccess) {  // Meant: always 0; the library's own code is in the trace already.
            CTraceUtility::WriteDebug(kCategory, kFailure, "Failed to convert XML format %08x.",
                                      WBEM_S_NO_ERROR);
        }
    }
    if (result == kSuccess) {
        result = call.Store(outParams);
    }
    FreeItemList(call.m_Scratch);
    Finish(call, "CZORBALT_MngSrvRaid::GetInfo()", result);
    return result;
}

ResultCode CZORBALT_MngSrvRaid::GetPDInfo(IWbemClassObject* inParams, IWbemClassObject* outParams) {
    const OperationTrace operation("CZORBALT_MngSrvRaid::GetPDInfo");
    MethodCall call(m_pMngLib);
    HRESULT lastParameterStatus = WBEM_S_NO_ERROR;
    ResultCode result = ReadDrive(call, inParams, lastParameterStatus);
    if (result == kSuccess) {
        result = call.Convert();
        if (result != kSuccess) {  // Meant: a status that has nothing to do with it.
            CTraceUtility::WriteDebug(kCategory, kFailure, "Failed to convert XML format (hr=%08x).",
                                      static_cast<unsigned>(lastParameterStatus));
        }
    }
    if (result == kSuccess) {
        result = call.Store(outParams);
    }
    Finish(call, "CZORBALT_MngSrvRaid::GetPDInfo()", result);
    return result;
}

ResultCode CZORBALT_MngSrvRaid::CheckCaller(MethodCall& call, IWbemClassObject* inParams) const {
    if (!CMSRAID_VDK::IsVDKInstalled()) {
        CTraceUtility::WriteDebug(kCategory, kFailure, "VDK is not installed.");
        return call.Fail(kReasonToolNotInstalled, msraid::kToolNotInstalled);
    }
    // Without a configured key everybody may.
    if (!HasOperatingAuthority(inParams) && !GetOperatingAuthorityAppKey().empty()) {
        CTraceUtility::WriteDebug(kCategory, kFailure, "Has not operating authority.");
        return call.Fail(kReasonNoAuthority, msraid::kNoAuthority);
    }
    return kSuccess;
}

ResultCode CZORBALT_MngSrvRaid::ReadServer(MethodCall& call, IWbemClassObject* inParams) {
    ResultCode result = CheckCaller(call, inParams);
    if (result != kSuccess) {
        return result;
    }
    CMSRAID_CtrlInfoGetter controllers;
    CMSRAID_LDInfoGetter logicalDrives;
    CMSRAID_PDInfoGetter physicalDrives(CMSRAID_VDK::GetVDKVersion(CMSRAID_InfoGetter::GetRsltFilePath()));
    result = call.Load();
    if (result != kSuccess) {
        return result;
    }
    char count = 0;
    result = controllers.GetCtrlNum(&count);
    if (result != kSuccess) {
        CTraceUtility::WriteDebug(kCategory, kFailure,
                                  "CMSRAID_CtrlInfoGetter::GetCtrlNum is FAILED (re=%08x).", result);
        return call.FailAs(controllers.GetReason(), result);
    }
    const auto signedCount = static_cast<signed char>(count);
    for (signed char ctrlNo = 0; ctrlNo < signedCount && result == kSuccess; ++ctrlNo) {
        result = Run(controllers, ctrlNo, call, "CMSRAID_CtrlInfoGetter");
        if (result == kSuccess) {
            result = Run(logicalDrives, ctrlNo, call, "CMSRAID_LDInfoGetter");
        }
        if (result == kSuccess) {
            result = Run(physicalDrives, ctrlNo, call, "CMSRAID_PDInfoGetter");
        }
    }
    return result;
}

ResultCode CZORBALT_MngSrvRaid::Run(CMSRAID_InfoGetter& reader, long ctrlNo, MethodCall& call,
                                    const char* readerName) {
    const ResultCode result = reader.GetInfo(ctrlNo, m_pMngLib, call.m_Scratch);
    if (result != kSuccess) {
        CTraceUtility::WriteDebug(kCategory, kFailure, "%s::GetInfo is FAILED (re=%08x).", readerName,
                                  result);
        return call.FailAs(reader.GetReason(), result);
    }
    call.m_Items.splice(call.m_Items.end(), call.m_Scratch);
    return kSuccess;
}

ResultCode CZORBALT_MngSrvRaid::ReadDrive(MethodCall& call, IWbemClassObject* inParams,
                                          HRESULT& lastParameterStatus) {
    ResultCode result = CheckCaller(call, inParams);
    if (result != kSuccess) {
        return result;
    }
    const CMSRAID_LDInfoGetter logicalDrives;  // Not used; its lines belong to the trace of this method.
    CMSRAID_PDSMInfoGetter drive;
    result = call.Load();
    if (result != kSuccess) {
        return result;
    }
    constexpr std::array<const char*, 3> kParameters = {"CtrlNo", "EnclNo", "PDNo"};
    std::array<std::string, kParameters.size()> texts;
    for (std::size_t parameter = 0; parameter < kParameters.size(); ++parameter) {
        lastParameterStatus =
            CIWbemUtil::getStringFromIWbemClassObject(inParams, kParameters[parameter], &texts[parameter]);
        if (lastParameterStatus < 0) {
            CTraceUtility::WriteDebug(kCategory, kFailure,
                                      "getStringFromIWbemClassObject %s is FAILED (hr=%08x).",
                                      kParameters[parameter], static_cast<unsigned>(lastParameterStatus));
            return call.Fail(kReasonParameter, msraid::kGeneralFailure);
        }
    }
    const long pdNo = CStringUtil::TStringToNumber(texts[2]);
    const long enclNo = CStringUtil::TStringToNumber(texts[1]);
    const long ctrlNo = CStringUtil::TStringToNumber(texts[0]);
    result = drive.GetInfo(ctrlNo, enclNo, pdNo, m_pMngLib, call.m_Items);
    if (result != kSuccess) {
        // Meant: the message names the reader that this one extends.
        CTraceUtility::WriteDebug(kCategory, kFailure, "CMSRAID_PDInfoGetter::GetInfo is FAILED (re=%08x).",
                                  result);
        return call.FailAs(drive.GetReason(), result);
    }
    return kSuccess;
}

void CZORBALT_MngSrvRaid::Finish(MethodCall& call, const char* methodName, ResultCode result) {
    FreeItemList(call.m_Items);
    call.Unload();
    if (result != kSuccess) {
        CTraceUtility::WriteDebug(kCategory, kFailure, "%s Error[reason:%s]", methodName,
                                  call.Reason().c_str());
        CTraceUtility::WriteTrace(kCategory, kFailureMessage, call.Reason().c_str());
    }
}
