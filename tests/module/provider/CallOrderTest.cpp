// What one call does with the framework, in order, seen from the framework's side.
#include "CallBench.h"

#include "qel/QelException.h"
#include "qel/QelWindows.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;

std::vector<std::string> g_events;
bool g_hasMemory = true;

void Note(std::string event) {
    g_events.push_back(std::move(event));
}

/// Hears the provider's own lines, so that they stand among the other events.
class NotingListener final : public ITraceListener {
  public:
    NotingListener() { CTraceOutput::SetListener(this); }
    ~NotingListener() override { CTraceOutput::SetListener(nullptr); }
    void OnTrace(const TraceLine& line) noexcept override { Note("trace " + std::string(line.text)); }
};

/// One object for every part that the framework's objects play; notes what it is asked for.
class NotingObject final : public IWbemClassObject {
  public:
    NotingObject(std::string name, NotingObject* next) : m_Name(std::move(name)), m_Next(next) {}

    DWORD AddRef() noexcept override { return 2; }
    DWORD Release() noexcept override {
        Note("Release " + m_Name);
        return 0;
    }
    HRESULT Get(const char* /*name*/, WbemValue* /*value*/) const override { return 0; }
    HRESULT Put(const char* name, const WbemValue& /*value*/) override {
        Note(m_Name + " Put " + name);
        return 0;
    }
    HRESULT GetNames(std::vector<std::string>* /*names*/) const override { return 0; }
    HRESULT GetMethod(const char* name, long flags, IWbemClassObject** inSignature,
                      IWbemClassObject** outSignature) override {
        EXPECT_EQ(flags, 0);
        EXPECT_EQ(inSignature, nullptr);
        Note(m_Name + " GetMethod " + name);
        *outSignature = m_Next;
        return m_Result;
    }
    HRESULT SpawnInstance(long flags, IWbemClassObject** instance) override {
        EXPECT_EQ(flags, 0);
        Note(m_Name + " SpawnInstance");
        *instance = m_Next;
        return m_Result;
    }

    HRESULT m_Result = 0;

  private:
    std::string m_Name;
    NotingObject* m_Next;
};

class NotingManager final : public IWbemObjectManager {
  public:
    explicit NotingManager(NotingObject* definition) : m_Class(definition) {}
    DWORD AddRef() noexcept override { return 2; }
    DWORD Release() noexcept override { return 1; }
    HRESULT GetObject(const std::string& path, long flags, IWbemContext* context, IWbemClassObject** object,
                      void** callResult) override {
        EXPECT_EQ(flags, 0);
        EXPECT_EQ(context, nullptr);
        EXPECT_EQ(callResult, nullptr);
        Note("GetObject " + path);
        *object = m_Class;
        return 0;
    }

  private:
    NotingObject* m_Class;
};

class NotingSink final : public IWbemObjectSink {
  public:
    DWORD AddRef() noexcept override { return 2; }
    DWORD Release() noexcept override { return 1; }
    HRESULT Indicate(long count, IWbemClassObject** objects) override {
        EXPECT_EQ(count, 1);
        EXPECT_NE(objects[0], nullptr);
        Note("Indicate");
        if (m_Instead != nullptr) {
            objects[0] = m_Instead;
        }
        return 0;
    }
    HRESULT SetStatus(long /*flags*/, HRESULT /*status*/, BSTR /*text*/,
                      IWbemClassObject* /*object*/) override {
        Note("SetStatus");
        return 0;
    }

    IWbemClassObject* m_Instead = nullptr;  ///< Left in the place of what it is told, if anything.
};

class CallOrderTest : public testsupport::CallTest {
  protected:
    std::vector<std::string> EventsOf(const char* method, NotingObject* definition) {
        NotingManager manager(definition);
        m_Provider->SetObjectManager(&manager);
        const NotingListener listener;
        g_events.clear();
        std::string className = "another class";
        std::string methodName = method;
        m_Provider->ExecMethodAsync(className.data(), methodName.data(), 0, nullptr, nullptr, &m_Sink);
        return g_events;
    }

    NotingObject m_Instance{"instance", nullptr};
    NotingObject m_Signature{"signature", &m_Instance};
    NotingObject m_Class{"class", &m_Signature};
    NotingSink m_Sink;
};

TEST_F(CallOrderTest, OfAMethodOfItsOwn) {
    m_Tool.Uninstall();
    // What the framework answers is not asked for, only what it hands out.
    m_Class.m_Result = -1;
    m_Signature.m_Result = -1;
    std::vector<std::string> events = EventsOf("GetInfo", &m_Class);
    std::erase_if(events, [](const std::string& event) {
        return event.starts_with("trace ") && event.find("ExecMethodAsync") == std::string::npos;
    });
    EXPECT_THAT(
        events,
        ElementsAre("set_transrator", "trace CZORBALT_MngSrvRaid::ExecMethodAsync() [START]",
                    "ShowMessage CZORBALT_MngSrvRaid::ExecMethodAsync()|CZORBALT_MngSrvRaid::ExecMethodAsync",
                    "SysAllocString ZORBALT_MngSrvRaid", "GetObject ZORBALT_MngSrvRaid",
                    "class GetMethod GetInfo", "signature SpawnInstance", "instance Put ReturnValue",
                    "Indicate", "SetStatus", "Release instance", "Release signature", "Release class",
                    "SysFreeString ZORBALT_MngSrvRaid",
                    "trace CZORBALT_MngSrvRaid::ExecMethodAsync mr=0x000000a0",
                    "trace CZORBALT_MngSrvRaid::ExecMethodAsync() [END]"));
}

TEST_F(CallOrderTest, TheSinkIsTheOneToSayWhatIsReleasedInTheInstancesPlace) {
    m_Tool.Uninstall();
    NotingObject other{"other", nullptr};
    m_Sink.m_Instead = &other;
    const std::vector<std::string> events = EventsOf("GetInfo", &m_Class);
    EXPECT_THAT(events, Contains("Release other"));
    EXPECT_THAT(events, Not(Contains("Release instance")));
}

TEST_F(CallOrderTest, WithoutTheClassTheNameIsFreedBeforeTheStatusIsSet) {
    EXPECT_THAT(
        EventsOf("GetInfo", nullptr),
        ElementsAre("set_transrator", "trace CZORBALT_MngSrvRaid::ExecMethodAsync() [START]",
                    "ShowMessage CZORBALT_MngSrvRaid::ExecMethodAsync()|CZORBALT_MngSrvRaid::ExecMethodAsync",
                    "SysAllocString ZORBALT_MngSrvRaid", "GetObject ZORBALT_MngSrvRaid",
                    "SysFreeString ZORBALT_MngSrvRaid", "SetStatus"));
}

TEST_F(CallOrderTest, WithoutMemoryForTheNameNothingIsAskedForAndNobodyIsTold) {
    g_hasMemory = false;
    EXPECT_THROW(EventsOf("GetInfo", &m_Class), std::bad_alloc);
    g_hasMemory = true;
    EXPECT_EQ(g_events.back(), "SysAllocString ZORBALT_MngSrvRaid");
}

TEST_F(CallOrderTest, OfConstruction) {
    const NotingListener listener;
    g_events.clear();
    const CZORBALT_MngSrvRaid provider;
    EXPECT_THAT(g_events, ElementsAre("trace CZORBALT_MngSrvRaid::CZORBALT_MngSrvRaid [START]",
                                      "set_transrator", "trace CMSRAID_MngLib::CMSRAID_MngLib [START]",
                                      "trace CMSRAID_MngLib::CMSRAID_MngLib [END]",
                                      "trace CZORBALT_MngSrvRaid::CZORBALT_MngSrvRaid [END]"));
}

}  // namespace

// In the framework's place, so that they are heard.

void QelException::set_transrator() {
    Note("set_transrator");
}

void ShowMessage(const char* text, const char* caption) {
    Note(std::string("ShowMessage ") + text + "|" + caption);
}

BSTR SysAllocString(const char* text) {
    Note(std::string("SysAllocString ") + text);
    return g_hasMemory ? ::strdup(text) : nullptr;
}

void SysFreeString(BSTR text) {
    Note(std::string("SysFreeString ") + (text == nullptr ? "(null)" : text));
    std::free(text);
}
