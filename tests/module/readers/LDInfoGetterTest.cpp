#include "readers/CMSRAID_LDInfoGetter.h"

#include "ReaderTest.h"

#include <map>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using testsupport::kOddBytes;
using testsupport::Lines;
using testsupport::ReaderAccess;
using testsupport::ToolBench;
using GroupMap = std::map<long, std::string>;

const std::string kRoot = "Logical Drive Information";
const std::string kGeneral = "### General Information ###";
const std::string kSettings = "### LD Settings Information ###";
const std::string kNoCache = "Associated CacheCade LD||FALSE";

const std::string kPlainGroup =
    "RAID Controller : 0\n"
    "\n"
    "RG0(RAID 1)\n"
    " RG No. : RG0\n"
    " RAID Level : RAID 1\n"
    ">LD0(SYSTEM, 557 GB, OPTIMAL)\n"
    ">LD1(DATA, 10 GB, DEGRADED)\n"
    ">>PD0(ONLINE)\n"
    " Slot No. : 0\n"
    "\n"
    ">>PD1(REBUILD)\n"
    " Slot No. : 1\n"
    "\n"
    "### General Information ###\n"
    " Stripe Size : 64 KB\n"
    " # of PD : 2\n"
    " Access Policy : Read Write\n"
    "\n"
    "### LD Settings Information ###\n"
    " Read Policy : Ahead\n";

const std::string kCacheGroup =
    "scRG0(RAID 0)\n"
    " RG No. : scRG0\n"
    "\n"
    "### General Information ###\n"
    " State : OPTIMAL\n"
    " # of PD : 1\n"
    " Capacity : 100 GB\n"
    " Associated CacheCade LD\n"
    "  LD1(DATA, 10 GB, OPTIMAL)\n"
    "\n"
    "### LD Settings Information ###\n"
    " Write Policy : Through\n";

class LDInfoGetterTest : public testsupport::ReaderTest {
  protected:
    ResultCode Read(const std::string& report) override {
        CMSRAID_LDInfoGetter reader;
        return ReadWith(reader, 0, report);
    }
    ResultCode ReadWith(CMSRAID_LDInfoGetter& reader, long controller, const std::string& report) {
        return ReadAs(reader, "ldpdinfo", controller, report);
    }
    Lines GeneralOf(const std::string& lines) { return ItemsBelow(kGeneral, kGeneral + "\n" + lines); }

    /// Items of an LD line, held for a General Information title and without what that section adds.
    Lines LDListOf(const std::string& line) {
        Lines items = ItemsOf(line + "\n" + kGeneral + "\n");
        if (items.size() < 2 || items.front() != "|" + kGeneral + "||TRUE" ||
            items.back() != kGeneral + "|" + kNoCache) {
            ADD_FAILURE() << "no General Information section with its placeholder: "
                          << ::testing::PrintToString(items);
            return items;
        }
        return {items.begin() + 1, items.end() - 1};
    }
    GroupMap GroupsIn(const std::string& report, GroupMap groups = {}) {
        m_Tool.Answer("ldpdinfo_a3.txt", report);
        CMSRAID_LDInfoGetter reader;
        EXPECT_EQ(reader.GetPDRGNo(3, &groups), 0U);
        EXPECT_EQ(reader.GetReason(), "");
        EXPECT_THAT(Failures(), IsEmpty());
        return groups;
    }
};

TEST_F(LDInfoGetterTest, APlainGroupBecomesATreeInItsOrder) {
    EXPECT_EQ(ItemsOf(kPlainGroup), (Lines{
                                        "|Logical Drive Information||TRUE",
                                        kRoot + "|PD List||TRUE",
                                        "PD List|PD No.|PD0|TRUE",
                                        "PD List|Slot No.|0|TRUE",
                                        kRoot + "|PD List||TRUE",
                                        "PD List|PD No.|PD1|TRUE",
                                        "PD List|Slot No.|1|TRUE",
                                        kRoot + "|### General Information ###||TRUE",
                                        kGeneral + "|RG No.|RG0|TRUE",
                                        kGeneral + "|RAID Level|RAID 1|TRUE",
                                        kGeneral + "|LD List||TRUE",
                                        "LD List|LD No.|LD0|TRUE",
                                        "LD List|Name|SYSTEM|TRUE",
                                        "LD List|Capacity|557 GB|TRUE",
                                        "LD List|State|OPTIMAL|TRUE",
                                        kGeneral + "|LD List||TRUE",
                                        "LD List|LD No.|LD1|TRUE",
                                        "LD List|Name|DATA|TRUE",
                                        "LD List|Capacity|10 GB|TRUE",
                                        "LD List|State|DEGRADED|TRUE",
                                        kGeneral + "|Stripe Size|64 KB|TRUE",
                                        kGeneral + "|# of PD|2|TRUE",
                                        kGeneral + "|Associated CacheCade LD||FALSE",
                                        kRoot + "|### LD Settings Information ###||TRUE",
                                        kSettings + "|Access Policy|Read Write|TRUE",
                                        kSettings + "|Read Policy|Ahead|TRUE",
                                    }));
    EXPECT_THAT(ToolBench::Runs(), ElementsAre("-ldpdinfo -a0"));
}

TEST_F(LDInfoGetterTest, ACacheGroupGetsStripeSizeInFrontOfTheNumberOfDrivesAndAnEmptyAccessPolicy) {
    EXPECT_EQ(ItemsOf(kCacheGroup), (Lines{
                                        "|Logical Drive Information||TRUE",
                                        kRoot + "|### General Information ###||TRUE",
                                        kGeneral + "|RG No.|scRG0|TRUE",
                                        kGeneral + "|State|OPTIMAL|TRUE",
                                        kGeneral + "|Stripe Size||FALSE",
                                        kGeneral + "|# of PD|1|TRUE",
                                        kGeneral + "|Capacity|100 GB|TRUE",
                                        kGeneral + "|Associated CacheCade LD||TRUE",
                                        "Associated CacheCade LD|LD No.|LD1|TRUE",
                                        "Associated CacheCade LD|Name|DATA|TRUE",
                                        "Associated CacheCade LD|Capacity|10 GB|TRUE",
                                        "Associated CacheCade LD|State|OPTIMAL|TRUE",
                                        kRoot + "|### LD Settings Information ###||TRUE",
                                        kSettings + "|Access Policy||FALSE",
                                        kSettings + "|Write Policy|Through|TRUE",
                                    }));
}

TEST_F(LDInfoGetterTest, OnlyRGOrScRGAndADigitAtTheStartBeginAGroup) {
    for (const std::string line : {"RG0", "RG9 and more : x", "scRG12", "RG00(RAID 1)"}) {
        EXPECT_EQ(ItemsOf(line + "\n"), Lines{"|Logical Drive Information||TRUE"}) << line;
    }
    for (const std::string line :
         {"RGX", "RG", "sRG1", "scRG", "scRGx", "rg0", "SCRG0", " RG0", "RG/", "RG 0", "xscRG0"}) {
        EXPECT_EQ(ItemsOf(line + "\n"), Lines{}) << line;
    }
    EXPECT_EQ(ItemsOf("RG:\nscRG: 1\n"), (Lines{"|RG||TRUE", "|scRG|1|TRUE"}));
}

TEST_F(LDInfoGetterTest, AControllerLineIsPassedOverWhateverItHolds) {
    EXPECT_EQ(ItemsOf("RAID Controller : 0\nRAID Controller : >LD0(a, b, c) >>PD0(x)\nRAID Controllers: 2\n"),
              Lines{});
    EXPECT_EQ(ItemsOf("RAID Controller >>PD0(x)\n"),
              (Lines{"|PD List||TRUE", "PD List|PD No.|ID Controller >>PD0|TRUE"}));
    EXPECT_EQ(ItemsOf(" RAID Controller : 0\n"), Lines{"|RAID Controller|0|TRUE"});
}

TEST_F(LDInfoGetterTest, GroupKeysReachToTheFirstOtherLineWhichIsReadAgain) {
    EXPECT_EQ(ItemsOf("RG0\nA : 1\n\tB\t:\t2:3\r\n### Other ###\nC : 4\n"),
              (Lines{"|" + kRoot + "||TRUE", kRoot + "|### Other ###||TRUE", "### Other ###|C|4|TRUE"}));
}

TEST_F(LDInfoGetterTest, GroupKeysComeBehindTheGeneralTitleEvenWithoutAnyOtherKey) {
    const Lines expected{"A|1|TRUE", "B|2:3|TRUE", kNoCache};
    EXPECT_EQ(ItemsBelow(kGeneral, "RG0\nA : 1\n\tB\t:\t2:3\r\n" + kGeneral + "\n"), expected);
    EXPECT_EQ(ItemsBelow(kGeneral, "RG0\nA : 1\nB : 2:3\n \t\r\n" + kGeneral + "\n"), expected);
}

TEST_F(LDInfoGetterTest, BehindABlankLineKeysAreNoGroupKeysAnyMore) {
    EXPECT_EQ(ItemsOf("RG0\nA : 1\n \nB : 2\n"), (Lines{"|" + kRoot + "||TRUE", kRoot + "|B|2|TRUE"}));
}

TEST_F(LDInfoGetterTest, ALineWithItsColonFirstEndsTheGroupKeysAndIsTestedAsReadTheSecondTime) {
    EXPECT_EQ(ItemsOf("RG0\n  : x\nA : 1\n"),
              (Lines{"|" + kRoot + "||TRUE", kRoot + "||x|TRUE", kRoot + "|A|1|TRUE"}));
    EXPECT_EQ(ItemsOf("RG0\n: x\nA : 1\n"), (Lines{"|" + kRoot + "||TRUE", kRoot + "|A|1|TRUE"}));
}

TEST_F(LDInfoGetterTest, ALineThatIsReadAgainMayEndTheFileWithoutALineFeed) {
    EXPECT_EQ(ItemsOf("RG0\nA : 1\n>LD0"), Lines{"|" + kRoot + "||TRUE"});
    EXPECT_THAT(m_Trace.Texts(4), ::testing::Contains("CMSRAID_LDInfoGetter::ParseLDList [START], >LD0"));
    EXPECT_EQ(ItemsOf("RG0\nA : 1\nRG1\n"), (Lines{"|" + kRoot + "||TRUE", "|" + kRoot + "||TRUE"}));
    EXPECT_EQ(ItemsOf("RG0\nno key"), Lines{"|" + kRoot + "||TRUE"});
    EXPECT_THAT(m_Trace.Texts(4),
                ::testing::Contains("CMSRAID_LDInfoGetter::CreateRAIDItem [START]").Times(2));
    EXPECT_EQ(ItemsOf("RG0\n### T"), (Lines{"|" + kRoot + "||TRUE", kRoot + "|### T||TRUE"}));
    EXPECT_EQ(ItemsOf("RG0\nA : 1"), Lines{"|" + kRoot + "||TRUE"});
}

TEST_F(LDInfoGetterTest, ALineThatIsReadAgainMayHaveAnyLengthAndStandAnywhereInTheStreamsBuffer) {
    constexpr std::size_t kBufferSize = 8191;
    for (const std::size_t length : {1U, 300U, 20'000U}) {
        const std::string title = "### " + std::string(length, 'T');
        for (std::size_t begin = kBufferSize - 20; begin <= kBufferSize + 5; begin += 5) {
            const std::string group = "RG0\nA : 1\n";
            const std::string report = std::string(begin - group.size(), '\n') + group + title + "\nB : 2\n";
            ASSERT_EQ(ItemsOf(report),
                      (Lines{"|" + kRoot + "||TRUE", kRoot + "|" + title + "||TRUE", title + "|B|2|TRUE"}))
                << length << " characters at " << begin;
        }
    }
}

TEST_F(LDInfoGetterTest, ADriveLineWithAColonDirectlyBehindGroupKeysIsAGroupKey) {
    EXPECT_EQ(ItemsBelow(kGeneral, "RG0\n>LD0(a:b, c, d)\n" + kGeneral + "\n"),
              (Lines{">LD0(a|b, c, d)|TRUE", kNoCache}));
}

TEST_F(LDInfoGetterTest, AnLDLineIsReadAsFarAsItsTextGoes) {
    const std::string list = kGeneral + "|LD List||TRUE";
    const std::string number = "LD List|LD No.|LD0|TRUE";
    const std::string name = "LD List|Name|a|TRUE";
    const std::string capacity = "LD List|Capacity|b c|TRUE";
    struct Row {
        std::string line;
        Lines items;
    };
    const Row rows[] = {
        {">LD0", {list}},
        {">LD0 a, b c, d)", {list}},
        {">LD0(", {list, number}},
        {">LD0(a)", {list, number}},
        {">LD0 \t( a ,", {list, number, name}},
        {">LD0(a, b c)", {list, number, name}},
        {">LD0(a, b c,", {list, number, name, capacity}},
        {">LD0(a, b c, d)", {list, number, name, capacity, "LD List|State|d|TRUE"}},
        {">LD0(a, b c, d e, f) g", {list, number, name, capacity, "LD List|State|d e|TRUE"}},
        {">LD0(a, b c, d, e, f)", {list, number, name, capacity, "LD List|State|d|TRUE"}},
        {">LD0(a, b c, d ) e)", {list, number, name, capacity, "LD List|State|d|TRUE"}},
        {">LD0(a, b c, d ) e, f", {list, number, name, capacity, "LD List|State|d ) e|TRUE"}},
        {">LD0(a, b c, d\r", {list, number, name, capacity, "LD List|State|d|TRUE"}},
        {">LD0(a, b c,)", {list, number, name, capacity, "LD List|State||TRUE"}},
        {">LD0(a, b c, ", {list, number, name, capacity, "LD List|State||TRUE"}},
        {">LD0(,,,", {list, number, "LD List|Name||TRUE", "LD List|Capacity||TRUE", "LD List|State||TRUE"}},
        {">LD0(a(b), c, d)",
         {list, number, "LD List|Name|a(b)|TRUE", "LD List|Capacity|c|TRUE", "LD List|State|d|TRUE"}},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(LDListOf(row.line), row.items) << row.line;
    }
}

TEST_F(LDInfoGetterTest, AnLDLineMayStandAnywhereInItsLineAndLosesOneCharacterOfItsNumber) {
    EXPECT_EQ(LDListOf(" >LD0(a,b,c)").at(1), "LD List|LD No.|>LD0|TRUE");
    EXPECT_EQ(LDListOf("xy >LD7 (a").at(1), "LD List|LD No.|y >LD7|TRUE");
    EXPECT_EQ(LDListOf(">>LD7(a").at(1), "LD List|LD No.|>LD7|TRUE");
    EXPECT_EQ(LDListOf("a(b>LD0"), Lines{kGeneral + "|LD List||TRUE"});
    EXPECT_EQ(LDListOf("abc(>LD0"), Lines{kGeneral + "|LD List||TRUE"});
    EXPECT_EQ(LDListOf("abcd(>LD0").at(1), "LD List|LD No.|bcd|TRUE");
    EXPECT_EQ(LDListOf(">>PD0 >LD0(a").at(1), "LD List|LD No.|>PD0 >LD0|TRUE");
}

TEST_F(LDInfoGetterTest, AnLDLineNeedsANumberBehindItsHeadOrLosesThatItemOnly) {
    EXPECT_EQ(LDListOf(">LD(a, b, c)"), (Lines{kGeneral + "|LD List||TRUE", "LD List|Name|a|TRUE",
                                               "LD List|Capacity|b|TRUE", "LD List|State|c|TRUE"}));
    EXPECT_EQ(LDListOf(">LD ("), (Lines{kGeneral + "|LD List||TRUE", "LD List|LD No.|LD|TRUE"}));
    EXPECT_EQ(ItemsOf(">ld0(a\n> LD0(a\n"), Lines{});
}

TEST_F(LDInfoGetterTest, APDLineOpensAListWithItsKeysUntilABlankLine) {
    struct Row {
        std::string line;
        Lines number;
    };
    const Row rows[] = {
        {">>PD3(ONLINE)", {"PD List|PD No.|PD3|TRUE"}},
        {">>PD3 \t(", {"PD List|PD No.|PD3|TRUE"}},
        {">>PD(ONLINE)", {}},
        {">>PD3", {}},
        {">>PD (x", {"PD List|PD No.|PD|TRUE"}},
        {" >>PD3(x", {"PD List|PD No.|>PD3|TRUE"}},
        {"ab(c >>PD3(x", {}},
        {"abcd(>>PD3", {}},
        {"abcde(>>PD3", {"PD List|PD No.|cde|TRUE"}},
    };
    for (const Row& row : rows) {
        for (const std::string blank : {"\n", "\t \r\n"}) {
            Lines expected{"|PD List||TRUE"};
            expected.insert(expected.end(), row.number.begin(), row.number.end());
            expected.insert(expected.end(), {"PD List|A|1|TRUE", "PD List|B||TRUE", "|C|3|TRUE"});
            EXPECT_EQ(ItemsOf(row.line + "\n A : 1\nno key\n : no key\n>LD0(a, b, c)\n### T ###\nB :\n" +
                              blank + "C : 3\n"),
                      expected)
                << row.line;
        }
    }
}

TEST_F(LDInfoGetterTest, APDListHangsBelowTheCurrentTitleWhichIsCurrentAgainBehindIt) {
    EXPECT_EQ(ItemsOf("RG0\n\n### T ###\n>>PD0(\nA : 1\n\nB : 2\n>>PD1(\n\nC : 3\n"),
              (Lines{"|" + kRoot + "||TRUE", kRoot + "|### T ###||TRUE", "### T ###|PD List||TRUE",
                     "PD List|PD No.|PD0|TRUE", "PD List|A|1|TRUE", "### T ###|B|2|TRUE",
                     "### T ###|PD List||TRUE", "PD List|PD No.|PD1|TRUE", "### T ###|C|3|TRUE"}));
}

TEST_F(LDInfoGetterTest, APDLineIsTracedAsAnLDList) {
    EXPECT_THAT(ItemsOf(">>PD0(x)\n"), ::testing::SizeIs(2));
    EXPECT_THAT(m_Trace.Texts(4),
                ::testing::IsSupersetOf({"CMSRAID_LDInfoGetter::ParseLDList [START], >>PD0(x)",
                                         "CMSRAID_LDInfoGetter::ParseLDList [END]"}));
    EXPECT_THAT(m_Trace.Texts(4), ::testing::Not(::testing::Contains(::testing::HasSubstr("ParsePDList"))));
}

TEST_F(LDInfoGetterTest, WithoutACacheLineTheGeneralSectionEndsWithItsPlaceholderAndGetsNoOther) {
    EXPECT_EQ(GeneralOf(""), Lines{kNoCache});
    EXPECT_EQ(GeneralOf("# of PD : 2\nA :\n"), (Lines{"# of PD|2|TRUE", "A||TRUE", kNoCache}));
    EXPECT_EQ(ItemsOf(kGeneral + "\n\n" + kSettings + "\n"),
              (Lines{"|" + kGeneral + "||TRUE", kGeneral + "|" + kNoCache, "|" + kSettings + "||TRUE"}));
}

TEST_F(LDInfoGetterTest, TheGeneralSectionPassesOverLinesWithoutAUsableColonAndEndsAtABlankLine) {
    for (const std::string blank : {"\n", " \t\r\n"}) {
        EXPECT_EQ(GeneralOf("no key\n : no\n: no\n>LD0(a, b, c)\n### T ###\nA : 1\n" + blank + "B : 2\n"),
                  (Lines{"A|1|TRUE", kNoCache, "B|2|TRUE"}));
    }
}

TEST_F(LDInfoGetterTest, AMissingStripeSizeStandsInFrontOfTheLastNumberOfDrivesOrElseAtTheEnd) {
    const std::string cache = "Associated CacheCade LD\n";
    const std::string missing = "Stripe Size||FALSE";
    EXPECT_EQ(GeneralOf(cache), Lines{missing});
    EXPECT_EQ(GeneralOf("A : 1\n" + cache), (Lines{"A|1|TRUE", missing}));
    EXPECT_EQ(GeneralOf("A : 1\n" + cache + "LD0\n"),
              (Lines{"A|1|TRUE", "Associated CacheCade LD||TRUE", missing}));
    EXPECT_EQ(GeneralOf("# of PD : 1\n" + cache), (Lines{missing, "# of PD|1|TRUE"}));
    EXPECT_EQ(GeneralOf("# of PD : 1\nA : 1\n# of PD : 2\nB : 1\n" + cache),
              (Lines{"# of PD|1|TRUE", "A|1|TRUE", missing, "# of PD|2|TRUE", "B|1|TRUE"}));
    EXPECT_EQ(GeneralOf("# of PDs : 1\n" + cache), (Lines{"# of PDs|1|TRUE", missing}));
    EXPECT_EQ(GeneralOf("Stripe Size : 1\n# of PD : 1\n" + cache),
              (Lines{"Stripe Size|1|TRUE", missing, "# of PD|1|TRUE"}));
}

TEST_F(LDInfoGetterTest, ALineThatBeginsWithTheCacheKeyStartsTheAssociatedDrives) {
    EXPECT_EQ(GeneralOf("\tAssociated CacheCade LDs : 2\nx\n"),
              (Lines{"Associated CacheCade LD||TRUE", "Stripe Size||FALSE"}));
    EXPECT_EQ(GeneralOf("The Associated CacheCade LD : 2\n"),
              (Lines{"The Associated CacheCade LD|2|TRUE", kNoCache}));
    EXPECT_EQ(GeneralOf("associated CacheCade LD\n"), Lines{kNoCache});
}

TEST_F(LDInfoGetterTest, EveryAssociatedLineMakesAGroupItemAndIsReadAsFarAsItsTextGoes) {
    const std::string group = kGeneral + "|Associated CacheCade LD||TRUE";
    const std::string key = "Associated CacheCade LD|";
    EXPECT_EQ(
        ItemsOf(kGeneral +
                "\nAssociated CacheCade LD\nno bracket : x\n LD0 (a)\n(\nLD1(a, b\nLD2(a,b,c)\n### T ###\n" +
                "Associated CacheCade LD\n>>LD3(a, b, c , d)\nLD4(a(b)\n \t\nA : 1\n"),
        (Lines{"|" + kGeneral + "||TRUE",
               group,
               group,
               key + "LD No.|LD0|TRUE",
               group,
               key + "LD No.||TRUE",
               group,
               key + "LD No.|LD1|TRUE",
               key + "Name|a|TRUE",
               group,
               key + "LD No.|LD2|TRUE",
               key + "Name|a|TRUE",
               key + "Capacity|b|TRUE",
               key + "State|c|TRUE",
               group,
               group,
               group,
               key + "LD No.|>>LD3|TRUE",
               key + "Name|a|TRUE",
               key + "Capacity|b|TRUE",
               key + "State|c|TRUE",
               group,
               key + "LD No.|LD4|TRUE",
               kGeneral + "|Stripe Size||FALSE",
               kGeneral + "|A|1|TRUE"}));
}

TEST_F(LDInfoGetterTest, AccessPoliciesMoveBehindTheSettingsTitleInTheirOrder) {
    EXPECT_EQ(
        ItemsOf(kGeneral +
                "\nAccess Policy : Read\nA : 1\nAccess Policy:\naccess Policy : 2\n"
                "Associated CacheCade LD\n\n" +
                kSettings + "\nB : 2\n" + kSettings + "\n"),
        (Lines{"|" + kGeneral + "||TRUE", kGeneral + "|A|1|TRUE", kGeneral + "|access Policy|2|TRUE",
               kGeneral + "|Stripe Size||FALSE", "|" + kSettings + "||TRUE",
               kSettings + "|Access Policy|Read|TRUE", kSettings + "|Access Policy||TRUE",
               kSettings + "|Access Policy||FALSE", kSettings + "|B|2|TRUE", "|" + kSettings + "||TRUE"}));
}

TEST_F(LDInfoGetterTest, AnAccessPolicyOutsideTheGeneralSectionStaysWhereItIs) {
    EXPECT_EQ(ItemsOf("### T ###\nAccess Policy : 1\n" + kSettings + "\nAccess Policy : 2\n"),
              (Lines{"|### T ###||TRUE", "### T ###|Access Policy|1|TRUE", "|" + kSettings + "||TRUE",
                     kSettings + "|Access Policy|2|TRUE"}));
}

TEST_F(LDInfoGetterTest, TabsInATitleCountAsBlanksButNotThoseInItsHead) {
    EXPECT_EQ(
        ItemsOf("RG0\nA : 1\n\n### General\tInformation\t###\t\nB : 2\n\n### LD\tSettings Information ###\n"),
        (Lines{"|" + kRoot + "||TRUE", kRoot + "|" + kGeneral + "||TRUE", kGeneral + "|A|1|TRUE",
               kGeneral + "|B|2|TRUE", kGeneral + "|" + kNoCache, kRoot + "|" + kSettings + "||TRUE"}));
    EXPECT_EQ(ItemsOf("###\tGeneral Information ###\n### General\t\tInformation ###\n"),
              Lines{"|### General  Information ###||TRUE"});
}

TEST_F(LDInfoGetterTest, ATitleMayHoldADriveLinesHead) {
    EXPECT_EQ(ItemsOf("### >LD0(a, b, c) >>PD0( ###\nA : 1\n"),
              (Lines{"|### >LD0(a, b, c) >>PD0( ###||TRUE", "### >LD0(a, b, c) >>PD0( ###|A|1|TRUE"}));
}

TEST_F(LDInfoGetterTest, HeldItemsWithoutTheirTitleNeverReachTheOutput) {
    EXPECT_EQ(ItemsOf("RG0\nA : 1\n\n>LD0(a, b, c)\n### General Information\n"),
              (Lines{"|" + kRoot + "||TRUE", kRoot + "|### General Information||TRUE"}));
    EXPECT_EQ(ItemsOf(kGeneral + "\nAccess Policy : 1\n\n### LD Settings ###\n"),
              (Lines{"|" + kGeneral + "||TRUE", kGeneral + "|" + kNoCache, "|### LD Settings ###||TRUE"}));
    EXPECT_EQ(m_Library.ItemsAlive(), 0U);
}

TEST_F(LDInfoGetterTest, ItemsOfAGroupWithoutItsTitleWaitForTheNextGroups) {
    EXPECT_EQ(
        ItemsBelow(kGeneral, "RG0\nA : 0\n>LD0\nRG1\nA : 1\n>LD1\n" + kGeneral + "\n\n" + kGeneral + "\n"),
        (Lines{"A|0|TRUE", "A|1|TRUE", "LD List||TRUE", "LD List||TRUE", kNoCache, kNoCache}));
}

TEST_F(LDInfoGetterTest, HeldItemsDoNotOutliveTheirReport) {
    CMSRAID_LDInfoGetter reader;
    EXPECT_EQ(ReadWith(reader, 0, "RG0\nA : 0\n>LD0\n" + kGeneral + "\nAccess Policy : 1\n"), 0U);
    EXPECT_EQ(ReadWith(reader, 0, "RG0\nA : 0\n>LD0\n"), 0U);
    static_cast<void>(TakeItems());
    EXPECT_EQ(m_Library.ItemsAlive(), 0U);
    EXPECT_EQ(ReadWith(reader, 1, kGeneral + "\n\n" + kSettings + "\n"), 0U);
    EXPECT_EQ(TakeItems(),
              (Lines{"|" + kGeneral + "||TRUE", kGeneral + "|" + kNoCache, "|" + kSettings + "||TRUE"}));
    EXPECT_THAT(ToolBench::Runs(), ElementsAre("-ldpdinfo -a0", "-ldpdinfo -a0", "-ldpdinfo -a1"));
}

TEST_F(LDInfoGetterTest, HeldItemsAreDeletedGroupKeysFirstThenTheLDListThenTheAccessPolicy) {
    EXPECT_THAT(DeletedBy(kGeneral + "\nAccess Policy : 1\n\nRG0\n>LD0\nRG1\nA : 1\nB : 2\n"),
                ElementsAre("Access Policy", "A", "B", "LD List", "Access Policy"));
}

TEST_F(LDInfoGetterTest, KeysOutsideTheSectionsAreTestedAsReadAndBlankLinesEndNothing) {
    EXPECT_EQ(ItemsOf("### T ###\n: 1\n : 2\n\nno key\nA : 3\n"),
              (Lines{"|### T ###||TRUE", "### T ###||2|TRUE", "### T ###|A|3|TRUE"}));
}

TEST_F(LDInfoGetterTest, ASectionThatEndsTheFileWithoutALineFeedFails) {
    const Lines invalid{"Invalid Arg."};
    EXPECT_EQ(FailuresOf("RG0"), invalid);
    EXPECT_THAT(m_Trace.Texts(4), ::testing::IsSupersetOf({"CMSRAID_LDInfoGetter::ParseRAIDlnfo [START], RG0",
                                                           "CMSRAID_LDInfoGetter::ParseRAIDlnfo [END]"}));
    EXPECT_EQ(FailuresOf(">>PD0(x)"), invalid);
    EXPECT_THAT(m_Trace.Texts(4), ::testing::Contains("CMSRAID_LDInfoGetter::ParseLDList [END]"));
    EXPECT_EQ(FailuresOf("RG0\nA : 1\n\n>LD0\n" + kGeneral), invalid);
    EXPECT_THAT(m_Trace.Texts(4), ::testing::Contains("CMSRAID_LDInfoGetter::ParseGeneralnfo [END]"));
    EXPECT_EQ(FailuresOf(kGeneral + "\nAssociated CacheCade LD"),
              (Lines{"Invalid Arg.", "ParseAssocLD is FAILED (hr=80000001)."}));
    EXPECT_THAT(m_Trace.Texts(4), ::testing::IsSupersetOf({"CMSRAID_LDInfoGetter::ParseAssocLD [END]",
                                                           "CMSRAID_LDInfoGetter::ParseGeneralnfo [END]"}));
    EXPECT_EQ(ItemsOf(">LD0(a, b, c)"), Lines{});
    EXPECT_EQ(ItemsOf(kSettings), Lines{"|" + kSettings + "||TRUE"});
}

TEST_F(LDInfoGetterTest, ALastLineWithoutALineFeedCounts) {
    EXPECT_EQ(GeneralOf("A : 1"), (Lines{"A|1|TRUE", kNoCache}));
    EXPECT_EQ(GeneralOf("Associated CacheCade LD\nx"),
              (Lines{"Associated CacheCade LD||TRUE", "Stripe Size||FALSE"}));
    EXPECT_EQ(ItemsOf(">>PD0\nA : 1"), (Lines{"|PD List||TRUE", "PD List|A|1|TRUE"}));
}

TEST_F(LDInfoGetterTest, RefusedKeysAreTracedInSectionsAndRefusedAssociatedDrivesAsWell) {
    const Lines key{"ParseKeyValue is FAILED (hr=80000001)."};
    const Lines drive{"ParseAssocLD is FAILED (hr=80000001)."};
    struct Row {
        std::size_t refused;
        std::string report;
        Lines failures;
    };
    const std::string cache = kGeneral + "\nAssociated CacheCade LD\nLD0(a,b,c)\n";
    const Row rows[] = {
        {1, "RG0\n", {}},
        {2, "RG0\nA : 1\n", key},
        {1, ">>PD0(\n", {}},
        {2, ">>PD0(\nA : 1\n", {}},
        {3, ">>PD0(\nA : 1\n", key},
        {1, "A : 1\n", {}},
        {1, kGeneral + "\n", {}},
        {2, kGeneral + "\nA : 1\n", key},
        {2, kGeneral + "\n", {}},
        {3, kGeneral + "\nAccess Policy : 1\n", {}},
        {2, cache, drive},
        {3, cache, drive},
        {4, cache, drive},
        {5, cache, drive},
        {6, cache, drive},
        {7, cache, {}},
        {8, cache, {}},
    };
    for (const Row& row : rows) {
        m_Library.FailCreationsFrom(row.refused);
        EXPECT_EQ(FailuresOf(row.report), row.failures) << row.refused << row.report;
    }
}

TEST_F(LDInfoGetterTest, EveryItemThatTheLibraryRefusesFailsTheReadAndNothingIsLeft) {
    ExpectThatEveryRefusedItemFailsTheRead(kPlainGroup + "\n" + kCacheGroup);
}

TEST_F(LDInfoGetterTest, EveryExceptionLeavesNothingBehind) {
    ExpectThatEveryExceptionLeavesNothingBehind(kPlainGroup + "\n" + kCacheGroup);
}

TEST_F(LDInfoGetterTest, WithoutADeletingEntryPointHeldItemsAreNotDeleted) {
    // A group key, an LD list with its number, and the access policy as read and as held.
    EXPECT_EQ(ItemsLeftWhenNoneCanBeDeleted(kGeneral + "\nAccess Policy : 1\n\nRG0\nA : 1\n>LD0(\n"), 5U);
}

TEST_F(LDInfoGetterTest, LinesOfAnyBytesAndAnyLengthArePassedThrough) {
    const std::string longText(1 << 20, 'x');
    EXPECT_EQ(
        ItemsOf("RG0" + kOddBytes + "\r\n\t" + kOddBytes + "\t:" + longText + "\r\n>LD" + longText + "(" +
                kOddBytes + ",\t" + longText + "\t,)\r\n>>PD" + longText + "(\r\n\r\n" + kGeneral + "\r\n" +
                longText + ":\r\n"),
        (Lines{"|" + kRoot + "||TRUE", kRoot + "|PD List||TRUE", "PD List|PD No.|PD" + longText + "|TRUE",
               kRoot + "|" + kGeneral + "||TRUE", kGeneral + "|" + kOddBytes + "|" + longText + "|TRUE",
               kGeneral + "|LD List||TRUE", "LD List|LD No.|LD" + longText + "|TRUE",
               "LD List|Name|" + kOddBytes + "|TRUE", "LD List|Capacity|" + longText + "|TRUE",
               "LD List|State||TRUE", kGeneral + "|" + longText + "||TRUE", kGeneral + "|" + kNoCache}));
}

TEST_F(LDInfoGetterTest, ALineWithANulByteIsReadAgainWhole) {
    const std::string nul(1, '\0');
    EXPECT_EQ(
        ItemsOf("RG0" + nul + "\nA" + nul + ": 1\n>LD0" + nul + "x(a" + nul + ",b,c)\n" + kGeneral + "\n"),
        (Lines{"|" + kRoot + "||TRUE", kRoot + "|" + kGeneral + "||TRUE", kGeneral + "|A|1|TRUE",
               kGeneral + "|LD List||TRUE", "LD List|LD No.|LD0|TRUE", "LD List|Name|a|TRUE",
               "LD List|Capacity|b|TRUE", "LD List|State|c|TRUE", kGeneral + "|" + kNoCache}));
}

TEST_F(LDInfoGetterTest, OneReadIsTracedInOrder) {
    m_Trace.Clear();
    EXPECT_EQ(Read("RG0(x) \nA : 1\n>LD0(a)\n>>PD0(b)\n\n" + kGeneral + "\nAssociated CacheCade LD\nLD0\n\n" +
                   kSettings + "\n"),
              0U);
    const Lines head{
        "4 CMSRAID_InfoGetter::CMSRAID_InfoGetter [START]",
        "4 CMSRAID_InfoGetter::CMSRAID_InfoGetter [END]",
        "4 CMSRAID_LDInfoGetter::CMSRAID_LDInfoGetter [START]",
        "4 CMSRAID_LDInfoGetter::CMSRAID_LDInfoGetter [END]",
        "4 CMSRAID_InfoGetter::GetInfo [START]",
        "1 execute vdkcli command.(vdkcli -ldpdinfo -a0)",
        "4 CMSRAID_InfoGetter::Parse [START]",
        "4 CMSRAID_LDInfoGetter::CreateRAIDItem [START]",
        "4 CMSRAID_LDInfoGetter::AddRootItem [START]",
        "4 CMSRAID_LDInfoGetter::AddRootItem [END]",
        "4 CMSRAID_LDInfoGetter::ParseRAIDlnfo [START], RG0(x) ",
        "4 CMSRAID_LDInfoGetter::ParseRAIDlnfo [END]",
        "4 CMSRAID_LDInfoGetter::CreateRAIDItem [END]",
        "4 CMSRAID_LDInfoGetter::CreateRAIDItem [START]",
        "4 CMSRAID_LDInfoGetter::ParseLDList [START], >LD0(a)",
        "4 CMSRAID_LDInfoGetter::ParseLDList [END]",
        "4 CMSRAID_LDInfoGetter::CreateRAIDItem [END]",
        "4 CMSRAID_LDInfoGetter::CreateRAIDItem [START]",
        "4 CMSRAID_LDInfoGetter::ParseLDList [START], >>PD0(b)",
        "4 CMSRAID_LDInfoGetter::ParseLDList [END]",
        "4 CMSRAID_LDInfoGetter::CreateRAIDItem [END]",
        "4 CMSRAID_LDInfoGetter::CreateRAIDItem [START]",
        "4 CMSRAID_LDInfoGetter::ParseGeneralnfo [START]",
        "4 CMSRAID_LDInfoGetter::ParseAssocLD [START]",
        "4 CMSRAID_LDInfoGetter::ParseAssocLD [END]",
        "4 CMSRAID_LDInfoGetter::ParseGeneralnfo [END]",
        "4 CMSRAID_LDInfoGetter::CreateRAIDItem [END]",
        "4 CMSRAID_LDInfoGetter::CreateRAIDItem [START]",
        "4 CMSRAID_LDInfoGetter::CreateRAIDItem [END]",
        "4 CMSRAID_LDInfoGetter::FreeItemList [START]",
        "4 CMSRAID_LDInfoGetter::FreeItemList [END]",
        "4 CMSRAID_InfoGetter::Parse [END]",
        "4 CMSRAID_InfoGetter::GetInfo [END]",
        "4 CMSRAID_LDInfoGetter::~CMSRAID_LDInfoGetter [START]",
        "4 CMSRAID_LDInfoGetter::~CMSRAID_LDInfoGetter [END]",
        "4 CMSRAID_InfoGetter::~CMSRAID_InfoGetter [START]",
        "4 CMSRAID_InfoGetter::~CMSRAID_InfoGetter [END]",
    };
    EXPECT_EQ(m_Trace.Lines(), head);
}

TEST_F(LDInfoGetterTest, DrivesAreMappedToTheGroupInForce) {
    EXPECT_EQ(GroupsIn("RG0\n RG No. : RG0\n>>PD3(ONLINE)\n  >>PD 12 (x\r\nRG No.:\tscRG1 \r\nRG1\n>>PD5(\n"),
              (GroupMap{{3, "RG0"}, {12, "RG0"}, {5, "scRG1"}}));
    EXPECT_EQ(GroupsIn("RG No. : a : b\n>>PD0(x)"), (GroupMap{{0, "a : b"}}));
    EXPECT_EQ(GroupsIn(" \t  RG No.:RG0\n>>PD0(x)"), (GroupMap{{0, "RG0"}}));
    EXPECT_THAT(ToolBench::Runs(), ::testing::Each("-ldpdinfo -a3"));
}

TEST_F(LDInfoGetterTest, ADriveBeforeAnyGroupAddsNothing) {
    EXPECT_EQ(GroupsIn(">>PD0(x)\nRG No. : RG0\n>>PD1(x)\n"), (GroupMap{{1, "RG0"}}));
}

TEST_F(LDInfoGetterTest, AnEmptyGroupAddsNothing) {
    EXPECT_EQ(GroupsIn("RG No. : RG0\nRG No. : \n>>PD1(x)\n"), GroupMap{});
}

TEST_F(LDInfoGetterTest, TheFirstGroupOfADriveWins) {
    EXPECT_EQ(GroupsIn("RG No. : RG0\n>>PD1(x)\nRG No. : RG1\n>>PD1(x)\n>>PD2(x)\n"),
              (GroupMap{{1, "RG0"}, {2, "RG1"}}));
    EXPECT_EQ(GroupsIn("RG No. : RG0\n>>PD1(x)\n>>PD2(x)\n", {{1, "there"}}),
              (GroupMap{{1, "there"}, {2, "RG0"}}));
}

TEST_F(LDInfoGetterTest, OtherLinesChangeNothingInTheMap) {
    EXPECT_EQ(GroupsIn("RG No. : RG0\nRG No. RG1\nThe RG No. : RG2\nrg No. : RG3\nRG : RG4\n"
                       ">>PD1 x\nx >>PD2(x)\n>PD3(x)\n>LD4(x)\n(\n>>PD5(x)\n"),
              (GroupMap{{5, "RG0"}}));
}

TEST_F(LDInfoGetterTest, ADrivesNumberIsItsLeadingDigits) {
    EXPECT_EQ(GroupsIn("RG No. : RG0\n>>PD7x9(a)\n>>PDx(a)\n>>PD(a)\n>>PD-2(a)\n"),
              (GroupMap{{7, "RG0"}, {0, "RG0"}, {-2, "RG0"}}));
}

TEST_F(LDInfoGetterTest, AMapIsTracedInOrderAndLeavesNoFile) {
    m_Tool.Answer("ldpdinfo_a0.txt", kPlainGroup);
    CMSRAID_LDInfoGetter reader;
    m_Trace.Clear();
    GroupMap groups;
    EXPECT_EQ(reader.GetPDRGNo(0, &groups), 0U);
    EXPECT_EQ(groups, (GroupMap{{0, "RG0"}, {1, "RG0"}}));
    EXPECT_THAT(m_Trace.Lines(), ElementsAre("4 CMSRAID_LDInfoGetter::GetPDRGNo [START]",
                                             "1 execute vdkcli command.(vdkcli -ldpdinfo -a0)",
                                             "4 CMSRAID_LDInfoGetter::GetPDRGNo [END]"));
    EXPECT_THAT(m_Root.ResultFiles(), IsEmpty());
}

TEST_F(LDInfoGetterTest, AMapThatFailsStaysAsItIs) {
    CMSRAID_LDInfoGetter reader;
    GroupMap groups{{7, "there"}};
    m_Tool.Answer("ldpdinfo_a0.do", "exit 3\n");
    m_Tool.Answer("ldpdinfo_a0.txt", kPlainGroup);
    m_Trace.Clear();
    EXPECT_EQ(reader.GetPDRGNo(0, &groups), 0xA1U);
    EXPECT_EQ(reader.GetReason(), "01");
    EXPECT_THAT(Failures(), ElementsAre("Failed to execute vdkcli command.(vdkcli -ldpdinfo -a0)",
                                        "Failed to execute vdkcli command 000000a1."));
    EXPECT_EQ(m_Trace.Lines().back(), "4 CMSRAID_LDInfoGetter::GetPDRGNo [END]");
    EXPECT_THAT(m_Root.ResultFiles(), IsEmpty());

    reader.*(&ReaderAccess::m_CmdFormat) = CommandWithoutFile();
    m_Trace.Clear();
    EXPECT_EQ(reader.GetPDRGNo(0, &groups), 0x80000001U);
    EXPECT_EQ(reader.GetReason(), "0401");
    EXPECT_THAT(Failures(),
                ElementsAre(StartsWith("Failed to open file output by vdkcli(" + m_Root.Path().string()),
                            StartsWith("Failed to delete file(" + m_Root.Path().string())));
    EXPECT_EQ(groups, (GroupMap{{7, "there"}}));
}

TEST_F(LDInfoGetterTest, AMapsFileThatCannotBeDeletedDoesNotChangeTheResult) {
    CMSRAID_LDInfoGetter reader;
    reader.*(&ReaderAccess::m_CmdFormat) = CommandWithPinnedFile();
    GroupMap groups;
    EXPECT_EQ(reader.GetPDRGNo(0, &groups), 0U);
    EXPECT_EQ(reader.GetReason(), "");
    EXPECT_THAT(Failures(), ElementsAre(StartsWith("Failed to delete file(" + m_Root.Path().string())));
    m_ExpectedLeftFiles = m_Root.ResultFiles();
}

}  // namespace
