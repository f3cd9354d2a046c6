#include "report/CMSRAID_InfoGetter.h"

#include "test_support/ModuleTest.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <new>
#include <thread>

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using testsupport::ToolBench;

/// A reader of plain reports: every "RAID Controller" line starts a tree, every "### " line is a title, every
/// other line must be a key line.
class PlainReader final : public CMSRAID_InfoGetter {
  public:
    PlainReader() { m_CmdFormat = "vdkcli -ctrlinfo -a%s"; }

    using CMSRAID_InfoGetter::CreateRAIDItem;
    using CMSRAID_InfoGetter::GetInfo;
    using CMSRAID_InfoGetter::m_CmdFormat;
    using CMSRAID_InfoGetter::m_CurrentParent;
    using CMSRAID_InfoGetter::m_CurrentRoot;
    using CMSRAID_InfoGetter::m_ItemList;
    using CMSRAID_InfoGetter::m_pMngLib;
    using CMSRAID_InfoGetter::m_Reason;
    using CMSRAID_InfoGetter::ParseKeyValue;
    using CMSRAID_InfoGetter::ParseTitle;
    using CMSRAID_InfoGetter::Trim;

    ResultCode CreateRAIDItem(std::ifstream& file, std::string line) override {
        m_Lines.push_back(line);
        if (line == "throw") {
            throw std::bad_alloc();
        }
        if (line == "disk fails") {
            file.setstate(std::ios::badbit);
            return 0;
        }
        if (line.starts_with("RAID Controller")) {
            AddRootItem();
            return 0;
        }
        return line.starts_with("### ") ? ParseTitle(file, line) : ParseKeyValue(file, line, m_ItemList);
    }
    void AddRootItem() override { StartRoot("Root"); }
    void FreeItemList() override { ++m_FreeCalls; }

    [[nodiscard]] ResultCode BaseCreateRAIDItem(std::ifstream& file) {
        return CMSRAID_InfoGetter::CreateRAIDItem(file, "line");
    }

    void BaseAddRootItem() { CMSRAID_InfoGetter::AddRootItem(); }
    void BaseFreeItemList() { CMSRAID_InfoGetter::FreeItemList(); }

    std::vector<std::string> m_Lines;
    int m_FreeCalls = 0;
};

class InfoGetterTest : public testsupport::ModuleTest {
  protected:
    ResultCode Read(const std::string& report) {
        m_Tool.Answer("ctrlinfo_a0.txt", report);
        return m_Reader.GetInfo(0, m_Library.Wrapper(), m_Items);
    }
    [[nodiscard]] static std::string Trimmed(std::string text) {
        PlainReader reader;
        reader.Trim(text);
        return text;
    }
    PlainReader m_Reader;
    std::ifstream m_NoFile;
};

TEST_F(InfoGetterTest, ConstructorAndDestructorTraceThemselves) {
    m_Trace.Clear();
    { const PlainReader reader; }
    EXPECT_THAT(m_Trace.Lines(), ElementsAre("4 CMSRAID_InfoGetter::CMSRAID_InfoGetter [START]",
                                             "4 CMSRAID_InfoGetter::CMSRAID_InfoGetter [END]",
                                             "4 CMSRAID_InfoGetter::~CMSRAID_InfoGetter [START]",
                                             "4 CMSRAID_InfoGetter::~CMSRAID_InfoGetter [END]"));
}

TEST_F(InfoGetterTest, StartsWithNothing) {
    EXPECT_EQ(m_Reader.m_Reason, "");
    EXPECT_TRUE(m_Reader.m_ItemList.empty());
    EXPECT_TRUE(m_Reader.m_CurrentRoot.IsNull());
    EXPECT_TRUE(m_Reader.m_CurrentParent.IsNull());
    EXPECT_EQ(m_Reader.m_pMngLib, nullptr);
}

TEST_F(InfoGetterTest, TheBasesOwnLineHookIsAFailure) {
    EXPECT_EQ(m_Reader.BaseCreateRAIDItem(m_NoFile), 0x80000001U);
}

TEST_F(InfoGetterTest, TheBasesOtherHooksLeaveItemsAlone) {
    m_Reader.m_pMngLib = m_Library.Wrapper();
    m_Reader.BaseAddRootItem();
    EXPECT_THAT(m_Reader.m_ItemList, IsEmpty());
    EXPECT_TRUE(m_Reader.m_CurrentRoot.IsNull());
    ASSERT_TRUE(msraid::InsertItem(m_Library.Wrapper(), m_Items, m_Items.end(), "", "kept", "",
                                   msraid::Validity::FromReport));
    m_Reader.m_ItemList = m_Items;
    m_Reader.BaseFreeItemList();
    EXPECT_THAT(m_Reader.m_ItemList, ::testing::SizeIs(1));
    EXPECT_EQ(m_Library.ItemsAlive(), 1U);
}

TEST_F(InfoGetterTest, ResultFilesAreNamedByThreadAndCounterInTheirDirectory) {
    const std::string directory = m_Root.Path() / "tmp" / "MSRAID";
    char name[64];
    std::snprintf(name, sizeof name, "/%08lx_00000000_MngSrvRaid.txt",
                  static_cast<unsigned long>(::gettid()));
    EXPECT_EQ(CMSRAID_InfoGetter::GetRsltFilePath(), directory + name);
    EXPECT_TRUE(std::filesystem::is_directory(directory));
    std::snprintf(name, sizeof name, "/%08lx_00000001_MngSrvRaid.txt",
                  static_cast<unsigned long>(::gettid()));
    EXPECT_EQ(CMSRAID_InfoGetter::GetRsltFilePath(), directory + name);
    std::string other;
    std::thread([&other] { other = CMSRAID_InfoGetter::GetRsltFilePath(); }).join();
    EXPECT_THAT(other, EndsWith("_00000002_MngSrvRaid.txt"));
}

TEST_F(InfoGetterTest, AnEmptyInstallPathPutsResultFilesBelowTheFileSystemsRoot) {
    ::setenv("ZORBALT_INSTALL_DIR", "", 1);
    const bool wasThere = std::filesystem::exists("/tmp/MSRAID");
    EXPECT_THAT(CMSRAID_InfoGetter::GetRsltFilePath(), StartsWith("/tmp/MSRAID/"));
    EXPECT_TRUE(std::filesystem::is_directory("/tmp/MSRAID"));
    EXPECT_THAT(m_Trace.Lines(), Contains("2 Failed to get INSTALLPATH_CIM."));
    if (!wasThere) {
        std::filesystem::remove("/tmp/MSRAID");
    }
}

TEST_F(InfoGetterTest, AReportBecomesItemsInOrder) {
    EXPECT_EQ(Read("RAID Controller : 0\nA : 1\n### T ###\nB : 2:3\n"), 0U);
    EXPECT_THAT(Items(),
                ElementsAre("|Root||TRUE", "Root|A|1|TRUE", "Root|### T ###||TRUE", "### T ###|B|2:3|TRUE"));
    EXPECT_EQ(m_Reader.m_Reason, "");
    EXPECT_THAT(ToolBench::Runs(), ElementsAre("-ctrlinfo -a0"));
}

TEST_F(InfoGetterTest, AnEmptyReportIsASuccessWithoutItems) {
    EXPECT_EQ(Read(""), 0U);
    EXPECT_THAT(Items(), IsEmpty());
    EXPECT_THAT(m_Reader.m_Lines, IsEmpty());
    EXPECT_EQ(m_Reader.m_FreeCalls, 1);
}

TEST_F(InfoGetterTest, ItemsAreAppendedToWhatTheCallerHas) {
    EXPECT_EQ(Read("RAID Controller : 0\n"), 0U);
    EXPECT_EQ(Read("RAID Controller : 0\nA : 1\n"), 0U);
    EXPECT_THAT(Items(), ElementsAre("|Root||TRUE", "|Root||TRUE", "Root|A|1|TRUE"));
}

TEST_F(InfoGetterTest, ASecondReportDoesNotHangBelowTheFirst) {
    EXPECT_EQ(Read("RAID Controller : 0\n### T ###\n"), 0U);
    EXPECT_EQ(Read("A : 1\n### U ###\n"), 0U);
    EXPECT_THAT(Items(), ElementsAre("|Root||TRUE", "Root|### T ###||TRUE", "|A|1|TRUE", "|### U ###||TRUE"));
}

TEST_F(InfoGetterTest, LinesReachTheHookUntrimmedAndAnUnfinishedLastLineToo) {
    EXPECT_EQ(Read("  A : 1 \r\n\tB:2\t\nC:"), 0U);
    EXPECT_THAT(m_Reader.m_Lines, ElementsAre("  A : 1 \r", "\tB:2\t", "C:"));
    EXPECT_THAT(Items(), ElementsAre("|A|1|TRUE", "|B|2|TRUE", "|C||TRUE"));
}

TEST_F(InfoGetterTest, AFailedParseDeletesItsItemsAndItsFile) {
    EXPECT_EQ(Read("RAID Controller : 0\nA : 1\nno key\n"), 0x80000001U);
    EXPECT_THAT(Items(), IsEmpty());
    EXPECT_EQ(m_Library.ItemsAlive(), 0U);
    EXPECT_EQ(m_Library.ItemsDeleted(), 2U);
    EXPECT_EQ(m_Reader.m_Reason, "06");
    EXPECT_EQ(m_Reader.m_FreeCalls, 1);
    EXPECT_TRUE(m_Reader.m_CurrentRoot.IsNull());
    EXPECT_TRUE(m_Reader.m_CurrentParent.IsNull());
    EXPECT_THAT(Failures(), ElementsAre("Failed to parse ParseKeyValue.(no key)",
                                        "CreateRAIDItem is FAILED (hr=80000001).",
                                        "Failed to parse RAID Information 80000001."));
    EXPECT_THAT(m_Root.ResultFiles(), IsEmpty());
}

TEST_F(InfoGetterTest, AToolThatCannotBeRunIsAFailureOfItsOwn) {
    m_Tool.Answer("ctrlinfo_a0.do", "exit 3\n");
    EXPECT_EQ(Read("A : 1\n"), 0xA1U);
    EXPECT_EQ(m_Reader.m_Reason, "01");
    EXPECT_THAT(m_Reader.m_Lines, IsEmpty());
    EXPECT_EQ(m_Reader.m_FreeCalls, 0);
    EXPECT_THAT(Failures(), ElementsAre("Failed to execute vdkcli command.(vdkcli -ctrlinfo -a0)",
                                        "Failed to execute vdkcli command 000000a1."));
    EXPECT_EQ(testsupport::PausesTaken(), 2U);
}

TEST_F(InfoGetterTest, AResultFileThatIsGoneIsAFailureOfItsOwn) {
    m_Reader.m_CmdFormat = "vdkcli >/dev/null; rm " + m_Root.Path().string() + "/tmp/MSRAID/* #%s";
    EXPECT_EQ(Read("A : 1\n"), 0x80000001U);
    EXPECT_EQ(m_Reader.m_Reason, "04");
    ASSERT_EQ(Failures().size(), 2U);
    EXPECT_THAT(Failures()[0], StartsWith("Failed to open file output by vdkcli(" + m_Root.Path().string()));
    EXPECT_THAT(Failures()[0], EndsWith("_MngSrvRaid.txt)."));
    EXPECT_THAT(Failures()[1], StartsWith("Failed to delete file(" + m_Root.Path().string()));
}

TEST_F(InfoGetterTest, AReportThatCannotBeReadToItsEndIsNoReport) {
    EXPECT_EQ(Read("RAID Controller : 0\nA : 1\ndisk fails\nB : 2\n"), 0x80000001U);
    EXPECT_EQ(m_Reader.m_Reason, "04");
    EXPECT_THAT(Items(), IsEmpty());
    EXPECT_EQ(m_Library.ItemsAlive(), 0U);
    EXPECT_EQ(m_Library.ItemsDeleted(), 2U);
    EXPECT_TRUE(m_Reader.m_CurrentRoot.IsNull());
    EXPECT_THAT(Failures(), ElementsAre(StartsWith("Failed to open file output by vdkcli(")));
}

TEST_F(InfoGetterTest, ADirectoryInThePlaceOfTheResultFileIsNoEmptyReport) {
    m_Reader.m_CmdFormat = "vdkcli -ctrlinfo -a%s; cd " + m_Root.Path().string() +
                           "/tmp/MSRAID && for f in *; do rm $f; mkdir $f; done";
    EXPECT_EQ(Read("A : 1\n"), 0x80000001U);
    EXPECT_EQ(m_Reader.m_Reason, "04");
    EXPECT_THAT(Failures(), ElementsAre(StartsWith("Failed to open file output by vdkcli("),
                                        StartsWith("Failed to delete file(")));
    m_ExpectedLeftFiles = m_Root.ResultFiles();
}

TEST_F(InfoGetterTest, AFileThatCannotBeDeletedDoesNotChangeTheResult) {
    m_Reader.m_CmdFormat = "vdkcli -ctrlinfo -a%s; " + m_Root.PinResultFiles();
    EXPECT_EQ(Read("A : 1\n"), 0U);
    EXPECT_THAT(Failures(), ElementsAre(StartsWith("Failed to delete file(")));
    m_ExpectedLeftFiles = m_Root.ResultFiles();
}

TEST_F(InfoGetterTest, ReasonsStandNewestFirst) {
    EXPECT_EQ(Read("no key\n"), 0x80000001U);
    m_Tool.Answer("ctrlinfo_a0.do", "exit 3\n");
    EXPECT_EQ(Read("A : 1\n"), 0xA1U);
    EXPECT_EQ(m_Reader.m_Reason, "0106");
}

TEST_F(InfoGetterTest, ALongCommandIsCutAt767Characters) {
    m_Reader.m_CmdFormat = "vdkcli -v " + std::string(1000, 'x') + "%s";
    static_cast<void>(Read(""));
    ASSERT_FALSE(m_Trace.Texts(1).empty());
    EXPECT_EQ(m_Trace.Texts(1)[0], "execute vdkcli command.(vdkcli -v " + std::string(757, 'x') + ")");
}

TEST_F(InfoGetterTest, ALineThatIsNoTitleIsRefused) {
    m_Reader.m_pMngLib = m_Library.Wrapper();
    for (const std::string line : {"###T ###", " ### T ###", "##", ""}) {
        m_Trace.Clear();
        EXPECT_EQ(m_Reader.ParseTitle(m_NoFile, line), 0x80000001U);
        EXPECT_THAT(m_Trace.Lines(), ElementsAre("2 Failed to ParseTitle. (" + line + ")"));
    }
}

TEST_F(InfoGetterTest, ATitleNeedsNoClosingMarkersAndIsTrimmedAtItsEnd) {
    m_Reader.m_pMngLib = m_Library.Wrapper();
    EXPECT_EQ(m_Reader.ParseTitle(m_NoFile, "### open\t \r"), 0U);
    EXPECT_THAT(testsupport::FakeLibrary::Describe(m_Reader.m_ItemList), ElementsAre("|### open||TRUE"));
    m_Library.Delete(m_Reader.m_ItemList);
}

TEST_F(InfoGetterTest, KeyLinesAreSplitAtTheFirstColon) {
    struct Row {
        std::string line;
        std::string item;
    };
    const Row rows[] = {
        {"key:value", "|key|value|TRUE"},
        {" \tkey \t: \tvalue \r\n", "|key|value|TRUE"},
        {"key:", "|key||TRUE"},
        {"key: \t\r", "|key||TRUE"},
        {"key:a:b", "|key|a:b|TRUE"},
        {" :value", "||value|TRUE"},
        {"\rkey:\rvalue", "|\rkey|\rvalue|TRUE"},
        {"k::v", "|k|:v|TRUE"},
    };
    m_Reader.m_pMngLib = m_Library.Wrapper();
    for (const Row& row : rows) {
        EXPECT_EQ(m_Reader.ParseKeyValue(m_NoFile, row.line, m_Items), 0U);
        EXPECT_EQ(Items().back(), row.item);
    }
}

TEST_F(InfoGetterTest, ALineWithoutAUsableColonIsNoKeyLine) {
    m_Reader.m_pMngLib = m_Library.Wrapper();
    for (const std::string line : {":value", ":a:b", "key", "", ":"}) {
        m_Trace.Clear();
        EXPECT_EQ(m_Reader.ParseKeyValue(m_NoFile, line, m_Items), 0x80000001U);
        EXPECT_THAT(m_Trace.Lines(), ElementsAre("2 Failed to parse ParseKeyValue.(" + line + ")"));
    }
    EXPECT_THAT(Items(), IsEmpty());
}

TEST_F(InfoGetterTest, TrimmingLeavesCarriageReturnsInFront) {
    EXPECT_EQ(Trimmed(" \t a b \t\r\n"), "a b");
    EXPECT_EQ(Trimmed("\r a \r"), "\r a");
    EXPECT_EQ(Trimmed(" \r a"), "\r a");
    EXPECT_EQ(Trimmed("\n a"), "\n a");
    EXPECT_EQ(Trimmed("  \t\r\n "), "");
    EXPECT_EQ(Trimmed("\va\v"), "\va\v");
    EXPECT_EQ(Trimmed(""), "");
}

TEST_F(InfoGetterTest, AnItemThatTheLibraryRefusesFailsItsOperation) {
    m_Library.FailCreationsFrom(2);
    EXPECT_EQ(Read("RAID Controller : 0\nA : 1\n"), 0x80000001U);
    EXPECT_EQ(m_Reader.m_Reason, "06");
    EXPECT_EQ(m_Library.ItemsAlive(), 0U);
}

TEST_F(InfoGetterTest, WithoutALibraryItemsAreRefused) {
    m_Tool.Answer("ctrlinfo_a0.txt", "A : 1\n");
    EXPECT_EQ(m_Reader.GetInfo(0, nullptr, m_Items), 0x80000001U);
    EXPECT_EQ(m_Reader.m_Reason, "06");
}

TEST_F(InfoGetterTest, AnExceptionDeletesItemsAndFileAndWritesNoEndLines) {
    EXPECT_THROW(static_cast<void>(Read("RAID Controller : 0\nA : 1\nthrow\n")), std::bad_alloc);
    EXPECT_EQ(m_Library.ItemsAlive(), 0U);
    EXPECT_THAT(m_Root.ResultFiles(), IsEmpty());
    EXPECT_EQ(m_Trace.Lines().back(), "4 CMSRAID_InfoGetter::Parse [START]");
    EXPECT_TRUE(m_Reader.m_CurrentParent.IsNull());
    EXPECT_EQ(Read("B : 2\n"), 0U);
    EXPECT_THAT(Items(), ElementsAre("|B|2|TRUE"));
}

TEST_F(InfoGetterTest, AnExceptionDuringTheToolRunTakesTheResultFileAlong) {
    m_Tool.Answer("ctrlinfo_a0.do", "exit 3\n");
    testsupport::OnPause([this] {
        EXPECT_EQ(m_Root.ResultFiles().size(), 1U);
        throw std::bad_alloc();
    });
    EXPECT_THROW(static_cast<void>(Read("")), std::bad_alloc);
    EXPECT_THAT(m_Root.ResultFiles(), IsEmpty());
    EXPECT_EQ(m_Reader.m_Reason, "");
}

TEST_F(InfoGetterTest, OneRunIsTracedInOrder) {
    m_Trace.Clear();
    EXPECT_EQ(Read("A : 1\n"), 0U);
    EXPECT_THAT(
        m_Trace.Lines(),
        ElementsAre("4 CMSRAID_InfoGetter::GetInfo [START]",
                    "1 execute vdkcli command.(vdkcli -ctrlinfo -a0)", "4 CMSRAID_InfoGetter::Parse [START]",
                    "4 CMSRAID_InfoGetter::Parse [END]", "4 CMSRAID_InfoGetter::GetInfo [END]"));
}

TEST_F(InfoGetterTest, VirtualOperationsStandInTheirSlots) {
    // Behind the destructor's two: GetInfo, Parse, CreateRAIDItem, ParseTitle, ParseKeyValue, AddRootItem,
    // FreeItemList, Trim. Those that need no report are called by their slot.
    using Operation = void (*)(CMSRAID_InfoGetter*);
    using TrimOperation = void (*)(CMSRAID_InfoGetter*, std::string&);
    m_Reader.m_pMngLib = m_Library.Wrapper();
    void** const slots = *reinterpret_cast<void***>(static_cast<CMSRAID_InfoGetter*>(&m_Reader));
    reinterpret_cast<Operation>(slots[7])(&m_Reader);
    EXPECT_THAT(testsupport::FakeLibrary::Describe(m_Reader.m_ItemList), ElementsAre("|Root||TRUE"));
    reinterpret_cast<Operation>(slots[8])(&m_Reader);
    EXPECT_EQ(m_Reader.m_FreeCalls, 1);
    std::string text = " x ";
    reinterpret_cast<TrimOperation>(slots[9])(&m_Reader, text);
    EXPECT_EQ(text, "x");
    m_Library.Delete(m_Reader.m_ItemList);
}

}  // namespace
