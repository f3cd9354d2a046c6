#pragma once

#include "inventory/Server.h"

#include <functional>
#include <string>

namespace history {

/// Calls `take` with each number that a drive tells which may tell something over time: its counters, its
/// temperature, and its SMART data. Of a table these are the cells that are numbers, named by their attribute
/// and their column, "SMART Reallocated Sector Count, Raw Data"; those that tell nothing that others do not
/// (the worst value, which is the lowest of all, and thresholds, which do not change) are left out.
void MeasureDrive(const inventory::Drive& drive, const std::function<void(const std::string&, double)>& take);

}  // namespace history
