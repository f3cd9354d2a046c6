#include "CallListener.h"

#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <iterator>
#include <new>
#include <string_view>
#include <utility>

namespace calls {
namespace {

constexpr std::string_view kFailureMessage = "MSGID_MNGSRV_RAID_0001_F ";
constexpr std::string_view kCommandStart = "execute vdkcli command.(";
constexpr char kCommandEnd = ')';
constexpr std::string_view kCommandFailure = "Failed to execute vdkcli command.(";
constexpr std::string_view kAttempt =
    "ExecForeignModule";  // a failed attempt, after which there may be another
// Behind each of them the result file is removed.
constexpr std::string_view kReportFailures[] = {kCommandFailure, "Failed to parse RAID Information ",
                                                "Failed to open file output by vdkcli("};

constexpr int kMessageLevel = 0;
constexpr int kResultLevel = 1;
constexpr int kFailureLevel = 2;

// A run that fails and is mended by the next one leaves no trace, but each run is a fork of this process.
std::atomic<std::size_t> g_Forks = 0;

std::size_t CountForks() noexcept {
    static const int isCounting = ::pthread_atfork(
        nullptr, [] { ++g_Forks; }, nullptr);
    static_cast<void>(isCounting);  // Without memory for it no failed run is counted.
    return g_Forks;
}

bool IsBeforeRemoval(std::string_view failure) {
    return std::any_of(std::begin(kReportFailures), std::end(kReportFailures),
                       [failure](std::string_view start) { return failure.starts_with(start); });
}

}  // namespace

CallListener::CallListener(ProgressReceiver* progress) : m_Progress(progress), m_ForksBefore(CountForks()) {
    CTraceOutput::SetListener(this, kResultLevel | kFailureLevel);
}

void CallListener::OnTrace(const TraceLine& line) noexcept {
    try {
        Hear(line);
    } catch (...) {
        return;  // Without memory there are neither reasons nor progress, and the call goes on.
    }
}

// A command's time is that of its tries with the pauses between them; while they last, nothing else is traced.
void CallListener::Clock(const TraceLine& line) {
    const std::lock_guard lock(m_Mutex);
    if (m_RunsSince && !line.text.starts_with(kAttempt)) {
        const auto time = EndOfRun() - *m_RunsSince;
        m_Runs.duration += std::max(time, time.zero());
        m_RunsSince.reset();
    }
    if (line.level == kResultLevel && line.text.starts_with(kCommandStart)) {
        m_RunsSince = std::chrono::steady_clock::now();
        ++m_Runs.commands;
    } else if (line.level == kFailureLevel && line.text.starts_with(kCommandFailure)) {
        ++m_Runs.failures;
    }
}

void CallListener::Hear(const TraceLine& line) {
    Clock(line);
    if (line.level == kMessageLevel && line.text.starts_with(kFailureMessage)) {
        const std::lock_guard lock(m_Mutex);
        m_Reasons = line.text.substr(kFailureMessage.size());
    } else if (line.level == kResultLevel && line.text.starts_with(kCommandStart) &&
               line.text.ends_with(kCommandEnd)) {
        std::string_view command = line.text.substr(kCommandStart.size());
        command.remove_suffix(1);
        StartCommand(command);
    } else if (line.level == kFailureLevel && IsBeforeRemoval(line.text)) {
        ToolRun run = SeeRun();
        const std::lock_guard lock(m_Mutex);
        m_LastRun = std::move(run);
    }
}

void CallListener::StartCommand(std::string_view command) {
    {
        const std::lock_guard lock(m_Mutex);
        m_LastCommand = command;
        m_LastRun.reset();
    }
    ForgetRun();
    if (m_Progress != nullptr) {
        m_Progress->Show(command);
    }
}

std::optional<std::string> CallListener::Reasons() const {
    const std::lock_guard lock(m_Mutex);
    return m_Reasons;
}

std::optional<std::string> CallListener::LastCommand() const {
    const std::lock_guard lock(m_Mutex);
    return m_LastCommand;
}

std::optional<ToolRun> CallListener::LastRun() const {
    const std::lock_guard lock(m_Mutex);
    return m_LastRun;
}

void CallListener::Forget() {
    const std::lock_guard lock(m_Mutex);
    m_Reasons.reset();
    m_LastCommand.reset();
    m_LastRun.reset();
}

inventory::ToolRuns CallListener::Runs() const {
    const std::lock_guard lock(m_Mutex);
    inventory::ToolRuns runs = m_Runs;
    const std::size_t good = runs.commands - runs.failures;
    runs.failedRuns = std::max(g_Forks - m_ForksBefore, good) - good;
    return runs;
}

}  // namespace calls
