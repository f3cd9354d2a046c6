// Writers and readers beside each other.

#include "FileCare.h"
#include "Remembering.h"
#include "basics/Words.h"
#include "test_support/InChild.h"
#include "test_support/Waiting.h"

#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <thread>

namespace history::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testsupport::InChild;

using Writers = Remembering;

TEST_F(Writers, KnowOfEachOther) {
    ASSERT_EQ(m_Archive.OtherWriter(), std::nullopt);
    ASSERT_EQ(Open().trouble, "");
    const std::string self = "process " + std::to_string(::getpid());
    EXPECT_EQ(InChild([this] {
                  Archive other(m_Path);
                  Restored restored;
                  return other.OtherWriter().value_or("nobody") + "; " + other.Open(m_Now, restored).trouble +
                         "; " + Archive(m_Path).Record({.at = m_Now}).trouble;
              }),
              self + "; the history " + m_Path + " cannot be written: " + self + " writes it; the history " +
                  m_Path + " cannot be written: " + self + " writes it");
    EXPECT_EQ(Sees({{.serial = "A"}}).trouble, "");
}

TEST_F(Writers, AreFollowedByTheNextOne) {
    EXPECT_EQ(InChild([this] {
                  Archive other(m_Path);
                  Restored restored;
                  return other.OtherWriter().value_or("nobody") + other.Open(m_Now, restored).trouble;
              }),
              "nobody");
    EXPECT_EQ(m_Archive.OtherWriter(), std::nullopt);
    EXPECT_EQ(Open().trouble, "");
}

// A process that the writer started must not stand in the way of the next one when the writer is killed.
TEST_F(Writers, DoNotLiveOnInTheirChildren) {
    int ends[2] = {};
    ASSERT_EQ(::pipe(ends), 0);
    const pid_t writer = ::fork();
    if (writer == 0) {
        Archive other(m_Path);
        Restored restored;
        (void)other.OtherWriter();
        (void)other.Open(m_Now, restored);
        if (::fork() == 0) {
            ::close(ends[1]);
            char none = 0;
            (void)!::read(ends[0], &none, 1);  // until the test is over
            ::_exit(0);
        }
        ::kill(::getpid(), SIGKILL);
    }
    ::close(ends[0]);
    int status = 0;
    ASSERT_EQ(::waitpid(writer, &status, 0), writer);
    EXPECT_EQ(m_Archive.OtherWriter(), std::nullopt);
    EXPECT_EQ(Open().trouble, "");
    EXPECT_EQ(Sees({{.serial = "A"}}).trouble, "");
    ::close(ends[1]);
}

// Somebody with SQLite's own command, say.
TEST_F(Writers, WaitForNobody) {
    ASSERT_EQ(Open().trouble, "");
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(m_Path.c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    EXPECT_THAT(Sees({{.serial = "A"}}, {EventNamed("one", m_Now)}).trouble, HasSubstr("database is locked"));
    ASSERT_EQ(sqlite3_exec(other, "COMMIT", nullptr, nullptr, nullptr), SQLITE_OK);
    ASSERT_EQ(sqlite3_close(other), SQLITE_OK);
    EXPECT_EQ(Sees({{.serial = "A"}}, {EventNamed("two", m_Now)}).trouble, "");
    EXPECT_THAT(Ids(Reader(m_Path).EventsSince(TimePoint())), ElementsAre("one", "two"));
}

using Readers = Remembering;

TEST_F(Readers, SeeWhatIsStoredWhileTheyAreOpen) {
    ASSERT_EQ(Open().trouble, "");
    ASSERT_EQ(Sees({{.serial = "A"}}, {EventNamed("one", m_Now)}).trouble, "");
    Reader reader(m_Path);
    EXPECT_THAT(Ids(reader.EventsSince(TimePoint())), ElementsAre("one"));
    ASSERT_EQ(Sees({{.serial = "A"}}, {EventNamed("two", m_Now)}).trouble, "");
    EXPECT_THAT(Ids(reader.EventsSince(TimePoint())), ElementsAre("one", "two"));
    EXPECT_TRUE(reader.IsCurrent());
    std::filesystem::rename(m_Path, m_Path + ".old");
    EXPECT_FALSE(reader.IsCurrent());
}

// Each answer is of one moment: an event of an inquiry is there with its value, or neither is.
TEST_F(Readers, DisturbNobodyAndSeeWholeInquiries) {
    constexpr int kTimes = 300;
    ASSERT_EQ(Open().trouble, "");
    ASSERT_EQ(Sees({{.serial = "A", .temperature = 0}}, {EventNamed("0", m_Now)}).trouble, "");
    std::atomic<bool> isOver = false;
    std::atomic<int> looks = 0;
    std::string seen;
    std::thread reading([&] {
        while (!isOver) {
            Reader reader(m_Path);
            for (int look = 0; look < 10; ++look) {
                const PartHistory told = reader.HistoryOf(reader.Parts().parts.back(), TimePoint());
                const double last = told.series.at(1).readings.back().last;
                if (told.series.at(1).counter != kTemperature ||
                    told.events.back().event.id != std::to_string(int(last))) {
                    seen = told.events.back().event.id + " with " + std::to_string(last);
                }
                ++looks;
            }
        }
    });
    std::string trouble;
    for (int inquiry = 1; inquiry < kTimes; ++inquiry) {
        trouble +=
            Sees({{.serial = "A", .temperature = inquiry}}, {EventNamed(std::to_string(inquiry), m_Now)})
                .trouble;
    }
    EXPECT_TRUE(testsupport::ComesTrue([&looks] { return looks > 10; }));
    isOver = true;
    reading.join();
    EXPECT_EQ(trouble, "");
    EXPECT_EQ(seen, "");
    EXPECT_EQ(IntegrityOf(m_Path), "ok");
}

// One that is stopped in the middle holds up nothing but the tidying of the log.
TEST_F(Readers, ThatStopDisturbNobodyEither) {
    ASSERT_EQ(Open().trouble, "");
    ASSERT_EQ(Sees({{.serial = "A"}}, {EventNamed("one", m_Now)}).trouble, "");
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open_v2(m_Path.c_str(), &other, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN; SELECT * FROM events", nullptr, nullptr, nullptr), SQLITE_OK);
    for (int inquiry = 0; inquiry < 50; ++inquiry) {
        ASSERT_EQ(Sees({{.serial = "A", .temperature = inquiry}}).trouble, "");
        ASSERT_EQ(m_Archive.Tidy(m_Now, minutes(5)).trouble, "");
    }
    ASSERT_EQ(sqlite3_close(other), SQLITE_OK);
    EXPECT_THAT(Readings("drive/A", kTemperature), SizeIs(51));
}

TEST_F(Readers, AreToldWhatIsMissing) {
    try {
        Reader reader(m_Path);
        FAIL();
    } catch (const basics::Failure& failure) {
        EXPECT_EQ(
            std::string(failure.what()),
            "the history " + m_Path +
                " is not there, or cannot be reached; mngsrvraidd makes it, or --history FILE names another");
    }
    EXPECT_THAT(m_Folder.Names(), IsEmpty());
}

TEST_F(Readers, SortThePartsAsTheyAreInTheServer) {
    ASSERT_EQ(Open().trouble, "");
    ASSERT_EQ(
        Sees({{.serial = "Z", .slot = "2"}, {.serial = "A", .slot = "10"}, {.serial = "M", .slot = "1"}})
            .trouble,
        "");
    ASSERT_EQ(Sees({{.serial = "Z", .slot = "2"}, {.serial = "A", .slot = "10"}}).trouble, "");
    std::vector<std::string> keys;
    for (const Part& part : Reader(m_Path).Parts().parts) {
        keys.push_back(part.key);
    }
    EXPECT_THAT(keys, ElementsAre("controller/0", "drive/Z", "drive/A", "drive/M"));
}

}  // namespace
}  // namespace history::test
