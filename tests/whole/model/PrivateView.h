#pragma once

#include <filesystem>
#include <vector>

namespace replay {

/// Gives this process a view of the file system of its own, in which the tool's directory and /tmp are empty
/// and `kept`, where it stands below /tmp, is at its place. Nothing outside changes. Conditions and
/// privileges are those of the sandbox; throws std::system_error or sandbox::SandboxError.
void EnterPrivateView(const std::vector<std::filesystem::path>& kept);

}  // namespace replay
