#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <thread>

#include "ReportShape.h"
#include "Tool.h"

namespace vdksim::test {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// One command, "-ctrlinfo -a0", with a text and instructions.
class MisbehaviourTest : public ::testing::Test {
  protected:
    [[nodiscard]] Ended Run(const std::string& instructions, const std::string& text = "text\n") const {
        m_Folder.Write("ctrlinfo_a0.txt", text);
        m_Folder.Write("ctrlinfo_a0.do", instructions);
        return Tool(m_Folder.Path()).WithState(m_State.Path()).Run("-ctrlinfo -a0");
    }

    TempFolder m_Folder;
    TempFolder m_State;
};

struct Pipe {
    Pipe() { EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0); }
    ~Pipe() {
        ::close(ends[0]);
        CloseWriter();
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    void CloseWriter() {
        if (ends[1] >= 0) {
            ::close(ends[1]);
        }
        ends[1] = -1;
    }

    std::array<int, 2> ends{-1, -1};
};

TEST_F(MisbehaviourTest, ExitEndsWithTheStatusBehindTheText) {
    const Ended ended = Run("exit 3");
    EXPECT_EQ(ended.out, "text\n");
    EXPECT_EQ(ended.ExitStatus(), 3);
}

TEST_F(MisbehaviourTest, FailFirstFailsSoManyTimesAndThenWorks) {
    for (int run = 1; run <= 4; ++run) {
        const Ended ended = Run("fail-first 2 9");
        EXPECT_EQ(ended.ExitStatus(), run <= 2 ? 9 : 0) << run;
        EXPECT_EQ(ended.out, run <= 2 ? "Error - The controller is busy. Try again later.\n" : "text\n")
            << run;
    }
}

TEST_F(MisbehaviourTest, PassFirstPutsEverythingOffForSoManyRuns) {
    const std::vector<int> statuses = {0, 0, 9, 3, 3};
    for (std::size_t run = 0; run < statuses.size(); ++run) {
        const Ended ended = Run("pass-first 2\nfail-first 1 9\nexit 3\nrepeat 2");
        EXPECT_EQ(ended.ExitStatus(), statuses[run]) << run;
        EXPECT_EQ(ended.out == "text\n", run < 2) << run;
    }
}

TEST_F(MisbehaviourTest, FailFirstCountsEveryCommandByItself) {
    m_Folder.Write("v.txt", "Product Version : 1.0\n");
    m_Folder.Write("any.do", "fail-first 1");
    m_Folder.Write("pdinfo_a0.txt", "drives\n");
    const Tool tool = Tool(m_Folder.Path()).WithState(m_State.Path());
    EXPECT_EQ(tool.Run("-v").ExitStatus(), 1);
    EXPECT_EQ(tool.Run("-pdinfo -a0").ExitStatus(), 1);
    EXPECT_EQ(tool.Run("-v").ExitStatus(), 0);
    EXPECT_EQ(tool.Run("-pdinfo -a0").ExitStatus(), 0);
}

TEST_F(MisbehaviourTest, FailFirstWithoutAStateFolderSaysWhatItNeeds) {
    m_Folder.Write("v.txt", "Product Version : 1.0\n");
    m_Folder.Write("v.do", "fail-first 1");
    const Ended ended = Tool(m_Folder.Path()).Run("-v");
    EXPECT_EQ(ended.ExitStatus(), 73);
    EXPECT_EQ(ended.out, "");
    EXPECT_EQ(
        ended.err,
        "vdkcli simulator: 'pass-first' and 'fail-first' count runs and need a state folder; name one with "
        "VDKSIM_STATE\n");
}

TEST_F(MisbehaviourTest, RunsAtTheSameTimeAreCountedOnceEach) {
    m_Folder.Write("ctrlinfo_a0.txt", "text\n");
    m_Folder.Write("ctrlinfo_a0.do", "fail-first 5 9");
    const Tool tool = Tool(m_Folder.Path()).WithState(m_State.Path());
    const int null = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    std::array<pid_t, 20> children{};
    for (pid_t& child : children) {
        child = tool.Start("-ctrlinfo -a0", null, null);
    }
    int failed = 0;
    for (const pid_t child : children) {
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        failed += WIFEXITED(status) && WEXITSTATUS(status) == 9 ? 1 : 0;
    }
    ::close(null);
    EXPECT_EQ(failed, 5);
    EXPECT_EQ(LinesOf(m_State.Read("runs.log")), std::vector<std::string>(20, "-ctrlinfo -a0"));
}

TEST_F(MisbehaviourTest, TheMarkerStandsBeforeTheTextAndFails) {
    Ended ended = Run("marker");
    EXPECT_EQ(ended.out, "Error - Invalid input at or near token -a0\ntext\n");
    EXPECT_EQ(ended.ExitStatus(), 1);
    ended = Run("marker here\nexit 0");
    EXPECT_EQ(ended.out, "Error - Invalid input at or near token here\ntext\n");
    EXPECT_EQ(ended.ExitStatus(), 0);
}

TEST_F(MisbehaviourTest, ASignalEndsItBehindTheText) {
    for (const auto& [name, number] : {std::pair{"KILL", SIGKILL}, {"SIGSEGV", SIGSEGV}, {"TERM", SIGTERM}}) {
        const Ended ended = Run(std::string("signal ") + name);
        EXPECT_EQ(ended.out, "text\n");
        EXPECT_EQ(ended.Signal(), number);
    }
}

TEST_F(MisbehaviourTest, ASignalTakesTheShellAlongThatWaitsForIt) {
    m_Folder.Write("ctrlinfo_a0.txt", "text\n");
    m_Folder.Write("ctrlinfo_a0.do", "signal USR1 shell");
    const TempFolder shells;
    for (const bool isShell : {true, false}) {
        const std::string name = shells / (isShell ? "sh" : "other");
        std::filesystem::create_symlink("/bin/sh", name);
        const pid_t child = ::fork();
        if (child == 0) {
            const std::string command =
                std::string(VDKSIM_TEST_PROGRAM) + " -ctrlinfo -a0 >/dev/null; exit 7";
            ::setenv("VDKSIM_SCENARIO", m_Folder.Path().c_str(), 1);
            ::execl(name.c_str(), name.c_str(), "-c", command.c_str(), static_cast<char*>(nullptr));
            ::_exit(1);
        }
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(WIFSIGNALED(status) ? WTERMSIG(status) : -WEXITSTATUS(status), isShell ? SIGUSR1 : -7);
    }
}

TEST_F(MisbehaviourTest, StopStopsItBehindTheTextUntilItIsContinued) {
    m_Folder.Write("ctrlinfo_a0.txt", "text\n");
    m_Folder.Write("ctrlinfo_a0.do", "stop\nexit 4");
    const Pipe pipe;
    const pid_t child = Tool(m_Folder.Path()).Start("-ctrlinfo -a0", pipe.ends[1], STDERR_FILENO);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, WUNTRACED), child);
    EXPECT_TRUE(WIFSTOPPED(status));
    std::array<char, 16> text{};
    EXPECT_EQ(::read(pipe.ends[0], text.data(), text.size()), 5);
    ::kill(child, SIGCONT);
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 4);
}

TEST_F(MisbehaviourTest, SleepTakesItsTime) {
    const auto start = Clock::now();
    EXPECT_EQ(Run("sleep 0.3").out, "text\n");
    EXPECT_GE(Clock::now() - start, milliseconds(300));
}

TEST_F(MisbehaviourTest, EndlessPrintsMoreThanAnyoneReadsUntilItIsKilled) {
    for (const char* text : {"text\n", ""}) {
        m_Folder.Write("ctrlinfo_a0.txt", text);
        m_Folder.Write("ctrlinfo_a0.do", "endless");
        const Pipe pipe;
        const pid_t child = Tool(m_Folder.Path()).Start("-ctrlinfo -a0", pipe.ends[1], STDERR_FILENO);
        std::array<char, 4096> part{};
        for (std::size_t total = 0; total < 3'000'000;) {
            const ssize_t count = ::read(pipe.ends[0], part.data(), part.size());
            ASSERT_GT(count, 0);
            total += static_cast<std::size_t>(count);
        }
        int status = 0;
        EXPECT_EQ(::waitpid(child, &status, WNOHANG), 0);
        ::kill(child, SIGKILL);
        EXPECT_EQ(::waitpid(child, &status, 0), child);
    }
}

TEST_F(MisbehaviourTest, RepeatPrintsTheTextSoManyTimes) {
    EXPECT_EQ(Run("repeat 3").out, "text\ntext\ntext\n");
    EXPECT_EQ(Run("repeat 0").out, "");
    EXPECT_EQ(Run("repeat 64K").out.size(), 5U * 65536);
}

TEST_F(MisbehaviourTest, BytesPrintsExactlySoManyBytes) {
    EXPECT_EQ(Run("bytes 12").out, "text\ntext\nte");
    EXPECT_EQ(Run("bytes 2").out, "te");
    EXPECT_EQ(Run("bytes 3M").out.size(), 3U << 20U);
    EXPECT_EQ(Run("bytes 3M", "").out.size(), 3U << 20U);
    EXPECT_EQ(Run("bytes 0").out, "");
}

TEST_F(MisbehaviourTest, TruncatePrintsTheFirstBytesOnly) {
    EXPECT_EQ(Run("truncate 2").out, "te");
    EXPECT_EQ(Run("truncate 0").out, "");
    EXPECT_EQ(Run("truncate 99").out, "text\n");
    EXPECT_EQ(Run("truncate 99").ExitStatus(), 0);
    EXPECT_EQ(Run("repeat 3\ntruncate 7").out, "text\nte");
    EXPECT_EQ(Run("truncate 70000", std::string(200'000, 'x')).out, std::string(70'000, 'x'));
}

TEST_F(MisbehaviourTest, StderrMovesTheTextToStandardError) {
    const Ended ended = Run("stderr");
    EXPECT_EQ(ended.out, "");
    EXPECT_EQ(ended.err, "text\n");
}

TEST_F(MisbehaviourTest, CloseStdoutPrintsNothingAndIsNoFailure) {
    const Ended ended = Run("close-stdout");
    EXPECT_EQ(ended.out, "");
    EXPECT_EQ(ended.err, "");
    EXPECT_EQ(ended.ExitStatus(), 0);
}

TEST_F(MisbehaviourTest, AHolderKeepsTheOutputOpenBehindTheEnd) {
    m_Folder.Write("ctrlinfo_a0.txt", "text\n");
    m_Folder.Write("ctrlinfo_a0.do", "spawn-holder 0.6");
    Pipe pipe;
    const pid_t child = Tool(m_Folder.Path()).Start("-ctrlinfo -a0", pipe.ends[1], pipe.ends[1]);
    pipe.CloseWriter();
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    std::array<char, 16> text{};
    EXPECT_EQ(::read(pipe.ends[0], text.data(), text.size()), 5);
    pollfd end{pipe.ends[0], POLLIN, 0};
    EXPECT_EQ(::poll(&end, 1, 0), 0) << "the output was already closed";
    EXPECT_EQ(::read(pipe.ends[0], text.data(), text.size()), 0);
}

TEST_F(MisbehaviourTest, AWriterGoesOnPrintingBehindTheEnd) {
    m_Folder.Write("ctrlinfo_a0.txt", "text\n");
    m_Folder.Write("ctrlinfo_a0.do", "spawn-writer 0.1");
    Pipe pipe;
    const pid_t child = Tool(m_Folder.Path()).Start("-ctrlinfo -a0", pipe.ends[1], pipe.ends[1]);
    pipe.CloseWriter();
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    std::string text;
    std::array<char, 4096> part{};
    for (ssize_t count = 0; (count = ::read(pipe.ends[0], part.data(), part.size())) > 0;) {
        text.append(part.data(), static_cast<std::size_t>(count));
    }
    EXPECT_TRUE(text.starts_with("text\n..."));
    EXPECT_TRUE(text.ends_with("...\n"));
}

TEST_F(MisbehaviourTest, ACommandsOwnInstructionsReplaceThoseForAll) {
    m_Folder.Write("any.do", "exit 8");
    EXPECT_EQ(Run("exit 5").ExitStatus(), 5);
    m_Folder.Write("ldpdinfo_a0.txt", "");
    EXPECT_EQ(Tool(m_Folder.Path()).Run("-ldpdinfo -a0").ExitStatus(), 8);
}

TEST_F(MisbehaviourTest, InstructionsWithoutATextMakeAnEmptyReport) {
    m_Folder.Write("ldpdinfo_a4.do", "exit 6");
    const Ended ended = Tool(m_Folder.Path()).Run("-ldpdinfo -a4");
    EXPECT_EQ(ended.out, "");
    EXPECT_EQ(ended.ExitStatus(), 6);
}

TEST_F(MisbehaviourTest, InstructionsForAllDoNotInventControllers) {
    m_Folder.Write("any.do", "sleep 0");
    const Ended ended = Tool(m_Folder.Path()).Run("-ldpdinfo -a4");
    EXPECT_EQ(ended.out, "Error - Controller 4 is not present.\n");
    EXPECT_EQ(ended.ExitStatus(), 2);
}

TEST_F(MisbehaviourTest, ABadInstructionIsNamedWithFileAndLine) {
    const Ended ended = Run("# first\nexti 1\n");
    EXPECT_EQ(ended.ExitStatus(), 65);
    EXPECT_EQ(ended.out, "");
    EXPECT_EQ(ended.err, "vdkcli simulator: " + (m_Folder.Path() / "ctrlinfo_a0.do").string() +
                             ":2: unknown instruction 'exti'\n");
}

TEST_F(MisbehaviourTest, AReportThatCannotBeWrittenIsAFailure) {
    m_Folder.Write("ctrlinfo_a0.txt", "text\n");
    const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
    ASSERT_GE(full, 0);
    const pid_t child = Tool(m_Folder.Path()).Start("-ctrlinfo -a0", full, full);
    ::close(full);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 74);
}

}  // namespace

}  // namespace vdksim::test
