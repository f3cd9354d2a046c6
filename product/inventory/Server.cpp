#include "inventory/Server.h"

#include "Titles.h"
#include "basics/Words.h"

#include <algorithm>
#include <iterator>
#include <unordered_map>

namespace inventory {
namespace {

constexpr std::string_view kControllerRoot = "Controller Information";
constexpr std::string_view kGroupRoot = "Logical Drive Information";
constexpr std::string_view kDriveRoot = "Physical Drive Information";

constexpr std::string_view kFirmware = "### Firmware/BIOS/Driver Information ###";
constexpr std::string_view kControllerSettings = "### Controller Settings Information ###";
constexpr std::string_view kGroupSettings = "### LD Settings Information ###";
// Printed with the general keys, and moved by the module.
constexpr std::string_view kAccessPolicy = "Access Policy";
constexpr std::string_view kTitleMark = "### ";
constexpr std::string_view kTitleEnd = " Information ###";
constexpr std::string_view kBackupUnit = "Backup Unit";
constexpr std::string_view kControllerNumber = "Controller No.";
constexpr std::string_view kNoGroup = "-";

/// Calls `work` with every child of that name.
template <typename Work>
void ForEach(const Item& parent, std::string_view name, Work work) {
    for (const Item& child : ChildrenOf(parent)) {
        if (child.name == name) {
            work(child);
        }
    }
}

/// The value of a key in the sections of that title.
std::string ValueIn(const Item& root, std::string_view title, std::string_view key) {
    std::string value;
    ForEach(root, title, [&](const Item& section) {
        if (value.empty()) {
            value = ValueOf(section, key);
        }
    });
    return value;
}

/// Every different value of a key in the sections of that title, in order.
std::vector<std::string> ValuesIn(const Item& root, std::string_view title, std::string_view key) {
    std::vector<std::string> values;
    ForEach(root, title, [&](const Item& section) {
        ForEach(section, key, [&](const Item& item) {
            if (!item.isPlaceholder && std::find(values.begin(), values.end(), item.value) == values.end()) {
                values.push_back(item.value);
            }
        });
    });
    return values;
}

/// Whether a section of that title tells anything; `but` does not count.
bool TellsOf(const Item& root, std::string_view title, std::string_view but = "") {
    bool tells = false;
    ForEach(root, title, [&](const Item& section) {
        for (const Item& key : ChildrenOf(section)) {
            tells = tells || (!key.isPlaceholder && key.name != but);
        }
    });
    return tells;
}

/// "Battery Backup Unit" of "### Battery Backup Unit Information ###".
std::string WithoutMarks(std::string title) {
    if (title.starts_with(kTitleMark) && title.ends_with(kTitleEnd) &&
        title.size() >= kTitleMark.size() + kTitleEnd.size()) {
        title = title.substr(kTitleMark.size(), title.size() - kTitleMark.size() - kTitleEnd.size());
    }
    return title;
}

/// Whatever the section is called, a status in it is somebody's.
std::vector<BackupUnit> BackupUnitsOf(const Item& root) {
    std::vector<BackupUnit> units;
    for (const Item& section : ChildrenOf(root)) {
        BackupUnit unit;
        unit.status = ValueOf(section, "Status");
        unit.replacement = ValueOf(section, "Replacement Required");
        if (unit.status.empty() && unit.replacement.empty() &&
            section.name.find(kBackupUnit) == std::string::npos) {
            continue;
        }
        unit.name = WithoutMarks(section.name);
        for (const std::string_view key : {"BBU", "FBU"}) {
            unit.presence = unit.presence.empty() ? ValueOf(section, key) : unit.presence;
        }
        units.push_back(std::move(unit));
    }
    return units;
}

Controller ControllerFrom(const Item& root) {
    Controller controller;
    controller.number = ValueIn(root, kGeneral, kControllerNumber);
    controller.product = ValueIn(root, kGeneral, "Product Name");
    controller.serial = ValueIn(root, kGeneral, "Serial Number");
    controller.status = ValueIn(root, kGeneral, "Controller Status");
    controller.firmware = ValueIn(root, kFirmware, "Firmware Package Version");
    if (controller.firmware.empty()) {
        controller.firmware = ValueIn(root, kFirmware, "Firmware Version");
    }
    controller.backupUnits = BackupUnitsOf(root);
    controller.hasTitle = TellsOf(root, kGeneral, kControllerNumber);
    controller.hasSettings = TellsOf(root, kControllerSettings);
    controller.item = &root;
    return controller;
}

std::vector<LogicalDrive> LogicalDrivesOf(const Item& section, std::string_view name) {
    std::vector<LogicalDrive> drives;
    ForEach(section, name, [&](const Item& item) {
        if (!item.isPlaceholder) {
            drives.push_back({ValueOf(item, "LD No."), ValueOf(item, "Name"), ValueOf(item, "Capacity"),
                              ValueOf(item, "State")});
        }
    });
    return drives;
}

void Append(std::vector<LogicalDrive>& drives, std::vector<LogicalDrive> more) {
    std::move(more.begin(), more.end(), std::back_inserter(drives));
}

Group GroupFrom(const Item& root) {
    Group group;
    group.number = ValueIn(root, kGeneral, "RG No.");
    group.level = ValueIn(root, kGeneral, "RAID Level");
    group.capacity = ValueIn(root, kGeneral, "Total Capacity");
    ForEach(root, kGeneral, [&](const Item& section) {
        Append(group.logicalDrives, LogicalDrivesOf(section, "LD List"));
        Append(group.caches, LogicalDrivesOf(section, "Associated CacheCade LD"));
    });
    ForEach(root, "PD List", [&](const Item& item) {
        group.members.push_back({ValueOf(item, "PD No."), ValueOf(item, "Enclosure No."),
                                 ValueOf(item, "Slot No."), ValueOf(item, "Capacity"), kNowhere, &item});
    });
    group.memberCount = ValueIn(root, kGeneral, "# of PD");
    group.hasSettings = TellsOf(root, kGroupSettings, kAccessPolicy);
    group.item = &root;
    return group;
}

Drive DriveFrom(const Item& root) {
    const auto general = [&](std::string_view key) { return ValueIn(root, kGeneral, key); };
    const auto place = [&](std::string_view key) { return ValueIn(root, kEnclosure, key); };
    Drive drive;
    drive.number = general("PD No.");
    drive.group = general("RG No.");
    if (drive.group == kNoGroup) {
        drive.group.clear();
    }
    drive.membership = general("LD No.");
    drive.statuses = ValuesIn(root, kGeneral, "PD Status");
    drive.detail = basics::Joined(ValuesIn(root, kGeneral, "PD Status(Detail)"));
    drive.enclosure = place("Enclosure No.");
    drive.slot = place("Slot No.");
    drive.position = place("Enclosure Position");
    drive.vendor = general("Vendor");
    drive.product = general("Product ID");
    drive.serial = general("Serial Number");
    drive.firmware = general("Firmware Version");
    drive.interfaceType = general("Interface Type");
    drive.media = general("Media Type");
    drive.capacity = general("Capacity");
    drive.temperature = general("Temperature");
    drive.power = general("Power Status");
    drive.mediaErrors = general("Media Error Count");
    drive.otherErrors = general("Other Error Count");
    drive.predictiveFailures = general("Predictive Failure Count");
    drive.item = &root;
    for (const Item& section : ChildrenOf(root)) {
        if (section.name.starts_with(kSmart)) {
            drive.smart = &section;
        }
    }
    return drive;
}

/// Finds out which drives the members of groups are, and the drives' groups. The first of a number is the one
/// that is meant.
void Connect(Controller& controller) {
    std::unordered_map<std::string_view, std::size_t> groups;
    for (std::size_t place = 0; place < controller.groups.size(); ++place) {
        groups.try_emplace(controller.groups[place].number, place);
    }
    for (Drive& drive : controller.drives) {
        const auto found = groups.find(drive.group);
        drive.groupPlace = found == groups.end() || drive.group.empty() ? kNowhere : found->second;
    }
    std::unordered_map<std::string_view, std::size_t> places;
    for (std::size_t place = 0; place < controller.drives.size(); ++place) {
        places.try_emplace(controller.drives[place].number, place);
    }
    for (Group& group : controller.groups) {
        for (Member& member : group.members) {
            const auto found = places.find(member.number);
            if (found != places.end() && !member.number.empty()) {
                member.drive = found->second;
            }
        }
    }
}

/// Puts roots under controllers. A document tells of each controller in turn: itself, its groups, its drives.
/// So a root that does not come behind the one before it begins the next controller, even where that is not
/// named.
class Surveyor final {
  public:
    explicit Surveyor(std::string_view controller) : m_Number(controller) {}

    void Take(const Item& root) {
        if (root.name == kControllerRoot) {
            m_Server.controllers.push_back(ControllerFrom(root));
            m_Stage = Stage::Controller;
        } else if (root.name == kGroupRoot) {
            Behind(Stage::Groups).groups.push_back(GroupFrom(root));
        } else if (root.name == kDriveRoot) {
            Behind(Stage::Drives).drives.push_back(DriveFrom(root));
        }
    }

    [[nodiscard]] Server Result() {
        for (Controller& controller : m_Server.controllers) {
            Connect(controller);
        }
        return std::move(m_Server);
    }

  private:
    enum class Stage { Start, Controller, Groups, Drives };

    Controller& Behind(Stage stage) {
        if (m_Server.controllers.empty() || stage < m_Stage) {
            m_Server.controllers.emplace_back().number = m_Number;
        }
        m_Stage = stage;
        return m_Server.controllers.back();
    }

    std::string m_Number;
    Server m_Server;
    Stage m_Stage = Stage::Start;
};

}  // namespace

Server Survey(const Document& document, std::string_view controller) {
    Surveyor surveyor(controller);
    for (const Item& root : document.Roots()) {
        surveyor.Take(root);
    }
    return surveyor.Result();
}

std::string ValueOf(const Item& parent, std::string_view name) {
    for (const Item& child : ChildrenOf(parent)) {
        if (child.name == name && !child.isPlaceholder && !child.value.empty()) {
            return child.value;
        }
    }
    return "";
}

const Group* GroupOf(const Controller& controller, const Drive& drive) {
    return drive.groupPlace < controller.groups.size() ? &controller.groups[drive.groupPlace] : nullptr;
}

const Drive* DriveOf(const Controller& controller, const Member& member) {
    return member.drive < controller.drives.size() ? &controller.drives[member.drive] : nullptr;
}

const Drive* OnlyDriveOf(const Server& server) {
    const bool isAboutDrive = server.controllers.size() == 1 && server.controllers.front().item == nullptr &&
                              server.controllers.front().groups.empty() &&
                              server.controllers.front().drives.size() == 1;
    return isAboutDrive ? &server.controllers.front().drives.front() : nullptr;
}

std::string StatusOf(const Drive& drive) {
    return drive.detail.empty() && !drive.statuses.empty() ? drive.statuses.front() : drive.detail;
}

std::string TypeOf(const Drive& drive) {
    const bool isPair = !drive.interfaceType.empty() && !drive.media.empty();
    return drive.interfaceType + (isPair ? " " : "") + drive.media;
}

std::string RoleOf(const Drive& drive) {
    if (drive.membership == "GHS") {
        return "global spare";
    }
    if (drive.membership == "DHS") {
        return "spare of " + (drive.group.empty() ? "a group" : drive.group);
    }
    if (drive.membership == "RLD") {
        return "replaced (RLD)";
    }
    return drive.membership == "None" ? "unused" : drive.membership;
}

}  // namespace inventory
