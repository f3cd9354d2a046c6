#pragma once

#include "basics/Descriptor.h"

#include <sys/types.h>

#include <string>
#include <string_view>

namespace basics {

/// Where the document goes: standard output or a file.
///
/// A file is replaced as a whole or left as it is: the document is written beside it and takes its name when
/// it is safe on disk. It gets the owner, group, mode and access control list of the file that it replaces,
/// as far as the caller may give them (FileAccess.h). What is not a regular file (/dev/null, a pipe) is
/// written to directly. The place is kept open from the start, so that it stays the same place when the view
/// of the file system changes.
///
/// Throws Failure(Surroundings) where the document cannot be stored; the constructor does when that can be
/// known beforehand.
class DocumentTarget final {
  public:
    [[nodiscard]] static DocumentTarget StandardOutput() { return {}; }
    explicit DocumentTarget(const std::string& path);

    void Store(std::string_view document) const;

  private:
    DocumentTarget() = default;
    void ReplaceFile(std::string_view document) const;
    [[nodiscard]] Descriptor OpenReplaced() const;
    [[nodiscard]] Descriptor MakeTemporary(std::string& name, mode_t mode) const;

    std::string m_Shown = "standard output";  ///< for messages
    Descriptor m_Directory;                   ///< of a regular file
    std::string m_Name;                       ///< in m_Directory
    Descriptor m_Special;                     ///< what is written to directly
};

}  // namespace basics
