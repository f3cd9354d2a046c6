#include "FailureText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <set>

namespace calls::test {
namespace {

using testing::HasSubstr;

TEST(FailureText, EveryReasonHasWordsOfItsOwnAndAdvice) {
    std::set<std::string> words;
    for (const std::string code : {"01", "02", "03", "04", "05", "06", "07", "08", "09"}) {
        const std::string text = DescribeMethodFailure(0xA1, code, {.call = "get-info"});
        EXPECT_THAT(text, testing::StartsWith("get-info failed with return value 0x000000a1: "));
        EXPECT_THAT(text, HasSubstr(" (" + code + "); "));
        words.insert(text.substr(0, text.find('(')));
    }
    EXPECT_EQ(words.size(), 9U);
}

TEST(FailureText, UnknownReasonsAreShownAsTheyAre) {
    const FailureSetting setting{.call = "get-info"};
    EXPECT_THAT(DescribeMethodFailure(1, "42", setting), HasSubstr("unknown reason (42); run again"));
    EXPECT_THAT(DescribeMethodFailure(1, "0", setting), HasSubstr("unknown reason (0); run again"));
    EXPECT_THAT(DescribeMethodFailure(1, "", setting), HasSubstr("no reason was given"));
}

TEST(FailureText, ResultFilesThatCannotBeWrittenAreTheAdviceOnReportsOnly) {
    const FailureSetting setting{.call = "get-info",
                                 .scenario = "small",
                                 .run = ToolRun{.obstacle = "No space left on device"}};
    const char* const advice = ": No space left on device; name another directory by the variable TMPDIR";
    for (const std::string code : {"01", "04", "06"}) {
        const std::string text = DescribeMethodFailure(0xA1, code, setting);
        EXPECT_THAT(text, HasSubstr("; result files cannot be written below /"));
        EXPECT_THAT(text, testing::EndsWith(advice));
    }
    EXPECT_THAT(DescribeMethodFailure(0xA0, "03", setting), testing::Not(HasSubstr("TMPDIR")));
}

TEST(FailureText, TheReportIsNamedBehindTheReasonThatIsAboutIt) {
    const FailureSetting setting{.call = "show", .command = "vdkcli -ldpdinfo -a3"};
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

TEST(FailureText, TheRunIsToldBehindItsReport) {
    const FailureSetting setting{
        .call = "show",
        .command = "vdkcli -ldpdinfo -a3",
        .run = ToolRun{.status = W_EXITCODE(9, 0), .hasReport = true, .lastLine = "busy"}};
    const char* const run = "(vdkcli -ldpdinfo -a3): exit status 9: \"busy\"; ";
    for (const std::string code : {"01", "04", "06"}) {
        EXPECT_THAT(DescribeMethodFailure(0xA1, code, setting), HasSubstr(run));
    }
    EXPECT_THAT(DescribeMethodFailure(0xA1, "02", setting), testing::Not(HasSubstr("exit status")));
}

}  // namespace
}  // namespace calls::test
