#include "JournalEntry.h"

#include "Bench.h"
#include "test_support/InChild.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <stdexcept>

namespace telling::test {
namespace {

using testsupport::InChild;

void Require(bool isGood, const char* what) {
    if (!isGood) {
        throw std::runtime_error(what);
    }
}

// A view of the file system in which nothing is running.
void EnterEmptyRun() {
    const std::string user = std::to_string(::geteuid());
    const std::string group = std::to_string(::getegid());
    if (::unshare(CLONE_NEWNS) != 0) {
        Require(::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0, "no view of its own");
        testsupport::WriteFile("/proc/self/uid_map", user + " " + user + " 1");
        testsupport::WriteFile("/proc/self/setgroups", "deny");
        testsupport::WriteFile("/proc/self/gid_map", group + " " + group + " 1");
    }
    Require(::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0, "no private mounts");
    Require(::mount("tmpfs", "/run", "tmpfs", 0, nullptr) == 0, "no empty /run");
}

/// Where the system's journal would listen.
class FakeJournal final {
  public:
    FakeJournal() : m_Socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
        std::filesystem::create_directories("/run/systemd/journal");
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::string("/run/systemd/journal/socket").copy(address.sun_path, sizeof address.sun_path);
        Require(::bind(m_Socket, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0, "no socket");
    }

    /// Sorted lines.
    [[nodiscard]] std::string NextEntry() const {
        std::string text(65536, '\0');
        const ssize_t size = ::recv(m_Socket, text.data(), text.size(), MSG_DONTWAIT);
        text.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
        std::vector<std::string> lines;
        for (std::istringstream stream(text); std::getline(stream, text);) {
            lines.push_back(text);
        }
        std::sort(lines.begin(), lines.end());
        std::string sorted;
        for (const std::string& line : lines) {
            sorted += line + '\n';
        }
        return sorted;
    }

    // One sender may have less room for what it has sent than a journal has for what it has not read.
    static void Fill() {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::string("/run/systemd/journal/socket").copy(address.sun_path, sizeof address.sun_path);
        for (bool isFull = false; !isFull;) {
            const int sender = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
            isFull = true;
            while (::sendto(sender, "MESSAGE=a", 9, 0, reinterpret_cast<sockaddr*>(&address),
                            sizeof address) > 0) {
                isFull = false;
            }
            ::close(sender);
        }
    }

  private:
    int m_Socket;
};

// What a line on standard error is, in the same child.
std::string OnStandardError(const std::function<void()>& work) {
    const int file = ::memfd_create("error", MFD_CLOEXEC);
    ::dup2(file, STDERR_FILENO);
    work();
    std::string text(10'000, '\0');
    const ssize_t size = ::pread(file, text.data(), text.size(), 0);
    text.resize(static_cast<std::size_t>(size));
    return text;
}

TEST(JournalEntry, HasFields) {
    EXPECT_EQ(InChild([] {
                  EnterEmptyRun();
                  const FakeJournal journal;
                  const std::string failure = Tell(Journal{}, MakeMessage());
                  return failure + journal.NextEntry();
              }),
              "MESSAGE=CRITICAL began: controller 0, RG1, PD9 in enclosure 16 slot 1: FAILED\n"
              "MESSAGE_ID=1f66dde807dd44c1b71d4e845409bfb5\n"
              "MNGSRVRAID_ADVICE=Replace it.\n"
              "MNGSRVRAID_AT=2031-04-05T06:07:08Z\n"
              "MNGSRVRAID_BEFORE=OK\n"
              "MNGSRVRAID_CONTROLLER=0\n"
              "MNGSRVRAID_ENCLOSURE=16\n"
              "MNGSRVRAID_GROUP=RG1\n"
              "MNGSRVRAID_HOST=storage7\n"
              "MNGSRVRAID_ID=20310405T060708Z-3f2a9c41\n"
              "MNGSRVRAID_KIND=began\n"
              "MNGSRVRAID_LEVEL=CRITICAL\n"
              "MNGSRVRAID_MODEL=TF600S15\n"
              "MNGSRVRAID_PART=PD9\n"
              "MNGSRVRAID_PART_KIND=drive\n"
              "MNGSRVRAID_RULE=state\n"
              "MNGSRVRAID_SERIAL=7K00025200C4\n"
              "MNGSRVRAID_SLOT=1\n"
              "MNGSRVRAID_WHAT=FAILED\n"
              "MNGSRVRAID_WORDS=controller 0, RG1, PD9 in enclosure 16 slot 1: FAILED\n"
              "PRIORITY=2\n"
              "SYSLOG_IDENTIFIER=mngsrvraidd\n");
}

TEST(JournalEntry, HasThePriorityOfItsLevelAndAnIdOfItsKind) {
    const std::string seen = InChild([] {
        EnterEmptyRun();
        const FakeJournal journal;
        const std::string documentation = testsupport::ReadFile(TELLING_TEST_DOCUMENTATION);
        std::string ids;
        std::string priorities;
        for (int kind = 0; watch::EventKindFrom("test") >= static_cast<watch::EventKind>(kind); ++kind) {
            Message message = MakeMessage();
            message.event.kind = static_cast<watch::EventKind>(kind);
            message.event.level = static_cast<Level>(kind % 4);
            (void)Tell(Journal{}, message);
            const std::string entry = journal.NextEntry();
            const std::string id = entry.substr(entry.find("MESSAGE_ID=") + 11, 32);
            ids += ids.find(id) == std::string::npos &&
                           id.find_first_not_of("0123456789abcdef") == std::string::npos
                       ? "new "
                       : "old ";
            ids += id;
            const std::string row = "| `" + std::string(NameOf(message.event.kind)) + "` | `" + id + "` |";
            Require(documentation.find(row) != std::string::npos, "it is not documented");
            priorities += entry[entry.find("PRIORITY=") + 9];
        }
        std::size_t count = 0;
        for (std::size_t at = ids.find("new "); at != std::string::npos; at = ids.find("new ", at + 1)) {
            ++count;
        }
        return std::to_string(count) + ' ' + priorities;
    });
    EXPECT_EQ(seen, "12 644264426442");
}

TEST(JournalEntry, TellsHowManyEventsWereDropped) {
    EXPECT_THAT(InChild([] {
                    EnterEmptyRun();
                    const FakeJournal journal;
                    Message message = MakeMessage();
                    message.dropped = 3;
                    const std::string failure = Tell(Journal{}, message);
                    return failure + journal.NextEntry();
                }),
                HasSubstr("\nMNGSRVRAID_DROPPED=3\n"));
}

TEST(JournalEntry, DoesNotWaitForAJournalThatHangs) {
    EXPECT_EQ(InChild([] {
                  EnterEmptyRun();
                  const FakeJournal journal;
                  FakeJournal::Fill();
                  return Tell(Journal{}, MakeMessage());
              }),
              "the journal does not take it: too much waits for it");
}

TEST(JournalEntry, IsALineOnStandardErrorWhereThereIsNoJournal) {
    EXPECT_EQ(
        InChild([] {
            EnterEmptyRun();
            return OnStandardError([] { Require(Tell(Journal{}, MakeMessage()).empty(), "it failed"); });
        }),
        "2031-04-05T06:07:08Z CRITICAL began: controller 0, RG1, PD9 in enclosure 16 slot 1: FAILED (Replace "
        "it.)\n");
}

TEST(JournalEntry, IsALineOnStandardErrorWhereThatIsWanted) {
    EXPECT_EQ(InChild([] {
                  EnterEmptyRun();
                  const FakeJournal journal;
                  const std::string line =
                      OnStandardError([] { (void)Tell(Journal{.usesStandardError = true}, MakeMessage()); });
                  return line + journal.NextEntry();
              }),
              "2031-04-05T06:07:08Z CRITICAL began: controller 0, RG1, PD9 in enclosure 16 slot 1: FAILED "
              "(Replace it.)\n");
}

TEST(JournalEntry, HasAPriorityWhereTheManagerReadsStandardError) {
    const auto work = [](int more) {
        return InChild([more] {
            return OnStandardError([more] {
                struct stat status {};
                ::fstat(STDERR_FILENO, &status);
                const auto inode = status.st_ino + static_cast<ino_t>(more);
                ::setenv("JOURNAL_STREAM",
                         (std::to_string(status.st_dev) + ':' + std::to_string(inode)).c_str(), 1);
                Message message = MakeMessage();
                message.dropped = 2;
                (void)Tell(Journal{.usesStandardError = true}, message);
            });
        });
    };
    EXPECT_EQ(work(0),
              "<2>CRITICAL began: controller 0, RG1, PD9 in enclosure 16 slot 1: FAILED (Replace it.) "
              "(2 events before this one were dropped, because too many waited for this channel.)\n");
    EXPECT_THAT(work(1), StartsWith("2031-04-05T06:07:08Z CRITICAL")) << "another stream's";
}

TEST(JournalEntry, IsOneLineOfBoundedSizeWhateverItHolds) {
    const std::string line = InChild([] {
        return OnStandardError([] {
            Message message = MakeMessage();
            message.event.words = "a\n<0>b\x1B[2J" + std::string(10'000, 'x');
            (void)Tell(Journal{.usesStandardError = true}, message);
        });
    });
    EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), 1);
    EXPECT_EQ(line.find('\x1B'), std::string::npos);
    EXPECT_LE(line.size(), 4096U);
}

TEST(JournalEntry, DoesNotWaitForWhoeverDoesNotRead) {
    EXPECT_EQ(InChild([] {
                  int ends[2];
                  Require(::pipe2(ends, O_NONBLOCK) == 0, "no pipe");
                  while (::write(ends[1], "full", 4) > 0) {
                  }
                  ::fcntl(ends[1], F_SETFL, 0);
                  ::dup2(ends[1], STDERR_FILENO);
                  const std::string full = Tell(Journal{.usesStandardError = true}, MakeMessage());
                  ::close(ends[0]);
                  const std::string closed = Tell(Journal{.usesStandardError = true}, MakeMessage());
                  return full + "; " + closed;
              }),
              "nobody reads standard error; nobody reads standard error");
}

TEST(JournalEntry, IsTriedAgain) {
    EXPECT_EQ(InChild([] {
                  EnterEmptyRun();
                  const FakeJournal journal;
                  FakeJournal::Fill();
                  Bench bench({{.name = "log", .way = Journal{}}});
                  bench.Add("log", "1");
                  bench.Add("log", "2");
                  bench.Work();
                  while (!journal.NextEntry().empty()) {
                  }
                  bench.now += seconds(10);
                  bench.Work();
                  std::string seen;
                  for (const Outcome& outcome : bench.outcomes) {
                      seen += std::to_string(static_cast<int>(outcome.what)) + outcome.id + ' ';
                  }
                  const std::string first = journal.NextEntry();
                  return seen + (first.find("MNGSRVRAID_ID=1\n") != std::string::npos ? "in order" : first);
              }),
              "11 01 2 02 in order");
}

// The rest of the service needs little; a library for all of systemd is loaded only where there is a journal.
TEST(JournalEntry, LoadsItsLibraryWhereThereIsAJournalAlone) {
    EXPECT_EQ(InChild([] {
                  const auto isLoaded = [] {
                      return testsupport::ReadFile("/proc/self/maps").find("libsystemd") != std::string::npos;
                  };
                  EnterEmptyRun();
                  OnStandardError([] { (void)Tell(Journal{}, MakeMessage()); });
                  const bool before = isLoaded();
                  const FakeJournal journal;
                  (void)Tell(Journal{}, MakeMessage());
                  return std::string(before ? "before" : "") + (isLoaded() ? " after" : "");
              }),
              " after");
}

}  // namespace
}  // namespace telling::test
