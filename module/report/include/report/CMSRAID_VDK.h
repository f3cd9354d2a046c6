#pragma once

#include <string>

/// Runs the vendor's RAID tool, "/opt/zorbalt/vdk/cli/vdkcli". The only place that starts it.
///
/// Keeps no state; may be called from any thread, with a result file of its own for every run that goes on at
/// the same time. The calling thread waits until the tool ends, however long that takes, and one second
/// between two attempts. Failures show in results and in the trace.
class CMSRAID_VDK {
  public:
    CMSRAID_VDK() = delete;

    /// Whether the tool's file is there. It need not be executable.
    [[nodiscard]] static bool IsVDKInstalled();

    /// Runs a command such as "vdkcli -ctrlinfo -a0", at most three times, with its standard output and
    /// standard error in the result file. True when a run ended with status 0. The command is shell text. A
    /// command that the tool rejects (the file begins with "Error - Invalid input at or near token") is not
    /// tried again. The file is the caller's to read and to delete, after a failure too.
    [[nodiscard]] static bool ExecCli(std::string command, std::string resultFilePath);

    /// The version from a line such as "Product Version : 4.1" of "vdkcli -v", or "". Deletes the result
    /// file. Throws std::out_of_range when the colon ends the line; the file stays on disk then.
    [[nodiscard]] static std::string GetVDKVersion(std::string resultFilePath);

  private:
    /// One run. True: it failed.
    static bool ExecForeignModule(const std::string& commandLine, const std::string& resultFilePath);
};
