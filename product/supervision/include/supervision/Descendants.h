#pragma once

#include <sys/types.h>

#include <string>

namespace supervision {

/// What a process runs, as one would type it: "vdkcli -pdinfo -a0", also while its shell still does; empty
/// where nothing says so.
[[nodiscard]] std::string CommandOf(pid_t process);

/// The same of the first other program that runs below a process: one that the process has started, or that
/// another process of the same program has which it made by `fork`.
[[nodiscard]] std::string CommandBelow(pid_t process);

/// Ends all children of this process and those that they hand down to it, for which it has to be a subreaper:
/// asks them (SIGTERM), and ends those that are still there a second later (SIGKILL). All of them are waited
/// for. False when one is left after all, which only the kernel can hold up.
///
/// One thread; nothing else may wait for children meanwhile.
[[nodiscard]] bool EndDescendants();

}  // namespace supervision
