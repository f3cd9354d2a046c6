#pragma once

#include "readers/CMSRAID_PDInfoGetter.h"

#include <string_view>

namespace fuzzing {

/// Fills a physical-drive reader's map from drives to RAID groups out of the text of a logical-drive report,
/// as its `GetInfo` does from the tool's.
void FillGroups(CMSRAID_PDInfoGetter& reader, std::string_view logicalDriveReport);

}  // namespace fuzzing
