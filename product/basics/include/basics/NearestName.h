#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace basics {

/// The name that somebody meant who typed `word`, "faults/flaky" for "faults/flakey" or "flaky"; empty where
/// none is near. The first of several that are as near.
[[nodiscard]] std::string NearestName(const std::vector<std::string>& names, std::string_view word);

}  // namespace basics
