// How a run of the tool may end, at whichever command it strikes.
#include "HostedProvider.h"

#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <ostream>

namespace {

using testsupport::CommandNamed;
using testsupport::Failure;
using testsupport::Seen;
using testsupport::Success;
using testsupport::SuccessAtRun;
using testsupport::ToolCommand;
using testsupport::ToolCommands;

// With a wait status at every run that is more than an exit.
Seen FailureByStatus(const ToolCommand& command, const std::string& status) {
    Seen seen = Failure(command);
    seen.failures.insert(seen.failures.begin(), 3, "ExecForeignModule WEXITSTATUS Error " + status + ".");
    return seen;
}

std::string NameOf(const ::testing::TestParamInfo<ToolCommand>& command) {
    return command.param.name;
}

class EndTest : public testsupport::MisbehaviourTest {
  protected:
    // A signal that this process has been started to ignore would be ignored by the tool as well.
    EndTest() {
        for (int signal = 1; signal <= SIGSYS; ++signal) {
            if (signal != SIGKILL && signal != SIGSTOP) {
                std::signal(signal, SIG_DFL);
            }
        }
    }
};

class EndOfEachCommandTest : public EndTest, public ::testing::WithParamInterface<ToolCommand> {};

INSTANTIATE_TEST_SUITE_P(EveryCommand, EndOfEachCommandTest, ::testing::ValuesIn(ToolCommands()), NameOf);

TEST_P(EndOfEachCommandTest, FailingOnceOrTwiceCostsPausesOnly) {
    for (const std::size_t failures : {1U, 2U}) {
        m_Tool.StartOver();
        AnswerWell();
        Instruct(GetParam(), "fail-first " + std::to_string(failures));
        Expect(Call(GetParam()), SuccessAtRun(GetParam(), failures + 1));
    }
}

TEST_P(EndOfEachCommandTest, FailingThreeTimesFailsTheCall) {
    Instruct(GetParam(), "fail-first 3");
    Expect(Call(GetParam()), Failure(GetParam()));
}

TEST_P(EndOfEachCommandTest, DyingWithItsShellFailsTheCall) {
    Instruct(GetParam(), "signal KILL shell");
    Expect(Call(GetParam()), FailureByStatus(GetParam(), "00000009"));
}

TEST_P(EndOfEachCommandTest, StoppingFailsTheCallAndLeavesTheStoppedBehind) {
    Instruct(GetParam(), "stop");
    Seen expected = FailureByStatus(GetParam(), "0000137f");
    expected.shellsLeft = 3;
    Expect(Call(GetParam()), expected);
    EXPECT_GE(EndProcesses(), 3U);
}

// The shell has a word to say about the tool's death, which is too much for the file as well.
TEST_P(EndOfEachCommandTest, PrintingWithoutEndUntilTheFileIsTooBigEndsToolAndShell) {
    rlimit old{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &old), 0);
    const rlimit few{rlim_t{1} << 20U, old.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &few), 0);
    Instruct(GetParam(), "endless");
    Expect(Call(GetParam()), FailureByStatus(GetParam(), "00000019"));
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &old), 0);
}

class ExitTest : public EndTest, public ::testing::WithParamInterface<int> {};

INSTANTIATE_TEST_SUITE_P(Statuses, ExitTest, ::testing::Values(1, 2, 3, 126, 127, 128, 255),
                         ::testing::PrintToStringParamName());

TEST_P(ExitTest, EveryStatusButZeroIsAFailureWhateverWasPrinted) {
    const ToolCommand& command = CommandNamed("OneDrive");
    Instruct(command, "exit " + std::to_string(GetParam()));
    Expect(Call(command), Failure(command));
}

TEST_F(EndTest, StatusZeroIsASuccess) {
    Instruct(CommandNamed("Controller"), "exit 0");
    Expect(Call(), Success());
}

struct Signal {
    const char* name;
    int number;
};

void PrintTo(const Signal& signal, std::ostream* out) {
    *out << signal.name;
}

class SignalTest : public EndTest, public ::testing::WithParamInterface<Signal> {};

INSTANTIATE_TEST_SUITE_P(
    Signals, SignalTest,
    ::testing::Values(Signal{"HUP", SIGHUP}, Signal{"INT", SIGINT}, Signal{"QUIT", SIGQUIT},
                      Signal{"ILL", SIGILL}, Signal{"TRAP", SIGTRAP}, Signal{"ABRT", SIGABRT},
                      Signal{"BUS", SIGBUS}, Signal{"FPE", SIGFPE}, Signal{"KILL", SIGKILL},
                      Signal{"USR1", SIGUSR1}, Signal{"SEGV", SIGSEGV}, Signal{"USR2", SIGUSR2},
                      Signal{"PIPE", SIGPIPE}, Signal{"ALRM", SIGALRM}, Signal{"TERM", SIGTERM},
                      Signal{"XCPU", SIGXCPU}, Signal{"XFSZ", SIGXFSZ}, Signal{"SYS", SIGSYS}),
    [](const auto& signal) { return signal.param.name; });

TEST_P(SignalTest, TheShellMakesAnExitStatusOfIt) {
    const ToolCommand& command = CommandNamed("OneDrive");
    Instruct(command, std::string("signal ") + GetParam().name);
    Expect(Call(command), Failure(command));
}

TEST_P(SignalTest, IsTracedRawWhenTheShellDiesOfIt) {
    const ToolCommand& command = CommandNamed("OneDrive");
    Instruct(command, std::string("signal ") + GetParam().name + " shell");
    char status[9];
    std::snprintf(status, sizeof status, "%08x", GetParam().number);
    Expect(Call(command), FailureByStatus(command, status));
}

TEST_F(EndTest, PrintingWithoutEndUntilSomebodyKillsItIsAFailure) {
    Instruct(CommandNamed("Drives"), "endless");
    m_Tool.UseScript(R"sh(
        [ "$arguments" = '-pdinfo -a0' ] || { simulate "$@"; exit; }
        simulate "$@" &
        until [ "$(stat -c %s "$file")" -gt 1000000 ]; do :; done
        kill -KILL $(cat /proc/$!/task/$!/children)
        wait $!)sh");
    Expect(Call(), Failure(CommandNamed("Drives")));
}

TEST_F(EndTest, AToolThatIsStoppedAndContinuedIsOnlySlow) {
    m_Tool.UseScript(R"sh(
        { until read -r _ _ state _ < /proc/$$/stat && [ "$state" = T ]; do :; done; kill -CONT $$; } &
        kill -STOP $$
        wait
        simulate "$@")sh");
    Expect(Call(), Success());
}

TEST_F(EndTest, AShellThatIsContinuedAfterItsStopReportIsNotWaitedForAgain) {
    m_Tool.UseScript(R"sh(
        if [ "$arguments" = '-ctrlinfo -a0' ] && ! [ -e "$0.again" ]; then
            : > "$0.again"
            simulate "$@"
            kill -STOP $PPID
            exit
        fi
        simulate "$@")sh");
    Seen expected = SuccessAtRun(CommandNamed("Controller"), 2);
    expected.failures = {"ExecForeignModule WEXITSTATUS Error 0000137f."};
    expected.shellsLeft = 1;
    testsupport::OnPause([] { EXPECT_EQ(::system("kill -CONT $(cat /proc/$PPID/task/$PPID/children)"), 0); });
    Expect(Call(), expected);
}

std::function<void()> g_behindFork = [] {};

void BehindFork() {
    g_behindFork();
}

TEST_F(EndTest, AShellThatWasStoppedAndContinuedBeforeTheWaitIsAFailedRun) {
    const std::string mark = m_Root.Path() / "continued";
    m_Tool.UseScript(R"sh(
        [ "$arguments" = '-ctrlinfo -a0' ] || { simulate "$@"; exit; }
        simulate "$@"
        kill -STOP $PPID
        until read -r _ _ state _ < /proc/$PPID/stat && [ "$state" = T ]; do :; done
        kill -CONT $PPID
        : > )sh" + mark +
                     "\n kill -STOP $$\n");
    static const int registration = ::pthread_atfork(nullptr, BehindFork, nullptr);
    ASSERT_EQ(registration, 0);
    std::size_t forks = 0;
    g_behindFork = [&] {
        constexpr std::size_t kController = 3;
        if (++forks >= kController) {
            for (int patience = 10'000; patience > 0 && !std::filesystem::remove(mark); --patience) {
                ::usleep(1000);
            }
        }
    };
    Seen expected = FailureByStatus(CommandNamed("Controller"), "0000ffff");
    expected.shellsLeft = 3;
    Expect(Call(), expected);
    g_behindFork = [] {};
}

TEST_F(EndTest, AHolderOfTheResultFileIsNotWaitedFor) {
    Instruct(CommandNamed("Controller"), "spawn-holder 3600");
    Expect(Call(), Success());
    EXPECT_EQ(EndProcesses(), 1U);
}

TEST_F(EndTest, AWriterThatGoesOnPrintingIsNotWaitedFor) {
    Instruct(CommandNamed("Controller"), "spawn-writer 3600");
    Expect(Call(), Success());
    EXPECT_EQ(EndProcesses(), 1U);
}

TEST_F(EndTest, AGrandchildThatHasLetGoOfTheResultFileIsNotWaitedFor) {
    m_Tool.UseScript(R"(simulate "$@"; status=$?; sleep 3600 >/dev/null 2>&1 & exit $status)");
    Expect(Call(), Success());
    EXPECT_EQ(EndProcesses(), Success().runs.size());
}

}  // namespace
