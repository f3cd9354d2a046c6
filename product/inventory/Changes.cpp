#include "inventory/Changes.h"

#include "BothSides.h"
#include "ItemChanges.h"
#include "Parts.h"

#include <algorithm>

namespace inventory {

std::string_view NameOf(Change::Kind kind) {
    switch (kind) {
        case Change::Kind::Appeared:
            return "appeared";
        case Change::Kind::Vanished:
            return "vanished";
        case Change::Kind::Changed:
            return "changed";
        case Change::Kind::Moved:
            return "moved";
        case Change::Kind::Replaced:
            break;
    }
    return "replaced";
}

Changes ChangesBetween(const Document& before, const Document& after, bool hasAll) {
    Parts old(before);
    Parts now(after);
    Pair(old, now);
    std::vector<std::size_t> partners;
    for (const Part& part : old.All()) {
        partners.push_back(part.partner);
    }
    const ItemChangesRequest request{old, now, hasAll};
    Changes changes;
    ForEachOnEitherSide(partners, now.All().size(), [&](std::size_t oldPlace, std::size_t place) {
        if (place == kNowhere) {
            changes.list.push_back({Change::Kind::Vanished, old.All()[oldPlace].words, nullptr});
            return;
        }
        const Part& part = now.All()[place];
        if (oldPlace == kNowhere) {
            changes.list.push_back({Change::Kind::Appeared, part.words, nullptr});
            return;
        }
        const Part& earlier = old.All()[oldPlace];
        if (HasMoved(earlier, part)) {
            changes.list.push_back({Change::Kind::Moved, part.words, earlier.words});
        } else if (IsReplacement(earlier, part)) {
            changes.list.push_back({Change::Kind::Replaced, part.words, earlier.words});
        }
        CompareItems(earlier, part, request, changes);
    });
    return changes;
}

std::size_t CountOf(const Changes& changes, Change::Kind kind) {
    return static_cast<std::size_t>(
        std::count_if(changes.list.begin(), changes.list.end(),
                      [kind](const Change& change) { return change.kind == kind; }));
}

}  // namespace inventory
