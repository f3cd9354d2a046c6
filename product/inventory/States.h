#pragma once

#include "inventory/Server.h"

#include <string>
#include <string_view>

namespace inventory {

// What a report's word for a state comes to by itself; one that has no rule is Unknown. Compared without
// regard to case.

/// "NO ERROR" is OK, "REBUILD" a warning, "ERROR" critical.
[[nodiscard]] Level LevelOfDriveStatus(std::string_view status);
/// "OPTIMAL", "INITIALIZING", "OFFLINE"; a degraded one is judged by what is left of its group.
[[nodiscard]] Level LevelOfLogicalDriveState(std::string_view state);
/// "Optimal", "Needs Attention", "Failed"; none is OK, since many controllers have none to tell.
[[nodiscard]] Level LevelOfControllerStatus(std::string_view status);
/// By its status, or by its presence where no status is told, and by whether it is to be replaced.
[[nodiscard]] Level LevelOfUnit(const BackupUnit& unit);
/// "OK", "Alert", "Failed"; none is OK.
[[nodiscard]] Level LevelOfSmartStatus(std::string_view status);
/// A count of failures that are foreseen, a warning when it is above 0. Some controllers print a dash or the
/// like for one that they do not keep.
[[nodiscard]] Level LevelOfPredictions(std::string_view count);

/// Whether one of the states, separated by commas, is well and names work that ends by itself: "COPYBACK".
[[nodiscard]] bool IsWork(std::string_view states);

/// A state as a reason: `FAILED`; one that has no rule is quoted, since it may be any text.
[[nodiscard]] std::string Reason(const std::string& state, Level level);

}  // namespace inventory
