#include "readers/CMSRAID_CtrlInfoGetter.h"

#include "ReaderTest.h"

#include <algorithm>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using testsupport::kOddBytes;
using testsupport::Lines;
using testsupport::ReaderAccess;
using testsupport::ToolBench;

const std::string kNumberLine = "RAID Controller : 0\n";
const std::string kGeneral = "### General Information ###";
const std::string kFirmware = "### Firmware/BIOS/Driver Information ###";
const std::string kSettings = "### Controller Settings Information ###";

const std::string kRichReport =
    "RAID Controller : 0\n"
    "\n"
    "### General Information ###\n"
    " Product Name : Gate 8\n"
    " SubVendor ID : 1734\n"
    "\n"
    "### Firmware/BIOS/Driver Information ###\n"
    " BIOS Version : 6.3\n"
    "\n"
    "### Battery Information ###\n"
    " Status : Optimal\n"
    "\n"
    "### Controller Settings Information ###\n"
    " Consistency Check Rate : 30 %\n"
    " Buzzer : Off\n";

class CtrlInfoGetterTest : public testsupport::ReaderTest {
  protected:
    ResultCode Read(const std::string& report) override {
        CMSRAID_CtrlInfoGetter reader;
        return ReadWith(reader, 0, report);
    }
    ResultCode ReadWith(CMSRAID_CtrlInfoGetter& reader, long controller, const std::string& report) {
        return ReadAs(reader, "ctrlinfo", controller, report);
    }
    Lines SettingsOf(const std::string& keyLines) {
        return ItemsBelow(kSettings, kNumberLine + kSettings + "\n" + keyLines);
    }
    Lines FirmwareOf(const std::string& keyLines) {
        return ItemsBelow(kFirmware, kNumberLine + kFirmware + "\n" + keyLines);
    }
    /// The controllers that a report of all is said to have.
    int CountIn(const std::string& report) {
        m_Tool.Answer("ctrlinfo_aAll.txt", report);
        CMSRAID_CtrlInfoGetter reader;
        char count = 99;
        EXPECT_EQ(reader.GetCtrlNum(&count), 0U);
        EXPECT_EQ(reader.GetReason(), "");
        EXPECT_THAT(Failures(), IsEmpty());
        return static_cast<unsigned char>(count);
    }
};

TEST_F(CtrlInfoGetterTest, AReportBecomesATreeInTheReportsOrderWithNumberAndPlaceholdersInTheirPlaces) {
    EXPECT_EQ(ItemsOf(kRichReport),
              (Lines{
                  "|Controller Information||TRUE",
                  "Controller Information|### General Information ###||TRUE",
                  "### General Information ###|Controller No.|0|TRUE",
                  "### General Information ###|Product Name|Gate 8|TRUE",
                  "### General Information ###|Subsystem Vendor ID|1734|TRUE",
                  "Controller Information|### Firmware/BIOS/Driver Information ###||TRUE",
                  kFirmware + "|Firmware Package Version||FALSE",
                  kFirmware + "|Firmware Version||FALSE",
                  kFirmware + "|Firmware Build Time||FALSE",
                  kFirmware + "|BIOS Version|6.3|TRUE",
                  "Controller Information|### Battery Information ###||TRUE",
                  "### Battery Information ###|Status|Optimal|TRUE",
                  "Controller Information|### Controller Settings Information ###||TRUE",
                  kSettings + "|Consistency Check Rate|30 %|TRUE",
                  kSettings + "|Reconstruction Rate||FALSE",
                  kSettings + "|Buzzer|Off|TRUE",
              }));
    EXPECT_THAT(ToolBench::Runs(), ElementsAre("-ctrlinfo -a0"));
}

TEST_F(CtrlInfoGetterTest, ANumberLineStartsATreeOnlyWithTheWholeHeadInFrontAndAColon) {
    const Lines tree{"|Controller Information||TRUE"};
    EXPECT_EQ(ItemsOf("RAID Controller : 0\n"), tree);
    EXPECT_EQ(ItemsOf("RAID Controller:"), tree);
    EXPECT_EQ(ItemsOf("RAID Controllers of this server: 0\n"), tree);
    EXPECT_EQ(ItemsOf("RAID Controller\n"), Lines{});
    EXPECT_EQ(ItemsOf(" RAID Controller : 0\n"), Lines{"|RAID Controller|0|TRUE"});
    EXPECT_EQ(ItemsOf("RAID Controlle : 0\n"), Lines{"|RAID Controlle|0|TRUE"});
    EXPECT_EQ(ItemsOf("RAID controller : 0\n"), Lines{"|RAID controller|0|TRUE"});
}

TEST_F(CtrlInfoGetterTest, TheNumberIsWhateverFollowsTheFirstColon) {
    EXPECT_EQ(ItemsBelow(kGeneral, "RAID Controller (onboard)\t:\t1:2 x \r\n" + kGeneral + "\n"),
              Lines{"Controller No.|1:2 x|TRUE"});
    EXPECT_EQ(ItemsBelow(kGeneral, "RAID Controller:\n" + kGeneral), Lines{"Controller No.||TRUE"});
}

TEST_F(CtrlInfoGetterTest, TheNumberStandsFirstBehindItsTitleWhateverComesBetween) {
    EXPECT_EQ(ItemsOf(kNumberLine + "A : 1\n### B ###\nC : 2\n" + kGeneral + "\nD : 3\n"),
              (Lines{"|Controller Information||TRUE", "Controller Information|A|1|TRUE",
                     "Controller Information|### B ###||TRUE", "### B ###|C|2|TRUE",
                     "Controller Information|" + kGeneral + "||TRUE", kGeneral + "|Controller No.|0|TRUE",
                     kGeneral + "|D|3|TRUE"}));
}

TEST_F(CtrlInfoGetterTest, WithoutAGeneralInformationTitleTheNumberNeverReachesTheOutput) {
    for (const std::string title : {"### General Information", "### General Information ### x",
                                    "###  General Information ###", "### general Information ###"}) {
        EXPECT_EQ(ItemsOf(kNumberLine + title + "\n"),
                  (Lines{"|Controller Information||TRUE", "Controller Information|" + title + "||TRUE"}));
    }
    EXPECT_EQ(m_Library.ItemsAlive(), 0U);
}

TEST_F(CtrlInfoGetterTest, NumbersHeldForOneTitleKeepTheirOrderAndAreHeldNoLonger) {
    EXPECT_EQ(ItemsBelow(kGeneral, "RAID Controller : 0\nRAID Controller : 1\n" + kGeneral + "\n" + kGeneral +
                                       "\nA : 1\n"),
              (Lines{"Controller No.|0|TRUE", "Controller No.|1|TRUE", "A|1|TRUE"}));
}

TEST_F(CtrlInfoGetterTest, FormerKeysGetTheirPresentNamesAndKeepTheirValues) {
    const std::string keys = "SubVendor ID : 1734\n SubDevice ID\t: 1177 \r\n";
    const Lines renamed{"Subsystem Vendor ID|1734|TRUE", "Subsystem ID|1177|TRUE"};
    EXPECT_EQ(ItemsBelow("Controller Information", kNumberLine + keys), renamed);
    EXPECT_EQ(ItemsBelow("### Other ###", kNumberLine + "### Other ###\n" + keys), renamed);
    EXPECT_EQ(ItemsBelow(kGeneral, kNumberLine + kGeneral + "\n" + keys),
              (Lines{"Controller No.|0|TRUE", renamed[0], renamed[1]}));
}

TEST_F(CtrlInfoGetterTest, OtherKeysKeepTheirNames) {
    const Lines keys{"subVendor ID",
                     "SubVendor ID2",
                     "The SubVendor ID",
                     "SubVendor",
                     "SubDevice id",
                     "SubDevice ID.",
                     ""};
    for (const std::string& key : keys) {
        EXPECT_EQ(ItemsBelow(kGeneral, kGeneral + "\n " + key + ": 1\n"), Lines{key + "|1|TRUE"});
    }
}

TEST_F(CtrlInfoGetterTest, FormerKeysKeepTheirNamesInTheFirmwareAndSettingsSections) {
    const std::string keys = "SubVendor ID : 1734\nSubDevice ID : 1177\n";
    EXPECT_EQ(SettingsOf(keys),
              (Lines{"SubVendor ID|1734|TRUE", "SubDevice ID|1177|TRUE", "Reconstruction Rate||FALSE"}));
    EXPECT_THAT(FirmwareOf(keys),
                ::testing::IsSupersetOf({"SubVendor ID|1734|TRUE", "SubDevice ID|1177|TRUE"}));
}

TEST_F(CtrlInfoGetterTest, BehindTheBlankLineThatEndsASectionFormerKeysAreRenamedAgain) {
    EXPECT_EQ(SettingsOf("Reconstruction Rate : 1\n\nSubVendor ID : 2\n"),
              (Lines{"Reconstruction Rate|1|TRUE", "Subsystem Vendor ID|2|TRUE"}));
}

TEST_F(CtrlInfoGetterTest, AMissingReconstructionRateStandsBehindTheLastConsistencyCheckRateOrElseAtTheEnd) {
    const std::string check = "Consistency Check Rate : 30 %\n";
    const std::string rate = "Reconstruction Rate : 20 %\n";
    const std::string other = "Buzzer : Off\n";
    const std::string checkItem = "Consistency Check Rate|30 %|TRUE";
    const std::string rateItem = "Reconstruction Rate|20 %|TRUE";
    const std::string otherItem = "Buzzer|Off|TRUE";
    const std::string missing = "Reconstruction Rate||FALSE";
    EXPECT_EQ(SettingsOf(""), Lines{missing});
    EXPECT_EQ(SettingsOf(other), (Lines{otherItem, missing}));
    EXPECT_EQ(SettingsOf(check), (Lines{checkItem, missing}));
    EXPECT_EQ(SettingsOf(check + other), (Lines{checkItem, missing, otherItem}));
    EXPECT_EQ(SettingsOf(check + other + check + other),
              (Lines{checkItem, otherItem, checkItem, missing, otherItem}));
    EXPECT_EQ(SettingsOf(rate), Lines{rateItem});
    EXPECT_EQ(SettingsOf(rate + check + other), (Lines{rateItem, checkItem, otherItem}));
    EXPECT_EQ(SettingsOf(check + rate), (Lines{checkItem, rateItem}));
    EXPECT_EQ(SettingsOf("Reconstruction rate : 1\n"), (Lines{"Reconstruction rate|1|TRUE", missing}));
    EXPECT_EQ(SettingsOf("The Consistency Check Rate : 1\n" + other),
              (Lines{"The Consistency Check Rate|1|TRUE", otherItem, missing}));
}

TEST_F(CtrlInfoGetterTest, AReconstructionRateWithoutAValueIsThere) {
    EXPECT_EQ(SettingsOf("Reconstruction Rate :\n"), Lines{"Reconstruction Rate||TRUE"});
}

TEST_F(CtrlInfoGetterTest, VersionAndBuildTimePlaceholdersAreCrossed) {
    struct Row {
        std::string present;
        Lines placeholders;
    };
    const std::string package = "Firmware Package Version||FALSE";
    const std::string version = "Firmware Version||FALSE";
    const std::string time = "Firmware Build Time||FALSE";
    const Row rows[] = {
        {"", {package, version, time}}, {"p", {version, time}}, {"v", {package, version}}, {"pv", {version}},
        {"t", {package, time}},         {"pt", {time}},         {"vt", {package}},         {"pvt", {}},
    };
    for (const Row& row : rows) {
        std::string keys = "Other : 0\n";
        Lines expected = row.placeholders;
        expected.push_back("Other|0|TRUE");
        for (const char key : row.present) {
            const std::string name = key == 'p' ? "Firmware Package Version"
                                                : (key == 'v' ? "Firmware Version" : "Firmware Build Time");
            keys += name + " : 1\n";
            expected.push_back(name + "|1|TRUE");
        }
        expected.emplace_back("Last|0|TRUE");
        EXPECT_EQ(FirmwareOf(keys + "Last : 0\n"), expected) << row.present;
    }
}

TEST_F(CtrlInfoGetterTest, FirmwareKeysAreComparedWhole) {
    EXPECT_EQ(FirmwareOf("firmware Version : 1\nFirmware Version 2 : 1\n"),
              (Lines{"Firmware Package Version||FALSE", "Firmware Version||FALSE",
                     "Firmware Build Time||FALSE", "firmware Version|1|TRUE", "Firmware Version 2|1|TRUE"}));
}

TEST_F(CtrlInfoGetterTest, ASectionPassesOverLinesWithoutAUsableColonAndEndsAtABlankLine) {
    for (const std::string blank : {"\n", " \t\r\n", "\r\n"}) {
        EXPECT_EQ(SettingsOf("no key\n\t : no key\n: no key\n### Title inside ###\nA :\n" + blank +
                             "Reconstruction Rate : 1\n"),
                  (Lines{"A||TRUE", "Reconstruction Rate||FALSE", "Reconstruction Rate|1|TRUE"}));
        EXPECT_EQ(FirmwareOf("no key\n : no key\nA : 1\n" + blank + "Firmware Version : 1\n"),
                  (Lines{"Firmware Package Version||FALSE", "Firmware Version||FALSE",
                         "Firmware Build Time||FALSE", "A|1|TRUE", "Firmware Version|1|TRUE"}));
    }
}

TEST_F(CtrlInfoGetterTest, OutsideTheSectionsABlankInFrontMakesTheColonUsable) {
    EXPECT_EQ(ItemsBelow("### T ###", "### T ###\n: 1\n : 2\nno key\n\nA : 3\n"),
              (Lines{"|2|TRUE", "A|3|TRUE"}));
}

TEST_F(CtrlInfoGetterTest, AnyOtherTitleIsKeptWithItsKeysAcrossBlankLines) {
    EXPECT_EQ(
        ItemsOf(kNumberLine + "### Open title \t\r\nA : 1\n\n\nB : 2\n### \nC : 3\n ### No title : 4\n"),
        (Lines{"|Controller Information||TRUE", "Controller Information|### Open title||TRUE",
               "### Open title|A|1|TRUE", "### Open title|B|2|TRUE", "Controller Information|###||TRUE",
               "###|C|3|TRUE", "###|### No title|4|TRUE"}));
}

TEST_F(CtrlInfoGetterTest, WhatComesBeforeAnyTreeHangsBelowNothing) {
    EXPECT_EQ(ItemsOf("A : 1\n### T ###\nB : 2\n" + kNumberLine + "C : 3\n"),
              (Lines{"|A|1|TRUE", "|### T ###||TRUE", "### T ###|B|2|TRUE", "|Controller Information||TRUE",
                     "Controller Information|C|3|TRUE"}));
}

TEST_F(CtrlInfoGetterTest, ASectionTitleThatEndsTheFileWithoutALineFeedFails) {
    for (const std::string& title : {kFirmware, kSettings}) {
        EXPECT_EQ(FailuresOf(kNumberLine + title), Lines{"Invalid Arg."});
        const std::string name = title == kFirmware ? "ParseFirmwareInfo" : "ParseSettingInfo";
        const Lines operations = m_Trace.Texts(4);
        const auto start =
            std::find(operations.begin(), operations.end(), "CMSRAID_CtrlInfoGetter::" + name + " [START]");
        ASSERT_NE(start, operations.end());
        EXPECT_EQ(*(start + 1), "CMSRAID_CtrlInfoGetter::" + name + " [END]");
        EXPECT_THAT(ItemsOf(kNumberLine + title + "\n"), ::testing::SizeIs(title == kFirmware ? 5 : 3));
    }
    EXPECT_EQ(ItemsOf(kGeneral), Lines{"|" + kGeneral + "||TRUE"});
}

TEST_F(CtrlInfoGetterTest, ALastLineWithoutALineFeedCounts) {
    EXPECT_EQ(SettingsOf("Reconstruction Rate : 1"), Lines{"Reconstruction Rate|1|TRUE"});
    EXPECT_EQ(ItemsOf("A : 1"), Lines{"|A|1|TRUE"});
}

TEST_F(CtrlInfoGetterTest, LinesOfAnyBytesAndAnyLengthArePassedThrough) {
    const std::string longText(1 << 20, 'x');
    const std::string crlf = "\r\n";
    EXPECT_EQ(
        ItemsOf("RAID Controller\t:\t" + kOddBytes + crlf + kGeneral + crlf + kOddBytes + ":" + kOddBytes +
                crlf + longText + ":" + longText + crlf + kSettings + "\t" + crlf + kOddBytes + ":" + crlf),
        (Lines{"|Controller Information||TRUE", "Controller Information|" + kGeneral + "||TRUE",
               kGeneral + "|Controller No.|" + kOddBytes + "|TRUE",
               kGeneral + "|" + kOddBytes + "|" + kOddBytes + "|TRUE",
               kGeneral + "|" + longText + "|" + longText + "|TRUE",
               "Controller Information|" + kSettings + "||TRUE", kSettings + "|" + kOddBytes + "||TRUE",
               kSettings + "|Reconstruction Rate||FALSE"}));
}

TEST_F(CtrlInfoGetterTest, ANulByteEndsAnItemsTextButNotTheLine) {
    const std::string nul(1, '\0');
    EXPECT_EQ(ItemsOf("a" + nul + "b : c" + nul + "d\n" + nul + "\nE : 1\n"),
              (Lines{"|a|c|TRUE", "|E|1|TRUE"}));
}

TEST_F(CtrlInfoGetterTest, EveryItemThatTheLibraryRefusesFailsTheReadAndNothingIsLeft) {
    ExpectThatEveryRefusedItemFailsTheRead(kRichReport);
}

TEST_F(CtrlInfoGetterTest, EveryExceptionLeavesNothingBehind) {
    ExpectThatEveryExceptionLeavesNothingBehind(kRichReport);
}

TEST_F(CtrlInfoGetterTest, ARefusedKeyIsTracedInSectionsAndForTheNumberOnly) {
    struct Row {
        std::size_t refused;
        std::string report;
        bool isTraced;
    };
    const Row rows[] = {
        {1, kNumberLine, false},
        {2, kNumberLine, true},
        {1, "A : 1\n", false},
        {1, kSettings + "\n", false},
        {2, kSettings + "\nA : 1\n", true},
        {2, kFirmware + "\nA : 1\n", true},
        {2, kSettings + "\n", false},
        {2, kFirmware + "\n", false},
    };
    for (const Row& row : rows) {
        m_Library.FailCreationsFrom(row.refused);
        EXPECT_EQ(FailuresOf(row.report),
                  row.isTraced ? Lines{"ParseKeyValue is FAILED (hr=80000001)."} : Lines{});
    }
}

TEST_F(CtrlInfoGetterTest, OneReaderServesSeveralControllers) {
    CMSRAID_CtrlInfoGetter reader;
    for (const long controller : {0, 1, 12}) {
        const std::string number = std::to_string(controller);
        EXPECT_EQ(ReadWith(reader, controller, "RAID Controller : " + number + "\n" + kGeneral + "\nA : 1\n"),
                  0U);
        EXPECT_EQ(TakeItems(),
                  (Lines{"|Controller Information||TRUE", "Controller Information|" + kGeneral + "||TRUE",
                         kGeneral + "|Controller No.|" + number + "|TRUE", kGeneral + "|A|1|TRUE"}));
    }
    EXPECT_THAT(ToolBench::Runs(), ElementsAre("-ctrlinfo -a0", "-ctrlinfo -a1", "-ctrlinfo -a12"));
}

TEST_F(CtrlInfoGetterTest, NumbersThatNeverFoundTheirTitleArePassedOverInLaterReports) {
    CMSRAID_CtrlInfoGetter reader;
    EXPECT_EQ(ReadWith(reader, 0, kNumberLine), 0U);
    EXPECT_EQ(ReadWith(reader, 1, "RAID Controller : 1\n" + kSettings), 0x80000001U);
    EXPECT_EQ(ReadWith(reader, 2, "RAID Controller : 2\n"), 0U);
    EXPECT_EQ(TakeItems(), (Lines{"|Controller Information||TRUE", "|Controller Information||TRUE"}));
    EXPECT_EQ(m_Library.ItemsAlive(), 0U);
    EXPECT_EQ(ReadWith(reader, 3, "RAID Controller : 3\n" + kGeneral + "\n"), 0U);
    EXPECT_EQ(TakeItems(),
              (Lines{"|Controller Information||TRUE", "Controller Information|" + kGeneral + "||TRUE",
                     kGeneral + "|Controller No.|3|TRUE"}));
}

TEST_F(CtrlInfoGetterTest, WithoutADeletingEntryPointTheHeldNumberIsNotDeleted) {
    EXPECT_EQ(ItemsLeftWhenNoneCanBeDeleted(kNumberLine), 1U);
}

TEST_F(CtrlInfoGetterTest, AToolThatFailsIsTheBasesFailure) {
    m_Tool.Answer("ctrlinfo_a0.do", "exit 3\n");
    EXPECT_EQ(Read(kRichReport), 0xA1U);
    EXPECT_EQ(m_Reason, "01");
    EXPECT_THAT(Items(), IsEmpty());
}

TEST_F(CtrlInfoGetterTest, OneReadIsTracedInOrder) {
    m_Trace.Clear();
    EXPECT_EQ(Read(kNumberLine + kGeneral + "\nA : 1\n" + kFirmware + "\nB : 2\n\n" + kSettings + "\n"), 0U);
    EXPECT_EQ(m_Trace.Lines(), (Lines{
                                   "4 CMSRAID_InfoGetter::CMSRAID_InfoGetter [START]",
                                   "4 CMSRAID_InfoGetter::CMSRAID_InfoGetter [END]",
                                   "4 CMSRAID_CtrlInfoGetter::CMSRAID_CtrlInfoGetter [START]",
                                   "4 CMSRAID_CtrlInfoGetter::CMSRAID_CtrlInfoGetter [END]",
                                   "4 CMSRAID_InfoGetter::GetInfo [START]",
                                   "1 execute vdkcli command.(vdkcli -ctrlinfo -a0)",
                                   "4 CMSRAID_InfoGetter::Parse [START]",
                                   "4 CMSRAID_CtrlInfoGetter::CreateRAIDItem [START]",
                                   "4 CMSRAID_CtrlInfoGetter::AddRootItem [START]",
                                   "4 CMSRAID_CtrlInfoGetter::AddRootItem [END]",
                                   "4 CMSRAID_CtrlInfoGetter::ParseCtrlNo [START], RAID Controller : 0",
                                   "4 CMSRAID_CtrlInfoGetter::ParseCtrlNo [END]",
                                   "4 CMSRAID_CtrlInfoGetter::CreateRAIDItem [END]",
                                   "4 CMSRAID_CtrlInfoGetter::CreateRAIDItem [START]",
                                   "4 CMSRAID_CtrlInfoGetter::CreateRAIDItem [END]",
                                   "4 CMSRAID_CtrlInfoGetter::CreateRAIDItem [START]",
                                   "4 CMSRAID_CtrlInfoGetter::CreateRAIDItem [END]",
                                   "4 CMSRAID_CtrlInfoGetter::CreateRAIDItem [START]",
                                   "4 CMSRAID_CtrlInfoGetter::ParseFirmwareInfo [START]",
                                   "4 CMSRAID_CtrlInfoGetter::ParseFirmwareInfo [END]",
                                   "4 CMSRAID_CtrlInfoGetter::CreateRAIDItem [END]",
                                   "4 CMSRAID_CtrlInfoGetter::CreateRAIDItem [START]",
                                   "4 CMSRAID_CtrlInfoGetter::ParseSettingInfo [START]",
                                   "4 CMSRAID_CtrlInfoGetter::ParseSettingInfo [END]",
                                   "4 CMSRAID_CtrlInfoGetter::CreateRAIDItem [END]",
                                   "4 CMSRAID_CtrlInfoGetter::FreeItemList [START]",
                                   "4 CMSRAID_CtrlInfoGetter::FreeItemList [END]",
                                   "4 CMSRAID_InfoGetter::Parse [END]",
                                   "4 CMSRAID_InfoGetter::GetInfo [END]",
                                   "4 CMSRAID_CtrlInfoGetter::~CMSRAID_CtrlInfoGetter [START]",
                                   "4 CMSRAID_CtrlInfoGetter::~CMSRAID_CtrlInfoGetter [END]",
                                   "4 CMSRAID_InfoGetter::~CMSRAID_InfoGetter [START]",
                                   "4 CMSRAID_InfoGetter::~CMSRAID_InfoGetter [END]",
                               }));
}

TEST_F(CtrlInfoGetterTest, ControllersAreCountedByTheirNumberLines) {
    EXPECT_EQ(CountIn(""), 0);
    EXPECT_EQ(CountIn("No controller is present.\n"), 0);
    EXPECT_EQ(CountIn("RAID Controller : 0\nA : 1\nRAID Controller : 1\r\n\nRAID Controller:"), 3);
    EXPECT_EQ(
        CountIn("RAID Controller\n RAID Controller : 0\nThe RAID Controller : 0\nraid controller : 0\n"), 0);
    EXPECT_EQ(CountIn("RAID Controllers, all of them : 5\n"), 1);
    EXPECT_THAT(ToolBench::Runs(), ::testing::Each("-ctrlinfo -aAll"));
}

TEST_F(CtrlInfoGetterTest, OnlyTheLowEightBitsOfTheCountAreKept) {
    std::string report;
    for (int controller = 0; controller < 255; ++controller) {
        report += kNumberLine;
    }
    EXPECT_EQ(CountIn(report), 255);
    EXPECT_EQ(CountIn(report + kNumberLine), 0);
    EXPECT_EQ(CountIn(report + kNumberLine + kNumberLine), 1);
}

TEST_F(CtrlInfoGetterTest, ACountIsTracedInOrderAndLeavesNoFile) {
    m_Tool.Answer("ctrlinfo_aAll.txt", kNumberLine);
    CMSRAID_CtrlInfoGetter reader;
    m_Trace.Clear();
    char count = 0;
    EXPECT_EQ(reader.GetCtrlNum(&count), 0U);
    EXPECT_THAT(m_Trace.Lines(), ElementsAre("4 CMSRAID_CtrlInfoGetter::GetCtrlNum [START]",
                                             "1 execute vdkcli command.(vdkcli -ctrlinfo -aAll)",
                                             "4 CMSRAID_CtrlInfoGetter::GetCtrlNum [END]"));
    EXPECT_THAT(m_Root.ResultFiles(), IsEmpty());
}

TEST_F(CtrlInfoGetterTest, ACountThatFailsStoresNothingAndLeavesNoFile) {
    CMSRAID_CtrlInfoGetter reader;
    char count = 99;
    m_Tool.Answer("ctrlinfo_aAll.do", "exit 3\n");
    m_Tool.Answer("ctrlinfo_aAll.txt", kNumberLine);
    m_Trace.Clear();
    EXPECT_EQ(reader.GetCtrlNum(&count), 0xA1U);
    EXPECT_EQ(reader.GetReason(), "01");
    EXPECT_THAT(Failures(), ElementsAre("Failed to execute vdkcli command.(vdkcli -ctrlinfo -aAll)",
                                        "Failed to execute vdkcli command 000000a1."));
    EXPECT_EQ(m_Trace.Lines().back(), "4 CMSRAID_CtrlInfoGetter::GetCtrlNum [END]");
    EXPECT_THAT(m_Root.ResultFiles(), IsEmpty());

    reader.*(&ReaderAccess::m_CmdFormat) = CommandWithoutFile();
    m_Trace.Clear();
    EXPECT_EQ(reader.GetCtrlNum(&count), 0x80000001U);
    EXPECT_EQ(reader.GetReason(), "0401");
    EXPECT_THAT(Failures(),
                ElementsAre(StartsWith("Failed to open file output by vdkcli(" + m_Root.Path().string()),
                            StartsWith("Failed to delete file(" + m_Root.Path().string())));
    EXPECT_EQ(count, 99);
}

TEST_F(CtrlInfoGetterTest, ACountOfAReportThatCannotBeReadToItsEndIsNotStored) {
    CMSRAID_CtrlInfoGetter reader;
    reader.*(&ReaderAccess::m_CmdFormat) = "vdkcli -v >/dev/null 2>&1; cd " + m_Root.Path().string() +
                                           "/tmp/MSRAID && for f in *; do rm $f; mkdir $f; done #%s";
    char count = 99;
    EXPECT_EQ(reader.GetCtrlNum(&count), 0x80000001U);
    EXPECT_EQ(reader.GetReason(), "04");
    EXPECT_EQ(count, 99);
    m_ExpectedLeftFiles = m_Root.ResultFiles();
}

TEST_F(CtrlInfoGetterTest, ACountsFileThatCannotBeDeletedDoesNotChangeTheResult) {
    CMSRAID_CtrlInfoGetter reader;
    reader.*(&ReaderAccess::m_CmdFormat) = CommandWithPinnedFile();
    char count = 99;
    EXPECT_EQ(reader.GetCtrlNum(&count), 0U);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(reader.GetReason(), "");
    EXPECT_THAT(Failures(), ElementsAre(StartsWith("Failed to delete file(" + m_Root.Path().string())));
    m_ExpectedLeftFiles = m_Root.ResultFiles();
}

TEST_F(CtrlInfoGetterTest, CountingAndReadingShareOneReasonText) {
    CMSRAID_CtrlInfoGetter reader;
    char count = 0;
    m_Tool.Answer("ctrlinfo_aAll.do", "exit 3\n");
    EXPECT_EQ(reader.GetCtrlNum(&count), 0xA1U);
    EXPECT_EQ(ReadWith(reader, 0, kSettings), 0x80000001U);
    EXPECT_EQ(m_Reason, "0601");
}

}  // namespace
