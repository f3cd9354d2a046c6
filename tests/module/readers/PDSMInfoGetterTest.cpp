#include "readers/CMSRAID_PDSMInfoGetter.h"

#include "ReaderTest.h"

#include <algorithm>
#include <stdexcept>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testsupport::kOddBytes;
using testsupport::Lines;
using testsupport::ReaderAccess;
using testsupport::ToolBench;

const std::string kRoot = "Physical Drive Information";
const std::string kGeneral = "### General Information ###";
const std::string kSMART = "### SMART Information ###";
const std::string kKeys = "Temperature : 31\nPower-On Time : 99\n\n";
const std::string kSASTitle = kSMART + "|SMART Detail(SAS)||TRUE";
const std::string kSATATitle = kSMART + "|SMART Detail(SATA)||TRUE";
const std::string kNoSASTable = kSMART + "|SMART Detail(SAS)||FALSE";
const std::string kNoSATATable = kSMART + "|SMART Detail(SATA)||FALSE";
const std::string kSlot = "### Slot Information ###";
const std::string kSlotTitle = "|### Enclosure Properties Information ###||TRUE";
const std::string kSlotItem = "### Enclosure Properties Information ###|Enclosure ID||FALSE";

// Columns begin at 0, 10 and 16.
const std::string kSASHeader = "Attribute Fast  Total\n--------- ----  -----\n";

// The attribute's name, 40 characters wide.
std::string Wide(std::string name) {
    name.resize(40, ' ');
    return name;
}

std::string TypeLine(const std::string& type) {
    return kGeneral + "\nInterface Type : " + type + "\nTemperature : 30\n\n";
}

class PDSMInfoGetterTest : public testsupport::ReaderTest {
  protected:
    PDSMInfoGetterTest() { m_Tool.Answer("ldpdinfo_a0.txt", "RG No. : RG0\n>>PD5(x)\n"); }

    ResultCode Read(const std::string& report) override {
        CMSRAID_PDSMInfoGetter reader;
        return ReadWith(reader, report);
    }
    ResultCode ReadWith(CMSRAID_PDSMInfoGetter& reader, const std::string& report) {
        m_Tool.Answer("pdinfo_pd2.5_a0.txt", report);
        const ResultCode result = reader.GetInfo(0, 2, 5, m_Library.Wrapper(), m_Items);
        m_Reason = reader.GetReason();
        return result;
    }
    /// Items behind the SMART title, for a drive of that interface type.
    Lines SMARTOf(const std::string& type, const std::string& lines) {
        const Lines items = ItemsOf(TypeLine(type) + kSMART + "\n" + lines);
        const auto title = std::find(items.begin(), items.end(), "|" + kSMART + "||TRUE");
        EXPECT_NE(title, items.end());
        return title == items.end() ? items : Lines(title + 1, items.end());
    }
    /// The same behind the section's two keys.
    Lines TableOf(const std::string& type, const std::string& lines) {
        const Lines items = SMARTOf(type, kKeys + lines);
        const Lines keys{kSMART + "|Temperature|31|TRUE", kSMART + "|Power-On Time|99|TRUE"};
        if (items.size() < 2 || Lines(items.begin(), items.begin() + 2) != keys) {
            ADD_FAILURE() << "no SMART section with its keys: " << ::testing::PrintToString(items);
            return items;
        }
        return {items.begin() + 2, items.end()};
    }
    /// Item lines of a table's row.
    static Lines Row(const std::string& type, const Lines& cells) {
        const std::string detail = "SMART Detail(" + type + ")";
        Lines lines{kSMART + "|" + detail + "||TRUE"};
        for (const std::string& cell : cells) {
            lines.push_back(detail + "|" + cell + "|TRUE");
        }
        return lines;
    }
    static Lines Rows(const Lines& first, const Lines& second) {
        Lines rows = first;
        rows.insert(rows.end(), second.begin(), second.end());
        return rows;
    }
    void ExpectOutOfRange(const std::string& type, const std::string& table, const std::string& operation) {
        m_Trace.Clear();
        EXPECT_THROW(static_cast<void>(Read("PD5(LD0)\n" + TypeLine(type) + kSMART + "\n" + kKeys + table)),
                     std::out_of_range)
            << table;
        EXPECT_THAT(Items(), IsEmpty());
        EXPECT_EQ(m_Library.ItemsAlive(), 0U);
        EXPECT_THAT(m_Root.ResultFiles(), IsEmpty());
        EXPECT_THAT(Failures(), IsEmpty());
        const Lines operations = m_Trace.Texts(4);
        const auto left = std::find(operations.begin(), operations.end(),
                                    "CMSRAID_PDSMInfoGetter::" + operation + " [START]");
        ASSERT_NE(left, operations.end());
        // Left by exception, nothing on the way writes an end line; the readers are destroyed all the same.
        EXPECT_THAT(Lines(left + 1, operations.end()), ::testing::Each(::testing::HasSubstr("::~")));
    }
};

TEST_F(PDSMInfoGetterTest, OneDriveIsReadWithEverythingOfThePhysicalDriveReader) {
    EXPECT_EQ(
        ItemsOf("PD5(LD1)\n" + kGeneral +
                "\nInterface Type : SATA\nPD Status : FAILED\nPower Status : On\n\n" + kSlot +
                "\nSlot No. : 5\n\n" + kSMART +
                " of it \nTemperature : 31\n\nAttribute Raw Data Status\nline\nx " + Wide("1 2") + "OK\n"),
        (Lines{
            "|Physical Drive Information||TRUE",
            kRoot + "|" + kGeneral + "||TRUE",
            kGeneral + "|PD No.|PD5|TRUE",
            kGeneral + "|RG No.|RG0|TRUE",
            kGeneral + "|LD No.|LD1|TRUE",
            kGeneral + "|Interface Type|SATA|TRUE",
            kGeneral + "|PD Status|ERROR|TRUE",
            kGeneral + "|PD Status(Detail)|FAILED|TRUE",
            kGeneral + "|Temperature||FALSE",
            kGeneral + "|Power Status|On|TRUE",
            kRoot + kSlotTitle,
            kSlotItem,
            "### Enclosure Properties Information ###|Slot No.|5|TRUE",
            kRoot + "|### SMART Information ### of it||TRUE",
            "### SMART Information ### of it|Temperature|31|TRUE",
            "### SMART Information ### of it|Power-On Time||FALSE",
            "### SMART Information ### of it|SMART Detail(SATA)||TRUE",
            "SMART Detail(SATA)|Attribute|x|TRUE",
            "SMART Detail(SATA)|Raw Data|1 2|TRUE",
            "SMART Detail(SATA)|Status|OK|TRUE",
        }));
    EXPECT_THAT(ToolBench::Runs(), ElementsAre("-ldpdinfo -a0", "-pdinfo -pd[2:5] -a0"));
}

TEST_F(PDSMInfoGetterTest, TheCommandNamesTheDriveByTheLow32BitsOfItsNumbers) {
    struct Drive {
        long enclosure;
        long number;
        std::string command;
    };
    const Drive drives[] = {
        {2, 5, "vdkcli -pdinfo -pd[2:5] -a%s"},
        {252, 0, "vdkcli -pdinfo -pd[252:0] -a%s"},
        {(1L << 32) + 7, (1L << 33) + 8, "vdkcli -pdinfo -pd[7:8] -a%s"},
        {-1, 0xffffffffL, "vdkcli -pdinfo -pd[-1:-1] -a%s"},
        {0x80000000L, 0x7fffffffL, "vdkcli -pdinfo -pd[-2147483648:2147483647] -a%s"},
    };
    m_Tool.Answer("any.do", "exit 3\n");
    CMSRAID_PDSMInfoGetter reader;
    EXPECT_EQ(reader.*(&ReaderAccess::m_CmdFormat), "");
    for (const Drive& drive : drives) {
        EXPECT_EQ(reader.GetInfo(0, drive.enclosure, drive.number, m_Library.Wrapper(), m_Items), 0xA1U);
        EXPECT_EQ(reader.*(&ReaderAccess::m_CmdFormat), drive.command);
    }
}

TEST_F(PDSMInfoGetterTest, WithoutTheMapOfGroupsTheDriveIsNotRead) {
    m_Tool.Answer("ldpdinfo_a0.do", "exit 3\n");
    EXPECT_EQ(Read(TypeLine("SAS")), 0xA1U);
    EXPECT_EQ(m_Reason, "01");
    EXPECT_THAT(ToolBench::Runs(), ::testing::Each("-ldpdinfo -a0"));
}

TEST_F(PDSMInfoGetterTest, MissingKeysFollowTheSectionsOwnTemperatureFirst) {
    const std::string temperature = kSMART + "|Temperature||FALSE";
    const std::string time = kSMART + "|Power-On Time||FALSE";
    const std::string other = kSMART + "|A|1|TRUE";
    EXPECT_EQ(SMARTOf("", ""), (Lines{temperature, time}));
    EXPECT_EQ(SMARTOf("", "A : 1\n"), (Lines{other, temperature, time}));
    EXPECT_EQ(SMARTOf("", "Temperature :\nA : 1\n"), (Lines{kSMART + "|Temperature||TRUE", other, time}));
    EXPECT_EQ(SMARTOf("", "Power-On Time : 1\nA : 1\n"),
              (Lines{kSMART + "|Power-On Time|1|TRUE", other, temperature}));
    EXPECT_EQ(SMARTOf("", "Power-On Time : 1\nTemperature : 2\n"),
              (Lines{kSMART + "|Power-On Time|1|TRUE", kSMART + "|Temperature|2|TRUE"}));
    EXPECT_EQ(
        SMARTOf("", "Drive Temperature : 1\npower-On Time : 2\n"),
        (Lines{kSMART + "|Drive Temperature|1|TRUE", kSMART + "|power-On Time|2|TRUE", temperature, time}));
}

TEST_F(PDSMInfoGetterTest, TheKeysPassOverLinesWithoutAUsableColonAndEndAtABlankLine) {
    for (const std::string blank : {"\n", " \t\r\n"}) {
        EXPECT_EQ(
            SMARTOf("SAS", "no key\n : no\n: no\n### Attribute ###\nTemperature : 1\nPower-On Time : 2\n" +
                               blank + "A : 1\n"),
            (Lines{kSMART + "|Temperature|1|TRUE", kSMART + "|Power-On Time|2|TRUE", kNoSASTable}));
    }
}

TEST_F(PDSMInfoGetterTest, WithoutATableThePlaceholderNamesTheInterfaceType) {
    for (const std::string rest :
         {"", "\n", "\n \t\r\n\n", " \t", "no table\n", "no table", "attribute\n", "Attribut e\n"}) {
        EXPECT_EQ(TableOf("SAS", rest), Lines{kNoSASTable}) << rest;
        EXPECT_EQ(TableOf("SATA", rest), Lines{kNoSATATable}) << rest;
        for (const std::string type : {"", "NVMe", "sas", "SAS 12G", "SATA3", "S"}) {
            EXPECT_EQ(TableOf(type, rest), Lines{}) << type << rest;
        }
    }
}

TEST_F(PDSMInfoGetterTest, AnotherTypesTableIsNotReadAndItsHeaderIsGone) {
    for (const std::string type : {"", "NVMe", "sas", "SAS 12G", "SATA3"}) {
        EXPECT_EQ(TableOf(type, kSASHeader + "Read      1     2\n"), Lines{}) << type;
        EXPECT_EQ(TableOf(type, "RAID Controller Attribute : 1\nRAID Controller : 2\n" + kSlot + "\n"),
                  (Lines{kSMART + "|RAID Controller|2|TRUE", kSlotTitle, kSlotItem}));
    }
}

TEST_F(PDSMInfoGetterTest, TheLineInTheTablesPlaceIsReadAgain) {
    for (const std::string blanks : {"", "\n", "\n \t\r\n\n"}) {
        for (const std::string end : {"\n", "\r\n", ""}) {
            EXPECT_EQ(TableOf("SAS", blanks + kSlot + end), (Lines{kNoSASTable, kSlotTitle, kSlotItem}));
            EXPECT_EQ(TableOf("SATA", blanks + "RAID Controller : 1" + end),
                      (Lines{kNoSATATable, kSMART + "|RAID Controller|1|TRUE"}));
            EXPECT_EQ(TableOf("NVMe", blanks + "PD6(GHS)" + end), Lines{"|" + kRoot + "||TRUE"});
        }
    }
}

TEST_F(PDSMInfoGetterTest, AKeySectionThatEndsTheFileHasNoTableAndEndsTheRead) {
    EXPECT_EQ(SMARTOf("SAS", "Temperature : 1\nPower-On Time : 2"),
              (Lines{kSMART + "|Temperature|1|TRUE", kSMART + "|Power-On Time|2|TRUE", kNoSASTable}));
    EXPECT_EQ(SMARTOf("SATA", "Temperature : 1\nPower-On Time : 2\n"),
              (Lines{kSMART + "|Temperature|1|TRUE", kSMART + "|Power-On Time|2|TRUE", kNoSATATable}));
    EXPECT_EQ(ItemsOf(kSMART), (Lines{"|" + kSMART + "||TRUE", kSMART + "|Temperature||FALSE",
                                      kSMART + "|Power-On Time||FALSE"}));
}

TEST_F(PDSMInfoGetterTest, TheLastInterfaceTypeReadHolds) {
    const std::string drive = "PD5(x)\n" + kGeneral + "\nTemperature : 1\n\n" + kSMART + "\n\nPD6(x)\n";
    EXPECT_THAT(ItemsOf(TypeLine("SATA") + TypeLine("SAS") + drive + kSMART + "\n\n"),
                ::testing::Contains(kNoSASTable).Times(2));
    CMSRAID_PDSMInfoGetter reader;
    EXPECT_EQ(ReadWith(reader, TypeLine("SATA")), 0U);
    EXPECT_EQ(ReadWith(reader, kSMART + "\n"), 0U);
    EXPECT_EQ(TakeItems().back(), kNoSATATable);
}

TEST_F(PDSMInfoGetterTest, AStreamThatHasFailedIsRefusedAndTheTitleStays) {
    CMSRAID_PDSMInfoGetter reader;
    m_Trace.Clear();
    EXPECT_EQ(HookOnFailedStream(reader, kSMART), 0x80000001U);
    EXPECT_THAT(m_Trace.Lines(),
                ElementsAre("4 CMSRAID_PDSMInfoGetter::ParseSMARTInfo [START]", "2 Invalid Arg.",
                            "4 CMSRAID_PDSMInfoGetter::ParseSMARTInfo [END]"));
    EXPECT_EQ(TakeItems(), Lines{"|" + kSMART + "||TRUE"});
}

TEST_F(PDSMInfoGetterTest, TheSMARTOperationStandsBehindTheBasesInTheTable) {
    using Operation = ResultCode (*)(CMSRAID_InfoGetter*, std::ifstream&, std::string);
    CMSRAID_PDSMInfoGetter reader;
    void** const slots = *reinterpret_cast<void***>(static_cast<CMSRAID_InfoGetter*>(&reader));
    std::ifstream failed;
    failed.setstate(std::ios::badbit);
    m_Trace.Clear();
    EXPECT_EQ(reinterpret_cast<Operation>(slots[10])(&reader, failed, kSMART), 0x80000001U);
    EXPECT_EQ(m_Trace.Lines().front(), "4 CMSRAID_PDSMInfoGetter::ParseSMARTInfo [START]");
}

TEST_F(PDSMInfoGetterTest, ASATAHeaderIsSplitAtSeparatorsWithRawDataAsOneName) {
    EXPECT_EQ(TableOf("SATA", " ID  Attribute\tFlag \t Raw Data  Status \r\nline\n5   " +
                                  Wide("Reallocated Sectors: Count") + "0x33\t0   OK\r\n"),
              Row("SATA",
                  {"ID|5", "Attribute|Reallocated Sectors: Count", "Flag|0x33", "Raw Data|0", "Status|OK"}));
}

TEST_F(PDSMInfoGetterTest, OnlyTheWordRawWithMoreBehindItSkipsFiveCharacters) {
    struct Header {
        std::string header;
        Lines names;
    };
    const Header headers[] = {
        {"Attribute Raw", {"Attribute", "Raw"}},
        {"Attribute RAW x", {"Attribute", "RAW", "x"}},
        {"Attribute Raws x", {"Attribute", "Raws", "x"}},
        {"Attribute Raw Data x", {"Attribute", "Raw Data", "x"}},
        {"Attribute Raw\tData\tx", {"Attribute", "Raw Data", "x"}},
        {"Attribute Raw Data2 x", {"Attribute", "Raw Data", "2", "x"}},
        {"Attribute Raw  Data", {"Attribute", "Raw Data", "a"}},
        {"Attribute Raw Value", {"Attribute", "Raw Data", "e"}},
        {"Raw Data Attribute", {"Raw Data", "Attribute"}},
    };
    for (const Header& row : headers) {
        std::string cells = "1";
        Lines expected{row.names[0] + "|1"};
        for (std::size_t column = 1; column < row.names.size(); ++column) {
            cells += " " + (column == 1 && row.names.size() > 2 ? Wide("2") : "2");
            expected.push_back(row.names[column] + "|2");
        }
        EXPECT_EQ(TableOf("SATA", row.header + "\nline\n" + cells + "\n"), Row("SATA", expected))
            << row.header;
    }
}

TEST_F(PDSMInfoGetterTest, ASATAAttributesNameIs40CharactersWhateverTheyHold) {
    const std::string header = "ID Attribute Flag\nline\n";
    const std::string name39(39, 'n');
    EXPECT_EQ(TableOf("SATA", header + "1 " + name39 + " 0x1\n"),
              Row("SATA", {"ID|1", "Attribute|" + name39, "Flag|0x1"}));
    EXPECT_EQ(TableOf("SATA", header + "1 a  b\tc" + std::string(33, ' ') + " 0x1\n"),
              Row("SATA", {"ID|1", "Attribute|a  b\tc", "Flag|0x1"}));
    // Longer names spill into the next cell.
    EXPECT_EQ(TableOf("SATA", "ID Attribute Flag Status\nline\n1 " + name39 + "nFlag OK\n"),
              Row("SATA", {"ID|1", "Attribute|" + name39 + "n", "Flag|Flag", "Status|OK"}));
}

TEST_F(PDSMInfoGetterTest, ASATASecondCellWithoutAnythingBehindItIsTheRow) {
    EXPECT_EQ(TableOf("SATA", "ID Attribute\nline\n1 short\n2 " + std::string(50, 'n') + "\n"),
              Rows(Row("SATA", {"ID|1", "Attribute|short"}),
                   Row("SATA", {"ID|2", "Attribute|" + std::string(50, 'n')})));
}

TEST_F(PDSMInfoGetterTest, ASATATableOfOneColumnTakesRowsOfOneWord) {
    EXPECT_EQ(TableOf("SATA", "Attribute\nline\none\ntwo"),
              Rows(Row("SATA", {"Attribute|one"}), Row("SATA", {"Attribute|two"})));
}

TEST_F(PDSMInfoGetterTest, TheLineUnderAHeaderIsIgnoredWhateverItIs) {
    for (const std::string line : {"\n", "one\n", "[Head 9]\n", "### T ###\n", "PD1(x)\n"}) {
        EXPECT_EQ(TableOf("SATA", "Attribute\n" + line + "one\n"), Row("SATA", {"Attribute|one"}));
        EXPECT_EQ(TableOf("SAS", "Attribute\n" + line + "one\n"), Row("SAS", {"Attribute|one"}));
    }
    EXPECT_EQ(TableOf("SATA", "Attribute\n"), Lines{});
    EXPECT_EQ(TableOf("SAS", "Attribute"), Lines{});
}

TEST_F(PDSMInfoGetterTest, TheLineWithTheWordAttributeAnywhereIsTheHeader) {
    EXPECT_EQ(TableOf("SAS", "\n\t\n myAttributes : x\nline\none  two       y z\n"),
              Row("SAS", {"myAttributes|one  two", ":|", "x|y z"}));
}

TEST_F(PDSMInfoGetterTest, ATableReachesToTheReportsEndAcrossBlankLinesAndTitles) {
    EXPECT_EQ(TableOf("SATA", "Attribute\nline\n\none\n \t\r\n\n###\nPD6(GHS)\n"),
              Rows(Row("SATA", {"Attribute|one"}),
                   Rows(Row("SATA", {"Attribute|###"}), Row("SATA", {"Attribute|PD6(GHS)"}))));
    EXPECT_EQ(TableOf("SAS", "Attribute\nline\n\none\n \t\r\n\n" + kSlot + "\nPD6(GHS)\n"),
              Rows(Row("SAS", {"Attribute|one"}),
                   Rows(Row("SAS", {"Attribute|" + kSlot}), Row("SAS", {"Attribute|PD6(GHS)"}))));
}

TEST_F(PDSMInfoGetterTest, ASATARowWithAnotherNumberOfCellsFailsBehindItsGroupItem) {
    const std::string head = TypeLine("SATA") + kSMART + "\n" + kKeys + "ID Attribute Flag\nline\n";
    const std::string good = "1 " + Wide("a") + "0x1\n";
    const std::string four = "1 " + Wide("a") + "0x1 OK";
    EXPECT_EQ(FailuresOf(head + good + " 7 \n"), Lines{"Parse SmartDeital is FAILED.(7)"});
    EXPECT_EQ(FailuresOf(head + "7 seven\n" + good), Lines{"Parse SmartDeital is FAILED.(7 seven)"});
    EXPECT_EQ(FailuresOf(head + four + "\n"), Lines{"Parse SmartDeital is FAILED.(" + four + ")"});
    EXPECT_THAT(m_Trace.Texts(4), ::testing::IsSupersetOf({"CMSRAID_PDSMInfoGetter::ParseSMARTSATA [END]",
                                                           "CMSRAID_PDSMInfoGetter::ParseSMARTInfo [END]"}));
    // Title, type and temperature, title, two keys, and the row's group item.
    const std::size_t before = m_Library.ItemsDeleted();
    static_cast<void>(FailuresOf(head + "7\n"));
    EXPECT_EQ(m_Library.ItemsDeleted() - before, 7U);
}

TEST_F(PDSMInfoGetterTest, ARowWhoseOwnItemIsRefusedIsNotBlamedForItsCells) {
    m_Library.FailCreationsFrom(7);
    EXPECT_EQ(FailuresOf(TypeLine("SATA") + kSMART + "\n" + kKeys + "ID Attribute Flag\nline\n7\n"), Lines{});
}

TEST_F(PDSMInfoGetterTest, ASATARowThatEndsWithinItsNamesWidthLeavesByException) {
    const std::string header = "ID Attribute Flag\nline\n";
    const Lines rows{"1 short name", "1 " + std::string(38, 'n') + " x", "1 n\t" + std::string(30, 'x')};
    for (const std::string& row : rows) {
        ExpectOutOfRange("SATA", header + row + "\n", "ParseSMARTSATA");
    }
    EXPECT_EQ(TableOf("SATA", header + "1 " + std::string(39, 'n') + " x\n"),
              Row("SATA", {"ID|1", "Attribute|" + std::string(39, 'n'), "Flag|x"}));
}

TEST_F(PDSMInfoGetterTest, ASATAHeaderThatEndsWithRawDataLeavesByException) {
    ExpectOutOfRange("SATA", "ID Attribute Raw Data\nline\n", "ParseSMARTSATA");
    ExpectOutOfRange("SATA", "ID Attribute Raw Dat \n", "ParseSMARTSATA");
    ExpectOutOfRange("SATA", "Attribute Raw x", "ParseSMARTSATA");
}

TEST_F(PDSMInfoGetterTest, SASRowsAreCutWhereTheHeadersColumnsStart) {
    EXPECT_EQ(
        TableOf("SAS",
                kSASHeader +
                    "Read      12    345 6\nWrite All 1\t  \t 7\r\nReadAllTheThings\n0123456789abcdefgh\n"),
        Rows(Rows(Row("SAS", {"Attribute|Read", "Fast|12", "Total|345 6"}),
                  Row("SAS", {"Attribute|Write All", "Fast|1", "Total|7"})),
             Rows(Row("SAS", {"Attribute|ReadAllThe", "Fast|Things", "Total|"}),
                  Row("SAS", {"Attribute|0123456789", "Fast|abcdef", "Total|gh"}))));
}

TEST_F(PDSMInfoGetterTest, AnIndentedSASTableIsCutByItsTrimmedLines) {
    EXPECT_EQ(TableOf("SAS", "\t Attribute\tRaw Data\nline\n  Read      1   2\n"),
              Row("SAS", {"Attribute|Read", "Raw|1", "Data|2"}));
}

TEST_F(PDSMInfoGetterTest, ASASRowThatEndsBeforeAColumnStartsLeavesByException) {
    ExpectOutOfRange("SAS", kSASHeader + "ReadAllTheThing\n", "ParseSMARTSAS");
    ExpectOutOfRange("SAS", kSASHeader + "Read      12    3\nRead\n", "ParseSMARTSAS");
    ExpectOutOfRange("SAS", kSASHeader + "[head 0]\n", "ParseSMARTSAS");
    ExpectOutOfRange("SAS", kSASHeader + "[Hea d]\n", "ParseSMARTSAS");
}

TEST_F(PDSMInfoGetterTest, AHeadLabelsTheFirstCellsOfTheRowsBelowItUntilTheNext) {
    EXPECT_EQ(TableOf("SAS",
                      "Attribute A\nline\nRead      0\n\t[Head 0] \r\nRead      1\n\nWrite     "
                      "2\n[Header\n[Head\nx[Head    3\n"),
              Rows(Rows(Row("SAS", {"Attribute|Read", "A|0"}), Row("SAS", {"Attribute|[Head 0]Read", "A|1"})),
                   Rows(Row("SAS", {"Attribute|[Head 0]Write", "A|2"}),
                        Row("SAS", {"Attribute|[Headx[Head", "A|3"}))));
    EXPECT_EQ(TableOf("SATA", "Attribute\nline\n[Head\nx\n"),
              Rows(Row("SATA", {"Attribute|[Head"}), Row("SATA", {"Attribute|x"})));
}

TEST_F(PDSMInfoGetterTest, RefusedKeysAreTraced) {
    m_Library.FailCreationsFrom(2);
    EXPECT_EQ(FailuresOf(kSMART + "\nA : 1\n"), Lines{"ParseKeyValue is FAILED (hr=80000001)."});
    m_Library.FailCreationsFrom(2);
    EXPECT_EQ(FailuresOf(kSMART + "\n"), Lines{});
}

TEST_F(PDSMInfoGetterTest, EveryItemThatTheLibraryRefusesFailsTheReadAndNothingIsLeft) {
    const std::string head = "PD5(LD0)\n";
    const std::string section = kSMART + "\nA : 1\n\n";
    ExpectThatEveryRefusedItemFailsTheRead(head + TypeLine("SAS") + section + kSASHeader +
                                           "[Head 0]\nRead      12    345\n");
    ExpectThatEveryRefusedItemFailsTheRead(head + TypeLine("SATA") + section + "ID Attribute Flag\nline\n1 " +
                                           Wide("a") + "x\n");
    ExpectThatEveryRefusedItemFailsTheRead(head + TypeLine("SAS") + section);
    ExpectThatEveryRefusedItemFailsTheRead(head + TypeLine("SATA") + section);
}

TEST_F(PDSMInfoGetterTest, EveryExceptionLeavesNothingBehind) {
    ExpectThatEveryExceptionLeavesNothingBehind("PD5(LD0)\n" + TypeLine("SAS") + kSMART + "\nA : 1\n\n" +
                                                kSASHeader + "Read      12    345\n");
}

TEST_F(PDSMInfoGetterTest, TablesOfAnyBytesAndAnyLengthArePassedThrough) {
    const std::string longText(1 << 20, 'x');
    EXPECT_EQ(TableOf("SATA", "Attribute" + longText + " " + kOddBytes + "\r\n\r\n" + kOddBytes + "\t" +
                                  longText + "\r\n"),
              Row("SATA", {"Attribute" + longText + "|" + kOddBytes, kOddBytes + "|" + longText}));
    EXPECT_EQ(TableOf("SAS", "Attribute " + kOddBytes + "\r\n\r\n[Head" + kOddBytes + "\r\nRead      " +
                                 longText + "\r\n"),
              Row("SAS", {"Attribute|[Head" + kOddBytes + "Read", kOddBytes + "|" + longText}));
}

TEST_F(PDSMInfoGetterTest, ANulByteInTheKeySectionDoesNotShiftTheLineReadAgain) {
    const std::string nul(1, '\0');
    EXPECT_EQ(TableOf("SAS", nul + nul + "\n" + kSlot + "\n"), (Lines{kNoSASTable, kSlotTitle, kSlotItem}));
}

TEST_F(PDSMInfoGetterTest, OneReadIsTracedInOrderUnderTheBasesNames) {
    for (const std::string type : {"SAS", "SATA"}) {
        m_Trace.Clear();
        EXPECT_EQ(Read(TypeLine(type) + kSMART + "\n\nAttribute\nline\none\n"), 0U);
        EXPECT_EQ(m_Trace.Lines(), (Lines{
                                       "4 CMSRAID_InfoGetter::CMSRAID_InfoGetter [START]",
                                       "4 CMSRAID_InfoGetter::CMSRAID_InfoGetter [END]",
                                       "4 CMSRAID_PDInfoGetter::CMSRAID_PDInfoGetter [START]",
                                       "4 CMSRAID_PDInfoGetter::CMSRAID_PDInfoGetter [END]",
                                       "4 CMSRAID_PDSMInfoGetter::CMSRAID_PDInfoGetter [START]",
                                       "4 CMSRAID_PDSMInfoGetter::CMSRAID_PDInfoGetter [END]",
                                       "4 CMSRAID_PDInfoGetter::GetInfo [START]",
                                       "4 CMSRAID_PDInfoGetter::GetInfo [START]",
                                       "4 CMSRAID_InfoGetter::CMSRAID_InfoGetter [START]",
                                       "4 CMSRAID_InfoGetter::CMSRAID_InfoGetter [END]",
                                       "4 CMSRAID_LDInfoGetter::CMSRAID_LDInfoGetter [START]",
                                       "4 CMSRAID_LDInfoGetter::CMSRAID_LDInfoGetter [END]",
                                       "4 CMSRAID_LDInfoGetter::GetPDRGNo [START]",
                                       "1 execute vdkcli command.(vdkcli -ldpdinfo -a0)",
                                       "4 CMSRAID_LDInfoGetter::GetPDRGNo [END]",
                                       "4 CMSRAID_InfoGetter::GetInfo [START]",
                                       "1 execute vdkcli command.(vdkcli -pdinfo -pd[2:5] -a0)",
                                       "4 CMSRAID_InfoGetter::Parse [START]",
                                       "4 CMSRAID_PDInfoGetter::ParseGeneralnfo [START]",
                                       "4 CMSRAID_PDInfoGetter::ParseGeneralnfo [END]",
                                       "4 CMSRAID_PDSMInfoGetter::ParseSMARTInfo [START]",
                                       "4 CMSRAID_PDSMInfoGetter::ParseSMART" + type + " [START]",
                                       "4 CMSRAID_PDSMInfoGetter::ParseSMART" + type + " [END]",
                                       "4 CMSRAID_PDSMInfoGetter::ParseSMARTInfo [END]",
                                       "4 CMSRAID_PDInfoGetter::FreeItemList [START]",
                                       "4 CMSRAID_PDInfoGetter::FreeItemList [END]",
                                       "4 CMSRAID_InfoGetter::Parse [END]",
                                       "4 CMSRAID_InfoGetter::GetInfo [END]",
                                       "4 CMSRAID_PDInfoGetter::GetInfo [END]",
                                       "4 CMSRAID_LDInfoGetter::~CMSRAID_LDInfoGetter [START]",
                                       "4 CMSRAID_LDInfoGetter::~CMSRAID_LDInfoGetter [END]",
                                       "4 CMSRAID_InfoGetter::~CMSRAID_InfoGetter [START]",
                                       "4 CMSRAID_InfoGetter::~CMSRAID_InfoGetter [END]",
                                       "4 CMSRAID_PDInfoGetter::GetInfo [END]",
                                       "4 CMSRAID_PDSMInfoGetter::~CMSRAID_PDInfoGetter [START]",
                                       "4 CMSRAID_PDSMInfoGetter::~CMSRAID_PDInfoGetter [END]",
                                       "4 CMSRAID_PDInfoGetter::~CMSRAID_PDInfoGetter [START]",
                                       "4 CMSRAID_PDInfoGetter::~CMSRAID_PDInfoGetter [END]",
                                       "4 CMSRAID_InfoGetter::~CMSRAID_InfoGetter [START]",
                                       "4 CMSRAID_InfoGetter::~CMSRAID_InfoGetter [END]",
                                   }));
    }
}

}  // namespace
