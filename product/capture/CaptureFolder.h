#pragma once

#include "basics/Descriptor.h"

#include <string>
#include <string_view>

namespace capture {

/// A new folder in which a capture comes to be. From its beginning until `Complete` it holds a file
/// "INCOMPLETE" and a README.md that says so, also when the process ends in whatever way; nothing that was
/// there before is ever overwritten. It is kept open from the start, so that it stays the same place when
/// the view of the file system changes. What fails is thrown as basics::Failure(Surroundings).
class CaptureFolder final {
  public:
    /// Makes the folder; an empty one will do as well.
    explicit CaptureFolder(const std::string& path);

    [[nodiscard]] const std::string& Path() const { return m_Path; }

    /// Stores a new file.
    void Write(const std::string& name, std::string_view bytes) const;

    /// Puts this README.md in the place of the first one.
    void Describe(std::string_view readme) const;

    /// The last step: all that was written is safe on disk, and the folder is no longer incomplete.
    void Complete() const;

  private:
    std::string m_Path;
    basics::Descriptor m_Folder;
};

}  // namespace capture
