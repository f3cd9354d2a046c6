// Hosts with signal habits of their own.
#include "UnkindHostTest.h"

#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>

namespace unkindhost {
namespace {

using testing::AnyOf;
using testing::Eq;

using SignalTest = UnkindHostTest;

std::atomic<int> g_signals{0};

void Count(int /*signal*/) {
    ++g_signals;
}

void ReapEverything(int /*signal*/) {
    const int error = errno;
    while (::waitpid(-1, nullptr, WNOHANG) > 0) {
    }
    errno = error;
    ++g_signals;
}

void Handle(int signal, void (*handler)(int), int flags = 0) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    ::sigaction(signal, &action, nullptr);
}

void SetTimer(suseconds_t microseconds) {
    const itimerval timer{{0, microseconds}, {0, microseconds}};
    ::setitimer(ITIMER_REAL, &timer, nullptr);
}

TEST_F(SignalTest, WithIgnoredChildrenEveryRunFailsUntilTheyAreHeededAgain) {
    const std::string seen = InHost([](Host& host) {
        ::signal(SIGCHLD, SIG_IGN);
        std::string text = host.Ask();
        EXPECT_THAT(host.m_Trace.Texts(2), testing::Contains("ExecForeignModule waitpid Error."));
        ::signal(SIGCHLD, SIG_DFL);
        return text + "\n" + host.Ask();
    });
    EXPECT_EQ(seen, kNoToolRuns + "\n" + KindAnswer());
}

TEST_F(SignalTest, WithChildrenThatTheSystemReapsEveryRunFails) {
    const std::string seen = InHost([](Host& host) {
        Handle(SIGCHLD, Count, SA_NOCLDWAIT);
        std::string text = host.Ask();
        Handle(SIGCHLD, SIG_DFL);
        return text + "\n" + host.Ask();
    });
    EXPECT_EQ(seen, kNoToolRuns + "\n" + KindAnswer());
}

// Whoever is first has the child. A lost one is a failed run, which is tried again.
TEST_F(SignalTest, WithAHostThatReapsEveryChildACallStillEnds) {
    const std::string seen = InHost([](Host& host) {
        Handle(SIGCHLD, ReapEverything);
        const std::string text = host.Ask();
        return std::string(g_signals > 0 ? "" : "no signal came\n") + text;
    });
    EXPECT_THAT(seen, AnyOf(Eq(KindAnswer()), testing::HasSubstr("MSGID_MNGSRV_RAID_0001_F 01")));
}

TEST_F(SignalTest, SignalsThatNeverStopChangeNothing) {
    const std::string seen = InHost([](Host& host) {
        constexpr suseconds_t kInterval = 500;
        Handle(SIGALRM, Count);  // without SA_RESTART
        SetTimer(kInterval);
        std::string text = host.Ask();
        while (g_signals == 0) {
            text = host.Ask();
        }
        SetTimer(0);
        return text;
    });
    EXPECT_EQ(seen, KindAnswer());
}

TEST_F(SignalTest, WithEverySignalBlockedACallWorks) {
    const std::string seen = InHost([](Host& host) {
        sigset_t all;
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, nullptr);
        return host.Ask();
    });
    EXPECT_EQ(seen, KindAnswer());
}

TEST_F(SignalTest, APipeThatNobodyReadsIsNoMatter) {
    const std::string seen = InHost([](Host& host) {
        ::signal(SIGPIPE, SIG_DFL);
        int ends[2];
        EXPECT_EQ(::pipe(ends), 0);
        ::close(ends[0]);
        ::dup2(ends[1], STDOUT_FILENO);
        ::dup2(ends[1], STDERR_FILENO);
        ::close(ends[1]);
        return host.Ask();
    });
    EXPECT_EQ(seen, KindAnswer());
}

}  // namespace
}  // namespace unkindhost
