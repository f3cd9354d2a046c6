#pragma once

#include <cstddef>
#include <functional>

namespace testsupport {

/// Pauses taken since the last reset. The test program's own `Sleep` takes the place of the framework's and
/// only counts: a test never waits.
[[nodiscard]] std::size_t PausesTaken();
void ResetPauses();

/// Called at every pause until the next reset; may throw, as whatever happens in the middle of a run may.
void OnPause(std::function<void()> hook);

}  // namespace testsupport
