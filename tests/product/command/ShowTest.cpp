// What people and monitoring systems ask for: show, smart, health, and the formats.

#include "SavedDocument.h"
#include "basics/Text.h"
#include "test_support/Command.h"
#include "test_support/Waiting.h"
#include "test_support/XmlLint.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <sstream>
#include <thread>

namespace command::test {
namespace {

using namespace testsupport;

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

struct HealthCase {
    const char* scenario;
    int status;
    const char* begin;
};

class HealthOf : public testing::TestWithParam<HealthCase> {};

TEST_P(HealthOf, IsALineAndAnExitStatus) {
    const Ended ended = RunCommand({"--scenario", GetParam().scenario, "health"});
    EXPECT_EQ(ended.ExitStatus(), GetParam().status);
    EXPECT_THAT(ended.out, StartsWith(GetParam().begin));
    EXPECT_EQ(CountLines(ended.out), 1U);
    EXPECT_EQ(ended.err, "");
}

INSTANTIATE_TEST_SUITE_P(
    All, HealthOf,
    testing::Values(
        HealthCase{"small", 0, "RAID OK - 1 controller, 1 group, 1 logical drive, 3 drives, all well | "},
        HealthCase{"large", 2, "RAID CRITICAL - 2 critical, 5 warnings in 2 controllers, "},
        HealthCase{"old", 3, "RAID UNKNOWN - 1 unknown in 1 controller, "},
        HealthCase{"empty", 3, "RAID UNKNOWN - no controller, nothing to judge | "},
        HealthCase{"half-failed", 3, "RAID UNKNOWN - health failed with return value 0x000000a1: the "}),
    [](const auto& each) {
        std::string name = each.param.scenario;
        name.erase(std::remove(name.begin(), name.end(), '-'), name.end());
        return name;
    });

// Each shows a rule by which a server is judged.
constexpr std::pair<const char*, int> kRules[] = {
    {"half-told/bare-controller", 3},
    {"half-told/cut-controller", 3},
    {"half-told/lost-drives", 3},
    {"half-told/lost-groups", 3},
    {"half-told/missing-drive", 3},
    {"half-told/no-logical-drive", 3},
    {"half-told/odd-replacement", 3},
    {"half-told/other-language", 3},
    {"half-told/other-title", 1},
    {"half-told/silent-controller", 3},
    {"half-told/told-twice", 2},
    {"half-told/unknown-group", 3},
    {"half-told/unknown-logical-drive", 3},
    {"half-told/wrong-count", 3},
    {"levels/backup-unit-worn", 1},
    {"levels/controller-failed", 2},
    {"levels/controller-needs-attention", 1},
    {"levels/failed-spare", 1},
    {"levels/logical-drive-initializing", 1},
    {"levels/logical-drive-offline", 2},
    {"levels/logical-drive-reconstructing", 1},
    {"levels/raid0-announced", 2},
    {"levels/raid0-lost", 2},
    {"levels/raid1-announced", 1},
    {"levels/raid1-dropped-out", 2},
    {"levels/raid1-gone", 2},
    {"levels/raid1-rebuilding", 1},
    {"levels/raid10-gone", 2},
    {"levels/raid10-pulled-while-rebuilding", 2},
    {"levels/raid10-rebuilding", 1},
    {"levels/raid5-gone", 2},
    {"levels/raid5-pulled", 2},
    {"levels/raid5-rebuilding", 1},
    {"levels/raid50-gone", 2},
    {"levels/raid6-degraded-unexplained", 2},
    {"levels/raid6-one-gone", 1},
    {"levels/raid6-one-gone-one-rebuilding", 1},
    {"levels/raid6-partially-degraded-unexplained", 1},
    {"levels/raid6-two-gone", 2},
    {"levels/raid60-one-gone", 1},
    {"levels/raid60-two-gone", 2},
    {"levels/raid7-gone", 2},
    {"levels/smart-at-thresh", 0},
    {"levels/smart-at-threshold", 0},
    {"levels/unused-bad", 1},
    {"watch/flaps", 0},
    {"watch/flaps/back", 1},
    {"watch/flaps/gone", 2},
    {"watch/grows-errors", 0},
    {"watch/grows-errors/errors-4", 0},
    {"watch/grows-errors/errors-8", 0},
    {"watch/grows-errors/errors-12", 0},
    {"watch/grows-errors/errors-16", 0},
    {"watch/grows-errors/errors-20", 0},
    {"watch/half-told", 0},
    {"watch/half-told/lost", 3},
    {"watch/hangs", 0},
    {"watch/loses-drive", 0},
    {"watch/loses-drive/well", 0},
    {"watch/loses-drive/announced", 1},
    {"watch/loses-drive/failed", 2},
    {"watch/loses-drive/pulled", 2},
    {"watch/loses-drive/rebuilding", 1},
    {"watch/loses-drive/mended", 0},
    {"watch/moves", 0},
    {"watch/moves/moved", 0},
    {"watch/moves/swapped", 0},
};

TEST(Health, OfEachRuleIsAsItsScenarioSays) {
    for (const auto& [scenario, status] : kRules) {
        EXPECT_EQ(RunCommand({"--scenario", scenario, "health"}).ExitStatus(), status) << scenario;
    }
}

TEST(Health, OfSmartRowsAtTheirThresholdIsSeenWithSmartData) {
    for (const std::string scenario : {"levels/smart-at-threshold", "levels/smart-at-thresh"}) {
        const std::string why = "SMART Reallocated Sector Count: 36, threshold 36";
        const std::string server = RunCommand({"--scenario", scenario, "show", "--smart"}).out;
        EXPECT_THAT(server, StartsWith("WARNING: ")) << scenario;
        EXPECT_THAT(server, HasSubstr(why)) << scenario;
        const std::string drive = RunCommand({"--scenario", scenario, "smart", "0", "252:1"}).out;
        EXPECT_THAT(drive, HasSubstr(why)) << scenario;
        EXPECT_THAT(RunCommand({"--scenario", scenario, "smart", "0", "252:0"}).out, StartsWith("OK: "));
    }
}

TEST(Health, OfAToolThatHangsIsUnknown) {
    const Ended ended = RunCommand({"--scenario", "watch/hangs/hung", "--timeout", "1", "health"});
    EXPECT_EQ(ended.ExitStatus(), 3);
    EXPECT_EQ(ended.out, "RAID UNKNOWN - vdkcli -v did not end within 1 s, and was ended\n");
}

TEST(Show, FailureBearsItsOwnNameAndItsReport) {
    const Ended ended = RunCommand({"--scenario", "half-failed", "show"});
    EXPECT_EQ(ended.ExitStatus(), 1);
    EXPECT_THAT(ended.err, StartsWith("mngsrvraid: show failed with return value 0x000000a1: "));
    EXPECT_THAT(ended.err, HasSubstr(" at controller 1: logical drives ("));
}

TEST(Show, MetricsCountEveryRunThatFailed) {
    const TempFolder folder;
    fs::copy(fs::path(COMMAND_TEST_SCENARIOS) / "small", folder.Path() / "server",
             fs::copy_options::recursive);
    WriteFile(folder.Path() / "server/v.do", "exit 3\n");
    const Ended ended =
        RunCommand({"--scenario", folder.Path() / "server", "show", "--format", "prometheus"});
    EXPECT_EQ(ended.ExitStatus(), 0);
    EXPECT_THAT(ended.out, HasSubstr("\nraid_tool_failed_commands 1\n"));
    EXPECT_THAT(ended.out, HasSubstr("\nraid_tool_failed_runs 3\n"));
}

TEST(Show, MetricsTellHowLongTheToolTook) {
    const TempFolder folder;
    fs::copy(fs::path(COMMAND_TEST_SCENARIOS) / "small", folder.Path() / "server",
             fs::copy_options::recursive);
    folder.Write("server/v.do", "sleep 0.5\n");
    folder.Write("server/ctrlinfo_aAll.do", "fail-first 1\n");  // The module pauses for a second.
    const Ended ended = RunCommand({"--scenario", folder / "server", "show", "--format", "prometheus"});
    const std::string name = "\nraid_tool_duration_seconds ";
    const std::size_t at = ended.out.find(name);
    ASSERT_NE(at, std::string::npos) << ended.out;
    EXPECT_GE(std::stod(ended.out.substr(at + name.size())), 1.5);
}

TEST(Health, IsAWarningWhileADriveIsRebuilt) {
    const Saved saved(Replaced(XmlOf("small"), "Value=\"NO ERROR\"", "Value=\"REBUILD\""));
    const Ended ended = RunCommand({"health", "--document", saved.Path()});
    EXPECT_EQ(ended.ExitStatus(), 1);
    EXPECT_THAT(ended.out, StartsWith("RAID WARNING - 1 warning in "));
}

TEST(Health, IsUnknownWhereNotEvenTheCommandLineIsRight) {
    const Ended ended = RunCommand({"health", "--verbos"});
    EXPECT_EQ(ended.ExitStatus(), 3);
    EXPECT_EQ(
        ended.out,
        "RAID UNKNOWN - unknown option \"--verbos\" (did you mean --verbose?); see mngsrvraid --help\n");
}

TEST(Health, IsUnknownWithoutTheModule) {
    const TempFolder folder;
    const Ended ended = RunCommand({"--install-dir", folder.Path().string(), "health"});
    EXPECT_EQ(ended.ExitStatus(), 3);
    EXPECT_THAT(ended.out, StartsWith("RAID UNKNOWN - the RAID module cannot be loaded: "));
    EXPECT_EQ(CountLines(ended.out), 1U);
}

TEST(Health, IsUnknownWhenItIsInterrupted) {
    const TemporaryDirectory temporary;
    const Command command{.words = {"--scenario", "faults/slow", "health"},
                          .environment = temporary.Environment()};
    const auto running = command.Start();
    ASSERT_TRUE(ComesTrue([&] { return !temporary.ResultFiles().empty(); }));
    ::kill(running->Process(), SIGTERM);
    const Ended ended = running->Wait();
    EXPECT_EQ(ended.ExitStatus(), 3);
    EXPECT_EQ(ended.out, "RAID UNKNOWN - interrupted\n");
    EXPECT_TRUE(temporary.Names().empty());
}

TEST(Health, IsNotMeantByAnArgumentOfThatName) {
    const Ended ended = RunCommand({"show", "--document", "health"});
    EXPECT_EQ(ended.ExitStatus(), 4);
    EXPECT_EQ(ended.out, "");
}

TEST(Health, NamesEachFindingWhenVerbose) {
    const Ended ended = RunCommand({"--scenario", "large", "health", "--verbose"});
    EXPECT_EQ(CountLines(ended.out), 8U);
    EXPECT_THAT(
        ended.out,
        HasSubstr(
            "\nWARNING: controller 0, PD12 in enclosure 16 slot 4: Unconfig BAD, failure predicted (2) ("));
}

TEST(Show, IsATableOfTheServerOrOfASavedDocument) {
    const Ended shown = RunCommand({"--scenario", "large", "show"});
    EXPECT_EQ(shown.ExitStatus(), 0);
    EXPECT_THAT(shown.out, StartsWith("CRITICAL: 2 critical, 5 warnings in "));
    EXPECT_THAT(shown.out, HasSubstr("\n  PD4    252:4  REBUILD "));
    EXPECT_THAT(shown.out, Not(HasSubstr("\x1b")));
    const Saved saved(XmlOf("large"));
    EXPECT_EQ(RunCommand({"show", "--document", saved.Path()}).out, shown.out);
    EXPECT_EQ(RunCommand({"--scenario", "large", "get-info", "--format", "table"}).out, shown.out);
}

TEST(Show, ReadsADocumentFromStandardInput) {
    const Saved saved(XmlOf("small"));
    const Command command{.words = {"show", "--document", "-"}, .inChild = [&] {
                              const int file = ::open(saved.Path().c_str(), O_RDONLY);
                              ::dup2(file, STDIN_FILENO);
                          }};
    EXPECT_EQ(command.Run().out, RunCommand({"show", "--document", saved.Path()}).out);
}

TEST(Show, AsksForSmartDataOfEveryDriveWhenTold) {
    const Ended ended = RunCommand({"--scenario", "small", "show", "--smart"});
    EXPECT_EQ(ended.ExitStatus(), 0);
    for (const char* const drive : {"PD0 in enclosure 252 slot 0\n", "PD1 in enclosure 252 slot 1\n",
                                    "PD2 in enclosure 252 slot 2\n"}) {
        EXPECT_THAT(ended.out, HasSubstr(drive));
    }
    EXPECT_THAT(ended.out, HasSubstr("SMART Status"));
}

TEST(Show, ADriveThatCannotAnswerDoesNotHideTheOthers) {
    const Ended ended = RunCommand({"--scenario", "old", "show", "--smart"});
    EXPECT_EQ(ended.ExitStatus(), 1);
    EXPECT_THAT(ended.out, HasSubstr("SMART Status"));
    EXPECT_THAT(ended.err, HasSubstr("SMART data are missing: controller 0, drive in enclosure 1 slot "));
    EXPECT_EQ(CountLines(ended.err), 1U);
}

TEST(Show, ASavedDocumentIsNotDatedToday) {
    const Saved saved(XmlOf("small"));
    const std::vector<std::string> words = {"show", "--document", saved.Path(), "--format"};
    const auto in = [&](const char* format) {
        std::vector<std::string> all = words;
        all.emplace_back(format);
        return RunCommand(all).out;
    };
    EXPECT_THAT(in("json"), HasSubstr("\"taken_at\": null"));
    EXPECT_THAT(in("prometheus"), Not(HasSubstr("raid_last_success")));
    EXPECT_THAT(in("html"), HasSubstr("From a saved document"));
}

TEST(Show, StoresWhatItShows) {
    const TempFolder folder;
    const Ended ended = RunCommand({"--scenario", "small", "show", "--output", folder / "shown.txt"});
    EXPECT_EQ(ended.ExitStatus(), 0);
    EXPECT_EQ(ended.out, "");
    EXPECT_EQ(ReadFile(folder / "shown.txt"), RunCommand({"--scenario", "small", "show"}).out);
}

TEST(Show, TellsWhichServerItIs) {
    const auto in = [](const std::vector<std::string>& words) {
        std::vector<std::string> all = {"--scenario", "small", "--host", "storage7"};
        all.insert(all.end(), words.begin(), words.end());
        return RunCommand(all).out;
    };
    EXPECT_THAT(in({"show"}), StartsWith("OK on storage7: 1 controller, "));
    EXPECT_THAT(in({"show", "--smart"}), StartsWith("OK on storage7: 1 controller, "));
    EXPECT_THAT(in({"smart", "0", "252:1"}), StartsWith("OK on storage7: PD1 in "));
    EXPECT_THAT(in({"get-info", "--format", "html"}), HasSubstr("<h1>RAID report of storage7</h1>"));
    EXPECT_THAT(in({"show", "--format", "json"}), HasSubstr("\n  \"host\": \"storage7\",\n"));
    for (const std::vector<std::string>& elsewhere :
         {std::vector<std::string>{"health"}, {"show", "--format", "prometheus"}, {"get-info"}}) {
        EXPECT_THAT(in(elsewhere), Not(HasSubstr("storage7"))) << elsewhere.front();
    }
}

TEST(Smart, ShowsOneDrive) {
    const Ended ended = RunCommand({"--scenario", "large", "smart", "0", "16", "2"});
    EXPECT_EQ(ended.ExitStatus(), 0);
    EXPECT_THAT(ended.out, StartsWith("WARNING: PD10 in enclosure 16 slot 2\n"));
    EXPECT_THAT(ended.out, HasSubstr("[Head 0]Read"));
    EXPECT_EQ(RunCommand({"--scenario", "large", "smart", "0", "16:2"}).out, ended.out);
}

TEST(Smart, FailsLikeTheMethod) {
    const Ended ended = RunCommand({"--scenario", "small", "smart", "0", "252", "77"});
    EXPECT_EQ(ended.ExitStatus(), 1);
    EXPECT_EQ(ended.out, "");
    EXPECT_THAT(ended.err, HasSubstr("check that there is such a drive"));
}

struct FormatCase {
    const char* format;
    const char* begin;
};

class FormatOf : public testing::TestWithParam<FormatCase> {};

TEST_P(FormatOf, IsTheSameForBothWaysToTheServerAndForADrive) {
    const auto& [format, begin] = GetParam();
    for (const std::vector<std::string>& words : {std::vector<std::string>{"get-info"},
                                                  {"show"},
                                                  {"get-pd-info", "0", "252", "1"},
                                                  {"smart", "0", "252", "1"}}) {
        std::vector<std::string> all = {"--scenario", "small", "--format", format};
        all.insert(all.end(), words.begin(), words.end());
        const Ended ended = RunCommand(all);
        EXPECT_EQ(ended.ExitStatus(), 0) << words.front();
        EXPECT_EQ(ended.err, "") << words.front();
        EXPECT_THAT(ended.out, StartsWith(begin)) << words.front();
    }
}

INSTANTIATE_TEST_SUITE_P(
    All, FormatOf,
    testing::Values(FormatCase{"xml", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<RAID"},
                    FormatCase{"table", "OK: "}, FormatCase{"json", "{\n"},
                    FormatCase{"html", "<!DOCTYPE html>"}, FormatCase{"prometheus", "# HELP raid_"}),
    [](const auto& each) { return each.param.format; });

TEST(Format, OfATreeIsEveryItemIndented) {
    const std::string tree = RunCommand({"--scenario", "small", "get-info", "--format", "tree"}).out;
    EXPECT_THAT(
        tree, StartsWith("Controller Information\n  ### General Information ###\n    Controller No. = 0\n"));
    EXPECT_EQ(std::to_string(CountLines(tree)), testsupport::EvaluateXPath(XmlOf("small"), "count(//Item)"));
}

TEST(Show, RefusesWhatIsNoDocumentInEveryFormat) {
    const Saved page("<html/>");
    for (const char* const format : {"xml", "table", "json"}) {
        const Ended ended = RunCommand({"show", "--document", page.Path(), "--format", format});
        EXPECT_EQ(ended.ExitStatus(), 4) << format;
        EXPECT_EQ(ended.out, "") << format;
        EXPECT_THAT(ended.err, HasSubstr(" is no RAID document: ")) << format;
    }
}

TEST(WrongUse, OfWhatDoesNotGoTogether) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{"show", "--format", "yaml"},
         "--format takes xml, tree, table, json, html or prometheus, not \"yaml\""},
        {{"--scenario", "small", "show", "--document", "a"},
         "--scenario is a server to ask, which --document leaves alone"},
        {{"show", "--smart", "--document", "a"}, "--smart asks the server, which --document leaves alone"},
        {{"show", "--smart", "--format", "xml"},
         "--smart has no xml: the document of a server holds none; get-pd-info has it drive by drive"},
        {{"show", "--compact"}, "--compact goes with --format json alone"},
        {{"get-info", "--compact"}, "--compact goes with --format json alone"},
        {{"capture"}, "capture needs a folder to make: DIR"},
        {{"smart", "0"}, "smart needs a drive: CTRL ENCL PD, or CTRL ENCL:PD"},
        {{"get-info", "--document", "a"}, "unknown option \"--document\""},
        {{"show", "--document", ""}, "--document needs a path that is not empty"},
    };
    for (const auto& [words, line] : cases) {
        const Ended ended = RunCommand(words);
        EXPECT_EQ(ended.ExitStatus(), 2) << line;
        EXPECT_EQ(ended.err, "mngsrvraid: " + line + "; see mngsrvraid --help\n");
    }
}

/// What a terminal of that width gets to see of `show`.
std::string OnTerminal(std::map<std::string, std::string> environment, unsigned short columns,
                       const char* scenario = "small") {
    const int controller = ::posix_openpt(O_RDWR | O_NOCTTY);
    EXPECT_EQ(::grantpt(controller), 0);
    EXPECT_EQ(::unlockpt(controller), 0);
    const struct winsize size { 24, columns, 0, 0 };
    EXPECT_EQ(::ioctl(controller, TIOCSWINSZ, &size), 0);
    const std::string name = ::ptsname(controller);
    environment.insert({"TERM", "xterm"});
    const Command command{
        .words = {"--scenario", scenario, "show"}, .environment = std::move(environment), .inChild = [&] {
            ::unsetenv("COLUMNS");
            ::dup2(::open(name.c_str(), O_RDWR | O_NOCTTY), STDOUT_FILENO);
        }};
    EXPECT_EQ(command.Run().ExitStatus(), 0);
    std::string seen;
    std::array<char, 4096> part{};
    for (ssize_t count = 0; (count = ::read(controller, part.data(), part.size())) > 0;) {
        seen.append(part.data(), static_cast<std::size_t>(count));
    }
    ::close(controller);
    seen.erase(std::remove(seen.begin(), seen.end(), '\r'), seen.end());
    return seen;
}

std::size_t LongestLine(const std::string& text) {
    std::istringstream lines(text);
    std::size_t longest = 0;
    for (std::string line; std::getline(lines, line);) {
        longest = std::max(longest, basics::WidthOf(line));
    }
    return longest;
}

TEST(Terminal, HasColoursUnlessTheyAreUnwanted) {
    EXPECT_THAT(OnTerminal({}, 80), StartsWith("\x1b[32mOK\x1b[0m: "));
    EXPECT_THAT(OnTerminal({{"NO_COLOR", "1"}}, 80), Not(HasSubstr("\x1b")));
    EXPECT_THAT(OnTerminal({{"TERM", "dumb"}}, 80), Not(HasSubstr("\x1b")));
}

TEST(Terminal, IsFilledAndNotOverrun) {
    const std::map<std::string, std::string> plain = {{"NO_COLOR", "1"}};
    EXPECT_LE(LongestLine(OnTerminal(plain, 60)), 60U);
    EXPECT_GT(LongestLine(OnTerminal(plain, 60)), 55U);
    EXPECT_THAT(OnTerminal(plain, 60), HasSubstr("MODEL,\n  SERIAL NUMBER\n")) << "not shown";
    EXPECT_THAT(OnTerminal(plain, 60), Not(HasSubstr("7K00025200C4")));
    EXPECT_THAT(OnTerminal(plain, 200), HasSubstr("7K00025200C4"));
}

TEST(Terminal, OfEightyColumnsShowsWhichDriveToReplace) {
    const std::string seen = OnTerminal({{"NO_COLOR", "1"}}, 80, "large");
    EXPECT_LE(LongestLine(seen), 80U);
    EXPECT_THAT(seen, HasSubstr("PD13 in enclosure 16 slot 5: OFFLINE (TF800P,\n"
                                "            serial number 7K1301605C4)\n"));
    EXPECT_THAT(seen, HasSubstr("\n  not shown for lack of width: ")) << "the table's own column has no room";
}

}  // namespace
}  // namespace command::test
