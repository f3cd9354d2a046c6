#include "NameTable.h"

#include <algorithm>
#include <bit>
#include <functional>

namespace convlib {
namespace {

constexpr unsigned kHashBits = 32;

/// The first bits of a hash: places in the order of the hashes, so that a table grows from front to back and
/// not all over the memory.
std::size_t FirstBits(NameHash hash, unsigned bits) {
    return hash >> (kHashBits - bits);
}

/// So many that a word is shared by four to eight names.
unsigned FilterBits(std::size_t names) {
    constexpr std::size_t kNamesOfWord = 8;
    return std::clamp(static_cast<unsigned>(std::bit_width(names / kNamesOfWord)), 1U, kHashBits);
}

}  // namespace

NameHash HashOf(std::string_view name) {
    return std::min(static_cast<NameHash>(std::hash<std::string_view>()(name)), kNoHash - 1);
}

NameFilter::NameFilter(std::size_t names)
    : m_Shift(kHashBits - FilterBits(names)), m_Words(std::size_t{1} << FilterBits(names)) {}

NameTable::Number NameTable::NumberOf(std::string_view name, NameHash hash) {
    if (2 * m_Names.size() >= m_Slots.size()) {
        Grow();
    }
    Slot& slot = m_Slots[PlaceOf(name, hash)];
    if (slot.number == kNone) {
        m_Names.push_back(name);
        slot = {hash, static_cast<Number>(m_Names.size() - 1)};
    }
    return slot.number;
}

NameTable::Number NameTable::Find(std::string_view name, NameHash hash) const {
    return m_Slots[PlaceOf(name, hash)].number;
}

/// Where the name is, or the free slot where it would go.
std::size_t NameTable::PlaceOf(std::string_view name, NameHash hash) const {
    const std::size_t mask = m_Slots.size() - 1;
    std::size_t at = FirstBits(hash, m_Bits);
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
            std::size_t at = FirstBits(slot.hash, m_Bits + 1);
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
