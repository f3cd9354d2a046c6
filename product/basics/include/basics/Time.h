#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace basics {

/// The time to the second, in UTC: "2031-04-05T06:07:08Z", or in another format of strftime.
[[nodiscard]] std::string UtcText(std::chrono::system_clock::time_point time,
                                  const char* format = "%Y-%m-%dT%H:%M:%SZ");

/// The time that such a text says, "2031-04-05T06:07:08Z"; nothing for any other text, and
/// for what no clock here can say.
[[nodiscard]] std::optional<std::chrono::system_clock::time_point> TimeFromUtcText(std::string_view text);

}  // namespace basics
