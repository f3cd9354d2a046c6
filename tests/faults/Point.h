#pragma once

#include "tests/faults/Fault.h"
#include "tests/faults/Scene.h"

#include <array>
#include <string>
#include <vector>

namespace faults {

/// How a scene ends when nothing fails: what every point is measured by.
struct Undisturbed {
    std::string document;
    std::array<unsigned long, kKinds> calls{};
    std::size_t blocksLeft = 0;  ///< after two runs
};

/// What became of one point.
struct PointResult {
    Outcome outcome = Outcome::Died;
    std::vector<std::string> findings;  ///< what must not be
};

/// Runs a scene twice in a process of its own: with that order, then undisturbed. Looks for what is left
/// behind and for results that are not prescribed.
[[nodiscard]] PointResult RunPoint(Scene& scene, const Order& order, const Undisturbed& usual);

/// The same without an order; what is left behind is a finding here too.
[[nodiscard]] Undisturbed RunUndisturbed(Scene& scene, std::vector<std::string>& findings);

}  // namespace faults
