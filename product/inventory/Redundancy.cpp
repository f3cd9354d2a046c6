#include "Redundancy.h"

#include "basics/Words.h"

#include <algorithm>
#include <optional>
#include <string_view>

namespace inventory {
namespace {

using basics::IsSameWord;

constexpr std::string_view kPartiallyDegraded = "PARTIALLY DEGRADED";
constexpr std::string_view kDegraded = "DEGRADED";

/// How many drives a level bears to lose: of the group, or, where it is made of several, of any one of these.
/// Which drive belongs to which of them is told nowhere, so the worst is assumed.
struct Scheme {
    std::size_t bears = 0;
    bool isNested = false;
};

std::optional<Scheme> SchemeOf(const Group& group) {
    struct Rule {
        std::string_view number;
        Scheme scheme;
    };
    constexpr Rule kRules[] = {{"0", {0, false}}, {"5", {1, false}}, {"6", {2, false}}, {"10", {1, true}},
                               {"50", {1, true}}, {"60", {2, true}}, {"00", {0, true}}};
    const std::size_t digit = group.level.find_first_of("0123456789");
    if (digit == std::string::npos) {
        return {};
    }
    const std::size_t end = group.level.find_first_not_of("0123456789", digit);
    const std::string_view number =
        std::string_view(group.level).substr(digit, end == std::string::npos ? end : end - digit);
    if (number == "1") {
        return Scheme{1, group.members.size() > 2};  // A mirror of more than two is several pairs.
    }
    for (const Rule& rule : kRules) {
        if (rule.number == number) {
            return rule.scheme;
        }
    }
    return {};
}

bool Says(const std::vector<std::string>& states, std::string_view state) {
    return std::any_of(states.begin(), states.end(),
                       [state](const std::string& each) { return IsSameWord(each, state); });
}

bool AnyIs(const Group& group, bool (*isSo)(const LogicalDrive&)) {
    return std::any_of(group.logicalDrives.begin(), group.logicalDrives.end(), isSo);
}

bool IsWhollyDegraded(const LogicalDrive& drive) {
    return IsSameWord(drive.state, kDegraded);
}

std::size_t CountRebuilding(const Controller& controller, const Group& group) {
    const auto place = static_cast<std::size_t>(&group - controller.groups.data());
    return static_cast<std::size_t>(
        std::count_if(controller.drives.begin(), controller.drives.end(), [place](const Drive& drive) {
            return drive.groupPlace == place && Says(drive.statuses, "REBUILD");
        }));
}

/// Members that are seen to be of no use, and those that nobody reports.
struct Absent {
    std::size_t gone = 0, unseen = 0;
};

Absent CountAbsent(const Controller& controller, const Group& group) {
    Absent absent;
    for (const Member& member : group.members) {
        const Drive* const drive = DriveOf(controller, member);
        if (drive == nullptr) {
            ++absent.unseen;
        } else if (Says(drive->statuses, "ERROR") || HasDroppedOut(*drive)) {
            ++absent.gone;
        }
    }
    if (const auto promised = basics::NumberFrom<std::size_t>(group.memberCount);
        promised && *promised > group.members.size()) {
        absent.unseen += *promised - group.members.size();
    }
    return absent;
}

Risk RiskOf(const Standing& standing, const std::optional<Scheme>& scheme) {
    const std::size_t down = standing.gone + standing.rebuilding;
    if (down == 0) {
        return Risk::None;
    }
    if (!scheme) {
        return standing.gone > 0 ? Risk::Exposed : Risk::Mended;
    }
    // Where several groups make one, those that are rebuilt may stand in different ones, or the data were
    // gone, which the logical drive would tell.
    if (scheme->isNested && scheme->bears > 0 && standing.gone == 0) {
        return Risk::Mended;
    }
    if (down > scheme->bears) {
        return scheme->isNested && scheme->bears > 0 ? Risk::Exposed : Risk::Lost;
    }
    if (down < scheme->bears) {
        return standing.gone > 0 ? Risk::Reduced : Risk::Mended;
    }
    return standing.rebuilding > 0 ? Risk::Mended : Risk::Exposed;
}

}  // namespace

bool IsDegraded(const LogicalDrive& drive) {
    return IsSameWord(drive.state, kDegraded) || IsSameWord(drive.state, kPartiallyDegraded);
}

bool HasDroppedOut(const Drive& member) {
    const std::vector<std::string_view> words = basics::Words(member.detail, ",");
    return Says(member.statuses, "NO ERROR") &&
           std::any_of(words.begin(), words.end(), [](std::string_view word) {
               return !IsSameWord(basics::Trimmed(word), "ONLINE") &&
                      !IsSameWord(basics::Trimmed(word), "COPYBACK");
           });
}

Standing StandingOf(const Controller& controller, const Group& group) {
    const std::optional<Scheme> scheme = SchemeOf(group);
    const Absent absent = CountAbsent(controller, group);
    Standing standing;
    standing.gone = absent.gone;
    standing.rebuilding = CountRebuilding(controller, group);
    // A drive that was pulled is in no report any more; then only the logical drives tell that it is missing.
    if (AnyIs(group, IsDegraded)) {
        standing.gone += absent.unseen;
        if (standing.gone + standing.rebuilding == 0) {
            standing.gone =
                scheme && AnyIs(group, IsWhollyDegraded) ? std::max<std::size_t>(scheme->bears, 1) : 1;
        }
    }
    standing.risk = RiskOf(standing, scheme);
    standing.bearsOneMore = scheme && standing.gone + standing.rebuilding < scheme->bears;
    return standing;
}

Level LevelOf(Risk risk) {
    constexpr Level kLevels[] = {Level::Ok, Level::Warning, Level::Warning, Level::Critical, Level::Critical};
    return kLevels[static_cast<std::size_t>(risk)];
}

std::string Describe(const Standing& standing) {
    switch (standing.risk) {
        case Risk::None:
            return "";
        case Risk::Reduced:
            return "another drive may fail";
        case Risk::Mended:
            return "being rebuilt";
        case Risk::Exposed:
            return standing.rebuilding > 0 ? "not all is being rebuilt" : "nothing is being rebuilt";
        case Risk::Lost:
            break;
    }
    return "more drives are gone than the level bears";
}

}  // namespace inventory
