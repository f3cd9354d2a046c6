#include "ToolRun.h"

#include "basics/Words.h"
#include "calls/InstallRoot.h"
#include "test_support/InChild.h"
#include "test_support/TempFolder.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <optional>

namespace calls::test {
namespace {

using testsupport::InChild;
using testsupport::TempFolder;

TEST(ToolRun, SaysHowItEnded) {
    const auto say = [](int status) {
        return DescribeRun({.status = status, .hasReport = true, .lastLine = "last"});
    };
    EXPECT_EQ(say(W_EXITCODE(0, 0)), "exit status 0: \"last\"");
    EXPECT_EQ(say(W_EXITCODE(3, 0)), "exit status 3: \"last\"");
    EXPECT_EQ(say(W_EXITCODE(127, 0)), "exit status 127: \"last\"");
    EXPECT_EQ(say(W_EXITCODE(128, 0)), "exit status 128: \"last\"");
    EXPECT_EQ(say(W_EXITCODE(128 + SIGKILL, 0)), "exit status 137 (SIGKILL): \"last\"");
    EXPECT_EQ(say(W_EXITCODE(255, 0)), "exit status 255: \"last\"");
    EXPECT_EQ(say(W_EXITCODE(0, SIGSEGV)), "ended by SIGSEGV: \"last\"");
    EXPECT_EQ(say(W_EXITCODE(0, SIGRTMIN + 1)), "ended by signal " + std::to_string(SIGRTMIN + 1) + ": \"last\"");
    EXPECT_EQ(say(W_STOPCODE(SIGSTOP)), "stopped by SIGSTOP: \"last\"");
}

TEST(ToolRun, SaysThatNothingWasPrinted) {
    EXPECT_EQ(DescribeRun({.status = W_EXITCODE(3, 0), .hasReport = true}), "exit status 3, nothing printed");
}

TEST(ToolRun, IsSilentOnWhatIsNotKnown) {
    EXPECT_EQ(DescribeRun({.hasReport = true, .lastLine = "last"}), "");
    EXPECT_EQ(DescribeRun({.status = W_EXITCODE(1, 0)}), "");
}

// The result directory of a process that has it to itself.
class SeenRun : public testing::Test {
  protected:
    template <typename Work>
    std::string See(Work work) const {
        return InChild([&]() -> std::string {
            ::setenv("ZORBALT_INSTALL_DIR", m_Root.Path().c_str(), 1);
            std::filesystem::create_directories(ResultDirectory());
            return work();
        });
    }

    // A file of this thread, or of the next one.
    static void Print(const std::string& text, int number, pid_t thread = ::gettid()) {
        const std::string name = basics::Digits(static_cast<std::size_t>(thread), 8, 16) + "_" +
                                 basics::Digits(static_cast<std::size_t>(number), 8, 16) + "_MngSrvRaid.txt";
        testsupport::WriteFile(ResultDirectory() + "/" + name, text);
    }

    static void WaitForChild(int status) {
        const pid_t child = ::fork();
        if (child == 0) {
            ::_exit(status);
        }
        ::waitpid(child, nullptr, 0);
    }

    TempFolder m_Root;
};

TEST_F(SeenRun, IsTheOneThatWasWaitedForLast) {
    EXPECT_EQ(See([] {
                  WaitForChild(4);
                  WaitForChild(5);
                  Print("old\n", 9);
                  Print("new\n", 10);
                  Print("another's\n", 11, ::gettid() + 1);
                  return DescribeRun(SeeRun());
              }),
              "exit status 5: \"new\"");
}

TEST_F(SeenRun, IsForgotten) {
    EXPECT_EQ(See([] {
                  WaitForChild(4);
                  ForgetRun();
                  Print("text\n", 1);
                  const ToolRun run = SeeRun();
                  return std::string(run.status ? "known" : "forgotten") + ": " + run.lastLine;
              }),
              "forgotten: text");
}

TEST_F(SeenRun, TellsTheStatusToWhoeverWaits) {
    EXPECT_EQ(See([] {
                  const pid_t child = ::fork();
                  if (child == 0) {
                      ::_exit(6);
                  }
                  int status = 0;
                  const bool isIt = ::waitpid(child, &status, WUNTRACED) == child;
                  return isIt && ::waitpid(child, &status, 0) == -1 ? std::to_string(status) : "lost";
              }),
              std::to_string(W_EXITCODE(6, 0)));
}

TEST_F(SeenRun, LeavesTheDirectoryAsItWas) {
    EXPECT_EQ(See([] {
                  (void)SeeRun();
                  return std::to_string(TempFolder::NamesIn(ResultDirectory()).size());
              }),
              "0");
}

}  // namespace
}  // namespace calls::test
