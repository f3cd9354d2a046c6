#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace scenario {

/// The file that marks a folder whose capture, or whose redaction, has not come to its end.
inline constexpr const char* kIncompleteMark = "INCOMPLETE";

/// What the file says in the latter case; in the former it is empty.
inline constexpr const char* kUnderRedaction =
    "The redaction of this folder has not come to its end. Repeat it: mngsrvraid redact FOLDER\n";

/// The folder that `--scenario NAME` means: NAME itself, else a scenario of that name in `shipped`.
/// A stage of a scenario with a timeline is one by itself: "watch/loses-drive/failed". Throws
/// basics::Failure(Surroundings) when it is none of these, is a capture that was interrupted, or cannot be
/// read: with the shipped name that was meant, or all of them.
[[nodiscard]] std::filesystem::path FindScenario(const std::string& name,
                                                 const std::filesystem::path& shipped);

/// Names of the scenarios below a folder, sorted, such as "small" and "faults/slow", without the stages of
/// those that have a timeline. Empty where it cannot be read.
[[nodiscard]] std::vector<std::string> ScenarioNames(const std::filesystem::path& shipped);

}  // namespace scenario
