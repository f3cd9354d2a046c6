#include "KnownValues.h"

#include "basics/Words.h"

#include <algorithm>

namespace capture {
namespace {

using basics::IsAlphanumeric;

constexpr std::size_t kBytes = 256;
constexpr std::size_t kStartLength = 2;

std::uint8_t ByteOf(char character) {
    return static_cast<std::uint8_t>(character);
}

char Lower(char character) {
    return 'A' <= character && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

bool CanBeSeparator(char character) {
    return character == ':' || character == '-';
}

/// The colons and dashes that do not count.
bool IsSeparator(std::string_view text, std::size_t at) {
    return CanBeSeparator(text[at]) && at > 0 && at + 1 < text.size() && IsAlphanumeric(text[at - 1]) &&
           IsAlphanumeric(text[at + 1]);
}

/// Goes through a text as values are compared.
class Walk final {
  public:
    Walk(std::string_view text, std::size_t begin) : m_Text(text), m_Begin(begin), m_At(begin) {}

    /// False at the end of the text.
    [[nodiscard]] bool Next(char& character) {
        if (m_At < m_Text.size() && m_At > m_Begin && IsSeparator(m_Text, m_At)) {
            ++m_At;
            m_HasCrossed = true;
        }
        if (m_At >= m_Text.size()) {
            return false;
        }
        character = Lower(m_Text[m_At++]);
        return true;
    }
    [[nodiscard]] std::size_t At() const { return m_At; }
    [[nodiscard]] bool HasCrossed() const { return m_HasCrossed; }

  private:
    std::string_view m_Text;
    std::size_t m_Begin;
    std::size_t m_At;
    bool m_HasCrossed = false;
};

std::string Squeezed(std::string_view text) {
    std::string squeezed;
    squeezed.reserve(text.size());
    Walk walk(text, 0);
    for (char character = '\0'; walk.Next(character);) {
        squeezed += character;
    }
    return squeezed;
}

std::size_t StartOf(char first, char second) {
    return ByteOf(first) * kBytes + ByteOf(second);
}

struct Make {
    std::size_t letters = 0;
    std::size_t digits = 0;
    [[nodiscard]] std::size_t Size() const { return letters + digits; }
    [[nodiscard]] bool IsMixed() const { return letters > 0 && digits > 0; }
};

Make MakeOf(std::string_view text) {
    Make make;
    for (const char character : text) {
        if (basics::IsDigit(character)) {
            ++make.digits;
        } else if (IsWordByte(character)) {
            ++make.letters;
        }
    }
    return make;
}

constexpr std::size_t kShortestMixed = 4;
constexpr std::size_t kShortestMixedInside = 6;
constexpr std::size_t kShortestNumber = 6;
constexpr std::size_t kShortestNumberInside = 8;
constexpr std::size_t kShortestLetters = 4;
constexpr std::size_t kShortestApart = 12;  ///< digits of a MAC address

/// Told by their shape, whatever their length; "10.0.0.1" is another one than "10.0.0.12".
bool IsWholeAddress(Kind kind, std::string_view squeezed) {
    return (kind == Kind::Ip || kind == Kind::Mail) && squeezed.find_first_of(".:@") != squeezed.npos;
}

bool ReachesBeyondItsKey(std::string_view squeezed, const Make& make) {
    if (IsReportWord(squeezed)) {
        return false;
    }
    const std::size_t shortest = make.IsMixed()     ? kShortestMixed
                                 : make.digits == 0 ? kShortestLetters
                                                    : kShortestNumber;
    return make.Size() >= shortest;
}

bool ReachesIntoWords(const Make& make) {
    return make.digits > 0 && make.Size() >= (make.IsMixed() ? kShortestMixedInside : kShortestNumberInside);
}

}  // namespace

bool IsWordByte(char character) {
    return IsAlphanumeric(character) || ByteOf(character) >= kBytes / 2;
}

KnownValues::Index KnownValues::Add(Kind kind, std::string_view value, std::optional<Index> word) {
    std::string squeezed = Squeezed(value);
    const bool isSeenApart = squeezed.size() < value.size();
    if (const auto known = m_Values.find(squeezed); known != m_Values.end()) {
        known->second.isApart |= isSeenApart;
        return known->second.word;
    }
    const Make make = MakeOf(squeezed);
    Value added;
    added.word = word ? *word : NewWord(kind);
    const bool isAnywhere = kind == Kind::Word;
    const bool isAddress = IsWholeAddress(kind, squeezed);
    added.isInsideToo = isAnywhere || (!isAddress && ReachesIntoWords(make));
    added.isInNames = added.isInsideToo || isAddress || make.IsMixed();
    added.isApart = isSeenApart || (!isAnywhere && make.Size() >= kShortestApart);
    const bool isSought =
        squeezed.size() >= kStartLength && (isAnywhere || isAddress || ReachesBeyondItsKey(squeezed, make));
    const auto& entry = *m_Values.emplace(std::move(squeezed), added).first;
    if (isSought) {
        m_Sorted.push_back(&entry);
        m_IsSorted = false;
    }
    return added.word;
}

void KnownValues::Keep(WordNumber name) {
    std::size_t& highest = m_Highest[static_cast<std::size_t>(name.kind)];
    highest = std::max(highest, name.number);
    m_Words.push_back({.name = name, .isKept = true});
    const Value kept = {m_Words.size() - 1, true, true, true};
    const auto [entry, isNew] = m_Values.emplace(Squeezed(WordFor(name)), kept);
    if (isNew) {
        m_Sorted.push_back(&*entry);
        m_IsSorted = false;
    }
}

KnownValues::Index KnownValues::NewWord(Kind kind) {
    m_Words.push_back({.name = {kind, ++m_Highest[static_cast<std::size_t>(kind)]}});
    return m_Words.size() - 1;
}

std::optional<KnownValues::Index> KnownValues::Find(std::string_view value) const {
    const auto known = m_Values.find(Squeezed(value));
    return known == m_Values.end() ? std::nullopt : std::optional(known->second.word);
}

void KnownValues::Sort() {
    std::sort(m_Sorted.begin(), m_Sorted.end(),
              [](const auto* left, const auto* right) { return left->first < right->first; });
    m_ByStart.assign(kBytes * kBytes, {});
    for (std::size_t number = 0; number < m_Sorted.size(); ++number) {
        const std::string& squeezed = m_Sorted[number]->first;
        Range& range = m_ByStart[StartOf(squeezed[0], squeezed[1])];
        if (range.second == 0) {
            range.first = static_cast<std::uint32_t>(number);
        }
        range.second = static_cast<std::uint32_t>(number + 1);
    }
    m_IsSorted = true;
}

bool KnownValues::MayStandHere(const Value& value, bool isWord, Place place) const {
    if (place == Place::Instruction && m_Words[value.word].name.kind == Kind::Word) {
        return false;
    }
    return value.isInsideToo ||
           (isWord && place != Place::Instruction && (place == Place::Value || value.isInNames));
}

std::optional<KnownValues::Found> KnownValues::FindAt(std::string_view text, std::size_t begin, Place place) {
    if (!m_IsSorted) {
        Sort();
    }
    // Nearly everywhere nothing begins.
    if (begin + 1 < text.size() && !CanBeSeparator(text[begin + 1]) &&
        m_ByStart[StartOf(Lower(text[begin]), Lower(text[begin + 1]))].second == 0) {
        return std::nullopt;
    }
    Walk walk(text, begin);
    char first = '\0';
    char second = '\0';
    if (!walk.Next(first) || !walk.Next(second)) {
        return std::nullopt;
    }
    auto [low, high] = m_ByStart[StartOf(first, second)];
    std::optional<Found> longest;
    const auto at = [this](std::uint32_t number) { return m_Sorted.begin() + number; };
    for (std::size_t depth = kStartLength; low < high; ++depth) {
        const auto& [squeezed, value] = *m_Sorted[low];
        if (squeezed.size() == depth) {
            const bool isWord = (begin == 0 || !IsWordByte(text[begin - 1])) &&
                                (walk.At() == text.size() || !IsWordByte(text[walk.At()]));
            if ((!walk.HasCrossed() || value.isApart) && MayStandHere(value, isWord, place)) {
                longest = Found{value.word, walk.At() - begin};
            }
            ++low;
        }
        char next = '\0';
        if (low == high || !walk.Next(next)) {
            break;
        }
        const auto isBefore = [depth](const auto* each, char character) {
            return ByteOf(each->first[depth]) < ByteOf(character);
        };
        const auto isBehind = [depth](char character, const auto* each) {
            return ByteOf(character) < ByteOf(each->first[depth]);
        };
        const auto begins = std::lower_bound(at(low), at(high), next, isBefore);
        const auto ends = std::upper_bound(begins, at(high), next, isBehind);
        low = static_cast<std::uint32_t>(begins - m_Sorted.begin());
        high = static_cast<std::uint32_t>(ends - m_Sorted.begin());
    }
    return longest;
}

}  // namespace capture
