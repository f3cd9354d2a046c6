#pragma once

#include <cstddef>
#include <string>

namespace basics {

/// The document of half a million drives fits. What is larger, or has no end as /dev/zero, would only fill
/// the memory.
inline constexpr std::size_t kMostMebibytes = 1024;

/// The whole of a file; "-" is standard input. Throws Failure(Surroundings) where it cannot be read to its
/// end, or is larger than documents are.
[[nodiscard]] std::string ReadFile(const std::string& path, std::size_t mostMebibytes = kMostMebibytes);

}  // namespace basics
