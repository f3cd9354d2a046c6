#include "Redaction.h"

#include "Shapes.h"
#include "basics/Identifiers.h"
#include "basics/Words.h"

#include <algorithm>

namespace capture {
namespace {

using basics::IsDigit;

// More keys than any report has; what has more is no report, and its keys are not worth the memory.
constexpr std::size_t kMostKeys = 4096;

/// Without brackets, quotes and the like around it.
std::string_view Core(std::string_view text) {
    while (!text.empty() && !IsWordByte(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && !IsWordByte(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

/// "0x", "naa." and the like say how the rest is written.
std::string_view WithoutFront(std::string_view item) {
    for (const std::string_view front : {"0x", "naa.", "eui.", "wwn-0x", "urn:uuid:", "uuid:"}) {
        if (item.size() > front.size() && basics::IsSameWord(item.substr(0, front.size()), front)) {
            return item.substr(front.size());
        }
    }
    return item;
}

bool HasDigit(std::string_view text) {
    return std::any_of(text.begin(), text.end(), IsDigit);
}

/// Kinds whose values hold no blank: several of them may stand in a row.
bool IsOfOneWord(Kind kind) {
    return kind == Kind::WorldWideName || kind == Kind::Uuid || kind == Kind::Ip || kind == Kind::Mac ||
           kind == Kind::Mail;
}

/// "50 00 c5 00 a1 b2 c3 d4": one value, in groups.
bool AreGroupsOfOne(const std::vector<std::string_view>& words) {
    constexpr std::size_t kFewest = 3;
    constexpr std::size_t kLongest = 4;
    const bool areGroups =
        words.size() >= kFewest && words.front().size() > 1 && words.front().size() <= kLongest;
    return areGroups && std::all_of(words.begin(), words.end(), [&](std::string_view word) {
               return word.size() == words.front().size() &&
                      std::all_of(word.begin(), word.end(),
                                  [](char each) { return std::isxdigit(static_cast<unsigned char>(each)); });
           });
}

/// "PD3(LD0)", ">>PD0(ONLINE)", "scRG0(RAID 1)": the head of a part.
bool IsHead(std::string_view line) {
    if (line.starts_with('>')) {
        return true;
    }
    for (const std::string_view head : {"PD", "RG", "scRG", "LD"}) {
        if (line.size() > head.size() && line.starts_with(head) && IsDigit(line[head.size()])) {
            return true;
        }
    }
    return false;
}

bool IsTitle(std::string_view line) {
    return line.starts_with("###");
}

/// "--- ---------- ----", below the names of a table's columns
bool IsRule(std::string_view line) {
    line = basics::Trimmed(line);
    return line.starts_with("---") && line.find_first_not_of("- \t") == std::string_view::npos;
}

/// The word in as many characters as the value has: "serial-000001".
std::string Fitted(WordNumber word, std::size_t width) {
    const std::string text = WordFor(word);
    if (text.size() > width) {
        return std::string(width, 'x');
    }
    std::string fitted = text;
    return fitted.insert(text.find('-') + 1, width - text.size(), '0');
}

/// Each line with the line feed behind it, if it has one.
template <typename See>
void ForEachLine(std::string_view text, See see) {
    while (!text.empty()) {
        const std::size_t size = std::min(text.find('\n'), text.size() - 1) + 1;
        see(text.substr(0, size));
        text.remove_prefix(size);
    }
}

}  // namespace

const Redaction::KeyMeaning& Redaction::MeaningOf(std::string_view key) {
    if (const auto known = m_Keys.find(key); known != m_Keys.end()) {
        return known->second;
    }
    if (m_Keys.size() >= kMostKeys) {
        m_Keys.clear();
    }
    return m_Keys.emplace(key, KeyMeaning{KindOfKey(key), SpeaksOfAddresses(key)}).first->second;
}

/// A key may stand behind another one: "Port 0: SAS Address: 5000c500a1b2c3d4".
std::optional<Redaction::SecretLine> Redaction::FindSecret(std::string_view line) {
    std::size_t begin = 0;
    for (std::size_t colon = line.find(':'); colon != line.npos; colon = line.find(':', begin)) {
        const std::string_view key = basics::Trimmed(line.substr(begin, colon - begin));
        begin = colon + 1;
        if (std::none_of(key.begin(), key.end(), basics::IsLetter)) {
            continue;
        }
        const KeyMeaning& meaning = MeaningOf(key);
        if (meaning.kind) {
            return SecretLine{*meaning.kind, begin};
        }
        if (meaning.isOfAddresses && IsLongHexadecimal(line.substr(begin))) {
            return SecretLine{Kind::WorldWideName, begin};
        }
    }
    return std::nullopt;
}

void Redaction::ForEachItem(Kind kind, std::string_view value, const SeeItem& see) {
    for (const std::string_view listed : basics::Words(value, ",;")) {
        // "10.1.2.3/24"
        const std::string_view item = Core(kind == Kind::Ip ? listed.substr(0, listed.find('/')) : listed);
        const std::vector<std::string_view> words = basics::Words(item, " \t");
        if (words.size() < 2 || !IsOfOneWord(kind) || AreGroupsOfOne(words)) {
            if (!basics::StandsForNothing(item)) {
                see(WithoutFront(item));
            }
            continue;
        }
        for (const std::string_view word : words) {
            const std::string_view core = Core(word);
            if (HasDigit(core) && !basics::StandsForNothing(core)) {
                see(WithoutFront(core));
            }
        }
    }
}

void Redaction::CollectValue(Kind kind, std::string_view value) {
    ForEachItem(kind, value, [&](std::string_view item) {
        if (item.find_first_of(" \t") != item.npos) {
            CollectPhrase(kind, item);
        } else if (kind == Kind::Host) {
            AddHost(item);
        } else {
            (void)m_Values.Add(kind, item);
        }
    });
}

/// "7K00025200C4 (spare part)" is replaced as a whole and, for other places, word by word.
void Redaction::CollectPhrase(Kind kind, std::string_view phrase) {
    const std::vector<std::string_view> words = basics::Words(phrase, " \t");
    const KnownValues::Index whole = m_Values.Add(kind, phrase);
    if (AreGroupsOfOne(words)) {
        (void)m_Values.Add(kind, basics::Joined(words, ""), whole);
        return;
    }
    const auto isValue = [](std::string_view word) {
        return HasDigit(word) && !basics::StandsForNothing(Core(word));
    };
    const bool isOne = std::count_if(words.begin(), words.end(), isValue) == 1;
    for (const std::string_view word : words) {
        if (isValue(word)) {
            (void)m_Values.Add(kind, WithoutFront(Core(word)), isOne ? std::optional(whole) : std::nullopt);
        }
    }
}

/// "storage7.example.com" is called "storage7" as well, and its domain has other hosts.
void Redaction::AddHost(std::string_view name) {
    name = Core(basics::Trimmed(name));
    const std::string_view first = name.substr(0, name.find('.'));
    if (basics::StandsForNothing(name)) {
        return;
    }
    const KnownValues::Index host = m_Values.Add(Kind::Host, name);
    if (first.size() < name.size() && !std::all_of(first.begin(), first.end(), IsDigit)) {
        const std::string_view domain = name.substr(first.size() + 1);
        (void)m_Values.Add(Kind::Host, first, host);
        if (domain.find('.') != domain.npos) {
            (void)m_Values.Add(Kind::Host, domain);
        }
    }
}

void Redaction::Collect(std::string_view text) {
    bool isSectionAboutVersions = false;
    ForEachLine(text, [&](std::string_view line) {
        if (IsTitle(line)) {
            isSectionAboutVersions = SpeaksOfVersions(line);
        }
        if (const auto secret = FindSecret(line)) {
            CollectValue(secret->kind, line.substr(secret->valueBegin));
        }
        // Words of the line matter only where there could be an IPv4 address.
        const bool isAboutVersions =
            isSectionAboutVersions ||
            (std::count(line.begin(), line.end(), '.') >= 3 && SpeaksOfVersions(line));
        FindShapes(line, isAboutVersions, [this](Kind kind, std::string_view part) {
            if (!basics::StandsForNothing(part)) {
                (void)m_Values.Add(kind, part);
            }
        });
    });
}

std::string Redaction::Redact(std::string_view text) {
    m_Out.clear();
    m_Out.reserve(text.size());
    m_IsInTable = false;
    ForEachLine(text, [this](std::string_view line) { RedactLine(line); });
    return std::move(m_Out);
}

void Redaction::RedactLine(std::string_view line) {
    const bool isHead = IsHead(line);
    const bool isTitle = IsTitle(line);
    m_IsInTable = !isHead && !isTitle && (m_IsInTable || IsRule(line));
    const auto secret = isTitle ? std::nullopt : FindSecret(line);
    if (secret) {
        Copy(line.substr(0, secret->valueBegin), Place::Name, line.npos);
        RedactSecret(line.substr(secret->valueBegin), secret->kind);
        return;
    }
    const std::size_t colon = line.find(':');
    const bool hasKey = !isHead && colon != line.npos;
    Copy(line, Place::Name, isTitle ? line.npos : hasKey ? colon : 0);
}

void Redaction::RedactSecret(std::string_view value, Kind kind) {
    std::size_t done = 0;
    ForEachItem(kind, value, [&](std::string_view item) {
        const auto begin = static_cast<std::size_t>(item.data() - value.data());
        if (const auto word = m_Values.Find(item)) {
            Copy(value.substr(done, begin - done), Place::Value, 0);
            PutWord(*word, item, false);
            done = begin + item.size();
        }
    });
    Copy(value.substr(done), Place::Value, 0);
}

/// `place` holds for the text before `valueBegin`; behind it is a value.
void Redaction::Copy(std::string_view text, Place place, std::size_t valueBegin) {
    std::size_t done = 0;
    for (std::size_t at = 0; at < text.size();) {
        const auto found = m_Values.FindAt(text, at, at < valueBegin ? place : Place::Value);
        if (!found) {
            ++at;
            continue;
        }
        m_Out += text.substr(done, at - done);
        PutWord(found->word, text.substr(at, found->length), m_IsInTable);
        at += found->length;
        done = at;
    }
    m_Out += text.substr(done);
}

void Redaction::PutWord(KnownValues::Index index, std::string_view value, bool isFitted) {
    const KnownValues::Word& word = m_Values.Words()[index];
    if (word.isKept) {
        m_Out += value;
        return;
    }
    m_Values.Count(index);
    m_Out += isFitted ? Fitted(word.name, value.size()) : WordFor(word.name);
}

std::string Redaction::RedactInstructions(std::string_view text) {
    m_Out.clear();
    m_IsInTable = false;
    ForEachLine(text, [this](std::string_view line) {
        const std::size_t comment = std::min(line.find('#'), line.size());
        Copy(line, Place::Instruction, comment);
    });
    return std::move(m_Out);
}

std::vector<Redaction::Replacement> Redaction::Replacements() const {
    std::vector<Replacement> replacements;
    for (const KnownValues::Word& word : m_Values.Words()) {
        if (word.places > 0) {
            replacements.push_back({word.name, word.places});
        }
    }
    std::stable_sort(replacements.begin(), replacements.end(), [](const auto& left, const auto& right) {
        return std::pair(left.word.kind, left.word.number) < std::pair(right.word.kind, right.word.number);
    });
    return replacements;
}

}  // namespace capture
