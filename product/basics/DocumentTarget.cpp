#include "basics/DocumentTarget.h"

#include "basics/Failure.h"
#include "basics/FileAccess.h"
#include "basics/HeldSignals.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace basics {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kModeBeforeUmask = 0666;

[[noreturn]] void Fail(const std::string& where, const std::string& why) {
    FailSurroundings("the document cannot be written to " + where + ": " + why +
                     "; name another file by --output");
}

[[noreturn]] void Fail(const std::string& where, int error) {
    Fail(where, ErrorText(error));
}

// Some file systems keep the bad news until a descriptor is closed.
int WriteAndConfirm(int descriptor, std::string_view text) noexcept {
    if (const int error = WriteWhole(descriptor, text); error != 0) {
        return error;
    }
    Descriptor copy(::fcntl(descriptor, F_DUPFD_CLOEXEC, 0));
    return copy.Close() ? 0 : errno;
}

}  // namespace

DocumentTarget::DocumentTarget(const std::string& path) : m_Shown(path) {
    struct stat status {};
    const bool exists = ::stat(path.c_str(), &status) == 0;
    if (exists && S_ISDIR(status.st_mode)) {
        Fail(m_Shown, EISDIR);
    }
    if (exists && !S_ISREG(status.st_mode)) {
        m_Special = Descriptor(::open(path.c_str(), O_WRONLY | O_NOCTTY | O_CLOEXEC));
        if (!m_Special.IsOpen()) {
            Fail(m_Shown, errno);
        }
        return;
    }
    // Without its symbolic links: the file that they lead to is replaced, not the link.
    std::error_code error;
    const fs::path file = exists ? fs::canonical(path, error) : fs::path(path);
    if (error || !file.has_filename()) {
        Fail(m_Shown, error ? error.value() : ENOENT);
    }
    const fs::path directory = file.has_parent_path() ? file.parent_path() : fs::path(".");
    m_Name = file.filename().string();
    m_Directory = Descriptor(::open(directory.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!m_Directory.IsOpen()) {
        Fail(m_Shown, errno);
    }
    if (::faccessat(m_Directory.Number(), ".", W_OK | X_OK, AT_EACCESS) != 0) {
        Fail(m_Shown, "its directory: " + ErrorText(errno));
    }
    if (exists && ::faccessat(m_Directory.Number(), m_Name.c_str(), W_OK, AT_EACCESS) != 0) {
        Fail(m_Shown, errno);
    }
}

void DocumentTarget::Store(std::string_view document) const {
    if (m_Directory.IsOpen()) {
        ReplaceFile(document);
        return;
    }
    const int descriptor = m_Special.IsOpen() ? m_Special.Number() : STDOUT_FILENO;
    if (const int error = WriteAndConfirm(descriptor, document); error != 0) {
        Fail(m_Shown, error);
    }
}

void DocumentTarget::ReplaceFile(std::string_view document) const {
    const HeldSignals held;
    const Descriptor replaced = OpenReplaced();
    std::string temporaryName;
    // Closed to others until it is known who had access to what it replaces.
    Descriptor temporary =
        MakeTemporary(temporaryName, replaced.IsOpen() ? S_IRUSR | S_IWUSR : kModeBeforeUmask);
    int error = WriteWhole(temporary.Number(), document);
    if (error == 0 && replaced.IsOpen()) {
        error = HandOnAccess(replaced.Number(), temporary.Number());
    }
    if (error == 0 && ::fsync(temporary.Number()) != 0) {
        error = errno;
    }
    if (!temporary.Close() && error == 0) {
        error = errno;
    }
    if (error == 0 &&
        ::renameat(m_Directory.Number(), temporaryName.c_str(), m_Directory.Number(), m_Name.c_str()) != 0) {
        error = errno;
    }
    if (error != 0) {
        ::unlinkat(m_Directory.Number(), temporaryName.c_str(), 0);
        Fail(m_Shown, error);
    }
}

/// The file that is there now, if it is one.
Descriptor DocumentTarget::OpenReplaced() const {
    Descriptor file(::openat(m_Directory.Number(), m_Name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    struct stat status {};
    if (file.IsOpen() && (::fstat(file.Number(), &status) != 0 || !S_ISREG(status.st_mode))) {
        (void)file.Close();
    }
    return file;
}

Descriptor DocumentTarget::MakeTemporary(std::string& name, mode_t mode) const {
    constexpr int kMostTries = 100;
    int error = EEXIST;
    for (int number = 0; number < kMostTries && error == EEXIST; ++number) {
        name = ".mngsrvraid." + std::to_string(::getpid()) + "." + std::to_string(number) + ".tmp";
        Descriptor file(
            ::openat(m_Directory.Number(), name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
        if (file.IsOpen()) {
            return file;
        }
        error = errno;
    }
    Fail(m_Shown, error);
}

}  // namespace basics
