#pragma once

#include "history/History.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace views {

/// The values of a counter at so many moments that lie evenly in a time; of each piece of it the highest.
/// Nothing where nobody looked for longer than a day.
using Course = std::vector<std::optional<double>>;
[[nodiscard]] Course CourseOf(const std::vector<history::Reading>& readings, history::TimePoint since,
                              history::TimePoint until, std::size_t moments);

/// Two counters together; nothing where neither is known.
[[nodiscard]] Course Sum(const Course& one, const Course& other);

/// The lowest and the highest value; nothing without any.
struct Extent {
    double low = 0, high = 0;
};
[[nodiscard]] std::optional<Extent> ExtentOf(const Course& course);
[[nodiscard]] std::optional<Extent> ExtentOf(const std::vector<history::Reading>& readings);

/// A number for people: "31", "291.93".
[[nodiscard]] std::string ShortNumber(double number);

/// A line of blocks, one for each moment: "▁▂▂▅█"; blank where nothing is known.
[[nodiscard]] std::string BlockLine(const Course& course);

}  // namespace views
