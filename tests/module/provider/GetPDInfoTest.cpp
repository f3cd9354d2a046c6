#include "CallBench.h"

#include <filesystem>

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using testsupport::FakeLibrary;
using testsupport::ToolBench;

const std::map<std::string, std::string> kDrive = {{"CtrlNo", "1"}, {"EnclNo", "252"}, {"PDNo", "3"}};

class GetPDInfoTest : public testsupport::CallTest {
  protected:
    GetPDInfoTest() { m_Tool.Answer("ldpdinfo_a1.txt", ""); }

    void ExpectFailure(const std::map<std::string, std::string>& parameters, DWORD returnValue,
                       const std::string& reason) {
        EXPECT_EQ(Call("GetPDInfo", parameters), 0U);
        EXPECT_EQ(ReturnValue(), returnValue);
        EXPECT_FALSE(HasXml());
        EXPECT_THAT(Messages(), ElementsAre("MSGID_MNGSRV_RAID_0001_F " + reason));
        EXPECT_THAT(Failures(), Contains("CZORBALT_MngSrvRaid::GetPDInfo() Error[reason:" + reason + "]"));
    }
};

TEST_F(GetPDInfoTest, TheToolIsRunForTheGroupsAndForTheDriveAlone) {
    m_Tool.Answer("pdinfo_pd252.3_a1.txt", "PD3(GHS)\n");
    EXPECT_EQ(Call("GetPDInfo", kDrive), 0U);
    EXPECT_EQ(ReturnValue(), 0U);
    EXPECT_THAT(ToolBench::Runs(), ElementsAre("-ldpdinfo -a1", "-pdinfo -pd[252:3] -a1"));
    EXPECT_THAT(FakeLibrary::LastConversion(), ElementsAre("|Physical Drive Information||TRUE"));
    EXPECT_EQ(std::get<std::string>(m_Sink.m_XmlData), "<fake items=\"1\"/>");
}

TEST_F(GetPDInfoTest, NothingButTheNumberOfAParameterReachesTheShell) {
    m_Tool.Answer("ldpdinfo_a0.txt", "");
    m_Tool.Answer("pdinfo_pd252.3_a1.txt", "");
    m_Tool.Answer("pdinfo_pd0.0_a0.txt", "");
    const std::string witness = (m_Root.Path() / "witness").string();
    const std::string command = "touch " + witness;
    Call("GetPDInfo",
         {{"CtrlNo", "1;" + command}, {"EnclNo", "252`" + command + "`"}, {"PDNo", "3|" + command}});
    Call("GetPDInfo",
         {{"CtrlNo", "$(" + command + ")"}, {"EnclNo", "]; " + command}, {"PDNo", "\n" + command}});
    EXPECT_THAT(ToolBench::Runs(), ElementsAre("-ldpdinfo -a1", "-pdinfo -pd[252:3] -a1", "-ldpdinfo -a0",
                                               "-pdinfo -pd[0:0] -a0"));
    EXPECT_FALSE(std::filesystem::exists(witness));
}

TEST_F(GetPDInfoTest, WithoutTheToolNoParameterIsRead) {
    m_Tool.Uninstall();
    ExpectFailure({}, 0xA0, "03");
    EXPECT_THAT(Trace(),
                ElementsAre("4 CZORBALT_MngSrvRaid::ExecMethodAsync() [START]",
                            "4 CZORBALT_MngSrvRaid::GetPDInfo [START]", "2 VDK is not installed.",
                            "4 CZORBALT_MngSrvRaid::FreeItemList [START]",
                            "4 CZORBALT_MngSrvRaid::FreeItemList [END]",
                            "2 CZORBALT_MngSrvRaid::GetPDInfo() Error[reason:03]",
                            "0 MSGID_MNGSRV_RAID_0001_F 03", "4 CZORBALT_MngSrvRaid::GetPDInfo [END]",
                            "1 CZORBALT_MngSrvRaid::ExecMethodAsync mr=0x000000a0",
                            "4 CZORBALT_MngSrvRaid::ExecMethodAsync() [END]"));
}

TEST_F(GetPDInfoTest, ACallerWithoutTheConfiguredKeyIsRefused) {
    m_Root.SetAppKey("secret");
    ExpectFailure(kDrive, 0x11, "07");
}

TEST_F(GetPDInfoTest, AFailedLoadReadsNoParameter) {
    m_Root.UseLibrary("/nowhere.so");
    ExpectFailure({}, 0x80000001, "05");
    EXPECT_THAT(Trace(), Not(Contains("4 CMSRAID_MngLib::MngSrvLibUnload [START]")));
}

class MissingParameterTest : public GetPDInfoTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(MissingParameterTest, AMissingParameterEndsTheReadingAndUnloadsTheLibrary) {
    std::map<std::string, std::string> parameters = kDrive;
    parameters.erase(GetParam());
    ExpectFailure(parameters, 0x80000001, "09");
    EXPECT_THAT(Failures(), ElementsAre("getStringFromIWbemClassObject " + std::string(GetParam()) +
                                            " is FAILED (hr=80041002).",
                                        "CZORBALT_MngSrvRaid::GetPDInfo() Error[reason:09]"));
    EXPECT_THAT(Trace(), Contains("4 CMSRAID_MngLib::MngSrvLibUnload [START]").Times(1));
    EXPECT_THAT(ToolBench::Runs(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(EachParameter, MissingParameterTest, ::testing::Values("CtrlNo", "EnclNo", "PDNo"),
                         [](const auto& name) { return std::string(name.param); });

TEST_F(GetPDInfoTest, OfSeveralMissingParametersTheFirstIsNamed) {
    ExpectFailure({}, 0x80000001, "09");
    EXPECT_EQ(Failures().front(), "getStringFromIWbemClassObject CtrlNo is FAILED (hr=80041002).");
}

TEST_F(GetPDInfoTest, AParameterThatIsNoNumberIsPassedOnAsTheConversionYieldsIt) {
    m_Tool.Answer("ldpdinfo_a0.txt", "");
    m_Tool.Answer("pdinfo_pd7.-1_a0.txt", "");
    static_cast<void>(Call("GetPDInfo", {{"CtrlNo", "none"}, {"EnclNo", "7th"}, {"PDNo", "-1"}}));
    EXPECT_THAT(m_Trace.Texts(1), Contains("execute vdkcli command.(vdkcli -pdinfo -pd[7:-1] -a0)"));
}

TEST_F(GetPDInfoTest, AReadersFailureIsTracedUnderTheNameOfTheOneItExtends) {
    m_Tool.Answer("pdinfo_pd252.3_a1.txt", "PD3\n");
    ExpectFailure(kDrive, 0x80000001, "06");
    EXPECT_THAT(Failures(), Contains("CMSRAID_PDInfoGetter::GetInfo is FAILED (re=80000001)."));
    EXPECT_EQ(m_Library.ItemsAlive(), 0U);
}

TEST_F(GetPDInfoTest, AFailedGroupReportIsTheReadersFailure) {
    m_Tool.Answer("ldpdinfo_a1.do", "exit 3\n");
    ExpectFailure(kDrive, 0xA1, "01");
    EXPECT_THAT(Failures(), Contains("CMSRAID_LDInfoGetter::GetPDRGNo is FAILED (hr=000000a1)."));
}

TEST_F(GetPDInfoTest, AFailedConversionTracesTheStatusOfTheLastParameter) {
    m_Tool.Answer("pdinfo_pd252.3_a1.txt", "PD3(GHS)\n");
    m_Library.SetConversion(0x1234, true);
    ExpectFailure(kDrive, 0xA1, "02");
    EXPECT_THAT(Failures(), Contains("Failed to convert XML format (hr=00000000)."));
}

TEST_F(GetPDInfoTest, ADocumentThatCannotBeStoredIsAFailure) {
    m_Tool.Answer("pdinfo_pd252.3_a1.txt", "PD3(GHS)\n");
    CWbemRepository* const repository = CWbemRepository::Create();
    repository->DeclareClass({"ZORBALT_MngSrvRaid", {}, {{"GetPDInfo", {}, {}}}});
    m_Provider->SetObjectManager(repository);
    ExpectFailure(kDrive, 0x80000001, "08");
    repository->Release();
}

TEST_F(GetPDInfoTest, ATableRowTooShortToCutLeavesByExceptionWithNothingLeftBehind) {
    m_Tool.Answer("pdinfo_pd252.3_a1.txt",
                  "PD3(GHS)\n### General Information ###\nInterface Type : SAS\n\n### SMART Information ###\n"
                  "Temperature : 30\n\nAttribute   Errors   Total\n---\nRead\n");
    EXPECT_EQ(Call("GetPDInfo", kDrive), 0x80041001U);
    EXPECT_EQ(ReturnValue(), 0x80000002U);
    EXPECT_FALSE(HasXml());
    EXPECT_EQ(m_Library.ItemsAlive(), 0U);
    EXPECT_GT(m_Library.ItemsDeleted(), 5U);
    EXPECT_THAT(m_Root.ResultFiles(), IsEmpty());
    EXPECT_THAT(Trace(), Not(Contains("4 CZORBALT_MngSrvRaid::GetPDInfo [END]")));

    m_Tool.Answer("pdinfo_pd252.3_a1.txt", "PD3(GHS)\n");
    EXPECT_EQ(Call("GetPDInfo", kDrive), 0U);
    EXPECT_EQ(ReturnValue(), 0U);
}

}  // namespace
