#include "FileCare.h"

#include "Database.h"
#include "basics/Failure.h"
#include "basics/Time.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <vector>

namespace history {
namespace {

namespace fs = std::filesystem;

constexpr const char* kDamaged = "damaged";
constexpr std::size_t kMostKept = 3;  // the first, which knew most, and the last ones

// Beside the file, in the order in which they are moved: what has not been written into the file yet must not
// be left for the next one.
constexpr std::array<const char*, 3> kBeside = {"-wal", "-shm", ""};

[[noreturn]] void Refuse(const std::string& what) {
    throw DatabaseError(DatabaseError::Kind::Unavailable, what + ": " + basics::ErrorText(errno));
}

std::string FreeName(const std::string& path) {
    std::string name = path;
    for (int number = 2; fs::exists(fs::symlink_status(name)); ++number) {
        name = path + "." + std::to_string(number);
    }
    return name;
}

/// What was set aside as damaged, the oldest first.
std::vector<std::string> KeptOf(const std::string& path) {
    const std::string front = fs::path(path).filename().string() + "." + kDamaged + "-";
    std::vector<std::string> kept;
    std::error_code error;
    const fs::path folder = fs::path(path).has_parent_path() ? fs::path(path).parent_path() : fs::path(".");
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (name.starts_with(front) && !name.ends_with("-wal") && !name.ends_with("-shm")) {
            kept.push_back(entry->path().string());
        }
    }
    std::sort(kept.begin(), kept.end());
    return kept;
}

}  // namespace

std::optional<FileIdentity> IdentityOf(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? std::optional(FileIdentity{status.st_dev, status.st_ino})
                                              : std::nullopt;
}

std::optional<std::string> WriterLock::Take() {
    if (m_File.IsOpen()) {
        return std::nullopt;
    }
    constexpr mode_t kMode = 0644;
    basics::Descriptor file(::open(m_Path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kMode));
    if (!file.IsOpen()) {
        Refuse(m_Path + " cannot be opened");
    }
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    if (::fcntl(file.Number(), F_SETLK, &lock) == 0) {
        m_File = std::move(file);
        return std::nullopt;
    }
    if (errno != EACCES && errno != EAGAIN) {
        Refuse(m_Path + " cannot be locked");
    }
    const bool isTold = ::fcntl(file.Number(), F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
    return isTold ? "process " + std::to_string(lock.l_pid) : "another process";
}

std::string SetAside(const std::string& path, const std::string& why, TimePoint now) {
    std::string name = FreeName(path + "." + why + "-" + basics::UtcText(now, "%Y%m%dT%H%M%SZ"));
    for (const char* const beside : kBeside) {
        if (std::rename((path + beside).c_str(), (name + beside).c_str()) != 0 && errno != ENOENT) {
            Refuse("it cannot be set aside");
        }
    }
    if (why == kDamaged) {
        const std::vector<std::string> kept = KeptOf(path);
        for (std::size_t number = 1; number + kMostKept <= kept.size(); ++number) {
            for (const char* const beside : kBeside) {
                (void)::unlink((kept[number] + beside).c_str());  // What cannot be removed stays.
            }
        }
    }
    return name;
}

}  // namespace history
