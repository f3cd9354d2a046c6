#pragma once

#include <signal.h>

namespace basics {

/// Holds back the signals that would end the process, for as long as it lives: between making a temporary
/// file and its end, or while several files are replaced. A file that grows too large is a failed write
/// meanwhile.
class HeldSignals final {
  public:
    HeldSignals() noexcept;
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;
    ~HeldSignals();

  private:
    sigset_t m_Mask{};
    struct sigaction m_TooLarge {};
};

}  // namespace basics
