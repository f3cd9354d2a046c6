#include "supervision/Supervisor.h"

#include "basics/Failure.h"
#include "test_support/InChild.h"
#include "test_support/Processes.h"
#include "test_support/TempFolder.h"
#include "test_support/Waiting.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>

namespace supervision::test {
namespace {

using namespace testsupport;

namespace fs = std::filesystem;
using std::chrono::milliseconds;
using std::chrono::seconds;
using std::chrono::steady_clock;

// Runs `work` as a supervised worker. The result is that of the parent.
class Supervisor : public testing::Test {
  protected:
    void Start(const std::function<int(const std::string&)>& work, const char* privateFolder = nullptr,
               seconds timeLimit = seconds(0)) {
        m_Parent = ::fork();
        if (m_Parent == 0) {
            ::setenv("TMPDIR", m_Folder.Path().c_str(), 1);
            const Supervision supervision{.timeLimit = timeLimit,
                                          .overtimeStatus = 7,
                                          .privateFolder = privateFolder};
            ::_exit(work(Supervise(supervision)));
        }
    }

    void Say(const std::string& word) const { WriteFile(m_Folder / word, ""); }

    void WaitFor(const std::string& word) const {
        ASSERT_TRUE(ComesTrue([&] { return fs::exists(m_Folder / word); })) << word;
    }

    [[nodiscard]] int Status() const {
        int status = -1;
        EXPECT_EQ(::waitpid(m_Parent, &status, 0), m_Parent);
        return status;
    }

    TempFolder m_Folder;
    pid_t m_Parent = -1;
};

void Block(int signal, int how = SIG_BLOCK) {
    sigset_t set;
    ::sigemptyset(&set);
    ::sigaddset(&set, signal);
    ::sigprocmask(how, &set, nullptr);
}

bool IsPending(int signal) {
    sigset_t pending;
    return ::sigpending(&pending) == 0 && ::sigismember(&pending, signal) == 1;
}

TEST_F(Supervisor, EndsWithTheStatusOfTheWorker) {
    for (const int status : {0, 1, 4, 255}) {
        Start([&](const std::string&) { return status; });
        const int seen = Status();
        EXPECT_TRUE(WIFEXITED(seen) && WEXITSTATUS(seen) == status) << seen;
    }
}

TEST_F(Supervisor, DiesByTheSignalOfTheWorkerWithoutACoreOfItsOwn) {
    for (const int signal : {SIGSEGV, SIGKILL, SIGPIPE, SIGINT}) {
        Start([&](const std::string&) {
            const rlimit noCore{};
            ::setrlimit(RLIMIT_CORE, &noCore);
            ::signal(signal, SIG_DFL);  // A sanitizer may have a handler of its own.
            return ::raise(signal);
        });
        const int seen = Status();
        EXPECT_TRUE(WIFSIGNALED(seen) && WTERMSIG(seen) == signal) << seen;
        EXPECT_FALSE(WCOREDUMP(seen));
    }
}

TEST_F(Supervisor, LetsAWorkerFinishWhatItPutTheSignalOffFor) {
    Start([&](const std::string&) {
        Block(SIGTERM);
        Say("ready");
        (void)ComesTrue([] { return IsPending(SIGTERM); });
        Say("done");
        Block(SIGTERM, SIG_UNBLOCK);
        return 0;
    });
    WaitFor("ready");
    ::kill(m_Parent, SIGTERM);
    EXPECT_EQ(WTERMSIG(Status()), SIGTERM);
    EXPECT_TRUE(fs::exists(m_Folder / "done"));
}

TEST_F(Supervisor, KillsAWorkerThatPutsTheSignalOffForEver) {
    Start([&](const std::string&) {
        ::signal(SIGTERM, SIG_IGN);
        Say("ready");
        std::this_thread::sleep_for(seconds(60));
        return 0;
    });
    WaitFor("ready");
    const auto start = steady_clock::now();
    ::kill(m_Parent, SIGTERM);
    ::kill(m_Parent, SIGTERM);
    EXPECT_EQ(WTERMSIG(Status()), SIGTERM);
    EXPECT_GE(steady_clock::now() - start, seconds(4));
}

TEST_F(Supervisor, EndsAWorkerWhoseTimeIsOver) {
    Start(
        [&](const std::string&) {
            ::signal(SIGTERM, SIG_IGN);
            std::this_thread::sleep_for(seconds(60));
            return 0;
        },
        nullptr, seconds(1));
    const int status = Status();
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 7) << status;
}

TEST_F(Supervisor, LeavesAWorkerAloneThatEndsInTime) {
    Start([](const std::string&) { return 3; }, nullptr, seconds(60));
    EXPECT_EQ(WEXITSTATUS(Status()), 3);
}

// It goes on, and so hears the signal; else it would be killed when its respite is over.
TEST_F(Supervisor, LetsAStoppedWorkerHearTheSignal) {
    Start([&](const std::string&) {
        Block(SIGINT);
        ::raise(SIGSTOP);
        (void)ComesTrue([] { return IsPending(SIGINT); });
        Say("heard");
        Block(SIGINT, SIG_UNBLOCK);
        return 0;
    });
    ASSERT_TRUE(ComesTrue(
        [&] { return HasDescendant(m_Parent, [](const Process& worker) { return worker.state == 'T'; }); }));
    ::kill(m_Parent, SIGINT);
    EXPECT_EQ(WTERMSIG(Status()), SIGINT);
    EXPECT_TRUE(fs::exists(m_Folder / "heard"));
}

TEST_F(Supervisor, WorkerIsToldOfItsChildrenAsBefore) {
    ::signal(SIGCHLD, SIG_IGN);
    Start([&](const std::string&) {
        const pid_t child = ::fork();
        if (child == 0) {
            ::_exit(0);
        }
        // Nobody can wait for a child whose end is ignored.
        return ::waitpid(child, nullptr, 0) == -1 && errno == ECHILD ? 7 : 8;
    });
    ::signal(SIGCHLD, SIG_DFL);
    EXPECT_EQ(WEXITSTATUS(Status()), 7);
}

TEST_F(Supervisor, WorkerHasTheMaskOfBefore) {
    Block(SIGQUIT);
    Start([&](const std::string&) {
        sigset_t mask;
        ::sigprocmask(SIG_BLOCK, nullptr, &mask);
        const bool isRest = ::sigismember(&mask, SIGINT) == 1 || ::sigismember(&mask, SIGCHLD) == 1;
        return ::sigismember(&mask, SIGQUIT) == 1 && !isRest ? 7 : 8;
    });
    Block(SIGQUIT, SIG_UNBLOCK);
    EXPECT_EQ(WEXITSTATUS(Status()), 7);
}

TEST_F(Supervisor, PrivateFolderIsThereForTheWorkerAloneAndGoesWithIt) {
    for (const bool dies : {false, true}) {
        Start(
            [&](const std::string& folder) {
                struct stat status {};
                const bool isPrivate = ::stat(folder.c_str(), &status) == 0 &&
                                       (status.st_mode & 0777U) == 0700U &&
                                       fs::path(folder).filename().string().starts_with("words.");
                WriteFile(folder + "/text", "");
                return dies ? ::raise(SIGKILL) : static_cast<int>(isPrivate);
            },
            "words");
        const int seen = Status();
        EXPECT_TRUE(dies ? WIFSIGNALED(seen) : WEXITSTATUS(seen) == 1) << seen;
        EXPECT_EQ(m_Folder.Names(), std::vector<std::string>{});
    }
}

TEST_F(Supervisor, PrivateFolderIsMadeElsewhereWhereTheUsualPlaceIsOfNoUse) {
    fs::create_directory(m_Folder / "other");
    const std::string seen = InChild([&] {
        ::setenv("TMPDIR", "/no/such", 1);
        const std::string place = m_Folder / "other";
        // Of the child that is left: the parent ends with it.
        WriteFile(m_Folder / "made", Supervise({.privateFolder = "words", .otherPlaces = {"/proc", place}}));
        return std::string();
    });
    EXPECT_EQ(seen, "");
    EXPECT_TRUE(m_Folder.Read("made").starts_with(m_Folder / "other/words.")) << m_Folder.Read("made");
    EXPECT_TRUE(TempFolder::NamesIn(m_Folder / "other").empty());
}

TEST_F(Supervisor, PrivateFolderThatCannotBeMadeIsToldOf) {
    const std::string seen = testsupport::InChild([&]() -> std::string {
        ::setenv("TMPDIR", "/no/such", 1);
        try {
            return Supervise({.privateFolder = "words", .otherPlaces = {"/no/such/either"}});
        } catch (const basics::Failure& error) {
            return error.what();
        }
    });
    EXPECT_TRUE(seen.starts_with("a folder for temporary files cannot be made: ")) << seen;
    EXPECT_NE(seen.find("TMPDIR"), std::string::npos) << seen;
}

}  // namespace
}  // namespace supervision::test
