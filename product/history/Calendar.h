#pragma once

#include "watch/Event.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <optional>

namespace history {

using watch::TimePoint;

// Times as they stand in the file: whole seconds of 1970 on, and days of 86400 of them.

inline constexpr std::int64_t kSecondsOfDay = 86400;

/// The last day that the clock here can say something of, in the year 2262, and the first one.
inline constexpr std::int64_t kLastDay = 106'750;
inline constexpr std::int64_t kFirstDay = -kLastDay;

[[nodiscard]] inline std::int64_t SecondsOf(TimePoint time) {
    return std::chrono::floor<std::chrono::seconds>(time.time_since_epoch()).count();
}

/// Nothing for a number that no clock can have said.
[[nodiscard]] inline std::optional<TimePoint> TimeOf(std::int64_t seconds) {
    const bool isTime = kFirstDay * kSecondsOfDay <= seconds && seconds < kLastDay * kSecondsOfDay;
    return isTime ? std::optional(TimePoint(std::chrono::seconds(seconds))) : std::nullopt;
}

[[nodiscard]] inline std::int64_t DayOf(std::int64_t seconds) {
    return (seconds >= 0 ? seconds : seconds - (kSecondsOfDay - 1)) / kSecondsOfDay;
}

[[nodiscard]] inline std::int64_t DayOf(TimePoint time) {
    return DayOf(SecondsOf(time));
}

}  // namespace history
