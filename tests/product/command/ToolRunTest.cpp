// What a failure tells of the tool's run: how it ended, and what it printed last.

#include "sandbox/Sandbox.h"
#include "test_support/Command.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

namespace command::test {
namespace {

using namespace testsupport;

namespace fs = std::filesystem;
using testing::HasSubstr;

// As a refusal, because the module does not try that again.
constexpr const char* kOnce = "marker\n";

/// A server of one controller whose list of controllers is this text.
class OddServer final {
  public:
    OddServer(const std::string& text, const std::string& instructions) {
        m_Folder.Write("server.conf", "drives 2\n");
        m_Folder.Write("ctrlinfo_aAll.txt", text);
        m_Folder.Write("ctrlinfo_aAll.do", instructions);
    }
    void Write(const std::string& name, const std::string& text) const { m_Folder.Write(name, text); }
    [[nodiscard]] std::string Path() const { return m_Folder.Path().string(); }

    /// What stands between the report's name and the advice.
    [[nodiscard]] std::string Told(const std::string& place = "(vdkcli -ctrlinfo -aAll)",
                                   const std::vector<std::string>& words = {"get-info"}) const {
        std::vector<std::string> all = {"--scenario", Path()};
        all.insert(all.end(), words.begin(), words.end());
        const Ended ended = RunCommand(all);
        const std::string line = ended.err + ended.out;
        const std::size_t start = line.find(place);
        const std::size_t end = line.rfind("; look at the scenario");
        EXPECT_EQ(CountLines(line), 1U) << line;
        return start == std::string::npos ? line
                                          : line.substr(start + place.size(), end - start - place.size());
    }

  private:
    TempFolder m_Folder;
};

std::string ToldOf(const std::string& text, const std::string& instructions) {
    return OddServer(text, instructions).Told();
}

TEST(ToolRun, ExitStatusIsTold) {
    EXPECT_EQ(ToldOf("Error - busy\n", std::string(kOnce) + "exit 9\n"), ": exit status 9: \"Error - busy\"");
}

TEST(ToolRun, SignalIsTold) {
    EXPECT_EQ(ToldOf("half\n", std::string(kOnce) + "signal SEGV shell\n"), ": ended by SIGSEGV: \"half\"");
}

// The shell that waits for the tool says so itself.
TEST(ToolRun, SignalThatTheShellSawIsTold) {
    EXPECT_EQ(ToldOf("half\n", std::string(kOnce) + "signal KILL\n"), ": exit status 137 (SIGKILL): \"Killed\"");
}

TEST(ToolRun, SilentToolIsToldAsSilent) {
    EXPECT_EQ(ToldOf("", "exit 5\n"), ": exit status 5, nothing printed");
    EXPECT_EQ(ToldOf(" \n\t\n\r\n", "exit 5\n"), ": exit status 5, nothing printed");
}

TEST(ToolRun, LastLineIsTheLastThatHoldsSomething) {
    const std::string once = std::string(kOnce) + "exit 3\n";
    EXPECT_EQ(ToldOf("first\nlast, without an end", once), ": exit status 3: \"last, without an end\"");
    EXPECT_EQ(ToldOf("first\n  last  \n\n \n", once), ": exit status 3: \"last\"");
    EXPECT_EQ(ToldOf("first\r\nlast\r\n", once), ": exit status 3: \"last\"");
    EXPECT_EQ(ToldOf("10 %\r20 %\rno answer\r", once), ": exit status 3: \"no answer\"");
    EXPECT_EQ(ToldOf("", once), ": exit status 3: \"Error - Invalid input at or near token -aAll\"");
}

TEST(ToolRun, LastLineOnStandardErrorIsToldToo) {
    EXPECT_EQ(ToldOf("said there\n", std::string(kOnce) + "stderr\nexit 3\n"), ": exit status 3: \"said there\"");
}

TEST(ToolRun, WhatIsNotPrintableIsShownAsPrintable) {
    EXPECT_EQ(ToldOf("\x1b[2Jred\x07\t\xff\xe2\x80\xae.\n", std::string(kOnce) + "exit 3\n"),
              ": exit status 3: \"\\x1b[2Jred\\x07\\x09\xEF\xBF\xBD\xEF\xBF\xBD.\"");
}

TEST(ToolRun, LongLastLineIsCut) {
    const std::string once = std::string(kOnce) + "exit 3\n";
    const auto told = [](const std::string& line) { return ": exit status 3: \"" + line + "\""; };
    EXPECT_EQ(ToldOf("first\n" + std::string(200, 'x'), once), told(std::string(200, 'x')));
    EXPECT_EQ(ToldOf("first\n" + std::string(201, 'x'), once), told(std::string(199, 'x') + "…"));
    EXPECT_EQ(ToldOf("first\n" + std::string(1'000'000, 'x'), once),
              told("…" + std::string(198, 'x') + "…"));
}

TEST(ToolRun, LastOfSeveralTriesCounts) {
    EXPECT_EQ(ToldOf("third try\n", "fail-first 2 7\nexit 9\n"), ": exit status 9: \"third try\"");
}

TEST(ToolRun, OtherCommandsThatFailedBeforeDoNotCount) {
    const OddServer server("refused\n", std::string(kOnce) + "exit 4\n");
    server.Write("v.txt", "no version\n");
    server.Write("v.do", std::string(kOnce) + "exit 77\n");
    EXPECT_EQ(server.Told(), ": exit status 4: \"refused\"");
}

TEST(ToolRun, ReportThatIsNotUnderstoodIsToldWithHowItEnded) {
    const Ended ended = RunCommand({"--scenario", "old", "get-pd-info", "0", "1", "1"});
    EXPECT_THAT(ended.err, HasSubstr("could not be understood (06) at controller 0: drive 1:1 (vdkcli -pdinfo "
                                     "-pd[1:1] -a0): exit status 0: \"199 "));
}

TEST(ToolRun, EverySubcommandTellsOfIt) {
    const std::string told = ": exit status 9: \"Error - busy\"";
    const OddServer server("Error - busy\n", std::string(kOnce) + "exit 9\n");
    for (const char* const subcommand : {"get-info", "show", "health"}) {
        EXPECT_EQ(server.Told("(vdkcli -ctrlinfo -aAll)", {subcommand}), told) << subcommand;
    }
    EXPECT_EQ(server.Told("(vdkcli -ctrlinfo -aAll)", {"show", "--smart"}), told);
    const TempFolder folder;
    EXPECT_EQ(server.Told("(vdkcli -ctrlinfo -aAll)", {"capture", folder / "mine"}), told);
    EXPECT_THAT(ReadFile(folder / "mine/README.md"), HasSubstr("(vdkcli -ctrlinfo -aAll)" + told));
}

TEST(ToolRun, SubcommandsForOneDriveTellOfIt) {
    const OddServer server("", "");
    server.Write("pdinfo_pd8.1_a0.txt", "Error - spinning up\n");
    server.Write("pdinfo_pd8.1_a0.do", std::string(kOnce) + "exit 9\n");
    for (const char* const subcommand : {"smart", "get-pd-info"}) {
        const Ended ended = RunCommand({"--scenario", server.Path(), subcommand, "0", "8", "1"});
        EXPECT_THAT(ended.err, HasSubstr("drive 8:1 (vdkcli -pdinfo -pd[8:1] -a0): exit status 9: "
                                         "\"Error - spinning up\"; check"));
    }
}

/// The command where this script is the tool.
Ended RunWithTool(const std::string& script) {
    const TempFolder folder;
    folder.Write("vdkcli", script);
    ::chmod((folder / "vdkcli").c_str(), 0755);
    fs::create_directory(folder / "empty");
    return Command{.words = {"get-info"}, .inChild = [&] {
                       sandbox::EnterSandbox(folder / "vdkcli", folder / "empty");
                   }}.Run();
}

TEST(ToolRun, ToolThatCannotBeStartedIsTold) {
    EXPECT_THAT(RunWithTool("#!/no/such/shell\n").err,
                HasSubstr("(vdkcli -ctrlinfo -aAll): exit status 127: \"sh: 1: "
                          "/opt/zorbalt/vdk/cli/vdkcli: not found\"; run the command"));
}

TEST(ToolRun, ToolWithoutItsLibrariesIsTold) {
    const std::string complaint =
        "vdkcli: error while loading shared libraries: libstorelib.so.4: cannot open shared object file";
    EXPECT_THAT(RunWithTool("#!/bin/sh\necho '" + complaint + "' >&2\nexit 127\n").err,
                HasSubstr("(vdkcli -ctrlinfo -aAll): exit status 127: \"" + complaint + "\"; run the command"));
}

TEST(ToolRun, TraceIsAsItWas) {
    const OddServer server("Error - busy\n", std::string(kOnce) + "exit 9\n");
    const Ended ended = RunCommand({"--scenario", server.Path(), "--trace", "2", "get-info"});
    EXPECT_THAT(ended.err, HasSubstr("\tFailed to execute vdkcli command.(vdkcli -ctrlinfo -aAll)\n"));
    EXPECT_THAT(ended.err, HasSubstr("\tFailed to execute vdkcli command 000000a1.\n"));
    EXPECT_EQ(ended.err.find("\tFailed to delete file"), std::string::npos);
}

}  // namespace
}  // namespace command::test
