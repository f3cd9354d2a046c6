#include "StandIn.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

namespace unkindhost {
namespace {

constexpr const char* kCommands[] = {"-v",          "-ctrlinfo -aAll",       "-ctrlinfo -a0", "-ldpdinfo -a0",
                                     "-pdinfo -a0", "-pdinfo -pd[252:1] -a0"};

}  // namespace

StandIn::StandIn(const fs::path& where) : m_Reports(where) {
    for (const std::string command : kCommands) {
        const std::string line =
            "/opt/zorbalt/vdk/cli/vdkcli " + command + " >'" + (m_Reports / command) + "' 2>&1";
        if (std::system(line.c_str()) != 0) {  // NOLINT(cert-env33-c): words of our own
            throw std::runtime_error("the simulator refuses " + command);
        }
    }
    fs::permissions(m_Reports.Path(), fs::perms::all);  // Also for tests of an ordinary user's host.
    const char* const path = std::getenv("PATH");
    const std::string search = std::string(UNKIND_HOST_SHELL_FOLDER) + ":" + (path == nullptr ? "" : path);
    ::setenv("PATH", search.c_str(), 1);
    ::setenv("STANDIN_REPORTS", m_Reports.Path().c_str(), 1);
}

std::vector<StandIn::Note> StandIn::Notes() const {
    std::vector<Note> notes;
    std::istringstream lines(m_Reports.Read("notes"));
    for (Note note; std::getline(lines, note.output, '\t') && std::getline(lines, note.descriptors, '\t') &&
                    std::getline(lines, note.libraryPath);) {
        notes.push_back(note);
    }
    return notes;
}

}  // namespace unkindhost
