// The program that stands in for the shell, beside the shell.

#include "recorder/RunFile.h"

#include "test_support/Processes.h"
#include "test_support/TempFolder.h"
#include "test_support/Waiting.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <functional>
#include <thread>

namespace recorder::test {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::HasSubstr;
using testsupport::ReadFile;
using testsupport::TempFolder;
using testsupport::WriteFile;

const fs::path kRecorder = RECORDER_TEST_PROGRAM;

class Recorder : public testing::Test {
  protected:
    Recorder() {
        // Whoever loses his parent becomes this process's child, and can be seen.
        EXPECT_EQ(::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0), 0);
        fs::create_directory(Records());
    }
    ~Recorder() override {
        // So that one failed test does not make others fail.
        for (const pid_t started : m_Started) {
            if (::waitpid(started, nullptr, WNOHANG) == 0) {
                ::kill(started, SIGKILL);
            }
        }
    }

    [[nodiscard]] fs::path Records() const { return m_Folder.Path() / "records"; }
    [[nodiscard]] std::string Result() const { return m_Folder.Read("result"); }

    // `sh WORDS...` by the name that PATH finds, with its output in the result file.
    pid_t Start(std::vector<std::string> words, const std::function<void()>& inChild) {
        const pid_t child = ::fork();
        if (child == 0) {
            const int file = ::open((m_Folder / "result").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
            ::dup2(file, STDOUT_FILENO);
            ::dup2(file, STDERR_FILENO);
            ::close(file);
            inChild();
            words.insert(words.begin(), "sh");
            std::vector<char*> pointers;
            for (std::string& word : words) {
                pointers.push_back(word.data());
            }
            pointers.push_back(nullptr);
            ::execvp("sh", pointers.data());
            ::_exit(99);
        }
        m_Started.push_back(child);
        return child;
    }

    // Puts the recorder first in PATH.
    [[nodiscard]] std::function<void()> Recorded(const std::function<void()>& inChild = [] {}) const {
        return [this, inChild] {
            inChild();
            const char* const path = ::getenv("PATH");
            ::setenv("MNGSRVRAID_RECORD", Records().c_str(), 1);
            if (path != nullptr) {
                ::setenv("MNGSRVRAID_RECORD_PATH", path, 1);
            }
            ::setenv("PATH",
                     (kRecorder.parent_path().string() + (path ? std::string(":") + path : "")).c_str(), 1);
        };
    }

    [[nodiscard]] static int WaitFor(pid_t child, int options = 0) {
        int status = -1;
        EXPECT_EQ(::waitpid(child, &status, options), child);
        return status;
    }

    int RunThrough(const std::string& command, const std::function<void()>& inChild) {
        return WaitFor(Start({"-c", command}, inChild));
    }

    [[nodiscard]] std::vector<KeptRun> Kept() const {
        std::vector<KeptRun> runs;
        for (const fs::path& file : RunFiles(Records())) {
            const auto run = ReadRun(file);
            EXPECT_TRUE(run) << file;
            runs.push_back(run.value_or(KeptRun{}));
        }
        return runs;
    }

    void ExpectSameAsTheShell(
        const std::string& command, const std::function<void()>& inChild = [] {}) {
        const int expectedStatus = RunThrough(command, inChild);
        const std::string expected = Result();
        EXPECT_EQ(RunThrough(command, Recorded(inChild)), expectedStatus) << command;
        EXPECT_EQ(Result() == expected, true) << command << " printed " << Result().substr(0, 1000);
        ASSERT_EQ(Kept().size(), 1U) << command;
        EXPECT_EQ(Kept().front().command, command);
        EXPECT_EQ(Kept().front().status, expectedStatus);
        EXPECT_EQ(Kept().front().output == expected, true) << command;
        EXPECT_TRUE(NoteFiles(Records()).empty());
        EXPECT_EQ(TempFolder::NamesIn(Records()), std::vector<std::string>{"00000001.run"});
    }

    static void ExpectNoChild() {
        EXPECT_TRUE(testsupport::ComesTrue([] { return ::waitpid(-1, nullptr, WNOHANG) == -1; }));
    }

    TempFolder m_Folder;
    std::vector<pid_t> m_Started;
};

class AnyCommand : public Recorder, public testing::WithParamInterface<const char*> {};

TEST_P(AnyCommand, EndsAndPrintsAsInTheShell) {
    ExpectSameAsTheShell(GetParam());
}

INSTANTIATE_TEST_SUITE_P(All, AnyCommand,
                         testing::Values("", "exit 0", "exit 1", "exit 127", "exit 255", "/no/such/tool -v",
                                         "/ -v", "echo text", "printf 'a\\000b\\377\\r\\n'",
                                         "echo one; echo two >&2; echo three", "if", "kill -KILL $$",
                                         "kill -TERM $$", "ulimit -c 0; kill -SEGV $$", "kill -PIPE $$",
                                         "kill -INT $$", "echo before; kill -QUIT $$", "echo \"$0\" $#",
                                         "sort /proc/self/environ -z", "cd /proc/self/fd && echo *",
                                         "grep SigIgn /proc/self/status", "pwd; umask; ulimit -a",
                                         "printf 'odd\ncommand\n' # status 1", "readlink /proc/self/fd/0",
                                         "exec >&-"));

TEST_F(Recorder, PassesTenMillionBytesThrough) {
    std::string bytes;
    unsigned number = 1;
    while (bytes.size() < 10U << 20U) {
        number = number * 1664525U + 1013904223U;
        bytes += static_cast<char>(number >> 24U);
    }
    WriteFile(m_Folder / "bytes", bytes);
    ExpectSameAsTheShell("cat " + m_Folder / "bytes");
    EXPECT_EQ(Result() == bytes, true);
}

TEST_F(Recorder, LeavesSignalsThatAreIgnoredToTheCommand) {
    ExpectSameAsTheShell("grep SigIgn /proc/self/status", [] {
        ::signal(SIGHUP, SIG_IGN);
        ::signal(SIGCHLD, SIG_IGN);
    });
    EXPECT_THAT(Result(), HasSubstr("0001\n"));
}

TEST_F(Recorder, LeavesAMissingPathMissing) {
    ExpectSameAsTheShell("/usr/bin/env | /usr/bin/grep -c ^PATH=", [] { ::unsetenv("PATH"); });
}

TEST_F(Recorder, KeepsRunsInTheirOrder) {
    for (const char* const command : {"echo 1", "exit 2", "echo 3"}) {
        (void)RunThrough(command, Recorded());
    }
    const std::vector<KeptRun> kept = Kept();
    ASSERT_EQ(kept.size(), 3U);
    EXPECT_EQ(kept[0].command, "echo 1");
    EXPECT_EQ(kept[1].status, 2 << 8);
    EXPECT_EQ(kept[2].output, "3\n");
}

TEST_F(Recorder, WithoutAFolderTheRunIsAsItIs) {
    const int status = RunThrough("echo text; exit 3", [this] {
        Recorded()();
        ::setenv("MNGSRVRAID_RECORD", "/no/such/folder", 1);
    });
    EXPECT_EQ(WEXITSTATUS(status), 3);
    EXPECT_EQ(Result(), "text\n");
}

TEST_F(Recorder, OutputThatIsNoFileIsNotKeptAndANoteSaysSo) {
    const int status = RunThrough("echo text; exit 3",
                                  Recorded([] { ::dup2(::open("/dev/null", O_WRONLY), STDOUT_FILENO); }));
    EXPECT_EQ(WEXITSTATUS(status), 3);
    EXPECT_TRUE(Kept().empty());
    ASSERT_EQ(NoteFiles(Records()).size(), 1U);
    EXPECT_EQ(ReadFile(NoteFiles(Records()).front()),
              "echo text; exit 3 is not recorded: the output is no file\n");
}

TEST_F(Recorder, IsTheShellWhereNothingIsToBeKept) {
    WriteFile(m_Folder / "script", "echo \"$1\"; exit 4\n");
    const auto unrecorded = [] { ::setenv("PATH", (kRecorder.parent_path().string() + ":/bin").c_str(), 1); };
    EXPECT_EQ(WEXITSTATUS(WaitFor(Start({m_Folder / "script", "word"}, unrecorded))), 4);
    EXPECT_EQ(Result(), "word\n");
    EXPECT_EQ(WEXITSTATUS(WaitFor(Start({m_Folder / "script", "word"}, Recorded()))), 4);
    EXPECT_TRUE(Kept().empty());
}

// "$$" once the command is there.
pid_t ProcessNamedIn(const TempFolder& folder) {
    const bool isThere = testsupport::ComesTrue([&] { return folder.Read("result").ends_with('\n'); });
    EXPECT_TRUE(isThere) << "the command does not start";
    return isThere ? std::stoi(folder.Read("result")) : -1;
}

// The same once it has become another program.
pid_t ProcessThatBecame(const std::string& program, const TempFolder& folder) {
    const pid_t process = ProcessNamedIn(folder);
    EXPECT_TRUE(testsupport::ComesTrue([&] { return testsupport::Look(process).name == program; }));
    return process;
}

TEST_F(Recorder, SignalEndsTheCommandAndNothingIsKept) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGQUIT}) {
        const pid_t recorder = Start({"-c", "echo $$; ulimit -c 0; exec sleep 60"}, Recorded());
        const pid_t tool = ProcessThatBecame("sleep", m_Folder);
        EXPECT_NE(tool, recorder);
        ::kill(recorder, signal);
        EXPECT_EQ(WTERMSIG(WaitFor(recorder)), signal);
        ExpectNoChild();
        EXPECT_TRUE(Kept().empty());
        WriteFile(m_Folder / "result", "");
    }
}

TEST_F(Recorder, CommandThatWithstandsASignalGoesOn) {
    const pid_t recorder =
        Start({"-c", "trap 'echo heard' USR1; echo $$; while true; do sleep 0.05; done"}, Recorded());
    (void)ProcessNamedIn(m_Folder);
    ::kill(recorder, SIGUSR1);
    EXPECT_TRUE(testsupport::ComesTrue([&] { return Result().find("heard") != std::string::npos; }));
    ::kill(recorder, SIGTERM);
    EXPECT_EQ(WTERMSIG(WaitFor(recorder)), SIGTERM);
}

TEST_F(Recorder, TakesTheCommandAlongWhenItIsKilled) {
    const pid_t recorder = Start({"-c", "echo $$; exec sleep 60"}, Recorded());
    const pid_t tool = ProcessThatBecame("sleep", m_Folder);
    ::kill(recorder, SIGKILL);
    EXPECT_EQ(WTERMSIG(WaitFor(recorder)), SIGKILL);
    EXPECT_EQ(WTERMSIG(WaitFor(tool)), SIGKILL);
}

TEST_F(Recorder, EndsWithWhoeverCalledIt) {
    const pid_t caller = ::fork();
    if (caller == 0) {
        (void)Start({"-c", "echo $$; exec sleep 60"}, Recorded());
        ::pause();
        ::_exit(0);
    }
    (void)ProcessThatBecame("sleep", m_Folder);
    ::kill(caller, SIGKILL);
    EXPECT_EQ(WTERMSIG(WaitFor(caller)), SIGKILL);
    ExpectNoChild();
}

TEST_F(Recorder, StopsAndGoesOnWithTheCommand) {
    const pid_t recorder = Start({"-c", "echo text; kill -STOP $$; exit 5"}, Recorded());
    const int stopped = WaitFor(recorder, WUNTRACED);
    EXPECT_TRUE(WIFSTOPPED(stopped)) << stopped;
    ASSERT_EQ(Kept().size(), 1U);  // For whoever does not wait any longer.
    EXPECT_TRUE(WIFSTOPPED(Kept().front().status));
    EXPECT_EQ(Kept().front().output, "text\n");
    ::kill(recorder, SIGCONT);
    EXPECT_EQ(WEXITSTATUS(WaitFor(recorder)), 5);
    EXPECT_EQ(Kept().size(), 1U);
}

TEST(RunFile, ThatIsNoneIsRefused) {
    const TempFolder folder;
    for (const char* const text :
         {"", "run 2\nstatus 0\ncommand 1\nx\n", "run 1\nstatus x\ncommand 1\nx\n",
          "run 1\nstatus 0\ncommand 9\nx\n", "run 1\nstatus 0\ncommand 99999999999999\nx\n",
          "run 1\nstatus 0\ncommand 1 x\n", "run 1\nstatus 0\nother 1\nx\n"}) {
        WriteFile(folder / "a.run", text);
        EXPECT_FALSE(ReadRun(folder / "a.run")) << text;
    }
    EXPECT_FALSE(ReadRun(folder / "missing.run"));
    WriteFile(folder / "a.run", "run 1\nstatus 0\ncommand 1\nx\n");
    ASSERT_TRUE(ReadRun(folder / "a.run"));
    EXPECT_EQ(ReadRun(folder / "a.run")->output, "");
}

}  // namespace
}  // namespace recorder::test
