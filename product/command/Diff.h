#pragma once

#include "Options.h"
#include "basics/DocumentTarget.h"
#include "inventory/Document.h"

#include <array>
#include <filesystem>
#include <optional>
#include <string>

namespace command {

/// The subcommand diff, for instance
///
///     mngsrvraid diff ./captured-in-may today.xml
///
/// Each side is a saved document, "-" for standard input, or a scenario: a folder, or the name of a shipped
/// one.
class Diff final {
  public:
    /// Finds out what the sides are, and reads those that are documents; before the view of the file system
    /// changes. `simulation` has the simulator and the shipped scenarios. Throws basics::Failure.
    Diff(const Options& options, const std::filesystem::path& simulation);

    /// Whether a side is a scenario, so that the tool has to be run.
    [[nodiscard]] bool RunsTool() const;

    /// Asks the scenarios for their documents, each in the tool's place, which it does not leave again, and
    /// prints what is different. The exit status: 0, or 1 where there is something. Throws basics::Failure
    /// and sandbox::SandboxError.
    [[nodiscard]] int Run(const basics::DocumentTarget& target);

  private:
    struct Side {
        std::string name;                             ///< as it was typed
        std::optional<std::filesystem::path> folder;  ///< of a scenario
        std::optional<inventory::Document> document;
    };

    [[nodiscard]] Side SideOf(const std::string& name) const;
    void AskScenarios();

    const Options& m_Options;
    std::filesystem::path m_Simulation;
    std::array<Side, 2> m_Sides;
};

}  // namespace command
