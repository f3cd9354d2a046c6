// The page as somebody has it in front of him who leaves it open.

#include "OnLoopback.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace doors::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

struct Screen {
    const char* name;
    int width, height;
};

class LivePage : public OnLoopback, public testing::WithParamInterface<Screen> {};

TEST_P(LivePage, FollowsTheServer) {
    Start("watch/loses-drive/by-inquiry");
    const testsupport::Ended ended =
        testsupport::Command{
            .words = {DOORS_TEST_FOLDER "/page.py", Url("/"), std::to_string(GetParam().width),
                      std::to_string(GetParam().height), std::to_string(m_Service->Process())},
            .program = DOORS_TEST_PYTHON}
            .Run();
    ASSERT_EQ(ended.ExitStatus(), 0) << ended.err;
    const nlohmann::json page = nlohmann::json::parse(ended.out);

    EXPECT_THAT(page["before"].get<std::string>(), StartsWith("RAID OK: "));
    EXPECT_THAT(page["after"].get<std::string>(), StartsWith("RAID WARNING: "));
    EXPECT_TRUE(page["isTheSame"]) << "it was loaded again";
    EXPECT_THAT(page["again"].get<std::string>(), StartsWith("RAID CRITICAL: "));

    EXPECT_EQ(page["refused"], nlohmann::json::array()) << "by the page's own policy";
    EXPECT_EQ(page["console"], nlohmann::json::array());
    EXPECT_TRUE(page["isStyled"]);
    EXPECT_THAT(page["asked"], ElementsAre(Url("/"), Url("/live"), Url("/live.js")));
    EXPECT_EQ(page["width"], GetParam().width);
    EXPECT_LE(page["contentWidth"], GetParam().width);

    const std::string plain = page["plain"];
    EXPECT_THAT(plain, HasSubstr("5 drives, all well"));
    EXPECT_THAT(plain, Not(HasSubstr("this page follows the server")));
}

INSTANTIATE_TEST_SUITE_P(Screens, LivePage,
                         testing::Values(Screen{"phone", 390, 844}, Screen{"desktop", 1280, 900}),
                         [](const auto& each) { return std::string(each.param.name); });

}  // namespace
}  // namespace doors::test
