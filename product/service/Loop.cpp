#include "Loop.h"

#include "Manager.h"
#include "basics/Failure.h"
#include "board/Wire.h"

#include <poll.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <exception>
#include <utility>

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

/// The process that made the call has had the module in it: what it left need not be what it packed.
board::Outcome OutcomeOf(const board::Call& call, const Answer& answer) {
    board::Outcome outcome{.failure = answer.failure};
    if (answer.failure.empty()) {
        try {
            outcome = board::UnpackOutcome(answer.document);
        } catch (const board::WireError& error) {
            outcome.failure = std::string("the answer was spoiled: ") + error.what();
        }
    }
    outcome.id = call.id;
    return outcome;
}

}  // namespace

Loop::Loop(Settings settings, Service& service)
    : m_Settings(std::move(settings)),
      m_Service(service),
      m_Signals(TakeSignals(m_MaskBefore)),
      m_Keeper({[&service] { return service.SmartReports(); }, [&service] { return service.TheReport(); },
                m_Settings.log}) {
    m_Keeper.Configure(DoorsNow(), service.TheConfiguration().interval, steady_clock::now());
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
        m_Keeper.Work(steady_clock::now());
        TellNews();
        StayAlive();
        Wait();
    }
    End();
}

void Loop::Wait() {
    std::optional<steady_clock::time_point> until = m_Service.NextDue(m_Worker.has_value());
    for (const auto& due : {m_NextAlive, m_Keeper.NextDue()}) {
        until = due ? std::min(until.value_or(*due), *due) : until;
    }
    int timeout = -1;
    if (until) {
        constexpr milliseconds kLongest{1'000'000'000};
        const auto left = std::chrono::ceil<milliseconds>(*until - steady_clock::now());
        timeout = static_cast<int>(std::clamp(left, milliseconds(0), kLongest).count());
    }
    std::array<pollfd, 2> polled = {{{m_Signals.Number(), POLLIN, 0}, {m_Keeper.Number(), POLLIN, 0}}};
    (void)::poll(polled.data(), polled.size(), timeout);  // Whatever woke it is looked for below.
    TakeCalls();
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
        } else if (!m_Keeper.Ended(child, status, steady_clock::now())) {
            (void)m_Service.Ended(child, status, Now());  // A child that a program of ours left is no news.
        }
    }
}

void Loop::TakeAnswer(int status) {
    ForgetOldCalls();
    const Answer answer = m_Worker->Take(status);
    const Question question = m_Worker->Asked();
    m_Worker.reset();
    if (m_IsEnding) {
        return;  // It was ended by ourselves.
    }
    TakeAnswerOf(question, answer);
    TellState(m_Service.State());
#if defined(__GLIBC__)
    ::malloc_trim(0);  // A document takes many times what is kept of it, and it is a long time to the next.
#endif
}

void Loop::TakeAnswerOf(const Question& question, const Answer& answer) {
    if (question.call) {
        if (std::exchange(m_IsForgotten, false)) {
            return;
        }
        m_Keeper.TellOutcome(OutcomeOf(*question.call, answer));
        return;
    }
    m_Service.Answered(question.drive, answer, Now());
    if (question.drive && answer.failure.empty()) {
        m_Keeper.TellDrive(
            {question.drive->controller, question.drive->enclosure, question.drive->slot, answer.document});
    } else if (!question.drive) {
        TellNews();
        for (const std::uint64_t id : std::exchange(m_Refreshers, {})) {
            m_Keeper.TellOutcome({.id = id, .failure = answer.failure});
        }
    }
}

void Loop::TellNews() {
    if (m_Service.StateNumber() != m_ToldState) {
        m_ToldState = m_Service.StateNumber();
        m_Keeper.TellReport();
    }
}

void Loop::TakeCalls() {
    constexpr std::size_t kMostCalls = 32;
    ForgetOldCalls();
    for (board::Call& call : m_Keeper.TakeCalls()) {
        const bool isRefresh = call.what == board::Call::What::Refresh;
        if (isRefresh && m_Refreshers.size() < kMostCalls) {
            m_Refreshers.push_back(call.id);
            m_Service.Hurry(Now());
        } else if (isRefresh || m_Calls.size() >= kMostCalls) {
            m_Keeper.TellOutcome({.id = call.id, .failure = "too many calls are waiting already"});
        } else {
            m_Calls.push_back(std::move(call));
        }
    }
}

// New doors count anew: an outcome would be taken for that of another client's call.
void Loop::ForgetOldCalls() {
    if (m_Round != m_Keeper.Round()) {
        m_Round = m_Keeper.Round();
        m_Calls.clear();
        m_Refreshers.clear();
        m_IsForgotten = m_Worker && m_Worker->Asked().call.has_value();
    }
}

// What is due comes first, so that no client keeps the watch from its work; and no client waits for more than
// one inquiry.
void Loop::AskWhatIsDue() {
    if (m_Worker) {
        return;
    }
    const bool isClientsTurn = !m_Calls.empty() && !m_WasClient;
    const std::optional<Schedule::Inquiry> inquiry = isClientsTurn ? std::nullopt : m_Service.TakeDue(Now());
    m_WasClient = !inquiry && !m_Calls.empty();
    if (inquiry) {
        Ask({.drive = inquiry->drive});
    } else if (m_WasClient) {
        Question question{.call = std::move(m_Calls.front())};
        m_Calls.pop_front();
        Ask(std::move(question));
    }
}

void Loop::Ask(Question question) {
    const Configuration& configuration = m_Service.TheConfiguration();
    try {
        m_Worker.emplace(WorkerSettings{configuration.timeLimit, configuration.appKey, m_Settings.scenario,
                                        configuration.history, configuration.host},
                         question);
    } catch (const basics::Failure& error) {
        TakeAnswerOf(question, {"", error.what()});
    }
}

// What is made up must not be taken for this server.
DoorsConfiguration Loop::DoorsNow() const {
    DoorsConfiguration doors = m_Service.TheConfiguration().doors;
    if (!doors.listen && !m_Settings.scenario.empty()) {
        doors.listen.emplace();
    }
    return doors;
}

void Loop::ReadConfigurationAgain() {
    TellReloading();
    try {
        Configuration configuration = m_Settings.readConfiguration();
        m_Service.Configure(std::move(configuration), Now());
        m_Keeper.Configure(DoorsNow(), m_Service.TheConfiguration().interval, steady_clock::now());
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
    m_Keeper.End();
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
