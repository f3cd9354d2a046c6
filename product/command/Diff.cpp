#include "Diff.h"

#include "ServerInquiry.h"
#include "basics/Failure.h"
#include "basics/NearestName.h"
#include "basics/SavedFile.h"
#include "calls/Inquiry.h"
#include "inventory/Changes.h"
#include "sandbox/Sandbox.h"
#include "scenario/ScenarioFolder.h"
#include "views/Views.h"

#include <algorithm>
#include <system_error>
#include <vector>

namespace command {
namespace {

namespace fs = std::filesystem;

/// Whether there is something of that name, or no access to it, which whoever reads it will tell.
bool IsThere(const fs::path& path) {
    std::error_code error;
    return fs::status(path, error).type() != fs::file_type::not_found;
}

bool IsFolder(const fs::path& path) {
    std::error_code error;
    return fs::is_directory(path, error);
}

/// The server's document out of the scenario in the tool's place. A method that fails is a failure of the
/// surroundings: the exit status of its own would say that there are differences.
inventory::Document Ask(const Options& options) {
    try {
        return calls::ReadDocument(ServerInquiry(options)->AskForServer(), "what the module returned");
    } catch (const basics::Failure& error) {
        if (error.WhatKind() == basics::Failure::Kind::Method) {
            basics::FailSurroundings(error.what());
        }
        throw;
    }
}

}  // namespace

Diff::Diff(const Options& options, const fs::path& simulation)
    : m_Options(options), m_Simulation(simulation), m_Sides{SideOf(options.before), SideOf(options.after)} {}

// A file in the working directory comes before a shipped scenario of that name, as a folder does.
Diff::Side Diff::SideOf(const std::string& name) const {
    const fs::path shipped = m_Simulation / "scenarios";
    Side side;
    side.name = name;
    if (name != "-" && (IsFolder(name) || (!IsThere(name) && IsFolder(shipped / name)))) {
        side.folder = scenario::FindScenario(name, shipped);
        return side;
    }
    if (name != "-" && !IsThere(name)) {
        const std::string nearest = basics::NearestName(scenario::ScenarioNames(shipped), name);
        if (!nearest.empty()) {
            basics::FailSurroundings("there is no file and no scenario " + name + "; did you mean " +
                                     nearest + "?");
        }
    }
    side.document = calls::ReadDocument(basics::ReadFile(name), name == "-" ? "standard input" : name);
    return side;
}

bool Diff::RunsTool() const {
    return std::any_of(m_Sides.begin(), m_Sides.end(),
                       [](const Side& side) { return side.folder.has_value(); });
}

void Diff::AskScenarios() {
    std::vector<fs::path> folders;
    for (const Side& side : m_Sides) {
        if (side.folder) {
            folders.push_back(*side.folder);
        }
    }
    sandbox::EnterSandbox(m_Simulation / "vdkcli", folders.front(), folders);
    for (Side& side : m_Sides) {
        if (side.folder) {
            sandbox::UseScenario(*side.folder);
            Options asked = m_Options;
            asked.scenario = side.name;
            side.document = Ask(asked);
        }
    }
}

int Diff::Run(const basics::DocumentTarget& target) {
    if (RunsTool()) {
        AskScenarios();
    }
    const auto& [before, after] = m_Sides;
    const inventory::Changes changes =
        inventory::ChangesBetween(*before.document, *after.document, m_Options.hasAll);
    target.Store(m_Options.format == Options::Format::Json
                     ? views::DifferencesJson(changes, {before.name, before.folder.has_value()},
                                              {after.name, after.folder.has_value()})
                     : views::Differences(changes));
    return changes.list.empty() ? 0 : 1;
}

}  // namespace command
