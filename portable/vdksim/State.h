#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vdksim {

// What the simulator remembers from run to run, in a folder that may be missing:
//   runs.log        one line a run, its arguments: "-ctrlinfo -aAll"
//   STEM.count      one byte for every run of a command whose first runs differ from the later ones
// Every entry is one write at the end of its file, so that runs at the same time do not mix. Nothing is kept
// in memory. A folder that cannot be written is a ScenarioError.
class State final {
  public:
    explicit State(std::optional<std::filesystem::path> folder) : m_Folder(std::move(folder)) {}

    // Does nothing without a folder.
    void LogRun(const std::vector<std::string>& arguments) const;

    // How many runs this command has had, this one included. Without a folder: ScenarioError.
    [[nodiscard]] std::uint64_t CountRun(const std::string& stem) const;

  private:
    std::optional<std::filesystem::path> m_Folder;
};

}  // namespace vdksim
