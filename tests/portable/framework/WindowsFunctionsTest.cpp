#include "Support.h"

#include "qel/QelWindows.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

using qel::test::ReadFile;
using qel::test::ScopedStandardError;
using qel::test::ScopedVariable;
using qel::test::TempFolder;
using qel::test::WriteFile;

using std::chrono::milliseconds;
using std::chrono::steady_clock;

int SignOf(int number) {
    return (number > 0) - (number < 0);
}

std::string ShownOnStandardError(const std::optional<std::string>& wish, const char* text,
                                 const char* caption) {
    const ScopedVariable variable("ZORBALT_SHOW_MESSAGE", wish);
    const TempFolder folder;
    const int file = ::open((folder / "shown").c_str(), O_WRONLY | O_CREAT, 0600);
    {
        const ScopedStandardError redirected(file);
        ShowMessage(text, caption);
    }
    ::close(file);
    return ReadFile(folder / "shown");
}

milliseconds TimeOfSleep(DWORD length) {
    const auto start = steady_clock::now();
    Sleep(length);
    return std::chrono::duration_cast<milliseconds>(steady_clock::now() - start);
}

volatile std::sig_atomic_t g_alarms = 0;

// Interrupts the process every five milliseconds.
class Alarms final {
  public:
    Alarms() {
        g_alarms = 0;
        struct sigaction action {};
        action.sa_handler = [](int) { g_alarms = g_alarms + 1; };
        ::sigaction(SIGALRM, &action, &m_Before);
        SetInterval(5000);
    }
    ~Alarms() {
        SetInterval(0);
        ::sigaction(SIGALRM, &m_Before, nullptr);
    }
    Alarms(const Alarms&) = delete;
    Alarms& operator=(const Alarms&) = delete;

  private:
    static void SetInterval(long microseconds) {
        const itimerval interval{{0, microseconds}, {0, microseconds}};
        ::setitimer(ITIMER_REAL, &interval, nullptr);
    }

    struct sigaction m_Before {};
};

TEST(CompareTest, TextsStandAsTheirBytesDo) {
    const struct {
        const char* left;
        const char* right;
        int sign;
    } cases[] = {
        {"GetInfo", "GetInfo", 0},
        {"GetInfo", "getinfo", -1},
        {"GetInfo", "GetInfo ", -1},
        {"GetPDInfo", "GetInfo", 1},
        {"b", "a", 1},
        {"a", "b", -1},
        {"", "", 0},
        {"", "a", -1},
        {"a", "", 1},
        {"\x7F", "\x80", -1},
        {"\xFF", "a", 1},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(SignOf(lstrcmpW(each.left, each.right)), each.sign) << each.left << " " << each.right;
    }
}

TEST(CompareTest, NullComesBeforeEveryText) {
    EXPECT_EQ(lstrcmpW(nullptr, nullptr), 0);
    EXPECT_LT(lstrcmpW(nullptr, ""), 0);
    EXPECT_LT(lstrcmpW(nullptr, "a"), 0);
    EXPECT_GT(lstrcmpW("", nullptr), 0);
    EXPECT_GT(lstrcmpW("a", nullptr), 0);
}

TEST(SysStringTest, IsACopy) {
    char text[] = "ZORBALT_MngSrvRaid";
    BSTR copy = SysAllocString(text);
    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy, text);
    text[0] = 'X';
    EXPECT_STREQ(copy, "ZORBALT_MngSrvRaid");
    SysFreeString(copy);
}

TEST(SysStringTest, OfNothingIsNull) {
    EXPECT_EQ(SysAllocString(nullptr), nullptr);
    SysFreeString(nullptr);
    BSTR empty = SysAllocString("");
    ASSERT_NE(empty, nullptr);
    EXPECT_STREQ(empty, "");
    SysFreeString(empty);
}

TEST(ShowMessageTest, IsSilentUntilWishedFor) {
    EXPECT_EQ(ShownOnStandardError(std::nullopt, "text", "caption"), "");
    EXPECT_EQ(ShownOnStandardError("", "text", "caption"), "");
    EXPECT_EQ(ShownOnStandardError("1", "text", "caption"), "caption: text\n");
    EXPECT_EQ(ShownOnStandardError("0", "100%d", "%s"), "%s: 100%d\n");
    EXPECT_EQ(ShownOnStandardError("1", nullptr, nullptr), ": \n");
}

TEST(SleepTest, TakesAsLongAsItSays) {
    EXPECT_GE(TimeOfSleep(30), milliseconds(30));
    const milliseconds longer = TimeOfSleep(1050);
    EXPECT_GE(longer, milliseconds(1050));
    EXPECT_LT(longer, milliseconds(10'000));
    EXPECT_LT(TimeOfSleep(0), milliseconds(1000));
}

TEST(SleepTest, IsNotShortenedBySignals) {
    const Alarms alarms;
    const milliseconds slept = TimeOfSleep(200);
    EXPECT_GE(g_alarms, 3);
    EXPECT_GE(slept, milliseconds(200));
    EXPECT_LT(slept, milliseconds(2000)) << "goes on with what is left, not from the start";
}

TEST(LastErrorTest, IsTheCallingThreadsErrno) {
    errno = EACCES;
    DWORD ofOther = EACCES;
    std::thread([&ofOther] {
        errno = ENOSPC;
        ofOther = GetLastError();
    }).join();
    EXPECT_EQ(ofOther, static_cast<DWORD>(ENOSPC));
    errno = EACCES;
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(EACCES));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(EACCES)) << "asking does not take it away";
}

TEST(ThreadIdTest, IsOneNumberForEachThread) {
    constexpr std::size_t kThreads = 8;
    std::vector<unsigned long> ids(kThreads);
    std::atomic<std::size_t> running{0};
    std::vector<std::thread> threads;
    for (unsigned long& id : ids) {
        threads.emplace_back([&id, &running] {
            id = GetCurrentThreadId();
            EXPECT_EQ(GetCurrentThreadId(), id);
            ++running;
            while (running < kThreads) {  // A number may come again once its thread has ended.
                std::this_thread::yield();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::set<unsigned long> different(ids.begin(), ids.end());
    different.insert(GetCurrentThreadId());
    EXPECT_EQ(different.size(), kThreads + 1);
    EXPECT_EQ(different.count(0), 0U);
}

TEST(MakeDirectoryTest, MakesOneLevelWithTheModeThatTheUmaskLeaves) {
    const TempFolder folder;
    const mode_t before = ::umask(0027);
    EXPECT_EQ(_mkdir((folder / "new").c_str()), 0);
    ::umask(0);
    EXPECT_EQ(_mkdir((folder / "open").c_str()), 0);
    ::umask(before);
    struct stat status {};
    ASSERT_EQ(::stat((folder / "new").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode, static_cast<mode_t>(S_IFDIR | 0750));
    ASSERT_EQ(::stat((folder / "open").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode, static_cast<mode_t>(S_IFDIR | 0777));
}

TEST(MakeDirectoryTest, SaysWhyItDidNot) {
    const TempFolder folder;
    EXPECT_EQ(_mkdir(folder.Path().c_str()), -1);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(EEXIST));
    EXPECT_EQ(_mkdir((folder / "missing/below").c_str()), -1);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ENOENT));
    EXPECT_FALSE(std::filesystem::exists(folder / "missing"));
}

TEST(DeleteFileTest, RemovesAFile) {
    const TempFolder folder;
    WriteFile(folder / "file", "x");
    EXPECT_NE(DeleteFileA((folder / "file").c_str()), 0);
    EXPECT_FALSE(std::filesystem::exists(folder / "file"));
}

TEST(DeleteFileTest, RemovesALinkAndNotWhatItLeadsTo) {
    const TempFolder folder;
    WriteFile(folder / "file", "x");
    std::filesystem::create_symlink(folder / "file", folder / "link");
    EXPECT_NE(DeleteFileA((folder / "link").c_str()), 0);
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::symlink_status(folder / "link")));
    EXPECT_TRUE(std::filesystem::exists(folder / "file"));
}

TEST(DeleteFileTest, SaysWhyItDidNot) {
    const TempFolder folder;
    EXPECT_EQ(DeleteFileA((folder / "missing").c_str()), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ENOENT));
    std::filesystem::create_directory(folder / "directory");
    EXPECT_EQ(DeleteFileA((folder / "directory").c_str()), 0);
    EXPECT_NE(GetLastError(), 0U);
    EXPECT_TRUE(std::filesystem::exists(folder / "directory"));
}

}  // namespace
