#pragma once

#include <chrono>
#include <string>

namespace views {

/// The time to the second, in UTC: "2031-04-05T06:07:08Z".
[[nodiscard]] std::string UtcText(std::chrono::system_clock::time_point time);

/// Seconds since 1970-01-01 00:00 UTC.
[[nodiscard]] long long UnixSeconds(std::chrono::system_clock::time_point time);

}  // namespace views
