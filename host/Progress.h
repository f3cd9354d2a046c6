#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace host {

/// One line on a terminal that says which report is being fetched, rewritten every second and erased at the
/// end:
///
///     controller 0: physical drives (vdkcli -pdinfo -nosmart -a0) 3 s
///
/// Has a thread of its own from construction to destruction. `Show` may be called from any thread and does
/// not wait for the terminal.
class Progress final {
  public:
    /// `terminal` is a descriptor of a terminal; not owned.
    explicit Progress(int terminal);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// The tool runs this command from now on. Throws std::bad_alloc.
    void Show(std::string_view command);

  private:
    void Run(const std::stop_token& stop);
    void Draw(const std::string& line);

    int m_Terminal;
    std::size_t m_Drawn = 0;  ///< columns that the line on the terminal takes

    std::mutex m_Mutex;
    std::condition_variable_any m_Changed;
    std::string m_Command;
    std::chrono::steady_clock::time_point m_Since;
    bool m_IsNew = false;

    std::jthread m_Thread;  ///< last, so that it ends before what it uses
};

/// What a command of the tool fetches: "controller 0: physical drives (vdkcli -pdinfo -a0)". Printable ASCII
/// whatever the command holds.
[[nodiscard]] std::string DescribeCommand(std::string_view command);

/// The line for a terminal of that width, never so long that it would wrap.
[[nodiscard]] std::string ProgressLine(std::string_view command, std::chrono::seconds elapsed,
                                       std::size_t columns);

}  // namespace host
