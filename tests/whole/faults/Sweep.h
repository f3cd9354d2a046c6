#pragma once

#include "Trial.h"

#include <array>
#include <optional>
#include <string>

namespace faults {

struct SweepOptions {
    unsigned long memoryStride = 1;  ///< every so many allocations
    unsigned long traceStride = 1;   ///< every so many lines of the trace
    unsigned long callStride = 1;    ///< every so many calls of each other kind
    std::optional<Kind> only;
    bool isOnceOnly = false;  ///< without the faults that last
};

/// Lets every call of a scene fail once, and then every call from each one on, and prints a table of what
/// came of it. Returns the number of findings.
[[nodiscard]] unsigned long Sweep(Scene& scene, const SweepOptions& options);

}  // namespace faults
