#pragma once

#include "Scene.h"

namespace faults {

/// Runs a scene with mischief in it that every check must notice. Returns how much went unnoticed.
[[nodiscard]] unsigned long ProveChecks(Scene& scene);

}  // namespace faults
