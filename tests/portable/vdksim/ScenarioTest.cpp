#include <gtest/gtest.h>
#include <unistd.h>

#include "ReportShape.h"
#include "Tool.h"

namespace vdksim::test {

namespace {

namespace fs = std::filesystem;

class ScenarioTest : public ::testing::Test {
  protected:
    [[nodiscard]] Ended Run(const std::string& arguments) const {
        return Tool(m_Folder.Path()).Run(arguments);
    }

    TempFolder m_Folder;
};

TEST_F(ScenarioTest, ATextIsPrintedByteForByte) {
    std::string text = "no feed at the end \r\n\n\t\xff";
    text += '\0';
    text += std::string(200'000, 'x');
    m_Folder.Write("ctrlinfo_a0.txt", text);
    const Ended ended = Run("-ctrlinfo -a0");
    EXPECT_EQ(ended.out, text);
    EXPECT_EQ(ended.err, "");
    EXPECT_EQ(ended.ExitStatus(), 0);
}

TEST_F(ScenarioTest, AnEmptyTextIsAReportToo) {
    m_Folder.Write("pdinfo_a0.txt", "");
    const Ended ended = Run("-pdinfo -a0");
    EXPECT_EQ(ended.out, "");
    EXPECT_EQ(ended.ExitStatus(), 0);
}

TEST_F(ScenarioTest, ARejectedTokenStandsBehindTheMarkerOnTheFirstLine) {
    m_Folder.Write("v.txt", "Product Version : 3.9\n");
    const Ended ended = Run("-pdinfo -nosmart -a0");
    EXPECT_EQ(ended.out, "Error - Invalid input at or near token -nosmart\n");
    EXPECT_EQ(ended.ExitStatus(), 1);
    EXPECT_EQ(Run("").out, "Error - Invalid input at or near token \n");
}

TEST_F(ScenarioTest, WhatTheServerLacksIsRefusedWithoutTheMarker) {
    m_Folder.Write("ctrlinfo_a0.txt", "x");
    Ended ended = Run("-ldpdinfo -a7");
    EXPECT_EQ(ended.out, "Error - Controller 7 is not present.\n");
    EXPECT_EQ(ended.ExitStatus(), 2);
    ended = Run("-pdinfo -pd[252:9] -a0");
    EXPECT_EQ(ended.out, "Error - Drive [252:9] is not present on controller 0.\n");
    EXPECT_EQ(ended.ExitStatus(), 2);
}

TEST_F(ScenarioTest, AllControllersAreTheirTextsOneBehindTheOther) {
    m_Folder.Write("ctrlinfo_a0.txt", "RAID Controller : 0\nlast line without a feed");
    m_Folder.Write("ctrlinfo_a1.txt", "RAID Controller : 1\n");
    m_Folder.Write("ctrlinfo_a3.txt", "behind a gap\n");
    EXPECT_EQ(Run("-ctrlinfo -aAll").out,
              "RAID Controller : 0\nlast line without a feed\nRAID Controller : 1\n");
    m_Folder.Write("ctrlinfo_aAll.txt", "its own\n");
    EXPECT_EQ(Run("-ctrlinfo -aAll").out, "its own\n");
}

TEST_F(ScenarioTest, OfVeryManyControllersOnlyThoseThatAreTakenAreMadeUp) {
    m_Folder.Write("server.conf", "controllers 4294967295\n");
    m_Folder.Write("any.do", "truncate 100K\n");
    const Ended ended = Run("-ctrlinfo -aAll");
    EXPECT_EQ(ended.out.size(), 100U * 1024);
    EXPECT_EQ(ended.out.find("RAID Controller"), 0U);
    EXPECT_EQ(ended.ExitStatus(), 0);
}

TEST_F(ScenarioTest, AServerWithoutControllersAnswersThatItHasNone) {
    const Ended ended = Run("-ctrlinfo -aAll");
    EXPECT_EQ(ended.out, "No controller is present.\n");
    EXPECT_EQ(ended.ExitStatus(), 0);
}

TEST_F(ScenarioTest, WithoutATextOfItsOwnNoSmartLeavesTheSmartSectionsOut) {
    m_Folder.Write("v.txt", "Tool\r\nProduct Version : 4.1 \r\n");
    m_Folder.Write(
        "pdinfo_a0.txt",
        "PD0(LD0)\n### General Information ###\na : b\n\n### SMART Information ### (long)\nt : 1\n\n"
        "ID Attribute\nPDX : row\nPD1(LD0)\r\n### SMART Information ###\nt : 2\n### Slot ###\nlast");
    EXPECT_EQ(Run("-pdinfo -nosmart -a0").out,
              "PD0(LD0)\n### General Information ###\na : b\n\nPD1(LD0)\r\n### Slot ###\nlast");
    m_Folder.Write("pdinfo_nosmart_a0.txt", "its own");
    EXPECT_EQ(Run("-pdinfo -nosmart -a0").out, "its own");
}

TEST_F(ScenarioTest, WithoutATextOfItsOwnADriveIsTheOneInTheReportOfAll) {
    const std::string first =
        "PD0(LD0)\n### General Information ###\nPD Status : ONLINE\n\n### Slot Information ###\n"
        " Enclosure No.  : 252\n Slot No. : 1\n\n### SMART Information ###\nSlot No. : 7\n\n";
    const std::string second = "PD1(GHS)\r\nEnclosure No. : 252\r\nSlot No.:2\r\nlast";
    m_Folder.Write("pdinfo_a0.txt", "Slot No. : 3\nEnclosure No. : 252\n" + first + second);
    EXPECT_EQ(Run("-pdinfo -pd[252:1] -a0").out, first);
    EXPECT_EQ(Run("-pdinfo -pd[252:2] -a0").out, second);
    for (const char* drive : {"-pd[252:3]", "-pd[252:7]", "-pd[1:252]", "-pd[252:12]"}) {
        EXPECT_EQ(Run(std::string("-pdinfo ") + drive + " -a0").ExitStatus(), 2) << drive;
    }
    EXPECT_EQ(Run("-pdinfo -pd[252:1] -a1").ExitStatus(), 2);
    m_Folder.Write("pdinfo_pd252.1_a0.txt", "its own");
    EXPECT_EQ(Run("-pdinfo -pd[252:1] -a0").out, "its own");
}

TEST_F(ScenarioTest, AServerOfNumbersAnswersEveryCommand) {
    m_Folder.Write("server.conf", "# made up\nversion 4.2\r\ncontrollers 2\ndrives 30\n\n");
    EXPECT_NE(Run("-v").out.find("Product Version : 4.2\n"), std::string::npos);
    EXPECT_NE(Run("-ctrlinfo -aAll").out.find("RAID Controller : 1\n"), std::string::npos);
    EXPECT_EQ(DriveHeaders(Run("-pdinfo -nosmart -a1").out).size(), 30U);
    EXPECT_EQ(GroupOfDrive(Run("-ldpdinfo -a1").out).size(), 28U);
    EXPECT_TRUE(DriveHeaders(Run("-pdinfo -pd[9:5] -a1").out).contains(29));
    EXPECT_EQ(Run("-ctrlinfo -a2").ExitStatus(), 2);
    EXPECT_EQ(Run("-pdinfo -pd[9:6] -a1").ExitStatus(), 2);
}

TEST_F(ScenarioTest, ATextTakesThePlaceOfWhatIsMadeUp) {
    m_Folder.Write("server.conf", "controllers 2\n");
    m_Folder.Write("ctrlinfo_a0.txt", "mine\n");
    EXPECT_EQ(Run("-ctrlinfo -a0").out, "mine\n");
    EXPECT_TRUE(Run("-ctrlinfo -aAll").out.starts_with("mine\nRAID Controller : 1\n"));
}

TEST_F(ScenarioTest, ABadLineOfServerConfIsNamed) {
    m_Folder.Write("server.conf", "version 4.2\ncontrollers many\n");
    const Ended ended = Run("-v");
    EXPECT_EQ(ended.ExitStatus(), 65);
    EXPECT_EQ(ended.out, "");
    EXPECT_EQ(ended.err, "vdkcli simulator: " + (m_Folder.Path() / "server.conf").string() +
                             ":2: expected 'version V', 'controllers N' or 'drives N'\n");
}

TEST_F(ScenarioTest, AMissingFolderOrVersionIsSaidClearly) {
    Ended ended = Tool(m_Folder.Path() / "none").Run("-v");
    EXPECT_EQ(ended.ExitStatus(), 66);
    EXPECT_EQ(ended.err, "vdkcli simulator: " + (m_Folder.Path() / "none").string() +
                             ": no such scenario folder; name one with VDKSIM_SCENARIO\n");
    ended = Run("-v");
    EXPECT_EQ(ended.ExitStatus(), 66);
    EXPECT_EQ(ended.err, "vdkcli simulator: " + (m_Folder.Path() / "v.txt").string() + ": missing\n");
}

TEST_F(ScenarioTest, AFileThatIsAFolderIsSaidClearly) {
    fs::create_directory(m_Folder.Path() / "v.txt");
    const Ended ended = Run("-v");
    EXPECT_EQ(ended.ExitStatus(), 66);
    EXPECT_NE(ended.err.find("v.txt: cannot be read"), std::string::npos) << ended.err;
}

TEST_F(ScenarioTest, EveryRunIsLoggedRejectedOnesToo) {
    const TempFolder state;
    m_Folder.Write("ctrlinfo_a0.txt", "x");
    const Tool tool = Tool(m_Folder.Path()).WithState(state.Path());
    static_cast<void>(tool.Run("-ctrlinfo -a0"));
    static_cast<void>(tool.Run("-what -ever"));
    static_cast<void>(tool.Run("-pdinfo -pd[1:2] -a0"));
    EXPECT_EQ(state.Read("runs.log"), "-ctrlinfo -a0\n-what -ever\n-pdinfo -pd[1:2] -a0\n");
}

TEST_F(ScenarioTest, TheFoldersAreFoundBesideTheProgramsFolder) {
    const TempFolder root;
    for (const char* name : {"cli", "scenario", "state"}) {
        fs::create_directory(root.Path() / name);
    }
    fs::copy(VDKSIM_TEST_PROGRAM, root.Path() / "cli" / "vdkcli");
    root.Write("scenario/v.txt", "Product Version : 1.0\n");
    const Ended ended =
        Tool(m_Folder.Path()).WithProgram(root.Path() / "cli" / "vdkcli").WithoutVariables().Run("-v");
    EXPECT_EQ(ended.out, "Product Version : 1.0\n");
    EXPECT_EQ(root.Read("state/runs.log"), "-v\n");
}

}  // namespace

}  // namespace vdksim::test
