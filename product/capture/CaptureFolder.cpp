#include "CaptureFolder.h"

#include "basics/Failure.h"
#include "scenario/ScenarioFolder.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace capture {
namespace {

constexpr const char* kReadme = "README.md";
constexpr const char* kUnfinished = ".unfinished";
constexpr const char* kUnfinishedText =
    "# Incomplete capture\n\n"
    "This capture of a RAID server has not come to its end: it is still going on, was interrupted, or could\n"
    "not be written. Make another one, in a new folder.\n";

[[noreturn]] void Fail(const std::string& folder, const std::string& why) {
    basics::FailSurroundings("the capture cannot be written to " + folder + ": " + why);
}

[[noreturn]] void Fail(const std::string& folder, int error) {
    Fail(folder, basics::ErrorText(error));
}

void MakeOrTakeEmpty(const std::string& path) {
    namespace fs = std::filesystem;
    if (::mkdir(path.c_str(), 0777) == 0) {
        return;
    }
    const int failure = errno;
    std::error_code error;
    if (failure != EEXIST || !fs::is_directory(path, error)) {
        Fail(path, (failure == EEXIST ? "it is there and is no folder" : basics::ErrorText(failure)) +
                       "; name a folder that can be made");
    }
    const bool isEmpty = fs::is_empty(path, error);
    if (error) {
        Fail(path, error.value());
    }
    if (!isEmpty) {
        Fail(path, "it is there and is not empty, and nothing is overwritten; name another folder");
    }
}

}  // namespace

CaptureFolder::CaptureFolder(const std::string& path) : m_Path(path) {
    MakeOrTakeEmpty(path);
    m_Folder = basics::Descriptor(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!m_Folder.IsOpen()) {
        Fail(m_Path, errno);
    }
    Write(scenario::kIncompleteMark, "");
    Write(kReadme, kUnfinishedText);
}

void CaptureFolder::Write(const std::string& name, std::string_view bytes) const {
    constexpr mode_t kModeBeforeUmask = 0666;
    basics::Descriptor file(
        ::openat(m_Folder.Number(), name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kModeBeforeUmask));
    int error = file.IsOpen() ? basics::WriteWhole(file.Number(), bytes) : errno;
    if (error == 0 && ::fsync(file.Number()) != 0) {
        error = errno;
    }
    if (!file.Close() && error == 0) {
        error = errno;
    }
    if (error != 0) {
        Fail(m_Path + "/" + name, error);
    }
}

void CaptureFolder::Describe(std::string_view readme) const {
    Write(kUnfinished, readme);
    if (::renameat(m_Folder.Number(), kUnfinished, m_Folder.Number(), kReadme) != 0) {
        Fail(m_Path + "/" + kReadme, errno);
    }
}

void CaptureFolder::Complete() const {
    if (::fsync(m_Folder.Number()) != 0 || ::unlinkat(m_Folder.Number(), scenario::kIncompleteMark, 0) != 0) {
        Fail(m_Path, errno);
    }
}

}  // namespace capture
