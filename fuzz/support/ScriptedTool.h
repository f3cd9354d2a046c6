#pragma once

#include "Input.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace fuzzing {

/// Stands where the tool's processes would be: the module's own tool runner calls `fork` and `waitpid` of
/// this program's, which write the next section of the script into the result file and end as it says. There
/// is no process and no pause. One for the process, one thread.
///
/// A section may begin with directives:
///
///     x N   exits with status N                i N   the wait is interrupted N times first
///     s N   dies by signal N                   = N   prints what section N prints
///     t     stops, c goes on                   n     leaves no result file
///     f     cannot be forked                   w     cannot be waited for
///
/// When the script has no section left, the tool fails.
class ScriptedTool final {
  public:
    ScriptedTool() = delete;

    /// Starts a case; the script's first section is the call's own. The views must live as long as the case.
    static void Begin(const Sections& script);

    /// From the given question on (0 is the next) the tool's file is not there.
    static void UninstallFrom(std::size_t question);

    /// Whether the tool was not even there at the first question.
    [[nodiscard]] static bool IsMissingAtFirst();

    /// Commands begun, each with a result file of its own and one attempt or more.
    [[nodiscard]] static std::size_t Commands();

    /// Whether the last command came to no good end.
    [[nodiscard]] static bool HasLastCommandFailed();

    /// Whether the last command left no result file.
    [[nodiscard]] static bool HasLastCommandNoFile();

    /// What the last run of the last command printed.
    [[nodiscard]] static std::string_view LastText();
};

}  // namespace fuzzing
