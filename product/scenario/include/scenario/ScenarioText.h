#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace scenario {

/// The name of a command's files in a scenario: "pdinfo_pd252.3_a0" for "-pdinfo -pd[252:3] -a0".
[[nodiscard]] std::string ScenarioStem(std::string_view arguments);

/// The instructions that have a scenario's command end as it was seen to, run by run, such as
///
///     fail-first 2 1
///
/// "" when all runs went well; nothing when no instructions say such a thing. The statuses are those of
/// waitpid().
[[nodiscard]] std::optional<std::string> ScenarioInstructions(const std::vector<int>& statuses);

}  // namespace scenario
