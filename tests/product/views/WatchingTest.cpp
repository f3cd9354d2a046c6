// What a service knows beside the answer: on its page, and in its series.

#include "DocumentText.h"
#include "views/Views.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace views::test {
namespace {

using namespace inventory::test;
using namespace std::chrono_literals;
using inventory::Finding;
using inventory::Level;
using testing::HasSubstr;
using testing::Not;

const inventory::Snapshot& Well() {
    static const inventory::Snapshot snapshot(
        Read(ControllerItem("0") + DriveItem("PD0", "NO ERROR", "HOT SPARE", "", "-", "GHS")));
    return snapshot;
}

Finding Pulled() {
    Finding finding;
    finding.level = Level::Critical;
    finding.kind = inventory::PartKind::Drive;
    finding.controller = "0";
    finding.part = "PD3";
    finding.enclosure = "252";
    finding.slot = "3";
    finding.product = "<TF6>";
    finding.serial = "7K\"1";
    finding.what = "FAILED";
    return finding;
}

Watching Failing() {
    return {.askedAt = std::chrono::system_clock::time_point(1'933'221'728s),
            .failure = "the <tool> hung",
            .failuresInARow = 3};
}

TEST(LevelOfAWatchedServer, IsNeverBetterThanWhatIsKnown) {
    ASSERT_EQ(Well().TheHealth().level, Level::Ok);
    EXPECT_EQ(LevelOf(Well().TheHealth(), nullptr), Level::Ok);
    const Watching nothing;
    EXPECT_EQ(LevelOf(Well().TheHealth(), &nothing), Level::Ok);
    const Watching failing = Failing();
    EXPECT_EQ(LevelOf(Well().TheHealth(), &failing), Level::Unknown);
    const Watching pulled{.standing = {Pulled()}};
    EXPECT_EQ(LevelOf(Well().TheHealth(), &pulled), Level::Critical);
}

TEST(PageOfAService, SaysThatTheServerCouldNotBeAsked) {
    const Watching failing = Failing();
    const std::string page = Html(Well(), nullptr, &failing);
    EXPECT_THAT(page, HasSubstr("<title>RAID UNKNOWN: could not be asked; before that: 1 controller, "));
    EXPECT_THAT(page,
                HasSubstr("<p class=\"failure\">The server could not be asked at 06:02:08 UTC, 3 times in a "
                          "row: the &lt;tool&gt; hung. What is shown is older.</p>"));
}

TEST(PageOfAService, ShowsWhatIsInNoReportAnyMore) {
    const Watching pulled{.standing = {Pulled()}};
    const std::string page = Html(Well(), nullptr, &pulled);
    EXPECT_THAT(
        page, HasSubstr("<title>RAID CRITICAL: 1 not well and in no report any more; what is reported: 1 "));
    EXPECT_THAT(page, HasSubstr("<h2>Not well when it was last seen</h2>"));
    EXPECT_THAT(page, HasSubstr("<b>FAILED</b> controller 0, PD3 in enclosure 252 slot 3 "
                                "<small>&lt;TF6&gt;, serial number 7K\"1</small>"));
}

TEST(PageOfAService, HasItsScriptAndItsWays) {
    const Watching watching{.script = "/live.js"};
    const std::string page = Html(Well(), nullptr, &watching);
    EXPECT_THAT(page, HasSubstr("<script src=\"/live.js\" defer=\"defer\"> </script>"));
    EXPECT_THAT(page, HasSubstr("href=\"/history\""));
    EXPECT_THAT(page, HasSubstr("<title>RAID OK: "));
    EXPECT_THAT(page, Not(HasSubstr("class=\"failure\"")));
    const std::string saved = Html(Well());
    EXPECT_THAT(saved, Not(HasSubstr("<script")));
    EXPECT_THAT(saved, Not(HasSubstr("href=\"/")));
}

TEST(SeriesOfAService, TellHowItGoesAndWhatStands) {
    const Watching failing = Failing();
    const std::string series = Prometheus(Well(), &failing);
    EXPECT_THAT(series, HasSubstr("\nraid_health 3\n"));
    EXPECT_THAT(series, HasSubstr("\nraid_last_inquiry_success 0\n"));
    EXPECT_THAT(series, HasSubstr("\nraid_last_inquiry_timestamp_seconds 1933221728\n"));
    EXPECT_THAT(series, HasSubstr("\nraid_inquiry_failures_in_a_row 3\n"));
    const Watching pulled{.standing = {Pulled(), Pulled()}};
    const std::string standing = Prometheus(Well(), &pulled);
    EXPECT_THAT(standing, HasSubstr("\nraid_health 2\n"));
    const std::string labels =
        "controller=\"0\",kind=\"drive\",part=\"PD3\",enclosure=\"252\",slot=\"3\","
        "model=\"<TF6>\",serial=\"7K\\\"1\",rule=\"state\"";
    EXPECT_THAT(standing, HasSubstr("\nraid_standing_alarm{" + labels + "} 2\n"));
    EXPECT_THAT(standing, HasSubstr("\nraid_finding_info{" + labels + ",what=\"FAILED\",advice=\"Replace "));
    EXPECT_THAT(standing, HasSubstr("copy=\"2\"} 2\n"));
    EXPECT_THAT(standing, Not(HasSubstr("raid_last_inquiry_success")));
    EXPECT_THAT(Prometheus(Well()), Not(HasSubstr("raid_inquiry_failures_in_a_row")));
}

}  // namespace
}  // namespace views::test
