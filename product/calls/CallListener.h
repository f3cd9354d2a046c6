#pragma once

#include "ToolRun.h"
#include "calls/ProgressReceiver.h"
#include "inventory/Snapshot.h"

#include "qel/portable/CTraceOutput.h"

#include <chrono>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace calls {

/// Hears from the trace what a method call does not return: the reason text of a failure, which command of
/// the tool is running, how such runs went, and when there is a report to look into that was of no use. Listens from construction to destruction; one at a time in a
/// process.
class CallListener final : public ITraceListener {
  public:
    /// `progress` may be null; not owned, must outlive the listener.
    explicit CallListener(ProgressReceiver* progress);
    ~CallListener() override { CTraceOutput::SetListener(nullptr); }

    void OnTrace(const TraceLine& line) noexcept override;

    /// Two-digit reason codes of the last call, newest first; nothing when the module gave none.
    [[nodiscard]] std::optional<std::string> Reasons() const;

    /// To be called before a call that is not the first.
    void Forget();

    /// The command that the tool ran last in the last call, for instance
    /// "vdkcli -ldpdinfo -a0"; nothing when it ran none.
    [[nodiscard]] std::optional<std::string> LastCommand() const;

    /// How that command's last run ended, where the call failed because of it or of what it printed.
    [[nodiscard]] std::optional<ToolRun> LastRun() const;

    /// Of all calls so far.
    [[nodiscard]] inventory::ToolRuns Runs() const;

  private:
    void Hear(const TraceLine& line);
    void Clock(const TraceLine& line);
    void StartCommand(std::string_view command);

    ProgressReceiver* m_Progress;
    mutable std::mutex m_Mutex;
    std::optional<std::string> m_Reasons;
    std::optional<std::string> m_LastCommand;
    std::optional<ToolRun> m_LastRun;
    inventory::ToolRuns m_Runs;  ///< without the failed runs, which Runs() works out
    const std::size_t m_ForksBefore;
    std::optional<std::chrono::steady_clock::time_point> m_RunsSince;  ///< while the tool runs
};

}  // namespace calls
