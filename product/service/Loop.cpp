#include "Loop.h"

#include "Manager.h"
#include "basics/Failure.h"

#include <poll.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <exception>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace service {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr std::chrono::seconds kTimeToEnd{4};
constexpr milliseconds kLook{50};

basics::Descriptor TakeSignals(sigset_t& before) {
    sigset_t taken;
    ::sigemptyset(&taken);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGUSR1, SIGCHLD}) {
        ::sigaddset(&taken, signal);
    }
    ::signal(SIGPIPE, SIG_IGN);
    ::sigprocmask(SIG_BLOCK, &taken, &before);
    basics::Descriptor signals(::signalfd(-1, &taken, SFD_CLOEXEC | SFD_NONBLOCK));
    if (!signals.IsOpen()) {
        basics::FailSurroundings("signals cannot be taken: " + basics::ErrorText(errno));
    }
    return signals;
}

}  // namespace

Loop::Loop(Settings settings, Service& service)
    : m_Settings(std::move(settings)), m_Service(service), m_Signals(TakeSignals(m_MaskBefore)) {
    if (const auto interval = AliveInterval()) {
        m_AliveInterval = *interval / 2;
        m_NextAlive = steady_clock::now();
    }
}

Loop::~Loop() {
    ::sigprocmask(SIG_SETMASK, &m_MaskBefore, nullptr);
}

Moment Loop::Now() {
    return {std::chrono::system_clock::now(), steady_clock::now()};
}

void Loop::Run() {
    m_Service.Start(Now());
    TellReady(m_Service.State());
    while (!m_IsEnding) {
        AskWhatIsDue();
        m_Service.Work(Now());
        StayAlive();
        Wait();
    }
    End();
}

void Loop::Wait() {
    std::optional<steady_clock::time_point> until = m_Service.NextDue(m_Worker.has_value());
    if (m_NextAlive) {
        until = std::min(until.value_or(*m_NextAlive), *m_NextAlive);
    }
    int timeout = -1;
    if (until) {
        constexpr milliseconds kLongest{1'000'000'000};
        const auto left = std::chrono::ceil<milliseconds>(*until - steady_clock::now());
        timeout = static_cast<int>(std::clamp(left, milliseconds(0), kLongest).count());
    }
    struct pollfd signals = {m_Signals.Number(), POLLIN, 0};
    (void)::poll(&signals, 1, timeout);  // Whatever woke it is looked for below.
    struct signalfd_siginfo news {};
    while (::read(m_Signals.Number(), &news, sizeof news) == static_cast<ssize_t>(sizeof news)) {
        Heed(static_cast<int>(news.ssi_signo));
    }
}

void Loop::Heed(int signal) {
    switch (signal) {
        case SIGCHLD:
            ReapChildren();
            break;
        case SIGHUP:
            ReadConfigurationAgain();
            break;
        case SIGUSR1:
            m_Service.Hurry(Now());
            break;
        default:
            m_IsEnding = true;
            break;
    }
}

void Loop::ReapChildren() {
    int status = 0;
    for (pid_t child = 0; (child = ::waitpid(-1, &status, WNOHANG)) > 0;) {
        if (m_Worker && child == m_Worker->Process()) {
            TakeAnswer(status);
        } else {
            (void)m_Service.Ended(child, status, Now());  // A child that a program of ours left is no news.
        }
    }
}

void Loop::TakeAnswer(int status) {
    const Answer answer = m_Worker->Take(status);
    const std::optional<calls::DrivePlace> drive = m_Worker->Drive();
    m_Worker.reset();
    if (m_IsEnding) {
        return;  // It was ended by ourselves.
    }
    m_Service.Answered(drive, answer, Now());
    TellState(m_Service.State());
#if defined(__GLIBC__)
    ::malloc_trim(0);  // A document takes many times what is kept of it, and it is a long time to the next.
#endif
}

void Loop::AskWhatIsDue() {
    if (m_Worker) {
        return;
    }
    const std::optional<Schedule::Inquiry> inquiry = m_Service.TakeDue(Now());
    if (!inquiry) {
        return;
    }
    const Configuration& configuration = m_Service.TheConfiguration();
    try {
        m_Worker.emplace(WorkerSettings{configuration.timeLimit, configuration.appKey, m_Settings.scenario},
                         inquiry->drive);
    } catch (const basics::Failure& error) {
        m_Service.Answered(inquiry->drive, {"", error.what()}, Now());
    }
}

void Loop::ReadConfigurationAgain() {
    TellReloading();
    try {
        m_Service.Configure(m_Settings.readConfiguration(), Now());
    } catch (const std::exception& error) {
        m_Service.KeepConfiguration(error.what(), Now());
    }
    TellReady(m_Service.State());
}

void Loop::StayAlive() {
    const auto now = steady_clock::now();
    if (m_NextAlive && now >= *m_NextAlive) {
        TellAlive();
        m_NextAlive = now + *m_AliveInterval;
    }
}

// The tool and the channels' programs are asked to end, and ended; what is left after that only the kernel
// can hold up, and it is not waited for.
void Loop::End() {
    TellStopping();
    const auto end = steady_clock::now() + kTimeToEnd;
    if (m_Worker) {
        m_Worker->Interrupt();
    }
    m_Service.Stop(Now());
    while ((m_Worker || m_Service.HasChildren()) && steady_clock::now() < end) {
        struct pollfd signals = {m_Signals.Number(), POLLIN, 0};
        (void)::poll(&signals, 1, static_cast<int>(kLook.count()));
        struct signalfd_siginfo news {};
        while (::read(m_Signals.Number(), &news, sizeof news) == static_cast<ssize_t>(sizeof news)) {
        }
        ReapChildren();
        m_Service.Work(Now());
    }
    if (m_Worker) {
        ::kill(m_Worker->Process(), SIGKILL);
    }
}

}  // namespace service
