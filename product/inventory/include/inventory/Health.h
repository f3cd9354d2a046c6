#pragma once

#include "inventory/Criteria.h"
#include "inventory/Finding.h"
#include "inventory/Level.h"
#include "inventory/Server.h"

#include <cstddef>
#include <string>
#include <vector>

namespace inventory {

struct Counts {
    std::size_t controllers = 0, groups = 0, logicalDrives = 0, drives = 0;
};

struct Health {
    Level level = Level::Ok;
    /// The worst first, those that are accepted last; else a controller itself, its units, drives and groups.
    std::vector<Finding> findings;
    Counts counts;
};

/// Judges every part, which then knows how well it is, and collects what is not well, or not as somebody
/// wants it. A server without a drive is Unknown: nothing that could be lost was seen to be well. What is
/// accepted does not count for the server; the part itself is no better for it.
[[nodiscard]] Health Judge(Server& server, const Criteria& criteria = {});

/// Whether a part is well and something is under way with it that ends by itself: a drive that says COPYBACK,
/// a backup unit that says Learning or Charging. It needs nobody, and is not yet as it is to be.
[[nodiscard]] bool IsBusy(const Drive& drive);
[[nodiscard]] bool IsBusy(const BackupUnit& unit);

/// What a drive does, by its own words alone.
enum class Duty { Serves, IsSpare, IsUnused, IsCopied, IsRebuilt, HasFailed, IsUnknown };
[[nodiscard]] Duty DutyOf(const Drive& drive);

/// What there is, in words: "2 controllers, 5 groups, 6 logical drives, 26 drives".
[[nodiscard]] std::string Describe(const Counts& counts);

/// What it comes to, in one line without the level: "4 critical, 3 warnings in 2 controllers, 26 drives".
[[nodiscard]] std::string Headline(const Health& health);

/// How many findings are of that level; not those that are accepted.
[[nodiscard]] std::size_t CountOf(const Health& health, Level level);

[[nodiscard]] std::size_t CountAccepted(const Health& health);

}  // namespace inventory
