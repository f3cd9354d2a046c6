#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace capture {

/// Replaces what names a single piece of hardware, in two passes over the texts. From
///
///     Serial Number                : 7K00025200C4
///     WWN                          : 5000C500A1B2C3D4
///
/// `Collect` takes the values of keys that speak of serial numbers, world-wide names, SAS addresses or GUIDs.
/// `Redact` then puts "serial-0001" and "wwn-0001" in their places, everywhere that such a value stands as a
/// whole word, under whatever key and in whatever letter case; the same value always becomes the same word.
/// All other bytes stay as they are. A value of several words is replaced as a whole and, where a word of it
/// has a digit, word by word.
///
/// Not found are values that no such key names: in a table, in a sentence, or written in another way (with
/// colons, a part of it).
class Redaction final {
  public:
    void Collect(std::string_view text);
    [[nodiscard]] std::string Redact(std::string_view text) const;

    /// How many values are replaced.
    [[nodiscard]] std::size_t Count() const { return m_Words.size(); }

  private:
    void Add(std::string_view value, bool isSerial);
    [[nodiscard]] const std::string* Find(std::string_view text, std::size_t place,
                                          std::size_t& length) const;

    std::unordered_map<std::string, std::string> m_Words;  ///< value in lower case, and what it becomes
    /// Values by their first letters and digits; longest first.
    std::unordered_map<std::string, std::vector<std::string>> m_ByStart;
    std::size_t m_Serials = 0;
    std::size_t m_Names = 0;
};

}  // namespace capture
