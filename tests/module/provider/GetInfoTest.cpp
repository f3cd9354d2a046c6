#include "CallBench.h"

#include <filesystem>

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::Not;
using ::testing::StartsWith;
using testsupport::FakeLibrary;
using testsupport::ToolBench;

class GetInfoTest : public testsupport::CallTest {
  protected:
    void ExpectFailure(DWORD returnValue, const std::string& reason) {
        EXPECT_EQ(Call("GetInfo"), 0U);
        EXPECT_EQ(ReturnValue(), returnValue);
        EXPECT_FALSE(HasXml());
        EXPECT_THAT(Messages(), ElementsAre("MSGID_MNGSRV_RAID_0001_F " + reason));
        EXPECT_THAT(Failures(), Contains("CZORBALT_MngSrvRaid::GetInfo() Error[reason:" + reason + "]"));
        EXPECT_EQ(m_Library.ItemsAlive(), 0U);
        EXPECT_FALSE(IsLibraryOpen());
    }
};

TEST_F(GetInfoTest, TheToolIsRunForVersionCountAndThreeReportsAController) {
    AnswerEmptyReports(2);
    EXPECT_EQ(Call("GetInfo"), 0U);
    EXPECT_EQ(ReturnValue(), 0U);
    EXPECT_THAT(ToolBench::Runs(),
                ElementsAre("-v", "-ctrlinfo -aAll", "-ctrlinfo -a0", "-ldpdinfo -a0", "-ldpdinfo -a0",
                            "-pdinfo -a0", "-ctrlinfo -a1", "-ldpdinfo -a1", "-ldpdinfo -a1", "-pdinfo -a1"));
    EXPECT_THAT(m_Sink.m_Calls, ElementsAre("Indicate", "SetStatus 00000000"));
    EXPECT_THAT(Messages(), IsEmpty());
    EXPECT_FALSE(IsLibraryOpen());
}

TEST_F(GetInfoTest, ItemsOfAllReadersStandInTheOrderOfReading) {
    m_Tool.Answer("ctrlinfo_a0.txt", "RAID Controller : 0\nA : 1\n");
    m_Tool.Answer("ldpdinfo_a0.txt", "RG0\n");
    m_Tool.Answer("pdinfo_a0.txt", "PD0(GHS)\n");
    m_Tool.Answer("ctrlinfo_a1.txt", "RAID Controller : 1\nB : 2\n");
    m_Tool.Answer("ldpdinfo_a1.txt", "RG1\n");
    m_Tool.Answer("pdinfo_a1.txt", "PD1(GHS)\n");
    EXPECT_EQ(Call("GetInfo"), 0U);
    EXPECT_THAT(FakeLibrary::LastConversion(),
                ElementsAre("|Controller Information||TRUE", "Controller Information|A|1|TRUE",
                            "|Logical Drive Information||TRUE", "|Physical Drive Information||TRUE",
                            "|Controller Information||TRUE", "Controller Information|B|2|TRUE",
                            "|Logical Drive Information||TRUE", "|Physical Drive Information||TRUE"));
    EXPECT_EQ(std::get<std::string>(m_Sink.m_XmlData), "<fake items=\"8\"/>");
    EXPECT_EQ(m_Library.ItemsAlive(), 0U);
}

TEST_F(GetInfoTest, WithoutControllersTheDocumentIsThatOfAnEmptyList) {
    m_Tool.Answer("ctrlinfo_aAll.txt", "no controller here\n");
    EXPECT_EQ(Call("GetInfo"), 0U);
    EXPECT_EQ(std::get<std::string>(m_Sink.m_XmlData), "<fake items=\"0\"/>");
    EXPECT_THAT(ToolBench::Runs(), ElementsAre("-v", "-ctrlinfo -aAll"));
}

TEST_F(GetInfoTest, ACountThatIsNegativeInEightBitsReadsNoController) {
    std::string report;
    for (int line = 0; line < 200; ++line) {
        report += "RAID Controller : " + std::to_string(line) + "\n";
    }
    m_Tool.Answer("ctrlinfo_aAll.txt", report);
    EXPECT_EQ(Call("GetInfo"), 0U);
    EXPECT_EQ(ReturnValue(), 0U);
    EXPECT_THAT(ToolBench::Runs(), ElementsAre("-v", "-ctrlinfo -aAll"));
}

TEST_F(GetInfoTest, OnlyTheLowEightBitsOfTheCountArriveAtTheLoop) {
    std::string report;
    for (int line = 0; line < 257; ++line) {
        report += "RAID Controller : 0\n";
    }
    AnswerEmptyReports(1);
    m_Tool.Answer("ctrlinfo_aAll.txt", report);
    EXPECT_EQ(Call("GetInfo"), 0U);
    EXPECT_EQ(ToolBench::Runs().size(), 6U);
}

TEST_F(GetInfoTest, WithoutTheToolNeitherReaderNorLibraryNorAuthorityIsTouched) {
    m_Tool.Uninstall();
    m_Root.SetAppKey("secret");
    ExpectFailure(0xA0, "03");
    EXPECT_THAT(Trace(), ElementsAre("4 CZORBALT_MngSrvRaid::ExecMethodAsync() [START]",
                                     "4 CZORBALT_MngSrvRaid::GetInfo [START]", "2 VDK is not installed.",
                                     "4 CZORBALT_MngSrvRaid::FreeItemList [START]",
                                     "4 CZORBALT_MngSrvRaid::FreeItemList [END]",
                                     "4 CZORBALT_MngSrvRaid::FreeItemList [START]",
                                     "4 CZORBALT_MngSrvRaid::FreeItemList [END]",
                                     "2 CZORBALT_MngSrvRaid::GetInfo() Error[reason:03]",
                                     "0 MSGID_MNGSRV_RAID_0001_F 03", "4 CZORBALT_MngSrvRaid::GetInfo [END]",
                                     "1 CZORBALT_MngSrvRaid::ExecMethodAsync mr=0x000000a0",
                                     "4 CZORBALT_MngSrvRaid::ExecMethodAsync() [END]"));
}

TEST_F(GetInfoTest, ACallerWithoutTheConfiguredKeyIsRefused) {
    m_Root.SetAppKey("secret");
    ExpectFailure(0x11, "07");
    EXPECT_THAT(Failures(), Contains("Has not operating authority."));
    EXPECT_THAT(ToolBench::Runs(), IsEmpty());
    EXPECT_EQ(Call("GetInfo", {{"__AppKey", "wrong"}}), 0U);
    EXPECT_EQ(ReturnValue(), 0x11U);
}

TEST_F(GetInfoTest, ACallerWithTheConfiguredKeyIsLetThrough) {
    AnswerEmptyReports(1);
    m_Root.SetAppKey("secret");
    EXPECT_EQ(Call("GetInfo", {{"__AppKey", "secret"}}), 0U);
    EXPECT_EQ(ReturnValue(), 0U);
}

TEST_F(GetInfoTest, WithoutAConfiguredKeyEveryCallerIsLetThrough) {
    AnswerEmptyReports(1);
    EXPECT_EQ(Call("GetInfo"), 0U);
    EXPECT_EQ(ReturnValue(), 0U);
    EXPECT_EQ(Call("GetInfo", {{"__AppKey", "any"}}), 0U);
    EXPECT_EQ(ReturnValue(), 0U);
}

TEST_F(GetInfoTest, AKeyThatCannotBeReadLetsNobodyIn) {
    std::filesystem::create_directories(m_Root.Path() / "etc" / "app.key");
    EXPECT_EQ(Call("GetInfo"), 0x80041001U);
    EXPECT_EQ(ReturnValue(), 0x80000002U);
    EXPECT_THAT(ToolBench::Runs(), IsEmpty());
}

TEST_F(GetInfoTest, AFailedLoadIsNotFollowedByAnUnload) {
    m_Root.UseLibrary("/nowhere.so");
    ExpectFailure(0x80000001, "05");
    EXPECT_THAT(ToolBench::Runs(), ElementsAre("-v"));
    EXPECT_THAT(Trace(), Not(Contains("4 CMSRAID_MngLib::MngSrvLibUnload [START]")));
}

TEST_F(GetInfoTest, EveryLaterFailureIsFollowedByAnUnload) {
    m_Tool.Answer("any.do", "exit 3\n");
    ExpectFailure(0xA1, "01");
    EXPECT_THAT(Trace(), Contains("4 CMSRAID_MngLib::MngSrvLibUnload [START]").Times(1));
}

TEST_F(GetInfoTest, AFailedCountIsTheReadersFailure) {
    m_Tool.Answer("ctrlinfo_aAll.do", "exit 3\n");
    ExpectFailure(0xA1, "01");
    EXPECT_THAT(Failures(), Contains("CMSRAID_CtrlInfoGetter::GetCtrlNum is FAILED (re=000000a1)."));
}

TEST_F(GetInfoTest, AFailedVersionQueryIsNoFailure) {
    AnswerEmptyReports(1);
    m_Tool.Answer("v.do", "exit 3\n");
    EXPECT_EQ(Call("GetInfo"), 0U);
    EXPECT_EQ(ReturnValue(), 0U);
    EXPECT_THAT(Trace(), Contains("1 VDK Version is ."));
    EXPECT_THAT(ToolBench::Runs(), Contains("-pdinfo -a0"));
}

TEST_F(GetInfoTest, AVersionThatCanLeavesSmartDataOut) {
    AnswerEmptyReports(1);
    m_Tool.Answer("v.txt", "Product Version : 4.1\n");
    EXPECT_EQ(Call("GetInfo"), 0U);
    EXPECT_THAT(ToolBench::Runs(), Contains("-pdinfo -nosmart -a0"));
}

struct FailingReport {
    std::string name;
    std::string file;
    std::string text;
    std::string failure;
};

class FailingReaderTest : public GetInfoTest, public ::testing::WithParamInterface<FailingReport> {};

TEST_P(FailingReaderTest, AReaderThatFailsAtTheSecondControllerEndsTheCallWithoutADocument) {
    AnswerEmptyReports(2);
    m_Tool.Answer("ctrlinfo_a0.txt", "RAID Controller : 0\nA : 1\n");
    m_Tool.Answer(GetParam().file, GetParam().text);
    ExpectFailure(0x80000001, "06");
    EXPECT_THAT(Failures(), Contains(GetParam().failure));
    EXPECT_GT(m_Library.ItemsDeleted(), 2U);
}

INSTANTIATE_TEST_SUITE_P(
    EachReader, FailingReaderTest,
    ::testing::Values(FailingReport{"Controller", "ctrlinfo_a1.txt",
                                    "RAID Controller : 1\n### Controller Settings Information ###",
                                    "CMSRAID_CtrlInfoGetter::GetInfo is FAILED (re=80000001)."},
                      FailingReport{"LogicalDrive", "ldpdinfo_a1.txt", "RG0\n### General Information ###",
                                    "CMSRAID_LDInfoGetter::GetInfo is FAILED (re=80000001)."},
                      FailingReport{"PhysicalDrive", "pdinfo_a1.txt", "PD0(GHS)\nPD1\n",
                                    "CMSRAID_PDInfoGetter::GetInfo is FAILED (re=80000001)."}),
    [](const auto& report) { return report.param.name; });

TEST_F(GetInfoTest, AFailedConversionHasItsOwnReasonAndTracesZero) {
    AnswerEmptyReports(1);
    m_Library.SetConversion(0x1234, true);
    ExpectFailure(0xA1, "02");
    EXPECT_THAT(Failures(), IsSupersetOf({"Failed to convert XML format 00001234.",
                                          "Failed to convert XML format 00000000."}));
}

TEST_F(GetInfoTest, ARefusedInterfaceObjectIsAFailedConversion) {
    AnswerEmptyReports(1);
    m_Library.RefuseInterface();
    ExpectFailure(0xA1, "02");
}

TEST_F(GetInfoTest, ADocumentThatCannotBeStoredIsAFailure) {
    AnswerEmptyReports(1);
    CWbemRepository* const repository = CWbemRepository::Create();
    repository->DeclareClass({"ZORBALT_MngSrvRaid", {}, {{"GetInfo", {}, {}}}});
    m_Provider->SetObjectManager(repository);
    ExpectFailure(0x80000001, "08");
    EXPECT_THAT(Failures(),
                Contains("setParameterClassArrayToIWbemClassObject XmlData is FAILED (hr=80041002)."));
    repository->Release();
}

TEST_F(GetInfoTest, AnItemThatIsRefusedAnywhereIsAFailureAndLosesNothing) {
    m_Tool.Answer("ctrlinfo_a0.txt", "RAID Controller : 0\n### General Information ###\nA : 1\n");
    m_Tool.Answer("ldpdinfo_a0.txt", "RG0\nRG No. : 0\n>LD0(a,b,c)\n### General Information ###\nB : 1\n");
    m_Tool.Answer("pdinfo_a0.txt", "PD0(LD0)\n### General Information ###\nPD Status : ONLINE\n");
    ASSERT_EQ(Call("GetInfo"), 0U);
    const std::size_t items = FakeLibrary::LastConversion().size();
    ASSERT_GT(items, 15U);
    for (std::size_t refused = 1; refused <= items; ++refused) {
        m_Library.FailCreationsFrom(refused);
        ExpectFailure(0x80000001, "06");
    }
}

TEST_F(GetInfoTest, AnExceptionInAReaderClosesTheLibraryAndDeletesItsItems) {
    AnswerEmptyReports(1);
    m_Tool.Answer("ctrlinfo_a0.txt", "RAID Controller : 0\nA : 1\n");
    std::size_t calls = 0;
    m_Library.OnCreate([&calls] {
        if (++calls == 2) {
            throw std::bad_alloc();
        }
    });
    EXPECT_EQ(Call("GetInfo"), 0x80041001U);
    EXPECT_EQ(ReturnValue(), 0x80000002U);
    EXPECT_EQ(m_Library.ItemsAlive(), 0U);
    EXPECT_FALSE(IsLibraryOpen());
    EXPECT_THAT(Trace(), Not(Contains("4 CZORBALT_MngSrvRaid::FreeItemList [START]")));
    EXPECT_THAT(Trace(), Not(Contains("4 CZORBALT_MngSrvRaid::GetInfo [END]")));
    EXPECT_THAT(Trace(), Not(Contains("4 CMSRAID_MngLib::MngSrvLibUnload [START]")));
    EXPECT_THAT(Messages(), IsEmpty());
}

}  // namespace
