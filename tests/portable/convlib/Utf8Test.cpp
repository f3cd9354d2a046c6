#include "Utf8.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

namespace convlib {
namespace {

/// The units of a text in writing: "U+0041" for a character, "bad(2)" for two bytes that are none.
std::string Units(std::string_view text) {
    std::string units;
    while (!text.empty()) {
        const Utf8Unit unit = ReadUtf8(text);
        char buffer[32];
        if (unit.isCharacter) {
            std::snprintf(buffer, sizeof buffer, "U+%04X ", static_cast<unsigned int>(unit.character));
        } else {
            std::snprintf(buffer, sizeof buffer, "bad(%zu) ", unit.length);
        }
        units += buffer;
        text.remove_prefix(unit.length);
    }
    return units.empty() ? units : units.substr(0, units.size() - 1);
}

/// The bytes of a code point by the plain formula, whether or not it is a character.
std::string Encode(char32_t code) {
    const auto byte = [](char32_t value) { return static_cast<char>(static_cast<unsigned char>(value)); };
    if (code < 0x80) {
        return {byte(code)};
    }
    if (code < 0x800) {
        return {byte(0xC0 | (code >> 6)), byte(0x80 | (code & 0x3F))};
    }
    if (code < 0x10000) {
        return {byte(0xE0 | (code >> 12)), byte(0x80 | ((code >> 6) & 0x3F)), byte(0x80 | (code & 0x3F))};
    }
    return {byte(0xF0 | (code >> 18)), byte(0x80 | ((code >> 12) & 0x3F)), byte(0x80 | ((code >> 6) & 0x3F)),
            byte(0x80 | (code & 0x3F))};
}

TEST(Utf8Test, EveryCodePointIsReadUnlessItIsASurrogateOrTooLarge) {
    for (char32_t code = 0; code < 0x110400; ++code) {
        const std::string bytes = Encode(code);
        const bool isScalar = code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
        const Utf8Unit unit = ReadUtf8(bytes);
        ASSERT_EQ(unit.isCharacter, isScalar) << std::hex << static_cast<unsigned int>(code);
        if (isScalar) {
            ASSERT_EQ(unit.character, code);
            ASSERT_EQ(unit.length, bytes.size());
        }
    }
}

TEST(Utf8Test, EveryCharacterCutShortIsOneBadUnit) {
    for (const char32_t code : {U'\u0080', U'\u07FF', U'\u0800', U'\uFFFD', U'\U00010000', U'\U0010FFFF'}) {
        const std::string bytes = Encode(code);
        for (std::size_t length = 1; length < bytes.size(); ++length) {
            const std::string cut = bytes.substr(0, length);
            const std::string bad = "bad(" + std::to_string(length) + ")";
            EXPECT_EQ(Units(cut), bad);
            EXPECT_EQ(Units(cut + "A"), bad + " U+0041");
            EXPECT_EQ(Units(cut + bytes), bad + " " + Units(bytes));
        }
    }
}

TEST(Utf8Test, BadBytesAreTakenInMaximalSubparts) {
    struct Case {
        const char* what;
        std::string bytes;
        std::string units;
    };
    const std::vector<Case> cases = {
        {"stray continuation", "\x80", "bad(1)"},
        {"last stray continuation", "\xBF", "bad(1)"},
        {"several stray continuations", "\x80\xBF\x80", "bad(1) bad(1) bad(1)"},
        {"overlong slash in two", "\xC0\xAF", "bad(1) bad(1)"},
        {"overlong DEL in two", "\xC1\xBF", "bad(1) bad(1)"},
        {"overlong in three", "\xE0\x80\xAF", "bad(1) bad(1) bad(1)"},
        {"largest overlong in three", "\xE0\x9F\xBF", "bad(1) bad(1) bad(1)"},
        {"overlong in four", "\xF0\x80\x80\xAF", "bad(1) bad(1) bad(1) bad(1)"},
        {"largest overlong in four", "\xF0\x8F\xBF\xBF", "bad(1) bad(1) bad(1) bad(1)"},
        {"first surrogate", "\xED\xA0\x80", "bad(1) bad(1) bad(1)"},
        {"last surrogate", "\xED\xBF\xBF", "bad(1) bad(1) bad(1)"},
        {"pair of surrogates", "\xED\xA0\xBD\xED\xB8\x80", "bad(1) bad(1) bad(1) bad(1) bad(1) bad(1)"},
        {"just below the surrogates", "\xED\x9F\xBF", "U+D7FF"},
        {"just above the surrogates", "\xEE\x80\x80", "U+E000"},
        {"just beyond the last code point", "\xF4\x90\x80\x80", "bad(1) bad(1) bad(1) bad(1)"},
        {"the last code point", "\xF4\x8F\xBF\xBF", "U+10FFFF"},
        {"lead of five", "\xF8\x88\x80\x80\x80", "bad(1) bad(1) bad(1) bad(1) bad(1)"},
        {"lead beyond the last code point", "\xF5\x80\x80\x80", "bad(1) bad(1) bad(1) bad(1)"},
        {"bytes that never occur", "\xF5\xFE\xFF", "bad(1) bad(1) bad(1)"},
        {"three of four", "\xF0\x9F\x98", "bad(3)"},
        {"two of four", "\xF0\x9F", "bad(2)"},
        {"two of three", "\xE2\x82", "bad(2)"},
        {"one of two", "\xC3", "bad(1)"},
        {"cut by a quotation mark", "\xE2\x82\"", "bad(2) U+0022"},
        {"lead behind lead", "\xC3\xC3\xA9", "bad(1) U+00E9"},
        {"the example of the Unicode standard",
         "a\xF1\x80\x80\xE1\x80\xC2"
         "b\x80"
         "c\x80\xBF"
         "d",
         "U+0061 bad(3) bad(2) bad(1) U+0062 bad(1) U+0063 bad(1) bad(1) U+0064"},
        {"NUL", std::string("\0", 1), "U+0000"},
    };
    for (const Case& testCase : cases) {
        EXPECT_EQ(Units(testCase.bytes), testCase.units) << testCase.what;
    }
}

}  // namespace
}  // namespace convlib
