#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>
#include <vector>

namespace convlib {

using NameHash = std::uint32_t;

/// The hash of no name.
constexpr NameHash kNoHash = std::numeric_limits<NameHash>::max();

[[nodiscard]] NameHash HashOf(std::string_view name);

/// Tells of most names that they are not among some others, in one or two bytes for each of those: a parent
/// that no item can be needs no number.
class NameFilter final {
  public:
    /// For as many names as that, or the answers get less useful.
    explicit NameFilter(std::size_t names);

    void Add(NameHash name) { m_Words[name >> m_Shift] |= MarksOf(name); }

    /// False: no such name has been added. True: one may have been.
    [[nodiscard]] bool MayHold(NameHash name) const {
        return (m_Words[name >> m_Shift] & MarksOf(name)) == MarksOf(name);
    }

  private:
    using Word = std::uint64_t;

    /// Two of a word's bits, by the end of the hash: its front tells the word.
    static constexpr Word MarksOf(NameHash name) {
        return (Word{1} << (name & 63U)) | (Word{1} << ((name >> 6U) & 63U));
    }

    unsigned m_Shift;
    std::vector<Word> m_Words;
};

/// Numbers names in the order in which they come: 0, 1, 2, ... Allocates for no name of its own, since a list
/// whose names all differ is not to cost more than its text.
///
///     NameTable table;
///     table.NumberOf("### General Information ###", hash);  // 0
///     table.NumberOf("PD List", hash);                      // 1
///     table.Find("PD List", hash);                          // 1
///     table.Find("Capacity", hash);                         // kNone
///
/// `hash` is the name's `HashOf`, which its callers need elsewhere too. Linear in the names unless they
/// collide as hashes. Keeps views of the names, which must stay as they are. What allocation throws leaves
/// the table as it was. Fewer than two to the power of 31 names.
class NameTable final {
  public:
    using Number = std::uint32_t;
    static constexpr Number kNone = std::numeric_limits<Number>::max();

    NameTable() : m_Slots(std::size_t{1} << m_Bits) {}

    /// The number that the name has, or gets now.
    [[nodiscard]] Number NumberOf(std::string_view name, NameHash hash);

    /// `kNone` for a name without a number.
    [[nodiscard]] Number Find(std::string_view name, NameHash hash) const;

    [[nodiscard]] std::size_t Size() const { return m_Names.size(); }

  private:
    struct Slot {
        NameHash hash = 0;
        Number number = kNone;  ///< `kNone` where the slot is free
    };

    [[nodiscard]] std::size_t PlaceOf(std::string_view name, NameHash hash) const;
    void Grow();

    unsigned m_Bits = 6;
    std::vector<Slot> m_Slots;  ///< two to the power of `m_Bits`, never more than half of them taken
    std::vector<std::string_view> m_Names;
};

}  // namespace convlib
