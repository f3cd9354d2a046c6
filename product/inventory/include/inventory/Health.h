#pragma once

#include "inventory/Level.h"
#include "inventory/Server.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace inventory {

/// Something that is not well.
struct Finding {
    Level level = Level::Unknown;
    std::string controller = {};  ///< its number; empty where no controller is named
    std::string group = {};       ///< "RG1"; empty where none is concerned
    std::string part = {};        ///< "PD9", "LD1", "Battery Backup Unit"; empty for the controller itself
    std::string enclosure = {}, slot = {};  ///< of a drive
    std::string product = {}, serial = {};  ///< of a drive: its model and its serial number
    std::string what = {};                  ///< "FAILED"; "DEGRADED, nothing is being rebuilt"
};

/// The place of a finding: "controller 0, RG1, PD9 in enclosure 16 slot 1".
[[nodiscard]] std::string PlaceOf(const Finding& finding);

/// Which drive it is, whatever slot it is put into: "TF600S15, serial number 7K00025200C4"; empty of other
/// parts.
[[nodiscard]] std::string IdentityOf(const Finding& finding);

/// All of it: "controller 0, RG1, PD9 in enclosure 16 slot 1: FAILED (TF600S15, serial number 7K00025200C4)".
[[nodiscard]] std::string Describe(const Finding& finding);

struct Counts {
    std::size_t controllers = 0, groups = 0, logicalDrives = 0, drives = 0;
};

struct Health {
    Level level = Level::Ok;
    std::vector<Finding>
        findings;  ///< the worst first; else a controller itself, its units, drives and groups
    Counts counts;
};

/// Judges every part, which then knows how well it is, and collects what is not well. A server without a
/// drive is Unknown: nothing that could be lost was seen to be well.
[[nodiscard]] Health Judge(Server& server);

/// Whether a part is well and something is under way with it that ends by itself: a drive that says COPYBACK,
/// a backup unit that says Learning or Charging. It needs nobody, and is not yet as it is to be.
[[nodiscard]] bool IsBusy(const Drive& drive);
[[nodiscard]] bool IsBusy(const BackupUnit& unit);

/// What there is, in words: "2 controllers, 5 groups, 6 logical drives, 26 drives".
[[nodiscard]] std::string Describe(const Counts& counts);

/// What it comes to, in one line without the level: "4 critical, 3 warnings in 2 controllers, 26 drives".
[[nodiscard]] std::string Headline(const Health& health);

/// How many findings are of that level.
[[nodiscard]] std::size_t CountOf(const Health& health, Level level);

}  // namespace inventory
