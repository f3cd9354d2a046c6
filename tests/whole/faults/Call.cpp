#include "Call.h"

#include "Fault.h"

#include "qel/portable/CTraceOutput.h"
#include "qel/portable/CWbemRepository.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <new>
#include <stdexcept>
#include <string_view>

namespace faults {
namespace {

constexpr const char* kClassName = "ZORBALT_MngSrvRaid";

/// Hears where the call is, and the reason of its failure; in memory of its own.
class Listener final : public ITraceListener {
  public:
    void OnTrace(const TraceLine& line) noexcept override {
        constexpr std::string_view kMessage = "MSGID_MNGSRV_RAID_0001_F";
        constexpr std::string_view kCommand = "execute vdkcli command.(";
        if (line.level == 0 && line.text.starts_with(kMessage)) {
            const std::string_view reason = line.text.substr(std::min(line.text.size(), kMessage.size() + 1));
            reason.copy(m_Reason.data(), m_Reason.size() - 1);
            ++m_Messages;
        } else if (line.text == "CZORBALT_MngSrvRaid::GetInfo [START]" ||
                   line.text == "CZORBALT_MngSrvRaid::GetPDInfo [START]") {
            g_place = Place::InMethod;
        } else if (line.text.starts_with(kCommand)) {
            g_isVersionQuery = line.text == "execute vdkcli command.(vdkcli -v)";
        }
    }

    std::array<char, 16> m_Reason{};
    int m_Messages = 0;
};

/// Keeps what it is told and shares the output instance.
class Sink final : public IWbemObjectSink {
  public:
    HRESULT Indicate(long count, IWbemClassObject** objects) override {
        ++m_Indicates;
        if (count == 1 && objects != nullptr && m_Output == nullptr) {
            m_Output = objects[0];
            m_Output->AddRef();
        }
        return WBEM_S_NO_ERROR;
    }
    HRESULT SetStatus(long /*flags*/, HRESULT status, BSTR /*text*/, IWbemClassObject* /*object*/) override {
        ++m_StatusesSet;
        m_Status = static_cast<DWORD>(status);
        return WBEM_S_NO_ERROR;
    }
    DWORD AddRef() noexcept override { return 2; }
    DWORD Release() noexcept override { return 1; }

    int m_Indicates = 0;
    int m_StatusesSet = 0;
    DWORD m_Status = WBEM_S_NO_ERROR;
    IWbemClassObject* m_Output = nullptr;
};

struct Ending {
    Outcome outcome;
    DWORD status;
    DWORD returnValue;
    std::string_view reason;
};
constexpr std::array<Ending, 8> kEndings = {{{Outcome::Success, 0, 0, ""},
                                             {Outcome::Exception, 0x80041001, 0x80000002, ""},
                                             {Outcome::Tool01, 0, 0xA1, "01"},
                                             {Outcome::Conversion02, 0, 0xA1, "02"},
                                             {Outcome::Tool03, 0, 0xA0, "03"},
                                             {Outcome::File04, 0, 0x80000001, "04"},
                                             {Outcome::Library05, 0, 0x80000001, "05"},
                                             {Outcome::Report06, 0, 0x80000001, "06"}}};

void Require(bool isDone, const char* what) {
    if (!isDone) {
        throw std::runtime_error(what);
    }
}

// The output instance as the caller finds it, which is then released.
void TakeOutput(Sink& sink, Observed& seen, std::optional<DWORD>& returnValue) {
    if (sink.m_Output == nullptr) {
        return;
    }
    WbemValue value;
    WbemValue document;
    sink.m_Output->Get("ReturnValue", &value);
    sink.m_Output->Get("XmlData", &document);
    if (const auto* const number = std::get_if<std::uint32_t>(&value)) {
        returnValue = *number;
    }
    if (const auto* const text = std::get_if<std::string>(&document)) {
        seen.document = *text;
    }
    if (sink.m_Output->Release() != 0) {
        seen.odd = "the output instance was not released";
    }
}

void Classify(Observed& seen, const Sink& sink, const Listener& listener, DWORD result,
              const std::optional<DWORD>& returnValue) {
    const auto ending = std::find_if(kEndings.begin(), kEndings.end(), [&](const Ending& known) {
        return known.status == result && known.returnValue == returnValue &&
               known.reason == listener.m_Reason.data();
    });
    if (sink.m_StatusesSet != 1 || sink.m_Status != result || sink.m_Indicates != 1) {
        seen.odd = "SetStatus or Indicate was not called once, or with another status than the result";
    } else if (!seen.odd.empty()) {
        return;
    } else if (result == WBEM_S_NO_ERROR && returnValue.value_or(0) != 0 && listener.m_Messages == 1 &&
               listener.m_Reason.front() == '\0') {
        seen.outcome = Outcome::NoReason;
    } else if (ending == kEndings.end() || (listener.m_Messages == 1) != !ending->reason.empty()) {
        std::array<char, 96> text{};
        std::snprintf(text.data(), text.size(), "status %08x, return value %08x, reason \"%s\" (%d messages)",
                      static_cast<unsigned>(result), static_cast<unsigned>(returnValue.value_or(0)),
                      listener.m_Reason.data(), listener.m_Messages);
        seen.odd = text.data();
    } else {
        seen.outcome = ending->outcome;
    }
}

}  // namespace

const char* NameOf(Outcome outcome) {
    constexpr std::array<const char*, kOutcomes> kNames = {
        "ok", "escaped", "exception", "not loaded", "died",      "01", "03",
        "04", "05",      "06",        "02",         "no reason", "odd"};
    return kNames.at(static_cast<std::size_t>(outcome));
}

Caller::Caller(const char* method, const Parameters& parameters) : m_Method(method) {
    IWbemClassObject* definition = nullptr;
    IWbemClassObject* signature = nullptr;
    Require(CWbemRepository::Process().GetObject(kClassName, 0, nullptr, &definition, nullptr) == 0 &&
                definition->GetMethod(method, 0, &signature, nullptr) == 0 &&
                signature->SpawnInstance(0, &m_Input) == 0,
            "the framework does not know the method");
    definition->Release();
    signature->Release();
    for (const auto& [name, value] : parameters) {
        Require(m_Input->Put(name, WbemValue(std::string(value))) == 0, name);
    }
    Require(m_Input->Put(CZORBALT_ServerService::APP_KEY_PROPERTY, WbemValue(std::string(kAppKey))) == 0,
            "the application key");
}

Observed Caller::Call(CZORBALT_ServerService& provider) {
    std::string className = kClassName;
    std::string methodName = m_Method;
    Sink sink;
    Listener listener;
    DWORD result = WBEM_S_NO_ERROR;
    bool hasEscaped = false;
    CTraceOutput::SetListener(&listener);
    g_place = Place::BeforeMethod;
    {
        const Window window;
        try {
            result =
                provider.ExecMethodAsync(className.data(), methodName.data(), 0, nullptr, m_Input, &sink);
        } catch (const std::bad_alloc&) {
            hasEscaped = true;
        }
        m_Mischief.duringCall(sink);
    }
    CTraceOutput::SetListener(nullptr);

    Observed seen;
    std::optional<DWORD> returnValue;
    TakeOutput(sink, seen, returnValue);
    if (!hasEscaped) {
        Classify(seen, sink, listener, result, returnValue);
    } else if (sink.m_StatusesSet == 0 && sink.m_Indicates == 0) {
        seen.outcome = Outcome::Escaped;
    } else {
        seen.odd = "an exception left the provider although the sink had been told something";
    }
    m_Mischief.afterCall(seen);
    return seen;
}

}  // namespace faults
