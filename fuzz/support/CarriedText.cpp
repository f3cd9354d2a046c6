#include "CarriedText.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace fuzzing {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

/// A row of the Unicode standard's table of well-formed byte sequences; further bytes are 80 to BF.
struct Row {
    unsigned char firstMin, firstMax;
    unsigned char secondMin, secondMax;
    std::size_t length;
};
constexpr Row kRows[] = {
    {0x00, 0x7F, 0x00, 0x00, 1}, {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
    {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3},
    {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4},
};

bool IsIn(char byte, unsigned char min, unsigned char max) {
    const auto code = static_cast<unsigned char>(byte);
    return min <= code && code <= max;
}

/// The front of a text: a whole sequence, or bytes that count as one replacement.
struct Front {
    std::size_t length;
    bool isWhole;
};

Front FrontOf(std::string_view text) {
    const auto* const row = std::find_if(std::begin(kRows), std::end(kRows), [text](const Row& each) {
        return IsIn(text.front(), each.firstMin, each.firstMax);
    });
    if (row == std::end(kRows)) {
        return {1, false};
    }
    std::size_t length = 1;
    while (length < row->length && length < text.size() &&
           IsIn(text[length], length == 1 ? row->secondMin : 0x80, length == 1 ? row->secondMax : 0xBF)) {
        ++length;
    }
    return {length, length == row->length};
}

bool IsXmlCharacter(std::string_view sequence) {
    if (sequence == "\xEF\xBF\xBE" || sequence == "\xEF\xBF\xBF") {
        return false;
    }
    return !IsIn(sequence.front(), 0, 0x1F) ||
           std::string_view("\t\n\r").find(sequence.front()) != std::string_view::npos;
}

// Nearly all of a usual text, which need not be taken apart.
std::size_t PlainFront(std::string_view text) {
    std::size_t length = 0;
    while (length < text.size() && IsIn(text[length], 0x20, 0x7E)) {
        ++length;
    }
    return length;
}

}  // namespace

bool IsCarriedAs(std::string_view text, std::string_view carried) {
    while (!text.empty()) {
        const std::size_t plain = PlainFront(text);
        if (text.substr(0, plain) != carried.substr(0, plain)) {
            return false;
        }
        text.remove_prefix(plain);
        carried.remove_prefix(plain);
        if (text.empty()) {
            break;
        }
        const Front front = FrontOf(text);
        const std::string_view sequence = text.substr(0, front.length);
        const std::string_view expected = front.isWhole && IsXmlCharacter(sequence) ? sequence : kReplacement;
        if (!carried.starts_with(expected)) {
            return false;
        }
        carried.remove_prefix(expected.size());
        text.remove_prefix(front.length);
    }
    return carried.empty();
}

}  // namespace fuzzing
