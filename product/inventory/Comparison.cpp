#include "Comparison.h"

#include "States.h"
#include "basics/Words.h"
#include "inventory/Measure.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace inventory {
namespace {

Finding FindingOf(const Controller& controller, const Drive& drive) {
    Finding finding;
    finding.kind = PartKind::Drive;
    finding.controller = controller.number;
    finding.group = drive.group;
    finding.part = drive.number.empty() ? "a drive" : drive.number;
    finding.enclosure = drive.enclosure;
    finding.slot = drive.slot;
    finding.product = drive.product;
    finding.serial = drive.serial;
    return finding;
}

/// A drive by what it is called in words where its number is not known.
Finding FindingOf(const ExpectedController& controller, const ExpectedDrive& drive) {
    Finding finding;
    finding.kind = PartKind::Drive;
    finding.controller = controller.number;
    finding.part = "the drive";
    finding.enclosure = drive.enclosure;
    finding.slot = drive.slot;
    finding.product = drive.product;
    finding.serial = drive.serial;
    return finding;
}

std::string MediaErrors(std::uint64_t count) {
    return std::to_string(count) + (count == 1 ? " media error" : " media errors");
}

bool IsGoodSpare(const Drive& drive) {
    return (drive.membership == "GHS" || drive.membership == "DHS") && !drive.statuses.empty() &&
           std::all_of(drive.statuses.begin(), drive.statuses.end(),
                       [](const std::string& status) { return LevelOfDriveStatus(status) == Level::Ok; });
}

/// Something by a name that others may have as well; then it is none.
template <typename Thing>
class UniqueNames final {
  public:
    void Add(std::string_view name, Thing thing) {
        if (!name.empty() && !m_Things.try_emplace(name, thing).second) {
            m_Repeated.insert(name);
        }
    }
    [[nodiscard]] const Thing* Find(std::string_view name) const {
        const auto found = m_Things.find(name);
        return found == m_Things.end() || m_Repeated.contains(name) ? nullptr : &found->second;
    }

  private:
    std::unordered_map<std::string_view, Thing> m_Things;
    std::unordered_set<std::string_view> m_Repeated;
};

/// Of the parts that bear a number, the first.
template <typename Parts>
auto* FindNumber(Parts& parts, const std::string& number) {
    const auto found =
        std::find_if(parts.begin(), parts.end(), [&](const auto& part) { return part.number == number; });
    return found == parts.end() ? nullptr : &*found;
}

class Comparison final {
  public:
    Comparison(Server& server, const Criteria& criteria) : m_Server(server), m_Limits(criteria.limits) {}

    [[nodiscard]] std::vector<Finding> Findings() && { return std::move(m_Findings); }

    void CompareWithLimits() {
        for (Controller& controller : m_Server.controllers) {
            for (Drive& drive : controller.drives) {
                CompareWithLimits(controller, drive);
            }
            if (m_Limits.spares && !controller.groups.empty()) {
                CompareSpares(controller);
            }
        }
    }

    void CompareWith(const std::vector<ExpectedController>& expected) {
        for (Controller& controller : m_Server.controllers) {
            for (Drive& drive : controller.drives) {
                m_Present.Add(drive.serial, {&controller, &drive});
            }
        }
        for (const ExpectedController& controller : expected) {
            for (const ExpectedDrive& drive : controller.drives) {
                m_Expected.Add(drive.serial, &drive);
            }
        }
        for (const ExpectedController& controller : expected) {
            CompareController(controller);
        }
        for (Controller& controller : m_Server.controllers) {
            FindNews(expected, controller);
        }
    }

  private:
    struct Place {
        Controller* controller;
        Drive* drive;
    };

    void Note(Level level, Finding part, std::string what, Level& health) {
        NoteMissing(level, std::move(part), std::move(what));
        health = std::max(health, level);
    }
    void NoteMissing(Level level, Finding part, std::string what) {
        part.level = level;
        part.what = std::move(what);
        m_Findings.push_back(std::move(part));
    }
    void Note(const Place& place, Rule rule, std::string what) {
        Finding finding = FindingOf(*place.controller, *place.drive);
        finding.rule = rule;
        Note(Level::Warning, std::move(finding), std::move(what), place.drive->health);
    }

    void CompareWithLimits(Controller& controller, Drive& drive) {
        const std::optional<double> degrees = CelsiusFrom(drive.temperature);
        if (m_Limits.temperature && degrees && *degrees > *m_Limits.temperature) {
            Note({&controller, &drive}, Rule::Temperature,
                 drive.temperature + ", limit " + Digits(*m_Limits.temperature) + " C");
        }
        const std::optional<std::uint64_t> errors = CountFrom(drive.mediaErrors);
        if (m_Limits.mediaErrors && errors && *errors > *m_Limits.mediaErrors) {
            Note({&controller, &drive}, Rule::MediaErrors,
                 MediaErrors(*errors) + ", limit " + std::to_string(*m_Limits.mediaErrors));
        }
    }

    static std::string Digits(double number) {
        std::string text = std::to_string(number);
        text.erase(text.find_last_not_of('0') + 1);
        return text.ends_with('.') ? text.substr(0, text.size() - 1) : text;
    }

    void CompareSpares(Controller& controller) {
        const auto count = static_cast<std::size_t>(
            std::count_if(controller.drives.begin(), controller.drives.end(), IsGoodSpare));
        if (count < *m_Limits.spares) {
            Finding finding;
            finding.rule = Rule::Spares;
            finding.controller = controller.number;
            Note(Level::Warning, std::move(finding),
                 (count == 0   ? "no spare"
                  : count == 1 ? "1 spare"
                               : std::to_string(count) + " spares") +
                     std::string(", fewest wanted ") + std::to_string(*m_Limits.spares),
                 controller.health);
        }
    }

    void CompareController(const ExpectedController& expected) {
        Controller* const controller = FindNumber(m_Server.controllers, expected.number);
        Finding finding;
        finding.rule = Rule::Presence;
        finding.controller = expected.number;
        if (controller == nullptr) {
            finding.product = expected.product;
            finding.serial = expected.serial;
            NoteMissing(Level::Critical, std::move(finding), "gone");
        } else {
            if (!expected.serial.empty() && !controller->serial.empty() &&
                expected.serial != controller->serial) {
                finding.product = controller->product;
                finding.serial = controller->serial;
                Note(Level::Warning, finding,
                     "another controller, expected: serial number " + expected.serial, controller->health);
            }
            for (const ExpectedGroup& group : expected.groups) {
                CompareGroup(group, *controller);
            }
        }
        for (const ExpectedDrive& drive : expected.drives) {
            CompareDrive(expected, drive, controller);
        }
    }

    void CompareGroup(const ExpectedGroup& expected, Controller& controller) {
        Finding finding;
        finding.kind = PartKind::Group;
        finding.rule = Rule::Presence;
        finding.controller = controller.number;
        finding.group = expected.number;
        Group* const group = FindNumber(controller.groups, expected.number);
        if (group == nullptr) {
            const std::string held = basics::Joined(expected.logicalDrives);
            Note(Level::Critical, finding, held.empty() ? "gone" : "gone, with " + held, controller.health);
            return;
        }
        if (!expected.level.empty() && !group->level.empty() && expected.level != group->level) {
            finding.rule = Rule::Use;
            Note(Level::Warning, finding, group->level + ", expected: " + expected.level, group->health);
            finding.rule = Rule::Presence;
        }
        finding.kind = PartKind::LogicalDrive;
        for (const std::string& number : expected.logicalDrives) {
            if (FindNumber(group->logicalDrives, number) == nullptr) {
                finding.part = number;
                Note(Level::Critical, finding, "gone", group->health);
            }
        }
    }

    /// `controller` is null where it is gone; then its drives are, too, but for those that were moved.
    void CompareDrive(const ExpectedController& of, const ExpectedDrive& expected, Controller* controller) {
        if (m_Expected.Find(expected.serial) != nullptr) {
            if (const Place* const present = m_Present.Find(expected.serial)) {
                CompareFound(of, expected, *present);
                return;
            }
        }
        if (controller == nullptr) {
            return;
        }
        const auto inSlot = std::find_if(
            controller->drives.begin(), controller->drives.end(), [&expected](const Drive& drive) {
                return drive.enclosure == expected.enclosure && drive.slot == expected.slot;
            });
        if (inSlot == controller->drives.end() || WasElsewhere(*inSlot, expected)) {
            Finding finding = FindingOf(of, expected);
            finding.rule = Rule::Presence;
            Note(Level::Warning, std::move(finding),
                 expected.role.empty() ? "gone" : "gone, expected: " + expected.role, controller->health);
        } else if (IsAnother(*inSlot, expected)) {
            m_Matched.insert(&*inSlot);
            Note({controller, &*inSlot}, Rule::Presence,
                 "another drive, expected: " + IdentityOf(FindingOf(of, expected)));
        } else {
            CompareFound(of, expected, {controller, &*inSlot});
        }
    }

    /// Whether the drive in a slot is one that was expected in another one.
    [[nodiscard]] bool WasElsewhere(const Drive& drive, const ExpectedDrive& here) const {
        const ExpectedDrive* const* const expected = m_Expected.Find(drive.serial);
        return expected != nullptr && *expected != &here;
    }

    static bool IsAnother(const Drive& drive, const ExpectedDrive& expected) {
        return !drive.serial.empty() && !expected.serial.empty() && drive.serial != expected.serial;
    }

    void CompareFound(const ExpectedController& of, const ExpectedDrive& expected, const Place& present) {
        const Drive& drive = *present.drive;
        m_Matched.insert(&drive);
        if (present.controller->number != of.number || drive.enclosure != expected.enclosure ||
            drive.slot != expected.slot) {
            Note(present, Rule::Place, "moved, expected: " + PlaceOf(FindingOf(of, expected)));
        }
        const std::string role = RoleOf(drive);
        if (!role.empty() && !expected.role.empty() && role != expected.role) {
            Note(present, Rule::Use, role + ", expected: " + expected.role);
        }
        const std::optional<std::uint64_t> errors = CountFrom(drive.mediaErrors);
        if (m_Limits.mediaErrorGrowth && errors && expected.mediaErrors && *errors > *expected.mediaErrors &&
            *errors - *expected.mediaErrors > *m_Limits.mediaErrorGrowth) {
            Note(present, Rule::MediaErrorGrowth,
                 MediaErrors(*errors) + ", " + std::to_string(*expected.mediaErrors) +
                     " when it was saved, limit of growth " + std::to_string(*m_Limits.mediaErrorGrowth));
        }
    }

    /// What nobody expects. A new controller is one finding with all that it has.
    void FindNews(const std::vector<ExpectedController>& expected, Controller& controller) {
        Finding finding;
        finding.rule = Rule::Presence;
        finding.controller = controller.number;
        const ExpectedController* const known = FindNumber(expected, controller.number);
        if (known == nullptr) {
            finding.product = controller.product;
            finding.serial = controller.serial;
            Note(Level::Warning, finding, "new", controller.health);
            return;
        }
        for (Group& group : controller.groups) {
            finding.kind = PartKind::Group;
            finding.group = group.number;
            finding.part.clear();
            const ExpectedGroup* const knownGroup = FindNumber(known->groups, group.number);
            if (knownGroup == nullptr) {
                Note(Level::Warning, finding, "new", group.health);
                continue;
            }
            for (LogicalDrive& drive : group.logicalDrives) {
                finding.kind = PartKind::LogicalDrive;
                finding.part = drive.number;
                const std::vector<std::string>& numbers = knownGroup->logicalDrives;
                if (std::find(numbers.begin(), numbers.end(), drive.number) == numbers.end()) {
                    Note(Level::Warning, finding, "new", drive.health);
                }
            }
        }
        for (Drive& drive : controller.drives) {
            if (!m_Matched.contains(&drive)) {
                Note({&controller, &drive}, Rule::Presence, "new");
            }
        }
    }

    Server& m_Server;
    const Limits& m_Limits;
    std::vector<Finding> m_Findings;
    UniqueNames<Place> m_Present;                  ///< drives by serial number
    UniqueNames<const ExpectedDrive*> m_Expected;  ///< the same
    std::unordered_set<const Drive*> m_Matched;    ///< those that were expected, there or elsewhere
};

}  // namespace

std::vector<Finding> Compare(Server& server, const Criteria& criteria) {
    Comparison comparison(server, criteria);
    comparison.CompareWithLimits();
    // The answer about one drive tells nothing of the others.
    if (criteria.expectations && criteria.expectations->controllers && OnlyDriveOf(server) == nullptr) {
        comparison.CompareWith(*criteria.expectations->controllers);
    }
    return std::move(comparison).Findings();
}

}  // namespace inventory
