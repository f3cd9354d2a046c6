#pragma once

#include <sys/types.h>

#include <functional>
#include <string>

#include "basics/Descriptor.h"

namespace telling {

/// Work that may hang, in a process of its own with a session of its own. What it leaves behind when it ends
/// by itself is not touched; an errand that has not ended is killed with all that it started.
class Errand final {
  public:
    /// What the parent is to know; replaces what was said before.
    using Say = std::function<void(const std::string&)>;
    /// True when it is done. It may change whatever belongs to its process, and has no descriptors but
    /// /dev/null as its standard streams.
    using Work = std::function<bool(const Say&)>;

    /// Starts it. Throws basics::Failure(Surroundings).
    explicit Errand(const Work& work);
    Errand(const Errand&) = delete;
    Errand& operator=(const Errand&) = delete;
    ~Errand();

    [[nodiscard]] pid_t Process() const noexcept { return m_Process; }

    /// What it has said last.
    [[nodiscard]] std::string Said() const;

    void AskToEnd() const noexcept;

    /// Ends it and all that it started, also what has left its session.
    void Kill() const noexcept;

    /// It has been waited for.
    void HasEnded() noexcept { m_HasEnded = true; }

  private:
    pid_t m_Process = -1;
    bool m_HasEnded = false;
    basics::Descriptor m_Words;
};

/// Signals as a program expects them: none blocked, none ignored.
void TakeSignalsAsUsual() noexcept;

}  // namespace telling
