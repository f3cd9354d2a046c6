#include "Schedule.h"

#include "DocumentText.h"

#include <gtest/gtest.h>

namespace service::test {
namespace {

using namespace inventory::test;
using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;

const inventory::Document kTwoDrives = Read(ControllerItem("0") + DriveItem("PD0", "NO ERROR", "ONLINE") +
                                            DriveItem("PD1", "NO ERROR", "ONLINE"));

class Scheduling : public testing::Test {
  protected:
    // "server", "drive 252:1", or "" where nothing is due.
    std::string Due(Schedule& schedule) const {
        const auto inquiry = schedule.TakeDue(m_Now);
        return !inquiry         ? ""
               : inquiry->drive ? "drive " + inquiry->drive->enclosure + ":" + inquiry->drive->slot
                                : "server";
    }

    Schedule::TimePoint m_Now{hours(1)};
};

TEST_F(Scheduling, TheServerIsAskedAtOnceAndThenAtIntervals) {
    Schedule schedule({minutes(5), seconds(0)}, m_Now);
    EXPECT_EQ(Due(schedule), "server");
    EXPECT_EQ(Due(schedule), "");
    EXPECT_EQ(schedule.NextDue(), m_Now + minutes(5));
    m_Now += minutes(5);
    EXPECT_EQ(Due(schedule), "server");
}

TEST_F(Scheduling, AMachineThatSleptAsksOnce) {
    Schedule schedule({minutes(5), seconds(0)}, m_Now);
    (void)Due(schedule);
    m_Now += hours(100);
    EXPECT_EQ(Due(schedule), "server");
    EXPECT_EQ(Due(schedule), "");
}

TEST_F(Scheduling, DrivesAreAskedInTurnSpreadOverTheirInterval) {
    Schedule schedule({hours(24), hours(6)}, m_Now);
    EXPECT_EQ(Due(schedule), "server");
    schedule.SeeDrives(Survey(kTwoDrives), m_Now);
    std::string asked;
    for (int times = 0; times < 4; ++times) {
        EXPECT_EQ(schedule.NextDue(), m_Now + hours(3));
        m_Now += hours(3);
        asked += Due(schedule) + ", ";
        schedule.SeeDrives(Survey(kTwoDrives), m_Now);
    }
    EXPECT_EQ(asked, "drive 252:0, drive 252:1, drive 252:0, drive 252:1, ");
}

TEST_F(Scheduling, TheServerGoesFirst) {
    Schedule schedule({hours(3), hours(6)}, m_Now);
    (void)Due(schedule);
    schedule.SeeDrives(Survey(kTwoDrives), m_Now);
    m_Now += hours(3);
    EXPECT_EQ(Due(schedule), "server");
    EXPECT_EQ(Due(schedule), "drive 252:0");
    EXPECT_EQ(Due(schedule), "");
}

TEST_F(Scheduling, ADriveThatSleepsIsLeftAlone) {
    const auto withPower = [](const std::string& power) {
        return Read(ControllerItem("0") + DriveItem("PD0", "NO ERROR", "ONLINE", Key("Power Status", power)));
    };
    const inventory::Document asleep = withPower("Stopped");
    Schedule schedule({hours(24), hours(6)}, m_Now);
    (void)Due(schedule);
    schedule.SeeDrives(Survey(asleep), m_Now);
    EXPECT_EQ(schedule.NextDue(), m_Now + hours(24));
    schedule.Set({hours(24), hours(6), true}, m_Now);
    schedule.SeeDrives(Survey(asleep), m_Now);
    EXPECT_EQ(schedule.NextDue(), m_Now + hours(6));
    EXPECT_FALSE(IsAsleep(Survey(withPower("Active")).controllers.front().drives.front()));
}

TEST_F(Scheduling, WithoutAnIntervalNoDriveIsAsked) {
    Schedule schedule({hours(24), seconds(0)}, m_Now);
    (void)Due(schedule);
    schedule.SeeDrives(Survey(kTwoDrives), m_Now);
    m_Now += hours(23);
    EXPECT_EQ(Due(schedule), "");
}

TEST_F(Scheduling, AShorterIntervalTakesEffectAtOnce) {
    Schedule schedule({hours(24), hours(24)}, m_Now);
    (void)Due(schedule);
    schedule.SeeDrives(Survey(kTwoDrives), m_Now);
    schedule.Set({minutes(1), minutes(1)}, m_Now);
    m_Now += seconds(30);
    EXPECT_EQ(Due(schedule), "drive 252:0");
    m_Now += seconds(30);
    EXPECT_EQ(Due(schedule), "server");
    schedule.Set({hours(24), seconds(0)}, m_Now);
    m_Now += seconds(50);
    EXPECT_EQ(Due(schedule), "");
}

TEST_F(Scheduling, MayBeHurried) {
    Schedule schedule({hours(24), seconds(0)}, m_Now);
    (void)Due(schedule);
    schedule.Hurry(m_Now);
    EXPECT_EQ(Due(schedule), "server");
    EXPECT_EQ(schedule.NextDue(), m_Now + hours(24));
}

}  // namespace
}  // namespace service::test
