#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace fuzzing {

/// The result files of a process whose tool is scripted. The module opens, reads and removes them as files on
/// disk, but they are in memory: the system would take two thirds of a fuzzer's time. One thread.
class ResultFiles final {
  public:
    /// The text is not copied.
    static void Write(const std::string& path, std::string_view text);
    static void Remove(const std::string& path);

    /// Whether the module has left one of them open.
    [[nodiscard]] static bool IsOneOpen();

    /// Removes them all; how many there were.
    [[nodiscard]] static std::size_t RemoveAll();
};

}  // namespace fuzzing
