#include "Progress.h"

#include "test_support/Command.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <utility>

namespace command::test {
namespace {

using namespace testsupport;

using std::chrono::seconds;
using testing::HasSubstr;

// What is typed, as soon as the terminal shows that.
struct Typing {
    std::string text = {};
    std::string onceShown = {};
};

// What a terminal of this width is sent on standard error while the command runs, and on standard output too
// if `hasOutput`.
std::string Watch(std::vector<std::string> words, unsigned short columns, Typing typing = {},
                  int* endStatus = nullptr, bool hasOutput = false) {
    const winsize size{24, columns, 0, 0};
    int terminal = -1;
    const pid_t child = ::forkpty(&terminal, nullptr, nullptr, &size);
    if (child == 0) {
        words.insert(words.begin(), COMMAND_TEST_PROGRAM);
        std::vector<char*> pointers;
        for (std::string& word : words) {
            pointers.push_back(word.data());
        }
        pointers.push_back(nullptr);
        if (!hasOutput) {
            ::dup2(::open("/dev/null", O_WRONLY), STDOUT_FILENO);
        }
        ::execv(pointers.front(), pointers.data());
        ::_exit(127);
    }
    std::string text;
    char chunk[4096];
    for (;;) {
        const ssize_t count = ::read(terminal, chunk, sizeof chunk);
        if (count <= 0 && !(count < 0 && errno == EINTR)) {
            break;
        }
        text.append(chunk, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        if (text.find(typing.onceShown) != std::string::npos) {
            const std::string due = std::exchange(typing.text, "");
            EXPECT_EQ(::write(terminal, due.data(), due.size()), static_cast<ssize_t>(due.size()));
        }
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    ::close(terminal);
    if (endStatus != nullptr) {
        *endStatus = status;
    }
    return text;
}

// What stands in the line at last, and the longest that ever stood there.
struct Screen {
    explicit Screen(const std::string& sent) {
        std::size_t column = 0;
        for (const char character : sent) {
            if (character == '\r') {
                column = 0;
                continue;
            }
            line.resize(std::max(line.size(), column + 1), ' ');
            line[column++] = character;
            widest = std::max(widest, column);
        }
        line.erase(line.find_last_not_of(' ') + 1);
    }
    std::string line;
    std::size_t widest = 0;
};

TEST(Progress, IsGoneWhenTheAnswerComes) {
    const std::string text =
        Watch({"--scenario", "small", "show", "--format", "tree"}, 80, {}, nullptr, true);
    EXPECT_THAT(text, HasSubstr("controller 0: physical drives (vdkcli"));
    EXPECT_THAT(text, HasSubstr(" \rController Information\r\n"));
}

TEST(Progress, FitsTheTerminal) {
    const std::string command = "vdkcli -pdinfo -a0";
    EXPECT_EQ(ProgressLine({.command = command, .elapsed = seconds(3), .inAll = seconds(3)}, 80),
              "controller 0: physical drives (vdkcli -pdinfo -a0) 3 s");
    EXPECT_EQ(ProgressLine({.command = command, .elapsed = seconds(12), .inAll = seconds(12)}, 20),
              "controller 0:  12 s");
    for (std::size_t columns = 0; columns < 60; ++columns) {
        EXPECT_LE(
            ProgressLine({.command = command, .elapsed = seconds(7), .done = 1, .total = 2}, columns).size(),
            columns == 0 ? 0 : columns - 1);
    }
}

TEST(Progress, TellsHowMuchIsDoneAndTheTimeInAll) {
    EXPECT_EQ(ProgressLine({.command = "vdkcli -pdinfo -pd[252:7] -a0",
                            .elapsed = seconds(1),
                            .done = 7,
                            .total = 24,
                            .inAll = seconds(31)},
                           100),
              "7 of 24 done, controller 0: drive 252:7 (vdkcli -pdinfo -pd[252:7] -a0) 1 s, 31 s in all");
}

TEST(Progress, IsShownOnATerminalAndErasedAtTheEnd) {
    const std::string sent = Watch({"--scenario", "faults/slow", "get-info"}, 80);
    EXPECT_THAT(sent, HasSubstr("\rversion of the tool (vdkcli -v) 0 s"));
    EXPECT_THAT(sent, HasSubstr("\rcontroller 0: physical drives (vdkcli -pdinfo"));
    EXPECT_EQ(Screen(sent).line, "");
}

TEST(Progress, NeverWrapsOnANarrowTerminal) {
    const std::string sent = Watch({"--scenario", "faults/slow", "get-pd-info", "0", "8", "2"}, 24);
    EXPECT_GT(Screen(sent).widest, 10U);
    EXPECT_LE(Screen(sent).widest, 23U);
}

// The small server, one of whose commands takes so long that only an interruption ends it.
class SlowServer {
  public:
    explicit SlowServer(const char* command) {
        std::filesystem::copy(std::filesystem::path(COMMAND_TEST_SCENARIOS) / "small", Path(),
                              std::filesystem::copy_options::recursive);
        Sleep(command, "60");
    }

    [[nodiscard]] std::filesystem::path Path() const { return m_Folder.Path() / "server"; }

    void Sleep(const std::string& command, const std::string& time) const {
        WriteFile(Path() / (command + ".do"), "sleep " + time);
    }

    // What the terminal shows until it has shown that.
    [[nodiscard]] std::string WatchUntil(const std::string& shown, std::vector<std::string> words) const {
        words.insert(words.begin(), {"--scenario", Path().string()});
        return Watch(std::move(words), 120, {.text = "\x03", .onceShown = shown});
    }

  private:
    TempFolder m_Folder;
};

TEST(Progress, CountsTheSecondsOfOneCommand) {
    const std::string line = "\rcontroller 0: logical drives (vdkcli -ldpdinfo -a0) 2 s";
    EXPECT_THAT(SlowServer("ldpdinfo_a0").WatchUntil(line, {"get-info"}), HasSubstr(line));
}

TEST(Progress, CaptureTellsHowManyDrivesAreDone) {
    const TempFolder folder;
    const std::string line = "\r1 of 3 done, controller 0: drive 252:1 (vdkcli -pdinfo -pd[252:1] -a0) 1 s";
    EXPECT_THAT(SlowServer("pdinfo_pd252.1_a0").WatchUntil(line, {"capture", folder / "mine"}),
                HasSubstr(line));
}

TEST(Progress, OfSeveralJobsIsThatOfAllDrives) {
    const SlowServer server("pdinfo_pd252.1_a0");
    server.Sleep("pdinfo_pd252.0_a0", "3");
    const std::string line = "\r2 of 3 done, controller 0: drive 252:";
    const std::string sent = server.WatchUntil(line, {"show", "--smart", "--jobs", "2"});
    EXPECT_THAT(sent, HasSubstr("\r0 of 3 done, controller 0: drive 252:"));
    EXPECT_THAT(sent, HasSubstr(line));
}

TEST(Progress, IsSilentWhenTheTraceGoesToTheTerminal) {
    EXPECT_THAT(Watch({"--scenario", "small", "--trace", "2", "get-info"}, 80), testing::StrEq(""));
}

TEST(Progress, FailureStandsOnALineOfItsOwn) {
    const std::string sent = Watch({"--scenario", "faults/marker", "get-info"}, 80);
    const std::size_t message = sent.find("mngsrvraid: get-info failed");
    ASSERT_NE(message, std::string::npos) << sent;
    EXPECT_EQ(Screen(sent.substr(0, message)).line, "");
}

TEST(Progress, InterruptionIsToldOnAFreshLine) {
    int status = 0;
    const std::string sent =
        Watch({"--scenario", "faults/endless", "get-info"}, 80, {.text = "\x03"}, &status);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT) << status;
    EXPECT_TRUE(sent.ends_with("\r\nmngsrvraid: interrupted\r\n")) << sent;
}

}  // namespace
}  // namespace command::test
