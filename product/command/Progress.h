#pragma once

#include "calls/ProgressReceiver.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace command {

/// One line on a terminal that says which report is being fetched, rewritten every second and erased at the
/// end:
///
///     controller 0: physical drives (vdkcli -pdinfo -nosmart -a0) 3 s
///     7 of 24 done, controller 0: drive 252:7 (vdkcli -pdinfo -pd[252:7] -a0) 1 s, 31 s in all
///
/// Has a thread of its own from construction to destruction. `Show` may be called from any thread and does
/// not wait for the terminal.
class Progress final : public calls::ProgressReceiver {
  public:
    /// `terminal` is a descriptor of a terminal; not owned.
    explicit Progress(int terminal);
    ~Progress() override;

    void Show(std::string_view command) override;
    void ShowDone(std::size_t done, std::size_t total) override;

  private:
    void Run(const std::stop_token& stop);
    void Draw(const std::string& line);

    int m_Terminal;
    std::size_t m_Drawn = 0;  ///< columns that the line on the terminal takes

    std::mutex m_Mutex;
    std::condition_variable_any m_Changed;
    std::string m_Command;
    std::size_t m_Done = 0;
    std::size_t m_Total = 0;  ///< 0: not known
    std::chrono::steady_clock::time_point m_Since;
    const std::chrono::steady_clock::time_point m_Start = std::chrono::steady_clock::now();
    bool m_IsNew = false;

    std::jthread m_Thread;  ///< last, so that it ends before what it uses
};

/// What the line tells.
struct ProgressState {
    std::string command = {};
    std::chrono::seconds elapsed{0};  ///< in this command
    std::size_t done = 0;
    std::size_t total = 0;          ///< 0: not known
    std::chrono::seconds inAll{0};  ///< shown where it is another time
};

/// The line for a terminal of that width, never so long that it would wrap.
[[nodiscard]] std::string ProgressLine(const ProgressState& state, std::size_t columns);

}  // namespace command
