#include "State.h"

#include <fcntl.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <string_view>
#include <system_error>

#include "ScenarioError.h"
#include "Words.h"

namespace vdksim {

namespace fs = std::filesystem;

namespace {

constexpr const char* kNeedsCounts =
    "'pass-first' and 'fail-first' count runs and need a state folder; name one with VDKSIM_STATE";
constexpr const char* kNeedsInquiries = "a timeline needs a state folder; name one with VDKSIM_STATE";

// A power of two, so that a line lies in one page and nobody sees half of it.
constexpr std::size_t kInquiryLine = 16;

// Adds the text to the file's end in one write; returns the size of the file just behind it.
std::uint64_t Append(const fs::path& path, std::string_view text) {
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

// Goes on while the machine is suspended, and nobody can set it.
std::uint64_t MillisecondsNow() {
    constexpr std::uint64_t kThousand = 1000;
    constexpr std::uint64_t kMillion = 1000000;
    timespec now{};
    ::clock_gettime(CLOCK_BOOTTIME, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * kThousand +
           static_cast<std::uint64_t>(now.tv_nsec) / kMillion;
}

// The milliseconds in the inquiry's line.
std::uint64_t ReadInquiry(const fs::path& path, std::uint64_t inquiry) {
    std::ifstream in(path, std::ios::binary);
    std::array<char, kInquiryLine> line{};
    in.seekg(static_cast<std::streamoff>(inquiry * kInquiryLine));
    in.read(line.data(), line.size());
    const auto milliseconds = WholeNumber<std::uint64_t>({line.data(), line.size() - 1});
    if (!in || !milliseconds || line.back() != '\n') {
        throw ScenarioError(kExitNoState, path.string() + ": cannot be understood; delete it to start over");
    }
    return *milliseconds;
}

Moment MomentOf(const fs::path& path, std::uint64_t inquiry) {
    const std::uint64_t first = ReadInquiry(path, 0);
    // Earlier than the first where the machine was started anew.
    const std::uint64_t now = std::max(first, ReadInquiry(path, inquiry));
    return {std::chrono::milliseconds(now - first), inquiry};
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
    return Append(File(stem + ".count", kNeedsCounts), ".");
}

Moment State::BeginInquiry() const {
    const fs::path path = File("inquiries", kNeedsInquiries);
    std::string line = std::to_string(MillisecondsNow()) + '\n';
    line.insert(0, kInquiryLine - std::min(kInquiryLine, line.size()), '0');
    return MomentOf(path, Append(path, line) / kInquiryLine - 1);
}

Moment State::LastInquiry() const {
    const fs::path path = File("inquiries", kNeedsInquiries);
    std::error_code missing;
    const auto size = fs::file_size(path, missing);
    return missing || size < kInquiryLine ? Moment{} : MomentOf(path, size / kInquiryLine - 1);
}

fs::path State::File(const std::string& name, const char* needs) const {
    if (!m_Folder) {
        throw ScenarioError(kExitNoState, needs);
    }
    return *m_Folder / name;
}

}  // namespace vdksim
