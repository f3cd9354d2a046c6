// A file that cannot be used is set aside, whatever is wrong with it, and a new one begun.

#include "FileCare.h"
#include "Remembering.h"
#include "basics/Failure.h"
#include "test_support/Sweep.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <random>

namespace history::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace fs = std::filesystem;

class DamagedFile : public Remembering {
  protected:
    /// A history of some pages, all of them in the file itself.
    void Fill() {
        ASSERT_EQ(Open().trouble, "");
        Entry entry;
        for (int number = 0; number < 200; ++number) {
            entry.events.push_back(EventNamed("event " + std::to_string(number), m_Now));
        }
        entry.at = m_Now;
        entry.deliveries = {{"mail", entry.events.front()}};
        entry.rows = {{"alarm", "stands"}};
        ASSERT_EQ(m_Archive.Record(entry).trouble, "");
        ASSERT_EQ(Sees({{.serial = "A"}}).trouble, "");
        Change(m_Path, "PRAGMA wal_checkpoint(TRUNCATE)");
    }
    void Close() { m_Archive = Archive(m_Path); }

    [[nodiscard]] std::vector<std::string> SetAsideNames() const {
        std::vector<std::string> names = m_Folder.Names();
        std::erase_if(names, [](const std::string& name) {
            return name.find("damaged") == std::string::npos && name.find("version") == std::string::npos;
        });
        return names;
    }

    void ExpectANewOne(const Outcome& outcome) {
        EXPECT_EQ(outcome.trouble, "");
        ASSERT_THAT(outcome.notes, SizeIs(1));
        EXPECT_THAT(outcome.notes.front(), HasSubstr("; it is set aside as " + m_Path + "."));
        EXPECT_THAT(outcome.notes.front(), HasSubstr(", and a new one is begun"));
        EXPECT_EQ(Sees({{.serial = "A"}}, {EventNamed("new", m_Now)}).trouble, "");
        EXPECT_THAT(Ids(Reader(m_Path).EventsSince(TimePoint())), ElementsAre("new"));
        EXPECT_EQ(IntegrityOf(m_Path), "ok");
    }
};

struct Damage {
    const char* name;
    void (*apply)(const std::string& path);
};

void Overwrite(const std::string& path, std::size_t from, const std::string& bytes) {
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(static_cast<std::streamoff>(from));
    file << bytes;
}

std::string Garbage(std::size_t size) {
    std::mt19937 chance(1);
    std::string bytes(size, '\0');
    std::generate(bytes.begin(), bytes.end(), [&chance] { return static_cast<char>(chance()); });
    return bytes;
}

constexpr Damage kDamages[] = {
    {"Garbage", [](const std::string& path) { testsupport::WriteFile(path, Garbage(10'000)); }},
    {"AFewBytes", [](const std::string& path) { testsupport::WriteFile(path, "xyz"); }},
    {"Text",
     [](const std::string& path) { testsupport::WriteFile(path, "SQLite format 3 is what this is not\n"); }},
    {"ItsMagicAlone", [](const std::string& path) { fs::resize_file(path, 16); }},
    {"HalfOfIt", [](const std::string& path) { fs::resize_file(path, fs::file_size(path) / 2); }},
    {"OnePageLess", [](const std::string& path) { fs::resize_file(path, fs::file_size(path) - 4096); }},
    {"OnePageAlone", [](const std::string& path) { fs::resize_file(path, 4096); }},
    {"NoFirstPage", [](const std::string& path) { Overwrite(path, 0, std::string(4096, '\0')); }},
    {"NoHeader", [](const std::string& path) { Overwrite(path, 0, Garbage(100)); }},
    {"NoSchema", [](const std::string& path) { Overwrite(path, 100, Garbage(3996)); }},
    {"ZeroesInside", [](const std::string& path) { Overwrite(path, 4096, std::string(8192, '\0')); }},
    {"GarbageInside", [](const std::string& path) { Overwrite(path, 3 * 4096, Garbage(5 * 4096)); }},
    {"PagesExchanged",
     [](const std::string& path) {
         const std::string text = testsupport::ReadFile(path);
         Overwrite(path, 4 * 4096, text.substr(8 * 4096, 4096));
         Overwrite(path, 8 * 4096, text.substr(4 * 4096, 4096));
     }},
    {"ATableLess", [](const std::string& path) { Change(path, "DROP TABLE samples"); }},
    {"AColumnLess", [](const std::string& path) { Change(path, "ALTER TABLE days DROP COLUMN run"); }},
    {"TextForANumber",
     [](const std::string& path) {
         Change(path,
                "PRAGMA writable_schema = ON; UPDATE sqlite_schema SET sql = replace(sql, 'STRICT', '')");
         Change(path, "UPDATE states SET since = 'yesterday'");
         Change(path,
                "PRAGMA writable_schema = ON; UPDATE sqlite_schema SET sql = sql || ' STRICT' WHERE name = "
                "'states'");
     }},
    {"AnotherProgramsFile",
     [](const std::string& path) {
         fs::remove(path);
         Change(path, "CREATE TABLE songs(title); INSERT INTO songs VALUES('x')");
     }},
};

class EveryDamage : public DamagedFile, public testing::WithParamInterface<Damage> {};

TEST_P(EveryDamage, IsSetAside) {
    Fill();
    Close();
    GetParam().apply(m_Path);
    const std::string bytes = testsupport::ReadFile(m_Path);
    const Outcome outcome = Open();
    ExpectANewOne(outcome);
    EXPECT_THAT(m_Restored.rows, IsEmpty());
    const std::vector<std::string> names = SetAsideNames();
    ASSERT_FALSE(names.empty());
    EXPECT_EQ(names.front(), "history.db.damaged-20310405T060500Z");
    EXPECT_EQ(m_Folder.Read(names.front()), bytes);
}

// Readers say so in words, or read what can be read.
TEST_P(EveryDamage, IsToldToReaders) {
    Fill();
    Close();
    GetParam().apply(m_Path);
    try {
        Reader reader(m_Path);
        for (const Part& part : reader.Parts().parts) {
            (void)reader.HistoryOf(part, TimePoint());
        }
        (void)reader.EventsSince(TimePoint());
        (void)reader.Document();
    } catch (const basics::Failure& failure) {
        EXPECT_THAT(failure.what(), testing::StartsWith("the history " + m_Path + " is "));
    }
}

INSTANTIATE_TEST_SUITE_P(Each, EveryDamage, testing::ValuesIn(kDamages),
                         [](const auto& damage) { return damage.param.name; });

TEST_F(DamagedFile, OfNoBytesIsANewOne) {
    Fill();
    Close();
    testsupport::WriteFile(m_Path, "");
    const Outcome outcome = Open();
    EXPECT_EQ(outcome.trouble, "");
    EXPECT_THAT(outcome.notes, IsEmpty());
    EXPECT_EQ(Sees({{.serial = "A"}}).trouble, "");
}

// What was not written into the file yet is checked by itself, and counts up to where it is whole.
TEST_F(DamagedFile, IsNotOneWhoseLogIsDamaged) {
    Fill();
    ASSERT_EQ(Sees({{.serial = "A"}}, {EventNamed("logged", m_Now)}).trouble, "");
    const testsupport::TempFolder elsewhere;
    const std::string path = elsewhere / "history.db";
    fs::copy_file(m_Path, path);
    fs::copy_file(m_Path + "-wal", path + "-wal");
    Overwrite(path + "-wal", 32 + 24 + 100, Garbage(500));
    Archive archive(path);
    const Outcome outcome = archive.Open(m_Now, m_Restored);
    EXPECT_EQ(outcome.trouble, "");
    EXPECT_THAT(outcome.notes, IsEmpty());
    EXPECT_THAT(m_Restored.rows, SizeIs(1));
}

TEST_F(DamagedFile, LeavesNoLogForTheNextOne) {
    Fill();
    Close();
    testsupport::WriteFile(m_Path + "-wal", Garbage(5000));
    testsupport::WriteFile(m_Path, Garbage(5000));
    ExpectANewOne(Open());
    EXPECT_THAT(SetAsideNames(),
                ElementsAre("history.db.damaged-20310405T060500Z", "history.db.damaged-20310405T060500Z-shm",
                            "history.db.damaged-20310405T060500Z-wal"));
}

TEST_F(DamagedFile, OfTheSameSecondGetsANameOfItsOwn) {
    for (int time = 0; time < 2; ++time) {
        testsupport::WriteFile(m_Path, "xyz");
        EXPECT_THAT(Restart().notes, SizeIs(1));
        Close();
    }
    EXPECT_THAT(SetAsideNames(),
                ElementsAre("history.db.damaged-20310405T060000Z", "history.db.damaged-20310405T060000Z.2"));
}

TEST_F(DamagedFile, DoesNotFillTheDisk) {
    for (int time = 0; time < 6; ++time) {
        testsupport::WriteFile(m_Path, "xyz");
        EXPECT_THAT(Restart().notes, SizeIs(1));
        Close();
        m_Now += minutes(1);
    }
    EXPECT_THAT(SetAsideNames(),
                ElementsAre("history.db.damaged-20310405T060000Z", "history.db.damaged-20310405T060400Z",
                            "history.db.damaged-20310405T060500Z"));
}

TEST_F(DamagedFile, IsNoneOfANewerVersion) {
    Fill();
    Close();
    Change(m_Path, "PRAGMA user_version = 9");
    const Outcome outcome = Open();
    ExpectANewOne(outcome);
    EXPECT_THAT(outcome.notes.front(),
                HasSubstr("was written by a newer version of this service (9; known are "
                          "versions up to 2)"));
    EXPECT_THAT(SetAsideNames(), ElementsAre("history.db.version-9-20310405T060500Z"));
    EXPECT_EQ(Count(m_Folder / "history.db.version-9-20310405T060500Z", "SELECT count(*) FROM events"), 200);
}

// Everything that the service knows goes into the new one: what stands, and what is still owed.
TEST_F(DamagedFile, IsNoticedWhileItIsWritten) {
    Fill();
    const std::uintmax_t size = fs::file_size(m_Path);
    Overwrite(m_Path, 4096, Garbage(size - 4096));
    const Snapshot snapshot = SnapshotOf({{.serial = "A"}, {.serial = "B", .slot = "1"}});
    m_Now += minutes(5);
    Entry entry = EntryOf(snapshot, m_Now);
    entry.events = {EventNamed("new", m_Now)};
    entry.rows = {{"alarm", "stands"}, {"alarm 2", "too"}};
    const Outcome outcome = m_Archive.Record(entry);
    EXPECT_EQ(outcome.trouble, "");
    ASSERT_THAT(outcome.notes, SizeIs(1));
    EXPECT_THAT(SetAsideNames(), testing::Contains("history.db.damaged-20310405T061000Z"));
    EXPECT_THAT(Ids(Reader(m_Path).EventsSince(TimePoint())), ElementsAre("event 0", "new"));
    EXPECT_THAT(Readings("drive/A", kTemperature), ElementsAre("31"));
    EXPECT_THAT(StatesOf("drive/A"), ElementsAre("2031-04-05T06:05:00Z 2031-04-05T06:10:00Z OK ONLINE"));
    EXPECT_EQ(Sees({{.serial = "A"}, {.serial = "B", .slot = "1"}}).notes.size(), 0U);
    ASSERT_EQ(Restart().trouble, "");
    EXPECT_THAT(m_Restored.rows, SizeIs(2));
    ASSERT_THAT(m_Restored.deliveries, SizeIs(1));
    EXPECT_EQ(m_Restored.deliveries.front().event.id, "event 0");
    EXPECT_EQ(IntegrityOf(m_Path), "ok");
}

TEST_F(DamagedFile, IsBegunAnewWhenItIsTakenAway) {
    Fill();
    fs::rename(m_Path, m_Path + ".kept");
    EXPECT_EQ(Sees({{.serial = "A"}}, {EventNamed("new", m_Now)}).trouble, "");
    EXPECT_THAT(Ids(Reader(m_Path).EventsSince(TimePoint())), ElementsAre("event 0", "new"));
    EXPECT_THAT(Readings("drive/A", kTemperature), ElementsAre("31"));
    EXPECT_EQ(IntegrityOf(m_Path + ".kept"), "ok");
}

TEST_F(DamagedFile, IsNoneWhereAFolderStands) {
    fs::create_directory(m_Path);
    const Outcome outcome = Open();
    EXPECT_THAT(outcome.trouble, HasSubstr("the history " + m_Path + " cannot be written: unable to open"));
    EXPECT_THAT(SetAsideNames(), IsEmpty());
    fs::remove(m_Path);
    EXPECT_EQ(Sees({{.serial = "A"}}).trouble, "");
}

// One byte is another one, here and there: whatever it does, the service goes on.
TEST_F(DamagedFile, OfSingleBytesNeverEndsTheService) {
    Fill();
    Close();
    const std::string whole = testsupport::ReadFile(m_Path);
    std::mt19937 chance(7);
    for (int time = 0; time < static_cast<int>(testsupport::PointsOf(50)); ++time) {
        for (const std::string& name : m_Folder.Names()) {
            fs::remove(m_Folder.Path() / name);
        }
        std::string bytes = whole;
        for (int change = 0; change < 1 + time % 20; ++change) {
            bytes[chance() % bytes.size()] = static_cast<char>(chance());
        }
        testsupport::WriteFile(m_Path, bytes);
        ASSERT_EQ(Restart().trouble, "") << time;
        ASSERT_EQ(Sees({{.serial = "A", .temperature = time}}, {EventNamed("new", m_Now)}).trouble, "")
            << time;
        ASSERT_EQ(m_Archive.Tidy(m_Now, hours(1)).trouble, "") << time;
        Reader reader(m_Path);
        ASSERT_EQ(Ids(reader.EventsAfter(0, 1000)).back(), "new") << time;
        for (const Part& part : reader.Parts().parts) {
            (void)reader.HistoryOf(part, TimePoint());
        }
        Close();
    }
}

}  // namespace
}  // namespace history::test
