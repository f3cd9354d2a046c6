// What is older than it is to get goes, a little at a time, and what the clock says is taken with care.

#include "Retention.h"

#include "Calendar.h"
#include "Contents.h"
#include "Remembering.h"
#include "Schema.h"
#include "Store.h"

namespace history::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const TimePoint kToday = At("2031-04-05T12:00:00Z");

TimePoint DaysAgo(int days) {
    return kToday - hours(24 * days);
}

TEST(TheTimeOfAges, FollowsTheClock) {
    EXPECT_EQ(FollowClock(kToday, kToday + minutes(5), minutes(5)), kToday + minutes(5));
    EXPECT_EQ(FollowClock(kToday, kToday - minutes(5), minutes(5)), kToday - minutes(5));
    EXPECT_EQ(FollowClock(kToday, kToday, minutes(0)), kToday);
}

// A day in an hour: what is wrong for an hour makes nothing older by more than that.
TEST(TheTimeOfAges, DoesNotJumpWithIt) {
    EXPECT_EQ(FollowClock(kToday, kToday + hours(24 * 1000), hours(1)), kToday + hours(24));
    EXPECT_EQ(FollowClock(kToday, TimePoint(), hours(1)), kToday - hours(24));
    EXPECT_EQ(FollowClock(kToday, kToday + hours(24), minutes(5)), kToday + hours(2));
    EXPECT_EQ(FollowClock(kToday, kToday + hours(24), minutes(-5)), kToday);
    EXPECT_EQ(FollowClock(TimePoint::min(), TimePoint::max(), hours(1)), TimePoint::min() + hours(24));
}

TEST(TheTimeOfAges, CatchesUpAfterAYearWithoutAService) {
    TimePoint followed = DaysAgo(365);
    int inquiries = 0;
    for (; followed != kToday + inquiries * minutes(5); ++inquiries) {
        followed = FollowClock(followed, kToday + (inquiries + 1) * minutes(5), minutes(5));
        ASSERT_LT(inquiries, 5000);
    }
    EXPECT_EQ(inquiries * 5 / 60 / 24, 15);  // days
}

/// A history in memory with one drive.
class OldThings : public testing::Test {
  protected:
    OldThings() : m_Database(Database::InMemory()) {
        Upgrade(m_Database);
        m_Database.Run(
            "INSERT INTO parts VALUES(1, 'drive/A', 4, '0', '', 'PD0', '252', '0', 'TF6', 'A');"
            "INSERT INTO counters VALUES(1, 'temperature');"
            "INSERT INTO states VALUES(1, 1, 0, 0, 'ONLINE', '', 0)");
        m_Retention.emplace(m_Database);
    }
    void Add(TimePoint at, double value, std::int64_t counter = 1) {
        const std::int64_t day = DayOf(at);
        m_Database.Prepare("INSERT INTO samples VALUES(?, 1, ?, ?, ?)")
            .Run(day, counter, SecondsOf(at) - day * kSecondsOfDay, value);
    }
    /// Until nothing is left to be done. How many steps that took.
    int Tidy(TimePoint now = kToday) {
        int steps = 1;
        while (m_Retention->Step(now).isMore) {
            EXPECT_LT(++steps, 1000);
        }
        return steps;
    }
    [[nodiscard]] std::vector<std::string> All() {
        return Lines(Contents(m_Database).ReadingsOf(1, kTemperature, TimePoint()));
    }
    [[nodiscard]] std::int64_t Rows(const std::string& table) {
        return m_Database.Integer("SELECT count(*) FROM " + table);
    }

    Database m_Database;
    std::optional<Retention> m_Retention;
};

TEST_F(OldThings, AreKeptInFullForThirtyDays) {
    Add(DaysAgo(30), 31);
    Add(DaysAgo(30) + minutes(5), 32);
    Add(kToday, 33);
    EXPECT_EQ(Tidy(), 1);
    EXPECT_THAT(All(), ElementsAre("31", "32", "33"));
}

TEST_F(OldThings, BecomeTheirMinimumMaximumAndLast) {
    Add(DaysAgo(31), 31);
    Add(DaysAgo(31) + minutes(5), 29);
    Add(DaysAgo(31) + minutes(10), 40);
    Add(DaysAgo(31) + minutes(15), 32);
    Add(kToday, 33);
    Tidy();
    EXPECT_THAT(All(), ElementsAre("29 to 40, 32: 03-05 - 03-05", "33"));
    EXPECT_EQ(Rows("samples"), 1);
}

TEST_F(OldThings, AreOneRowWhereNothingChanges) {
    for (int day = 60; day > 30; --day) {
        Add(DaysAgo(day), day == 45 ? 7 : 3);
    }
    Tidy();
    EXPECT_THAT(All(), ElementsAre("3 to 3, 3: 02-04 - 02-18", "7 to 7, 7: 02-19 - 02-19",
                                   "3 to 3, 3: 02-20 - 03-05"));
}

TEST_F(OldThings, AreNoRowOverADayWithoutAny) {
    Add(DaysAgo(40), 3);
    Add(DaysAgo(38), 3);
    Tidy();
    EXPECT_THAT(All(), ElementsAre("3 to 3, 3: 02-24 - 02-24", "3 to 3, 3: 02-26 - 02-26"));
}

TEST_F(OldThings, AreGoneAfterTwoYears) {
    Add(DaysAgo(731), 1);
    Add(DaysAgo(700), 2);
    Add(DaysAgo(31), 3);
    Tidy();
    EXPECT_THAT(All(), testing::SizeIs(2));
    Add(DaysAgo(10), 4);
    Tidy(kToday + hours(24 * 40));
    EXPECT_THAT(All(), ElementsAre("3 to 3, 3: 03-05 - 03-05", "4 to 4, 4: 03-26 - 03-26"));
}

// The clock was put back by weeks: what is added to a day that is thinned out already leaves the others as
// they are.
TEST_F(OldThings, TakeInWhatComesLate) {
    for (int day = 40; day > 35; --day) {
        Add(DaysAgo(day), 3);
    }
    Tidy();
    EXPECT_THAT(All(), ElementsAre("3 to 3, 3: 02-24 - 02-28"));
    Add(DaysAgo(38), 9);
    Add(DaysAgo(38) + minutes(5), 5);
    Tidy();
    EXPECT_THAT(All(), ElementsAre("3 to 3, 3: 02-24 - 02-25", "3 to 9, 5: 02-26 - 02-26",
                                   "3 to 3, 3: 02-27 - 02-28"));
    Add(DaysAgo(38), 1);
    Add(DaysAgo(40), 4);
    Add(DaysAgo(36), 2);
    Tidy();
    EXPECT_THAT(
        All(), ElementsAre("3 to 4, 4: 02-24 - 02-24", "3 to 3, 3: 02-25 - 02-25", "1 to 9, 1: 02-26 - 02-26",
                           "3 to 3, 3: 02-27 - 02-27", "2 to 3, 2: 02-28 - 02-28"));
}

TEST_F(OldThings, GoALittleAtATime) {
    for (int counter = 1; counter <= 5000; ++counter) {
        Add(DaysAgo(31), 1, counter);
    }
    EXPECT_TRUE(m_Retention->Step(kToday).isMore);
    EXPECT_EQ(Rows("samples"), 3000);
    EXPECT_EQ(Rows("days"), 2000);
    EXPECT_EQ(Tidy(), 3);
    EXPECT_EQ(Rows("days"), 5000);
}

TEST_F(OldThings, LeaveTheStateThatStands) {
    const std::int64_t long_ago = SecondsOf(DaysAgo(800));
    m_Database.Run("DELETE FROM states");
    for (int id = 1; id <= 3; ++id) {
        m_Database.Prepare("INSERT INTO states VALUES(?, 1, ?, 0, 'ONLINE', '', ?)")
            .Run(id, long_ago, long_ago + id);
    }
    Tidy();
    EXPECT_EQ(Rows("states"), 1);
    EXPECT_EQ(m_Database.Integer("SELECT id FROM states"), 3);
}

TEST_F(OldThings, GoWithTheirPart) {
    const std::int64_t long_ago = SecondsOf(DaysAgo(731));
    m_Database.Run("DELETE FROM states");
    m_Database.Prepare("INSERT INTO states VALUES(1, 1, ?1, 0, 'ONLINE', '', ?1)").Run(long_ago);
    m_Database.Prepare("INSERT INTO states VALUES(2, 1, ?1, NULL, '', '', ?2)")
        .Run(long_ago + 300, SecondsOf(kToday));
    m_Database.Run("INSERT INTO days VALUES(1, 1, 20000, 1, 1, 1, 1)");
    Retention::Done done = m_Retention->Step(kToday);
    while (done.parts.empty() && done.isMore) {
        done = m_Retention->Step(kToday);
    }
    EXPECT_THAT(done.parts, ElementsAre("drive/A"));
    EXPECT_EQ(Rows("parts") + Rows("states") + Rows("days"), 0);
}

TEST_F(OldThings, StayWithAPartThatCameBack) {
    const std::int64_t long_ago = SecondsOf(DaysAgo(731));
    m_Database.Run("DELETE FROM states");
    m_Database.Prepare("INSERT INTO states VALUES(1, 1, ?1, NULL, '', '', ?1)").Run(long_ago);
    m_Database.Prepare("INSERT INTO states VALUES(2, 1, ?1, 0, 'ONLINE', '', ?1)").Run(SecondsOf(kToday));
    Tidy();
    EXPECT_EQ(Rows("parts"), 1);
}

class OldEvents : public OldThings {
  protected:
    void AddEvent(int number, TimePoint at) {
        m_Database.Prepare("INSERT INTO events VALUES(?1, ?1, ?2, '')").Run(number, SecondsOf(at));
    }
};

TEST_F(OldEvents, GoAfterTwoYears) {
    AddEvent(1, DaysAgo(800));
    AddEvent(2, DaysAgo(731));
    AddEvent(3, DaysAgo(729));
    Tidy();
    EXPECT_EQ(Rows("events"), 1);
}

// One of a time when the clock was wrong is as old as those around it.
TEST_F(OldEvents, GoInTheirOrder) {
    AddEvent(1, DaysAgo(10));
    AddEvent(2, TimePoint());
    AddEvent(3, DaysAgo(9));
    Tidy();
    EXPECT_EQ(Rows("events"), 3);
}

TEST_F(OldEvents, StayWhileTheyAreOwed) {
    AddEvent(1, DaysAgo(800));
    AddEvent(2, DaysAgo(800));
    m_Database.Run("INSERT INTO deliveries VALUES(1, 'mail')");
    Tidy();
    EXPECT_EQ(m_Database.Integer("SELECT number FROM events"), 1);
    EXPECT_EQ(Rows("events"), 1);
}

TEST_F(OldEvents, AreBounded) {
    m_Database.Run(
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 102500) "
        "INSERT INTO events SELECT i, i, " +
        std::to_string(SecondsOf(kToday)) + ", '' FROM n");
    EXPECT_EQ(Tidy(), 4);
    EXPECT_EQ(Rows("events"), kMostEventsKept);
    EXPECT_EQ(m_Database.Integer("SELECT min(number) FROM events"), 2501);
}

TEST_F(OldThings, OfStatesAreBounded) {
    const std::string today = std::to_string(SecondsOf(kToday));
    m_Database.Run(
        "WITH RECURSIVE n(i) AS (SELECT 2 UNION ALL SELECT i + 1 FROM n WHERE i < 201501) "
        "INSERT INTO states SELECT i, 1, " +
        today + ", 0, '', '', " + today + " FROM n");
    Tidy();
    EXPECT_EQ(Rows("states"), kMostStatesKept);
    EXPECT_EQ(m_Database.Integer("SELECT max(id) FROM states"), 201'501);
}

using AnArchivesRetention = Remembering;

TEST_F(AnArchivesRetention, RunsBesideItsWork) {
    ASSERT_EQ(Open().trouble, "");
    for (int day = 0; day < 70; ++day) {
        for (const int degrees : {30, 35 + day % 2, 31}) {
            ASSERT_EQ(Sees({{.serial = "A", .temperature = degrees}}).trouble, "");
        }
        m_Now += hours(24) - minutes(15);
        ASSERT_EQ(m_Archive.Tidy(m_Now, hours(24)).trouble, "");
    }
    const std::vector<std::string> lines = Readings("drive/A", kTemperature);
    EXPECT_EQ(lines.front(), "30 to 35, 31: 04-05 - 04-05");
    EXPECT_EQ(lines.size(), 40U + 30U * 3);
    EXPECT_THAT(Readings("drive/A", kMediaErrors).front(), "0 to 0, 0: 04-05 - 05-14");
    EXPECT_EQ(IntegrityOf(m_Path), "ok");
}

// A drive that is pulled and never seen again is forgotten in the end, in memory too, and comes back as a new
// one.
TEST_F(AnArchivesRetention, ForgetsADriveThatWasPulled) {
    ASSERT_EQ(Open().trouble, "");
    ASSERT_EQ(Sees({{.serial = "A"}, {.serial = "B", .slot = "1"}}).trouble, "");
    for (int day = 0; day < 740; ++day) {
        m_Now += hours(24);
        if (day % 10 == 0) {
            ASSERT_EQ(Sees({{.serial = "A"}}).trouble, "");
        }
        ASSERT_EQ(m_Archive.Tidy(m_Now, hours(24)).trouble, "");
    }
    EXPECT_THAT(StatesOf("drive/B"), ElementsAre("no such part"));
    EXPECT_EQ(Count(m_Path, "SELECT count(*) FROM parts"), 2);
    ASSERT_EQ(Sees({{.serial = "A"}, {.serial = "B", .slot = "1"}}).trouble, "");
    EXPECT_THAT(StatesOf("drive/B"), testing::SizeIs(1));
    EXPECT_THAT(Readings("drive/B", kTemperature), ElementsAre("31"));
}

}  // namespace
}  // namespace history::test
