#pragma once

#include "basics/Descriptor.h"
#include "history/History.h"

#include <sys/types.h>

#include <optional>
#include <string>

namespace history {

// What is done to the file as a whole. What the system refuses is thrown as DatabaseError.

/// Which file stands at a path; nothing where none does.
struct FileIdentity {
    dev_t device = 0;
    ino_t number = 0;

    bool operator==(const FileIdentity&) const = default;
};
[[nodiscard]] std::optional<FileIdentity> IdentityOf(const std::string& path);

/// Keeps other writers of a history away from it as long as it lives. A process that is forked does not share
/// it, so that nothing of a writer which was killed can stay in the way of the next one.
class WriterLock final {
  public:
    explicit WriterLock(const std::string& path) : m_Path(path + ".lock") {}

    /// Who has it, "process 1234"; nothing: this process has, from now on.
    [[nodiscard]] std::optional<std::string> Take();

  private:
    std::string m_Path;
    basics::Descriptor m_File;
};

/// Gives the file another name, with what belongs to it: "history.db.damaged-20310405T060708Z". Returns that.
/// Of those that are damaged only the first and the last two are kept, so that they do not fill the disk.
[[nodiscard]] std::string SetAside(const std::string& path, const std::string& why, TimePoint now);

}  // namespace history
