#pragma once

#include "basics/Descriptor.h"

#include <sys/types.h>

#include <vector>

namespace basics {

/// Something to poll for a process of ours, whether or not it has been waited for: it can be read from when
/// that has ended. Empty where the system gives none.
[[nodiscard]] Descriptor OpenProcess(pid_t process) noexcept;

// By what /proc says; empty where it says nothing. A process that begins or ends meanwhile may be missing.

/// Processes whose parent is that one.
[[nodiscard]] std::vector<pid_t> ChildrenOf(pid_t parent);

/// Its children, theirs, and so on.
[[nodiscard]] std::vector<pid_t> DescendantsOf(pid_t ancestor);

/// Those of a session that have not ended.
[[nodiscard]] std::vector<pid_t> MembersOf(pid_t session);

}  // namespace basics
