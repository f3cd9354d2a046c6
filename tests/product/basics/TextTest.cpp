#include "basics/Text.h"

#include <gtest/gtest.h>

namespace basics::test {
namespace {

constexpr const char* kReplacement = "\xEF\xBF\xBD";

TEST(TextTest, ShowsNothingThatSteersATerminal) {
    EXPECT_EQ(Printable("plain text ~"), "plain text ~");
    EXPECT_EQ(Printable("a\tb\nc\rd"), "a b c d");
    EXPECT_EQ(Printable("\x1b[31m"), std::string(kReplacement) + "[31m");
    EXPECT_EQ(Printable("\x7f"), kReplacement);
    EXPECT_EQ(Printable("\xC2\x9B"
                        "31m"),
              std::string(kReplacement) + "31m");  // the one-byte form of ESC [
    EXPECT_EQ(Printable("\xE2\x80\xAE"
                        "gnp"),
              std::string(kReplacement) + "gnp");        // turns the direction
    EXPECT_EQ(Printable("\xE2\x80\xA8"), kReplacement);  // line separator
    EXPECT_EQ(Printable("\xFF\xC3"), std::string(kReplacement) + kReplacement);
    EXPECT_EQ(Printable("\xC3\xA4\xE6\xBC\xA2"), "\xC3\xA4\xE6\xBC\xA2");
}

TEST(TextTest, CountsColumnsNotBytes) {
    EXPECT_EQ(WidthOf(""), 0U);
    EXPECT_EQ(WidthOf("abc"), 3U);
    EXPECT_EQ(WidthOf("\xC3\xA4"), 1U);
    EXPECT_EQ(WidthOf("a\xCC\x88"), 1U);     // a letter and a mark above it
    EXPECT_EQ(WidthOf("\xE6\xBC\xA2"), 2U);  // a wide character
}

TEST(TextTest, ShortensToColumns) {
    EXPECT_EQ(Shortened("abcdef", 6), "abcdef");
    EXPECT_EQ(Shortened("abcdef", 5), "abcd\xE2\x80\xA6");
    EXPECT_EQ(Shortened("abcdef", 1), "\xE2\x80\xA6");
    EXPECT_EQ(Shortened("abcdef", 0), "");
    EXPECT_EQ(Shortened("\xE6\xBC\xA2\xE6\xBC\xA2\xE6\xBC\xA2", 4), "\xE6\xBC\xA2\xE2\x80\xA6");
    EXPECT_EQ(Shortened("\xC3\xA4\xC3\xB6", 2), "\xC3\xA4\xC3\xB6");
}

TEST(TextTest, PadsToColumns) {
    EXPECT_EQ(PadRight("\xC3\xA4", 3), "\xC3\xA4  ");
    EXPECT_EQ(PadLeft("\xC3\xA4", 3), "  \xC3\xA4");
    EXPECT_EQ(PadLeft("long", 3), "long");
}

TEST(TextTest, KeepsAMessageOnOneLine) {
    EXPECT_EQ(OneLine("a\nb\tc\x7f\x1b ä"), "a\\nb\\x09c\\x7f\\x1b ä");
}

}  // namespace
}  // namespace basics::test
