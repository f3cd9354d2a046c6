#include "Kinds.h"

#include "basics/Words.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <vector>

namespace capture {
namespace {

using basics::InLowerCase;

constexpr KindWords kKindWords[] = {
    {"serial", "serial number", "serial numbers"},
    {"wwn", "world-wide name", "world-wide names"},
    {"uuid", "UUID", "UUIDs"},
    {"tag", "asset or service tag", "asset and service tags"},
    {"host", "host name", "host names"},
    {"ip", "IP address", "IP addresses"},
    {"mac", "MAC address", "MAC addresses"},
    {"licence", "licence key", "licence keys"},
    {"mail", "mail address", "mail addresses"},
    {"word", "word of your own", "words of your own"},
};
static_assert(std::size(kKindWords) == kKindCount);

constexpr std::size_t kWordDigits = 4;

/// Keys that hold such a text, in lower case. Blanks at its ends stand for the ends of a word.
struct KeyRule {
    std::string_view part;
    std::optional<Kind> kind;
};
constexpr KeyRule kKeyRules[] = {
    {"serial attached", std::nullopt},
    {"serial ata", std::nullopt},
    {"serial port", std::nullopt},
    {"serial over", std::nullopt},
    {"serial console", std::nullopt},
    {"serial", Kind::Serial},
    {" s n ", Kind::Serial},
    {" sn ", Kind::Serial},
    {"wwn", Kind::WorldWideName},
    {"wwid", Kind::WorldWideName},
    {"wwpn", Kind::WorldWideName},
    {"world wide", Kind::WorldWideName},
    {"sas addr", Kind::WorldWideName},
    {" naa", Kind::WorldWideName},
    {" eui", Kind::WorldWideName},
    {"unique id", Kind::WorldWideName},
    {"logical id", Kind::WorldWideName},
    {"uuid", Kind::Uuid},
    {"guid ", Kind::Uuid},
    {"asset tag", Kind::Tag},
    {"asset n", Kind::Tag},
    {"asset id", Kind::Tag},
    {"inventory n", Kind::Tag},
    {"service tag", Kind::Tag},
    {"service code", Kind::Tag},
    {"host name", Kind::Host},
    {"hostname", Kind::Host},
    {"server name", Kind::Host},
    {"computer name", Kind::Host},
    {"machine name", Kind::Host},
    {"node name", Kind::Host},
    {"system name", Kind::Host},
    {"domain name", Kind::Host},
    {"dns name", Kind::Host},
    {" fqdn ", Kind::Host},
    {"mail server", Kind::Host},
    {"smtp server", Kind::Host},
    {"ntp server", Kind::Host},
    {" mac ", Kind::Mac},
    {" ip ", Kind::Ip},
    {"ip addr", Kind::Ip},
    {" ipv4 ", Kind::Ip},
    {" ipv6 ", Kind::Ip},
    {" gateway ", Kind::Ip},
    {"dns server", Kind::Ip},
    {"licence key", Kind::Licence},
    {"license key", Kind::Licence},
    {"licence no ", Kind::Licence},
    {"licence num", Kind::Licence},
    {"license no ", Kind::Licence},
    {"license num", Kind::Licence},
    {"licence code", Kind::Licence},
    {"license code", Kind::Licence},
    {"licence id", Kind::Licence},
    {"license id", Kind::Licence},
    {"activation key", Kind::Licence},
    {"activation code", Kind::Licence},
    {"feature key", Kind::Licence},
    {"product key", Kind::Licence},
    {"mail addr", Kind::Mail},
    {" mail to ", Kind::Mail},
    {" mail from ", Kind::Mail},
    {"mail recipient", Kind::Mail},
    {"mail sender", Kind::Mail},
};

/// " host name " for "- Host-Name": words in lower case with a blank around each.
std::string InWords(std::string_view key) {
    std::string words = " ";
    for (const char character : InLowerCase(key)) {
        const bool isPart = basics::IsAlphanumeric(character);
        if (isPart || words.back() != ' ') {
            words += isPart ? character : ' ';
        }
    }
    return words.back() == ' ' ? words : words + ' ';
}

bool Contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

/// "PD12", "scRG0", "RAID10"
bool IsNameOfPart(std::string_view lower) {
    for (const std::string_view head : {"pd", "ld", "rg", "scrg", "raid"}) {
        if (lower.starts_with(head) && lower.size() > head.size() &&
            std::all_of(lower.begin() + static_cast<std::ptrdiff_t>(head.size()), lower.end(),
                        basics::IsDigit)) {
            return true;
        }
    }
    return false;
}

}  // namespace

const KindWords& WordsOf(Kind kind) {
    return kKindWords[static_cast<std::size_t>(kind)];
}

std::array<Kind, kKindCount> AllKinds() {
    std::array<Kind, kKindCount> kinds{};
    for (std::size_t number = 0; number < kKindCount; ++number) {
        kinds[number] = static_cast<Kind>(number);
    }
    return kinds;
}

std::optional<WordNumber> ParseWord(std::string_view word) {
    const std::size_t dash = word.find('-');
    if (dash == std::string_view::npos || word.size() - dash <= kWordDigits) {
        return std::nullopt;
    }
    const auto number = basics::NumberFrom<std::size_t>(word.substr(dash + 1));
    for (const Kind kind : AllKinds()) {
        if (number && word.substr(0, dash) == WordsOf(kind).stem) {
            return WordNumber{kind, *number};
        }
    }
    return std::nullopt;
}

std::string WordFor(WordNumber word) {
    return WordsOf(word.kind).stem + ("-" + basics::Digits(word.number, kWordDigits));
}

std::optional<Kind> KindOfKey(std::string_view key) {
    const std::string words = InWords(key);
    if (words == " host ") {
        return Kind::Host;
    }
    if (words == " mail " || words == " e mail ") {
        return Kind::Mail;
    }
    const auto* const rule = std::find_if(std::begin(kKeyRules), std::end(kKeyRules),
                                          [&](const KeyRule& each) { return Contains(words, each.part); });
    return rule == std::end(kKeyRules) ? std::nullopt : rule->kind;
}

bool SpeaksOfAddresses(std::string_view key) {
    return Contains(InLowerCase(key), "addr");
}

bool IsReportWord(std::string_view word) {
    static const std::set<std::string, std::less<>> kWords = {
        "absent",   "active",   "alert",     "array",          "auto",         "back",       "backplane",
        "bad",      "battery",  "blocked",   "cache",          "charging",     "controller", "copyback",
        "critical", "data",     "dedicated", "default",        "degraded",     "dhcp",       "direct",
        "disabled", "disk",     "drive",     "enabled",        "enclosure",    "error",      "expander",
        "external", "failed",   "false",     "fast",           "foreign",      "full",       "global",
        "good",     "group",    "hot",       "idle",           "inactive",     "init",       "initializing",
        "internal", "learning", "linux",     "local",          "localhost",    "lost",       "mirror",
        "missing",  "normal",   "offline",   "online",         "only",         "optimal",    "partially",
        "port",     "power",    "present",   "raid",           "read",         "ready",      "rebuild",
        "removed",  "server",   "spare",     "standby",        "static",       "status",     "stopped",
        "storage",  "system",   "true",      "unconfig",       "unconfigured", "unused",     "warning",
        "write",    "needs",    "attention", "reconstruction", "failure",      "unknown",    "none"};
    const std::string lower = InLowerCase(word);
    return kWords.count(lower) > 0 || IsNameOfPart(lower);
}

}  // namespace capture
