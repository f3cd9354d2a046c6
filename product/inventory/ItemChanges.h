#pragma once

#include "Parts.h"
#include "inventory/Changes.h"

namespace inventory {

/// Where the comparison of items puts what it finds.
struct ItemChangesRequest {
    const Parts& before;
    const Parts& after;
    bool hasAll = false;
};

/// Adds to `changes` what is different in a part that is on both sides.
void CompareItems(const Part& before, const Part& after, const ItemChangesRequest& request, Changes& changes);

}  // namespace inventory
