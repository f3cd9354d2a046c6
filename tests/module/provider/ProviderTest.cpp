#include "CallBench.h"

#include "qel/CStringUtil.h"
#include "qel/QelException.h"
#include "qel/portable/CVersionLog.h"

#include <pthread.h>

#include <functional>
#include <new>
#include <stdexcept>
#include <utility>

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using testsupport::ToolBench;

/// Object managers that give what the framework's own never gives.
class FakeManager : public IWbemObjectManager {
  public:
    DWORD AddRef() noexcept override { return 2; }
    DWORD Release() noexcept override { return 1; }
    HRESULT GetObject(const std::string& path, long flags, IWbemContext* context, IWbemClassObject** object,
                      void** callResult) override {
        EXPECT_EQ(path, "ZORBALT_MngSrvRaid");
        EXPECT_EQ(flags, 0);
        EXPECT_EQ(context, nullptr);
        EXPECT_EQ(callResult, nullptr);
        return m_Answer(object);
    }
    std::function<HRESULT(IWbemClassObject**)> m_Answer;
};

std::function<void()> g_onVersionLog = [] {};
std::vector<CVersionLog::Entry> g_versionLog;
bool g_hasMemoryForTexts = true;

class ProviderTest : public testsupport::CallTest {
  protected:
    FakeManager m_Manager;
};

TEST_F(ProviderTest, ConstructionTracesItselfAndTheWrapper) {
    m_Trace.Clear();
    m_Provider = std::make_unique<CZORBALT_MngSrvRaid>();
    EXPECT_EQ(Trace()[0], "4 CZORBALT_MngSrvRaid::CZORBALT_MngSrvRaid [START]");
    EXPECT_EQ(Trace()[1], "4 CMSRAID_MngLib::CMSRAID_MngLib [START]");
    EXPECT_EQ(Trace()[2], "4 CMSRAID_MngLib::CMSRAID_MngLib [END]");
    EXPECT_EQ(Trace()[3], "4 CZORBALT_MngSrvRaid::CZORBALT_MngSrvRaid [END]");
}

TEST_F(ProviderTest, DestructionTracesItselfAndKeepsTheWrapper) {
    m_Trace.Clear();
    m_Provider.reset();
    EXPECT_THAT(Trace(), ElementsAre("4 CZORBALT_MngSrvRaid::~CZORBALT_MngSrvRaid [START]",
                                     "4 CZORBALT_MngSrvRaid::~CZORBALT_MngSrvRaid [END]"));
}

TEST_F(ProviderTest, TheVersionLogNamesTheModuleInItsOwnLetterCase) {
    const std::vector<CVersionLog::Entry>& entries = g_versionLog;
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].fileName, "libqelp_Zorbalt_MngSrvRaid.so");
    EXPECT_EQ(entries[0].category, "msraid");
    EXPECT_EQ(entries[0].vendor, "zorbalt");
    EXPECT_EQ(entries[0].version, "2.10");
}

TEST_F(ProviderTest, FreeItemListStandsInTheFourthSlot) {
    using FreeOperation = void (*)(CZORBALT_MngSrvRaid*, ItemList&);
    void** const slots = *reinterpret_cast<void***>(m_Provider.get());
    m_Trace.Clear();
    reinterpret_cast<FreeOperation>(slots[3])(m_Provider.get(), m_Items);
    EXPECT_THAT(Trace(), ElementsAre("4 CZORBALT_MngSrvRaid::FreeItemList [START]",
                                     "4 CZORBALT_MngSrvRaid::FreeItemList [END]"));
}

TEST_F(ProviderTest, FreeItemListWithoutALoadedLibraryOnlyEmptiesTheList) {
    ItemList items{m_Library.Wrapper()->CreateItemDisp("", "kept", "", "TRUE")};
    CItemDisp* const item = items.front();
    m_Provider->FreeItemList(items);
    EXPECT_TRUE(items.empty());
    EXPECT_EQ(m_Library.ItemsAlive(), 1U);
    m_Library.Wrapper()->DeleteItemDisp(item);
}

TEST_F(ProviderTest, AForeignMethodGoesToTheBaseAndStillEndsTheCall) {
    EXPECT_EQ(Call("GetWeather"), 0x8004102EU);
    EXPECT_THAT(m_Sink.m_Calls, ElementsAre("SetStatus 8004102e"));
    EXPECT_THAT(Trace(), ElementsAre("4 CZORBALT_MngSrvRaid::ExecMethodAsync() [START]",
                                     "1 CZORBALT_MngSrvRaid::ExecMethodAsync mr=0x00000000",
                                     "2 CZORBALT_MngSrvRaid::ExecMethodAsync hr=0x8004102e",
                                     "4 CZORBALT_MngSrvRaid::ExecMethodAsync() [END]"));
}

TEST_F(ProviderTest, MethodNamesAreComparedExactly) {
    for (const char* const name : {"getinfo", "GetInfo ", "GetPDInfo2", ""}) {
        EXPECT_EQ(Call(name), 0x8004102EU) << name;
    }
}

TEST_F(ProviderTest, AMethodNameThatIsNullGoesToTheBase) {
    EXPECT_EQ(m_Provider->ExecMethodAsync(nullptr, nullptr, 0, nullptr, nullptr, &m_Sink), 0x8004102EU);
    EXPECT_THAT(m_Sink.m_Calls, ElementsAre("SetStatus 8004102e"));
}

TEST_F(ProviderTest, WithoutASinkACallEndsAllTheSame) {
    std::string name = "GetInfo";
    m_Tool.Uninstall();
    EXPECT_EQ(m_Provider->ExecMethodAsync(nullptr, name.data(), 0, nullptr, nullptr, nullptr), 0U);
    EXPECT_THAT(Trace(), Contains("1 CZORBALT_MngSrvRaid::ExecMethodAsync mr=0x000000a0"));
    EXPECT_EQ(m_Provider->ExecMethodAsync(nullptr, nullptr, 0, nullptr, nullptr, nullptr), 0x8004102EU);
    m_Provider->SetObjectManager(nullptr);
    EXPECT_EQ(m_Provider->ExecMethodAsync(nullptr, name.data(), 0, nullptr, nullptr, nullptr), 0x8004100CU);
}

TEST_F(ProviderTest, ACancellationOfTheThreadWaitsForTheEndOfTheCall) {
    int stateDuringCall = -1;
    int stateAfterCall = -1;
    m_Sink.m_OnIndicate = [&] { ::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &stateDuringCall); };
    m_Tool.Uninstall();
    Call("GetInfo");
    ::pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, &stateAfterCall);
    EXPECT_EQ(stateDuringCall, PTHREAD_CANCEL_DISABLE);
    EXPECT_EQ(stateAfterCall, PTHREAD_CANCEL_ENABLE);
}

TEST_F(ProviderTest, WithoutTheClassTheCallEndsAtOnce) {
    m_Manager.m_Answer = [](IWbemClassObject**) { return static_cast<HRESULT>(WBEM_E_NOT_FOUND); };
    m_Provider->SetObjectManager(&m_Manager);
    EXPECT_EQ(Call("GetInfo"), 0x8004100CU);
    EXPECT_THAT(m_Sink.m_Calls, ElementsAre("SetStatus 8004100c"));
    EXPECT_THAT(Trace(), ElementsAre("4 CZORBALT_MngSrvRaid::ExecMethodAsync() [START]"));
}

TEST_F(ProviderTest, WithoutAnObjectManagerTheCallEndsAsWithoutTheClass) {
    m_Provider->SetObjectManager(nullptr);
    EXPECT_EQ(Call("GetInfo"), 0x8004100CU);
}

TEST_F(ProviderTest, AMethodThatTheClassLacksIsSurvivedAndNeverASuccess) {
    CWbemRepository* const repository = CWbemRepository::Create();
    repository->DeclareClass({"ZORBALT_MngSrvRaid", {}, {}});
    m_Provider->SetObjectManager(repository);
    AnswerEmptyReports(1);
    EXPECT_EQ(Call("GetInfo"), 0U);
    EXPECT_THAT(m_Sink.m_Calls, ElementsAre("SetStatus 00000000"));
    EXPECT_THAT(Messages(), ElementsAre("MSGID_MNGSRV_RAID_0001_F 08"));
    EXPECT_THAT(Trace(), Contains("1 CZORBALT_MngSrvRaid::ExecMethodAsync mr=0x80000001"));
    repository->Release();
}

TEST_F(ProviderTest, AnExceptionOfTheObjectManagerGoesOnToTheFramework) {
    m_Manager.m_Answer = [](IWbemClassObject**) -> HRESULT { throw std::bad_alloc(); };
    m_Provider->SetObjectManager(&m_Manager);
    EXPECT_THROW(Call("GetInfo"), std::bad_alloc);
    EXPECT_THAT(m_Sink.m_Calls, IsEmpty());
}

TEST_F(ProviderTest, AFailedMethodStillHasStatusZeroAndIsIndicated) {
    m_Tool.Uninstall();
    EXPECT_EQ(Call("GetInfo"), 0U);
    EXPECT_THAT(m_Sink.m_Calls, ElementsAre("Indicate", "SetStatus 00000000"));
    EXPECT_EQ(ReturnValue(), 0xA0U);
    EXPECT_FALSE(HasXml());
}

TEST_F(ProviderTest, AnExceptionOfAMethodBecomesAStatusAndAReturnValue) {
    m_Tool.Answer("v.txt", "Product Version :\n");
    EXPECT_EQ(Call("GetInfo"), 0x80041001U);
    EXPECT_THAT(m_Sink.m_Calls, ElementsAre("Indicate", "SetStatus 80041001"));
    EXPECT_EQ(ReturnValue(), 0x80000002U);
    ASSERT_EQ(m_Trace.Texts(8).size(), 1U);
    EXPECT_THAT(
        m_Trace.Texts(8)[0],
        ::testing::StartsWith("CZORBALT_MngSrvRaid::ExecMethodAsync() [exception:basic_string::substr"));
    const std::vector<std::string> lines = Trace();
    EXPECT_THAT(std::vector<std::string>(lines.end() - 3, lines.end()),
                ElementsAre("1 CZORBALT_MngSrvRaid::ExecMethodAsync mr=0x00000000",
                            "2 CZORBALT_MngSrvRaid::ExecMethodAsync hr=0x80041001",
                            "4 CZORBALT_MngSrvRaid::ExecMethodAsync() [END]"));
    EXPECT_THAT(Messages(), IsEmpty());
    m_ExpectedLeftFiles =
        m_Root.ResultFiles();  // The version query's file stays where its line is cut short.
    EXPECT_EQ(m_ExpectedLeftFiles.size(), 1U);
}

TEST_F(ProviderTest, AnExceptionOfTheSinkComesBehindTheMethodsResult) {
    m_Tool.Uninstall();
    m_Sink.m_OnIndicate = [first = true]() mutable {
        if (std::exchange(first, false)) {
            throw std::runtime_error("sink");
        }
    };
    EXPECT_EQ(Call("GetInfo"), 0x80041001U);
    EXPECT_THAT(m_Sink.m_Calls, ElementsAre("Indicate", "Indicate", "SetStatus 80041001"));
    EXPECT_EQ(ReturnValue(), 0x80000002U);
    EXPECT_THAT(Trace(), Contains("8 CZORBALT_MngSrvRaid::ExecMethodAsync() [exception:sink]"));
    EXPECT_THAT(Trace(), Contains("1 CZORBALT_MngSrvRaid::ExecMethodAsync mr=0x000000a0"));
}

TEST_F(ProviderTest, ASinkThatKeepsThrowingStillGetsItsStatus) {
    m_Tool.Uninstall();
    m_Sink.m_OnIndicate = [] { throw 42; };
    EXPECT_EQ(Call("GetInfo"), 0x80041001U);
    EXPECT_THAT(m_Sink.m_Calls, ElementsAre("Indicate", "Indicate", "SetStatus 80041001"));
    EXPECT_THAT(Trace(), Contains("8 CZORBALT_MngSrvRaid::ExecMethodAsync() unknown exception"));
}

TEST_F(ProviderTest, AnExceptionsWordsAreTracedAsTheyAreWhenMemoryEnds) {
    m_Sink.m_OnIndicate = [] {
        g_hasMemoryForTexts = false;
        throw std::runtime_error("no sink");
    };
    m_Tool.Uninstall();
    EXPECT_EQ(Call("GetInfo"), 0x80041001U);
    g_hasMemoryForTexts = true;
    EXPECT_THAT(Trace(), Contains("8 CZORBALT_MngSrvRaid::ExecMethodAsync() [exception:no sink]"));
}

TEST_F(ProviderTest, ACallAfterAnExceptionWorks) {
    m_Tool.Answer("v.txt", "Product Version :\n");
    EXPECT_EQ(Call("GetInfo"), 0x80041001U);
    m_ExpectedLeftFiles = m_Root.ResultFiles();
    m_Tool.Answer("v.txt", "Product Version : 3.9\n");
    AnswerEmptyReports(1);
    EXPECT_EQ(Call("GetInfo"), 0U);
    EXPECT_EQ(ReturnValue(), 0U);
    EXPECT_TRUE(HasXml());
}

/// A provider whose construction failed half-way.
class UnluckyProviderTest : public ProviderTest {
  protected:
    ~UnluckyProviderTest() override {
        g_onVersionLog = [] {};
    }

    void MakeProviderWhen(std::function<void()> onVersionLog) {
        g_onVersionLog = std::move(onVersionLog);
        m_Provider.reset();
        m_Trace.Clear();
        m_Provider = std::make_unique<CZORBALT_MngSrvRaid>();
    }
};

TEST_F(UnluckyProviderTest, AStandardExceptionIsTracedAndConstructionEnds) {
    MakeProviderWhen([] { throw std::runtime_error("no log"); });
    EXPECT_THAT(Trace(), ElementsAre("4 CZORBALT_MngSrvRaid::CZORBALT_MngSrvRaid [START]",
                                     "8 CZORBALT_MngSrvRaid::CZORBALT_MngSrvRaid() [exception:no log]",
                                     "4 CZORBALT_MngSrvRaid::CZORBALT_MngSrvRaid [END]"));
}

TEST_F(UnluckyProviderTest, AnyOtherExceptionIsTracedAndConstructionEnds) {
    MakeProviderWhen([] { throw 42; });
    EXPECT_THAT(Trace(), ElementsAre("4 CZORBALT_MngSrvRaid::CZORBALT_MngSrvRaid [START]",
                                     "8 CZORBALT_MngSrvRaid::CZORBALT_MngSrvRaid() unknown exception",
                                     "4 CZORBALT_MngSrvRaid::CZORBALT_MngSrvRaid [END]"));
}

TEST_F(UnluckyProviderTest, WithoutAWrapperTheMethodsFailAsWithoutTheLibrary) {
    MakeProviderWhen([] { throw std::bad_alloc(); });
    for (const char* const method : {"GetInfo", "GetPDInfo"}) {
        EXPECT_EQ(Call(method), 0U);
        EXPECT_EQ(ReturnValue(), 0x80000001U);
        EXPECT_THAT(Messages(), ElementsAre("MSGID_MNGSRV_RAID_0001_F 05"));
        EXPECT_THAT(Trace(), Not(Contains(::testing::HasSubstr("CMSRAID_MngLib::"))));
    }
    ItemList items{nullptr, nullptr};
    m_Provider->FreeItemList(items);
    EXPECT_TRUE(items.empty());
}

}  // namespace

// In the framework's place, so that they can fail.
void CVersionLog::Add(Entry entry) {
    g_onVersionLog();
    if (g_versionLog.empty()) {
        g_versionLog.push_back(std::move(entry));
    }
}

std::string CStringUtil::StringToTstring(const char* text) {
    return g_hasMemoryForTexts ? text : throw std::bad_alloc();
}
