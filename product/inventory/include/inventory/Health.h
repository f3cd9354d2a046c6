#pragma once

#include "inventory/Server.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace inventory {

/// How well something is, from well to bad: the worst of a server's parts is how well the server is. The
/// rules stand in docs/health.md.
enum class Level { Ok, Unknown, Warning, Critical };

/// "OK", "UNKNOWN", "WARNING", "CRITICAL".
[[nodiscard]] std::string_view NameOf(Level level);

/// The number that monitoring plug-ins have for a level: 0 well, 1 warning, 2 critical, 3 unknown.
[[nodiscard]] int PlugInStatusOf(Level level);

/// Something that is not well.
struct Finding {
    Level level = Level::Unknown;
    std::string controller;       ///< its number; empty where no controller is named
    std::string group;            ///< "RG1"; empty where none is concerned
    std::string part;             ///< "PD9", "LD1", "Battery Backup Unit"; empty for the controller itself
    std::string enclosure, slot;  ///< of a drive
    std::string what;             ///< "FAILED"; "DEGRADED, nothing is being rebuilt"
};

/// The place of a finding: "controller 0, RG1, PD9 in enclosure 16 slot 1".
[[nodiscard]] std::string PlaceOf(const Finding& finding);

struct Counts {
    std::size_t controllers = 0, groups = 0, logicalDrives = 0, drives = 0;
};

struct Health {
    Level level = Level::Ok;
    std::vector<Finding> findings;  ///< the worst first, else in the document's order
    Counts counts;
};

/// A server without a drive is Unknown: nothing that could be lost was seen to be well.
[[nodiscard]] Health Judge(const Server& server);

// The parts, one by one; a state that has no rule is Unknown. An absent backup unit and a controller that
// prints no status are Ok: many have none.
[[nodiscard]] Level LevelOf(const Drive& drive);
[[nodiscard]] Level LevelOf(const Controller& controller, const Group& group, const LogicalDrive& drive);
[[nodiscard]] Level LevelOf(const BackupUnit& unit);
/// The controller's own status, without what belongs to it.
[[nodiscard]] Level LevelOf(const Controller& controller);
/// The worst of a group's logical drives and members.
[[nodiscard]] Level LevelOf(const Controller& controller, const Group& group);
/// The worst of a controller's own status and of everything that belongs to it.
[[nodiscard]] Level OverallLevelOf(const Controller& controller);

/// What there is, in words: "2 controllers, 5 groups, 6 logical drives, 26 drives".
[[nodiscard]] std::string Describe(const Counts& counts);

/// What it comes to, in one line without the level: "4 critical, 3 warnings in 2 controllers, 26 drives".
[[nodiscard]] std::string Headline(const Health& health);

/// How many findings are of that level.
[[nodiscard]] std::size_t CountOf(const Health& health, Level level);

}  // namespace inventory
