#pragma once

#include "inventory/Document.h"

namespace inventory {

/// Whether another value of an item says nothing by itself, because it moves all the time: what is measured
/// (temperatures, voltages, currents, charge), hours of operation, and in tables of SMART data what counts
/// hours, data, and errors that were corrected at once. A value that is no number any more has not moved.
///
/// The items are the same one before and afterwards; `parent` is what they stand in.
[[nodiscard]] bool IsMovement(const Item& parent, const Item& before, const Item& after);

}  // namespace inventory
