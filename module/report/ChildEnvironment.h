#pragma once

#include <string>
#include <vector>

/// The environment of a tool run: the process's own, with the tool's library directory at the end of
/// LD_LIBRARY_PATH, where directories that are there already take precedence over it.
///
/// Made before `fork`, since a child of a process with other threads must not wait for their locks: what fork
/// handlers change in the environment does not reach the tool. Points into the process's environment, which
/// nobody must change meanwhile; short-lived.
class ChildEnvironment final {
  public:
    explicit ChildEnvironment(const std::string& libraryDirectory);
    ChildEnvironment(const ChildEnvironment&) = delete;
    ChildEnvironment& operator=(const ChildEnvironment&) = delete;

    /// A list as `environ` is, ended by null.
    [[nodiscard]] char** Entries() { return m_Entries.data(); }

  private:
    std::string m_LibraryPath;  // the whole entry, "LD_LIBRARY_PATH=..."
    std::vector<char*> m_Entries;
};
