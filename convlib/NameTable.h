#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>
#include <vector>

namespace convlib {

/// Numbers names in the order in which they come: 0, 1, 2, ... Allocates for no name of its own, since a list
/// whose names all differ is not to cost more than its text.
///
///     NameTable table;
///     table.NumberOf("### General Information ###");  // 0
///     table.NumberOf("PD List");                      // 1
///     table.Find("PD List");                          // 1
///     table.Find("Capacity");                         // kNone
///
/// Linear in the names unless they collide as hashes. Keeps views of the names, which must stay as they are.
/// What allocation throws leaves the table as it was. At most `kNone` names.
class NameTable final {
  public:
    using Number = std::uint32_t;
    static constexpr Number kNone = std::numeric_limits<Number>::max();

    NameTable() : m_Slots(std::size_t{1} << m_Bits) {}

    /// The number that the name has, or gets now.
    [[nodiscard]] Number NumberOf(std::string_view name);

    /// `kNone` for a name without a number.
    [[nodiscard]] Number Find(std::string_view name) const;

    [[nodiscard]] std::size_t Size() const { return m_Names.size(); }

  private:
    struct Slot {
        std::uint32_t hash = 0;
        Number number = kNone;  ///< `kNone` where the slot is free
    };

    [[nodiscard]] std::size_t PlaceOf(std::string_view name, std::uint32_t hash) const;
    void Grow();

    unsigned m_Bits = 6;
    std::vector<Slot> m_Slots;  ///< two to the power of `m_Bits`, never more than half of them taken
    std::vector<std::string_view> m_Names;
};

}  // namespace convlib
