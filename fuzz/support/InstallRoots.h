#pragma once

#include "tests/support/TempFolder.h"

#include <dirent.h>

#include <cstddef>
#include <memory>

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

    /// Removes the result files that a call left in its root; how many there were.
    [[nodiscard]] std::size_t RemoveResultFiles(Root root) const;

  private:
    struct DirectoryCloser {
        void operator()(DIR* directory) const { ::closedir(directory); }
    };
    using Directory = std::unique_ptr<DIR, DirectoryCloser>;

    InstallRoots();
    [[nodiscard]] std::string PathOf(Root root) const;

    testsupport::TempFolder m_Folder;
    Directory m_ResultFolders[3];  ///< kept open: a look into one must not cost a path
};

/// The number that the next descriptor gets: it grows when one is left open.
[[nodiscard]] int LowestFreeDescriptor();

}  // namespace fuzzing
