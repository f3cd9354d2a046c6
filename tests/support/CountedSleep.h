#pragma once

#include <cstddef>

namespace testsupport {

/// Pauses taken since the last reset. The test program's own `Sleep` takes the place of the framework's and
/// only counts: a test never waits.
[[nodiscard]] std::size_t PausesTaken();
void ResetPauses();

}  // namespace testsupport
