#pragma once

namespace basics {

/// What a shell makes of a program that a signal ended.
inline constexpr int kSignalStatusBase = 128;

/// Ends the process as the signal ends one that does not handle it, without a core.
[[noreturn]] void DieBy(int signal) noexcept;

}  // namespace basics
