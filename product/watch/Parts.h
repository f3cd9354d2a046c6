#pragma once

#include "inventory/Snapshot.h"
#include "watch/SeenPart.h"
#include "watch/Watch.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace watch {

/// The parts that a snapshot tells of, by their keys.
struct Present {
    explicit Present(const inventory::Snapshot& snapshot);

    [[nodiscard]] const SeenPart* Find(const std::string& key) const;
    /// The drive in that place; null where there is none.
    [[nodiscard]] const SeenPart* At(const std::string& place) const;

    [[nodiscard]] std::string KeyOf(const inventory::Finding& finding) const;
    [[nodiscard]] static std::string PlaceOf(const inventory::Finding& finding);

    std::vector<SeenPart> parts;

  private:
    void Add(SeenPart part);
    void AddDrives(const inventory::Controller& controller);

    std::unordered_map<std::string, std::size_t> m_ByKey, m_ByPlace;
    std::unordered_map<std::string, std::size_t> m_Serials;  ///< how often each is told
};

}  // namespace watch
