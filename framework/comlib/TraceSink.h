#pragma once

#include "qel/portable/CTraceOutput.h"

#include <cerrno>

/// The way of a trace line from the operation that writes it to the output and the listener. No locks, so
/// that a child process may trace between `fork` and `exec` whatever the other threads were doing.
namespace qel {

/// Whether anybody wants lines of that level (0: messages).
[[nodiscard]] bool IsTraced(int level) noexcept;

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
