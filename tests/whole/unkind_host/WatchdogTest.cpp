#include "Watchdog.h"

#include "test_support/TempFolder.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace unkindhost {
namespace {

TEST(WatchdogTest, TellsWhereAProcessAndItsChildAreStuck) {
    const testsupport::TempFolder folder;
    const pid_t stuck = ::fork();
    if (stuck == 0) {
        ::dup2(::open((folder / "said").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600), STDERR_FILENO);
        const Watchdog watchdog{std::chrono::seconds(1)};
        if (::fork() == 0) {
            ::pause();
        }
        ::waitpid(-1, nullptr, 0);
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(stuck, &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), 124);
    const std::string said = folder.Read("said");
    EXPECT_THAT(said, testing::HasSubstr("this process is at\n"));
    EXPECT_THAT(said, testing::HasSubstr("wait4"));
    EXPECT_THAT(said, testing::HasSubstr("and its child at\n"));
    EXPECT_THAT(said, testing::HasSubstr("pause"));
}

}  // namespace
}  // namespace unkindhost
