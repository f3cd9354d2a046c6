#include "http/Target.h"

#include <algorithm>

namespace http {
namespace {

constexpr unsigned char kFirstPrintable = 0x20;
constexpr unsigned char kDelete = 0x7F;

std::optional<unsigned> HexDigit(char digit) {
    if (digit >= '0' && digit <= '9') {
        return static_cast<unsigned>(digit - '0');
    }
    constexpr unsigned kTen = 10;
    if (digit >= 'a' && digit <= 'f') {
        return static_cast<unsigned>(digit - 'a') + kTen;
    }
    if (digit >= 'A' && digit <= 'F') {
        return static_cast<unsigned>(digit - 'A') + kTen;
    }
    return std::nullopt;
}

bool IsControl(unsigned char byte) {
    return byte < kFirstPrintable || byte == kDelete;
}

/// How many bytes the character that begins here has; 0 where it is none.
std::size_t CharacterSize(std::string_view text) {
    const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    const unsigned char first = byte(0);
    const std::size_t size = first < 0x80                    ? 1
                             : first >= 0xC2 && first < 0xE0 ? 2
                             : first >= 0xE0 && first < 0xF0 ? 3
                             : first >= 0xF0 && first < 0xF5 ? 4
                                                             : 0;
    if (size == 0 || size > text.size() ||
        !std::all_of(text.begin() + 1, text.begin() + static_cast<std::ptrdiff_t>(size),
                     [](char each) { return (static_cast<unsigned char>(each) & 0xC0U) == 0x80; })) {
        return 0;
    }
    const bool isOverlong = (first == 0xE0 && byte(1) < 0xA0) || (first == 0xF0 && byte(1) < 0x90);
    const bool isOutside = (first == 0xED && byte(1) >= 0xA0) || (first == 0xF4 && byte(1) >= 0x90);
    return isOverlong || isOutside ? 0 : size;
}

bool IsText(std::string_view text) {
    while (!text.empty()) {
        const std::size_t size = CharacterSize(text);
        if (size == 0 || IsControl(static_cast<unsigned char>(text.front()))) {
            return false;
        }
        text.remove_prefix(size);
    }
    return true;
}

std::optional<std::string> Decoded(std::string_view text) {
    constexpr unsigned kHexBits = 4;
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '%') {
            decoded += text[at];
            continue;
        }
        const auto high = text.size() - at > 2 ? HexDigit(text[at + 1]) : std::nullopt;
        const auto low = text.size() - at > 2 ? HexDigit(text[at + 2]) : std::nullopt;
        if (!high || !low) {
            return std::nullopt;
        }
        decoded += static_cast<char>(static_cast<unsigned char>(*high << kHexBits | *low));
        at += 2;
    }
    return IsText(decoded) ? std::optional(std::move(decoded)) : std::nullopt;
}

}  // namespace

std::optional<Target> TargetFrom(std::string_view text) {
    if (text.empty() || text.front() != '/') {
        return std::nullopt;
    }
    const std::size_t end = std::min(text.find('?'), text.size());
    std::optional<std::string> path = Decoded(text.substr(0, end));
    if (!path) {
        return std::nullopt;
    }
    Target target{std::move(*path), {}};
    for (std::string_view rest = text.substr(std::min(end + 1, text.size())); !rest.empty();) {
        const std::string_view field = rest.substr(0, rest.find('&'));
        rest.remove_prefix(std::min(field.size() + 1, rest.size()));
        const std::size_t equals = std::min(field.find('='), field.size());
        std::optional<std::string> name = Decoded(field.substr(0, equals));
        std::optional<std::string> value = Decoded(field.substr(std::min(equals + 1, field.size())));
        if (!name || !value) {
            return std::nullopt;
        }
        if (!field.empty()) {
            target.query.emplace_back(std::move(*name), std::move(*value));
        }
    }
    return target;
}

}  // namespace http
