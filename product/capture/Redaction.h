#pragma once

#include "KnownValues.h"

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace capture {

/// Replaces what names a single piece of hardware, a host, an address, a licence or a person, in two passes
/// over the texts. From
///
///     Serial Number                : 7K00025200C4
///     WWN                          : 5000C500A1B2C3D4
///     Notify raid@example.com
///
/// `Collect` takes the values of keys that speak of such things (Kinds.h), and what is known by its shape
/// (Shapes.h). `Redact` then puts "serial-0001", "wwn-0001" and "mail-0001" in their places: wherever such a
/// value stands, as far as it reaches (KnownValues.h). The same value always becomes the same word. All other
/// bytes stay as they are, and the columns of tables stay where they are.
///
/// Not found are values that no such key names and no shape gives away: in a table, in a sentence, a part of
/// one.
class Redaction final {
  public:
    /// Something else to be replaced, wherever it stands.
    void AddWord(std::string_view word) { (void)m_Values.Add(Kind::Word, word); }
    void AddHost(std::string_view name);

    /// A word of an earlier redaction, which is no value.
    void Keep(WordNumber word) { m_Values.Keep(word); }

    void Collect(std::string_view text);

    /// What the tool printed, or any other text of lines.
    [[nodiscard]] std::string Redact(std::string_view text);

    /// What a scenario's command does: "fail-first 2 1   # a comment".
    [[nodiscard]] std::string RedactInstructions(std::string_view text);

    /// What has become of the values, by kinds.
    struct Replacement {
        WordNumber word;
        std::size_t places;
    };
    [[nodiscard]] std::vector<Replacement> Replacements() const;

  private:
    /// A line with a key of which the values are not to be told.
    struct SecretLine {
        Kind kind;
        std::size_t valueBegin;
    };
    /// What a key's text says, kept: there are few keys, and many lines of each.
    struct KeyMeaning {
        std::optional<Kind> kind;
        bool isOfAddresses;
    };
    /// A part of a value: "0x5000c500a1b2c3d4" less its front.
    using SeeItem = std::function<void(std::string_view item)>;

    [[nodiscard]] const KeyMeaning& MeaningOf(std::string_view key);
    [[nodiscard]] std::optional<SecretLine> FindSecret(std::string_view line);
    static void ForEachItem(Kind kind, std::string_view value, const SeeItem& see);
    void CollectValue(Kind kind, std::string_view value);
    void CollectPhrase(Kind kind, std::string_view phrase);
    void RedactLine(std::string_view line);
    void RedactSecret(std::string_view value, Kind kind);
    void Copy(std::string_view text, Place place, std::size_t valueBegin);
    void PutWord(KnownValues::Index word, std::string_view value, bool isFitted);

    KnownValues m_Values;
    std::map<std::string, KeyMeaning, std::less<>> m_Keys;
    std::string m_Out;
    bool m_IsInTable = false;
};

}  // namespace capture
