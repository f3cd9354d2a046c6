#include "Watchdog.h"

#include <execinfo.h>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <csignal>
#include <cstring>
#include <string_view>

namespace unkindhost {
namespace {

constexpr int kStuck = 124;

// Standard error, kept aside: a child may have put something else in its place.
int g_output = -1;

void Say(std::string_view text) {
    (void)!::write(g_output, text.data(), text.size());
}

// The children of this thread, as far as a modest text holds them.
std::string_view Children(std::array<char, 256>& text) {
    const int file = ::open("/proc/thread-self/children", O_RDONLY | O_CLOEXEC);
    const ssize_t length = ::read(file, text.data(), text.size());
    ::close(file);
    return {text.data(), static_cast<std::size_t>(length > 0 ? length : 0)};
}

// Only what may be called in a signal handler. A child that still is this program has this handler too.
void Report(int /*signal*/) {
    constexpr int kFrames = 64;
    std::array<void*, kFrames> frames{};
    Say("nothing has moved for too long; this process is at\n");
    ::backtrace_symbols_fd(frames.data(), ::backtrace(frames.data(), kFrames), g_output);
    std::array<char, 256> buffer{};
    std::string_view children = Children(buffer);
    for (pid_t child = 0; !children.empty(); children.remove_prefix(children.find(' ') + 1)) {
        std::from_chars(children.data(), children.data() + children.size(), child);
        Say("and its child at\n");
        ::kill(child, SIGALRM);
        ::waitpid(child, nullptr, 0);
    }
    ::_exit(kStuck);
}

}  // namespace

Watchdog::Watchdog(std::chrono::seconds patience) : m_Patience(patience) {
    g_output = ::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    void* frame = nullptr;
    ::backtrace(&frame, 1);  // It loads a library the first time, which a signal handler must not.
    struct sigaction action {};
    action.sa_handler = Report;
    ::sigaction(SIGALRM, &action, nullptr);
    Moved();
}

Watchdog::~Watchdog() {
    ::alarm(0);
    ::signal(SIGALRM, SIG_DFL);
    ::close(g_output);
}

void Watchdog::Moved() const {
    ::alarm(static_cast<unsigned>(m_Patience.count()));
}

}  // namespace unkindhost
