#include "host/FailureText.h"
#include "host/Options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace host {
namespace {

using testing::HasSubstr;

TEST(FailureText, EveryReasonHasWordsOfItsOwnAndAdvice) {
    std::set<std::string> words;
    for (const std::string code : {"01", "02", "03", "04", "05", "06", "07", "08", "09"}) {
        const std::string text = DescribeMethodFailure(0xA1, code, {.subcommand = "get-info"});
        EXPECT_THAT(text, testing::StartsWith("get-info failed with return value 0x000000a1: "));
        EXPECT_THAT(text, HasSubstr(" (" + code + "); "));
        words.insert(text.substr(0, text.find('(')));
    }
    EXPECT_EQ(words.size(), 9U);
}

TEST(FailureText, UnknownReasonsAreShownAsTheyAre) {
    const FailureSetting setting{.subcommand = "get-info"};
    EXPECT_THAT(DescribeMethodFailure(1, "42", setting), HasSubstr("unknown reason (42); run again"));
    EXPECT_THAT(DescribeMethodFailure(1, "0", setting), HasSubstr("unknown reason (0); run again"));
    EXPECT_THAT(DescribeMethodFailure(1, "", setting), HasSubstr("no reason was given"));
}

TEST(FailureText, UnwritableResultDirectoryIsTheAdviceOnAToolThatCannotBeRunOnly) {
    const FailureSetting setting{
        .subcommand = "get-info", .scenario = "small", .resultDirectory = "/srv/tmp"};
    EXPECT_THAT(DescribeMethodFailure(0xA1, "01", setting), HasSubstr("/srv/tmp"));
    EXPECT_THAT(DescribeMethodFailure(0xA0, "03", setting), testing::Not(HasSubstr("/srv/tmp")));
}

TEST(FailureText, TheReportIsNamedBehindTheReasonThatIsAboutIt) {
    const FailureSetting setting{.subcommand = "show", .command = "vdkcli -ldpdinfo -a3"};
    const char* const place = " at controller 3: logical drives (vdkcli -ldpdinfo -a3); ";
    for (const std::string code : {"01", "04", "06"}) {
        EXPECT_THAT(DescribeMethodFailure(0xA1, code, setting), HasSubstr('(' + code + ')' + place));
    }
    for (const std::string code : {"02", "03", "05", "07", "08", "09"}) {
        EXPECT_THAT(DescribeMethodFailure(0xA1, code, setting), testing::Not(HasSubstr("vdkcli -ldpdinfo")));
    }
    EXPECT_THAT(DescribeMethodFailure(0xA1, "0406", setting), HasSubstr("(04), before that "));
    EXPECT_THAT(DescribeMethodFailure(0xA1, "0406", setting), HasSubstr("(06)" + std::string(place)));
}

TEST(FailureText, StaysOnOneLine) {
    EXPECT_EQ(OneLine("a\nb\tc\x7f\x1b ä"), "a\\nb\\x09c\\x7f\\x1b ä");
}

TEST(TraceLevels, AreAnyOfTheFourOrAll) {
    EXPECT_EQ(ParseTraceLevels("1"), 1U);
    EXPECT_EQ(ParseTraceLevels("8,1"), 9U);
    EXPECT_EQ(ParseTraceLevels("2,2"), 2U);
    EXPECT_EQ(ParseTraceLevels("all"), 15U);
    for (const char* const text :
         {"", ",", "1,", ",1", "3", "12", "1 ,2", "ALL", "all,1", "-1", "16", "1,,2"}) {
        EXPECT_EQ(ParseTraceLevels(text), std::nullopt) << text;
    }
}

TEST(DriveNumber, IsDigitsUpToTheLargestThatEveryLayerTakes) {
    for (const char* const text : {"0", "007", "252", "2147483647"}) {
        EXPECT_TRUE(IsDriveNumber(text)) << text;
    }
    for (const char* const text :
         {"", "-1", "+1", " 1", "1 ", "0x1", "1a", "1.0", "-0", "2147483648", "99999999999999999999"}) {
        EXPECT_FALSE(IsDriveNumber(text)) << text;
    }
}

}  // namespace
}  // namespace host
