#include "XmlText.h"

#include "Utf8.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace convlib {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

/// Whether a byte stands for itself without a closer look: printable ASCII that is no markup, and DEL.
constexpr std::array<bool, 256> kIsOrdinary = [] {
    std::array<bool, 256> table{};
    for (std::size_t byte = ' '; byte < 0x80; ++byte) {
        table[byte] = byte != '&' && byte != '<' && byte != '>' && byte != '"';
    }
    return table;
}();

/// What a character is written as; "" when it stands for itself.
std::string_view Substitute(char32_t character) {
    switch (character) {
        case U'&':
            return "&amp;";
        case U'<':
            return "&lt;";
        case U'>':
            return "&gt;";
        case U'"':
            return "&quot;";
        case U'\t':
            return "&#9;";
        case U'\n':
            return "&#10;";
        case U'\r':
            return "&#13;";
        case 0xFFFE:
        case 0xFFFF:
            return kReplacement;
        default:
            return character < U' ' ? kReplacement : std::string_view();
    }
}

struct Range {
    char32_t first;
    char32_t last;
};

// The NameStartChar and NameChar of XML 1.0, without the colon.
constexpr Range kNameStarts[] = {
    {'A', 'Z'},       {'_', '_'},       {'a', 'z'},       {0xC0, 0xD6},     {0xD8, 0xF6},
    {0xF8, 0x2FF},    {0x370, 0x37D},   {0x37F, 0x1FFF},  {0x200C, 0x200D}, {0x2070, 0x218F},
    {0x2C00, 0x2FEF}, {0x3001, 0xD7FF}, {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD}, {0x10000, 0xEFFFF},
};
constexpr Range kNameFollowers[] = {
    {'-', '.'}, {'0', '9'}, {0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040},
};

template <std::size_t Count>
bool IsIn(const Range (&ranges)[Count], char32_t character) {
    return std::any_of(std::begin(ranges), std::end(ranges), [character](const Range& range) {
        return range.first <= character && character <= range.last;
    });
}

}  // namespace

void AppendAttributeText(std::string& xml, std::string_view text) {
    std::size_t runStart = 0;
    std::size_t at = 0;
    while (at < text.size()) {
        if (kIsOrdinary[static_cast<unsigned char>(text[at])]) {
            ++at;
            continue;
        }
        const Utf8Unit unit = ReadUtf8(text.substr(at));
        const std::string_view substitute = unit.isCharacter ? Substitute(unit.character) : kReplacement;
        if (!substitute.empty()) {
            xml += text.substr(runStart, at - runStart);
            xml += substitute;
            runStart = at + unit.length;
        }
        at += unit.length;
    }
    xml += text.substr(runStart);
}

bool IsElementName(std::string_view text) {
    if (text.empty()) {
        return false;
    }
    std::size_t length = 0;
    for (std::size_t at = 0; at < text.size(); at += length) {
        const Utf8Unit unit = ReadUtf8(text.substr(at));
        length = unit.length;
        const bool fits =
            IsIn(kNameStarts, unit.character) || (at > 0 && IsIn(kNameFollowers, unit.character));
        if (!unit.isCharacter || !fits) {
            return false;
        }
    }
    return true;
}

}  // namespace convlib
