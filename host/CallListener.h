#pragma once

#include "host/Progress.h"

#include "qel/portable/CTraceOutput.h"

#include <mutex>
#include <optional>
#include <string>

namespace host {

/// Hears from the trace what a method call does not return: the reason text of a failure, and which command
/// of the tool is running. Listens from construction to destruction; one at a time in a process.
class CallListener final : public ITraceListener {
  public:
    /// `progress` may be null; not owned, must outlive the listener.
    explicit CallListener(Progress* progress) : m_Progress(progress) { CTraceOutput::SetListener(this); }
    ~CallListener() override { CTraceOutput::SetListener(nullptr); }

    void OnTrace(const TraceLine& line) noexcept override;

    /// Two-digit reason codes, newest first; nothing when the module gave none.
    [[nodiscard]] std::optional<std::string> Reasons() const;

  private:
    void Hear(const TraceLine& line);

    Progress* m_Progress;
    mutable std::mutex m_Mutex;
    std::optional<std::string> m_Reasons;
};

}  // namespace host
