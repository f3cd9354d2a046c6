// A writer that is killed, at whatever moment, has stored what it says it has stored, and nothing in halves.

#include "Remembering.h"
#include "test_support/Sweep.h"
#include "test_support/TempFolder.h"

#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <random>
#include <set>
#include <sstream>

namespace {

// Of the process that is to be killed: at which call to the system, counted from 1; 0: at none.
std::size_t killAt = 0;
std::size_t calls = 0;
std::size_t syncs = 0;

/// True once: the process is to be killed during this call.
bool IsLast() {
    return ++calls == killAt;
}

ssize_t WriteOrDie(int file, const void* bytes, std::size_t size, off_t place) {
    if (IsLast()) {
        (void)::pwrite(file, bytes, size / 2, place);
        (void)::raise(SIGKILL);
    }
    return ::pwrite(file, bytes, size, place);
}

ssize_t AppendOrDie(int file, const void* bytes, std::size_t size) {
    if (IsLast()) {
        (void)::write(file, bytes, size / 2);
        (void)::raise(SIGKILL);
    }
    return ::write(file, bytes, size);
}

int TruncateOrDie(int file, off_t size) {
    if (IsLast()) {
        (void)::raise(SIGKILL);
    }
    return ::ftruncate(file, size);
}

int UnlinkOrDie(const char* path) {
    if (IsLast()) {
        (void)::raise(SIGKILL);
    }
    return ::unlink(path);
}

void StandInForTheSystem() {
    sqlite3_vfs* const system = sqlite3_vfs_find(nullptr);
    for (const auto& [name, call] : {std::pair("pwrite64", reinterpret_cast<sqlite3_syscall_ptr>(WriteOrDie)),
                                     {"pwrite", reinterpret_cast<sqlite3_syscall_ptr>(WriteOrDie)},
                                     {"write", reinterpret_cast<sqlite3_syscall_ptr>(AppendOrDie)},
                                     {"ftruncate", reinterpret_cast<sqlite3_syscall_ptr>(TruncateOrDie)},
                                     {"unlink", reinterpret_cast<sqlite3_syscall_ptr>(UnlinkOrDie)}}) {
        (void)system->xSetSystemCall(system, name, call);
    }
}

}  // namespace

// The library calls it by name, which finds that of the program first. Processes that are killed take nothing
// along that the system has; and all tests here are the faster for it.
extern "C" int fdatasync(int /*file*/) {
    ++syncs;
    if (IsLast()) {
        (void)::raise(SIGKILL);
    }
    return 0;
}

namespace history::test {
namespace {

using testing::IsSubsetOf;

constexpr int kInquiries = 8;
constexpr std::size_t kDocument = 900'000;

/// A service's work, told line by line on a pipe when it is done: "stored one", "owed one", "settled one".
void Work(const std::string& path, int report) {
    const auto tell = [report](const std::string& line) {
        (void)!::write(report, (line + "\n").c_str(), line.size() + 1);
    };
    TimePoint now = At("2031-04-05T06:00:00Z");
    Archive archive(path);
    Restored restored;
    if (!archive.Open(now, restored).IsStored()) {
        return;
    }
    for (int inquiry = 0; inquiry < kInquiries; ++inquiry) {
        now += hours(20 * 24);
        const std::string id = std::to_string(inquiry);
        const Snapshot snapshot = SnapshotOf(
            {{.serial = "A", .temperature = inquiry, .state = inquiry % 3 == 0 ? "FAILED" : "ONLINE"},
             {.serial = "B" + id, .slot = "1"}});
        // So large that the log is written into the file now and then.
        const std::string document(kDocument, static_cast<char>('a' + inquiry));
        Entry entry = EntryOf(snapshot, now);
        entry.document = document;
        entry.events = {EventNamed(id, now)};
        entry.deliveries = {{"mail", entry.events.front()}};
        entry.rows = {{"count", id}, {"of " + id, id}};
        if (!archive.Record(entry).IsStored()) {
            return;
        }
        tell("stored " + id);
        if (inquiry % 2 == 0) {
            if (!archive.Settle("mail", {id}, now).IsStored()) {
                return;
            }
            tell("settled " + id);
        }
        if (!archive.Tidy(now, hours(1000)).IsStored()) {
            return;
        }
    }
    tell("done " + std::to_string(calls) + " " + std::to_string(syncs));
}

/// Lines that a process told before it ended.
std::vector<std::string> LinesOf(int pipe) {
    std::string text;
    char piece[4096];
    for (ssize_t size = 1; size > 0;) {
        size = ::read(pipe, piece, sizeof(piece));
        text.append(piece, size > 0 ? static_cast<std::size_t>(size) : 0);
    }
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

class AKilledWriter : public testing::Test {
  protected:
    /// Starts the work; it is killed at that call, or by `kill` once so many lines have been told.
    std::vector<std::string> Run(const std::string& path, std::size_t call, std::size_t lines = 0,
                                 unsigned delay = 0) {
        int ends[2] = {};
        EXPECT_EQ(::pipe(ends), 0);
        const pid_t process = ::fork();
        if (process == 0) {
            ::close(ends[0]);
            StandInForTheSystem();
            killAt = call;
            calls = 0;
            Work(path, ends[1]);
            ::_exit(0);
        }
        ::close(ends[1]);
        if (lines > 0) {
            Await(ends[0], lines);
            ::usleep(delay);
            ::kill(process, SIGKILL);
        }
        std::vector<std::string> told = LinesOf(ends[0]);
        told.insert(told.begin(), m_Awaited.begin(), m_Awaited.end());
        m_Awaited.clear();
        ::close(ends[0]);
        int status = 0;
        EXPECT_EQ(::waitpid(process, &status, 0), process);
        m_WasKilled = WIFSIGNALED(status);
        return told;
    }

    /// What was stored is there, and whole.
    void ExpectConsistent(const std::string& path, const std::vector<std::string>& told) {
        std::set<std::string> stored;
        std::set<std::string> settled;
        for (const std::string& line : told) {
            const std::string id = line.substr(line.find(' ') + 1);
            if (line.starts_with("stored")) {
                stored.insert(id);
            } else if (line.starts_with("settled")) {
                settled.insert(id);
            }
        }
        if (!stored.empty()) {  // A reader needs no writer that mends it.
            EXPECT_THAT(stored, IsSubsetOf(Ids(Reader(path).EventsSince(TimePoint()))));
        }
        Archive archive(path);
        Restored restored;
        const Outcome outcome = archive.Open(At("2031-04-05T06:00:00Z"), restored);
        EXPECT_EQ(outcome.trouble, "");
        EXPECT_THAT(outcome.notes, testing::IsEmpty());
        EXPECT_EQ(IntegrityOf(path), "ok");
        Reader reader(path);
        const std::vector<std::string> events = Ids(reader.EventsSince(TimePoint()));
        EXPECT_THAT(stored, IsSubsetOf(events));
        EXPECT_LE(events.size(), stored.size() + 1);  // The last one may be there before that was told.
        ExpectWhole(reader, restored, events);
        std::set<std::string> owed;
        for (const Delivery& delivery : restored.deliveries) {
            EXPECT_FALSE(settled.contains(delivery.event.id)) << delivery.event.id;
            owed.insert(delivery.event.id);
        }
        for (const std::string& id : events) {
            const bool mayBeSettled = settled.contains(id) || (id == events.back() && std::stoi(id) % 2 == 0);
            EXPECT_TRUE(owed.contains(id) || mayBeSettled) << id;
        }
    }

    /// What went with the last event that is there came with it: document, rows, states and values.
    static void ExpectWhole(Reader& reader, const Restored& restored,
                            const std::vector<std::string>& events) {
        if (events.empty()) {
            EXPECT_FALSE(restored.document);
            EXPECT_TRUE(restored.rows.empty());
            return;
        }
        const int last = std::stoi(events.back());
        EXPECT_EQ(restored.document->xml, std::string(kDocument, static_cast<char>('a' + last)));
        EXPECT_EQ(restored.rows.size(), 2U);
        EXPECT_EQ(restored.rows.front().text, events.back());
        EXPECT_EQ(reader.ReadingsOf("drive/A", kTemperature, TimePoint()).back().last, last);
        std::size_t parts = 0;
        for (const Part& part : reader.Parts().parts) {
            parts += part.key.starts_with("drive/B") ? 1U : 0U;
        }
        EXPECT_EQ(parts, static_cast<std::size_t>(last) + 1);
    }

    bool m_WasKilled = false;

  private:
    void Await(int pipe, std::size_t lines) {
        std::string line;
        char character = 0;
        while (m_Awaited.size() < lines && ::read(pipe, &character, 1) == 1) {
            if (character == '\n') {
                m_Awaited.push_back(std::exchange(line, {}));
            } else {
                line += character;
            }
        }
    }

    std::vector<std::string> m_Awaited;
};

// The calls are those that change the files; half of what is being written is there.
TEST_F(AKilledWriter, HasStoredWhatItSaidAtEveryCall) {
    const testsupport::TempFolder whole;
    const std::vector<std::string> told = Run(whole / "history.db", 0);
    ASSERT_FALSE(m_WasKilled);
    ASSERT_TRUE(told.back().starts_with("done "));
    const std::size_t all = std::stoul(told.back().substr(5));
    ASSERT_GT(all, 1000U);  // With the documents it writes that many pages.
    constexpr std::size_t kPoints = testsupport::PointsOf(160);
    std::mt19937 chance(3);
    for (std::size_t point = 0; point < kPoints; ++point) {
        const testsupport::TempFolder folder;
        // Each in a part of its own, so that they lie everywhere; the first ones, which make the file,
        // closely.
        const std::size_t call =
            point < kPoints / 4 ? point + 1 : 1 + (point * all + chance() % all) / kPoints;
        const std::vector<std::string> lines = Run(folder / "history.db", call);
        EXPECT_TRUE(m_WasKilled) << call;
        ExpectConsistent(folder / "history.db", lines);
        ASSERT_FALSE(HasFailure()) << "killed at call " << call << " of " << all;
    }
}

TEST_F(AKilledWriter, HasStoredWhatItSaidAtAnyMoment) {
    std::mt19937 chance(5);
    for (std::size_t time = 0; time < testsupport::PointsOf(60); ++time) {
        const testsupport::TempFolder folder;
        const std::vector<std::string> lines =
            Run(folder / "history.db", 0, 1 + chance() % (kInquiries + kInquiries / 2),
                static_cast<unsigned>(chance() % 20'000));
        ExpectConsistent(folder / "history.db", lines);
        ASSERT_FALSE(HasFailure()) << time;
    }
}

// What the power takes along is what the system has not been asked to write.
TEST_F(AKilledWriter, HasHadEverythingWrittenToTheDisk) {
    const testsupport::TempFolder folder;
    const std::string path = folder / "history.db";
    const pid_t process = ::fork();
    if (process == 0) {
        const TimePoint now = At("2031-04-05T06:00:00Z");
        Archive archive(path);
        Restored restored;
        (void)archive.Open(now, restored);
        bool areSynced = true;
        for (int inquiry = 0; inquiry < 5; ++inquiry) {
            const std::size_t before = syncs;
            Entry entry;
            entry.at = now;
            entry.events = {EventNamed(std::to_string(inquiry), now)};
            areSynced = archive.Record(entry).IsStored() && syncs > before && areSynced;
        }
        ::_exit(areSynced ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(process, &status, 0), process);
    EXPECT_EQ(status, 0);
}

}  // namespace
}  // namespace history::test
