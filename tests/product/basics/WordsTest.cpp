#include "basics/Words.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace basics::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(Words, StandBetweenWhateverParts) {
    EXPECT_THAT(Words("vdkcli -v  -a0 "), ElementsAre("vdkcli", "-v", "-a0"));
    EXPECT_THAT(Words(" a\tb,;c", " \t,;"), ElementsAre("a", "b", "c"));
    EXPECT_THAT(Words(",", ","), IsEmpty());
    EXPECT_THAT(Words(""), IsEmpty());
}

TEST(Words, AreJoinedBehindTheFirstThatIsNotEmpty) {
    EXPECT_EQ(Joined(std::vector<std::string>{"RG0", "", "LD1"}), "RG0, , LD1");
    EXPECT_EQ(Joined(std::vector<std::string>{"", "LD1"}, " "), "LD1");
    EXPECT_EQ(Joined(std::vector<std::string>{}), "");
    EXPECT_EQ(Joined(std::vector{1, 2}, "+", [](int number) { return std::to_string(number); }), "1+2");
}

TEST(Words, LoseWhiteSpaceAtTheirEndsOnly) {
    EXPECT_EQ(Trimmed(" \t\r\n\v\f a \t b \t\r\n\v\f "), "a \t b");
    EXPECT_EQ(Trimmed("ab"), "ab");
    EXPECT_EQ(Trimmed(" \n"), "");
    EXPECT_EQ(Trimmed(""), "");
}

TEST(Words, HaveTheLettersOfAscii) {
    EXPECT_EQ(InLowerCase("AZaz09@[`{\xC3\x84"), "azaz09@[`{\xC3\x84");
    std::string letters;
    std::string digits;
    for (int code = 0; code <= std::numeric_limits<unsigned char>::max(); ++code) {
        const char character = static_cast<char>(code);
        letters += IsLetter(character) ? std::string(1, character) : "";
        digits += IsDigit(character) ? std::string(1, character) : "";
        EXPECT_EQ(IsAlphanumeric(character), IsLetter(character) || IsDigit(character)) << code;
    }
    EXPECT_EQ(letters, "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz");
    EXPECT_EQ(digits, "0123456789");
}

TEST(Number, IsTheWholeText) {
    EXPECT_EQ(NumberFrom<unsigned>("007"), 7U);
    EXPECT_EQ(NumberFrom<std::int32_t>("-2147483648"), std::numeric_limits<std::int32_t>::min());
    for (const char* const text : {"", " 7", "7 ", "+7", "0x7", "7.0", "-7", "4294967296"}) {
        EXPECT_FALSE(NumberFrom<unsigned>(text)) << text;
    }
}

TEST(Number, HasZerosBeforeItUpToItsWidth) {
    EXPECT_EQ(Digits(0xA1, 8, 16), "000000a1");
    EXPECT_EQ(Digits(0, 1), "0");
    EXPECT_EQ(Digits(12345, 4), "12345");
    EXPECT_EQ(Digits(std::numeric_limits<std::size_t>::max(), 0, 2), std::string(64, '1'));
}

}  // namespace
}  // namespace basics::test
