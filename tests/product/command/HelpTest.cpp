// What tells people how to use the command: its help, its manual page and the completions of three shells.

#include "history/Archive.h"
#include "scenario/ScenarioFolder.h"
#include "test_support/Command.h"
#include "test_support/Pattern.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <algorithm>
#include <set>
#include <sstream>

namespace command::test {
namespace {

using namespace testsupport;

using testing::HasSubstr;

std::string Help() {
    return RunCommand({"--help"}).out;
}

std::vector<std::string> Words(const std::string& line) {
    std::istringstream in(line);
    std::vector<std::string> words;
    for (std::string word; in >> word;) {
        words.push_back(word);
    }
    return words;
}

/// The command lines below "Examples:", without the command's name and what is said about them.
std::vector<std::vector<std::string>> Examples() {
    const std::string help = Help();
    std::istringstream lines(help.substr(help.find("\nExamples:\n") + std::string("\nExamples:\n").size()));
    std::vector<std::vector<std::string>> examples;
    for (std::string line; std::getline(lines, line);) {
        const std::size_t end = line.find("   ", line.find_first_not_of(' '));
        std::vector<std::string> words = Words(line.substr(0, end));
        EXPECT_EQ(words.at(0), "mngsrvraid");
        words.erase(words.begin());
        examples.push_back(words);
    }
    return examples;
}

bool Holds(const std::vector<std::string>& words, const std::string& word) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

/// With a made-up server, or what is remembered of one, where the example means the one that it is typed on.
std::vector<std::string> OnMadeUpServer(std::vector<std::string> words) {
    if (Holds(words, "history") || Holds(words, "events")) {
        std::erase(words, "--follow");  // It would not end.
        words.insert(words.end(), {"--history", "history.db"});
        return words;
    }
    if (Holds(words, "test-alert")) {
        words.insert(words.end(), {"--config", "service.toml"});
        return words;
    }
    if (!Holds(words, "--scenario") && !Holds(words, "--document") && !Holds(words, "diff")) {
        words.insert(words.begin(), {"--scenario", "large"});
    }
    return words;
}

/// A history with the made-up server's first answer.
void Remember(const std::string& path) {
    const std::string xml = RunCommand({"--scenario", "large", "get-info"}).out;
    const inventory::Snapshot snapshot(inventory::Document::Read(xml));
    history::Archive archive(path);
    history::Restored restored;
    history::Entry entry;
    entry.at = std::chrono::system_clock::now();
    entry.snapshot = &snapshot;
    EXPECT_TRUE(archive.Open(entry.at, restored).IsStored());
    EXPECT_TRUE(archive.Record(entry).IsStored());
}

TEST(HelpTest, ItsExamplesWork) {
    const TempFolder folder;
    WriteFile(folder / "old.xml", RunCommand({"--scenario", "large", "get-info"}).out);
    Remember(folder / "history.db");
    WriteFile(folder / "service.toml", "[[channel]]\nkind = \"exec\"\nprogram = \"/bin/true\"\n");
    const std::vector<std::vector<std::string>> examples = Examples();
    EXPECT_GE(examples.size(), 10U);
    for (const std::vector<std::string>& words : examples) {
        const Command command{.words = OnMadeUpServer(words), .inChild = [&folder] {
                                  if (::chdir(folder.Path().c_str()) != 0) {
                                      ::_exit(127);
                                  }
                              }};
        const Ended ended = command.Run();
        EXPECT_EQ(ended.ExitStatus(), Holds(words, "health") ? 2 : 0)
            << testing::PrintToString(words) << ended.err;
        EXPECT_EQ(ended.err, "") << testing::PrintToString(words);
    }
}

TEST(HelpTest, FitsATerminal) {
    std::istringstream lines(Help());
    for (std::string line; std::getline(lines, line);) {
        EXPECT_LE(line.size(), 100U) << line;
    }
}

std::set<std::string> OptionsIn(const std::string& text) {
    std::set<std::string> options;
    for (const testsupport::Match& option : testsupport::MatchesIn(text, "--[a-z]+(-[a-z]+)*")) {
        options.insert(option.front());
    }
    return options;
}

constexpr const char* kSubcommands[] = {"show",    "smart",  "health", "expect",  "get-info", "get-pd-info",
                                        "capture", "redact", "diff",   "history", "events",   "test-alert"};

TEST(ManualTest, HasEveryOptionAndSubcommand) {
    const std::string manual = ReadFile(COMMAND_TEST_SOURCES "/product/command/mngsrvraid.1");
    for (const std::string& option : OptionsIn(Help())) {
        EXPECT_THAT(manual, HasSubstr("Fl -" + option.substr(2))) << option;
    }
    for (const std::string subcommand : kSubcommands) {
        EXPECT_THAT(manual, HasSubstr("\n.It Cm " + subcommand)) << subcommand;
    }
}

TEST(ManualTest, IsWellFormed) {
    const Command lint{
        .words = {"-T", "lint", "-W", "warning", COMMAND_TEST_SOURCES "/product/command/mngsrvraid.1"},
        .program = "/usr/bin/mandoc"};
    const Ended ended = lint.Run();
    EXPECT_EQ(ended.ExitStatus(), 0) << ended.out << ended.err;
}

TEST(ManualTest, FitsThePagesOfOtherFormatters) {
    const Command format{
        .words = {"-mdoc", "-Tascii", "-ww", COMMAND_TEST_SOURCES "/product/command/mngsrvraid.1"},
        .program = "/usr/bin/troff"};
    const Ended ended = format.Run();
    EXPECT_EQ(ended.ExitStatus(), 0);
    EXPECT_EQ(ended.err, "");
    EXPECT_NE(ended.out, "");
}

struct Shell {
    const char* name;
    const char* program;
    const char* file;
};

class CompletionTest : public testing::TestWithParam<Shell> {};

TEST_P(CompletionTest, KnowsEveryOptionAndSubcommandAndIsUnderstood) {
    const std::string path =
        std::string(COMMAND_TEST_SOURCES "/product/command/completions/") + GetParam().file;
    const std::string text = ReadFile(path);
    for (const std::string& option : OptionsIn(Help())) {
        const bool isFish = std::string(GetParam().name) == "fish";
        EXPECT_THAT(text, HasSubstr(isFish ? "-l " + option.substr(2) + " " : option)) << option;
    }
    for (const char* const subcommand : kSubcommands) {
        EXPECT_THAT(text, HasSubstr(subcommand));
    }
    const std::vector<std::string> words = Words(testsupport::Replaced(text, "[\"'()]", " "));
    for (const std::string& scenario : scenario::ScenarioNames(COMMAND_TEST_SCENARIOS)) {
        EXPECT_TRUE(Holds(words, scenario)) << scenario;
    }
    const Ended ended = Command{.words = {"-n", path}, .program = GetParam().program}.Run();
    EXPECT_EQ(ended.ExitStatus(), 0);
    EXPECT_EQ(ended.err, "");
}

INSTANTIATE_TEST_SUITE_P(All, CompletionTest,
                         testing::Values(Shell{"bash", "/bin/bash", "mngsrvraid.bash"},
                                         Shell{"zsh", "/usr/bin/zsh", "_mngsrvraid"},
                                         Shell{"fish", "/usr/bin/fish", "mngsrvraid.fish"}),
                         [](const auto& shell) { return shell.param.name; });

/// What bash offers for the last of the words.
std::string OfferedByBash(const std::string& words) {
    const std::string script = "source " COMMAND_TEST_SOURCES
                               "/product/command/completions/mngsrvraid.bash; COMP_WORDS=(mngsrvraid " +
                               words +
                               "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _mngsrvraid; echo ${COMPREPLY[*]}";
    return Command{.words = {"-c", script}, .program = "/bin/bash"}.Run().out;
}

TEST(BashCompletion, OffersWhatMayStandThere) {
    EXPECT_EQ(OfferedByBash("s"), "show smart\n");
    EXPECT_EQ(
        OfferedByBash("''"),
        "show smart health expect get-info get-pd-info capture redact diff history events test-alert\n");
    EXPECT_EQ(OfferedByBash("show --format j"), "json\n");
    EXPECT_EQ(OfferedByBash("show --s"), "--scenario --smart\n");
    EXPECT_EQ(OfferedByBash("show --j"), "--jobs\n");
    EXPECT_EQ(OfferedByBash("--jobs show s"), "show smart\n");
    EXPECT_EQ(OfferedByBash("health --j"), "\n");
    EXPECT_EQ(OfferedByBash("test-alert --co"), "--compact --config\n");
    EXPECT_EQ(OfferedByBash("health --v"), "--version --verbose\n");
    EXPECT_EQ(OfferedByBash("get-info --v"), "--version\n");
    EXPECT_EQ(OfferedByBash("capture --r"), "--redact --redact-word\n");
    EXPECT_EQ(OfferedByBash("redact --r"), "--redact-word\n");
    EXPECT_EQ(OfferedByBash("capture --redact-word ''"), "\n");
    EXPECT_EQ(OfferedByBash("diff --format ''"), "table json\n");
    EXPECT_EQ(OfferedByBash("diff --a"), "--app-key --all\n");
    EXPECT_EQ(OfferedByBash("diff faults/la"), "faults/late\n");
    EXPECT_EQ(OfferedByBash("diff " COMMAND_TEST_SOURCES "/READ"), COMMAND_TEST_SOURCES "/README.md\n");
    EXPECT_EQ(OfferedByBash("--scenario faults/s"),
              "faults/shell-killed faults/silent faults/slow faults/still-writing faults/stopped\n");
}

// The equals sign is a word of its own there.
TEST(BashCompletion, OffersValuesBehindAnEqualsSign) {
    EXPECT_EQ(OfferedByBash("show --format ="), "xml tree table json html prometheus\n");
    EXPECT_EQ(OfferedByBash("show --format = j"), "json\n");
    EXPECT_EQ(OfferedByBash("--trace = a"), "all\n");
}

TEST(BashCompletion, TakesNoValueForTheSubcommand) {
    EXPECT_EQ(OfferedByBash("--output show s"), "show smart\n");
    EXPECT_EQ(OfferedByBash("--output = show s"), "show smart\n");
    EXPECT_EQ(OfferedByBash("--output diff show --sm"), "--smart\n");
    EXPECT_EQ(OfferedByBash("--version show --sm"), "--smart\n");
    EXPECT_EQ(OfferedByBash("capture --redact-word show --re"), "--redact --redact-word\n");
}

/// What fish offers for the last of the words.
std::vector<std::string> OfferedByFish(const std::string& words) {
    const std::string script = "source " COMMAND_TEST_SOURCES
                               "/product/command/completions/mngsrvraid.fish; complete -C 'mngsrvraid " +
                               words + "' | string replace -r '\t.*' ''";
    return Words(Command{.words = {"-N", "-c", script}, .program = "/usr/bin/fish"}.Run().out);
}

TEST(FishCompletion, OffersWhatMayStandThere) {
    EXPECT_THAT(OfferedByFish("s"), testing::UnorderedElementsAre("show", "smart"));
    EXPECT_THAT(OfferedByFish("show --s"), testing::UnorderedElementsAre("--scenario", "--smart"));
    EXPECT_THAT(OfferedByFish("show --j"), testing::ElementsAre("--jobs"));
    EXPECT_THAT(OfferedByFish("health --j"), testing::IsEmpty());
    EXPECT_THAT(OfferedByFish("show --format=j"), testing::ElementsAre("--format=json"));
    EXPECT_THAT(OfferedByFish("--scenario faults/la"), testing::ElementsAre("faults/late"));
    EXPECT_THAT(OfferedByFish("get-info --re"), testing::IsEmpty());
    EXPECT_THAT(OfferedByFish("diff --format=j"), testing::ElementsAre("--format=json"));
    EXPECT_THAT(OfferedByFish("diff --format=h"), testing::IsEmpty());
    EXPECT_THAT(OfferedByFish("diff old faults/la"), testing::ElementsAre("faults/late"));
    EXPECT_THAT(OfferedByFish("diff " COMMAND_TEST_SOURCES "/READ"),
                testing::ElementsAre(COMMAND_TEST_SOURCES "/README.md"));
}

TEST(FishCompletion, TakesNoValueForTheSubcommand) {
    EXPECT_THAT(OfferedByFish("--output show s"), testing::UnorderedElementsAre("show", "smart"));
    EXPECT_THAT(OfferedByFish("--output=x --output diff show --sm"), testing::ElementsAre("--smart"));
    EXPECT_THAT(OfferedByFish("--redact-word show redact --re"), testing::ElementsAre("--redact-word"));
}

}  // namespace
}  // namespace command::test
