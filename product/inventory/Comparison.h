#pragma once

#include "inventory/Criteria.h"
#include "inventory/Server.h"

#include <vector>

namespace inventory {

/// What of a server is not as its expectations and limits say: "gone", "new", "moved, expected in ...", "41
/// C, limit 40". The parts that are there know of it afterwards. Without controllers, groups or logical
/// drives there are no data; all else is a warning.
[[nodiscard]] std::vector<Finding> Compare(Server& server, const Criteria& criteria);

}  // namespace inventory
