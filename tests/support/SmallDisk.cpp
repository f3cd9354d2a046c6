#include "test_support/SmallDisk.h"

#include "test_support/TempFolder.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace testsupport {

void Require(bool isDone, const char* what) {
    if (!isDone) {
        throw std::system_error(errno, std::generic_category(), what);
    }
}

void MountDisk(const std::string& folder, const char* options) {
    if (::unshare(CLONE_NEWNS) != 0) {
        const std::string user = std::to_string(::geteuid());
        const std::string group = std::to_string(::getegid());
        Require(::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0, "unshare");
        WriteFile("/proc/self/uid_map", user + " " + user + " 1");
        WriteFile("/proc/self/setgroups", "deny");
        WriteFile("/proc/self/gid_map", group + " " + group + " 1");
    }
    Require(::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0, "private mounts");
    Require(::mount("tmpfs", folder.c_str(), "tmpfs", 0, options) == 0, "mount");
}

void MakeReadOnly(const std::string& folder) {
    Require(::mount("none", folder.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) == 0, "read-only");
}

void MakeWritable(const std::string& folder) {
    Require(::mount("none", folder.c_str(), nullptr, MS_REMOUNT, nullptr) == 0, "writable");
}

void FillDisk(const std::string& path) {
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    const std::string page(4096, 'x');
    while (::write(file, page.data(), page.size()) > 0) {
    }
    ::close(file);
}

}  // namespace testsupport
