// The manual page of the service, against its options and for two formatters.

#include "test_support/Command.h"
#include "test_support/Pattern.h"

#include <gmock/gmock.h>

namespace service::test::manual {
namespace {

using namespace testsupport;

using testing::HasSubstr;

constexpr const char* kPage = COMMAND_TEST_SOURCES "/product/service/mngsrvraidd.8";

TEST(Manual, HasEveryOption) {
    const std::string page = ReadFile(kPage);
    const Ended help = Command{.words = {"--help"}, .program = SERVICE_TEST_PROGRAM}.Run();
    const std::vector<Match> options = MatchesIn(help.out, "--[a-z]+(-[a-z]+)*");
    EXPECT_GE(options.size(), 7U);
    for (const Match& option : options) {
        EXPECT_THAT(page, HasSubstr("\n.It Fl -" + option.front().substr(2))) << option.front();
    }
}

TEST(Manual, IsWellFormed) {
    const Ended ended =
        Command{.words = {"-T", "lint", "-W", "warning", kPage}, .program = "/usr/bin/mandoc"}.Run();
    EXPECT_EQ(ended.ExitStatus(), 0) << ended.out << ended.err;
}

TEST(Manual, FitsThePagesOfOtherFormatters) {
    const Ended ended =
        Command{.words = {"-mdoc", "-Tascii", "-ww", kPage}, .program = "/usr/bin/troff"}.Run();
    EXPECT_EQ(ended.ExitStatus(), 0);
    EXPECT_EQ(ended.err, "");
    EXPECT_NE(ended.out, "");
}

}  // namespace
}  // namespace service::test::manual
