#include "Shapes.h"

#include "basics/Words.h"

#include <arpa/inet.h>

#include <algorithm>
#include <string>
#include <vector>

namespace capture {
namespace {

using basics::IsAlphanumeric;
using basics::IsDigit;

bool IsHexadecimal(char character) {
    return IsDigit(character) || ('a' <= character && character <= 'f') ||
           ('A' <= character && character <= 'F');
}

bool IsOfAToken(char character) {
    switch (character) {
        case '.':
        case ':':
        case '-':
        case '@':
        case '_':
        case '+':
        case '%':
            return true;
        default:
            return IsAlphanumeric(character);
    }
}

std::size_t CountOf(std::string_view text, char character) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), character));
}

/// Whether the text is groups of hexadecimal digits of these sizes.
bool AreGroups(std::string_view text, char between, std::initializer_list<std::size_t> sizes) {
    bool isFirst = true;
    for (const std::size_t size : sizes) {
        if (!isFirst && (text.empty() || text.front() != between)) {
            return false;
        }
        text.remove_prefix(isFirst ? 0 : 1);
        const std::string_view group = text.substr(0, size);
        if (group.size() != size || !std::all_of(group.begin(), group.end(), IsHexadecimal)) {
            return false;
        }
        text.remove_prefix(size);
        isFirst = false;
    }
    return text.empty();
}

bool IsMac(std::string_view token) {
    return AreGroups(token, ':', {2, 2, 2, 2, 2, 2}) || AreGroups(token, '-', {2, 2, 2, 2, 2, 2});
}

bool IsGroupedName(std::string_view token) {
    return AreGroups(token, ':', {2, 2, 2, 2, 2, 2, 2, 2}) || AreGroups(token, '-', {2, 2, 2, 2, 2, 2, 2, 2});
}

bool IsUuid(std::string_view token) {
    return AreGroups(token, '-', {8, 4, 4, 4, 12});
}

bool IsIpv6(std::string_view token) {
    in6_addr address{};
    const bool hasGroups = CountOf(token, ':') == 7 || (CountOf(token, ':') >= 2 && token.front() != ':');
    return hasGroups && token.back() != ':' && std::any_of(token.begin(), token.end(), IsDigit) &&
           ::inet_pton(AF_INET6, std::string(token).c_str(), &address) == 1;
}

/// "192.168.7.21"
bool IsIpv4(std::string_view token) {
    constexpr unsigned kLeastFirst = 10;
    constexpr unsigned kMost = 255;
    const std::vector<std::string_view> numbers = basics::Words(token, ".");
    if (CountOf(token, '.') != 3 || numbers.size() != 4) {
        return false;
    }
    const bool areNumbers = std::all_of(numbers.begin(), numbers.end(), [](std::string_view number) {
        return (number.size() == 1 || number.front() != '0') &&
               basics::NumberFrom<unsigned>(number).value_or(kMost + 1) <= kMost;
    });
    return areNumbers && basics::NumberFrom<unsigned>(numbers.front()).value_or(0) >= kLeastFirst;
}

bool IsMail(std::string_view token) {
    const std::size_t at = token.find('@');
    if (at == 0 || at == std::string_view::npos || token.find_first_of("@:%", at + 1) != token.npos) {
        return false;
    }
    const std::string_view domain = token.substr(at + 1);
    return !domain.empty() && basics::IsLetter(domain.front());
}

std::string_view WithoutStopsAround(std::string_view token) {
    constexpr std::string_view kStops = ".:-_+%";
    token.remove_prefix(std::min(token.find_first_not_of(kStops), token.size()));
    return token.substr(0, token.find_last_not_of(kStops) + 1);
}

void Judge(std::string_view token, bool isAboutVersions, const SeeShape& see) {
    token = WithoutStopsAround(token);
    if (IsMail(token)) {
        see(Kind::Mail, token);
    } else if (IsMac(token)) {
        see(Kind::Mac, token);
    } else if (IsGroupedName(token)) {
        see(Kind::WorldWideName, token);
    } else if (IsUuid(token)) {
        see(Kind::Uuid, token);
    } else if (const std::string_view address = token.substr(0, token.find('%')); IsIpv6(address)) {
        see(Kind::Ip, address);  // behind it: the interface
    } else if (const std::string_view host = token.substr(0, token.find(':'));
               !isAboutVersions && IsIpv4(host)) {
        see(Kind::Ip, host);  // behind it: the port
    }
}

/// Whether there is anything in it that all shapes have.
bool CanHaveShape(std::string_view token) {
    return token.size() >= 5 && (CountOf(token, '@') == 1 || CountOf(token, ':') >= 2 ||
                                 CountOf(token, '-') >= 4 || CountOf(token, '.') >= 3);
}

}  // namespace

void FindShapes(std::string_view line, bool isAboutVersions, const SeeShape& see) {
    for (std::size_t at = 0; at < line.size();) {
        std::size_t end = at;
        while (end < line.size() && IsOfAToken(line[end])) {
            ++end;
        }
        const std::string_view token = line.substr(at, end - at);
        if (CanHaveShape(token)) {
            Judge(token, isAboutVersions, see);
            // "MAC:00:1b:44:11:3a:b7" begins with a key.
            if (const std::size_t colon = token.find(':');
                colon != token.npos && !IsHexadecimal(token.front())) {
                Judge(token.substr(colon + 1), isAboutVersions, see);
            }
        }
        at = end + 1;
    }
}

bool SpeaksOfVersions(std::string_view line) {
    const std::string lower = basics::InLowerCase(line);
    for (const std::string_view part :
         {"version", "firmware", "bios", "uefi", "driver", "package", "build", "revision", "release",
          "nvdata", "boot", "loader", "microcode", "software", "patch"}) {
        if (lower.find(part) != lower.npos) {
            return true;
        }
    }
    const std::vector<std::string_view> words = basics::Words(lower, " \t:/.()#-");
    return std::any_of(words.begin(), words.end(),
                       [](std::string_view word) { return word == "fw" || word == "rev" || word == "ver"; });
}

bool IsLongHexadecimal(std::string_view text) {
    constexpr std::size_t kLeast = 12;
    text = basics::Trimmed(text);
    if (text.starts_with("0x") || text.starts_with("0X")) {
        text.remove_prefix(2);
    }
    const auto digits = static_cast<std::size_t>(std::count_if(text.begin(), text.end(), IsHexadecimal));
    return digits >= kLeast && std::all_of(text.begin(), text.end(), [](char each) {
               return IsHexadecimal(each) || each == ':' || each == '-';
           });
}

}  // namespace capture
