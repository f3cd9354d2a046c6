#include "Folder.h"

#include "basics/FileAccess.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>

namespace capture {
namespace {

constexpr int kOpenFolder = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

int ErrorUnless(bool isGood) {
    return isGood ? 0 : errno;
}

}  // namespace

Folder::Folder(const std::string& path) : m_Folder(::open(path.c_str(), kOpenFolder)) {}

bool Folder::Claim() const {
    return ::flock(m_Folder.Number(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

std::vector<std::string> Folder::Names() const {
    std::vector<std::string> names;
    const std::filesystem::path open = "/proc/self/fd/" + std::to_string(m_Folder.Number()) + "/.";
    for (const auto& entry : std::filesystem::directory_iterator(open)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

bool Folder::Has(const std::string& name) const {
    return ::faccessat(m_Folder.Number(), name.c_str(), F_OK, AT_SYMLINK_NOFOLLOW) == 0;
}

bool Folder::IsFile(const std::string& name) const {
    struct stat status {};
    return ::fstatat(m_Folder.Number(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISREG(status.st_mode);
}

int Folder::Write(const std::string& name, std::string_view bytes, const std::string& replaced) const {
    constexpr mode_t kModeBeforeUmask = 0666;
    const bool isInItsPlace = !replaced.empty() && Has(replaced);
    basics::Descriptor file(::openat(m_Folder.Number(), name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                                     isInItsPlace ? S_IRUSR | S_IWUSR : kModeBeforeUmask));
    int error = file.IsOpen() ? basics::WriteWhole(file.Number(), bytes) : errno;
    if (error == 0 && isInItsPlace) {
        const basics::Descriptor old(
            ::openat(m_Folder.Number(), replaced.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
        error = old.IsOpen() ? basics::HandOnAccess(old.Number(), file.Number()) : errno;
    }
    if (error == 0) {
        error = ErrorUnless(::fsync(file.Number()) == 0);
    }
    if (!file.Close() && error == 0) {
        error = errno;
    }
    return error;
}

int Folder::Rename(const std::string& name, const std::string& other) const {
    return ErrorUnless(::renameat(m_Folder.Number(), name.c_str(), m_Folder.Number(), other.c_str()) == 0);
}

int Folder::Remove(const std::string& name) const {
    return ErrorUnless(::unlinkat(m_Folder.Number(), name.c_str(), 0) == 0);
}

int Folder::RemoveFolder(const std::string& name) const {
    return ErrorUnless(::unlinkat(m_Folder.Number(), name.c_str(), AT_REMOVEDIR) == 0);
}

int Folder::Sync() const {
    return ErrorUnless(::fsync(m_Folder.Number()) == 0);
}

}  // namespace capture
