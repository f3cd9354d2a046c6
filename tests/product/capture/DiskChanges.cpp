#include "DiskChanges.h"

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <utility>

namespace capture::test {
namespace {

std::function<void()>& BeforeDiskChange() {
    static std::function<void()> call;
    return call;
}

void Tell() {
    if (BeforeDiskChange()) {
        BeforeDiskChange()();
    }
}

}  // namespace

void SetBeforeDiskChange(std::function<void()> call) {
    BeforeDiskChange() = std::move(call);
}

bool IsKilledAt(unsigned change, const std::function<void()>& work) {
    const pid_t child = ::fork();
    if (child == 0) {
        unsigned left = change;
        SetBeforeDiskChange([&left] {
            if (left-- == 0) {
                ::kill(::getpid(), SIGKILL);
            }
        });
        work();
        ::_exit(0);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status) || status == 0) << status;
    return WIFSIGNALED(status);
}

}  // namespace capture::test

extern "C" {

int fsync(int descriptor) {
    capture::test::Tell();
    return static_cast<int>(::syscall(SYS_fsync, descriptor));
}

int renameat(int folder, const char* name, int otherFolder, const char* other) noexcept {
    capture::test::Tell();
    return static_cast<int>(::syscall(SYS_renameat2, folder, name, otherFolder, other, 0));
}

int unlinkat(int folder, const char* name, int flags) noexcept {
    capture::test::Tell();
    return static_cast<int>(::syscall(SYS_unlinkat, folder, name, flags));
}
}
