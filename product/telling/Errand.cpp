#include "Errand.h"

#include "Rights.h"
#include "basics/Failure.h"
#include "basics/Processes.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <vector>

namespace telling {
namespace {

constexpr int kDone = 0;
constexpr int kNotDone = 1;
constexpr int kFirstOfItsOwn = STDERR_FILENO + 1;
constexpr std::size_t kMostWords = 4096;

void Replace(int file, const std::string& words) {
    if (::ftruncate(file, 0) == 0) {
        (void)!::pwrite(file, words.data(), std::min(words.size(), kMostWords), 0);
    }
}

// Nothing of the parent's but the file for words, which becomes the first descriptor behind the standard
// streams.
void LeaveTheParent(int words, pid_t parent) noexcept {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL, 0, 0, 0);
    if (::getppid() != parent) {
        ::raise(SIGKILL);  // It died before that was said.
    }
    ::setsid();
    TakeSignalsAsUsual();
    const int kept =
        ::fcntl(words, F_DUPFD_CLOEXEC, kFirstOfItsOwn);  // It may be among those, where they were closed.
    const int nothing = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        ::dup2(nothing, stream);
    }
    if (kept != kFirstOfItsOwn) {
        ::dup3(kept, kFirstOfItsOwn, O_CLOEXEC);
    }
    ::close_range(kFirstOfItsOwn + 1, ~0U, 0);
    (void)!::chdir("/");
    DropAmbientRights();
}

[[noreturn]] void Do(const Errand::Work& work, int words, pid_t parent) noexcept {
    LeaveTheParent(words, parent);
    const auto say = [](const std::string& text) { Replace(kFirstOfItsOwn, text); };
    bool isDone = false;
    try {
        isDone = work(say);
    } catch (const std::exception& error) {
        say(error.what());
    }
    ::_exit(isDone ? kDone : kNotDone);
}

}  // namespace

void TakeSignalsAsUsual() noexcept {
    for (int signal = 1; signal < NSIG; ++signal) {
        ::signal(signal, SIG_DFL);
    }
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

Errand::Errand(const Work& work) : m_Words(::memfd_create("words", MFD_CLOEXEC)) {
    if (!m_Words.IsOpen()) {
        basics::FailSurroundings("no memory for a child process: " + basics::ErrorText(errno));
    }
    const pid_t parent = ::getpid();
    m_Process = ::fork();
    if (m_Process == 0) {
        Do(work, m_Words.Number(), parent);
    }
    if (m_Process < 0) {
        basics::FailSurroundings("no process can be made: " + basics::ErrorText(errno));
    }
}

Errand::~Errand() {
    if (!m_HasEnded) {
        Kill();
        while (::waitpid(m_Process, nullptr, 0) < 0 && errno == EINTR) {
        }
    }
}

std::string Errand::Said() const {
    std::string words(kMostWords, '\0');
    const ssize_t size = ::pread(m_Words.Number(), words.data(), words.size(), 0);
    words.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
    return words;
}

void Errand::AskToEnd() const noexcept {
    ::kill(m_Process, SIGTERM);  // Also while it has no session yet.
    ::kill(-m_Process, SIGTERM);
    ::kill(-m_Process, SIGCONT);  // What is stopped would not hear it.
}

// Those that come while others are killed are seen by the next look; each look kills what the last one saw.
void Errand::Kill() const noexcept {
    constexpr int kMostLooks = 10;
    try {
        std::vector<pid_t> seen;
        for (int look = 0; look < kMostLooks; ++look) {
            std::vector<pid_t> descendants = basics::DescendantsOf(m_Process);
            for (const pid_t process : descendants) {
                ::kill(process, SIGKILL);
            }
            std::sort(descendants.begin(), descendants.end());
            if (descendants == seen) {
                break;
            }
            seen = std::move(descendants);
        }
    } catch (const std::exception&) {
        // Without memory those in the session are ended, at least.
    }
    ::kill(-m_Process, SIGKILL);
    ::kill(m_Process, SIGKILL);
}

}  // namespace telling
