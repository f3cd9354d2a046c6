// Servers that are recorded, and what the recordings answer.

#include "basics/HostName.h"
#include "sandbox/Sandbox.h"

#include "test_support/Command.h"
#include "test_support/Pattern.h"
#include "test_support/Processes.h"
#include "test_support/Waiting.h"
#include "test_support/XmlLint.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <set>
#include <sstream>
#include <thread>

namespace capture::test {
namespace {

using namespace testsupport;

namespace fs = std::filesystem;
using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

const fs::path kScenarios = COMMAND_TEST_SCENARIOS;

class CaptureTest : public testing::Test {
  protected:
    [[nodiscard]] std::string Folder() const { return m_Folder / "mine"; }
    [[nodiscard]] std::string Captured(const std::string& name) const {
        return ReadFile(fs::path(Folder()) / name);
    }

    // `words` are further options.
    [[nodiscard]] Command CaptureCommand(std::vector<std::string> words) const {
        words.insert(words.begin(), {"--install-dir", m_Root.Path(), "capture", Folder()});
        return {.words = words, .environment = m_Temporary.Environment()};
    }

    Ended Capture(const std::vector<std::string>& words) {
        const Ended ended = CaptureCommand(words).Run();
        const bool isRecorded = fs::exists(fs::path(Folder()) / "v.txt");
        EXPECT_EQ(ended.out.starts_with("recorded in " + Folder() + ": "), isRecorded) << ended.out;
        EXPECT_TRUE(isRecorded || ended.ExitStatus() != 0);
        EXPECT_TRUE(m_Temporary.Names().empty());
        EXPECT_TRUE(m_Root.IsUntouched());
        return ended;
    }

    // The numbers of the drives for which there are texts.
    [[nodiscard]] std::vector<std::vector<std::string>> CapturedDrives() const {
        const std::string name = "pdinfo_pd(-?\\d+)\\.(-?\\d+)_a(-?\\d+)\\.txt";
        std::vector<std::vector<std::string>> drives;
        for (const std::string& file : TempFolder::NamesIn(Folder())) {
            if (const testsupport::Match numbers = testsupport::WholeMatch(file, name); !numbers.empty()) {
                drives.push_back({numbers[3], numbers[1], numbers[2]});
            }
        }
        return drives;
    }

    // What a failure's line says before it gives advice.
    static std::string Reason(const Ended& ended) { return ended.err.substr(0, ended.err.find(';')); }

    void ExpectSameAnswer(const std::string& scenario, const std::vector<std::string>& words) const {
        std::vector<std::string> original = {"--scenario", scenario};
        std::vector<std::string> copy = {"--scenario", Folder()};
        original.insert(original.end(), words.begin(), words.end());
        copy.insert(copy.end(), words.begin(), words.end());
        const Ended expected = RunCommand(original);
        const Ended seen = RunCommand(copy);
        EXPECT_EQ(seen.out == expected.out, true) << testing::PrintToString(words);
        EXPECT_EQ(seen.ExitStatus(), expected.ExitStatus()) << testing::PrintToString(words);
        EXPECT_EQ(Reason(seen), Reason(expected));
    }

    TempFolder m_Folder;
    TemporaryDirectory m_Temporary;
    InstallRoot m_Root;
};

class CapturedServer : public CaptureTest, public testing::WithParamInterface<const char*> {};

TEST_P(CapturedServer, AnswersAsTheServerDid) {
    const Ended ended = Capture({"--scenario", GetParam()});
    EXPECT_EQ(ended.err, "");
    EXPECT_EQ(ended.ExitStatus(), 0);
    EXPECT_FALSE(fs::exists(fs::path(Folder()) / "INCOMPLETE"));
    ExpectSameAnswer(GetParam(), {"get-info"});
    for (std::vector<std::string> drive : CapturedDrives()) {
        drive.insert(drive.begin(), "get-pd-info");
        ExpectSameAnswer(GetParam(), drive);
    }
}

std::string NameOf(const testing::TestParamInfo<const char*>& info) {
    std::string name = info.param;
    std::replace_if(
        name.begin(), name.end(), [](char character) { return character == '/' || character == '-'; }, '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(All, CapturedServer, testing::Values("awkward", "empty", "large", "small"), NameOf);

class CapturedFailure : public CaptureTest, public testing::WithParamInterface<const char*> {};

TEST_P(CapturedFailure, FailsAsTheServerDid) {
    const Ended ended = Capture({"--scenario", GetParam()});
    EXPECT_EQ(ended.ExitStatus(), 1);
    EXPECT_THAT(ended.err,
                HasSubstr("mngsrvraid: what failed is recorded in " + Folder() + ": get-info failed"));
    EXPECT_FALSE(fs::exists(fs::path(Folder()) / "INCOMPLETE"));
    EXPECT_THAT(Captured("README.md"), AllOf(HasSubstr("## What failed\n\n- get-info failed"),
                                             HasSubstr("Which drives there are is not known"),
                                             HasSubstr("- Not complete: "), Not(HasSubstr("- Complete"))));
    ExpectSameAnswer(GetParam(), {"get-info"});
}

INSTANTIATE_TEST_SUITE_P(All, CapturedFailure,
                         testing::Values("half-failed", "faults/late", "faults/marker", "faults/shell-killed",
                                         "faults/stopped", "faults/killed", "faults/dead"),
                         NameOf);

TEST_F(CaptureTest, DrivesThatCannotBeReadAnswerAsTheServerDid) {
    const Ended ended = Capture({"--scenario", "old"});
    EXPECT_EQ(ended.ExitStatus(), 1);
    EXPECT_THAT(ended.err, HasSubstr(" (and 1 more, told in its README.md)\n"));
    EXPECT_EQ(CapturedDrives().size(), 5U);
    ExpectSameAnswer("old", {"get-info"});
    for (std::vector<std::string> drive : CapturedDrives()) {
        drive.insert(drive.begin(), "get-pd-info");
        ExpectSameAnswer("old", drive);
    }
}

TEST_F(CaptureTest, SaysWhatItHasRecorded) {
    EXPECT_EQ(Capture({"--scenario", "small"}).out, "recorded in " + Folder() + ": 8 commands, 3 drives\n");
}

TEST_F(CaptureTest, HoldsEveryDriveAndSaysWhatItIs) {
    EXPECT_EQ(Capture({"--scenario", "large"}).ExitStatus(), 0);
    const std::string document = RunCommand({"--scenario", "large", "get-info"}).out;
    EXPECT_EQ(testsupport::EvaluateXPath(document, "count(//Item[@Name='Physical Drive Information'])"),
              std::to_string(CapturedDrives().size()));
    EXPECT_THAT(Captured("README.md"),
                AllOf(HasSubstr("from the scenario large, 20"), HasSubstr("- Controllers: Gate SR-8e, "),
                      HasSubstr("- Version of the tool: 4.1\n"), HasSubstr("- Drives asked for: 26\n"),
                      HasSubstr("- Not redacted"), HasSubstr("- Complete"), Not(HasSubstr("##")),
                      Not(HasSubstr("- Host"))));
}

TEST_F(CaptureTest, TextsAreThoseOfTheToolToTheByte) {
    EXPECT_EQ(Capture({"--scenario", "awkward"}).ExitStatus(), 0);
    for (const char* const name : {"v.txt", "ctrlinfo_a0.txt", "ldpdinfo_a0.txt", "ldpdinfo_a1.txt"}) {
        EXPECT_EQ(Captured(name) == ReadFile(kScenarios / "awkward" / name), true) << name;
        EXPECT_NE(Captured(name), "");
    }
}

TEST_F(CaptureTest, KeepsWhatFailedAtFirst) {
    fs::copy(kScenarios / "small", m_Folder.Path() / "server", fs::copy_options::recursive);
    WriteFile(m_Folder / "server/ctrlinfo_a0.do", "fail-first 2 7\n");
    WriteFile(m_Folder / "server/pdinfo_pd252.1_a0.do", "fail-first 1\n");
    EXPECT_EQ(Capture({"--scenario", m_Folder / "server"}).ExitStatus(), 0);
    EXPECT_EQ(Captured("ctrlinfo_a0.do"), "fail-first 2 7\n");
    EXPECT_EQ(Captured("pdinfo_pd252.1_a0.do"), "fail-first 1 1\n");
    EXPECT_FALSE(fs::exists(fs::path(Folder()) / "v.do"));
    ExpectSameAnswer(m_Folder / "server", {"get-info"});
    ExpectSameAnswer(m_Folder / "server", {"get-pd-info", "0", "252", "1"});
}

TEST_F(CaptureTest, DriveThatFailsIsToldAndTheOthersAreThere) {
    fs::copy(kScenarios / "small", m_Folder.Path() / "server", fs::copy_options::recursive);
    WriteFile(m_Folder / "server/pdinfo_pd252.1_a0.do", "marker\n");
    const Ended ended = Capture({"--scenario", m_Folder / "server"});
    EXPECT_EQ(ended.ExitStatus(), 1);
    EXPECT_THAT(ended.err, HasSubstr(": drive 0 252 1: get-pd-info failed with return value 0x"));
    EXPECT_EQ(CapturedDrives().size(), 3U);
    ExpectSameAnswer(m_Folder / "server", {"get-pd-info", "0", "252", "1"});
    ExpectSameAnswer(m_Folder / "server", {"get-pd-info", "0", "252", "2"});
}

TEST_F(CaptureTest, SaysWhatWasAnsweredDifferently) {
    const std::string tool = m_Folder / "vdkcli";
    WriteFile(tool,
              "#!/bin/sh\n"
              "cd /opt/zorbalt/vdk/state && echo run >>count\n"
              "VDKSIM_SCENARIO=/opt/zorbalt/vdk/scenario " COMMAND_TEST_SIMULATOR
              " \"$@\"\n"
              "status=$?\n"
              "[ \"$1\" != -ldpdinfo ] || wc -l <count\n"
              "exit $status\n");
    ::chmod(tool.c_str(), 0755);
    Command command = CaptureCommand({});
    command.inChild = [&] { sandbox::EnterSandbox(tool, kScenarios / "small"); };
    const Ended ended = command.Run();
    EXPECT_EQ(ended.err, "");
    EXPECT_THAT(Captured("README.md"), AllOf(HasSubstr("- `vdkcli -ldpdinfo -a0` was answered differently"),
                                             HasSubstr("from this server's tool")));
    EXPECT_THAT(Captured("README.md"), Not(HasSubstr("- `vdkcli -ctrlinfo -aAll` was")));
}

TEST_F(CaptureTest, ServerWithoutToolLeavesNoFolder) {
    Command command = CaptureCommand({"--host", "storage7"});
    command.inChild = [] { sandbox::EnterSandboxWithoutTool(); };
    const Ended ended = command.Run();
    EXPECT_EQ(ended.ExitStatus(), 1);
    EXPECT_THAT(ended.err, HasSubstr("mngsrvraid: storage7: nothing was recorded: get-info failed with"));
    EXPECT_FALSE(fs::exists(Folder()));
    EXPECT_EQ(Capture({"--scenario", "small"}).ExitStatus(), 0);
}

TEST_F(CaptureTest, ModuleThatCannotBeLoadedLeavesNoFolder) {
    fs::remove_all(m_Root.Cim());
    fs::create_directory(Folder());
    EXPECT_EQ(Capture({"--scenario", "small"}).ExitStatus(), 4);
    EXPECT_TRUE(TempFolder::NamesIn(Folder()).empty());
    fs::remove(Folder());
    EXPECT_EQ(Capture({"--scenario", "small"}).ExitStatus(), 4);
    EXPECT_FALSE(fs::exists(Folder()));
}

TEST_F(CaptureTest, NamesTheHostUnlessItIsRedacted) {
    EXPECT_EQ(
        Capture({"--scenario", "half-failed", "--host", "storage7"}).err.find("mngsrvraid: storage7: what"),
        0U);
    EXPECT_THAT(Captured("README.md"), HasSubstr("\n- Host: storage7\n"));
    fs::remove_all(Folder());
    EXPECT_EQ(
        Capture({"--scenario", "half-failed", "--host", "storage7", "--redact"}).err.find("mngsrvraid: what"),
        0U);
    EXPECT_THAT(Captured("README.md"), AllOf(HasSubstr("\n- Host: host-0001\n"), Not(HasSubstr("storage7"))));
}

TEST_F(CaptureTest, HostIsThisMachineWhereTheServerIs) {
    Command command = CaptureCommand({});
    command.inChild = [] { sandbox::EnterSandbox(COMMAND_TEST_SIMULATOR, kScenarios / "small"); };
    EXPECT_EQ(command.Run().ExitStatus(), 0);
    EXPECT_THAT(Captured("README.md"), HasSubstr("\n- Host: " + basics::HostName() + "\n"));
}

std::vector<std::string> WordsOf(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    return words;
}

// Serial numbers of a scenario, by the line that tells each.
std::set<std::string> SerialsOf(const fs::path& scenario) {
    const std::string line = "Serial N[^:\n]*:\\s*([0-9A-Za-z]{4,})";
    std::set<std::string> serials;
    for (const auto& file : fs::directory_iterator(scenario)) {
        const std::string text = ReadFile(file.path());
        for (const testsupport::Match& match : testsupport::MatchesIn(text, line)) {
            serials.insert(match[1]);
        }
    }
    return serials;
}

class RedactedCapture : public CaptureTest, public testing::WithParamInterface<const char*> {
  protected:
    [[nodiscard]] fs::path Plain() const { return m_Folder / "plain"; }
};

TEST_P(RedactedCapture, HasNoSerialNumberAndIsOtherwiseTheSame) {
    (void)RunCommand({"--scenario", GetParam(), "capture", Plain().string()});
    (void)Capture({"--scenario", GetParam(), "--redact"});
    const std::set<std::string> serials = SerialsOf(kScenarios / GetParam());
    EXPECT_GT(serials.size(), 2U);
    const std::string word = "(serial|wwn)-\\d{4,}";
    std::map<std::string, std::string> words;
    std::set<std::string> used;
    EXPECT_EQ(TempFolder::NamesIn(Folder()), TempFolder::NamesIn(Plain()));
    for (const std::string& name : TempFolder::NamesIn(Folder())) {
        const std::string text = Captured(name);
        for (const std::string& serial : serials) {
            EXPECT_EQ(text.find(serial), std::string::npos) << name << ": " << serial;
        }
        if (name == "README.md") {
            EXPECT_THAT(text, HasSubstr("- Redacted: "));
            EXPECT_THAT(text, Not(HasSubstr(GetParam())));
            continue;
        }
        const std::vector<std::string> before = WordsOf(ReadFile(Plain() / name));
        const std::vector<std::string> after = WordsOf(text);
        ASSERT_EQ(before.size(), after.size()) << name;
        for (std::size_t place = 0; place < before.size(); ++place) {
            if (before[place] == after[place]) {
                EXPECT_EQ(words.count(before[place]), 0U) << before[place];
                continue;
            }
            EXPECT_FALSE(testsupport::WholeMatch(after[place], word).empty())
                << name << ": " << after[place].substr(0, 100);
            EXPECT_EQ(words.emplace(before[place], after[place]).first->second, after[place]);
            used.insert(after[place]);
        }
    }
    EXPECT_GE(words.size(), serials.size());
    EXPECT_EQ(used.size(), words.size());
    // The documents as well, in which nothing else is another.
    const std::string original = RunCommand({"--scenario", GetParam(), "get-info"}).out;
    std::string expected;
    for (std::size_t at = 0; at < original.size();) {
        const std::size_t quote = std::min(original.find('"', at), original.size());
        const std::string part = original.substr(at, quote - at);
        expected += words.count(part) > 0 ? words[part] : part;
        expected += quote < original.size() ? "\"" : "";
        at = quote + 1;
    }
    EXPECT_EQ(RunCommand({"--scenario", Folder(), "get-info"}).out == expected, true);
}

INSTANTIATE_TEST_SUITE_P(All, RedactedCapture, testing::Values("large", "small", "old"), NameOf);

TEST_F(CaptureTest, OverwritesNothing) {
    fs::create_directory(Folder());
    WriteFile(Folder() + "/notes", "mine");
    const Ended ended = Capture({"--scenario", "small"});
    EXPECT_EQ(ended.ExitStatus(), 4);
    EXPECT_EQ(ended.err,
              "mngsrvraid: the capture cannot be written to " + Folder() +
                  ": it is there and is not empty, and nothing is overwritten; name another folder\n");
    EXPECT_EQ(TempFolder::NamesIn(Folder()), std::vector<std::string>{"notes"});
    EXPECT_EQ(Captured("notes"), "mine");
    fs::remove_all(Folder());
    WriteFile(Folder(), "a file");
    EXPECT_THAT(Capture({"--scenario", "small"}).err, HasSubstr("it is there and is no folder"));
    EXPECT_EQ(ReadFile(Folder()), "a file");
}

TEST_F(CaptureTest, FillsAnEmptyFolderAndMakesNoneAboveIt) {
    fs::create_directory(Folder());
    EXPECT_EQ(Capture({"--scenario", "empty"}).ExitStatus(), 0);
    EXPECT_THAT(TempFolder::NamesIn(Folder()), AllOf(Contains("v.txt"), Contains("README.md")));
    const Ended ended = RunCommand({"--scenario", "empty", "capture", m_Folder / "no/such"});
    EXPECT_EQ(ended.ExitStatus(), 4);
    EXPECT_THAT(ended.err, HasSubstr("No such file or directory"));
}

/// A capture that waits for a drive.
class WaitingCapture : public CaptureTest {
  protected:
    WaitingCapture() {
        fs::copy(kScenarios / "small", m_Folder.Path() / "server", fs::copy_options::recursive);
        WriteFile(m_Folder / "server/pdinfo_pd252.1_a0.do", "sleep 60\n");
    }
    [[nodiscard]] std::unique_ptr<Running> Start() const {
        auto running = CaptureCommand({"--scenario", m_Folder / "server"}).Start();
        EXPECT_TRUE(ComesTrue([&] {
            return HasDescendant(running->Process(), [](const Process& process) {
                return process.name == "vdkcli" && process.words.find("-pd[252:1]") != std::string::npos;
            });
        }));
        return running;
    }
};

TEST_F(WaitingCapture, InterruptedOneSaysThatItIsIncomplete) {
    const auto running = Start();
    EXPECT_EQ(m_Temporary.Names().size(), 1U);
    EXPECT_EQ(m_Temporary.ResultFiles().size(), 1U);
    ::kill(running->Process(), SIGINT);
    const Ended ended = running->Wait();
    EXPECT_TRUE(WIFSIGNALED(ended.status) && WTERMSIG(ended.status) == SIGINT) << ended.status;
    EXPECT_EQ(ended.err, "mngsrvraid: interrupted; the capture in " + Folder() + " is incomplete\n");
    EXPECT_THAT(TempFolder::NamesIn(Folder()), testing::ElementsAre("INCOMPLETE", "README.md"));
    EXPECT_THAT(Captured("README.md"), HasSubstr("has not come to its end"));
    EXPECT_TRUE(m_Temporary.Names().empty());
    EXPECT_TRUE(m_Root.IsUntouched());
    const Ended replayed = RunCommand({"--scenario", Folder(), "get-info"});
    EXPECT_EQ(replayed.ExitStatus(), 4);
    EXPECT_THAT(replayed.err, HasSubstr("is an incomplete capture; make another one"));
    // Whoever repeats the command means the same folder.
    EXPECT_EQ(Capture({"--scenario", "small"}).ExitStatus(), 0);
    EXPECT_FALSE(fs::exists(fs::path(Folder()) / "INCOMPLETE"));
    ExpectSameAnswer("small", {"get-info"});
}

TEST_F(WaitingCapture, SecondOneDoesNotTakeTheFolderOfTheFirst) {
    const auto running = Start();
    const Ended second = CaptureCommand({"--scenario", "small"}).Run();
    EXPECT_EQ(second.ExitStatus(), 4);
    EXPECT_THAT(second.err, HasSubstr("another capture is writing to it"));
    ::kill(running->Process(), SIGINT);
    (void)running->Wait();
    EXPECT_THAT(TempFolder::NamesIn(Folder()), testing::ElementsAre("INCOMPLETE", "README.md"));
}

}  // namespace
}  // namespace capture::test
