#include "inventory/Health.h"

#include "Comparison.h"
#include "CrossChecks.h"
#include "Redundancy.h"
#include "States.h"
#include "basics/Words.h"
#include "inventory/Smart.h"

#include <algorithm>
#include <iterator>
#include <unordered_map>
#include <utility>

namespace inventory {
namespace {

std::string NameOr(const std::string& name, const char* unnamed) {
    return name.empty() ? unnamed : name;
}

std::string SmartStatusOf(const Drive& drive) {
    return drive.smart == nullptr ? "" : ValueOf(*drive.smart, "SMART Status");
}

Level WorstStatusOf(const Drive& drive) {
    Level level = drive.statuses.empty() ? Level::Unknown : Level::Ok;
    for (const std::string& status : drive.statuses) {
        level = std::max(level, LevelOfDriveStatus(status));
    }
    return level;
}

/// Judges a controller with what belongs to it, and collects what is not well.
class Inspection final {
  public:
    explicit Inspection(std::vector<Finding>& findings) : m_Findings(findings) {}

    void Inspect(Controller& controller) {
        const CrossChecks checks(controller);
        m_Controller = controller.number;
        controller.health = Level::Ok;
        m_Standings.clear();
        for (const Group& group : controller.groups) {
            m_Standings.push_back(StandingOf(controller, group));
        }
        InspectItself(checks, controller);
        for (BackupUnit& unit : controller.backupUnits) {
            unit.health = Level::Ok;
            Note(LevelOfUnit(unit), WhatOf(unit), {.kind = PartKind::Unit, .part = unit.name}, unit.health);
        }
        for (Drive& drive : controller.drives) {
            Inspect(drive, checks, controller);
        }
        for (Group& group : controller.groups) {
            Inspect(group, checks, controller);
        }
    }

    /// A drive of which alone is known: nothing else can confirm what it says.
    void InspectAlone(Controller& controller) {
        m_Controller = controller.number;
        controller.health = controller.statusHealth = Level::Ok;
        Drive& drive = controller.drives.front();
        Reasons reasons;
        AddStates(drive, Standing(), drive.membership.starts_with("LD"), reasons);
        Note(drive, reasons);
    }

  private:
    /// What is not well about a part.
    struct Reasons {
        Level level = Level::Ok;
        std::vector<std::string> words;

        void Add(Level reason, std::string what) {
            if (reason != Level::Ok) {
                level = std::max(level, reason);
                words.push_back(std::move(what));
            }
        }
        void AddUnknown(const std::vector<std::string>& whats) {
            for (const std::string& what : whats) {
                Add(Level::Unknown, what);
            }
        }
    };

    static std::string WhatOf(const BackupUnit& unit) {
        BackupUnit kept = unit;
        kept.replacement.clear();
        std::vector<std::string> words = {
            Reason(unit.status.empty() ? unit.presence : unit.status, LevelOfUnit(kept))};
        BackupUnit worn;
        worn.replacement = unit.replacement;
        if (const Level level = LevelOfUnit(worn); level == Level::Warning) {
            words.emplace_back("replacement required");
        } else if (level == Level::Unknown) {
            words.push_back("replacement required: \"" + unit.replacement + '"');
        }
        return basics::Joined(words);
    }

    void InspectItself(const CrossChecks& checks, Controller& controller) {
        Reasons reasons;
        const Level status = LevelOfControllerStatus(controller.status);
        reasons.Add(status, Reason(controller.status, status));
        reasons.AddUnknown(checks.OfController());
        controller.statusHealth = Level::Ok;
        Note(reasons, {.part = controller.number.empty() ? "a controller" : ""}, controller.statusHealth);
    }

    void Inspect(Group& group, const CrossChecks& checks, const Controller& controller) {
        const Standing& standing = m_Standings[static_cast<std::size_t>(&group - controller.groups.data())];
        group.health = Level::Ok;
        Reasons reasons;
        reasons.AddUnknown(checks.Of(group));
        Note(reasons, {.kind = PartKind::Group, .group = group.number}, group.health);
        for (const Member& member : group.members) {
            InspectMember(member, controller, group);
        }
        for (LogicalDrive& drive : group.logicalDrives) {
            Inspect(drive, standing, checks, group);
        }
    }

    // A drive that its group names and that nobody reports may be anything, or gone.
    void InspectMember(const Member& member, const Controller& controller, Group& group) {
        if (DriveOf(controller, member) != nullptr) {
            return;
        }
        Note(Level::Unknown, "its group names it, no drive is reported",
             {.kind = PartKind::Drive,
              .group = group.number,
              .part = NameOr(member.number, "a drive"),
              .enclosure = member.enclosure,
              .slot = member.slot},
             group.health);
    }

    void Inspect(LogicalDrive& drive, const Standing& standing, const CrossChecks& checks,
                 const Group& group) {
        Reasons reasons;
        if (IsDegraded(drive)) {
            reasons.Add(LevelOf(standing.risk), drive.state + ", " + Describe(standing));
        } else {
            const Level level = LevelOfLogicalDriveState(drive.state);
            reasons.Add(level, Reason(drive.state, level));
        }
        reasons.AddUnknown(checks.Of(drive));
        drive.health = Level::Ok;
        Note(reasons,
             {.kind = PartKind::LogicalDrive,
              .group = group.number,
              .part = NameOr(drive.number, "a logical drive")},
             drive.health);
    }

    void Inspect(Drive& drive, const CrossChecks& checks, const Controller& controller) {
        const std::size_t group = checks.GroupNaming(drive);
        const bool isMember = group != kNowhere;
        const Standing standing = isMember ? m_Standings[group] : Standing();
        Reasons reasons;
        AddStates(drive, standing, isMember || drive.membership.starts_with("LD"), reasons);
        if (isMember && HasDroppedOut(drive)) {
            reasons.Add(
                std::max(Level::Warning, LevelOf(standing.risk)),
                drive.detail + ", dropped out of " + NameOr(controller.groups[group].number, "its group"));
        }
        reasons.AddUnknown(checks.Of(drive));
        Note(drive, reasons);
    }

    /// What the drive itself says. A drive that announces its failure is the one more fault that its group
    /// bears, or does not.
    static void AddStates(const Drive& drive, const Standing& standing, bool isInUse, Reasons& reasons) {
        const Level announced = isInUse && !standing.bearsOneMore ? Level::Critical : Level::Warning;
        AddStatus(drive, standing, isInUse, reasons);
        if (const Level level = LevelOfPredictions(drive.predictiveFailures); level != Level::Ok) {
            const bool isKnown = level == Level::Warning;
            reasons.Add(isKnown ? announced : level,
                        isKnown ? "failure predicted (" + drive.predictiveFailures + ")"
                                : "predictive failure count \"" + drive.predictiveFailures + '"');
        }
        if (drive.smart == nullptr) {
            return;
        }
        const std::string status = SmartStatusOf(drive);
        const Level level = LevelOfSmartStatus(status);
        reasons.Add(level == Level::Critical ? announced : level, "SMART status " + status);
        for (const std::string& row : FailingRowsOf(SmartOf(drive))) {
            reasons.Add(announced, "SMART " + row);
        }
    }

    static void AddStatus(const Drive& drive, const Standing& standing, bool isInUse, Reasons& reasons) {
        Level level = WorstStatusOf(drive);
        if (level == Level::Critical) {  // What has failed counts by what it takes along: a spare nothing.
            const bool isBorne = !isInUse || standing.risk != Risk::None;
            level = isBorne ? std::max(Level::Warning, isInUse ? LevelOf(standing.risk) : Level::Ok) : level;
        }
        reasons.Add(level, Reason(StatusOf(drive), level));
    }

    void Note(Drive& drive, const Reasons& reasons) {
        drive.health = Level::Ok;
        Note(reasons,
             {.kind = PartKind::Drive,
              .group = drive.group,
              .part = NameOr(drive.number, "a drive"),
              .enclosure = drive.enclosure,
              .slot = drive.slot,
              .product = drive.product,
              .serial = drive.serial},
             drive.health);
    }

    void Note(const Reasons& reasons, Finding part, Level& health) {
        Note(reasons.level, basics::Joined(reasons.words), std::move(part), health);
    }

    void Note(Level level, std::string what, Finding part, Level& health) {
        if (level == Level::Ok) {
            return;
        }
        part.level = level;
        part.controller = m_Controller;
        part.what = std::move(what);
        m_Findings.push_back(std::move(part));
        health = std::max(health, level);
    }

    std::vector<Finding>& m_Findings;
    std::string m_Controller;
    std::vector<Standing> m_Standings;  ///< of the controller's groups
};

/// Controllers that the document tells twice: which of them is meant?
std::vector<Finding> JudgeRepeats(Server& server) {
    std::vector<Finding> findings;
    std::unordered_map<std::string, std::size_t> counts;
    for (const Controller& controller : server.controllers) {
        ++counts[controller.number];
    }
    for (Controller& controller : server.controllers) {
        std::size_t& count = counts[controller.number];
        if (count > 1 && !controller.number.empty()) {
            Finding finding;
            finding.level = Level::Unknown;
            finding.rule = Rule::Repetition;
            finding.controller = controller.number;
            finding.what = kRepeated;
            findings.push_back(std::move(finding));
            controller.health = std::max(controller.health, Level::Unknown);
            count = 0;
        }
    }
    return findings;
}

/// A part is no better than what belongs to it.
void RollUp(Server& server) {
    const auto raise = [](Level& level, const auto& parts) {
        for (const auto& part : parts) {
            level = std::max(level, part.health);
        }
    };
    for (Controller& controller : server.controllers) {
        for (Group& group : controller.groups) {
            raise(group.health, group.logicalDrives);
            for (const Member& member : group.members) {
                const Drive* const drive = DriveOf(controller, member);
                group.health = std::max(group.health, drive == nullptr ? Level::Ok : drive->health);
            }
        }
        controller.health = std::max(controller.health, controller.statusHealth);
        raise(controller.health, controller.backupUnits);
        raise(controller.health, controller.groups);
        raise(controller.health, controller.drives);
    }
}

void Append(std::vector<Finding> more, std::vector<Finding>& findings) {
    std::move(more.begin(), more.end(), std::back_inserter(findings));
}

/// Of several that fit, the one that holds longest.
void Accept(Finding& finding, const Criteria& criteria) {
    if (!criteria.expectations) {
        return;
    }
    const std::string place = PlaceOf(finding);
    for (const Acceptance& each : criteria.expectations->accepted) {
        if (each.place == place && each.what == finding.what && each.until > finding.until &&
            (each.serial.empty() || each.serial == finding.serial)) {
            finding.until = each.until;
            finding.reason = each.reason;
            finding.isAccepted = each.until >= criteria.today;
        }
    }
}

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

}  // namespace

Health Judge(Server& server, const Criteria& criteria) {
    Health health;
    Inspection inspection(health.findings);
    const bool isAboutDrive = OnlyDriveOf(server) != nullptr;
    for (Controller& controller : server.controllers) {
        isAboutDrive ? inspection.InspectAlone(controller) : inspection.Inspect(controller);
    }
    Append(JudgeRepeats(server), health.findings);
    Append(Compare(server, criteria), health.findings);
    RollUp(server);
    for (Finding& finding : health.findings) {
        Accept(finding, criteria);
        health.level = finding.isAccepted ? health.level : std::max(health.level, finding.level);
    }
    std::stable_sort(
        health.findings.begin(), health.findings.end(), [](const Finding& one, const Finding& other) {
            return std::pair(one.isAccepted, other.level) < std::pair(other.isAccepted, one.level);
        });
    health.counts = CountAll(server);
    if (health.counts.drives == 0) {
        health.level = std::max(health.level, Level::Unknown);
    }
    return health;
}

bool IsBusy(const Drive& drive) {
    return drive.health == Level::Ok && IsWork(drive.detail);
}

Duty DutyOf(const Drive& drive) {
    switch (WorstStatusOf(drive)) {
        case Level::Critical:
            return Duty::HasFailed;
        case Level::Warning:
            return Duty::IsRebuilt;
        case Level::Unknown:
            return Duty::IsUnknown;
        case Level::Ok:
            break;
    }
    if (IsWork(drive.detail)) {
        return Duty::IsCopied;
    }
    if (drive.membership == "GHS" || drive.membership == "DHS") {
        return Duty::IsSpare;
    }
    return drive.membership.starts_with("LD") ? Duty::Serves : Duty::IsUnused;
}

bool IsBusy(const BackupUnit& unit) {
    return unit.health == Level::Ok && IsWork(unit.status);
}

}  // namespace inventory
