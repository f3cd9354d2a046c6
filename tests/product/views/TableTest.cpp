// What people see on a terminal, and monitoring systems in a line.

#include "Documents.h"
#include "basics/Text.h"
#include "test_support/TempFolder.h"
#include "views/Views.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <sstream>

namespace views::test {
namespace {

using inventory::Snapshot;
using testing::HasSubstr;
using testing::Not;

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

struct Screen {
    const char* scenario;
    std::size_t columns;
};

class ExpectedScreen : public testing::TestWithParam<Screen> {};

// The files in expected/ were read line by line beside the scenario's reports.
TEST_P(ExpectedScreen, LooksAsItDid) {
    const auto& [scenario, columns] = GetParam();
    const std::string file =
        std::string(VIEWS_TEST_FOLDER "/expected/") + scenario + "-" + std::to_string(columns) + ".txt";
    EXPECT_EQ(Table(SnapshotOf(scenario), {columns, false}), testsupport::ReadFile(file));
}

INSTANTIATE_TEST_SUITE_P(All, ExpectedScreen,
                         testing::Values(Screen{"small", 0}, Screen{"large", 80}, Screen{"large", 120},
                                         Screen{"old", 60}, Screen{"empty", 80}),
                         [](const auto& screen) {
                             return std::string(screen.param.scenario) + std::to_string(screen.param.columns);
                         });

TEST(TableTest, ShowsADriveWithItsSmartData) {
    const Snapshot snapshot(inventory::Document::Read(DocumentOf("large", {"0", "16", "2"})), "0");
    EXPECT_EQ(Table(snapshot, {80, false}),
              testsupport::ReadFile(VIEWS_TEST_FOLDER "/expected/large-0-16-2-80.txt"));
}

class AnyScenario : public testing::TestWithParam<const char*> {};

TEST_P(AnyScenario, FitsEveryTerminal) {
    const Snapshot snapshot = SnapshotOf(GetParam());
    for (const std::size_t columns : {std::size_t{40}, std::size_t{80}, std::size_t{132}}) {
        for (const std::string& line : Lines(Table(snapshot, {columns, false}))) {
            ASSERT_LE(basics::WidthOf(line), columns) << line;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, AnyScenario, testing::ValuesIn(kScenarios),
                         [](const auto& scenario) { return scenario.param; });

TEST(TableTest, TellsTheWorstBeforeEverythingElse) {
    const std::vector<std::string> lines = Lines(Table(SnapshotOf("large"), {}));
    EXPECT_EQ(lines.at(0),
              "CRITICAL: 2 critical, 5 warnings in 2 controllers, 7 groups, 8 logical drives, 26 drives");
    EXPECT_EQ(lines.at(2), "Needs attention");
    EXPECT_EQ(lines.at(3),
              "  CRITICAL  controller 0, RG2, PD13 in enclosure 16 slot 5: OFFLINE (TF800P, serial number "
              "7K1301605C4)");
    EXPECT_EQ(lines.at(4), "  CRITICAL  controller 0, RG2, LD4: OFFLINE");
}

TEST(TableTest, AMemberThatIsNotWellIsMarkedOnANarrowTerminalToo) {
    const std::vector<std::string> lines = Lines(Table(SnapshotOf("large"), {40, false}));
    const auto group = std::find_if(lines.begin(), lines.end(),
                                    [](const std::string& line) { return line.starts_with("  RG1    "); });
    ASSERT_NE(group, lines.end());
    EXPECT_THAT(*group, HasSubstr("RAID 5  PD2 PD\xE2\x80\xA6!  LD1  "));
}

TEST(TableTest, ColoursNothingUnlessAsked) {
    EXPECT_THAT(Table(SnapshotOf("large"), {80, false}), Not(HasSubstr("\x1b")));
    EXPECT_THAT(Table(SnapshotOf("large"), {80, true}), HasSubstr("\x1b[1;31mOFFLINE"));
}

TEST(TableTest, OnlyWhatIsWellIsGreen) {
    const std::string text = Table(SnapshotOf("large"), {0, true});
    EXPECT_THAT(text, HasSubstr("\x1b[32mONLINE"));
    EXPECT_THAT(text, HasSubstr("\x1b[36mCOPYBACK"));
    EXPECT_THAT(text, HasSubstr("Flash Backup Unit \x1b[32mOptimal"));
    EXPECT_THAT(text, HasSubstr("Flash Backup Unit \x1b[36mLearning"));
    const std::size_t second = text.find("Controller 1");
    EXPECT_THAT(text.substr(0, second), HasSubstr("  status OK\n")) << "beside drives that failed";
    EXPECT_THAT(text.substr(second), HasSubstr("  status \x1b[32mOK"));
}

TEST(TableTest, TellsWhichServerItIs) {
    Snapshot snapshot = SnapshotOf("small");
    EXPECT_EQ(Lines(Table(snapshot, {})).front(),
              "OK: 1 controller, 1 group, 1 logical drive, 3 drives, all well");
    snapshot.host = "storage7";
    EXPECT_EQ(Lines(Table(snapshot, {})).front(),
              "OK on storage7: 1 controller, 1 group, 1 logical drive, 3 drives, all well");
    EXPECT_THAT(Table(snapshot, {20, false}), testing::StartsWith("OK on storage7: 1\n  controller, 1\n"));
    snapshot.host = "\x1b[2J" + std::string(300, 'h');
    const std::string line = Lines(Table(snapshot, {})).front();
    EXPECT_THAT(line, testing::StartsWith("OK on \xEF\xBF\xBD[2Jhhh"));
    EXPECT_THAT(line, HasSubstr("h\xE2\x80\xA6: 1 controller"));
    EXPECT_LT(basics::WidthOf(line), 140U);

    Snapshot drive(inventory::Document::Read(DocumentOf("small", {"0", "252", "1"})), "0");
    drive.host = "storage7";
    EXPECT_EQ(Lines(Table(drive, {})).front(), "OK on storage7: PD1 in enclosure 252 slot 1");
}

TEST(TableTest, TheSerialNumberOfADriveThatIsNotWellIsSeenOnANarrowTerminalToo) {
    std::size_t seen = 0;
    for (const char* const scenario : {"large", "levels/raid6-two-gone", "levels/failed-spare"}) {
        const Snapshot snapshot = SnapshotOf(scenario);
        const std::string text = Table(snapshot, {80, false});
        EXPECT_THAT(text, Not(HasSubstr("  SERIAL NUMBER"))) << "the table has room for it";
        for (const inventory::Controller& controller : snapshot.TheServer().controllers) {
            for (const inventory::Drive& drive : controller.drives) {
                if (drive.health != inventory::Level::Ok && !drive.serial.empty()) {
                    EXPECT_THAT(text, HasSubstr("number " + drive.serial)) << scenario;
                    ++seen;
                }
            }
        }
    }
    EXPECT_EQ(seen, 7U);
}

TEST(TableTest, AReportCannotFillTheScreenWithOneText) {
    const std::string text = Table(
        SnapshotFrom(ControllerXml() + DriveXml("3", {ItemXml("PD Status(Detail)", std::string(5000, 'd')),
                                                      ItemXml("PD Status", "ERROR"),
                                                      ItemXml("Product ID", std::string(5000, 'p'))})),
        {});
    EXPECT_THAT(text, HasSubstr("  " + std::string(199, 'd') + "\xE2\x80\xA6  "));
    EXPECT_THAT(text, HasSubstr("  " + std::string(199, 'p') + "\xE2\x80\xA6"));
    for (const std::string& line : Lines(text)) {
        EXPECT_LT(basics::WidthOf(line), 900U);
    }
}

TEST(TableTest, APlaceholderNeverLooksLikeAValue) {
    const Snapshot snapshot =
        SnapshotFrom(ControllerXml() +
                     DriveXml("3", {ItemXml("PD Status", "NO ERROR"),
                                    "<Item Name=\"Temperature\" Value=\"\" Valid=\"FALSE\"/>",
                                    ItemXml("Capacity", "1 GB")}) +
                     DriveXml("4", {ItemXml("PD Status", "NO ERROR"), ItemXml("Temperature", "31 C"),
                                    ItemXml("Capacity", "1 GB")}));
    const std::vector<std::string> lines = Lines(Table(snapshot, {}));
    EXPECT_THAT(lines.at(lines.size() - 2), testing::EndsWith("1 GB     -")) << Table(snapshot, {});
    EXPECT_THAT(lines.at(lines.size() - 1), testing::EndsWith("1 GB  31 C"));
}

TEST(TableTest, HostileTextsAreOnlyTexts) {
    const std::string text = Table(SnapshotFrom(ControllerXml({ItemXml("Product Name",
                                                                       "\xC2\x9B"
                                                                       "2J \xE2\x80\xAE"
                                                                       "evil"),
                                                               ItemXml("Controller Status", "a\nb")})),
                                   {});
    EXPECT_THAT(text, HasSubstr("\xEF\xBF\xBD"
                                "2J \xEF\xBF\xBD"
                                "evil"));
    EXPECT_THAT(text, HasSubstr("status a b"));
}

TEST(TreeTest, HoldsEveryItem) {
    const Snapshot snapshot =
        SnapshotFrom(ParentXml("root", {ItemXml("key", "a\nb"), ItemXml("empty", ""),
                                        "<Item Name=\"none\" Value=\"\" Valid=\"FALSE\"/>"}) +
                     "<Item Name=\"lost\" Value=\"x\" Valid=\"TRUE\" Parent=\"away\"/>");
    EXPECT_EQ(Tree(snapshot),
              "root\n  key = a b\n  empty = \n  none (not in the report)\nlost = x (belongs to away)\n");
    EXPECT_EQ(Tree(SnapshotFrom("")), "(no item)\n");
    EXPECT_EQ(Lines(Tree(SnapshotOf("large"))).size(), SnapshotOf("large").Main().Count());
}

TEST(MonitoringLineTest, IsOneLineWithFigures) {
    EXPECT_EQ(MonitoringLine(SnapshotOf("small").TheHealth(), false),
              "RAID OK - 1 controller, 1 group, 1 logical drive, 3 drives, all well | controllers=1 groups=1 "
              "logical_drives=1 drives=3 critical=0 warning=0 unknown=0 accepted=0\n");
    const std::string line = MonitoringLine(SnapshotOf("large").TheHealth(), false);
    EXPECT_EQ(Lines(line).size(), 1U);
    EXPECT_THAT(line, testing::StartsWith("RAID CRITICAL - 2 critical, 5 warnings in "));
    EXPECT_THAT(
        line,
        HasSubstr("; controller 0, PD10 in enclosure 16 slot 2: FAILED, failure predicted (7) (TF600S15, "
                  "serial number 7K1001602C4);"));
    EXPECT_THAT(line, HasSubstr("; and 2 more | "));
}

TEST(MonitoringLineTest, NamesEveryFindingWhenAsked) {
    const std::vector<std::string> lines = Lines(MonitoringLine(SnapshotOf("large").TheHealth(), true));
    ASSERT_EQ(lines.size(), 8U);
    EXPECT_EQ(lines[2], "CRITICAL: controller 0, RG2, LD4: OFFLINE");
    EXPECT_EQ(lines[3],
              "WARNING: controller 0, RG1, PD4 in enclosure 252 slot 4: REBUILD (TF600S15, serial number "
              "7K04025204C4)");
}

TEST(MonitoringLineTest, AReportCannotBeginTheFigures) {
    inventory::Health health;
    health.level = inventory::Level::Critical;
    health.findings.push_back(
        {.level = inventory::Level::Critical, .controller = "0", .part = "PD|0", .what = "x | drives=0\ny"});
    const std::string line = MonitoringLine(health, false);
    EXPECT_THAT(line, HasSubstr("controller 0, PD/0: x / drives=0 y | controllers=0"));
    EXPECT_EQ(Lines(line).size(), 1U);
}

}  // namespace
}  // namespace views::test
