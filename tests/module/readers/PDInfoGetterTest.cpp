#include "readers/CMSRAID_PDInfoGetter.h"

#include "ReaderTest.h"

#include <map>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testsupport::kOddBytes;
using testsupport::Lines;
using testsupport::ReaderAccess;
using testsupport::ToolBench;

const std::string kRoot = "Physical Drive Information";
const std::string kGeneral = "### General Information ###";
const std::string kSlot = "### Slot Information ###";
const std::string kEnclosure = "### Enclosure Properties Information ###";
const std::string kSMART = "### SMART Information ###";
const std::string kNoTemperature = "Temperature||FALSE";
const std::string kGroups = "RG No. : RG0\n>>PD0(x)\nRG No. : scRG1\n>>PD12(x)\n";

const std::string kRichReport =
    "RAID Controller : 0\n"
    "\n"
    "PD0(LD0)\n"
    "### General Information ###\n"
    " Interface Type : SAS\n"
    " PD Status : ONLINE\n"
    " Power Status : Active\n"
    " Media Error Count : 0\n"
    "\n"
    "### Slot Information ###\n"
    " Slot No. : 0\n"
    "\n"
    "### SMART Information ###\n"
    " Temperature : 31\n"
    "\n"
    "Attribute Value\n"
    "### Slot Information ###\n"
    "PD1(DHS RG0)\n"
    "### General Information ###\n"
    " Temperature : 30 C\n"
    "### Other ###\n"
    "\n"
    "### Other ###\n"
    "Dropped : 1\n"
    "PD2(GHS)\n"
    "PD3\t(UNCONFIG)\n"
    "### General Information ###\n";

class PDInfoGetterTest : public testsupport::ReaderTest {
  protected:
    PDInfoGetterTest() {
        m_Tool.Answer("v.txt", "Product Version : 4.1\n");
        m_Tool.Answer("ldpdinfo_a0.txt", kGroups);
    }
    ResultCode Read(const std::string& report) override {
        CMSRAID_PDInfoGetter reader("3.9");
        return ReadWith(reader, 0, report);
    }
    ResultCode ReadWith(CMSRAID_PDInfoGetter& reader, long controller, const std::string& report) {
        return ReadAs(reader, "pdinfo", controller, report);
    }
    /// "name|value|flag" of what a drive's header tells, from behind its General Information title.
    Lines HeaderItems(const std::string& header) {
        Lines items = GeneralItems(header, "Temperature : 1\n");
        if (items.empty() || items.back() != "Temperature|1|TRUE") {
            ADD_FAILURE() << "no General Information section with its key: " << header;
            return items;
        }
        items.pop_back();
        return items;
    }
    Lines GeneralItems(const std::string& header, const std::string& keyLines) {
        EXPECT_EQ(Read(header + "\n" + kGeneral + "\n" + keyLines), 0U) << header;
        Lines below;
        for (const std::string& item : TakeItems()) {
            if (item.starts_with(kGeneral + "|")) {
                below.push_back(item.substr(kGeneral.size() + 1));
            }
        }
        return below;
    }
    Lines GeneralOf(const std::string& keyLines) { return ItemsBelow(kGeneral, kGeneral + "\n" + keyLines); }
};

TEST_F(PDInfoGetterTest, AReportBecomesATreePerDriveInItsOrder) {
    EXPECT_EQ(ItemsOf(kRichReport), (Lines{
                                        "|RAID Controller|0|TRUE",
                                        "|Physical Drive Information||TRUE",
                                        kRoot + "|### General Information ###||TRUE",
                                        kGeneral + "|PD No.|PD0|TRUE",
                                        kGeneral + "|RG No.|RG0|TRUE",
                                        kGeneral + "|LD No.|LD0|TRUE",
                                        kGeneral + "|Interface Type|SAS|TRUE",
                                        kGeneral + "|PD Status|NO ERROR|TRUE",
                                        kGeneral + "|PD Status(Detail)|ONLINE|TRUE",
                                        kGeneral + "|Temperature||FALSE",
                                        kGeneral + "|Power Status|Active|TRUE",
                                        kGeneral + "|Media Error Count|0|TRUE",
                                        kRoot + "|### Enclosure Properties Information ###||TRUE",
                                        kEnclosure + "|Enclosure ID||FALSE",
                                        kEnclosure + "|Slot No.|0|TRUE",
                                        "|Physical Drive Information||TRUE",
                                        kRoot + "|### General Information ###||TRUE",
                                        kGeneral + "|PD No.|PD1|TRUE",
                                        kGeneral + "|RG No.|RG0|TRUE",
                                        kGeneral + "|LD No.|DHS|TRUE",
                                        kGeneral + "|Temperature|30 C|TRUE",
                                        kRoot + "|### Other ###||TRUE",
                                        "|Physical Drive Information||TRUE",
                                        "|Physical Drive Information||TRUE",
                                        kRoot + "|### General Information ###||TRUE",
                                        kGeneral + "|PD No.|PD2|TRUE",
                                        kGeneral + "|RG No.|-|TRUE",
                                        kGeneral + "|LD No.|GHS|TRUE",
                                        kGeneral + "|PD No.|PD3|TRUE",
                                        kGeneral + "|LD No.|None|TRUE",
                                        kGeneral + "|RG No.|-|TRUE",
                                        kGeneral + "|Temperature||FALSE",
                                    }));
    EXPECT_THAT(ToolBench::Runs(), ElementsAre("-ldpdinfo -a0", "-pdinfo -a0"));
}

TEST_F(PDInfoGetterTest, SMARTDataIsLeftOutByVersionsOfTwoPartsFromFourOn) {
    for (const std::string version : {"4.1", "4.0", "12.3", "4.x", "4a.1", " 4.1", "04.1"}) {
        EXPECT_EQ(CMSRAID_PDInfoGetter(version).*(&ReaderAccess::m_CmdFormat), "vdkcli -pdinfo -nosmart -a%s")
            << version;
        EXPECT_THAT(m_Trace.Texts(1), ::testing::Contains("VDK Version is " + version + "."));
    }
    for (const std::string version :
         {"3.9", "3.5", "3.99", "4.1.2", "4.0.1", "4", "12", "", ".", "x.4", ".4", "-5.1"}) {
        EXPECT_EQ(CMSRAID_PDInfoGetter(version).*(&ReaderAccess::m_CmdFormat), "vdkcli -pdinfo -a%s")
            << version;
    }
    EXPECT_EQ(CMSRAID_PDInfoGetter().*(&ReaderAccess::m_CmdFormat), "");
}

TEST_F(PDInfoGetterTest, TheCommandWithoutSMARTDataIsRun) {
    m_Tool.Answer("pdinfo_nosmart_a0.txt", kGeneral + "\n");
    CMSRAID_PDInfoGetter reader("4.1");
    EXPECT_EQ(reader.GetInfo(0, m_Library.Wrapper(), m_Items), 0U);
    EXPECT_THAT(Items(), ::testing::SizeIs(2));
    EXPECT_THAT(ToolBench::Runs(), ElementsAre("-ldpdinfo -a0", "-pdinfo -nosmart -a0"));
}

TEST_F(PDInfoGetterTest, OnlyPDAndADigitAtTheStartBeginADrive) {
    for (const std::string header : {"PD0(x)", "PD9(x)", "PD12 and more(x)"}) {
        EXPECT_EQ(ItemsOf(header + "\n"), Lines{"|Physical Drive Information||TRUE"});
    }
    for (const std::string line :
         {"PD(LD0)", "PD", "PDx(LD0)", " PD0(LD0)", "pd0(LD0)", "PD/(LD0)", "PD:(LD0)", "PD 0(LD0)"}) {
        EXPECT_EQ(ItemsOf(line + "\n"), Lines{}) << line;
    }
}

TEST_F(PDInfoGetterTest, AHeaderTellsDriveGroupAndLogicalDrive) {
    struct Row {
        std::string header;
        Lines items;
    };
    const Row rows[] = {
        {"PD0(LD0)", {"PD No.|PD0|TRUE", "RG No.|RG0|TRUE", "LD No.|LD0|TRUE"}},
        {"PD12 \t(LD1)", {"PD No.|PD12|TRUE", "RG No.|scRG1|TRUE", "LD No.|LD1|TRUE"}},
        {"PD0(LD 1 , x ) y)\r", {"PD No.|PD0|TRUE", "RG No.|RG0|TRUE", "LD No.|LD 1 , x |TRUE"}},
        {"PD00x(LD)", {"PD No.|PD00x|TRUE", "RG No.|RG0|TRUE", "LD No.|LD|TRUE"}},
        {"PD1(GHS)", {"PD No.|PD1|TRUE", "RG No.|-|TRUE", "LD No.|GHS|TRUE"}},
        {"PD0(GHS RG0", {"PD No.|PD0|TRUE", "RG No.|-|TRUE", "LD No.|GHS|TRUE"}},
        {"PD0(RLD)", {"PD No.|PD0|TRUE", "RG No.|-|TRUE", "LD No.|RLD|TRUE"}},
        {"PD6(RLDx", {"PD No.|PD6|TRUE", "RG No.|-|TRUE", "LD No.|RLD|TRUE"}},
        {"PD5(DHS RG2)", {"PD No.|PD5|TRUE", "RG No.|RG2|TRUE", "LD No.|DHS|TRUE"}},
        {"PD5(DHS RG2, RG3 ) \r", {"PD No.|PD5|TRUE", "RG No.|RG2, RG3|TRUE", "LD No.|DHS|TRUE"}},
        {"PD5(DHS scRG2)", {"PD No.|PD5|TRUE", "RG No.|RG2|TRUE", "LD No.|DHS|TRUE"}},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(HeaderItems(row.header), row.items) << row.header;
        EXPECT_THAT(Failures(), IsEmpty());
    }
}

TEST_F(PDInfoGetterTest, ADedicatedSparesGroupLosesItsLastCharacterWhateverItIs) {
    EXPECT_EQ(HeaderItems("PD5(DHS RG23").at(1), "RG No.|RG2|TRUE");
    EXPECT_EQ(HeaderItems("PD5(DHS RG").at(1), "RG No.|R|TRUE");
    EXPECT_EQ(HeaderItems("PD5(DHSRG2)x").at(1), "RG No.|RG2)|TRUE");
}

TEST_F(PDInfoGetterTest, OnlyAnUnknownMembershipPutsTheLogicalDriveBeforeTheGroup) {
    for (const std::string membership :
         {"XYZ)", "UNCONFIG", " LD0)", " GHS)", "ghs)", "D", ")", "(LD0)", "RL", "L0)"}) {
        EXPECT_EQ(HeaderItems("PD0(" + membership),
                  (Lines{"PD No.|PD0|TRUE", "LD No.|None|TRUE", "RG No.|-|TRUE"}))
            << membership;
    }
    EXPECT_THAT(Failures(), IsEmpty());
}

TEST_F(PDInfoGetterTest, ADriveThatIsInNoGroupShowsADashAndIsNoFailure) {
    EXPECT_EQ(HeaderItems(" PD7(LD3)").size(), 0U);  // No header.
    EXPECT_EQ(HeaderItems("PD7(LD3) "), (Lines{"PD No.|PD7|TRUE", "RG No.|-|TRUE", "LD No.|LD3|TRUE"}));
    EXPECT_THAT(Failures(), ElementsAre("m_MapRGNo search error.(PD7(LD3) )"));
}

TEST_F(PDInfoGetterTest, ADedicatedSpareWithoutItsGroupIsTracedBeforeItsItemIsMade) {
    // Root and drive number come first.
    m_Library.OnCreate([creation = 0]() mutable {
        if (++creation == 3) {
            throw std::bad_alloc();
        }
    });
    EXPECT_THROW(static_cast<void>(Read("PD5(DHS)\n")), std::bad_alloc);
    EXPECT_THAT(Failures(), ElementsAre("ParsePDLDNo is FAILED.(PD5(DHS))"));
}

TEST_F(PDInfoGetterTest, AHeaderThatCannotBeSplitFails) {
    EXPECT_EQ(FailuresOf("PD3\n"), Lines{"ParsePDLDNo format error.(PD3)"});
    EXPECT_THAT(m_Trace.Texts(4), ::testing::IsSupersetOf({"CMSRAID_PDInfoGetter::ParsePDLDNo [START], PD3",
                                                           "CMSRAID_PDInfoGetter::ParsePDLDNo [END]"}));
    EXPECT_EQ(FailuresOf("PD3(\n"), Lines{"ParsePDLDNo format error.(PD3()"});
    EXPECT_EQ(FailuresOf("PD3( \t\r\n"), Lines{"ParsePDLDNo format error.(PD3( \t\r)"});
    EXPECT_EQ(FailuresOf("PD0(LD0\n"), Lines{"ParsePDLDNo format error.(PD0(LD0)"});
    EXPECT_EQ(FailuresOf("PD3(LD0\n"),
              (Lines{"m_MapRGNo search error.(PD3(LD0)", "ParsePDLDNo format error.(PD3(LD0)"}));
    EXPECT_EQ(FailuresOf("PD5(DHS)\n"), Lines{"ParsePDLDNo is FAILED.(PD5(DHS))"});
    EXPECT_EQ(FailuresOf("PD5(DHS R G)\n"), Lines{"ParsePDLDNo is FAILED.(PD5(DHS R G))"});
}

TEST_F(PDInfoGetterTest, ItemsMadeBeforeAHeaderFailsAreMadeAllTheSame) {
    struct Row {
        std::string header;
        std::size_t items;  // With the root.
    };
    for (const Row& row :
         {Row{"PD3\n", 1U}, Row{"PD3(\n", 2U}, Row{"PD3(LD0\n", 3U}, Row{"PD5(DHS)\n", 3U}}) {
        const std::size_t before = m_Library.ItemsDeleted();
        static_cast<void>(FailuresOf(row.header));
        EXPECT_EQ(m_Library.ItemsDeleted() - before, row.items) << row.header;
    }
}

TEST_F(PDInfoGetterTest, DetailStatusesMapToBasicOnesByWholeText) {
    const std::map<std::string, std::string> basics{
        {"ONLINE", "NO ERROR"},    {"COPYBACK", "NO ERROR"},     {"Unconfig GOOD", "NO ERROR"},
        {"HOT SPARE", "NO ERROR"}, {"OFFLINE", "ERROR"},         {"Unconfig BAD", "ERROR"},
        {"FAILED", "ERROR"},       {"REBUILD", "REBUILD"},       {"Online", "UNKNOWN"},
        {"", "UNKNOWN"},           {"UNCONFIG GOOD", "UNKNOWN"}, {"HOTSPARE", "UNKNOWN"},
        {"ONLINE 2", "UNKNOWN"},   {"Rebuild", "UNKNOWN"},       {"REBUILDING", "UNKNOWN"},
        {"FAILE", "UNKNOWN"},      {"Unconfig", "UNKNOWN"},      {"UNKNOWN", "UNKNOWN"},
        {"OFF LINE", "UNKNOWN"},   {"NO ERROR", "UNKNOWN"},
    };
    for (const auto& [detail, basic] : basics) {
        EXPECT_EQ(GeneralOf("A : 1\nPD Status :\t" + detail + " \nB : 2\n"),
                  (Lines{"A|1|TRUE", "PD Status|" + basic + "|TRUE", "PD Status(Detail)|" + detail + "|TRUE",
                         "B|2|TRUE", kNoTemperature}));
    }
}

TEST_F(PDInfoGetterTest, OnlyThePDStatusKeyItselfIsMapped) {
    EXPECT_EQ(GeneralOf("PD status : ONLINE\nPD Status(Detail) : ONLINE\nThe PD Status : ONLINE\n"),
              (Lines{"PD status|ONLINE|TRUE", "PD Status(Detail)|ONLINE|TRUE", "The PD Status|ONLINE|TRUE",
                     kNoTemperature}));
}

TEST_F(PDInfoGetterTest, AMissingTemperatureStandsInFrontOfTheLastPowerStatusOrElseAtTheEnd) {
    EXPECT_EQ(GeneralOf(""), Lines{kNoTemperature});
    EXPECT_EQ(GeneralOf("A : 1\n"), (Lines{"A|1|TRUE", kNoTemperature}));
    EXPECT_EQ(GeneralOf("A : 1\nPower Status : On\nB : 2\n"),
              (Lines{"A|1|TRUE", kNoTemperature, "Power Status|On|TRUE", "B|2|TRUE"}));
    EXPECT_EQ(GeneralOf("Power Status : 1\nPower Status : 2\n"),
              (Lines{"Power Status|1|TRUE", kNoTemperature, "Power Status|2|TRUE"}));
    EXPECT_EQ(GeneralOf("Power Status : 1\nTemperature :\n"),
              (Lines{"Power Status|1|TRUE", "Temperature||TRUE"}));
    EXPECT_EQ(GeneralOf("Temperature : 1\nPower Status : 1\n"),
              (Lines{"Temperature|1|TRUE", "Power Status|1|TRUE"}));
    EXPECT_EQ(GeneralOf("temperature : 1\nPower Status 2: 1\n"),
              (Lines{"temperature|1|TRUE", "Power Status 2|1|TRUE", kNoTemperature}));
    EXPECT_EQ(GeneralOf("Power Status : On\nPD Status : REBUILD\n"),
              (Lines{kNoTemperature, "Power Status|On|TRUE", "PD Status|REBUILD|TRUE",
                     "PD Status(Detail)|REBUILD|TRUE"}));
}

TEST_F(PDInfoGetterTest, TheSlotSectionIsShownUnderAnotherTitleAndAlwaysBeginsWithAnEmptyEnclosureID) {
    EXPECT_EQ(ItemsOf(kSlot + "\t\r\n\n"),
              (Lines{"|" + kEnclosure + "||TRUE", kEnclosure + "|Enclosure ID||FALSE"}));
    EXPECT_EQ(ItemsBelow(kEnclosure, kSlot + "\nSlot No. : 1\nEnclosure ID : 2\n"),
              (Lines{"Enclosure ID||FALSE", "Slot No.|1|TRUE", "Enclosure ID|2|TRUE"}));
    EXPECT_EQ(ItemsBelow(kEnclosure, kSlot + "\nPD Status : ONLINE\nPower Status : 1\n"),
              (Lines{"Enclosure ID||FALSE", "PD Status|ONLINE|TRUE", "Power Status|1|TRUE"}));
}

TEST_F(PDInfoGetterTest, OnlyTheWholeTitlesStartTheirSections) {
    const Lines titles{"### Slot Information",         "### Slot Information ### x",
                       "### slot Information ###",     kEnclosure,
                       "### SMART Information ##",     "### General Information ### x",
                       "### The SMART Information ###"};
    for (const std::string& title : titles) {
        EXPECT_EQ(ItemsOf("PD0(x)\n" + title + "\nA : 1\n\nB : 2\n"),
                  (Lines{"|" + kRoot + "||TRUE", kRoot + "|" + title + "||TRUE"}));
    }
}

TEST_F(PDInfoGetterTest, SectionsPassOverLinesWithoutAUsableColonAndEndAtABlankLine) {
    for (const std::string blank : {"\n", " \t\r\n"}) {
        const std::string lines = "no key\n : no\n: no\n### T ###\nPD9(LD0)\nA :\n" + blank + "B : 2\n";
        EXPECT_EQ(GeneralOf(lines), (Lines{"A||TRUE", kNoTemperature}));
        EXPECT_EQ(ItemsBelow(kEnclosure, kSlot + "\n" + lines), (Lines{"Enclosure ID||FALSE", "A||TRUE"}));
    }
}

TEST_F(PDInfoGetterTest, OutsideTheSectionsOnlyAControllerLineIsAKey) {
    EXPECT_EQ(ItemsOf("A : 1\nRAID Controller : 0\nRAID Controller\n RAID Controller : 1\nPD0(x)\nB : "
                      "2\nRAID Controllers: 3\n"
                      "### T ###\nC : 4\nRAID Controller:5\n"),
              (Lines{"|RAID Controller|0|TRUE", "|" + kRoot + "||TRUE", kRoot + "|RAID Controllers|3|TRUE",
                     kRoot + "|### T ###||TRUE", "### T ###|RAID Controller|5|TRUE"}));
}

TEST_F(PDInfoGetterTest, TheSMARTSectionIsDroppedWithItsTitleUpToTheNextLineThatBeginsWithPD) {
    const std::string smart = kSMART + " of this drive\nA : 1\n\n" + kSlot + "\nRAID Controller : 0\n";
    const Lines drives{"|" + kRoot + "||TRUE", "|" + kRoot + "||TRUE"};
    EXPECT_EQ(ItemsOf("PD0(x)\n" + smart + "PD1(x)\n"), drives);
    EXPECT_EQ(ItemsOf("PD0(x)\n" + smart + "PD1(x)"), drives);
    EXPECT_EQ(ItemsOf("PD0(x)\n" + smart + "x PD1(x)\npd1(x)\nP\nD\n"), Lines{drives[0]});
    EXPECT_EQ(ItemsOf("PD0(x)\n" + smart + " PD1(x)\n### T ###\n"),
              (Lines{drives[0], kRoot + "|### T ###||TRUE"}));
    EXPECT_EQ(ItemsOf("PD0(x)\n" + smart + "PD Status : 1\n### T ###\n"),
              (Lines{drives[0], kRoot + "|### T ###||TRUE"}));
    EXPECT_EQ(ItemsOf("PD0(x)\n" + kSMART + "\nPD1(x)\n" + kSMART + "\nPD\n### T ###"),
              (Lines{drives[0], drives[1], kRoot + "|### T ###||TRUE"}));
}

TEST_F(PDInfoGetterTest, BehindADroppedSMARTTitleTheRootIsTheParentAgain) {
    const std::string smart = "### T ###\n" + kSMART + "\nPD\nRAID Controller : 1\n";
    EXPECT_EQ(ItemsOf("PD0(x)\n" + smart),
              (Lines{"|" + kRoot + "||TRUE", kRoot + "|### T ###||TRUE", kRoot + "|RAID Controller|1|TRUE"}));
    EXPECT_EQ(ItemsOf(smart), (Lines{"|### T ###||TRUE", "|RAID Controller|1|TRUE"}));
}

TEST_F(PDInfoGetterTest, ADroppedSMARTTitleIsDeletedToo) {
    EXPECT_EQ(CreationsFor("PD0(GHS)\n" + kSMART + "\n"), 5U);
    EXPECT_EQ(m_Library.ItemsAlive(), 0U);
}

TEST_F(PDInfoGetterTest, ATitleThatEndsTheFileWithoutALineFeedOpensAnEmptySection) {
    EXPECT_EQ(
        ItemsOf("PD1(GHS)\n" + kGeneral),
        (Lines{"|" + kRoot + "||TRUE", kRoot + "|" + kGeneral + "||TRUE", kGeneral + "|PD No.|PD1|TRUE",
               kGeneral + "|RG No.|-|TRUE", kGeneral + "|LD No.|GHS|TRUE", kGeneral + "|" + kNoTemperature}));
    EXPECT_EQ(ItemsOf(kSlot), (Lines{"|" + kEnclosure + "||TRUE", kEnclosure + "|Enclosure ID||FALSE"}));
    EXPECT_EQ(ItemsOf(kSMART), Lines{});
}

TEST_F(PDInfoGetterTest, ALastLineWithoutALineFeedCounts) {
    EXPECT_EQ(GeneralOf("Temperature : 1"), Lines{"Temperature|1|TRUE"});
    EXPECT_EQ(ItemsBelow(kEnclosure, kSlot + "\nA : 1"), (Lines{"Enclosure ID||FALSE", "A|1|TRUE"}));
}

TEST_F(PDInfoGetterTest, AStreamThatHasFailedIsRefusedByEverySectionThoughTheEnclosureIDIsThere) {
    struct Row {
        std::string title;
        std::string operation;
        Lines items;
    };
    const Row rows[] = {
        {kGeneral, "ParseGeneralnfo", {"|" + kGeneral + "||TRUE"}},
        {kSlot, "ParseSlotInfo", {"|" + kEnclosure + "||TRUE", kEnclosure + "|Enclosure ID||FALSE"}},
        {kSMART, "ParseSMARTInfo", {"|" + kSMART + "||TRUE"}},
    };
    CMSRAID_PDInfoGetter reader("3.9");
    for (const Row& row : rows) {
        m_Trace.Clear();
        EXPECT_EQ(HookOnFailedStream(reader, row.title), 0x80000001U);
        EXPECT_THAT(m_Trace.Lines(),
                    ElementsAre("4 CMSRAID_PDInfoGetter::" + row.operation + " [START]", "2 Invalid Arg.",
                                "4 CMSRAID_PDInfoGetter::" + row.operation + " [END]"));
        EXPECT_EQ(TakeItems(), row.items);
    }
}

TEST_F(PDInfoGetterTest, HeaderItemsOfADriveWithoutAGeneralSectionLandBelowTheNextDrive) {
    EXPECT_EQ(ItemsBelow(kGeneral, "PD0(GHS)\nPD1(x)\n" + kGeneral + "\nTemperature : 1\n\n" + kGeneral +
                                       "\nTemperature : 2\n"),
              (Lines{"PD No.|PD0|TRUE", "RG No.|-|TRUE", "LD No.|GHS|TRUE", "PD No.|PD1|TRUE",
                     "LD No.|None|TRUE", "RG No.|-|TRUE", "Temperature|1|TRUE", "Temperature|2|TRUE"}));
}

TEST_F(PDInfoGetterTest, HeaderItemsDoNotOutliveTheirReport) {
    m_Tool.Answer("ldpdinfo_a1.txt", "");
    CMSRAID_PDInfoGetter reader("3.9");
    EXPECT_EQ(ReadWith(reader, 0, "PD0(GHS)\n"), 0U);
    EXPECT_EQ(TakeItems(), Lines{"|" + kRoot + "||TRUE"});
    EXPECT_EQ(m_Library.ItemsAlive(), 0U);
    EXPECT_EQ(ReadWith(reader, 1, kGeneral + "\nTemperature : 1\n"), 0U);
    EXPECT_EQ(TakeItems(), (Lines{"|" + kGeneral + "||TRUE", kGeneral + "|Temperature|1|TRUE"}));
}

TEST_F(PDInfoGetterTest, TheMapOfGroupsIsMadeAnewForEveryController) {
    m_Tool.Answer("ldpdinfo_a1.txt", "RG No. : RG7\n>>PD1(x)\n");
    CMSRAID_PDInfoGetter reader("3.9");
    EXPECT_EQ(ReadWith(reader, 0, "PD0(LD0)\n" + kGeneral + "\n"), 0U);
    EXPECT_EQ(TakeItems().at(3), kGeneral + "|RG No.|RG0|TRUE");
    EXPECT_EQ(ReadWith(reader, 1, "PD0(LD0)\nPD1(LD0)\n" + kGeneral + "\n"), 0U);
    const Lines items = TakeItems();
    EXPECT_EQ(items.at(4), kGeneral + "|RG No.|-|TRUE");
    EXPECT_EQ(items.at(7), kGeneral + "|RG No.|RG7|TRUE");
    EXPECT_THAT(ToolBench::Runs(),
                ElementsAre("-ldpdinfo -a0", "-pdinfo -a0", "-ldpdinfo -a1", "-pdinfo -a1"));
}

TEST_F(PDInfoGetterTest, WithoutTheMapOfGroupsTheDrivesAreNotRead) {
    CMSRAID_PDInfoGetter reader("3.9");
    EXPECT_EQ(ReadWith(reader, 0, "PD3\n"), 0x80000001U);
    EXPECT_EQ(m_Reason, "06");
    m_Tool.Answer("ldpdinfo_a0.do", "exit 3\n");
    m_Trace.Clear();
    EXPECT_EQ(ReadWith(reader, 0, kRichReport), 0xA1U);
    EXPECT_EQ(m_Reason, "01");  // The other reader's text takes the place of this one's.
    EXPECT_THAT(Items(), IsEmpty());
    EXPECT_THAT(Failures(), ElementsAre("Failed to execute vdkcli command.(vdkcli -ldpdinfo -a0)",
                                        "Failed to execute vdkcli command 000000a1.",
                                        "CMSRAID_LDInfoGetter::GetPDRGNo is FAILED (hr=000000a1)."));
    const Lines operations = m_Trace.Texts(4);
    EXPECT_EQ(operations.front(), "CMSRAID_PDInfoGetter::GetInfo [START]");
    EXPECT_THAT(Lines(operations.end() - 5, operations.end()),
                ElementsAre("CMSRAID_PDInfoGetter::GetInfo [END]",
                            "CMSRAID_LDInfoGetter::~CMSRAID_LDInfoGetter [START]",
                            "CMSRAID_LDInfoGetter::~CMSRAID_LDInfoGetter [END]",
                            "CMSRAID_InfoGetter::~CMSRAID_InfoGetter [START]",
                            "CMSRAID_InfoGetter::~CMSRAID_InfoGetter [END]"));
    EXPECT_THAT(ToolBench::Runs(), ::testing::Contains("-pdinfo -a0").Times(1));
}

TEST_F(PDInfoGetterTest, AFailureOfItsOwnRunIsTheBases) {
    m_Tool.Answer("pdinfo_a0.do", "exit 3\n");
    EXPECT_EQ(Read(kRichReport), 0xA1U);
    EXPECT_EQ(m_Reason, "01");
    EXPECT_THAT(Failures(), ::testing::Not(::testing::Contains(::testing::HasSubstr("GetPDRGNo"))));
}

TEST_F(PDInfoGetterTest, RefusedKeysAndStatusesAreTracedInSections) {
    const Lines key{"ParseKeyValue is FAILED (hr=80000001)."};
    struct Row {
        std::size_t refused;
        std::string report;
        Lines failures;
    };
    const Row rows[] = {
        {1, "RAID Controller : 0\n", {}},
        {1, "PD0(GHS)\n", {}},
        {2, "PD0(GHS)\n", {}},
        {1, kGeneral + "\n", {}},
        {2, kGeneral + "\n", {}},
        {2, kGeneral + "\nA : 1\n", key},
        {3, kGeneral + "\nPD Status : 1\n", {"ParsePDStatus is FAILED (hr=80000001)."}},
        {2, kSlot + "\n", {}},
        {3, kSlot + "\nA : 1\n", key},
        {1, kSMART + "\n", {}},
        {4, "PD5(DHS)\n", {"ParsePDLDNo is FAILED.(PD5(DHS))"}},
        {3, "PD5(DHS)\n", {"ParsePDLDNo is FAILED.(PD5(DHS))"}},
    };
    for (const Row& row : rows) {
        m_Library.FailCreationsFrom(row.refused);
        EXPECT_EQ(FailuresOf(row.report), row.failures) << row.refused << row.report;
    }
}

TEST_F(PDInfoGetterTest, EveryItemThatTheLibraryRefusesFailsTheReadAndNothingIsLeft) {
    ExpectThatEveryRefusedItemFailsTheRead(kRichReport);
}

TEST_F(PDInfoGetterTest, EveryExceptionLeavesNothingBehind) {
    ExpectThatEveryExceptionLeavesNothingBehind(kRichReport);
}

TEST_F(PDInfoGetterTest, WithoutADeletingEntryPointHeldItemsAreNotDeleted) {
    EXPECT_EQ(ItemsLeftWhenNoneCanBeDeleted("PD0(GHS)\n"), 3U);
    EXPECT_EQ(ItemsLeftWhenNoneCanBeDeleted(kSMART + "\n"), 1U);
}

TEST_F(PDInfoGetterTest, LinesOfAnyBytesAndAnyLengthArePassedThrough) {
    const std::string longText(1 << 20, 'x');
    EXPECT_EQ(
        ItemsOf("PD3" + longText + "(" + kOddBytes + ")\r\n" + kGeneral + "\r\n\t" + kOddBytes +
                "\t:" + longText + "\r\nPD Status:" + kOddBytes + "\r\n\r\n" + kSMART + "\r\n" + longText +
                "\nPD12(LD" + longText + ")\r\n" + kGeneral + "\r\nTemperature:\r\n"),
        (Lines{"|" + kRoot + "||TRUE", kRoot + "|" + kGeneral + "||TRUE",
               kGeneral + "|PD No.|PD3" + longText + "|TRUE", kGeneral + "|LD No.|None|TRUE",
               kGeneral + "|RG No.|-|TRUE", kGeneral + "|" + kOddBytes + "|" + longText + "|TRUE",
               kGeneral + "|PD Status|UNKNOWN|TRUE", kGeneral + "|PD Status(Detail)|" + kOddBytes + "|TRUE",
               kGeneral + "|" + kNoTemperature, "|" + kRoot + "||TRUE", kRoot + "|" + kGeneral + "||TRUE",
               kGeneral + "|PD No.|PD12|TRUE", kGeneral + "|RG No.|scRG1|TRUE",
               kGeneral + "|LD No.|LD" + longText + "|TRUE", kGeneral + "|Temperature||TRUE"}));
}

TEST_F(PDInfoGetterTest, ASkippedLineWithANulByteDoesNotShiftTheNextDrive) {
    const std::string nul(1, '\0');
    EXPECT_EQ(ItemsOf(kSMART + "\n" + nul + "\na" + nul + "b\nPD1" + nul + "(x)\n"),
              Lines{"|" + kRoot + "||TRUE"});
}

TEST_F(PDInfoGetterTest, OneReadIsTracedInOrder) {
    m_Trace.Clear();
    EXPECT_EQ(Read("PD0(LD0)\r\n" + kGeneral + "\nPD Status : ONLINE\n\n" + kSlot + "\n\n" + kSMART + "\n"),
              0U);
    EXPECT_EQ(m_Trace.Lines(), (Lines{
                                   "4 CMSRAID_InfoGetter::CMSRAID_InfoGetter [START]",
                                   "4 CMSRAID_InfoGetter::CMSRAID_InfoGetter [END]",
                                   "4 CMSRAID_PDInfoGetter::CMSRAID_PDInfoGetter [START]",
                                   "1 VDK Version is 3.9.",
                                   "4 CMSRAID_PDInfoGetter::CMSRAID_PDInfoGetter [END]",
                                   "4 CMSRAID_PDInfoGetter::GetInfo [START]",
                                   "4 CMSRAID_InfoGetter::CMSRAID_InfoGetter [START]",
                                   "4 CMSRAID_InfoGetter::CMSRAID_InfoGetter [END]",
                                   "4 CMSRAID_LDInfoGetter::CMSRAID_LDInfoGetter [START]",
                                   "4 CMSRAID_LDInfoGetter::CMSRAID_LDInfoGetter [END]",
                                   "4 CMSRAID_LDInfoGetter::GetPDRGNo [START]",
                                   "1 execute vdkcli command.(vdkcli -ldpdinfo -a0)",
                                   "4 CMSRAID_LDInfoGetter::GetPDRGNo [END]",
                                   "4 CMSRAID_InfoGetter::GetInfo [START]",
                                   "1 execute vdkcli command.(vdkcli -pdinfo -a0)",
                                   "4 CMSRAID_InfoGetter::Parse [START]",
                                   "4 CMSRAID_PDInfoGetter::AddRootItem [START]",
                                   "4 CMSRAID_PDInfoGetter::AddRootItem [END]",
                                   "4 CMSRAID_PDInfoGetter::ParsePDLDNo [START], PD0(LD0)\r",
                                   "4 CMSRAID_PDInfoGetter::ParsePDLDNo [END]",
                                   "4 CMSRAID_PDInfoGetter::ParseGeneralnfo [START]",
                                   "4 CMSRAID_PDInfoGetter::ParsePDStatus [START]",
                                   "4 CMSRAID_PDInfoGetter::ParsePDStatus [END]",
                                   "4 CMSRAID_PDInfoGetter::ParseGeneralnfo [END]",
                                   "4 CMSRAID_PDInfoGetter::ParseSlotInfo [START]",
                                   "4 CMSRAID_PDInfoGetter::ParseSlotInfo [END]",
                                   "4 CMSRAID_PDInfoGetter::ParseSMARTInfo [START]",
                                   "4 CMSRAID_PDInfoGetter::ParseSMARTInfo [END]",
                                   "4 CMSRAID_PDInfoGetter::FreeItemList [START]",
                                   "4 CMSRAID_PDInfoGetter::FreeItemList [END]",
                                   "4 CMSRAID_InfoGetter::Parse [END]",
                                   "4 CMSRAID_InfoGetter::GetInfo [END]",
                                   "4 CMSRAID_PDInfoGetter::GetInfo [END]",
                                   "4 CMSRAID_LDInfoGetter::~CMSRAID_LDInfoGetter [START]",
                                   "4 CMSRAID_LDInfoGetter::~CMSRAID_LDInfoGetter [END]",
                                   "4 CMSRAID_InfoGetter::~CMSRAID_InfoGetter [START]",
                                   "4 CMSRAID_InfoGetter::~CMSRAID_InfoGetter [END]",
                                   "4 CMSRAID_PDInfoGetter::~CMSRAID_PDInfoGetter [START]",
                                   "4 CMSRAID_PDInfoGetter::~CMSRAID_PDInfoGetter [END]",
                                   "4 CMSRAID_InfoGetter::~CMSRAID_InfoGetter [START]",
                                   "4 CMSRAID_InfoGetter::~CMSRAID_InfoGetter [END]",
                               }));
}

}  // namespace
