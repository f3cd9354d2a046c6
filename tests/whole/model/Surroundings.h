#pragma once

#include "CaseFile.h"
#include "Ledger.h"

#include <filesystem>

namespace replay {

/// Where the driver keeps what the module sees. All of it is in the process's private view and starts out
/// empty.
inline constexpr const char* kReplayFolder = "/tmp/replay";
inline constexpr const char* kLibrarySearchFolder = "/tmp/replay/search";
inline constexpr const char* kRunLog = "/tmp/replay/runs.log";

/// Brings about what a case asks for outside the framework's objects: the tool, the conversion library, the
/// install paths, the application key. What a case asks for and cannot be had throws std::runtime_error.
class Surroundings final {
  public:
    /// `buildRoot` holds the tool and the recording libraries in its replay/.
    explicit Surroundings(const std::filesystem::path& buildRoot);

    /// `number` is the case's; it chooses among ways to bring the same thing about.
    void Arrange(const CaseFile& wanted, const std::filesystem::path& folder, unsigned long number);

    /// The folder for result files.
    [[nodiscard]] const std::filesystem::path& ResultFolder() const { return m_ResultFolder; }
    /// Where no result file may appear in this case.
    [[nodiscard]] const std::filesystem::path& OtherResultFolder() const { return m_OtherResultFolder; }

    /// Closes a library that the module left open, as it must where an entry point is missing. Whether there
    /// was one.
    bool CloseLibrary() const;

    /// Removes what a case leaves on disk.
    void Clear() const;

    [[nodiscard]] static Ledger::Orders LibraryOrders(const CaseFile& wanted);

  private:
    void PlaceTool(bool isInstalled) const;
    void PlaceKey(const CaseFile& wanted) const;
    void PlaceLibrary(const CaseFile& wanted, unsigned long number);

    std::filesystem::path m_Libraries;
    std::filesystem::path m_Library;
    std::filesystem::path m_ResultFolder;
    std::filesystem::path m_OtherResultFolder;
};

}  // namespace replay
