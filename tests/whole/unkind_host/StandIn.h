#pragma once

#include "test_support/TempFolder.h"

#include <filesystem>
#include <string>
#include <vector>

namespace unkindhost {

/// From its construction on, tool runs of this process go to a cheap stand-in, found through PATH, that
/// prints what the simulator would; see shell.cpp. There is no way back but the end of the process.
class StandIn final {
  public:
    /// Its files are in a folder there.
    explicit StandIn(const std::filesystem::path& where);

    /// What a run saw.
    struct Note {
        std::string output;       ///< the path behind its standard output
        std::string descriptors;  ///< "0,1,2"
        std::string libraryPath;  ///< "(none)": not set
    };
    void TakeNotes() const { m_Reports.Write("notes", ""); }
    [[nodiscard]] std::vector<Note> Notes() const;

    /// The next run of this command ("-ctrlinfo -a0") computes for ever.
    void SpinOnce(const std::string& command) const { m_Reports.Write(command + ".spin", ""); }

    /// Runs of this command last until their standard input ends.
    void Wait(const std::string& command) const { m_Reports.Write(command + ".wait", ""); }

  private:
    testsupport::TempFolder m_Reports;
};

}  // namespace unkindhost
