#include "CaptureFolder.h"

#include "Readme.h"
#include "RedactedTexts.h"
#include "basics/Failure.h"
#include "basics/SavedFile.h"
#include "scenario/ScenarioFolder.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>

namespace capture {
namespace {

namespace fs = std::filesystem;

constexpr const char* kUnfinished = ".unfinished";
constexpr const char* kUnfinishedTitle = "# Incomplete capture\n";
constexpr const char* kUnfinishedText =
    "# Incomplete capture\n\n"
    "This capture of a RAID server has not come to its end: it is still going on, was interrupted, or could\n"
    "not be written. Repeat it, into the same folder or a new one.\n";

[[noreturn]] void FailFor(const std::string& folder, const std::string& why) {
    basics::FailSurroundings("the capture cannot be written to " + folder + ": " + why);
}

/// Whether the folder had to be made.
bool MakeOrTake(const std::string& path) {
    if (::mkdir(path.c_str(), 0777) == 0) {
        return true;
    }
    const int failure = errno;
    std::error_code error;
    if (failure != EEXIST || !fs::is_directory(path, error)) {
        FailFor(path, (failure == EEXIST ? "it is there and is no folder" : basics::ErrorText(failure)) +
                          "; name a folder that can be made");
    }
    return false;
}

/// "a/b/" has its name before its end.
fs::path WithoutEnd(const std::string& path) {
    const fs::path whole = path;
    return whole.has_filename() ? whole : whole.parent_path();
}

std::string Above(const std::string& path) {
    const fs::path above = WithoutEnd(path).parent_path();
    return above.empty() ? "." : above.string();
}

/// Whether all of it is what an interrupted capture leaves.
bool IsOfCapture(const std::string& path, const Folder& folder, const std::vector<std::string>& names) {
    std::error_code error;
    const bool isMarked = folder.IsFile(scenario::kIncompleteMark) &&
                          fs::file_size(fs::path(path) / scenario::kIncompleteMark, error) == 0 && !error;
    const std::string readme =
        folder.IsFile(kReadme) ? basics::ReadFile((fs::path(path) / kReadme).string()) : kUnfinishedText;
    const bool isOwn = readme.starts_with(kUnfinishedTitle) || IsReadmeOfCapture(readme);
    return isMarked && isOwn && std::all_of(names.begin(), names.end(), [&](const std::string& name) {
               return folder.IsFile(name) && (name == scenario::kIncompleteMark || name == kReadme ||
                                              name == kUnfinished || IsScenarioFileName(name));
           });
}

}  // namespace

CaptureFolder::CaptureFolder(const std::string& path)
    : m_Path(path), m_IsMade(MakeOrTake(path)), m_Above(Above(path)), m_Folder(path) {
    if (!m_Folder.IsOpen()) {
        const int error = errno;
        Remove();
        Fail("", error);
    }
    if (!m_Folder.Claim()) {
        FailFor(path, "another capture is writing to it; wait for its end, or name another folder");
    }
    m_Older = m_Folder.Names();
    if (!m_Older.empty() && !IsOfCapture(path, m_Folder, m_Older)) {
        FailFor(path, "it is there and is not empty, and nothing is overwritten; name another folder");
    }
    try {
        Mark();
    } catch (...) {
        Remove();
        throw;
    }
}

CaptureFolder::~CaptureFolder() {
    if (!m_IsComplete) {
        Remove();
    }
}

/// An interrupted capture has done so before.
void CaptureFolder::Mark() {
    if (m_Older.empty()) {
        Write(scenario::kIncompleteMark, "");
        Write(kReadme, kUnfinishedText);
    }
}

void CaptureFolder::Write(const std::string& name, std::string_view bytes) {
    RemoveOlder();
    const int error = m_Folder.Write(name, bytes);
    if (error != EEXIST) {
        m_Written.push_back(name);
    }
    if (error != 0) {
        Fail("/" + name, error);
    }
}

/// The mark stays to the last, and the README.md until it is replaced.
void CaptureFolder::RemoveOlder() {
    for (const std::string& name : m_Older) {
        const bool isOfNew = name == scenario::kIncompleteMark || name == kReadme;
        const int error = isOfNew ? 0 : m_Folder.Remove(name);
        if (error != 0 && error != ENOENT) {
            Fail("/" + name, error);
        }
    }
    m_Older.clear();
}

void CaptureFolder::Describe(std::string_view readme) {
    Write(kUnfinished, readme);
    if (const int error = m_Folder.Rename(kUnfinished, kReadme); error != 0) {
        Fail(std::string("/") + kReadme, error);
    }
}

void CaptureFolder::Complete() {
    int error = m_Folder.Sync();
    if (error == 0) {
        error = m_Folder.Remove(scenario::kIncompleteMark);
    }
    if (error != 0) {
        Fail("", error);
    }
    m_IsComplete = true;
}

void CaptureFolder::Remove() noexcept {
    // What cannot be removed is marked as incomplete, and no hindrance to the next capture: so the mark goes
    // last.
    for (auto name = m_Written.rbegin(); name != m_Written.rend(); ++name) {
        (void)m_Folder.Remove(*name);
    }
    if (m_IsMade) {
        (void)m_Above.RemoveFolder(WithoutEnd(m_Path).filename());
    }
}

void CaptureFolder::Fail(const std::string& name, int error) const {
    FailFor(m_Path + name, basics::ErrorText(error));
}

}  // namespace capture
