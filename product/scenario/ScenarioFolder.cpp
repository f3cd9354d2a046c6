#include "scenario/ScenarioFolder.h"

#include "basics/Failure.h"
#include "basics/NearestName.h"
#include "basics/Words.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace scenario {
namespace {

namespace fs = std::filesystem;

constexpr const char* kTimeline = "timeline";

bool IsScenarioFile(const fs::path& file) {
    return file.extension() == ".txt" || file.extension() == ".do" || file.filename() == "server.conf" ||
           file.filename() == kTimeline;
}

bool HasTimeline(const fs::path& folder) {
    std::error_code error;
    return fs::exists(folder / kTimeline, error);
}

/// One moment of the scenario in the folder above, from where it takes what it lacks.
bool IsStage(const fs::path& folder) {
    return HasTimeline(folder / "..");
}

/// Sorted, of the folders that are wanted.
std::vector<std::string> NamesBelow(const fs::path& shipped, bool (*isWanted)(const fs::path& folder)) {
    std::vector<std::string> names;
    std::error_code error;
    for (fs::recursive_directory_iterator at(shipped, error), end; !error && at != end; at.increment(error)) {
        const fs::path folder = at->path().parent_path();
        if (IsScenarioFile(at->path()) && isWanted(folder)) {
            names.push_back(folder.lexically_relative(shipped).string());
        }
    }
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
}

[[noreturn]] void Fail(const std::string& what, const fs::path& shipped) {
    const std::string names = basics::Joined(ScenarioNames(shipped));
    basics::FailSurroundings(
        what + "; shipped scenarios: " +
        (names.empty() ? "none; they come with the simulator (Debian: mngsrvraid-simulator)" : names));
}

[[noreturn]] void FailToFind(const std::string& name, const fs::path& shipped) {
    const std::vector<std::string> withStages = NamesBelow(shipped, [](const fs::path&) { return true; });
    const std::string nearest = basics::NearestName(withStages, name);
    if (nearest.empty()) {
        Fail("there is no scenario " + name, shipped);
    }
    basics::FailSurroundings("there is no scenario " + name + "; did you mean " + nearest + "?");
}

bool IsScenario(const fs::path& folder) {
    std::error_code error;
    return fs::exists(folder / "v.txt", error) || fs::exists(folder / "server.conf", error) ||
           fs::exists(folder / kIncompleteMark, error) || HasTimeline(folder) || IsStage(folder);
}

/// Whether a folder in the working directory is none of the scenarios but has the name of a shipped one.
bool IsByChance(const fs::path& folder, const fs::path& shipped) {
    return !folder.has_parent_path() && !IsScenario(folder) && IsScenario(shipped / folder);
}

}  // namespace

fs::path FindScenario(const std::string& name, const fs::path& shipped) {
    std::error_code error;
    fs::path folder = name;
    if (!fs::is_directory(folder, error) || IsByChance(folder, shipped)) {
        const bool isFile = fs::exists(folder, error);
        folder = shipped / name;
        if (fs::path(name).is_absolute() || !fs::is_directory(folder, error)) {
            if (isFile) {
                Fail("not a folder: " + name, shipped);
            }
            FailToFind(name, shipped);
        }
    }
    if (::access(folder.c_str(), R_OK | X_OK) != 0) {
        Fail("the scenario " + name + " cannot be read: " + basics::ErrorText(errno), shipped);
    }
    if (fs::exists(folder / kIncompleteMark, error)) {
        if (fs::file_size(folder / kIncompleteMark, error) > 0 && !error) {
            basics::FailSurroundings("the redaction of " + name +
                                     " has not come to its end; repeat it: mngsrvraid redact " + name);
        }
        Fail(name +
                 " is an incomplete capture; make another one, or, to use what is there, delete its file " +
                 kIncompleteMark,
             shipped);
    }
    if (!IsScenario(folder)) {
        Fail(name + " is no scenario: it has no v.txt, server.conf or timeline", shipped);
    }
    return folder;
}

std::vector<std::string> ScenarioNames(const fs::path& shipped) {
    return NamesBelow(shipped,
                      [](const fs::path& folder) { return !IsStage(folder) || HasTimeline(folder); });
}

}  // namespace scenario
