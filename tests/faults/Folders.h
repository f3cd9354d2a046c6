#pragma once

#include "tests/faults/Scene.h"

namespace faults {

/// Runs a scene with result folders that are of no use: a full disk, a file in the folder's place and so on.
/// Returns the number of findings.
[[nodiscard]] unsigned long TryFolders(Scene& scene);

/// Runs a scene with mischief in it that every check must notice. Returns how much went unnoticed.
[[nodiscard]] unsigned long ProveChecks(Scene& scene);

}  // namespace faults
