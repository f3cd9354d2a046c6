// A disk that is full or may not be written to: the service goes on, and stores everything when it can.

#include "Remembering.h"
#include "basics/Words.h"
#include "test_support/InChild.h"
#include "test_support/SmallDisk.h"

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace history::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testsupport::FillDisk;
using testsupport::InChild;
using testsupport::MakeReadOnly;
using testsupport::MakeWritable;
using testsupport::MountDisk;
using testsupport::Require;

/// An inquiry with an event of that name, which is owed to somebody.
Outcome RecordEvent(Archive& archive, const std::string& id, TimePoint now, int degrees) {
    const Snapshot snapshot = SnapshotOf({{.serial = "A", .temperature = degrees}});
    Entry entry = EntryOf(snapshot, now);
    entry.events = {EventNamed(id, now)};
    entry.deliveries = {{"mail", entry.events.front()}};
    entry.rows = {{"last", id}};
    return archive.Record(entry);
}

/// What a new service finds.
std::string Found(const std::string& path, TimePoint now) {
    Archive archive(path);
    Restored restored;
    const Outcome outcome = archive.Open(now, restored);
    Reader reader(path);
    return outcome.trouble + basics::Joined(outcome.notes) + "events " +
           basics::Joined(Ids(reader.EventsSince(TimePoint())), " ") + "; owed " +
           basics::Joined(restored.deliveries, " ", [](const Delivery& each) { return each.event.id; }) +
           "; rows " + basics::Joined(restored.rows, " ", &watch::StateRow::text) + "; temperature " +
           basics::Joined(Lines(reader.ReadingsOf("drive/A", kTemperature, TimePoint())), " ") + "; " +
           IntegrityOf(path);
}

const TimePoint kNow = At("2031-04-05T06:00:00Z");

TEST(AFullDisk, IsToldAndWaitedFor) {
    const testsupport::TempFolder folder;
    const std::string path = folder / "history.db";
    EXPECT_EQ(
        InChild([&] {
            MountDisk(folder.Path().string(), "size=1m");
            Archive archive(path);
            Restored restored;
            std::string told = archive.Open(kNow, restored).trouble;
            told += RecordEvent(archive, "one", kNow + minutes(5), 31).trouble;
            FillDisk(folder / "other");
            // There may be room left in what the files have taken already.
            int written = 2;
            Outcome outcome;
            do {
                ++written;
                outcome = RecordEvent(archive, std::to_string(written), kNow + minutes(5 * written), 31);
            } while (outcome.IsStored() && written < 1000);
            told += outcome.trouble + "\n";
            for (int more = 0; more < 3; ++more) {
                told += archive.Settle("mail", {"one"}, kNow).IsStored() ? "settled" : "";
                told += archive.Tidy(kNow, hours(1)).IsStored() ? "tidied" : "";
                const TimePoint now = kNow + minutes(5 * (written + more + 1));
                told += RecordEvent(archive, "full" + std::to_string(more), now, 40 + more).trouble + "\n";
            }
            std::filesystem::remove(folder / "other");
            told += archive.Tidy(kNow + hours(24), hours(1)).trouble;
            archive = Archive(path);  // That alone has stored everything.
            std::string found = Found(path, kNow + hours(24));
            for (int id = 3; id <= written; ++id) {
                const std::string name = " " + std::to_string(id) + " ";
                for (std::size_t place = found.find(name); place != std::string::npos;
                     place = found.find(name)) {
                    found.replace(place, name.size(), " ");
                }
            }
            return told + found;
        }),
        "the history " + path +
            " cannot be written: database or disk is full\n"
            "the history " +
            path +
            " cannot be written: database or disk is full\n"
            "the history " +
            path +
            " cannot be written: database or disk is full\n"
            "the history " +
            path +
            " cannot be written: database or disk is full\n"
            "events one full0 full1 full2; owed full0 full1 full2; rows one; temperature 31 40 41 42; ok");
}

TEST(AFullDisk, IsNoReasonNotToStart) {
    const testsupport::TempFolder folder;
    const std::string path = folder / "history.db";
    EXPECT_EQ(InChild([&] {
                  MountDisk(folder.Path().string(), "size=1m");
                  FillDisk(folder / "other");
                  Archive archive(path);
                  Restored restored;
                  std::string told = archive.Open(kNow, restored).trouble + "\n";
                  told += RecordEvent(archive, "one", kNow + minutes(5), 31).trouble + "\n";
                  std::filesystem::remove(folder / "other");
                  told += RecordEvent(archive, "two", kNow + minutes(10), 32).trouble;
                  archive = Archive(path);
                  return told + Found(path, kNow + hours(1));
              }),
              "the history " + path +
                  " cannot be written: database or disk is full\n"
                  "the history " +
                  path +
                  " cannot be written: database or disk is full\n"
                  "events one two; owed one two; rows two; temperature 31 32; ok");
}

// What is known is not forgotten because it cannot be changed at the moment. A value that is as it was is
// stored once more, though.
TEST(ADiskThatMayOnlyBeRead, GivesWhatIsOnIt) {
    const testsupport::TempFolder folder;
    const std::string path = folder / "history.db";
    EXPECT_EQ(InChild([&] {
                  MountDisk(folder.Path().string(), "size=10m");
                  Restored restored;
                  std::string told;
                  {
                      Archive archive(path);
                      told += archive.Open(kNow, restored).trouble;
                      told += RecordEvent(archive, "one", kNow + minutes(5), 31).trouble;
                  }
                  MakeReadOnly(folder.Path().string());
                  Archive archive(path);
                  told += archive.OtherWriter().value_or("");
                  told += archive.Open(kNow + minutes(6), restored).trouble + "\n";
                  told += restored.rows.at(0).text + " is known, " + restored.deliveries.at(0).event.id +
                          " is owed\n";
                  told += RecordEvent(archive, "two", kNow + minutes(10), 31).IsStored() ? "stored" : "";
                  told += archive.Settle("mail", {"one"}, kNow + minutes(11)).IsStored() ? "settled" : "";
                  told += archive.Tidy(kNow + minutes(11), minutes(5)).trouble;
                  MakeWritable(folder.Path().string());
                  told += RecordEvent(archive, "three", kNow + minutes(15), 33).trouble;
                  archive = Archive(path);
                  return told + Found(path, kNow + hours(1));
              }),
              "the history " + path + " cannot be written: " + path +
                  ".lock cannot be opened: Read-only file system\n"
                  "one is known, one is owed\n"
                  "events one two three; owed two three; rows three; temperature 31 31 33; ok");
}

/// As somebody who may read here and write nothing.
void BecomeNobody() {
    constexpr unsigned kNobody = 65534;
    if (::geteuid() == 0) {
        Require(::setresgid(kNobody, kNobody, kNobody) == 0, "setresgid");
        Require(::setresuid(kNobody, kNobody, kNobody) == 0, "setresuid");
    }
}

class AFolderThatMayOnlyBeRead : public Remembering {
  protected:
    void Fill() {
        ASSERT_EQ(Open().trouble, "");
        ASSERT_EQ(Sees({{.serial = "A"}}, {EventNamed("one", m_Now)}).trouble, "");
        std::filesystem::permissions(m_Folder.Path(), std::filesystem::perms(0555));
    }
    ~AFolderThatMayOnlyBeRead() override {
        std::filesystem::permissions(m_Folder.Path(), std::filesystem::perms(0755));
    }
    [[nodiscard]] std::string ReadByNobody() const {
        return InChild([this] {
            BecomeNobody();
            return "read " + basics::Joined(Ids(Reader(m_Path).EventsSince(TimePoint())), " ");
        });
    }
    /// What a writer that is killed leaves, and what it does not.
    void LeaveBehind(const std::vector<std::string>& names) {
        const testsupport::TempFolder elsewhere;
        for (const std::string& name : names) {
            std::filesystem::copy_file(m_Folder.Path() / name, elsewhere.Path() / name);
        }
        std::filesystem::permissions(m_Folder.Path(), std::filesystem::perms(0755));
        m_Archive = Archive(m_Path);
        for (const std::string& name : m_Folder.Names()) {
            std::filesystem::remove(m_Folder.Path() / name);
        }
        for (const std::string& name : names) {
            std::filesystem::copy_file(elsewhere.Path() / name, m_Folder.Path() / name);
        }
        std::filesystem::permissions(m_Folder.Path(), std::filesystem::perms(0555));
    }
};

TEST_F(AFolderThatMayOnlyBeRead, IsReadWhileTheServiceWrites) {
    Fill();
    EXPECT_EQ(ReadByNobody(), "read one");
    ASSERT_EQ(Sees({{.serial = "A"}}, {EventNamed("two", m_Now)}).trouble, "");
    EXPECT_EQ(ReadByNobody(), "read one two");
}

TEST_F(AFolderThatMayOnlyBeRead, IsReadWithoutTheService) {
    Fill();
    std::filesystem::permissions(m_Folder.Path(), std::filesystem::perms(0755));
    m_Archive = Archive(m_Path);
    std::filesystem::permissions(m_Folder.Path(), std::filesystem::perms(0555));
    EXPECT_THAT(m_Folder.Names(), ElementsAre("history.db", "history.db.lock"));
    EXPECT_EQ(ReadByNobody(), "read one");
}

TEST_F(AFolderThatMayOnlyBeRead, IsReadWithWhatAKilledServiceLeft) {
    Fill();
    LeaveBehind({"history.db", "history.db-wal", "history.db-shm"});
    EXPECT_EQ(ReadByNobody(), "read one");
    LeaveBehind({"history.db", "history.db-wal"});
    const std::vector<std::string> before = m_Folder.Names();
    EXPECT_EQ(ReadByNobody(), "read one");
    EXPECT_EQ(m_Folder.Names(), before);
    EXPECT_THAT(testsupport::TempFolder::NamesIn(std::filesystem::temp_directory_path()),
                testing::Not(testing::Contains(testing::StartsWith("mngsrvraid-history-"))));
}

TEST_F(AFolderThatMayOnlyBeRead, IsToldToWhoWantsToWrite) {
    Fill();
    EXPECT_THAT(InChild([this] {
                    BecomeNobody();
                    Archive archive(m_Path);
                    Restored restored;
                    const std::string trouble = archive.Open(m_Now, restored).trouble;
                    return trouble + "; " + RecordEvent(archive, "two", m_Now, 31).trouble;
                }),
                HasSubstr(".lock cannot be opened: Permission denied; the history " + m_Path +
                          " cannot be written: "));
}

}  // namespace
}  // namespace history::test
