#pragma once

#include <chrono>
#include <string>

namespace basics {

/// The time to the second, in UTC: "2031-04-05T06:07:08Z", or in another format of strftime.
[[nodiscard]] std::string UtcText(std::chrono::system_clock::time_point time,
                                  const char* format = "%Y-%m-%dT%H:%M:%SZ");

}  // namespace basics
