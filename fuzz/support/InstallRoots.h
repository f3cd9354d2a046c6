#pragma once

#include "test_support/TempFolder.h"

#include <cstddef>
#include <string>

namespace fuzzing {

/// The key that `Root::WithKey` is configured with.
inline constexpr const char* kKey = "open sesame";

enum class Root { Plain, WithKey, WithoutLibrary };

/// Install roots for the module under test, in a folder that goes with the process. In two of them the
/// conversion library is a file that forwards to `CheckedLibrary`; it stays loaded, so that loading it again
/// costs little.
class InstallRoots final {
  public:
    [[nodiscard]] static InstallRoots& Process();
    InstallRoots(const InstallRoots&) = delete;
    InstallRoots& operator=(const InstallRoots&) = delete;

    /// The root of the calls that follow; starts the count of closings anew.
    void Use(Root root) const;

    /// How often the library has been closed. No item may be alive then.
    [[nodiscard]] static std::size_t LibraryClosings();

  private:
    InstallRoots();
    [[nodiscard]] std::string PathOf(Root root) const;

    testsupport::TempFolder m_Folder;
};

}  // namespace fuzzing
