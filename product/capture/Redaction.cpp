#include "Redaction.h"

#include "KeyLines.h"
#include "basics/Identifiers.h"
#include "basics/Words.h"

#include <algorithm>
#include <optional>

namespace capture {
namespace {

using basics::InLowerCase;
using basics::IsAlphanumeric;

constexpr std::size_t kShortest = 4;

bool Contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

enum class Kind { Other, Serial, Name };

Kind KindOf(std::string_view key) {
    const std::string lower = InLowerCase(key);
    // "S/N", and "SN" only as a word: many a word has it in the middle.
    if (Contains(lower, "serial") || Contains(lower, "s/n") || lower == "sn" || lower.ends_with(" sn")) {
        return Kind::Serial;
    }
    for (const char* const word :
         {"wwn", "world wide", "world-wide", "sas addr", "naa", "guid", "unique id", "logical id"}) {
        if (Contains(lower, word)) {
            return Kind::Name;
        }
    }
    return Kind::Other;
}

// Without brackets, quotes and the like around it.
std::string_view Core(std::string_view text) {
    while (!text.empty() && !IsAlphanumeric(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && !IsAlphanumeric(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

// Shared by all that have no such number, or too short to be one.
bool IsPlaceholder(const std::string& value) {
    return value.size() < kShortest || basics::StandsForNothing(value);
}

std::size_t AlphanumericLength(std::string_view text) {
    const auto end = std::find_if_not(text.begin(), text.end(), IsAlphanumeric);
    return static_cast<std::size_t>(end - text.begin());
}

std::string Numbered(const char* word, std::size_t number) {
    return word + ("-" + basics::Digits(number, 4));
}

}  // namespace

void Redaction::Collect(std::string_view text) {
    ForEachKeyLine(text, [this](std::string_view key, std::string_view value) {
        const Kind kind = KindOf(key);
        if (kind == Kind::Other) {
            return;
        }
        Add(value, kind == Kind::Serial);
        const std::vector<std::string_view> words = basics::Words(value, " \t,;");
        for (const std::string_view word : words) {
            if (words.size() > 1 && std::any_of(word.begin(), word.end(), basics::IsDigit)) {
                Add(word, kind == Kind::Serial);
            }
        }
    });
}

void Redaction::Add(std::string_view value, bool isSerial) {
    const std::string secret = InLowerCase(Core(value));
    if (IsPlaceholder(secret) || m_Words.count(secret) > 0) {
        return;
    }
    m_Words[secret] = isSerial ? Numbered("serial", ++m_Serials) : Numbered("wwn", ++m_Names);
    std::vector<std::string>& rivals = m_ByStart[secret.substr(0, AlphanumericLength(secret))];
    rivals.push_back(secret);
    std::stable_sort(rivals.begin(), rivals.end(), [](const std::string& left, const std::string& right) {
        return left.size() > right.size();
    });
}

// The value that begins at this place, where a word begins, and how long it is.
const std::string* Redaction::Find(std::string_view text, std::size_t place, std::size_t& length) const {
    const std::string_view rest = text.substr(place);
    const auto rivals = m_ByStart.find(InLowerCase(rest.substr(0, AlphanumericLength(rest))));
    if (rivals == m_ByStart.end()) {
        return nullptr;
    }
    for (const std::string& secret : rivals->second) {
        const bool isWhole = rest.size() == secret.size() ||
                             (rest.size() > secret.size() && !IsAlphanumeric(rest[secret.size()]));
        if (isWhole && InLowerCase(rest.substr(0, secret.size())) == secret) {
            length = secret.size();
            return &m_Words.at(secret);
        }
    }
    return nullptr;
}

std::string Redaction::Redact(std::string_view text) const {
    std::string redacted;
    redacted.reserve(text.size());
    std::size_t place = 0;
    while (place < text.size()) {
        std::size_t length = 0;
        if (const std::string* const word = Find(text, place, length)) {
            redacted += *word;
        } else {
            // To the next place where a word begins.
            length = AlphanumericLength(text.substr(place));
            redacted += text.substr(place, length);
            place += length;
            length = 0;
            while (place + length < text.size() && !IsAlphanumeric(text[place + length])) {
                ++length;
            }
            redacted += text.substr(place, length);
        }
        place += length;
    }
    return redacted;
}

}  // namespace capture
