#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace calls {

/// How the last run of a command of the tool ended, as far as that could be seen.
struct ToolRun {
    std::optional<int> status = {};  ///< as waitpid gives it; nothing where no run was waited for
    bool hasReport = false;          ///< whether there was a file for what it prints
    std::string lastLine = {};       ///< that it printed, printable, at most 200 columns wide
    std::string obstacle = {};       ///< why result files cannot be written, in the system's words; else empty
};

/// What is known of children that were waited for goes, so that an earlier run is not taken for the next one.
void ForgetRun() noexcept;

/// When the last of them had been waited for; the clock's epoch where none has been.
[[nodiscard]] std::chrono::steady_clock::time_point EndOfRun() noexcept;

/// The run that the calling thread has just waited for. To be called while the result file is still there.
[[nodiscard]] ToolRun SeeRun();

/// `exit status 3: "Error - The controller is busy."`, `ended by SIGSEGV, nothing printed`; empty where
/// nothing is known.
[[nodiscard]] std::string DescribeRun(const ToolRun& run);

}  // namespace calls
