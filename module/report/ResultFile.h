#pragma once

#include <fstream>
#include <string>

/// The file that one tool run writes its output to. Removed when its reader is through with it, or without a
/// word when an exception leaves it behind.
class ResultFile final {
  public:
    explicit ResultFile(std::string path);
    ~ResultFile();
    ResultFile(const ResultFile&) = delete;
    ResultFile& operator=(const ResultFile&) = delete;

    [[nodiscard]] const std::string& Path() const { return m_Path; }

    /// Removes the file now; a failure is traced.
    void Delete();

    /// Leaves the file on disk for good.
    void Keep() { m_IsOurs = false; }

  private:
    std::string m_Path;
    bool m_IsOurs = true;
};

/// Whether a pipe stands in the place of a result file: opening it would wait for ever for its other end.
[[nodiscard]] bool IsPipe(const std::string& path) noexcept;

/// Opens what a run has left in its result file, for reading. The stream fails where there is nothing to
/// open, or only a pipe.
[[nodiscard]] std::ifstream OpenReport(const std::string& path);
