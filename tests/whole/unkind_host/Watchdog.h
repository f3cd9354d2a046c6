#pragma once

#include <chrono>

namespace unkindhost {

/// Ends this process when nothing has moved for that long, with the stacks of the thread that made the
/// watchdog and of its child processes on standard error, and exit status 124. A child that has become
/// another program is only ended. Takes SIGALRM; one at a time. Other threads must block that signal.
class Watchdog final {
  public:
    explicit Watchdog(std::chrono::seconds patience);
    ~Watchdog();
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

    void Moved() const;

  private:
    std::chrono::seconds m_Patience;
};

}  // namespace unkindhost
