#pragma once

#include <filesystem>
#include <stdexcept>
#include <vector>

namespace sandbox {

/// What the kernel or the file system refused, and what to do about it, in one line.
class SandboxError final : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Gives this process, and the children that it starts from now on, a view of the file system of its own in
/// which the RAID tool's directory is
///
///     /opt/zorbalt/vdk/cli/vdkcli    the simulator
///     /opt/zorbalt/vdk/scenario      the scenario, read-only; of a stage, the folder above it comes along
///     /opt/zorbalt/vdk/state         empty and writable: what the simulator remembers from run to run
///     /opt/zorbalt/vdk/lib           empty
///
/// A tool that is installed stays as it is for everybody else, and where there is no such directory none is
/// made: the nearest directory above it is covered, with its other entries brought back in. Where the process
/// is not root it enters a user namespace of its own, in which its user and group are the only ones known.
///
/// The state, and with it the time of a scenario that changes, lasts as long as a process lives that has this
/// view: whoever calls this starts over.
///
/// There is no way back. To be called while the process has one thread; descriptors that are open and the
/// working directory stay what they are. Paths may be relative and may lead through symbolic links. Throws
/// SandboxError, which may leave the process in a half-built view of its own; nothing outside it is ever
/// changed.
///
/// `others` are scenarios that are to be used later: `UseScenario` finds them by the same paths, also where
/// the tool's directory holds them and is covered.
void EnterSandbox(const std::filesystem::path& simulatorFile, const std::filesystem::path& scenarioDir,
                  const std::vector<std::filesystem::path>& others = {});

/// The same with an empty directory in the tool's place: the tool is not installed.
void EnterSandboxWithoutTool();

/// Puts another scenario in place of the one that `EnterSandbox` put there, and empties state/. The tool must
/// not be running.
void UseScenario(const std::filesystem::path& scenarioDir);

}  // namespace sandbox
