#pragma once

#include "qel/portable/CTraceOutput.h"

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace testsupport {

/// Keeps every trace line of the module while it stands, as "4 CMSRAID_InfoGetter::Parse [START]": level,
/// blank, text. Messages for the administrator have level 0 and are always kept.
class TraceRecorder final : public ITraceListener {
  public:
    explicit TraceRecorder(unsigned levels = CTraceOutput::ALL_LEVELS) : m_Levels(levels) {
        CTraceOutput::SetListener(this);
    }
    ~TraceRecorder() override { CTraceOutput::SetListener(nullptr); }

    void OnTrace(const TraceLine& line) noexcept override;

    [[nodiscard]] std::vector<std::string> Lines() const;

    /// Lines of one level, without it.
    [[nodiscard]] std::vector<std::string> Texts(int level) const;

    void Clear();

  private:
    void Keep(const TraceLine& line);

    unsigned m_Levels;
    // For the lines of a test that leaves no memory.
    std::unique_ptr<char[]> m_Reserve = std::make_unique<char[]>(std::size_t{1} << 20U);
    mutable std::mutex m_Mutex;
    std::vector<std::string> m_Lines;
};

}  // namespace testsupport
