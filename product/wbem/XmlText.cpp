#include "XmlText.h"

#include <utf8proc.h>

#include <array>
#include <cstddef>

namespace wbem {
namespace {

/// Characters that stand for themselves wherever they are, as nearly all of a document do.
constexpr std::array<bool, 256> kPlain = [] {
    std::array<bool, 256> plain{};
    for (std::size_t code = 0x20; code < 0x7F; ++code) {
        plain.at(code) = code != '&' && code != '<' && code != '>' && code != '"';
    }
    return plain;
}();

/// Where the next other one stands, from `at` on.
std::size_t EndOfPlain(std::string_view text, std::size_t at) {
    while (at < text.size() && kPlain[static_cast<unsigned char>(text[at])]) {
        ++at;
    }
    return at;
}

constexpr std::string_view kReplacement = "\xef\xbf\xbd";

bool IsXmlCharacter(utf8proc_int32_t code) {
    return code >= 0x20 ? code != 0xFFFE && code != 0xFFFF : code == '\t' || code == '\n' || code == '\r';
}

/// Bytes of the character at the front of a text that is not empty; 0 where there is none for XML.
std::size_t CharacterAt(std::string_view text) {
    const auto first = static_cast<unsigned char>(text.front());
    if (first < 0x80) {
        return IsXmlCharacter(first) ? 1 : 0;
    }
    utf8proc_int32_t code = -1;
    const utf8proc_ssize_t length = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                                                     static_cast<utf8proc_ssize_t>(text.size()), &code);
    return length > 0 && IsXmlCharacter(code) ? static_cast<std::size_t>(length) : 0;
}

std::size_t BytesToReplace(std::string_view text) {
    constexpr std::string_view kNonCharacter = "\xef\xbf";  // U+FFFE and U+FFFF
    const bool isCharacter =
        text.starts_with(kNonCharacter) && text.size() > 2 && (text[2] == '\xbe' || text[2] == '\xbf');
    return isCharacter ? 3 : 1;
}

std::string_view InText(char character) {
    switch (character) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        default:
            return {};
    }
}

std::string_view InAttribute(char character) {
    switch (character) {
        case '"':
            return "&quot;";
        case '\t':
            return "&#9;";
        case '\n':
            return "&#10;";
        case '\r':
            return "&#13;";
        default:
            return InText(character);
    }
}

template <typename EscapeOf>
void Append(std::string& xml, std::string_view text, EscapeOf escapeOf) {
    std::size_t done = 0;  // up to which all is taken over
    std::size_t at = 0;
    const auto replace = [&](std::string_view with, std::size_t length) {
        xml.append(text, done, at - done).append(with);
        at += length;
        done = at;
    };
    while ((at = EndOfPlain(text, at)) < text.size()) {
        const std::size_t length = CharacterAt(text.substr(at));
        if (length == 0) {
            replace(kReplacement, BytesToReplace(text.substr(at)));
        } else if (const std::string_view escape = escapeOf(text[at]); !escape.empty()) {
            replace(escape, length);
        } else {
            at += length;
        }
    }
    xml.append(text, done);
}

}  // namespace

bool IsXmlText(std::string_view text) {
    std::size_t at = 0;
    while ((at = EndOfPlain(text, at)) < text.size()) {
        const std::size_t length = CharacterAt(text.substr(at));
        if (length == 0) {
            return false;
        }
        at += length;
    }
    return true;
}

void AppendText(std::string& xml, std::string_view text) {
    Append(xml, text, InText);
}

void AppendAttribute(std::string& xml, std::string_view text) {
    Append(xml, text, InAttribute);
}

}  // namespace wbem
