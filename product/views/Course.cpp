#include "Course.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace views {
namespace {

using history::Reading;
using history::TimePoint;

// Every counter that is told has a value of each day.
constexpr std::chrono::hours kLongestGap{25};

}  // namespace

Course CourseOf(const std::vector<Reading>& readings, TimePoint since, TimePoint until, std::size_t moments) {
    Course course(moments);
    const std::chrono::duration<double> whole = until - since;
    const auto end = [&](std::size_t moment) {
        return since + std::chrono::duration_cast<TimePoint::duration>(
                           whole * static_cast<double>(moment + 1) / static_cast<double>(moments));
    };
    auto next = readings.begin();
    const Reading* last = nullptr;
    TimePoint start = since;
    for (std::size_t moment = 0; moment < moments && whole.count() > 0; ++moment) {
        std::optional<double>& highest = course[moment];
        if (last != nullptr && start - last->until <= kLongestGap) {
            highest = last->until >= start ? last->high : last->last;
        }
        for (; next != readings.end() && next->from <= end(moment); ++next) {
            highest = std::max(highest.value_or(next->high), next->high);
            last = &*next;
        }
        start = end(moment);
    }
    return course;
}

Course Sum(const Course& one, const Course& other) {
    Course sum(std::max(one.size(), other.size()));
    for (const Course* const each : {&one, &other}) {
        for (std::size_t moment = 0; moment < each->size(); ++moment) {
            if ((*each)[moment]) {
                sum[moment] = sum[moment].value_or(0) + *(*each)[moment];
            }
        }
    }
    return sum;
}

std::optional<Extent> ExtentOf(const Course& course) {
    std::optional<Extent> extent;
    for (const std::optional<double>& value : course) {
        if (value) {
            extent = Extent{std::min(extent.value_or(Extent{*value, *value}).low, *value),
                            std::max(extent.value_or(Extent{*value, *value}).high, *value)};
        }
    }
    return extent;
}

std::optional<Extent> ExtentOf(const std::vector<Reading>& readings) {
    std::optional<Extent> extent;
    for (const Reading& reading : readings) {
        extent = extent ? Extent{std::min(extent->low, reading.low), std::max(extent->high, reading.high)}
                        : Extent{reading.low, reading.high};
    }
    return extent;
}

std::string ShortNumber(double number) {
    constexpr int kDigits = 15;  // the sixteenth of a sum may be wrong
    std::array<char, 32> text;
    const auto written =
        std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::general, kDigits);
    return {text.data(), written.ptr};
}

std::string BlockLine(const Course& course) {
    constexpr std::size_t kBlocks = 8;
    const std::optional<Extent> extent = ExtentOf(course);
    std::string line;
    for (const std::optional<double>& value : course) {
        if (!value) {
            line += ' ';
            continue;
        }
        const double share =
            extent->high > extent->low ? (*value - extent->low) / (extent->high - extent->low) : 0;
        const auto block = static_cast<std::size_t>(std::lround(share * (kBlocks - 1)));
        line += "\xE2\x96";
        line += static_cast<char>(0x81 + static_cast<int>(std::min(block, kBlocks - 1)));
    }
    return line;
}

}  // namespace views
