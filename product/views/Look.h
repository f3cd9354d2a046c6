#pragma once

#include "inventory/Finding.h"
#include "inventory/Server.h"

namespace views {

/// How a state is shown, on a terminal and on the page alike.
enum class Look {
    Plain,  ///< says nothing of how well anything is
    Well,
    Busy,      ///< well, and something is under way
    Accepted,  ///< not well, as is known
    Unknown,
    Warning,
    Critical
};

[[nodiscard]] Look LookOf(inventory::Level level);
[[nodiscard]] Look LookOf(const inventory::Drive& drive);
[[nodiscard]] Look LookOf(const inventory::BackupUnit& unit);
[[nodiscard]] Look LookOf(const inventory::Finding& finding);

/// Of the controller's own status: a word that is well in itself says nothing good beside parts that are not.
[[nodiscard]] Look LookOfStatus(const inventory::Controller& controller);

}  // namespace views
