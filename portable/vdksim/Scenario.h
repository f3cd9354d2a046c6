#pragma once

#include <filesystem>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "Instructions.h"
#include "vdksim/Command.h"
#include "vdksim/MadeUpServer.h"

namespace vdksim {

// A folder that stands for one server. For the command "-ctrlinfo -a0" it holds
//   ctrlinfo_a0.txt   what the tool prints, byte for byte
//   ctrlinfo_a0.do    how it misbehaves; any.do serves every command that has no such file of its own
// and server.conf, if there is one, has the reports made up that the folder has no text for.
// Of several folders the first that has a file counts for it, as a stage's does before the scenario's.
// Only reads. Whatever is wrong with a folder is thrown as a ScenarioError.
class Scenario final {
  public:
    // Writes one report. May be called again and again, also after the scenario is gone.
    using Text = std::function<void(std::ostream&)>;

    explicit Scenario(std::vector<std::filesystem::path> folders);

    // From server.conf or the "Product Version" line of v.txt; empty when neither says.
    [[nodiscard]] const std::string& Version() const { return m_Version; }

    [[nodiscard]] Instructions InstructionsFor(const Command& command) const;

    // None: the server has no such controller or drive.
    [[nodiscard]] std::optional<Text> TextOf(const Command& command) const;

  private:
    // Where it would be, if it is nowhere.
    [[nodiscard]] std::filesystem::path Find(const std::string& name) const;
    [[nodiscard]] std::optional<std::string> Contents(const std::string& name) const;
    [[nodiscard]] std::optional<Text> OwnText(const Command& command) const;
    [[nodiscard]] std::optional<Text> MadeUpText(const Command& command) const;
    [[nodiscard]] Text AllControllers() const;

    std::vector<std::filesystem::path> m_Folders;
    std::optional<MadeUpServer> m_MadeUp;
    std::string m_Version;
};

}  // namespace vdksim
