#pragma once

#include "Options.h"
#include "basics/DocumentTarget.h"
#include "inventory/Snapshot.h"

namespace command {

/// What the command line has a server judged by, the file of expectations read. For `expect`, only what that
/// file accepts already, where there is such a file. To be called before the view of the file system changes.
/// Throws basics::Failure(Surroundings) for a file that cannot be read or holds something else.
[[nodiscard]] inventory::Criteria CriteriaFor(const Options& options);

/// Stores what the server has as what it ought to have, with what is accepted of it, by then or from now on,
/// and says so where that goes to a file. Throws basics::Failure(Method) for a server that is not well
/// otherwise.
void SaveExpectations(const inventory::Snapshot& snapshot, const Options& options,
                      const inventory::Criteria& criteria, const basics::DocumentTarget& target);

}  // namespace command
