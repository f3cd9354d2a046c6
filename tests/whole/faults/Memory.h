#pragma once

#include <cstddef>

namespace faults {

/// Blocks that are allocated while memory is watched are remembered until they are freed, watched or not.
void SetMemoryWatched(bool isWatched) noexcept;

/// How many of them are still there. Under the sanitizers, which own the allocation functions: 1 when the
/// leak sanitizer finds memory that nobody can reach, else 0.
[[nodiscard]] std::size_t BlocksLeft();

}  // namespace faults
