#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vdksim {

// When an inquiry began.
struct Moment {
    std::chrono::milliseconds sinceFirst{0};  // after the first one
    std::uint64_t inquiry = 0;                // counted from 0
};

// What the simulator remembers from run to run, in a folder that may be missing:
//   runs.log        one line a run, its arguments: "-ctrlinfo -aAll"
//   STEM.count      one byte for every run of a command whose first runs differ from the later ones
//   inquiries       of a scenario with a timeline, a line for every run of "-v", with which an inquiry
//   begins:
//                   the milliseconds of a clock that does not jump
// Every entry is one write at the end of its file, so that runs at the same time do not mix. Nothing is kept
// in memory. A folder that cannot be written is a ScenarioError.
class State final {
  public:
    explicit State(std::optional<std::filesystem::path> folder) : m_Folder(std::move(folder)) {}

    // Does nothing without a folder.
    void LogRun(const std::vector<std::string>& arguments) const;

    // How many runs this command has had, this one included. Without a folder: ScenarioError.
    [[nodiscard]] std::uint64_t CountRun(const std::string& stem) const;

    // Notes that one begins. Without a folder: ScenarioError.
    [[nodiscard]] Moment BeginInquiry() const;

    // The last that began, or the first before it begins. Without a folder: ScenarioError.
    [[nodiscard]] Moment LastInquiry() const;

  private:
    // The state's file of this name; what for is said where there is no folder.
    [[nodiscard]] std::filesystem::path File(const std::string& name, const char* needs) const;

    std::optional<std::filesystem::path> m_Folder;
};

}  // namespace vdksim
