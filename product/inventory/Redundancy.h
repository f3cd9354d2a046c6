#pragma once

#include "inventory/Server.h"

#include <cstddef>
#include <string>

namespace inventory {

/// What one more fault would do to a group.
enum class Risk {
    None,     ///< nothing that it was not meant to do
    Reduced,  ///< drives are gone, and yet another one may go
    Mended,   ///< it would take data along, but what is gone is being brought back
    Exposed,  ///< it would take data along, and nothing brings back what is gone
    Lost,     ///< data went already: more drives are gone than the level bears
};

/// How many of a group's drives are of no use, and what follows.
struct Standing {
    std::size_t gone = 0;        ///< failed, dropped out or pulled, and nothing takes their place
    std::size_t rebuilding = 0;  ///< no use until that is done
    Risk risk = Risk::None;
    bool bearsOneMore = true;  ///< whether another drive may go without data
};

[[nodiscard]] Standing StandingOf(const Controller& controller, const Group& group);

[[nodiscard]] Level LevelOf(Risk risk);

/// "another drive may fail", "nothing is being rebuilt"; empty where nothing is at risk.
[[nodiscard]] std::string Describe(const Standing& standing);

/// "DEGRADED" or "PARTIALLY DEGRADED": what a level bears has been borne, in part or wholly.
[[nodiscard]] bool IsDegraded(const LogicalDrive& drive);

/// Whether a drive that its group names as a member says that it has another use by now, or none: it fell out
/// of the group, and may look well.
[[nodiscard]] bool HasDroppedOut(const Drive& member);

}  // namespace inventory
