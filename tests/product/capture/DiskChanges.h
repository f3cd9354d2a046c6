#pragma once

#include <functional>

namespace capture::test {

/// Called before every fsync, renameat and unlinkat of this process, by whoever they are made.
void SetBeforeDiskChange(std::function<void()> call);

/// Runs `work` in a process of its own that is killed before the change of that number, from 0 on. Whether it
/// was: work that makes fewer changes comes to its end.
[[nodiscard]] bool IsKilledAt(unsigned change, const std::function<void()>& work);

}  // namespace capture::test
