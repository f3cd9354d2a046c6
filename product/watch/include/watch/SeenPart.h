#pragma once

#include "inventory/Snapshot.h"

#include <string>
#include <vector>

namespace watch {

/// A part that a snapshot tells of, by a key that stays its own: a drive's is its serial number, so that it
/// is the same one in another slot; all others have their numbers. Leads into the snapshot, which must live
/// as long.
struct SeenPart {
    std::string key = {};    ///< "drive/7K00025200C4", "group/0/RG1"
    std::string place = {};  ///< where it is: "slot/0/252/3"; of what cannot be moved, its key
    inventory::Finding about = {};
    std::string words = {};  ///< its state: "OPTIMAL"; empty where it tells none, as groups do
    /// How well it is by its own state, whatever limits and expectations say besides.
    inventory::Level level = inventory::Level::Ok;
    inventory::Level health = inventory::Level::Unknown;  ///< with all that
    const inventory::Drive* drive = nullptr;              ///< where it is one
    const inventory::Group* group = nullptr;              ///< that a drive is in
};

/// Those of a snapshot, each key once. What is not well with a part is in its words: "FAILED", "DEGRADED,
/// nothing is being rebuilt". A group is as well as the worst of what belongs to it.
[[nodiscard]] std::vector<SeenPart> PartsOf(const inventory::Snapshot& snapshot);

}  // namespace watch
