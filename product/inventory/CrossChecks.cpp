#include "CrossChecks.h"

#include "Redundancy.h"
#include "basics/Words.h"

#include <algorithm>
#include <optional>

namespace inventory {
namespace {

constexpr const char* kEndsEarly = "its report ends early";

/// "252:3"; empty where the slot is not told.
std::string SlotOf(const Drive& drive) {
    return drive.slot.empty() ? "" : drive.enclosure + ':' + drive.slot;
}

bool IsLogicalDrive(std::string_view word) {
    constexpr std::string_view kPrefix = "LD";
    return word.starts_with(kPrefix) && word.size() > kPrefix.size() && basics::IsDigit(word[kPrefix.size()]);
}

template <typename CountsByName, typename Name>
bool IsRepeated(const CountsByName& counts, const Name& name) {
    const auto found = counts.find(name);
    return found != counts.end() && found->second > 1;
}

template <typename CountsByName, typename Name>
void Count(const Name& name, CountsByName& counts) {
    if (!name.empty()) {
        ++counts[name];
    }
}

std::string WrongCountOf(const Group& group) {
    if (group.memberCount.empty()) {
        return "how many drives it has is not told";
    }
    const auto count = basics::NumberFrom<std::size_t>(group.memberCount);
    if (!count) {
        return "it has \"" + group.memberCount + "\" drives";
    }
    return *count == group.members.size()
               ? ""
               : "it has " + group.memberCount + " drives, and names " + std::to_string(group.members.size());
}

}  // namespace

CrossChecks::CrossChecks(const Controller& controller)
    : m_Controller(controller), m_NamedBy(controller.drives.size()) {
    for (std::size_t place = 0; place < controller.groups.size(); ++place) {
        const Group& group = controller.groups[place];
        Count(std::string_view(group.number), m_GroupCounts);
        for (const LogicalDrive& drive : group.logicalDrives) {
            m_LogicalDrives.try_emplace(drive.number, place);
            Count(std::string_view(drive.number), m_LogicalDriveCounts);
        }
        for (const Member& member : group.members) {
            if (member.drive < m_NamedBy.size()) {
                m_NamedBy[member.drive].push_back(place);
            }
        }
    }
    for (const Drive& drive : controller.drives) {
        Count(std::string_view(drive.number), m_DriveCounts);
        Count(SlotOf(drive), m_SlotCounts);
    }
}

std::vector<std::string> CrossChecks::OfController() const {
    std::vector<std::string> wrongs;
    if (m_Controller.item == nullptr) {
        wrongs.emplace_back("its own report is missing");
    } else if (!m_Controller.hasTitle) {
        wrongs.emplace_back("it tells nothing of itself");
    } else if (!m_Controller.hasSettings) {
        wrongs.emplace_back(kEndsEarly);
    }
    if (m_Controller.groups.empty() && m_Controller.drives.empty()) {
        wrongs.emplace_back("neither groups nor drives are told");
    }
    return wrongs;
}

std::vector<std::string> CrossChecks::Of(const Group& group) const {
    std::vector<std::string> wrongs;
    if (group.logicalDrives.empty()) {
        wrongs.emplace_back("no logical drive is told");
    }
    if (std::string wrong = WrongCountOf(group); !wrong.empty()) {
        wrongs.push_back(std::move(wrong));
    } else if (!group.hasSettings) {
        wrongs.emplace_back(kEndsEarly);
    }
    if (IsRepeated(m_GroupCounts, std::string_view(group.number))) {
        wrongs.emplace_back(kRepeated);
    }
    return wrongs;
}

std::vector<std::string> CrossChecks::Of(const LogicalDrive& drive) const {
    return IsRepeated(m_LogicalDriveCounts, std::string_view(drive.number))
               ? std::vector<std::string>{kRepeated}
               : std::vector<std::string>{};
}

std::vector<std::string> CrossChecks::Of(const Drive& drive) const {
    std::vector<std::string> wrongs;
    AddMembership(drive, wrongs);
    if (drive.slot.empty()) {
        wrongs.emplace_back("its slot is not told");
    }
    if (IsRepeated(m_DriveCounts, std::string_view(drive.number))) {
        wrongs.emplace_back(kRepeated);
    } else if (IsRepeated(m_SlotCounts, SlotOf(drive))) {
        wrongs.emplace_back("another drive is told in the same slot");
    }
    return wrongs;
}

std::size_t CrossChecks::GroupNaming(const Drive& drive) const {
    const std::vector<std::size_t>& groups = m_NamedBy[PlaceOf(drive)];
    const bool isNamed =
        !groups.empty() && (drive.groupPlace == kNowhere || drive.groupPlace == groups.front());
    return isNamed ? groups.front() : kNowhere;
}

std::size_t CrossChecks::PlaceOf(const Drive& drive) const {
    return static_cast<std::size_t>(&drive - m_Controller.drives.data());
}

void CrossChecks::AddMembership(const Drive& drive, std::vector<std::string>& wrongs) const {
    const std::vector<std::size_t>& namedBy = m_NamedBy[PlaceOf(drive)];
    bool isInLogicalDrive = false;
    for (const std::string_view word : basics::Words(drive.membership, ", ")) {
        if (!IsLogicalDrive(word)) {
            continue;
        }
        isInLogicalDrive = true;
        const auto found = m_LogicalDrives.find(word);
        if (found == m_LogicalDrives.end()) {
            wrongs.push_back("it is in " + std::string(word) + ", which is not reported");
        } else if (drive.groupPlace != kNowhere && found->second != drive.groupPlace) {
            wrongs.push_back("it is in " + std::string(word) + ", which is not in " + drive.group);
        }
    }
    if (!drive.group.empty() && drive.groupPlace == kNowhere) {
        wrongs.push_back("it is in " + drive.group + ", which is not reported");
    }
    if (isInLogicalDrive && drive.group.empty()) {
        wrongs.emplace_back("its group is not told");
    }
    if (isInLogicalDrive && drive.groupPlace != kNowhere &&
        std::find(namedBy.begin(), namedBy.end(), drive.groupPlace) == namedBy.end()) {
        wrongs.push_back(drive.group + " does not name it");
    }
    for (const std::size_t place : namedBy) {
        const bool saysOther = drive.groupPlace != place && !drive.group.empty();
        if (saysOther || (!isInLogicalDrive && !HasDroppedOut(drive))) {
            const std::string& said = saysOther ? drive.group : drive.membership;
            wrongs.push_back(m_Controller.groups[place].number + " names it, it says " +
                             (said.empty() ? "nothing" : said));
        }
    }
    if (namedBy.size() > 1) {
        wrongs.emplace_back("it is named as a member more than once");
    }
}

}  // namespace inventory
