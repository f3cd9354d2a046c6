#pragma once

#include "test_support/InChild.h"
#include "test_support/TempFolder.h"

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace testsupport {

/// How a child process ended, with all that it printed.
struct Ended {
    int status = -1;  ///< as waitpid gives it

    std::string out;
    std::string err;

    [[nodiscard]] int ExitStatus() const;  ///< -1 when a signal ended it
};

/// A command that has been started. `Wait` is to be called once.
class Running final {
  public:
    explicit Running(std::string standardOutput) : m_Out(std::move(standardOutput)) {}

    [[nodiscard]] pid_t Process() const { return m_Process; }
    [[nodiscard]] Ended Wait() const;

  private:
    friend struct Command;
    TempFolder m_Captured;
    std::string m_Out;  ///< empty: captured
    pid_t m_Process = -1;
};

/// The built command with its arguments, to be run as a user would.
struct Command {
    std::vector<std::string> words;
    std::map<std::string, std::string> environment = {};  ///< beside the test's own
    std::function<void()> inChild = [] {};                ///< between fork and exec
    std::string standardOutput = {};                      ///< empty: kept in `out`
    std::filesystem::path program = COMMAND_TEST_PROGRAM;

    [[nodiscard]] std::unique_ptr<Running> Start() const;
    [[nodiscard]] Ended Run() const { return Start()->Wait(); }
};

/// Runs the command with these words.
[[nodiscard]] Ended RunCommand(std::vector<std::string> words);

/// An install root of its own: cim/ with the built module and conversion library, as links.
class InstallRoot final {
  public:
    InstallRoot();

    [[nodiscard]] std::string Path() const { return m_Folder.Path().string(); }
    [[nodiscard]] std::filesystem::path Cim() const { return m_Folder.Path() / "cim"; }
    [[nodiscard]] std::vector<std::string> ResultFiles() const;
    [[nodiscard]] bool IsUntouched() const;  ///< the command has put nothing into it
    void SetKey(const std::string& key) const;

    /// Puts the module of FakeModule.cpp in place of the built one.
    void UseFakeModule() const;

  private:
    TempFolder m_Folder;
};

/// A directory for temporary files, to be named by TMPDIR, with a look at what one command keeps there while
/// it runs. Everybody may write to it.
class TemporaryDirectory final {
  public:
    TemporaryDirectory() { std::filesystem::permissions(m_Folder.Path(), std::filesystem::perms::all); }

    [[nodiscard]] std::string Path() const { return m_Folder.Path().string(); }
    [[nodiscard]] std::map<std::string, std::string> Environment() const { return {{"TMPDIR", Path()}}; }
    [[nodiscard]] std::vector<std::string> Names() const { return m_Folder.Names(); }

    /// Of the command's private folder; "" while there is none.
    [[nodiscard]] std::string ResultFolder() const;
    [[nodiscard]] std::vector<std::string> ResultFiles() const;

  private:
    TempFolder m_Folder;
};

/// How many lines a text has; each ends with a line feed.
[[nodiscard]] std::size_t CountLines(const std::string& text);

}  // namespace testsupport
