#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "State.h"

namespace vdksim {

// How a server changes: the file "timeline" of a scenario, as in
//     0   .         # as the scenario's own folder says
//     10  failed    # ten seconds behind the first inquiry, and the folder that counts before the scenario's
//     60  mended
// A plain value. docs/scenarios.md has the rest.
class Timeline final {
  public:
    // Reads the file; stages are looked for in these folders. Throws ScenarioError naming file and line.
    [[nodiscard]] static Timeline FromFile(const std::filesystem::path& path,
                                           const std::vector<std::filesystem::path>& folders);

    // The stage's folder; empty where it is the scenario's own.
    [[nodiscard]] const std::filesystem::path& StageAt(const Moment& moment) const;

  private:
    struct Stage {
        std::uint32_t from = 0;
        std::filesystem::path folder;
    };

    // Each returns what is wrong with the line, or "".
    std::string AddLine(const std::vector<std::string_view>& words,
                        const std::vector<std::filesystem::path>& folders);
    std::string AddStage(std::uint32_t from, const std::string& name,
                         const std::vector<std::filesystem::path>& folders);
    std::string SetPeriod(std::uint32_t period);

    std::vector<Stage> m_Stages;
    std::uint32_t m_Period = 0;  // 0: once
    bool m_CountsInquiries = false;
};

// The folders that a scenario is played from, the one that counts first first: the present stage's, the
// scenario's own, and where that is a stage itself the one above it. An inquiry that begins is noted in the
// state, and may be the next stage's first; the others go by the last that began, so that the reports of one
// inquiry are those of one stage.
[[nodiscard]] std::vector<std::filesystem::path> FoldersOf(const std::filesystem::path& scenario,
                                                           const State& state, bool beginsInquiry);

}  // namespace vdksim
