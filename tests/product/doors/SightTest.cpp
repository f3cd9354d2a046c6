#include "Sight.h"

#include "DocumentText.h"
#include "board/Wire.h"

#include <gtest/gtest.h>

namespace doors::test {
namespace {

using namespace inventory::test;
using namespace std::chrono_literals;
using board::MessageKind;
using board::Report;

std::string Drive(const std::string& more = "") {
    return DriveItem("PD0", "NO ERROR", "HOT SPARE", Key("Serial Number", "A") + more, "-", "GHS");
}

Report ReportOf(std::uint64_t number, std::chrono::seconds at) {
    Report report;
    report.number = number;
    report.host = "storage7";
    report.document = Xml(ControllerItem("0") + Drive());
    report.takenAt = board::TimePoint(at);
    return report;
}

bool Take(Sight& sight, const Report& report) {
    return sight.Take({MessageKind::Report, Pack(report)});
}

TEST(SightTest, IsWhatTheServiceTells) {
    Sight sight;
    EXPECT_EQ(sight.Now(), nullptr);
    EXPECT_TRUE(Take(sight, Report{.number = 1}));
    EXPECT_EQ(sight.Now()->snapshot, nullptr);
    EXPECT_EQ(sight.Now()->document, nullptr);
    EXPECT_TRUE(Take(sight, ReportOf(2, 100s)));
    EXPECT_EQ(sight.Now()->number, 2U);
    EXPECT_EQ(sight.Now()->snapshot->host, "storage7");
    EXPECT_EQ(sight.Now()->snapshot->TheServer().controllers.front().drives.front().serial, "A");
    EXPECT_EQ(*sight.Now()->document, ReportOf(2, 100s).document);
}

TEST(SightTest, ReadsAnAnswerOnce) {
    Sight sight;
    (void)Take(sight, ReportOf(1, 100s));
    const auto before = sight.Now();
    (void)Take(sight, ReportOf(2, 100s));
    EXPECT_NE(sight.Now(), before);
    EXPECT_EQ(sight.Now()->snapshot, before->snapshot);
    (void)Take(sight, ReportOf(3, 200s));
    EXPECT_NE(sight.Now()->snapshot, before->snapshot);
}

TEST(SightTest, ShowsSmartDataWithTheNextAnswer) {
    Sight sight;
    std::string drive = Drive();
    drive.insert(drive.rfind("</Item>"), Node("### SMART Information ###", Key("Temperature", "31 C")));
    const std::string told = Xml(drive);
    EXPECT_FALSE(sight.Take(
        {MessageKind::Drives,
         Pack(std::vector<board::DriveReport>{{"0", "252", "0", told}, {"0", "252", "1", "no XML"}})}));
    (void)Take(sight, ReportOf(1, 100s));
    EXPECT_NE(sight.Now()->snapshot->TheServer().controllers.front().drives.front().smart, nullptr);
}

TEST(SightTest, RefusesNonsense) {
    Sight sight;
    EXPECT_THROW((void)sight.Take({MessageKind::Report, "x"}), board::WireError);
    EXPECT_THROW((void)sight.Take({MessageKind::Drives, "x"}), board::WireError);
}

}  // namespace
}  // namespace doors::test
