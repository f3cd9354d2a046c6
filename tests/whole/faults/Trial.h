#pragma once

#include "Fault.h"
#include "Scene.h"

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace faults {

/// What is done to a scene's first run, and what must come of it.
struct Trial {
    Order order;
    std::optional<Outcome> expected;  ///< else what the order prescribes; without an order, success
    std::function<void()> before = [] {};
    std::function<void()> after = [] {};  ///< so that the second run may succeed
    Caller::Mischief mischief;
};

/// How a scene ends when nothing is done to it: what every trial is measured by.
struct Undisturbed {
    std::string document;
    std::array<unsigned long, kKinds> calls{};
    std::size_t blocksLeft = 0;  ///< after two runs
};

struct TrialResult {
    Outcome outcome = Outcome::Died;
    std::vector<std::string> findings;  ///< what must not be
};

/// Runs a scene twice in a process of its own: as the trial says, then undisturbed. Looks for what is left
/// behind and for what is not fitting.
[[nodiscard]] TrialResult RunTrial(Scene& scene, const Trial& trial, const Undisturbed& usual);

/// Prepares a scene and runs it without a trial. Throws std::runtime_error when that fails or leaves
/// something behind.
[[nodiscard]] Undisturbed RunUndisturbed(Scene& scene);

}  // namespace faults
