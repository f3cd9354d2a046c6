#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace bench {

/// Writes what the tool would print on a server, each command's report into a file named by its arguments.
void WriteServer(const std::filesystem::path& folder, std::uint32_t controllers, std::uint32_t drives);

/// Gives this process a view of the file system in which the tool prints such files; `UseServer` chooses the
/// folder from then on. Before there is a second thread. Throws sandbox::SandboxError.
void EnterServer(const std::filesystem::path& folder);
void UseServer(const std::filesystem::path& folder);

/// Runs the tool's commands one after the other with nothing around them: fork, shell, redirection into a new
/// file below `folder`, wait. Throws std::runtime_error where one fails.
void RunBare(const std::vector<std::string>& commands, const std::filesystem::path& folder);

}  // namespace bench
