#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

namespace convlib {

/// Which item bore a name last. Takes eight bytes or so for a name and allocates for none of them, since a
/// list whose names all differ is not to cost more than its text. Looks the names up by `NameOf`, which gives
/// the name of the item with a number:
///
///     NameTable table([&](std::uint32_t item) { return std::string_view(items[item]->m_Name); });
///     table.Enter(7);             // say "Capacity"
///     table.Find("Capacity");     // 7
///
/// Linear in the names unless they collide as hashes. What allocation throws leaves the table as it was.
template <typename NameOf>
class NameTable final {
  public:
    using Index = std::uint32_t;
    static constexpr Index kNone = 0;

    explicit NameTable(NameOf nameOf) : m_NameOf(nameOf), m_Slots(kFewestSlots) {}

    /// `kNone` for a name that nobody bore.
    [[nodiscard]] Index Find(std::string_view name) const { return m_Slots[Place(name, HashOf(name))].item; }

    /// `item` is not `kNone`.
    void Enter(Index item) {
        if (2 * m_Names >= m_Slots.size()) {
            Grow();
        }
        const std::string_view name = m_NameOf(item);
        const std::uint32_t hash = HashOf(name);
        Slot& slot = m_Slots[Place(name, hash)];
        m_Names += slot.item == kNone ? 1 : 0;
        slot = {hash, item};
    }

  private:
    struct Slot {
        std::uint32_t hash = 0;
        Index item = kNone;  ///< `kNone` where the slot is free
    };
    static constexpr std::size_t kFewestSlots = 64;  ///< a power of two, as every number of slots

    static std::uint32_t HashOf(std::string_view name) {
        return static_cast<std::uint32_t>(std::hash<std::string_view>()(name));
    }

    /// Where the name is, or the free slot where it would go: the table is never full.
    [[nodiscard]] std::size_t Place(std::string_view name, std::uint32_t hash) const {
        const std::size_t mask = m_Slots.size() - 1;
        std::size_t at = hash & mask;
        while (m_Slots[at].item != kNone &&
               (m_Slots[at].hash != hash || m_NameOf(m_Slots[at].item) != name)) {
            at = (at + 1) & mask;
        }
        return at;
    }

    void Grow() {
        std::vector<Slot> slots(2 * m_Slots.size());
        const std::size_t mask = slots.size() - 1;
        for (const Slot& slot : m_Slots) {
            if (slot.item != kNone) {
                std::size_t at = slot.hash & mask;
                while (slots[at].item != kNone) {
                    at = (at + 1) & mask;
                }
                slots[at] = slot;
            }
        }
        m_Slots.swap(slots);
    }

    NameOf m_NameOf;
    std::vector<Slot> m_Slots;
    std::size_t m_Names = 0;
};

}  // namespace convlib
