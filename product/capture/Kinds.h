#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace capture {

/// What a value names that is not to be told.
enum class Kind { Serial, WorldWideName, Uuid, Tag, Host, Ip, Mac, Licence, Mail, Word };

/// How a kind is spoken of.
struct KindWords {
    const char* stem;  ///< "serial", of which the words in the values' places are made: "serial-0001"
    const char* one;
    const char* many;
};

inline constexpr std::size_t kKindCount = 10;
[[nodiscard]] const KindWords& WordsOf(Kind kind);
[[nodiscard]] std::array<Kind, kKindCount> AllKinds();

/// A word that stands for a value, taken apart: "serial-0001".
struct WordNumber {
    Kind kind;
    std::size_t number;
};
[[nodiscard]] std::optional<WordNumber> ParseWord(std::string_view word);
[[nodiscard]] std::string WordFor(WordNumber word);

/// What the values of a key such as "Enclosure Serial Number" or "Mgmt IP Address" name; nothing where they
/// may be told.
[[nodiscard]] std::optional<Kind> KindOfKey(std::string_view key);

/// Whether a key speaks of an address without saying of what: its values tell.
[[nodiscard]] bool SpeaksOfAddresses(std::string_view key);

/// Whether reports use the word for the state of parts and settings: "Enabled", "Optimal", "PD12". It stays
/// where it says that, also when somebody calls a host so.
[[nodiscard]] bool IsReportWord(std::string_view word);

}  // namespace capture
