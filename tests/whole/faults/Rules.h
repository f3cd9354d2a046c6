#pragma once

#include "Call.h"
#include "Fault.h"

#include <span>

namespace faults {

/// How a call may end when that order struck first at that place. A call that ends with `Success` has the
/// document of an undisturbed one; that is looked at elsewhere.
[[nodiscard]] std::span<const Outcome> FittingOutcomes(const Order& order, Place place);

}  // namespace faults
