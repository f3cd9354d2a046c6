#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace recorder {

/// One run of a command, kept in a file "00000001.run":
///
///     run 1
///     status 256
///     command 33
///     /opt/zorbalt/vdk/cli/vdkcli -v -x
///
/// and behind the command's line feed, up to the end of the file, what the run printed. The status is that of
/// waitpid(), in decimal; the 33 is the command's length in bytes, for it may hold anything.
struct KeptRun {
    std::string command;
    int status = 0;
    std::string output;
};

/// Keeps a run in the next file of the folder. The output is read through the descriptor, from the start of
/// the regular file that it refers to; its position stays where it is. The file appears when it is whole.
/// Why that is impossible, or "".
[[nodiscard]] std::string StoreRun(const std::filesystem::path& folder, const std::string& command,
                                   int status, int outputDescriptor);

/// Leaves a note "4711.note" in the folder, as far as that is possible.
void StoreNote(const std::filesystem::path& folder, const std::string& note) noexcept;

/// Run files of the folder in the order in which they were stored, and then its notes.
[[nodiscard]] std::vector<std::filesystem::path> RunFiles(const std::filesystem::path& folder);
[[nodiscard]] std::vector<std::filesystem::path> NoteFiles(const std::filesystem::path& folder);

/// Nothing when the file cannot be read or is none.
[[nodiscard]] std::optional<KeptRun> ReadRun(const std::filesystem::path& file);

}  // namespace recorder
