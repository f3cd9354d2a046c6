#pragma once

#include "qel/portable/CTraceOutput.h"

#include <atomic>
#include <cerrno>

/// The way of a trace line from the operation that writes it to the output and the listener. No locks, so
/// that a child process may trace between `fork` and `exec` whatever the other threads were doing.
namespace qel {

/// The levels that the output or the listener wants, as a sum of bits. Kept in one place and looked at
/// without a call: mostly nobody wants any, and there are as many trace lines as there are report lines.
extern std::atomic<unsigned> g_wantedLevels;

/// Whether anybody wants lines of that level (0: messages).
[[nodiscard]] inline bool IsTraced(int level) noexcept {
    const unsigned wanted = g_wantedLevels.load(std::memory_order_relaxed);
    return level == 0 ? wanted != 0 : (wanted & static_cast<unsigned>(level)) != 0;
}

/// Hands a line to the listener and, where its level is on, to the output.
void EmitTrace(const TraceLine& line) noexcept;

/// Gives `errno` back as it was found.
class ErrnoKeeper final {
  public:
    ErrnoKeeper() noexcept : m_Errno(errno) {}
    ~ErrnoKeeper() { errno = m_Errno; }
    ErrnoKeeper(const ErrnoKeeper&) = delete;
    ErrnoKeeper& operator=(const ErrnoKeeper&) = delete;

  private:
    int m_Errno;
};

}  // namespace qel
