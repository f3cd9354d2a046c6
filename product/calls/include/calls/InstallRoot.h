#pragma once

#include <string>

namespace calls {

/// The install root that people know, such as "/usr/local/zorbalt"; empty where none is known.
[[nodiscard]] std::string InstallRoot();

/// Has the module find, instead of that root, one of this process's own in a private folder:
///
///     /tmp/mngsrvraid.kX3f9a/cim           a link to that of the install root
///     /tmp/mngsrvraid.kX3f9a/etc           likewise
///     /tmp/mngsrvraid.kX3f9a/tmp/MSRAID    result files, in folders that the module makes
///
/// Result files are named after the thread, and a process in another PID namespace may have the same number:
/// in one place two of them would read each other's reports. And the install root need not be the caller's to
/// write to.
///
/// To be called once, while the process has one thread, before an inquiry is made; the folder is the caller's
/// to remove. Throws basics::Failure(Surroundings) where the links cannot be made.
void UsePrivateRoot(const std::string& folder);

/// Where the module puts result files.
[[nodiscard]] std::string ResultDirectory();

/// Where there has to be room for them, to be told to people: the directory that the private folder is in.
[[nodiscard]] std::string ResultPlace();

/// A text of the module or the framework, with the install root that people know in it.
[[nodiscard]] std::string WithKnownRoot(std::string text);

}  // namespace calls
