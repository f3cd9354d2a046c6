#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace capture {

/// What the tool answered to one command.
struct RecordedCommand {
    std::string arguments;    ///< "-pdinfo -pd[252:3] -a0"
    std::string output = {};  ///< of the last run that went well, else of the last run
    std::vector<int> statuses =
        {};                  ///< of its runs in the first call that asked for it, as waitpid gives them
    bool hasGone = false;    ///< whether a run went well
    bool isChanged = false;  ///< whether it was answered differently at different times
};

/// What the recorder has kept, call by call, in memory. One thread.
class Recording final {
  public:
    /// Has the module's runs of the tool kept in this folder from now on, which must be there and be private:
    /// puts the recorder, a program named `sh`, first in PATH. Throws basics::Failure(Surroundings) where the
    /// recorder is missing.
    explicit Recording(std::filesystem::path folder);

    /// Takes what has been kept since the last time, and deletes it from the folder. To be called between
    /// two method calls.
    void Take();

    /// In the order in which they were first asked for.
    [[nodiscard]] const std::vector<RecordedCommand>& Commands() const { return m_Commands; }

    /// Lines about runs that could not be kept.
    [[nodiscard]] const std::vector<std::string>& Notes() const { return m_Notes; }

  private:
    void Add(std::vector<RecordedCommand>& call, const std::string& command, int status, std::string output);
    void Merge(RecordedCommand command);

    std::filesystem::path m_Folder;
    std::vector<RecordedCommand> m_Commands;
    std::vector<std::string> m_Notes;
};

}  // namespace capture
