#pragma once

#include "inventory/Snapshot.h"
#include "watch/Watch.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace watch {

/// The parts that a snapshot tells of, by keys that stay theirs: a drive's is its serial number, so that it
/// is the same one in another slot; all others have their numbers.
struct Watch::Present {
    struct Part {
        std::string key = {};    ///< "drive/7K00025200C4", "group/0/RG1"
        std::string place = {};  ///< where it is: "slot/0/252/3"; of what cannot be moved, its key
        inventory::Finding about;
        inventory::Level health = inventory::Level::Unknown;
        const inventory::Drive* drive = nullptr;  ///< where it is one
        const inventory::Group* group = nullptr;  ///< that a drive is in
    };

    explicit Present(const inventory::Snapshot& snapshot);

    [[nodiscard]] const Part* Find(const std::string& key) const;
    /// The drive in that place; null where there is none.
    [[nodiscard]] const Part* At(const std::string& place) const;

    [[nodiscard]] std::string KeyOf(const inventory::Finding& finding) const;
    [[nodiscard]] static std::string PlaceOf(const inventory::Finding& finding);

    std::vector<Part> parts;

  private:
    void Add(Part part);
    void AddDrives(const inventory::Controller& controller);

    std::unordered_map<std::string, std::size_t> m_ByKey, m_ByPlace;
    std::unordered_map<std::string, std::size_t> m_Serials;  ///< how often each is told
};

}  // namespace watch
