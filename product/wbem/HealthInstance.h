#pragma once

#include "Classes.h"
#include "board/Board.h"

#include <optional>
#include <string>
#include <vector>

namespace wbem {

/// ZORBALT_MngSrvRaidHealth: for those who watch servers by WBEM and would not read a RAID document. Its one
/// instance is always there, and what is not known has no value.
[[nodiscard]] Class HealthClass();

/// The key of the instance.
inline constexpr const char* kInstanceId = "ZORBALT:RAID";

/// Nothing is no value; a property that is no array has at most one.
using Values = std::optional<std::vector<std::string>>;

/// Of the instance, in the order of the class's properties.
[[nodiscard]] std::vector<Values> HealthValues(const board::Board& board);

}  // namespace wbem
