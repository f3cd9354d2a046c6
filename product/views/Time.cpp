#include "Time.h"

#include <array>
#include <ctime>

namespace views {

std::string UtcText(std::chrono::system_clock::time_point time) {
    const auto seconds = static_cast<std::time_t>(UnixSeconds(time));
    std::tm fields{};
    ::gmtime_r(&seconds, &fields);
    std::array<char, 40> text{};  // Room for every year that the clock can tell, and more.
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &fields)};
}

long long UnixSeconds(std::chrono::system_clock::time_point time) {
    return std::chrono::floor<std::chrono::seconds>(time).time_since_epoch().count();
}

}  // namespace views
