#pragma once

#include "Folder.h"

#include <string>
#include <string_view>
#include <vector>

namespace capture {

/// A folder in which a capture comes to be. From its beginning until `Complete` it holds a file "INCOMPLETE"
/// and a README.md that says so, also when the process ends in whatever way; nothing that was there before is
/// ever overwritten. It is kept open from the start, so that it stays the same place when the view of the
/// file system changes, and claimed, so that no other capture writes to it.
///
/// What an interrupted capture has left is no hindrance to the next one into the same folder: it takes the
/// folder over, and removes what is there when it writes its own. One that fails removes what it has made.
/// What fails is thrown as basics::Failure(Surroundings).
class CaptureFolder final {
  public:
    /// Makes the folder; an empty one and one of an interrupted capture will do as well.
    explicit CaptureFolder(const std::string& path);
    CaptureFolder(const CaptureFolder&) = delete;
    CaptureFolder& operator=(const CaptureFolder&) = delete;

    /// Removes what it has made, unless that is complete.
    ~CaptureFolder();

    [[nodiscard]] const std::string& Path() const { return m_Path; }

    /// Stores a new file.
    void Write(const std::string& name, std::string_view bytes);

    /// Puts this README.md in the place of the first one.
    void Describe(std::string_view readme);

    /// The last step: all that was written is safe on disk, and the folder is no longer incomplete.
    void Complete();

  private:
    void Mark();
    void RemoveOlder();
    void Remove() noexcept;
    [[noreturn]] void Fail(const std::string& name, int error) const;

    std::string m_Path;
    bool m_IsMade;   ///< the folder was not there
    Folder m_Above;  ///< the one that it is in
    Folder m_Folder;
    std::vector<std::string> m_Older;    ///< files of an interrupted capture
    std::vector<std::string> m_Written;  ///< files of this one
    bool m_IsComplete = false;
};

}  // namespace capture
