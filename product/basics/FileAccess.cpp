#include "basics/FileAccess.h"

#include <linux/limits.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <new>
#include <string>
#include <string_view>

namespace basics {
namespace {

constexpr const char* kAccessControlList = "system.posix_acl_access";
constexpr mode_t kAccess = S_IRWXU | S_IRWXG | S_IRWXO;
constexpr mode_t kAll = kAccess | S_ISUID | S_ISGID | S_ISVTX;
constexpr unsigned kBitsOfAClass = 3;

/// A name by which attributes can be read also where only O_PATH is allowed.
std::string NameOf(int descriptor) {
    return "/proc/self/fd/" + std::to_string(descriptor);
}

/// An attribute's bytes; with `errno` set where there are none.
std::string Attribute(const std::string& file, const char* name) {
    std::string bytes(XATTR_SIZE_MAX, '\0');
    const ssize_t size = ::getxattr(file.c_str(), name, bytes.data(), bytes.size());
    bytes.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
    return bytes;
}

/// Whether the file has the other one's list of who has access besides, which may be none.
bool HasSameList(const std::string& replaced, int file, bool isGroupKept) {
    errno = 0;
    const std::string list = Attribute(replaced, kAccessControlList);
    if (list.empty()) {
        const int error = errno;
        // What the folder gives its new files would come into force with the mode.
        (void)::fremovexattr(file, kAccessControlList);
        return error == ENODATA || error == ENOTSUP;
    }
    return isGroupKept && ::fsetxattr(file, kAccessControlList, list.data(), list.size(), 0) == 0;
}

/// As far as that is allowed; nobody's access depends on it.
void CopyOtherAttributes(const std::string& replaced, int file) {
    std::string names(XATTR_LIST_MAX, '\0');
    const ssize_t size = ::listxattr(replaced.c_str(), names.data(), names.size());
    names.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
    for (std::size_t at = 0; at < names.size();) {
        const char* const name = names.data() + at;
        const std::string_view view = name;
        at += view.size() + 1;
        if (view.starts_with("user.") || view == "security.selinux") {
            const std::string bytes = Attribute(replaced, name);
            (void)::fsetxattr(file, name, bytes.data(), bytes.size(), 0);
        }
    }
}

/// What a class of people loses that belonged to another one before is what only one of the two had.
mode_t ForAnotherGroup(mode_t mode) {
    const mode_t common = (mode >> kBitsOfAClass) & mode & S_IRWXO;
    return (mode & S_IRWXU) | (common << kBitsOfAClass) | common;
}

int HandOn(int replaced, int file) {
    struct stat before {};
    if (::fstat(replaced, &before) != 0) {
        return errno;
    }
    // The group alone may be given to one that the caller belongs to. Whether that went well is what counts:
    // in a user namespace all groups of others look alike.
    const bool isAllKept = ::fchown(file, before.st_uid, before.st_gid) == 0;
    const bool isGroupKept = isAllKept || ::fchown(file, static_cast<uid_t>(-1), before.st_gid) == 0;
    mode_t mode = before.st_mode & (isAllKept ? kAll : kAccess);
    const std::string name = NameOf(replaced);
    if (!HasSameList(name, file, isGroupKept)) {
        mode &= S_IRWXU;
    } else if (!isGroupKept) {
        mode = ForAnotherGroup(mode);
    }
    CopyOtherAttributes(name, file);
    return ::fchmod(file, mode) == 0 ? 0 : errno;
}

}  // namespace

int HandOnAccess(int replaced, int file) noexcept {
    try {
        return HandOn(replaced, file);
    } catch (const std::bad_alloc&) {
        return ENOMEM;
    }
}

}  // namespace basics
