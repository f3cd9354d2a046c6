#pragma once

#include "Kinds.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace capture {

/// Whether a byte is of a word; letters of other alphabets are several such bytes each.
[[nodiscard]] bool IsWordByte(char character);

/// Where in a report a text stands.
enum class Place {
    Value,        ///< behind a key's colon, or in a line without one
    Name,         ///< a key or a title, by which the module finds its way
    Instruction,  ///< what a scenario's command does
};

/// The values that are not to be told, each with the word that takes its place, and a search for them that
/// takes time in proportion to the text. Two values that differ in nothing but the case of letters, and in
/// colons and dashes between letters and digits, are one.
///
/// How far a value reaches beyond the key that names it goes by how unlikely it is to stand there by chance:
///
///     7K00025200C4    everywhere, in longer words too: six characters, letters and digits among them
///     48210077        the same: eight digits
///     AB12, 104857    where a whole word is the value: four or five characters, or six or seven digits
///     storage         the same, but not in keys and titles: no digit
///     A1, 1234, RAID  nowhere else: shorter, or a word that reports use
class KnownValues final {
  public:
    /// A word that takes the place of values, by its index.
    using Index = std::size_t;

    struct Word {
        WordNumber name;
        std::size_t places = 0;  ///< how many values it has taken the place of
        bool isKept = false;     ///< of an earlier time: it stays where it stands
    };

    /// Remembers a value; `word` where another spelling of it has one already. Returns the word's index.
    Index Add(Kind kind, std::string_view value, std::optional<Index> word = std::nullopt);

    /// A word of an earlier time. New ones have higher numbers.
    void Keep(WordNumber word);

    /// The word of a value, under the key that names it.
    [[nodiscard]] std::optional<Index> Find(std::string_view value) const;

    /// The longest value that begins at a place of a text, and how long it is there.
    struct Found {
        Index word;
        std::size_t length;
    };
    [[nodiscard]] std::optional<Found> FindAt(std::string_view text, std::size_t begin, Place place);

    [[nodiscard]] const std::vector<Word>& Words() const { return m_Words; }
    void Count(Index word) { ++m_Words[word].places; }

  private:
    struct Value {
        Index word = 0;
        bool isInsideToo = false;  ///< in longer words, too
        bool isInNames = false;    ///< in keys and titles, too
        bool isApart = false;      ///< also with colons and dashes in it
    };
    /// By what is left in lower case, without the colons and dashes between letters and digits.
    using Values = std::unordered_map<std::string, Value>;
    using Range = std::pair<std::uint32_t, std::uint32_t>;

    [[nodiscard]] Index NewWord(Kind kind);
    void Sort();
    [[nodiscard]] bool MayStandHere(const Value& value, bool isWord, Place place) const;

    std::vector<Word> m_Words;
    std::array<std::size_t, kKindCount> m_Highest{};
    Values m_Values;
    std::vector<const Values::value_type*> m_Sorted;  ///< those that reach beyond their keys
    std::vector<Range> m_ByStart;                     ///< ranges of m_Sorted by their first two bytes
    bool m_IsSorted = false;
};

}  // namespace capture
