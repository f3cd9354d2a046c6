#pragma once

#include "basics/Descriptor.h"

#include <string>
#include <string_view>
#include <vector>

namespace capture {

/// A folder that is kept open, so that it stays the same place when the view of the file system changes. Its
/// operations return 0 or an `errno`.
class Folder final {
  public:
    /// Not open, with `errno` set, where it cannot be.
    explicit Folder(const std::string& path);

    [[nodiscard]] bool IsOpen() const { return m_Folder.IsOpen(); }

    /// Claims it until this is gone. False where another process has done so; file systems without locks are
    /// everybody's.
    [[nodiscard]] bool Claim() const;

    /// Sorted. Throws std::system_error.
    [[nodiscard]] std::vector<std::string> Names() const;
    [[nodiscard]] bool Has(const std::string& name) const;
    [[nodiscard]] bool IsFile(const std::string& name) const;

    /// Stores a new file, safe on disk. Where it is to replace another one it gets that one's owner and mode.
    [[nodiscard]] int Write(const std::string& name, std::string_view bytes,
                            const std::string& replaced = "") const;
    [[nodiscard]] int Rename(const std::string& name, const std::string& other) const;
    [[nodiscard]] int Remove(const std::string& name) const;
    [[nodiscard]] int RemoveFolder(const std::string& name) const;  ///< an empty one
    [[nodiscard]] int Sync() const;

  private:
    basics::Descriptor m_Folder;
};

}  // namespace capture
