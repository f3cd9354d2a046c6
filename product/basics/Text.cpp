#include "basics/Text.h"

#include "basics/Words.h"

#include <utf8proc.h>

#include <algorithm>

namespace basics {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
constexpr std::string_view kEllipsis = "\xE2\x80\xA6";

/// The front of a text: a character with the bytes that it takes, or bytes that are none.
struct Front {
    utf8proc_int32_t character;  ///< negative: no UTF-8
    std::size_t size;
};

Front FrontOf(std::string_view text) {
    utf8proc_int32_t character = -1;
    const utf8proc_ssize_t size = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                                                   static_cast<utf8proc_ssize_t>(text.size()), &character);
    return size > 0 ? Front{character, static_cast<std::size_t>(size)} : Front{-1, 1};
}

bool IsBlank(utf8proc_int32_t character) {
    return character == '\t' || character == '\n' || character == '\r';
}

// Controls, invisible format characters (those that turn the direction of writing among them), line
// separators, and what stands for no character.
bool IsHarmful(utf8proc_int32_t character) {
    switch (utf8proc_category(character)) {
        case UTF8PROC_CATEGORY_CC:
        case UTF8PROC_CATEGORY_CF:
        case UTF8PROC_CATEGORY_CS:
        case UTF8PROC_CATEGORY_CO:
        case UTF8PROC_CATEGORY_CN:
        case UTF8PROC_CATEGORY_ZL:
        case UTF8PROC_CATEGORY_ZP:
            return true;
        default:
            return false;
    }
}

std::size_t WidthOf(utf8proc_int32_t character) {
    return static_cast<std::size_t>(std::max(0, utf8proc_charwidth(character)));
}

}  // namespace

std::string Printable(std::string_view text) {
    std::string printable;
    printable.reserve(text.size());
    for (Front front{}; !text.empty(); text.remove_prefix(front.size)) {
        front = FrontOf(text);
        if (front.character >= 0 && IsBlank(front.character)) {
            printable += ' ';
        } else if (front.character < 0 || IsHarmful(front.character)) {
            printable += kReplacement;
        } else {
            printable += text.substr(0, front.size);
        }
    }
    return printable;
}

std::size_t WidthOf(std::string_view text) {
    std::size_t width = 0;
    for (Front front{}; !text.empty(); text.remove_prefix(front.size)) {
        front = FrontOf(text);
        width += front.character < 0 ? 1 : WidthOf(front.character);
    }
    return width;
}

std::size_t FittingFront(std::string_view text, std::size_t width) {
    std::size_t fitting = 0;
    for (std::size_t columns = 0; fitting < text.size();) {
        const Front front = FrontOf(text.substr(fitting));
        columns += front.character < 0 ? 1 : WidthOf(front.character);
        if (columns > width) {
            break;
        }
        fitting += front.size;
    }
    return fitting;
}

std::string Shortened(std::string_view text, std::size_t width) {
    if (width == 0 || FittingFront(text, width) == text.size()) {
        return width == 0 ? "" : std::string(text);
    }
    return std::string(text.substr(0, FittingFront(text, width - 1))).append(kEllipsis);
}

std::string Shortened(std::string_view text, std::size_t width, char mark) {
    std::string shortened = Shortened(text, width);
    const auto marksIn = [mark](std::string_view in) { return std::count(in.begin(), in.end(), mark); };
    if (width > 0 && marksIn(shortened) < marksIn(text)) {
        shortened = Shortened(text, width - 1) + mark;
    }
    return shortened;
}

std::string PadRight(std::string text, std::size_t width) {
    const std::size_t taken = WidthOf(text);
    return std::move(text.append(taken < width ? width - taken : 0, ' '));
}

std::string PadLeft(std::string text, std::size_t width) {
    const std::size_t taken = WidthOf(text);
    return std::move(text.insert(0, taken < width ? width - taken : 0, ' '));
}

std::string OneLine(const std::string& text) {
    std::string line;
    for (const char character : text) {
        const auto code = static_cast<unsigned char>(character);
        if (character == '\n') {
            line += "\\n";
        } else if (code < 0x20 || code == 0x7F) {
            line += "\\x" + Digits(code, 2, 16);
        } else {
            line += character;
        }
    }
    return Printable(line);
}

}  // namespace basics
