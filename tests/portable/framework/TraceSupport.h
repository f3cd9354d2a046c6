#pragma once

#include "Support.h"

#include "qel/portable/CTraceOutput.h"

#include <mutex>
#include <string>
#include <vector>

namespace qel::test {

// The five fields of a line as they stand in the output.
struct WrittenLine {
    std::string time;
    std::string thread;
    std::string category;
    std::string level;
    std::string text;
};

// Takes text apart into lines of five fields; whatever is not one fails the running test.
[[nodiscard]] std::vector<WrittenLine> ParseTrace(const std::string& contents);

// Leads the trace into a file of its own; in the end all is as at the program's start: standard error, no
// levels.
class TraceFile final {
  public:
    explicit TraceFile(unsigned levels = CTraceOutput::ALL_LEVELS);
    ~TraceFile();
    TraceFile(const TraceFile&) = delete;
    TraceFile& operator=(const TraceFile&) = delete;

    [[nodiscard]] std::string Path() const { return m_Folder / "trace"; }
    [[nodiscard]] std::string Contents() const { return ReadFile(Path()); }
    [[nodiscard]] std::vector<WrittenLine> Lines() const { return ParseTrace(Contents()); }

  private:
    TempFolder m_Folder;
};

// Remembers what it hears while it is registered.
class RememberingListener final : public ITraceListener {
  public:
    struct Heard {
        std::string category;
        int level;
        std::string text;
        bool operator==(const Heard&) const = default;
    };

    RememberingListener() { CTraceOutput::SetListener(this); }
    ~RememberingListener() override { CTraceOutput::SetListener(nullptr); }

    void OnTrace(const TraceLine& line) noexcept override;
    [[nodiscard]] std::vector<Heard> Lines() const;

  private:
    mutable std::mutex m_Mutex;
    std::vector<Heard> m_Lines;
};

}  // namespace qel::test
