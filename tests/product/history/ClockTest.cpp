// The clock jumps back and forth by a day, and further: nothing is lost by it.

#include "Remembering.h"

namespace history::test {
namespace {

using testing::ElementsAre;

class AJumpingClock : public Remembering {
  protected:
    /// With a temperature and an event that are new each time.
    void Sees(int times) {
        for (int time = 0; time < times; ++time) {
            ++m_Number;
            const std::string id = std::to_string(m_Number);
            ASSERT_EQ(Remembering::Sees({{.serial = "A", .temperature = m_Number}}, {EventNamed(id, m_Now)})
                          .trouble,
                      "");
            ASSERT_EQ(m_Archive.Tidy(m_Now, minutes(5)).trouble, "");
        }
    }
    void ExpectEverything() {
        Reader reader(m_Path);
        std::vector<std::string> ids;
        std::vector<double> values;
        for (int number = 1; number <= m_Number; ++number) {
            ids.push_back(std::to_string(number));
            values.push_back(number);
        }
        EXPECT_EQ(Ids(reader.EventsAfter(0, 10'000)), ids);
        std::vector<double> read;
        TimePoint last;
        for (const Reading& reading : reader.ReadingsOf("drive/A", kTemperature, TimePoint())) {
            EXPECT_LE(last, reading.from);
            last = reading.from;
            read.push_back(reading.last);
        }
        std::sort(read.begin(), read.end());
        EXPECT_EQ(read, values);
        for (const Part& part : reader.Parts().parts) {
            for (const State& state : reader.HistoryOf(part, TimePoint()).states) {
                EXPECT_LE(state.since, state.seen);
            }
        }
        EXPECT_EQ(IntegrityOf(m_Path), "ok");
    }

    int m_Number = 0;
};

TEST_F(AJumpingClock, LosesNothingByADay) {
    ASSERT_EQ(Open().trouble, "");
    Sees(20);
    for (const int jump : {24, -24, -24, 24, 24 * 29, -24 * 29}) {
        m_Now += hours(jump);
        Sees(20);
        ASSERT_EQ(Restart().trouble, "");
        Sees(20);
    }
    ExpectEverything();
}

// The same seconds again and again: each value keeps a second of its own.
TEST_F(AJumpingClock, LosesNothingWhenItStandsStill) {
    ASSERT_EQ(Open().trouble, "");
    for (int time = 0; time < 10; ++time) {
        Sees(1);
        m_Now -= minutes(5);
    }
    ExpectEverything();
}

TEST_F(AJumpingClock, MakesNothingOldByYearsThatItIsAheadForAWhile) {
    ASSERT_EQ(Open().trouble, "");
    Sees(10);
    m_Now += hours(24 * 365 * 5);
    Sees(12);
    m_Now -= hours(24 * 365 * 5);
    Sees(10);
    ExpectEverything();
}

TEST_F(AJumpingClock, MakesNothingOldByYearsThatItIsBehindForAWhile) {
    ASSERT_EQ(Open().trouble, "");
    Sees(10);
    const TimePoint now = m_Now;
    m_Now = TimePoint() + hours(1);
    m_Number += 10;
    for (int time = 0; time < 12; ++time) {  // At its start a server may not know the year.
        ASSERT_EQ(Remembering::Sees({{.serial = "A"}}).trouble, "");
        ASSERT_EQ(m_Archive.Tidy(m_Now, minutes(5)).trouble, "");
    }
    m_Number -= 10;
    m_Now = now;
    Sees(10);
    EXPECT_EQ(Reader(m_Path).EventsAfter(0).size(), 20U);
    EXPECT_EQ(Readings("drive/A", kTemperature, At("2031-01-01T00:00:00Z")).size(), 20U);
}

// A state that began while the clock was ahead is older than its time says.
TEST_F(AJumpingClock, LeavesStatesInTheirOrder) {
    ASSERT_EQ(Open().trouble, "");
    ASSERT_EQ(Remembering::Sees({{.serial = "A"}}).trouble, "");
    m_Now += hours(24);
    ASSERT_EQ(Remembering::Sees({{.serial = "A", .state = "FAILED"}}).trouble, "");
    m_Now -= hours(24);
    ASSERT_EQ(Remembering::Sees({{.serial = "A", .state = "FAILED"}}).trouble, "");
    ASSERT_EQ(Remembering::Sees({{.serial = "A"}}).trouble, "");
    EXPECT_THAT(StatesOf("drive/A"), ElementsAre("2031-04-05T06:05:00Z 2031-04-05T06:05:00Z OK ONLINE",
                                                 "2031-04-06T06:10:00Z 2031-04-06T06:10:00Z WARNING FAILED",
                                                 "2031-04-05T06:20:00Z 2031-04-05T06:20:00Z OK ONLINE"));
    ASSERT_EQ(Restart().trouble, "");
    ASSERT_EQ(Remembering::Sees({{.serial = "A"}}).trouble, "");
    EXPECT_THAT(StatesOf("drive/A"), testing::SizeIs(3));
}

}  // namespace
}  // namespace history::test
