#pragma once

#include <string>

namespace faults {

/// What the conversion library's use in this process has to answer for: items that were not deleted when it
/// was closed, and libraries that are open still. "" when all is well. Under the sanitizers only the latter.
[[nodiscard]] std::string LibraryFaults();

/// Closes a library that was left open, as it must be where an entry point is missing.
void CloseLeftLibrary();

/// Frees what the dynamic loader keeps for the next `dlerror`.
void ForgetLoaderError();

}  // namespace faults
