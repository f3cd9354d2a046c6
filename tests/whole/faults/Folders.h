#pragma once

#include "Scene.h"

namespace faults {

/// Runs a scene with result folders that are of no use: a full disk, a file in the folder's place and so on.
/// Returns the number of findings.
[[nodiscard]] unsigned long TryFolders(Scene& scene);

}  // namespace faults
