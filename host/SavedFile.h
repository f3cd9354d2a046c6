#pragma once

#include <string>

namespace host {

/// The whole of a file; "-" is standard input. Throws HostError(Surroundings) where it cannot be read to its
/// end.
[[nodiscard]] std::string ReadFile(const std::string& path);

}  // namespace host
