#include "ToolRun.h"

#include "basics/Descriptor.h"
#include "basics/Failure.h"
#include "basics/Signal.h"
#include "basics/Text.h"
#include "basics/Words.h"
#include "calls/InstallRoot.h"

#include <fcntl.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace calls {
namespace {

namespace fs = std::filesystem;
using basics::Descriptor;

constexpr int kNoStatus = -1;
std::atomic<int> g_lastStatus = kNoStatus;
std::atomic<std::chrono::steady_clock::time_point> g_lastEnd = std::chrono::steady_clock::time_point();

// The file "00001a2b_00000005_MngSrvRaid.txt" of the thread's last run; earlier ones have lower numbers, and
// other threads and processes share the directory.
fs::path ReportOfThread() {
    const std::string own = basics::Digits(static_cast<std::size_t>(::gettid()), 8, 16) + "_";
    std::string last;
    std::error_code error;
    for (fs::directory_iterator at(ResultDirectory(), error), end; !error && at != end; at.increment(error)) {
        const std::string name = at->path().filename().string();
        if (name.starts_with(own)) {
            last = std::max(last, name);
        }
    }
    return last.empty() ? fs::path() : fs::path(ResultDirectory()) / last;
}

std::string LastLineIn(std::string_view text, bool isWhole) {
    while (!text.empty()) {
        const std::size_t end = text.find_last_of("\r\n");
        const std::size_t start = end == std::string_view::npos ? 0 : end + 1;
        const std::string_view line = basics::Trimmed(text.substr(start));
        if (!line.empty()) {
            return (start > 0 || isWhole ? "" : "\xE2\x80\xA6") + basics::OneLine(std::string(line));
        }
        text = text.substr(0, start > 0 ? end : 0);
    }
    return "";
}

// A tool may have printed gigabytes, without a line end at that: only the last of it is looked at.
std::string LastLineOf(const Descriptor& report) {
    constexpr std::size_t kLastBytes = 1U << 16U;
    constexpr std::size_t kColumns = 200;
    struct stat status {};
    if (::fstat(report.Number(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return "";
    }
    std::string text(kLastBytes, '\0');
    const off_t start = std::max<off_t>(status.st_size - static_cast<off_t>(kLastBytes), 0);
    const ssize_t count = ::pread(report.Number(), text.data(), text.size(), start);
    text.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return basics::Shortened(LastLineIn(text, start == 0), kColumns);
}

// Found out by writing: there may be no room, no right, or no quota left.
std::string ObstacleToResults() {
    const std::string file = ResultDirectory() + "/" + std::to_string(::gettid()) + ".probe";
    constexpr mode_t kPrivate = 0600;
    constexpr std::size_t kBlock = 4096;
    Descriptor probe(::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, kPrivate));
    int error = probe.IsOpen() ? basics::WriteWhole(probe.Number(), std::string(kBlock, '\0')) : errno;
    if (!probe.Close() && error == 0) {
        error = errno;
    }
    ::unlink(file.c_str());
    return error == 0 ? "" : basics::ErrorText(error);
}

std::string NameOf(int signal) {
    const char* const name = ::sigabbrev_np(signal);
    return name == nullptr ? "signal " + std::to_string(signal) : std::string("SIG") + name;
}

std::string DescribeStatus(int status) {
    if (WIFSIGNALED(status)) {
        return "ended by " + NameOf(WTERMSIG(status));
    }
    if (WIFSTOPPED(status)) {
        return "stopped by " + NameOf(WSTOPSIG(status));
    }
    const int number = WEXITSTATUS(status);
    const int signal = number - basics::kSignalStatusBase;
    return "exit status " + std::to_string(number) +
           (signal > 0 && ::sigabbrev_np(signal) != nullptr ? " (" + NameOf(signal) + ")" : "");
}

}  // namespace

void ForgetRun() noexcept {
    g_lastStatus = kNoStatus;
    g_lastEnd = std::chrono::steady_clock::time_point();
}

std::chrono::steady_clock::time_point EndOfRun() noexcept {
    return g_lastEnd;
}

ToolRun SeeRun() {
    ToolRun run;
    if (const int status = g_lastStatus; status != kNoStatus) {
        run.status = status;
    }
    run.obstacle = ObstacleToResults();
    if (const fs::path path = ReportOfThread(); !path.empty()) {
        const Descriptor report(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
        run.hasReport = report.IsOpen();
        run.lastLine = LastLineOf(report);
    }
    return run;
}

std::string DescribeRun(const ToolRun& run) {
    if (!run.status || !run.hasReport) {
        return "";  // Without the file nothing was run.
    }
    return DescribeStatus(*run.status) +
           (run.lastLine.empty() ? ", nothing printed" : ": \"" + run.lastLine + "\"");
}

}  // namespace calls

// The module waits for the tool itself, and tells of how it ended no more than that it failed. It finds this
// function by its name, as it would the C library's, and the program's own goes before a library's. Others
// would know less or cost more: a stand-in for the shell is one more program to start for every run, a handler
// of SIGCHLD gets one signal for two children, and whoever traces the tool changes how it runs.
extern "C" __attribute__((visibility("default"))) pid_t waitpid(pid_t process, int* status, int options) {
    int seen = 0;
    const pid_t child = ::wait4(process, &seen, options, nullptr);
    if (child > 0) {
        calls::g_lastStatus = seen;
        calls::g_lastEnd = std::chrono::steady_clock::now();
        if (status != nullptr) {
            *status = seen;
        }
    }
    return child;
}
