#pragma once

#include "inventory/Server.h"

#include <string>
#include <vector>

namespace calls {

/// Where a drive is, in the words of its report, and how GetPDInfo is asked for it; empty where a report does
/// not tell.
struct DrivePlace {
    std::string controller, enclosure, slot;
    [[nodiscard]] bool IsKnown() const { return !controller.empty() && !enclosure.empty() && !slot.empty(); }
};

/// Of all drives, in the order of the document.
[[nodiscard]] std::vector<DrivePlace> DrivePlaces(const inventory::Server& server);

}  // namespace calls
