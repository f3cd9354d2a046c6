#include "inventory/Health.h"

#include "basics/Words.h"

#include <algorithm>
#include <utility>

namespace inventory {
namespace {

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
constexpr std::string_view kDegraded[] = {"DEGRADED", "PARTIALLY DEGRADED"};
constexpr Rule kControllerRules[] = {
    {"OK", Level::Ok},           {"OPTIMAL", Level::Ok},        {"NEEDS ATTENTION", Level::Warning},
    {"WARNING", Level::Warning}, {"DEGRADED", Level::Warning},  {"FAILED", Level::Critical},
    {"ERROR", Level::Critical},  {"CRITICAL", Level::Critical},
};
constexpr Rule kBackupUnitRules[] = {
    {"OPTIMAL", Level::Ok},       {"OK", Level::Ok},
    {"LEARNING", Level::Ok},      {"CHARGING", Level::Ok},
    {"DEGRADED", Level::Warning}, {"FAILED", Level::Warning},
    {"LOW", Level::Warning},      {"MISSING", Level::Warning},
};
constexpr Rule kSmartRules[] = {
    {"OK", Level::Ok},
    {"ALERT", Level::Warning},
    {"FAILED", Level::Critical},
};

// Without the locale, in which some letters have no other case.
bool IsSameWord(std::string_view one, std::string_view other) {
    return basics::InLowerCase(one) == basics::InLowerCase(other);
}

template <typename Rules>
Level Look(const Rules& rules, std::string_view state) {
    const auto* const rule = std::find_if(std::begin(rules), std::end(rules), [state](const Rule& each) {
        return IsSameWord(each.state, state);
    });
    return rule == std::end(rules) ? Level::Unknown : rule->level;
}

/// A count of failures that are foreseen. Some controllers print a dash or the like for one that they do not
/// keep.
Level PredictionLevel(const Drive& drive) {
    const std::string& count = drive.predictiveFailures;
    if (count.empty() || count == "-" || IsSameWord(count, "N/A")) {
        return Level::Ok;
    }
    if (count.find_first_not_of("0123456789") != std::string::npos) {
        return Level::Unknown;
    }
    return count.find_first_not_of('0') == std::string::npos ? Level::Ok : Level::Warning;
}

std::string SmartStatusOf(const Drive& drive) {
    return drive.smart == nullptr ? "" : ValueOf(*drive.smart, "SMART Status");
}

Level SmartLevel(const Drive& drive) {
    const std::string status = SmartStatusOf(drive);
    return status.empty() ? Level::Ok : Look(kSmartRules, status);
}

Level StatusLevel(const Drive& drive) {
    Level level = drive.statuses.empty() ? Level::Unknown : Level::Ok;
    for (const std::string& status : drive.statuses) {
        level = std::max(level, Look(kDriveRules, status));
    }
    return level;
}

bool IsDegraded(const LogicalDrive& drive) {
    return std::any_of(std::begin(kDegraded), std::end(kDegraded),
                       [&](std::string_view state) { return IsSameWord(state, drive.state); });
}

bool IsRebuilding(const Drive& drive) {
    return std::any_of(drive.statuses.begin(), drive.statuses.end(),
                       [](const std::string& status) { return IsSameWord(status, "REBUILD"); });
}

bool IsRebuilding(const Controller& controller, const Group& group) {
    return std::any_of(controller.drives.begin(), controller.drives.end(), [&](const Drive& drive) {
        return IsRebuilding(drive) && GroupOf(controller, drive) == &group;
    });
}

/// A state as a reason: one that has no rule is quoted, since it may be any text.
std::string Reason(const std::string& state, Level level) {
    if (state.empty()) {
        return "no state is told";
    }
    return level == Level::Unknown ? "unknown state \"" + state + '"' : state;
}

std::string WhatOf(const Drive& drive) {
    std::vector<std::string> what;
    if (const Level level = StatusLevel(drive); level != Level::Ok) {
        what.push_back(Reason(StatusOf(drive), level));
    }
    if (const Level level = PredictionLevel(drive); level != Level::Ok) {
        what.push_back(level == Level::Warning
                           ? "failure predicted (" + drive.predictiveFailures + ")"
                           : "predictive failure count \"" + drive.predictiveFailures + '"');
    }
    if (SmartLevel(drive) != Level::Ok) {
        what.push_back("SMART status " + SmartStatusOf(drive));
    }
    return basics::Joined(what);
}

std::string WhatOf(const Controller& controller, const Group& group, const LogicalDrive& drive) {
    if (!IsDegraded(drive)) {
        return Reason(drive.state, LevelOf(controller, group, drive));
    }
    return drive.state + (IsRebuilding(controller, group) ? ", being rebuilt" : ", nothing is being rebuilt");
}

std::string WhatOf(const BackupUnit& unit) {
    const std::string what = Reason(unit.status.empty() ? unit.presence : unit.status, LevelOf(unit));
    return IsSameWord(unit.replacement, "Yes") ? what + ", replacement required" : what;
}

std::string NameOr(const std::string& name, const char* unnamed) {
    return name.empty() ? unnamed : name;
}

/// Collects what is not well.
class Inspection final {
  public:
    void Inspect(const Controller& controller) {
        m_Controller = controller.number;
        Note(LevelOf(controller), {}, {}, Reason(controller.status, LevelOf(controller)));
        for (const BackupUnit& unit : controller.backupUnits) {
            Note(LevelOf(unit), {}, unit.name, WhatOf(unit));
        }
        for (const Group& group : controller.groups) {
            InspectMembers(controller, group);
            for (const LogicalDrive& drive : group.logicalDrives) {
                Note(LevelOf(controller, group, drive), group.number, NameOr(drive.number, "a logical drive"),
                     WhatOf(controller, group, drive));
            }
        }
        for (const Drive& drive : controller.drives) {
            if (Finding* const finding =
                    Note(LevelOf(drive), drive.group, NameOr(drive.number, "a drive"), WhatOf(drive))) {
                finding->enclosure = drive.enclosure;
                finding->slot = drive.slot;
            }
        }
    }

    [[nodiscard]] std::vector<Finding> Findings() {
        std::stable_sort(m_Findings.begin(), m_Findings.end(),
                         [](const Finding& one, const Finding& other) { return one.level > other.level; });
        return std::move(m_Findings);
    }

  private:
    // A drive that its group names and that nobody reports may be anything, or gone.
    void InspectMembers(const Controller& controller, const Group& group) {
        for (const Member& member : group.members) {
            if (DriveOf(controller, member) == nullptr) {
                Finding* const finding = Note(Level::Unknown, group.number, NameOr(member.number, "a drive"),
                                              "its group names it, no drive is reported");
                finding->enclosure = member.enclosure;
                finding->slot = member.slot;
            }
        }
    }

    Finding* Note(Level level, const std::string& group, const std::string& part, const std::string& what) {
        if (level == Level::Ok) {
            return nullptr;
        }
        return &m_Findings.emplace_back(Finding{level, m_Controller, group, part, "", "", what});
    }

    std::string m_Controller;
    std::vector<Finding> m_Findings;
};

Counts CountAll(const Server& server) {
    Counts counts;
    for (const Controller& controller : server.controllers) {
        counts.controllers += controller.item == nullptr ? 0 : 1;
        counts.groups += controller.groups.size();
        counts.drives += controller.drives.size();
        for (const Group& group : controller.groups) {
            counts.logicalDrives += group.logicalDrives.size();
        }
    }
    return counts;
}

std::string Number(std::size_t count, const char* one) {
    return std::to_string(count) + " " + one + (count == 1 ? "" : "s");
}

}  // namespace

std::string_view NameOf(Level level) {
    constexpr std::string_view kNames[] = {"OK", "UNKNOWN", "WARNING", "CRITICAL"};
    return kNames[static_cast<std::size_t>(level)];
}

int PlugInStatusOf(Level level) {
    constexpr int kStatuses[] = {0, 3, 1, 2};
    return kStatuses[static_cast<std::size_t>(level)];
}

std::string PlaceOf(const Finding& finding) {
    std::string place;
    const auto add = [&place](const std::string& before, const std::string& text) {
        if (!text.empty()) {
            place += (place.empty() ? "" : ", ") + before + text;
        }
    };
    add("controller ", finding.controller);
    add("", finding.group);
    add("", finding.part);
    if (!finding.enclosure.empty() || !finding.slot.empty()) {
        place += " in";
        place += finding.enclosure.empty() ? "" : " enclosure " + finding.enclosure;
        place += finding.slot.empty() ? "" : " slot " + finding.slot;
    }
    return place.empty() ? "a part without a name" : place;
}

Level LevelOf(const Drive& drive) {
    return std::max({StatusLevel(drive), PredictionLevel(drive), SmartLevel(drive)});
}

Level LevelOf(const Controller& controller, const Group& group, const LogicalDrive& drive) {
    if (IsDegraded(drive)) {
        return IsRebuilding(controller, group) ? Level::Warning : Level::Critical;
    }
    return Look(kLogicalDriveRules, drive.state);
}

Level LevelOf(const BackupUnit& unit) {
    const Level worn = IsSameWord(unit.replacement, "Yes") ? Level::Warning : Level::Ok;
    if (unit.status.empty()) {
        const bool isTold = IsSameWord(unit.presence, "Absent") || IsSameWord(unit.presence, "Present");
        return std::max(worn, isTold || unit.presence.empty() ? Level::Ok : Level::Unknown);
    }
    return std::max(worn, Look(kBackupUnitRules, unit.status));
}

Level LevelOf(const Controller& controller) {
    return controller.status.empty() ? Level::Ok : Look(kControllerRules, controller.status);
}

Level LevelOf(const Controller& controller, const Group& group) {
    Level level = Level::Ok;
    for (const LogicalDrive& drive : group.logicalDrives) {
        level = std::max(level, LevelOf(controller, group, drive));
    }
    for (const Member& member : group.members) {
        const Drive* const drive = DriveOf(controller, member);
        level = std::max(level, drive == nullptr ? Level::Unknown : LevelOf(*drive));
    }
    return level;
}

Level OverallLevelOf(const Controller& controller) {
    Level level = LevelOf(controller);
    for (const BackupUnit& unit : controller.backupUnits) {
        level = std::max(level, LevelOf(unit));
    }
    for (const Group& group : controller.groups) {
        level = std::max(level, LevelOf(controller, group));
    }
    for (const Drive& drive : controller.drives) {
        level = std::max(level, LevelOf(drive));
    }
    return level;
}

Health Judge(const Server& server) {
    Inspection inspection;
    for (const Controller& controller : server.controllers) {
        inspection.Inspect(controller);
    }
    Health health;
    health.findings = inspection.Findings();
    health.counts = CountAll(server);
    if (!health.findings.empty()) {
        health.level = health.findings.front().level;
    } else if (health.counts.drives == 0) {
        health.level = Level::Unknown;
    }
    return health;
}

std::string Describe(const Counts& counts) {
    if (counts.controllers == 0 && counts.drives == 0) {
        return "no controller";
    }
    std::string text = counts.controllers == 0 ? "" : Number(counts.controllers, "controller") + ", ";
    if (counts.groups > 0) {
        text += Number(counts.groups, "group") + ", " + Number(counts.logicalDrives, "logical drive") + ", ";
    }
    return text + (counts.drives == 0 ? "no drive" : Number(counts.drives, "drive"));
}

std::string Headline(const Health& health) {
    if (health.findings.empty()) {
        return Describe(health.counts) + (health.level == Level::Ok ? ", all well" : ", nothing to judge");
    }
    std::string text;
    for (const Level level : {Level::Critical, Level::Warning, Level::Unknown}) {
        if (const std::size_t count = CountOf(health, level); count > 0) {
            text += (text.empty() ? "" : ", ") + std::to_string(count) + " ";
            text += level == Level::Critical ? "critical" : level == Level::Unknown ? "unknown" : "warning";
            text += level == Level::Warning && count > 1 ? "s" : "";
        }
    }
    return text + " in " + Describe(health.counts);
}

std::size_t CountOf(const Health& health, Level level) {
    return static_cast<std::size_t>(
        std::count_if(health.findings.begin(), health.findings.end(),
                      [level](const Finding& each) { return each.level == level; }));
}

}  // namespace inventory
