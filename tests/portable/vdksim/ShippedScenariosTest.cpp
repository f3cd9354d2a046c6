#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <csignal>
#include <ostream>

#include "Instructions.h"
#include "ReportShape.h"
#include "Tool.h"
#include "test_support/Pattern.h"
#include "vdksim/Command.h"

namespace vdksim::test {

namespace {

namespace fs = std::filesystem;

fs::path Shipped(const std::string& name) {
    return fs::path(VDKSIM_TEST_SCENARIOS) / name;
}

std::vector<std::string> Names() {
    std::vector<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(VDKSIM_TEST_SCENARIOS)) {
        if (entry.path().filename() == "README.md") {
            names.push_back(fs::relative(entry.path().parent_path(), VDKSIM_TEST_SCENARIOS).string());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::size_t CountControllers(const std::string& report) {
    const auto lines = LinesOf(report);
    return static_cast<std::size_t>(std::count_if(lines.begin(), lines.end(), [](const std::string& line) {
        return line.starts_with("RAID Controller") && line.find(':') != std::string::npos;
    }));
}

// The single-drive commands that a scenario has texts for.
std::vector<std::string> DriveCommands(const fs::path& folder, const std::string& controller) {
    const std::string kName = "pdinfo_pd([0-9]+)\\.([0-9]+)_a([0-9]+)\\.txt";
    std::vector<std::string> commands;
    for (const auto& entry : fs::directory_iterator(folder)) {
        const std::string name = entry.path().filename().string();
        const testsupport::Match part = testsupport::WholeMatch(name, kName);
        if (!part.empty() && part[3] == controller) {
            commands.push_back("-pdinfo -pd[" + part[1] + ":" + part[2] + "] -a" + controller);
        }
    }
    std::sort(commands.begin(), commands.end());
    return commands;
}

bool Holds(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

// The stages of a shipped timeline, in their order.
std::vector<std::string> StagesOf(const std::string& scenario) {
    std::vector<std::string> stages;
    for (const std::string& line : LinesOf(ReadFile(Shipped(scenario) / "timeline"))) {
        if (std::isdigit(static_cast<unsigned char>(line.front())) != 0) {
            stages.push_back(line.substr(line.find_last_of(' ') + 1));
        }
    }
    return stages;
}

class EveryScenario : public ::testing::TestWithParam<std::string> {};

TEST_P(EveryScenario, HasOnlyFilesThatTheSimulatorKnows) {
    const std::string kKnown =
        "README\\.md|server\\.conf|timeline|any\\.do|(v|ctrlinfo_a([0-9]+|All)|ldpdinfo_a[0-9]+|"
        "pdinfo(_nosmart|_pd[0-9]+\\.[0-9]+)?_a[0-9]+)\\.(txt|do)";
    const std::vector<std::string> stages = StagesOf(GetParam());
    for (const auto& entry : fs::recursive_directory_iterator(Shipped(GetParam()))) {
        const fs::path& path = entry.path();
        if (entry.is_directory()) {
            EXPECT_TRUE(Holds(stages, path.filename().string()) || fs::exists(path / "README.md")) << path;
            continue;
        }
        EXPECT_FALSE(testsupport::WholeMatch(path.filename().string(), kKnown).empty()) << path;
        if (path.extension() == ".do") {
            EXPECT_NO_THROW(static_cast<void>(Instructions::FromFile(path))) << path;
        }
    }
}

TEST_P(EveryScenario, IsDescribedUnderItsName) {
    const std::string readme = ReadFile(Shipped(GetParam()) / "README.md");
    EXPECT_TRUE(readme.starts_with("# " + Shipped(GetParam()).filename().string() + "\n\n")) << readme;
}

INSTANTIATE_TEST_SUITE_P(ShippedScenariosTest, EveryScenario, ::testing::ValuesIn(Names()),
                         [](const auto& scenario) {
                             return testsupport::Replaced(scenario.param, "[^a-z0-9]", "_");
                         });

TEST(ShippedScenariosTest, AllOfThemAreThere) {
    const std::vector<std::string> names = Names();
    for (const std::string name : {"small", "large", "old", "awkward", "half-failed", "huge", "empty",
                                   "faults/marker", "faults/killed", "faults/flaky", "faults/truncated-title",
                                   "watch/loses-drive", "watch/loses-drive/by-inquiry"}) {
        EXPECT_TRUE(Holds(names, name)) << name;
    }
}

class EveryTimeline : public ::testing::TestWithParam<const char*> {};

TEST_P(EveryTimeline, HasTheSameStagesByTheInquiry) {
    const std::string scenario = std::string("watch/") + GetParam();
    EXPECT_GT(StagesOf(scenario).size(), 2U);
    EXPECT_EQ(StagesOf(scenario), StagesOf(scenario + "/by-inquiry"));
    for (const std::string& each : {scenario, scenario + "/by-inquiry"}) {
        const TempFolder state;
        EXPECT_EQ(Tool(Shipped(each)).WithState(state.Path()).Run("-v").ExitStatus(), 0) << each;
    }
}

INSTANTIATE_TEST_SUITE_P(ShippedScenariosTest, EveryTimeline,
                         ::testing::Values("flaps", "grows-errors", "half-told", "hangs", "loses-drive",
                                           "moves"),
                         [](const auto& scenario) {
                             return testsupport::Replaced(scenario.param, "-", "_");
                         });

TEST(ShippedScenariosTest, LostDriveIsReplacedWithinAMinute) {
    const TempFolder state;
    state.Write("inquiries", "000000000000000\n000000000059999\n");
    EXPECT_EQ(Tool(Shipped("watch/loses-drive")).WithState(state.Path()).Run("-pdinfo -a0").out,
              ReadFile(Shipped("watch/loses-drive/mended/pdinfo_a0.txt")));
}

struct Server {
    const char* name;
    const char* version;
    std::size_t controllers;
};

void PrintTo(const Server& server, std::ostream* out) {
    *out << server.name;
}

class PlainServer : public ::testing::TestWithParam<Server> {};

TEST_P(PlainServer, AnswersEveryCommandThatItsVersionAndControllersCallFor) {
    const Tool tool(Shipped(GetParam().name));
    EXPECT_NE(tool.Run("-v").out.find(std::string("Product Version : ") + GetParam().version),
              std::string::npos);
    EXPECT_EQ(CountControllers(tool.Run("-ctrlinfo -aAll").out), GetParam().controllers);
    const std::string drives = VersionTakesNoSmart(GetParam().version) ? "-pdinfo -nosmart -a" : "-pdinfo -a";
    for (std::size_t number = 0; number < GetParam().controllers; ++number) {
        const std::string controller = std::to_string(number);
        for (const std::string& command : {"-ctrlinfo -a" + controller, "-ldpdinfo -a" + controller,
                                           drives + controller, "-pdinfo -a" + controller}) {
            EXPECT_EQ(tool.Run(command).ExitStatus(), 0) << command;
        }
        for (const std::string& command : DriveCommands(Shipped(GetParam().name), controller)) {
            EXPECT_EQ(tool.Run(command).ExitStatus(), 0) << command;
        }
    }
    EXPECT_EQ(tool.Run("-ctrlinfo -a" + std::to_string(GetParam().controllers)).ExitStatus(), 2);
}

INSTANTIATE_TEST_SUITE_P(ShippedScenariosTest, PlainServer,
                         ::testing::Values(Server{"small", "3.9", 1}, Server{"large", "4.1", 2},
                                           Server{"old", "3.5", 1}, Server{"awkward", "4.0", 2},
                                           Server{"huge", "4.2", 64}, Server{"empty", "4.1", 0}),
                         [](const auto& server) { return std::string(server.param.name); });

class WellFormedServer : public ::testing::TestWithParam<const char*> {};

TEST_P(WellFormedServer, HasAGroupForExactlyTheDrivesOfLogicalDrives) {
    const Tool tool(Shipped(GetParam()));
    for (const char* controller : {"0", "1"}) {
        const auto groups = GroupOfDrive(tool.Run(std::string("-ldpdinfo -a") + controller).out);
        for (const auto& [number, membership] :
             DriveHeaders(tool.Run(std::string("-pdinfo -a") + controller).out)) {
            EXPECT_EQ(groups.contains(number), membership.starts_with("LD")) << number << ' ' << membership;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(ShippedScenariosTest, WellFormedServer, ::testing::Values("small", "large", "old"),
                         [](const auto& server) { return std::string(server.param); });

TEST(ShippedScenariosTest, EveryTableOfTheSmallAndLargeServersCanBeCut) {
    std::size_t tables = 0;
    for (const char* name : {"small", "large"}) {
        for (const char* controller : {"0", "1"}) {
            for (const std::string& command : DriveCommands(Shipped(name), controller)) {
                std::size_t rows = 0;
                EXPECT_EQ(TableFault(Tool(Shipped(name)).Run(command).out, rows), "")
                    << name << ' ' << command;
                tables += rows > 0 ? 1U : 0U;
            }
        }
    }
    EXPECT_EQ(tables, 3U + 14 + 11);
}

TEST(ShippedScenariosTest, EveryDriveOfTheLargeServerHasAReportOfItsOwn) {
    const Tool tool(Shipped("large"));
    for (const char* controller : {"0", "1"}) {
        std::map<long, std::string> alone;
        for (const std::string& command : DriveCommands(Shipped("large"), controller)) {
            alone.merge(DriveHeaders(tool.Run(command).out));
        }
        EXPECT_EQ(alone, DriveHeaders(tool.Run(std::string("-pdinfo -a") + controller).out));
    }
}

TEST(ShippedScenariosTest, TheOldServersBrokenTablesAreBroken) {
    const Tool tool(Shipped("old"));
    std::size_t rows = 0;
    EXPECT_EQ(TableFault(tool.Run("-pdinfo -pd[1:0] -a0").out, rows), "");
    EXPECT_EQ(rows, 4U);
    EXPECT_TRUE(TableFault(tool.Run("-pdinfo -pd[1:1] -a0").out, rows).starts_with("not as many cells"));
    EXPECT_TRUE(TableFault(tool.Run("-pdinfo -pd[1:2] -a0").out, rows).starts_with("too short"));
    EXPECT_EQ(TableFault(tool.Run("-pdinfo -pd[1:3] -a0").out, rows), "");
    EXPECT_EQ(rows, 0U);
}

TEST(ShippedScenariosTest, TheOldServerLacksWhatPlaceholdersStandFor) {
    const Tool tool(Shipped("old"));
    const std::string controller = tool.Run("-ctrlinfo -a0").out;
    EXPECT_NE(controller.find("SubVendor ID"), std::string::npos);
    EXPECT_NE(controller.find("SubDevice ID"), std::string::npos);
    for (const char* key : {"Reconstruction Rate", "Firmware Package Version", "Firmware Build Time"}) {
        EXPECT_EQ(controller.find(key), std::string::npos) << key;
    }
    EXPECT_EQ(tool.Run("-pdinfo -a0").out.find("Temperature"), std::string::npos);
    EXPECT_EQ(tool.Run("-pdinfo -pd[1:0] -a0").out.find("Power-On Time"), std::string::npos);
}

TEST(ShippedScenariosTest, TheAwkwardBytesSurviveEveryCheckout) {
    const std::string report = Tool(Shipped("awkward")).Run("-ctrlinfo -a0").out;
    EXPECT_NE(report.find("\r\n"), std::string::npos);
    EXPECT_NE(report.find('\0'), std::string::npos);
    EXPECT_NE(report.find('\xff'), std::string::npos);
    EXPECT_NE(report.find('\t'), std::string::npos);
    EXPECT_NE(report.find(std::string(100'000, 'x')), std::string::npos);
    EXPECT_FALSE(report.ends_with('\n'));
    const auto lines = LinesOf(report);
    EXPECT_TRUE(std::all_of(lines.begin(), lines.end() - 1,
                            [](const std::string& line) { return line.ends_with('\r'); }));
}

TEST(ShippedScenariosTest, TheHalfFailedServerBreaksOffInItsSecondHalf) {
    const Tool tool(Shipped("half-failed"));
    EXPECT_EQ(CountControllers(tool.Run("-ctrlinfo -aAll").out), 2U);
    EXPECT_EQ(tool.Run("-ldpdinfo -a0").ExitStatus(), 0);
    const Ended ended = tool.Run("-ldpdinfo -a1");
    EXPECT_EQ(ended.ExitStatus(), 3);
    EXPECT_EQ(ended.out.size(), 400U);
}

TEST(ShippedScenariosTest, TheFaultsAreWhatTheyAreCalled) {
    EXPECT_EQ(LinesOf(Tool(Shipped("faults/marker")).Run("-ctrlinfo -aAll").out).front(),
              "Error - Invalid input at or near token -aAll");
    EXPECT_EQ(Tool(Shipped("faults/killed")).Run("-ldpdinfo -a0").Signal(), SIGSEGV);
    EXPECT_EQ(Tool(Shipped("faults/dead")).Run("-v").ExitStatus(), 127);
    EXPECT_TRUE(Tool(Shipped("faults/truncated-title"))
                    .Run("-ctrlinfo -a0")
                    .out.ends_with("\n### Firmware/BIOS/Driver Information ###"));
    EXPECT_NE(Tool(Shipped("faults/broken-header")).Run("-pdinfo -a0").out.find("\nPD2\n"),
              std::string::npos);

    const TempFolder state;
    const Tool flaky = Tool(Shipped("faults/flaky")).WithState(state.Path());
    EXPECT_EQ(flaky.Run("-v").ExitStatus(), 1);
    EXPECT_EQ(flaky.Run("-v").ExitStatus(), 1);
    EXPECT_EQ(flaky.Run("-v").ExitStatus(), 0);
}

}  // namespace

}  // namespace vdksim::test
