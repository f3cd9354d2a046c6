#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace basics {

/// A length of time as people write it: "50s", "90m", "6h", "30d"; 0 without a unit. Nothing for any other
/// text, and for more than a hundred years.
[[nodiscard]] std::optional<std::chrono::seconds> DurationFrom(std::string_view text);

/// The shortest text that says it: "5m", "90s", "30d", "0".
[[nodiscard]] std::string DurationText(std::chrono::seconds duration);

}  // namespace basics
