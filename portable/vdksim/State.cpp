#include "State.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string_view>

#include "ScenarioError.h"

namespace vdksim {

namespace {

// Adds the text to the file's end in one write; returns the size of the file just behind it.
std::uint64_t Append(const std::filesystem::path& path, std::string_view text) {
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    const bool written =
        file >= 0 && ::write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    // An appending write leaves the descriptor behind its own bytes, whatever others append meanwhile.
    const off_t end = written ? ::lseek(file, 0, SEEK_CUR) : -1;
    const int error = errno;
    if (file >= 0) {
        ::close(file);
    }
    if (end < 0) {
        throw ScenarioError(kExitNoState, path.string() + ": cannot be written: " + std::strerror(error));
    }
    return static_cast<std::uint64_t>(end);
}

}  // namespace

void State::LogRun(const std::vector<std::string>& arguments) const {
    if (!m_Folder) {
        return;
    }
    std::string line;
    for (const std::string& argument : arguments) {
        line += line.empty() ? "" : " ";
        line += argument;
    }
    for (char& character : line) {
        if (character == '\n') {
            character = '?';  // one run stays one line
        }
    }
    Append(*m_Folder / "runs.log", line + '\n');
}

std::uint64_t State::CountRun(const std::string& stem) const {
    if (!m_Folder) {
        throw ScenarioError(kExitNoState,
                            "'pass-first' and 'fail-first' count runs and need a state folder; name "
                            "one with VDKSIM_STATE");
    }
    return Append(*m_Folder / (stem + ".count"), ".");
}

}  // namespace vdksim
