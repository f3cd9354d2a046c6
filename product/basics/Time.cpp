#include "basics/Time.h"

#include "basics/Words.h"

#include <array>
#include <ctime>
#include <iomanip>
#include <sstream>
#include <utility>

namespace basics {

std::string UtcText(std::chrono::system_clock::time_point time, const char* format) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    std::tm fields{};
    ::gmtime_r(&seconds, &fields);
    std::ostringstream text;
    text << std::put_time(&fields, format);
    return text.str();
}

std::optional<std::chrono::system_clock::time_point> TimeFromUtcText(std::string_view text) {
    using namespace std::chrono;
    constexpr std::string_view kShape = "0000-00-00T00:00:00Z";
    constexpr std::array<std::pair<std::size_t, std::size_t>, 6> kFields = {
        {{0, 4}, {5, 2}, {8, 2}, {11, 2}, {14, 2}, {17, 2}}};
    if (text.size() != kShape.size()) {
        return std::nullopt;
    }
    for (std::size_t place = 0; place < text.size(); ++place) {
        if (IsDigit(kShape[place]) ? !IsDigit(text[place]) : text[place] != kShape[place]) {
            return std::nullopt;
        }
    }
    const auto field = [text, &kFields](std::size_t number) {
        const auto& [place, size] = kFields.at(number);
        return NumberFrom<unsigned>(text.substr(place, size)).value_or(0);
    };
    const year_month_day date{year(static_cast<int>(field(0))), month(field(1)), day(field(2))};
    const bool isInRange = field(0) >= 1970 && field(0) < 2262;  // what the clock can hold
    if (!isInRange || !date.ok() || field(3) > 23 || field(4) > 59 || field(5) > 59) {
        return std::nullopt;
    }
    return sys_days(date) + hours(field(3)) + minutes(field(4)) + seconds(field(5));
}

}  // namespace basics
