#include "Pages.h"

#include "DocumentText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace doors::test {
namespace {

using namespace inventory::test;
using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::Not;

std::shared_ptr<board::Board> Answered() {
    auto made = std::make_shared<board::Board>();
    made->snapshot = std::make_shared<const inventory::Snapshot>(
        Read(ControllerItem("0") + DriveItem("PD0", "NO ERROR", "HOT SPARE", "", "-", "GHS")));
    made->document = std::make_shared<const std::string>("<RAID version=\"1\"/>");
    made->inquiry = board::LastInquiry{board::TimePoint(1000s)};
    return made;
}

TEST(Pages, AreMadeOnce) {
    Pages pages(Answered());
    for (const char* const path : {"/", "/metrics", "/raid.json", "/raid.xml"}) {
        const http::Response* const first = pages.Find(path);
        ASSERT_NE(first, nullptr) << path;
        EXPECT_EQ(first->status, 200) << path;
        EXPECT_EQ(pages.Find(path)->body, first->body) << path;
    }
    EXPECT_EQ(pages.Find("/raid.xml")->Text(), "<RAID version=\"1\"/>");
    EXPECT_EQ(pages.Find("/raid"), nullptr);
    EXPECT_EQ(pages.Find(""), nullptr);
}

TEST(Pages, SayWhyThereIsNothingToShow) {
    auto nothing = std::make_shared<board::Board>();
    EXPECT_EQ(Pages(nothing).Find("/")->status, 503);
    EXPECT_THAT(Pages(nothing).Find("/")->Text(), HasSubstr("it is being asked"));
    nothing->inquiry = board::LastInquiry{board::TimePoint(1s), "the tool hung", 1};
    EXPECT_EQ(Pages(nothing).Find("/raid.xml")->Text(), "The server has not answered: the tool hung.\n");
}

// A part that is well again, and not for long enough, is in the answer: as it is.
TEST(Pages, ShowAlarmsOfPartsThatAreInNoReport) {
    const auto shown = Answered();
    inventory::Finding failed;
    failed.level = inventory::Level::Critical;
    failed.part = "PD3";
    failed.what = "FAILED";
    shown->alarms = {{{}, failed, false}};
    EXPECT_THAT(Pages(shown).Find("/")->Text(), Not(HasSubstr("FAILED")));
    shown->alarms.front().isVanished = true;
    EXPECT_THAT(Pages(shown).Find("/")->Text(), HasSubstr("<b>FAILED</b>"));
    EXPECT_THAT(Pages(shown).Find("/metrics")->Text(),
                HasSubstr("raid_standing_alarm{kind=\"controller\",part=\"PD3\""));
}

TEST(Pages, ShowWhatHappenedLately) {
    const auto shown = Answered();
    watch::Event event;
    event.at = *shown->snapshot->takenAt - 2h;
    event.words = "controller 0, PD3: FAILED";
    watch::Event old = event;
    old.at -= 31 * 24h;
    old.words = "long ago";
    shown->events = {{1, old}, {2, event}};
    const std::string page(Pages(shown).Find("/")->Text());
    EXPECT_THAT(page, HasSubstr("What happened in 30 days"));
    EXPECT_THAT(page, HasSubstr("controller 0, PD3: FAILED"));
    EXPECT_THAT(page, Not(HasSubstr("long ago")));
}

TEST(HealthOfTheService, IsThatOfTheLastInquiry) {
    constexpr auto kInterval = 300s;
    const auto statusAt = [&](const board::Board& board, std::chrono::seconds now) {
        return HealthOf(&board, kInterval, board::TimePoint(now)).status;
    };
    EXPECT_EQ(HealthOf(nullptr, kInterval, {}).status, 503);
    EXPECT_EQ(statusAt(board::Board(), 0s), 503);
    const auto shown = Answered();
    EXPECT_EQ(statusAt(*shown, 1000s + 3 * kInterval), 200);
    EXPECT_EQ(statusAt(*shown, 1001s + 3 * kInterval), 503);
    shown->inquiry->failure = "the tool hung";
    EXPECT_EQ(statusAt(*shown, 1000s), 503);
}

}  // namespace
}  // namespace doors::test
