#pragma once

#include "inventory/Document.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace inventory {

// What a server has, as its document tells it. Texts are the report's own; one that is empty was not told:
// the key was missing, held nothing or was a placeholder. Pointers lead into the document, which must live as
// long.

/// A physical drive: a root "Physical Drive Information".
struct Drive {
    std::string number;      ///< "PD0"
    std::string group;       ///< "RG0"; empty when it is in none
    std::string membership;  ///< "LD0", or what it is instead: "GHS", "DHS", "RLD", "None"
    std::vector<std::string>
        statuses;        ///< "NO ERROR", "ERROR", "REBUILD", "UNKNOWN"; more than one in odd reports
    std::string detail;  ///< "ONLINE", "HOT SPARE", "FAILED", ...
    std::string enclosure, slot, position;
    std::string vendor, product, serial, firmware;
    std::string interfaceType, media, capacity;
    std::string temperature;  ///< "31 C"
    std::string power;        ///< "Active", "Stopped"
    std::string mediaErrors, otherErrors, predictiveFailures;
    const Item* item = nullptr;
    const Item* smart = nullptr;  ///< the title of its SMART data, where that was asked for
};

struct LogicalDrive {
    std::string number;  ///< "LD0"
    std::string name, capacity;
    std::string state;  ///< "OPTIMAL", "DEGRADED", ...
};

/// A drive in its group's own words.
struct Member {
    std::string number;  ///< "PD0"
    std::string enclosure, slot, capacity;
    std::size_t drive = kNoDrive;  ///< which of its controller's drives it is

    static constexpr std::size_t kNoDrive = static_cast<std::size_t>(-1);
};

/// A RAID group: a root "Logical Drive Information".
struct Group {
    std::string number;  ///< "RG0", or "scRG0" for one that serves as a cache
    std::string level, capacity;
    std::vector<LogicalDrive> logicalDrives;
    std::vector<LogicalDrive> caches;  ///< "Associated CacheCade LD"; drives of other groups
    std::vector<Member> members;
    const Item* item = nullptr;
};

/// What keeps a controller's cache over a loss of power: "### Battery Backup Unit Information ###".
struct BackupUnit {
    std::string name;         ///< "Battery Backup Unit"
    std::string presence;     ///< "Present", "Absent"
    std::string status;       ///< "Optimal", "Learning", ...
    std::string replacement;  ///< "Yes", "No"
};

/// A controller: a root "Controller Information" with the groups and drives that follow it.
struct Controller {
    std::string number;  ///< "0"
    std::string product, serial, firmware;
    std::string status;  ///< "OK"; many controllers print none
    std::vector<BackupUnit> backupUnits;
    std::vector<Group> groups;
    std::vector<Drive> drives;
    const Item* item = nullptr;  ///< null where groups or drives have no controller before them
};

struct Server {
    std::vector<Controller> controllers;
};

/// Reads a document of either method. `controller` is the number of the controller that a document without
/// one is about: GetPDInfo was asked for it.
[[nodiscard]] Server Survey(const Document& document, std::string_view controller = "");

/// The value of the first item of that name below `parent` that is no placeholder and not empty; else "".
[[nodiscard]] std::string ValueOf(const Item& parent, std::string_view name);

/// The drive's group in its controller; null where it is in none.
[[nodiscard]] const Group* GroupOf(const Controller& controller, const Drive& drive);

/// The drive that a group's member is; null where its report is not there.
[[nodiscard]] const Drive* DriveOf(const Controller& controller, const Member& member);

/// What the drive's report says of its state: "ONLINE"; the module's word, "NO ERROR", where that is all
/// there is.
[[nodiscard]] std::string StatusOf(const Drive& drive);

/// What the drive does: "LD0", "global spare", "spare of RG2", "unused", or the report's word.
[[nodiscard]] std::string RoleOf(const Drive& drive);

/// "SAS HDD": its interface and its medium.
[[nodiscard]] std::string TypeOf(const Drive& drive);

}  // namespace inventory
