#include "qel/CStringUtil.h"

#include <gtest/gtest.h>

#include <limits>
#include <locale>
#include <string>
#include <vector>

namespace {

constexpr long kLeast = std::numeric_limits<long>::min();
constexpr long kGreatest = std::numeric_limits<long>::max();

// Groups digits, as many locales do, and takes grouped digits for numbers.
class GroupingDigits final : public std::numpunct<char> {
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

class ScopedLocale final {
  public:
    ScopedLocale() : m_Before(std::locale::global(std::locale(std::locale::classic(), new GroupingDigits))) {}
    ~ScopedLocale() { std::locale::global(m_Before); }
    ScopedLocale(const ScopedLocale&) = delete;
    ScopedLocale& operator=(const ScopedLocale&) = delete;

  private:
    std::locale m_Before;
};

std::vector<std::string> Split(const std::string& text) {
    std::vector<std::string> parts = {"left", "over"};
    CStringUtil::SplitByDot(text, parts);
    return parts;
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
    CStringUtil::strReplace(text, from, to);
    return text;
}

using Parts = std::vector<std::string>;

TEST(StringUtilTest, ANumberBecomesItsDecimalDigits) {
    EXPECT_EQ(CStringUtil::NumberToTString(0), "0");
    EXPECT_EQ(CStringUtil::NumberToTString(10), "10");
    EXPECT_EQ(CStringUtil::NumberToTString(-1), "-1");
    EXPECT_EQ(CStringUtil::NumberToTString(kGreatest), "9223372036854775807");
    EXPECT_EQ(CStringUtil::NumberToTString(kLeast), "-9223372036854775808");
}

TEST(StringUtilTest, TextBecomesTheNumberThatItsDigitsSay) {
    const struct {
        const char* text;
        long number;
    } cases[] = {
        {"0", 0},
        {"7", 7},
        {"12abc", 12},
        {"4.1", 4},
        {"007", 7},
        {"010", 10},
        {"-5", -5},
        {"+5", 5},
        {"-0", 0},
        {"  42", 42},
        {" \t\n\v\f\r42", 42},
        {" -42 17", -42},
        {"2147483648", 2147483648L},
        {"9223372036854775807", kGreatest},
        {"-9223372036854775808", kLeast},
        // What does not fit becomes the nearest number that does.
        {"9223372036854775808", kGreatest},
        {"+9223372036854775808", kGreatest},
        {"99999999999999999999999999x", kGreatest},
        {"-9223372036854775809", kLeast},
        {"  -99999999999999999999999999", kLeast},
        // No digits where a number would have to begin.
        {"", 0},
        {" ", 0},
        {"abc", 0},
        {"-", 0},
        {"+", 0},
        {"+-1", 0},
        {"-+1", 0},
        {"--1", 0},
        {"++1", 0},
        {"- 1", 0},
        {"+ 1", 0},
        {"a1", 0},
        {".5", 0},
        {"0x1F", 0},
        {"\xA0"
         "5",
         0},
        {"\x85"
         "5",
         0},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(CStringUtil::TStringToNumber(each.text), each.number) << '"' << each.text << '"';
    }
}

TEST(StringUtilTest, ANulEndsANumberAndIsNoWhiteSpace) {
    EXPECT_EQ(CStringUtil::TStringToNumber(std::string("1\0002", 3)), 1);
    EXPECT_EQ(CStringUtil::TStringToNumber(std::string("\0002", 2)), 0);
}

TEST(StringUtilTest, NumbersDoNotDependOnTheLocale) {
    const ScopedLocale locale;
    EXPECT_EQ(CStringUtil::NumberToTString(1234567), "1234567");
    EXPECT_EQ(CStringUtil::TStringToNumber("1.234"), 1);
    EXPECT_EQ(CStringUtil::TStringToNumber("1234567"), 1234567);
}

TEST(StringUtilTest, NarrowTextStaysTheSameBytes) {
    EXPECT_EQ(CStringUtil::StringToTstring("D\xC3\xBC \xFF\n"), "D\xC3\xBC \xFF\n");
    EXPECT_EQ(CStringUtil::StringToTstring(""), "");
}

TEST(StringUtilTest, NullTextIsEmptyText) {
    EXPECT_EQ(CStringUtil::StringToTstring(nullptr), "");
}

TEST(StringUtilTest, TextIsSplitAtEveryDot) {
    EXPECT_EQ(Split("4.1"), (Parts{"4", "1"}));
    EXPECT_EQ(Split("2.04.0017"), (Parts{"2", "04", "0017"}));
    EXPECT_EQ(Split("4"), (Parts{"4"}));
    EXPECT_EQ(Split(""), (Parts{""}));
    EXPECT_EQ(Split("."), (Parts{"", ""}));
    EXPECT_EQ(Split("..1"), (Parts{"", "", "1"}));
    EXPECT_EQ(Split("1."), (Parts{"1", ""}));
    EXPECT_EQ(Split(" 1 . 2 "), (Parts{" 1 ", " 2 "}));
}

TEST(StringUtilTest, EveryOccurrenceIsReplaced) {
    EXPECT_EQ(Replaced("a\tb\t\tc\t", "\t", " "), "a b  c ");
    EXPECT_EQ(Replaced("aXXb", "XX", ""), "ab");
    EXPECT_EQ(Replaced("ab", "b", "long"), "along");
    EXPECT_EQ(Replaced("ab", "x", "y"), "ab");
    EXPECT_EQ(Replaced("", "x", "y"), "");
}

TEST(StringUtilTest, ReplacementsAreNotLookedThroughAgain) {
    EXPECT_EQ(Replaced("a", "a", "aa"), "aa");
    EXPECT_EQ(Replaced("xaax", "a", "ba"), "xbabax");
    EXPECT_EQ(Replaced("aabb", "ab", ""), "ab");
    EXPECT_EQ(Replaced("aaa", "aa", "b"), "ba");
}

TEST(StringUtilTest, ReplacingNothingChangesNothing) {
    EXPECT_EQ(Replaced("abc", "", "x"), "abc");
}

}  // namespace
