#include "basics/Duration.h"

#include "basics/Words.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace basics {
namespace {

struct Unit {
    char letter;
    std::uint32_t seconds;
};

constexpr std::array<Unit, 4> kUnits = {{{'d', 86400}, {'h', 3600}, {'m', 60}, {'s', 1}}};

}  // namespace

std::optional<std::chrono::seconds> DurationFrom(std::string_view text) {
    constexpr std::uint64_t kMost = std::uint64_t{36525} * 86400;
    if (text == "0") {
        return std::chrono::seconds(0);
    }
    const auto* const unit = std::find_if(kUnits.begin(), kUnits.end(), [text](const Unit& each) {
        return !text.empty() && text.back() == each.letter;
    });
    const auto number = NumberFrom<std::uint32_t>(text.substr(0, text.empty() ? 0 : text.size() - 1));
    if (unit == kUnits.end() || !number || std::uint64_t{*number} * unit->seconds > kMost) {
        return std::nullopt;
    }
    return std::chrono::seconds(std::uint64_t{*number} * unit->seconds);
}

std::string DurationText(std::chrono::seconds duration) {
    const std::int64_t count = duration.count();
    const auto* const unit = std::find_if(kUnits.begin(), kUnits.end(),
                                          [count](const Unit& each) { return count % each.seconds == 0; });
    return count == 0 ? "0" : std::to_string(count / unit->seconds) + unit->letter;
}

}  // namespace basics
