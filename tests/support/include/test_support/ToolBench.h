#pragma once

#include "test_support/TempFolder.h"

#include <filesystem>
#include <string>
#include <vector>

namespace testsupport {

/// Puts the simulator in the tool's place, in a private view of the file system, for the rest of the process.
/// To be called once, before there are threads.
void EnterToolBench();

/// What the tool answers during one test: starts with nothing at all.
class ToolBench final {
  public:
    ToolBench();
    ~ToolBench();
    ToolBench(const ToolBench&) = delete;
    ToolBench& operator=(const ToolBench&) = delete;

    /// Sets the text that the tool prints, or instructions to misbehave: `Answer("ctrlinfo_a0.txt", "...")`,
    /// `Answer("v.do", "exit 3")`.
    void Answer(const std::string& file, const std::string& text);

    /// The tool's file is not there until the test ends.
    void Uninstall();

    /// A shell script is the tool until the test ends or starts over. In it, `simulate "$@"` runs the
    /// simulator as usual, `$file` is the result file and `$arguments` is what `Runs` shows.
    void UseScript(const std::string& script);

    /// The simulator is the tool again, and answers nothing.
    void StartOver();

    /// Processes of other users may run the tool, too.
    static void LetEverybodyIn();

    /// Arguments of every run so far, such as "-ctrlinfo -a0".
    [[nodiscard]] static std::vector<std::string> Runs();

  private:
    void CoverTool();
    void UncoverTool();

    bool m_IsCovered = false;
};

/// An install root of its own for one test: with result files in tmp/, and in cim/ a conversion library that
/// forwards to the test's FakeLibrary.
class InstallRoot final {
  public:
    InstallRoot();
    ~InstallRoot();
    InstallRoot(const InstallRoot&) = delete;
    InstallRoot& operator=(const InstallRoot&) = delete;

    [[nodiscard]] const std::filesystem::path& Path() const { return m_Folder.Path(); }

    /// Puts another file in the place of the conversion library.
    void UseLibrary(const std::filesystem::path& file) const;

    /// Configures the application key that callers must carry.
    void SetAppKey(const std::string& key) const;

    /// Shell text that keeps the result files from being deleted until the test ends: root removes no file
    /// that something is mounted on, others none from a directory that they may not write.
    [[nodiscard]] std::string PinResultFiles() const;

    /// Result files that are still there.
    [[nodiscard]] std::vector<std::string> ResultFiles() const;

  private:
    [[nodiscard]] std::filesystem::path ResultDirectory() const { return Path() / "tmp" / "MSRAID"; }

    TempFolder m_Folder;
};

}  // namespace testsupport
