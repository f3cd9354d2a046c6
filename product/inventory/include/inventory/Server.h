#pragma once

#include "inventory/Document.h"
#include "inventory/Level.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace inventory {

/// For places in lists that lead nowhere.
constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);

// What a server has, as its document tells it. Texts are the report's own; one that is empty was not told:
// the key was missing, held nothing or was a placeholder. Pointers lead into the document, which must live as
// long. How well each part is, `health`, is Unknown until it has been judged: the worst that was found of it
// and of what belongs to it.

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
    std::size_t groupPlace = kNowhere;  ///< which of its controller's groups it names
    Level health = Level::Unknown;
    const Item* item = nullptr;
    const Item* smart = nullptr;  ///< the title of its SMART data, where that was asked for
};

struct LogicalDrive {
    std::string number;  ///< "LD0"
    std::string name, capacity;
    std::string state;  ///< "OPTIMAL", "DEGRADED", ...
    Level health = Level::Unknown;
};

/// A drive in its group's own words.
struct Member {
    std::string number;  ///< "PD0"
    std::string enclosure, slot, capacity;
    std::size_t drive = kNowhere;  ///< which of its controller's drives it is
    const Item* item = nullptr;
};

/// A RAID group: a root "Logical Drive Information".
struct Group {
    std::string number;  ///< "RG0", or "scRG0" for one that serves as a cache
    std::string level, capacity;
    std::vector<LogicalDrive> logicalDrives;
    std::vector<LogicalDrive> caches;  ///< "Associated CacheCade LD"; drives of other groups
    std::vector<Member> members;
    std::string memberCount;   ///< how many there should be: "4"
    bool hasSettings = false;  ///< the end of its report, "### LD Settings Information ###", tells something
    Level health = Level::Unknown;
    const Item* item = nullptr;
};

/// A section of a controller that has a state of its own. Mostly what keeps the cache over a loss of power:
/// "### Battery Backup Unit Information ###".
struct BackupUnit {
    std::string name;         ///< "Battery Backup Unit"
    std::string presence;     ///< "Present", "Absent"
    std::string status;       ///< "Optimal", "Learning", ...
    std::string replacement;  ///< "Yes", "No"
    Level health = Level::Unknown;
};

/// A controller: a root "Controller Information" with the groups and drives that follow it.
struct Controller {
    std::string number;  ///< "0"
    std::string product, serial, firmware;
    std::string status;                   ///< "OK"; many controllers print none
    Level statusHealth = Level::Unknown;  ///< of the controller itself, without what belongs to it
    Level health = Level::Unknown;
    std::vector<BackupUnit> backupUnits;
    std::vector<Group> groups;
    std::vector<Drive> drives;
    bool hasTitle = false;  ///< the start of its report tells more than its number
    bool hasSettings =
        false;  ///< the end of its report, "### Controller Settings Information ###", tells something
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

/// The drive's group in its controller; null where it is in none, or in one that is not there.
[[nodiscard]] const Group* GroupOf(const Controller& controller, const Drive& drive);

/// The drive that a group's member is; null where its report is not there.
[[nodiscard]] const Drive* DriveOf(const Controller& controller, const Member& member);

/// What the drive's report says of its state: "ONLINE"; the module's word, "NO ERROR", where that is all
/// there is.
[[nodiscard]] std::string StatusOf(const Drive& drive);

/// The drive that a document is about which tells of no controller, as the answer about a single drive does;
/// else null.
[[nodiscard]] const Drive* OnlyDriveOf(const Server& server);

/// What the drive does: "LD0", "global spare", "spare of RG2", "replaced (RLD)" for one that another drive
/// has taken the place of, "unused", or the report's word.
[[nodiscard]] std::string RoleOf(const Drive& drive);

/// "SAS HDD": its interface and its medium.
[[nodiscard]] std::string TypeOf(const Drive& drive);

}  // namespace inventory
