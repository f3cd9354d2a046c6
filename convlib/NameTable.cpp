#include "convlib/NameTable.h"

#include <functional>

namespace convlib {
namespace {

constexpr unsigned kHashBits = 32;

std::uint32_t HashOf(std::string_view name) {
    return static_cast<std::uint32_t>(std::hash<std::string_view>()(name));
}

/// Where the search begins: slots in the order of the hashes, so that a table grows from front to back and
/// not all over the memory.
std::size_t StartOf(std::uint32_t hash, unsigned bits) {
    return hash >> (kHashBits - bits);
}

}  // namespace

NameTable::Number NameTable::NumberOf(std::string_view name) {
    if (2 * m_Names.size() >= m_Slots.size()) {
        Grow();
    }
    const std::uint32_t hash = HashOf(name);
    Slot& slot = m_Slots[PlaceOf(name, hash)];
    if (slot.number == kNone) {
        m_Names.push_back(name);
        slot = {hash, static_cast<Number>(m_Names.size() - 1)};
    }
    return slot.number;
}

NameTable::Number NameTable::Find(std::string_view name) const {
    return m_Slots[PlaceOf(name, HashOf(name))].number;
}

/// Where the name is, or the free slot where it would go.
std::size_t NameTable::PlaceOf(std::string_view name, std::uint32_t hash) const {
    const std::size_t mask = m_Slots.size() - 1;
    std::size_t at = StartOf(hash, m_Bits);
    while (m_Slots[at].number != kNone && (m_Slots[at].hash != hash || m_Names[m_Slots[at].number] != name)) {
        at = (at + 1) & mask;
    }
    return at;
}

void NameTable::Grow() {
    std::vector<Slot> slots(2 * m_Slots.size());
    const std::size_t mask = slots.size() - 1;
    for (const Slot& slot : m_Slots) {
        if (slot.number != kNone) {
            std::size_t at = StartOf(slot.hash, m_Bits + 1);
            while (slots[at].number != kNone) {
                at = (at + 1) & mask;
            }
            slots[at] = slot;
        }
    }
    m_Slots.swap(slots);
    ++m_Bits;
}

}  // namespace convlib
