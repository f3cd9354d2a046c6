#include "calls/MethodCall.h"

#include "WbemPointer.h"
#include "basics/Failure.h"

#include "qel/CIWbemUtil.h"
#include "qel/portable/CWbemRepository.h"

#include <atomic>
#include <exception>

namespace calls {
namespace {

constexpr const char* kClassName = "ZORBALT_MngSrvRaid";
constexpr const char* kReturnValue = "ReturnValue";
constexpr const char* kXmlData = "XmlData";

using ClassObject = WbemPointer<IWbemClassObject>;

/// Keeps the last output instance and the status of one call.
class ResultSink final : public IWbemObjectSink {
  public:
    HRESULT Indicate(long count, IWbemClassObject** objects) override {
        if (count > 0 && objects != nullptr) {
            m_Output = ClassObject::Share(objects[count - 1]);
        }
        return WBEM_S_NO_ERROR;
    }
    HRESULT SetStatus(long /*flags*/, HRESULT status, BSTR /*text*/, IWbemClassObject* /*object*/) override {
        m_Status = static_cast<DWORD>(status);
        return WBEM_S_NO_ERROR;
    }
    DWORD AddRef() noexcept override { return ++m_References; }
    DWORD Release() noexcept override {
        const DWORD left = --m_References;
        if (left == 0) {
            delete this;
        }
        return left;
    }

    [[nodiscard]] IWbemClassObject* Output() const { return m_Output.Get(); }
    [[nodiscard]] std::optional<DWORD> Status() const { return m_Status; }

  private:
    ~ResultSink() override = default;

    std::atomic<DWORD> m_References{1};
    ClassObject m_Output;
    std::optional<DWORD> m_Status;
};

void Require(HRESULT result, const std::string& what) {
    if (result < 0) {
        basics::FailSurroundings("the framework does not know " + what + " of the class " + kClassName +
                                 "; its class repository and the command do not fit together");
    }
}

const char* MethodName(const MethodRequest& request) {
    return request.drive ? "GetPDInfo" : "GetInfo";
}

ClassObject MakeInput(const MethodRequest& request) {
    ClassObject definition;
    Require(CWbemRepository::Process().GetObject(kClassName, 0, nullptr, definition.Place(), nullptr),
            "the definition");
    ClassObject signature;
    const std::string method = MethodName(request);
    Require(definition->GetMethod(method.c_str(), 0, signature.Place(), nullptr), "the method " + method);
    ClassObject input;
    Require(signature->SpawnInstance(0, input.Place()), "an input instance for " + method);
    const auto set = [&](const char* property, const std::string& text, const std::string& what) {
        if (text.empty() && request.leavesOutEmpty) {
            return;
        }
        Require(CIWbemUtil::setStringToIWbemClassObject(input.Get(), property, text), what);
    };
    if (request.drive) {
        set("CtrlNo", request.drive->controller, "the parameter CtrlNo");
        set("EnclNo", request.drive->enclosure, "the parameter EnclNo");
        set("PDNo", request.drive->slot, "the parameter PDNo");
    }
    if (request.appKey) {
        Require(CIWbemUtil::setStringToIWbemClassObject(input.Get(), CZORBALT_ServerService::APP_KEY_PROPERTY,
                                                        *request.appKey),
                "the application key");
    }
    return input;
}

std::optional<DWORD> ReadReturnValue(const IWbemClassObject& output) {
    WbemValue value;
    if (output.Get(kReturnValue, &value) < 0 || !std::holds_alternative<std::uint32_t>(value)) {
        return std::nullopt;
    }
    return std::get<std::uint32_t>(value);
}

std::optional<std::string> ReadDocument(IWbemClassObject* output) {
    std::string text;
    if (CIWbemUtil::getStringFromIWbemClassObject(output, kXmlData, &text) < 0) {
        return std::nullopt;
    }
    return text;
}

}  // namespace

MethodOutcome CallMethod(CZORBALT_ServerService& provider, const MethodRequest& request) {
    const ClassObject input = MakeInput(request);
    const WbemPointer sink(new ResultSink);
    std::string className = kClassName;
    std::string methodName = MethodName(request);
    MethodOutcome outcome;
    try {
        outcome.status = provider.ExecMethodAsync(className.data(), methodName.data(), 0, nullptr,
                                                  input.Get(), sink.Get());
    } catch (const std::exception& exception) {
        outcome.status = WBEM_E_FAILED;
        outcome.exception = exception.what();
        return outcome;
    } catch (...) {
        outcome.status = WBEM_E_FAILED;
        outcome.exception = "an exception of an unknown kind";
        return outcome;
    }
    if (outcome.status == WBEM_S_NO_ERROR) {
        outcome.status = sink->Status().value_or(WBEM_E_FAILED);
    }
    if (outcome.status == WBEM_S_NO_ERROR && sink->Output() != nullptr) {
        outcome.returnValue = ReadReturnValue(*sink->Output());
        if (outcome.returnValue == 0U) {
            outcome.document = ReadDocument(sink->Output());
        }
    }
    return outcome;
}

}  // namespace calls
