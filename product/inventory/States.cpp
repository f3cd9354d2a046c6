#include "States.h"

#include "basics/Words.h"

#include <algorithm>
#include <iterator>

namespace inventory {
namespace {

using basics::IsSameWord;

struct Rule {
    std::string_view state;
    Level level;
};

constexpr Rule kDriveRules[] = {
    {"NO ERROR", Level::Ok},
    {"REBUILD", Level::Warning},
    {"ERROR", Level::Critical},
};
constexpr Rule kLogicalDriveRules[] = {
    {"OPTIMAL", Level::Ok},       {"INITIALIZING", Level::Warning}, {"RECONSTRUCTION", Level::Warning},
    {"OFFLINE", Level::Critical}, {"FAILED", Level::Critical},
};
constexpr Rule kControllerRules[] = {
    {"OK", Level::Ok},           {"OPTIMAL", Level::Ok},        {"NEEDS ATTENTION", Level::Warning},
    {"WARNING", Level::Warning}, {"DEGRADED", Level::Warning},  {"FAILED", Level::Critical},
    {"ERROR", Level::Critical},  {"CRITICAL", Level::Critical},
};
constexpr Rule kUnitRules[] = {
    {"OPTIMAL", Level::Ok},       {"OK", Level::Ok},
    {"LEARNING", Level::Ok},      {"CHARGING", Level::Ok},
    {"DEGRADED", Level::Warning}, {"FAILED", Level::Warning},
    {"LOW", Level::Warning},      {"MISSING", Level::Warning},
};
constexpr Rule kPresenceRules[] = {{"", Level::Ok}, {"PRESENT", Level::Ok}, {"ABSENT", Level::Ok}};
constexpr Rule kReplacementRules[] = {
    {"", Level::Ok},         {"NO", Level::Ok},        {"FALSE", Level::Ok},
    {"YES", Level::Warning}, {"TRUE", Level::Warning},
};
constexpr Rule kSmartRules[] = {
    {"", Level::Ok},
    {"OK", Level::Ok},
    {"ALERT", Level::Warning},
    {"FAILED", Level::Critical},
};

constexpr Rule kPredictionRules[] = {{"", Level::Ok}, {"-", Level::Ok}, {"N/A", Level::Ok}};

constexpr std::string_view kWork[] = {"COPYBACK", "LEARNING", "CHARGING"};

template <typename Rules>
Level Look(const Rules& rules, std::string_view state) {
    const auto* const rule = std::find_if(std::begin(rules), std::end(rules), [state](const Rule& each) {
        return IsSameWord(each.state, state);
    });
    return rule == std::end(rules) ? Level::Unknown : rule->level;
}

}  // namespace

Level LevelOfDriveStatus(std::string_view status) {
    return Look(kDriveRules, status);
}

Level LevelOfLogicalDriveState(std::string_view state) {
    return Look(kLogicalDriveRules, state);
}

Level LevelOfControllerStatus(std::string_view status) {
    return status.empty() ? Level::Ok : Look(kControllerRules, status);
}

Level LevelOfUnit(const BackupUnit& unit) {
    const Level state =
        unit.status.empty() ? Look(kPresenceRules, unit.presence) : Look(kUnitRules, unit.status);
    return std::max(state, Look(kReplacementRules, unit.replacement));
}

Level LevelOfSmartStatus(std::string_view status) {
    return Look(kSmartRules, status);
}

Level LevelOfPredictions(std::string_view count) {
    if (!count.empty() && count.find_first_not_of("0123456789") == std::string_view::npos) {
        return count.find_first_not_of('0') == std::string_view::npos ? Level::Ok : Level::Warning;
    }
    return Look(kPredictionRules, count);
}

bool IsWork(std::string_view states) {
    const std::vector<std::string_view> words = basics::Words(states, ",");
    return std::any_of(words.begin(), words.end(), [](std::string_view word) {
        return std::any_of(std::begin(kWork), std::end(kWork),
                           [word](std::string_view work) { return IsSameWord(work, basics::Trimmed(word)); });
    });
}

std::string Reason(const std::string& state, Level level) {
    if (state.empty()) {
        return "no state is told";
    }
    return level == Level::Unknown ? "unknown state \"" + state + '"' : state;
}

}  // namespace inventory
