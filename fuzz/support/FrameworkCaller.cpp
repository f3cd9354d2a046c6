#include "FrameworkCaller.h"

#include "InstallRoots.h"
#include "Property.h"
#include "provider/CZORBALT_MngSrvRaid.h"

#include "qel/CTraceUtility.h"
#include "qel/portable/CWbemRepository.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <variant>

namespace fuzzing {
namespace {

constexpr const char* kClass = "ZORBALT_MngSrvRaid";

CallResult* g_result = nullptr;  // of the call that is going on

class Sink final : public IWbemObjectSink {
  public:
    HRESULT Indicate(long count, IWbemClassObject** objects) override {
        Require(count == 1 && g_result->statuses == 0, "one result comes before the status");
        ++g_result->indications;
        WbemValue value;
        Require(objects[0]->Get("ReturnValue", &value) == 0, "a result has a return value");
        g_result->returnValue = std::get<std::uint32_t>(value);
        objects[0]->Get("XmlData", &value);
        g_result->hasDocument = std::holds_alternative<std::string>(value);
        g_result->document = g_result->hasDocument ? std::get<std::string>(value) : "";
        return 0;
    }
    HRESULT SetStatus(long /*flags*/, HRESULT status, BSTR /*text*/, IWbemClassObject* /*object*/) override {
        ++g_result->statuses;
        g_result->status = static_cast<DWORD>(status);
        return 0;
    }
    DWORD AddRef() noexcept override { return 2; }
    DWORD Release() noexcept override { return 1; }
};

struct Releaser {
    void operator()(IWbemClassObject* object) const { object->Release(); }
};
using OwnedObject = std::unique_ptr<IWbemClassObject, Releaser>;

OwnedObject SpawnInput(const std::string& method) {
    IWbemClassObject* definition = nullptr;
    CWbemRepository::Process().GetObject(kClass, 0, nullptr, &definition, nullptr);
    const OwnedObject ownedDefinition(definition);
    IWbemClassObject* signature = nullptr;
    definition->GetMethod(method.c_str(), 0, &signature, nullptr);
    const OwnedObject ownedSignature(signature);
    IWbemClassObject* input = nullptr;
    signature->SpawnInstance(0, &input);
    return OwnedObject(input);
}

}  // namespace

FrameworkCaller::FrameworkCaller(std::string method)
    : m_Method(std::move(method)), m_Provider(std::make_unique<CZORBALT_MngSrvRaid>()) {}

FrameworkCaller::~FrameworkCaller() = default;

CallResult FrameworkCaller::Call(const std::vector<std::string>& parameters, bool hasKey) {
    constexpr const char* kNames[] = {"CtrlNo", "EnclNo", "PDNo"};
    const OwnedObject input = SpawnInput(m_Method);
    for (std::size_t number = 0; number < std::min(parameters.size(), std::size(kNames)); ++number) {
        input->Put(kNames[number], WbemValue(parameters[number]));
    }
    if (hasKey) {
        input->Put(CZORBALT_ServerService::APP_KEY_PROPERTY, WbemValue(std::string(kKey)));
    }
    CallResult result;
    g_result = &result;
    Sink sink;
    std::string className = kClass;
    std::string methodName = m_Method;
    const DWORD status =
        m_Provider->ExecMethodAsync(className.data(), methodName.data(), 0, nullptr, input.get(), &sink);
    Require(status == result.status, "the sink is told the status that is returned");
    g_result = nullptr;
    return result;
}

}  // namespace fuzzing

// In the place of the framework's, which would have every other line of the trace formatted as well.
void CTraceUtility::WriteTrace(const char* category, const char* messageId, const char* text) {
    fuzzing::Require(
        category == std::string_view("msraid") && messageId == std::string_view("MSGID_MNGSRV_RAID_0001_F"),
        "the message is the module's");
    fuzzing::g_result->messages.emplace_back(text);
}
