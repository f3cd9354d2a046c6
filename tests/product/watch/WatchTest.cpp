#include "watch/Watch.h"

#include "DocumentText.h"
#include "basics/Time.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace watch::test {
namespace {

using namespace inventory::test;
using inventory::Criteria;
using inventory::Level;
using std::chrono::hours;
using std::chrono::minutes;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::string DriveWith(const std::string& number, const std::string& serial,
                      const std::string& status = "NO ERROR", const std::string& detail = "ONLINE",
                      const std::string& more = "") {
    return DriveItem(number, status, detail, Key("Product ID", "TF6") + Key("Serial Number", serial) + more);
}

std::string Spare(const std::string& number, const std::string& serial, const std::string& more = "") {
    return DriveItem(number, "NO ERROR", "HOT SPARE", Key("Serial Number", serial) + more, "-", "GHS");
}

std::string Group(const std::string& state, const std::vector<std::string>& members = {"PD0", "PD1"}) {
    return GroupItem("RG0", LogicalDriveItem("LD0", state), members, "RAID 1");
}

const std::string kWell =
    ControllerItem("0") + Group("OPTIMAL") + DriveWith("PD0", "A") + DriveWith("PD1", "B");
const std::string kFailed = ControllerItem("0") + Group("DEGRADED") + DriveWith("PD0", "A") +
                            DriveWith("PD1", "B", "ERROR", "FAILED");
const std::string kPulled = ControllerItem("0") + Group("DEGRADED", {"PD0"}) + DriveWith("PD0", "A");
const std::string kRebuilding = ControllerItem("0") + Group("DEGRADED") + DriveWith("PD0", "A") +
                                DriveWith("PD1", "C", "REBUILD", "REBUILD");
const std::string kReplaced =
    ControllerItem("0") + Group("OPTIMAL") + DriveWith("PD0", "A") + DriveWith("PD1", "C");

class Watching : public testing::Test {
  protected:
    Watching() : m_Watch(MakeWatch()) {}

    [[nodiscard]] Watch MakeWatch() {
        return Watch(Rules(), [this](TimePoint) { return "id" + std::to_string(++m_Ids); });
    }

    // Five minutes later.
    std::vector<std::string> Sees(const std::string& items, const Criteria& criteria = {}) {
        m_Now += minutes(5);
        return Lines(m_Watch.Take(inventory::Snapshot(Read(items), "", {}, criteria), m_Now));
    }

    std::vector<std::string> Fails(const std::string& why) {
        m_Now += minutes(5);
        return Lines(m_Watch.FailedToAsk(why, m_Now));
    }

    void Restart() {
        const std::vector<StateRow> rows = m_Watch.Rows();
        m_Watch = MakeWatch();
        EXPECT_EQ(m_Watch.Restore(rows), 0U);
    }

    static std::vector<std::string> Lines(const std::vector<Event>& events) {
        std::vector<std::string> lines;
        for (const Event& event : events) {
            lines.push_back(Describe(event));
        }
        return lines;
    }

    TimePoint m_Now = *basics::TimeFromUtcText("2031-04-05T06:00:00Z");
    std::size_t m_Ids = 0;
    Watch m_Watch;
};

constexpr const char* kDriveBegan =
    "CRITICAL began: controller 0, RG0, PD1 in enclosure 252 slot 1: FAILED (TF6, serial number B)";
constexpr const char* kGroupBegan =
    "CRITICAL began: controller 0, RG0, LD0: DEGRADED, nothing is being rebuilt";

TEST_F(Watching, AWellServerIsNoNews) {
    EXPECT_THAT(Sees(kWell), IsEmpty());
    EXPECT_THAT(Sees(kWell), IsEmpty());
    EXPECT_THAT(m_Watch.Alarms(), IsEmpty());
    EXPECT_EQ(m_Watch.LastAnswer(), m_Now);
}

TEST_F(Watching, AServerThatStartsDegradedRaisesItsAlarm) {
    EXPECT_THAT(Sees(kFailed), ElementsAre(kDriveBegan, kGroupBegan));
    EXPECT_EQ(m_Watch.Alarms().size(), 2U);
}

TEST_F(Watching, TellsOnce) {
    (void)Sees(kFailed);
    EXPECT_THAT(Sees(kFailed), IsEmpty());
    EXPECT_THAT(Sees(kFailed), IsEmpty());
}

TEST_F(Watching, ARestartIsNoNewsEither) {
    (void)Sees(kFailed);
    Restart();
    EXPECT_THAT(Sees(kFailed), IsEmpty());
    EXPECT_EQ(m_Watch.Alarms().size(), 2U);
}

TEST_F(Watching, TellsWhatChanges) {
    (void)Sees(kFailed);
    EXPECT_THAT(Sees(ControllerItem("0") + Group("OFFLINE") + DriveWith("PD0", "A", "ERROR", "OFFLINE") +
                     DriveWith("PD1", "B", "ERROR", "FAILED")),
                ElementsAre("CRITICAL began: controller 0, RG0, PD0 in enclosure 252 slot 0: OFFLINE (TF6, "
                            "serial number A)",
                            "CRITICAL changed: controller 0, RG0, LD0: OFFLINE"));
}

TEST_F(Watching, AnAlarmStandsWhenItsDriveIsPulled) {
    (void)Sees(kFailed);
    EXPECT_THAT(Sees(kPulled), IsEmpty());
    EXPECT_THAT(Sees(kPulled),
                ElementsAre("WARNING went: controller 0, RG0, PD1 in enclosure 252 slot 1 (TF6, "
                            "serial number B): is in no report any more"));
    for (int times = 0; times < 100; ++times) {
        EXPECT_THAT(Sees(kPulled), IsEmpty());
    }
    const std::vector<Alarm> alarms = m_Watch.Alarms();
    ASSERT_EQ(alarms.size(), 2U);
    EXPECT_TRUE(alarms.front().isVanished);
    EXPECT_EQ(alarms.front().finding.serial, "B");
}

TEST_F(Watching, AnAlarmEndsWhenAnotherDriveInItsPlaceIsWell) {
    (void)Sees(kFailed);
    (void)Sees(kPulled);
    (void)Sees(kPulled);
    EXPECT_THAT(
        Sees(kRebuilding),
        ElementsAre("OK came: controller 0, RG0, PD1 in enclosure 252 slot 1 (TF6, serial number C): new",
                    "WARNING began: controller 0, RG0, PD1 in enclosure 252 slot 1: REBUILD (TF6, serial "
                    "number C)",
                    "WARNING changed: controller 0, RG0, LD0: DEGRADED, being rebuilt"));
    EXPECT_THAT(Sees(kReplaced), IsEmpty());
    EXPECT_THAT(Sees(kReplaced), IsEmpty());
    EXPECT_THAT(
        Sees(kReplaced),
        ElementsAre(
            "OK ended: controller 0, RG0, PD1 in enclosure 252 slot 1: FAILED (TF6, serial number B): well "
            "again",
            "OK ended: controller 0, RG0, PD1 in enclosure 252 slot 1: REBUILD (TF6, serial number C): "
            "well again",
            "OK ended: controller 0, RG0, LD0: DEGRADED, being rebuilt: well again"));
    EXPECT_THAT(m_Watch.Alarms(), IsEmpty());
}

TEST_F(Watching, AnAlarmEndsWhenItsDriveIsWellInAnotherSlot) {
    (void)Sees(kWell + Spare("PD2", "S", Key("Predictive Failure Count", "1")));
    EXPECT_EQ(m_Watch.Alarms().size(), 1U);
    EXPECT_THAT(
        Sees(kWell + Spare("PD7", "S")),
        ElementsAre("OK moved: controller 0, PD7 in enclosure 252 slot 7 (serial number S): moved, it was "
                    "controller 0, PD2 in enclosure 252 slot 2"));
    (void)Sees(kWell + Spare("PD7", "S"));
    EXPECT_EQ(Sees(kWell + Spare("PD7", "S")).size(), 1U);
    EXPECT_THAT(m_Watch.Alarms(), IsEmpty());
}

TEST_F(Watching, AnAlarmEndsWithItsAcceptance) {
    (void)Sees(kFailed);
    (void)Sees(kPulled);
    (void)Sees(kFailed);
    Criteria criteria;
    criteria.today = "2031-04-05";
    criteria.expectations.emplace().accepted = {
        {"controller 0, RG0, LD0", "", "DEGRADED, nothing is being rebuilt", "2031-04-30", "scratch data"}};
    EXPECT_THAT(
        Sees(kFailed, criteria),
        ElementsAre("OK ended: controller 0, RG0, LD0: DEGRADED, nothing is being rebuilt: accepted until "
                    "2031-04-30: scratch data"));
    criteria.today = "2031-05-01";
    EXPECT_THAT(Sees(kFailed, criteria), ElementsAre(kGroupBegan));
}

TEST_F(Watching, WhatFlapsIsToldOnce) {
    (void)Sees(kFailed);
    for (int times = 0; times < 20; ++times) {
        EXPECT_THAT(Sees(kWell), IsEmpty());
        EXPECT_THAT(Sees(kFailed), IsEmpty());
    }
}

TEST_F(Watching, WhatComesBackHasToBeWellForLongerEachTime) {
    const auto inquiriesUntilTheEnd = [this] {
        (void)Sees(kFailed);
        int count = 0;
        while (count < 1000 && Sees(kWell).empty()) {
            ++count;
        }
        return count;
    };
    EXPECT_EQ(inquiriesUntilTheEnd(), 2);
    EXPECT_EQ(inquiriesUntilTheEnd(), 4);
    EXPECT_EQ(inquiriesUntilTheEnd(), 8);
    Restart();
    EXPECT_EQ(inquiriesUntilTheEnd(), 16);
    m_Now += hours(25);
    (void)Sees(kWell);
    EXPECT_EQ(inquiriesUntilTheEnd(), 2);
}

TEST_F(Watching, AReminderComesDailyWhileItIsCritical) {
    (void)Sees(kFailed);
    std::vector<std::string> reminders;
    for (int times = 0; times < 3 * 288; ++times) {
        for (const std::string& line : Sees(kFailed)) {
            reminders.push_back(line);
        }
    }
    ASSERT_EQ(reminders.size(), 3U);
    EXPECT_EQ(
        reminders.front(),
        "CRITICAL reminder: still controller 0, RG0, PD1 in enclosure 252 slot 1: FAILED (TF6, serial number "
        "B), since 2031-04-05T06:05:00Z; controller 0, RG0, LD0: DEGRADED, nothing is being rebuilt, since "
        "2031-04-05T06:05:00Z");
}

TEST_F(Watching, ARestartPutsNoReminderOff) {
    (void)Sees(kFailed);
    std::size_t reminders = 0;
    for (int times = 0; times < 288; ++times) {
        Restart();
        reminders += Sees(kFailed).size();
    }
    EXPECT_EQ(reminders, 1U);
}

TEST_F(Watching, AClockThatGoesBackPutsNothingOffForever) {
    (void)Sees(kFailed);
    m_Now -= hours(24 * 400);
    EXPECT_THAT(Sees(kFailed), IsEmpty());
    std::size_t reminders = 0;
    for (int times = 0; times < 290; ++times) {
        reminders += Sees(kFailed).size();
    }
    EXPECT_EQ(reminders, 1U);
    std::size_t ends = 0;
    for (int times = 0; times < 4; ++times) {
        ends += Sees(kWell).size();
        m_Now -= minutes(4);
    }
    m_Now += hours(24);
    ends += Sees(kWell).size();
    EXPECT_EQ(ends, 2U);
}

TEST_F(Watching, OneReportThatIsLostIsNoPartThatWent) {
    (void)Sees(kWell);
    EXPECT_EQ(Sees(ControllerItem("0") + Group("OPTIMAL")).size(), 2U);  // two members that nobody reports
    for (const std::string& line : Sees(kWell)) {
        EXPECT_THAT(line, HasSubstr(" ended: "));
    }
}

TEST_F(Watching, TellsWhatComesAndGoes) {
    (void)Sees(kWell);
    EXPECT_THAT(Sees(kWell + Spare("PD2", "S")),
                ElementsAre("OK came: controller 0, PD2 in enclosure 252 slot 2 (serial number S): new"));
    EXPECT_THAT(Sees(kWell), IsEmpty());
    EXPECT_THAT(Sees(kWell),
                ElementsAre("WARNING went: controller 0, PD2 in enclosure 252 slot 2 (serial number S): "
                            "is in no report any more"));
    EXPECT_THAT(Sees(kWell), IsEmpty());
    Restart();
    EXPECT_THAT(Sees(kWell + Spare("PD2", "S")),
                ElementsAre("OK came: controller 0, PD2 in enclosure 252 slot 2 (serial number S): is back"));
}

TEST_F(Watching, AControllerTakesAlongWhatBelongsToIt) {
    const std::string second = ControllerItem("1") + Spare("PD0", "S");
    (void)Sees(kWell);
    EXPECT_THAT(Sees(kWell + second), ElementsAre("OK came: controller 1 (Gate): new"));
    EXPECT_THAT(Sees(kWell), IsEmpty());
    EXPECT_THAT(Sees(kWell), ElementsAre("WARNING went: controller 1 (Gate): is in no report any more"));
}

TEST_F(Watching, DrivesThatNothingTellsApartKeepTheirSlots) {
    const std::string twins = kWell + Spare("PD2", "0000") + Spare("PD3", "0000");
    EXPECT_THAT(Sees(twins), IsEmpty());
    EXPECT_THAT(Sees(twins), IsEmpty());
    EXPECT_THAT(Sees(kWell + Spare("PD2", "") + Spare("PD3", "")), IsEmpty());
}

TEST_F(Watching, TellsOfACounterThatGrowsTooFast) {
    const auto with = [](const std::string& count) {
        return kWell + Spare("PD2", "S", Key("Media Error Count", count));
    };
    EXPECT_THAT(Sees(with("500")), IsEmpty());
    EXPECT_THAT(Sees(with("510")), IsEmpty());
    EXPECT_THAT(
        Sees(with("511")),
        ElementsAre("WARNING grew: controller 0, PD2 in enclosure 252 slot 2 (serial number S): media errors "
                    "from 500 to 511 since 2031-04-05T06:05:00Z"));
    EXPECT_THAT(Sees(with("600")), IsEmpty());  // told for this day
    m_Now += hours(24);
    EXPECT_THAT(Sees(with("600")), IsEmpty());
    Restart();
    EXPECT_EQ(Sees(with("611")).size(), 1U);
    EXPECT_THAT(Sees(with("3")), IsEmpty());  // cleared
    EXPECT_EQ(Sees(with("14")).size(), 1U);
    EXPECT_THAT(Sees(with("N/A")), IsEmpty());
}

TEST_F(Watching, SlowGrowthIsNoNews) {
    for (int day = 0; day < 30; ++day) {
        EXPECT_THAT(Sees(kWell + Spare("PD2", "S", Key("Media Error Count", std::to_string(10 * day)))),
                    IsEmpty());
        m_Now += hours(24);
    }
}

TEST_F(Watching, ACounterFollowsItsDrive) {
    (void)Sees(kWell + Spare("PD2", "S", Key("Media Error Count", "0")));
    EXPECT_THAT(Sees(kWell + Spare("PD5", "S", Key("Media Error Count", "50"))),
                testing::Contains(HasSubstr("WARNING grew: controller 0, PD5 in enclosure 252 slot 5")));
}

TEST_F(Watching, AFailureToAskIsToldOnceAndIsAnAlarmWhenItStays) {
    (void)Sees(kWell);
    EXPECT_THAT(Fails("the tool hangs"),
                ElementsAre("OK inquiry-failed: the server could not be asked: the tool hangs"));
    EXPECT_THAT(Fails("the tool hangs"), IsEmpty());
    EXPECT_THAT(
        Fails("the tool hangs"),
        ElementsAre("UNKNOWN began: the server: cannot be asked, 3 times in a row: the tool hangs; the last "
                    "answer is from 2031-04-05T06:05:00Z"));
    for (int times = 0; times < 100; ++times) {
        EXPECT_THAT(Fails("the tool hangs"), IsEmpty());
    }
    Restart();
    EXPECT_THAT(Fails("the tool hangs"), IsEmpty());
    ASSERT_EQ(m_Watch.Alarms().size(), 1U);
    EXPECT_THAT(Sees(kWell), ElementsAre("OK ended: the server answers again"));
    EXPECT_THAT(m_Watch.Alarms(), IsEmpty());
}

TEST_F(Watching, FailuresLeaveOtherAlarmsAsTheyAre) {
    (void)Sees(kFailed);
    (void)Fails("a");
    (void)Fails("b");
    EXPECT_THAT(Fails("c"),
                ElementsAre("OK inquiry-failed: the server could not be asked: c",
                            HasSubstr("UNKNOWN began: the server: cannot be asked, 3 times in a row: c")));
    EXPECT_EQ(m_Watch.Alarms().size(), 3U);
    EXPECT_THAT(Sees(kFailed), ElementsAre("OK ended: the server answers again"));
}

TEST_F(Watching, AServerWithNothingToJudgeIsAnAlarm) {
    EXPECT_THAT(Sees(""), ElementsAre("UNKNOWN began: the server: no controller, nothing to judge"));
    EXPECT_THAT(Sees(""), IsEmpty());
    (void)Sees(kWell);
    (void)Sees(kWell);
    EXPECT_THAT(Sees(kWell),
                ElementsAre("OK ended: the server: no controller, nothing to judge: well again"));
}

TEST_F(Watching, AWarmDriveIsNoNewsAtEveryDegree) {
    Criteria criteria;
    criteria.limits.temperature = 40;
    const auto with = [](const std::string& degrees) {
        return kWell + Spare("PD2", "S", Key("Temperature", degrees));
    };
    EXPECT_EQ(Sees(with("41 C"), criteria).size(), 1U);
    EXPECT_THAT(Sees(with("42 C"), criteria), IsEmpty());
    (void)Sees(with("40 C"), criteria);
    (void)Sees(with("40 C"), criteria);
    EXPECT_EQ(Sees(with("40 C"), criteria).size(), 1U);
}

TEST_F(Watching, StateThatIsDamagedIsLeftOut) {
    (void)Sees(kFailed);
    std::vector<StateRow> rows = m_Watch.Rows();
    const std::size_t count = rows.size();
    for (StateRow& row : rows) {
        if (row.key.starts_with("alarm ")) {
            row.text.resize(row.text.size() / 2);
        }
    }
    rows.push_back({"", "{}"});
    rows.push_back({"part x", "{\"part_kind\": 1}"});
    Watch other = MakeWatch();
    EXPECT_EQ(other.Restore(rows), 4U);
    EXPECT_EQ(other.Rows().size(), count - 2);
    EXPECT_EQ(other.Take(inventory::Snapshot(Read(kFailed)), m_Now).size(), 2U);
}

TEST_F(Watching, IdsAreNeverTheSame) {
    EXPECT_NE(RandomId(m_Now), RandomId(m_Now));
    EXPECT_THAT(RandomId(m_Now), testing::MatchesRegex("20310405T060000Z-[0-9a-f]{8}"));
}

TEST_F(Watching, EveryAlarmSaysWhatToDo) {
    for (const std::string& items : {kFailed, kRebuilding, ControllerItem("0") + Group("SPLEENED")}) {
        Watch watch = MakeWatch();
        for (const Event& event : watch.Take(inventory::Snapshot(Read(items)), m_Now)) {
            EXPECT_NE(event.advice, "") << Describe(event);
        }
    }
}

}  // namespace
}  // namespace watch::test
