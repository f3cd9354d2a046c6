// What is recorded is read again.

#include "Remembering.h"
#include "test_support/TempFolder.h"

#include <fcntl.h>
#include <malloc.h>

#include <filesystem>

namespace history::test {
namespace {

using namespace inventory::test;
using testing::ElementsAre;
using testing::IsEmpty;

using AnArchive = Remembering;

TEST_F(AnArchive, BeginsWithNothing) {
    const Outcome outcome = Open();
    EXPECT_EQ(outcome.trouble, "");
    EXPECT_THAT(outcome.notes, IsEmpty());
    EXPECT_THAT(m_Restored.rows, IsEmpty());
    EXPECT_THAT(m_Restored.deliveries, IsEmpty());
    EXPECT_FALSE(m_Restored.document);
}

TEST_F(AnArchive, MakesTheFolderOfItsFile) {
    m_Path = m_Folder / "var/history.db";
    ASSERT_TRUE(Restart().IsStored());
    EXPECT_TRUE(std::filesystem::exists(m_Path));
}

TEST_F(AnArchive, StoresValuesWhenTheyChange) {
    (void)Open();
    for (const int degrees : {31, 31, 32, 32, 31}) {
        ASSERT_EQ(Sees({{.serial = "A", .temperature = degrees}}).trouble, "");
    }
    EXPECT_THAT(Readings("drive/A", kTemperature), ElementsAre("31", "32", "31"));
    EXPECT_THAT(Readings("drive/A", kMediaErrors), ElementsAre("0"));
    EXPECT_THAT(Readings("drive/B", kTemperature), IsEmpty());
}

TEST_F(AnArchive, StoresThemOnceADayBesides) {
    (void)Open();
    for (int inquiry = 0; inquiry < 3 * 12; ++inquiry) {
        m_Now += hours(2) - minutes(5);
        ASSERT_EQ(Sees({{.serial = "A"}}).trouble, "");
    }
    EXPECT_EQ(Count(m_Path, "SELECT count(*) FROM samples"), 2 * 4);  // two counters, four days
}

TEST_F(AnArchive, FollowsADriveFromSlotToSlot) {
    (void)Open();
    (void)Sees({{.serial = "A", .slot = "0", .mediaErrors = 1}});
    (void)Sees(
        {{.serial = "A", .slot = "5", .mediaErrors = 2}, {.serial = "B", .slot = "0", .mediaErrors = 9}});
    EXPECT_THAT(Readings("drive/A", kMediaErrors), ElementsAre("1", "2"));
    EXPECT_THAT(Readings("drive/B", kMediaErrors), ElementsAre("9"));
    Reader reader(m_Path);
    const std::vector<Part> parts = reader.Parts().parts;
    ASSERT_EQ(parts.size(), 3U);
    EXPECT_EQ(PlaceOf(parts.at(2).about), "controller 0, PD5 in enclosure 252 slot 5");
    const std::vector<State> states = reader.HistoryOf(parts.at(2), TimePoint()).states;
    ASSERT_EQ(states.size(), 2U);
    EXPECT_EQ(states.front().place, "controller 0, PD0 in enclosure 252 slot 0");
    EXPECT_EQ(states.back().place, "controller 0, PD5 in enclosure 252 slot 5");
}

TEST_F(AnArchive, StoresStatesFromTheirBeginningToTheirEnd) {
    (void)Open();
    for (const char* const state : {"ONLINE", "ONLINE", "FAILED", "ONLINE", "ONLINE"}) {
        ASSERT_EQ(Sees({{.serial = "A", .state = state}}).trouble, "");
    }
    EXPECT_THAT(StatesOf("drive/A"), ElementsAre("2031-04-05T06:05:00Z 2031-04-05T06:10:00Z OK ONLINE",
                                                 "2031-04-05T06:15:00Z 2031-04-05T06:15:00Z WARNING FAILED",
                                                 "2031-04-05T06:20:00Z 2031-04-05T06:25:00Z OK ONLINE"));
}

TEST_F(AnArchive, KnowsWhatIsInNoReportAnyMore) {
    (void)Open();
    (void)Sees({{.serial = "A"}, {.serial = "B", .slot = "1"}});
    (void)Sees({{.serial = "A"}});
    (void)Sees({{.serial = "A"}});
    EXPECT_THAT(StatesOf("drive/B"), ElementsAre("2031-04-05T06:05:00Z 2031-04-05T06:05:00Z OK ONLINE",
                                                 "2031-04-05T06:10:00Z 2031-04-05T06:15:00Z gone"));
    const Overview overview = Reader(m_Path).Parts();
    EXPECT_EQ(overview.answered, m_Now);
    EXPECT_EQ(overview.parts.back().key, "drive/B");
    EXPECT_FALSE(overview.parts.back().state.level);
}

TEST_F(AnArchive, StoresTheNumbersOfSmartData) {
    (void)Open();
    const std::string row =
        Node("SMART Detail(SATA)", Key("ID", "5") + Key("Attribute", "Reallocated Sector Count") +
                                       Key("Value", "100") + Key("Worst", "99") + Key("Threshold", "36") +
                                       Key("Thresh", "37") + Key("Raw Data", "12"));
    (void)Sees({{.serial = "A",
                 .smart = Key("SMART Status", "OK") + Key("Power-On Time", "20411 Hours") + row + row}});
    Reader reader(m_Path);
    const PartHistory told = reader.HistoryOf(reader.Parts().parts.back(), TimePoint());
    std::vector<std::string> lines;
    for (const Series& series : told.series) {
        lines.push_back(series.counter + ": " + Lines(series.readings).front());
    }
    EXPECT_THAT(
        lines,
        ElementsAre("SMART Power-On Time: 20411", "SMART Reallocated Sector Count, Raw Data: 12",
                    "SMART Reallocated Sector Count, Value: 100", "media errors: 0", "temperature: 31"));
}

TEST_F(AnArchive, KeepsEventsInTheirOrder) {
    (void)Open();
    (void)Sees({{.serial = "A"}}, {EventNamed("one", m_Now), EventNamed("two", m_Now)});
    (void)Sees({{.serial = "A"}}, {EventNamed("three", m_Now)});
    Reader reader(m_Path);
    const std::vector<NumberedEvent> events = reader.EventsSince(TimePoint());
    EXPECT_THAT(Ids(events), ElementsAre("one", "two", "three"));
    EXPECT_EQ(JsonOf(events.back().event), JsonOf(EventNamed("three", m_Now - minutes(5))));
    EXPECT_THAT(Ids(reader.EventsAfter(events.front().number)), ElementsAre("two", "three"));
    EXPECT_THAT(Ids(reader.EventsAfter(events.front().number, 1)), ElementsAre("two"));
    EXPECT_EQ(reader.LastEvent(), events.back().number);
    EXPECT_THAT(Ids(reader.EventsSince(m_Now - minutes(5))), ElementsAre("three"));
}

TEST_F(AnArchive, KnowsAnEventByItsId) {
    (void)Open();
    (void)Sees({{.serial = "A"}}, {EventNamed("one", m_Now)});
    (void)Sees({{.serial = "A"}}, {EventNamed("one", m_Now)});
    EXPECT_THAT(Ids(Reader(m_Path).EventsSince(TimePoint())), ElementsAre("one"));
}

TEST_F(AnArchive, TellsTheEventsOfAPart) {
    (void)Open();
    (void)Sees({{.serial = "A"}, {.serial = "B", .slot = "1"}},
               {EventNamed("of A", m_Now), EventNamed("of B", m_Now, "B")});
    Reader reader(m_Path);
    const std::vector<Part> parts = reader.Parts().parts;
    EXPECT_THAT(Ids(reader.HistoryOf(parts.at(2), TimePoint()).events), ElementsAre("of B"));
    EXPECT_THAT(Ids(reader.HistoryOf(parts.at(0), TimePoint()).events), IsEmpty());
}

class Owing : public Remembering {
  protected:
    [[nodiscard]] Outcome Owe(const std::string& channel, const std::string& event) {
        Entry entry;
        entry.at = m_Now;
        entry.events = {EventNamed(event, m_Now)};
        entry.deliveries = {{channel, entry.events.front()}};
        return m_Archive.Record(entry);
    }
    [[nodiscard]] std::vector<std::string> Debts() const {
        std::vector<std::string> debts;
        for (const Delivery& delivery : m_Restored.deliveries) {
            debts.push_back(delivery.channel + " " + delivery.event.id);
        }
        return debts;
    }
};

TEST_F(Owing, OutlivesARestart) {
    (void)Open();
    ASSERT_TRUE(Owe("mail", "one").IsStored());
    ASSERT_TRUE(Owe("post", "two").IsStored());
    ASSERT_TRUE(Owe("mail", "three").IsStored());
    ASSERT_TRUE(m_Archive.Settle("mail", {"one"}, m_Now).IsStored());
    (void)Restart();
    EXPECT_THAT(Debts(), ElementsAre("post two", "mail three"));
    EXPECT_EQ(JsonOf(m_Restored.deliveries.front().event), JsonOf(EventNamed("two", m_Now)));
    ASSERT_TRUE(m_Archive.Settle("post", {"two"}, m_Now).IsStored());
    (void)Restart();
    EXPECT_THAT(Debts(), ElementsAre("mail three"));
}

TEST_F(Owing, IsToEachChannelByItself) {
    (void)Open();
    Entry entry;
    entry.at = m_Now;
    entry.events = {EventNamed("one", m_Now)};
    entry.deliveries = {{"mail", entry.events.front()}, {"post", entry.events.front()}};
    ASSERT_TRUE(m_Archive.Record(entry).IsStored());
    ASSERT_TRUE(m_Archive.Settle("mail", {"one"}, m_Now).IsStored());
    (void)Restart();
    EXPECT_THAT(Debts(), ElementsAre("post one"));
}

TEST_F(Owing, IsPaidOfWhatNobodyKnows) {
    (void)Open();
    ASSERT_TRUE(Owe("mail", "one").IsStored());
    EXPECT_TRUE(m_Archive.Settle("mail", {"another"}, m_Now).IsStored());
    EXPECT_TRUE(m_Archive.Settle("nobody", {"one"}, m_Now).IsStored());
    (void)Restart();
    EXPECT_THAT(Debts(), ElementsAre("mail one"));
}

class KnowingTheWatch : public Remembering {
  protected:
    [[nodiscard]] Outcome Store(const std::vector<watch::StateRow>& rows) {
        Entry entry;
        entry.at = m_Now;
        entry.rows = rows;
        return m_Archive.Record(entry);
    }
    [[nodiscard]] std::vector<std::string> Rows() {
        (void)Restart();
        std::vector<std::string> rows;
        for (const watch::StateRow& row : m_Restored.rows) {
            rows.push_back(row.key + "=" + row.text);
        }
        return rows;
    }
};

TEST_F(KnowingTheWatch, GivesItsRowsBack) {
    (void)Open();
    ASSERT_TRUE(Store({{"a", "1"}, {"b", "2"}, {"c", "3"}}).IsStored());
    EXPECT_THAT(Rows(), ElementsAre("a=1", "b=2", "c=3"));
    ASSERT_TRUE(Store({{"a", "1"}, {"c", "4"}, {"d", "5"}}).IsStored());
    EXPECT_THAT(Rows(), ElementsAre("a=1", "c=4", "d=5"));
    ASSERT_TRUE(Store({}).IsStored());
    EXPECT_THAT(Rows(), ElementsAre("a=1", "c=4", "d=5"));
}

// The rows that are as they were are not touched: somebody's change behind our back stays.
TEST_F(KnowingTheWatch, WritesOnlyWhatIsNew) {
    (void)Open();
    ASSERT_TRUE(Store({{"a", "1"}, {"b", "2"}}).IsStored());
    Change(m_Path, "UPDATE watch SET text = 'changed'");
    ASSERT_TRUE(Store({{"a", "1"}, {"b", "3"}}).IsStored());
    EXPECT_THAT(Rows(), ElementsAre("a=changed", "b=3"));
}

TEST_F(AnArchive, KeepsTheLatestDocument) {
    (void)Open();
    Entry entry;
    const Snapshot snapshot = SnapshotOf({{.serial = "A"}});
    for (const char* const xml : {"<RAID/>", "<RAID version=\"1\"/>", "<RAID version=\"1\"/>"}) {
        m_Now += minutes(5);
        entry = EntryOf(snapshot, m_Now);
        entry.document = xml;
        ASSERT_TRUE(m_Archive.Record(entry).IsStored());
    }
    (void)Restart();
    ASSERT_TRUE(m_Restored.document);
    EXPECT_EQ(m_Restored.document->xml, "<RAID version=\"1\"/>");
    EXPECT_EQ(m_Restored.document->at, m_Now);
    EXPECT_EQ(Reader(m_Path).Document()->xml, m_Restored.document->xml);
}

TEST_F(AnArchive, GoesOnAfterARestart) {
    (void)Open();
    (void)Sees({{.serial = "A"}});
    for (int restart = 0; restart < 3; ++restart) {
        ASSERT_TRUE(Restart().IsStored());
        (void)Sees({{.serial = "A"}});
    }
    (void)Restart();
    (void)Sees({{.serial = "A", .temperature = 32}});
    EXPECT_THAT(Readings("drive/A", kTemperature), ElementsAre("31", "32"));
    EXPECT_THAT(StatesOf("drive/A"), ElementsAre("2031-04-05T06:05:00Z 2031-04-05T06:25:00Z OK ONLINE"));
    EXPECT_EQ(Count(m_Path, "SELECT count(*) FROM parts"), 2);
    EXPECT_EQ(Count(m_Path, "SELECT count(*) FROM states"), 2);
}

TEST_F(AnArchive, TakesAnyTexts) {
    (void)Open();
    const std::string odd("a\0b\xC3\xBC'\"--", 9);
    watch::Event event = EventNamed("x'", m_Now);
    event.words = odd;
    Entry entry;
    entry.at = m_Now;
    entry.events = {event};
    entry.rows = {{odd, odd}};
    ASSERT_EQ(m_Archive.Record(entry).trouble, "");
    (void)Restart();
    ASSERT_EQ(m_Restored.rows.size(), 1U);
    EXPECT_EQ(m_Restored.rows.front().key, odd);
    EXPECT_EQ(m_Restored.rows.front().text, odd);
    EXPECT_EQ(Reader(m_Path).EventsSince(TimePoint()).front().event.words, odd);
}

std::size_t OpenDescriptors() {
    return testsupport::TempFolder::NamesIn("/proc/self/fd").size();
}

// A year of every five minutes would show the smallest growth, and take minutes.
TEST_F(AnArchive, DoesNotGrow) {
    (void)Open();
    std::size_t number = 0;
    const auto record = [&](int times) {
        for (int inquiry = 0; inquiry < times; ++inquiry) {
            const std::string id = std::to_string(++number);
            const Snapshot snapshot =
                SnapshotOf({{.serial = "A", .temperature = static_cast<int>(number % 7)}});
            m_Now += minutes(5);
            Entry entry = EntryOf(snapshot, m_Now);
            entry.events = {EventNamed(id, m_Now)};
            entry.deliveries = {{"mail", entry.events.front()}};
            entry.rows = {{"alarm " + id, id}};
            ASSERT_TRUE(m_Archive.Record(entry).IsStored());
            ASSERT_TRUE(m_Archive.Settle("mail", {id}, m_Now).IsStored());
            ASSERT_TRUE(m_Archive.Tidy(m_Now, minutes(5)).IsStored());
        }
    };
    record(100);
    const std::size_t descriptors = OpenDescriptors();
    const auto memory = ::mallinfo2().uordblks;
    record(200);
    EXPECT_EQ(OpenDescriptors(), descriptors);
    EXPECT_LT(::mallinfo2().uordblks, memory + 10'000);  // 50 bytes for each would be seen
}

}  // namespace
}  // namespace history::test
