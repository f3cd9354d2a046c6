#include "supervision/Supervisor.h"

#include "basics/Descriptor.h"
#include "basics/Failure.h"
#include "basics/Processes.h"
#include "basics/Signal.h"
#include "supervision/Descendants.h"

#include <signal.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <optional>
#include <system_error>
#include <vector>

namespace supervision {
namespace {

namespace fs = std::filesystem;
using std::chrono::steady_clock;

// Enough for a document to be safe on a slow disk.
constexpr std::chrono::seconds kTimeToPutOff{5};

bool IsIgnored(int signal) noexcept {
    struct sigaction action {};
    return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

/// From construction on, the signals that would end the process wait to be taken by `Next`, and so does the
/// news of children. `GiveBack` makes everything as it was.
class SignalQueue final {
  public:
    SignalQueue() noexcept {
        ::sigprocmask(SIG_BLOCK, nullptr, &m_MaskBefore);
        ::sigemptyset(&m_Taken);
        ::sigaddset(&m_Taken, SIGCHLD);
        for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
            if (!IsIgnored(signal) && ::sigismember(&m_MaskBefore, signal) == 0) {
                ::sigaddset(&m_Taken, signal);
            }
        }
        ::sigprocmask(SIG_BLOCK, &m_Taken, nullptr);
        // Where it is ignored nobody can wait for a child.
        struct sigaction action {};
        action.sa_handler = SIG_DFL;
        ::sigaction(SIGCHLD, &action, &m_ChildBefore);
    }

    void GiveBack() const noexcept {
        ::sigaction(SIGCHLD, &m_ChildBefore, nullptr);
        ::sigprocmask(SIG_SETMASK, &m_MaskBefore, nullptr);
    }

    /// A signal, or 0 when the time is over.
    [[nodiscard]] int Next(std::optional<steady_clock::time_point> end) const noexcept {
        using std::chrono::nanoseconds;
        constexpr long kNanosecondsOfASecond = 1'000'000'000;
        if (!end) {
            return std::max(::sigwaitinfo(&m_Taken, nullptr), 0);
        }
        const auto left = std::max(nanoseconds(*end - steady_clock::now()), nanoseconds(0)).count();
        const timespec time{left / kNanosecondsOfASecond, left % kNanosecondsOfASecond};
        return std::max(::sigtimedwait(&m_Taken, nullptr, &time), 0);
    }

  private:
    sigset_t m_MaskBefore{};
    sigset_t m_Taken{};
    struct sigaction m_ChildBefore {};
};

/// Makes the folder; "" with `error` set where that is impossible.
std::string MakeFolderIn(const fs::path& place, const char* name, std::error_code& error) {
    std::string path = fs::absolute(place / name).string() + ".XXXXXX";
    if (::mkdtemp(path.data()) == nullptr) {
        error.assign(errno, std::generic_category());
        return "";
    }
    return path;
}

std::string MakePrivateFolder(const Supervision& supervision) {
    std::error_code error;
    const fs::path usual = fs::temp_directory_path(error);
    std::string folder = error ? "" : MakeFolderIn(usual, supervision.privateFolder, error);
    for (const std::string& place : supervision.otherPlaces) {
        std::error_code ignored;  // What is wrong with the usual place is what can be mended.
        folder = folder.empty() ? MakeFolderIn(place, supervision.privateFolder, ignored) : folder;
    }
    if (folder.empty()) {
        basics::FailSurroundings("a folder for temporary files cannot be made: " + error.message() +
                                 "; name a directory that can be written by the variable TMPDIR");
    }
    return folder;
}

/// The parent's part.
class Parent final {
  public:
    Parent(const Supervision& supervision, const SignalQueue& signals, pid_t worker, std::string folder)
        : m_Supervision(supervision), m_Signals(signals), m_Worker(worker), m_Folder(std::move(folder)) {
        if (supervision.timeLimit.count() > 0) {
            m_End = steady_clock::now() + supervision.timeLimit;
        }
    }

    [[noreturn]] void Watch() {
        while (!HasEnded()) {
            const int signal = m_Signals.Next(m_End);
            if (signal == 0 && m_End && steady_clock::now() >= *m_End) {
                EndOvertime();
            } else if (signal != 0 && signal != SIGCHLD) {
                PassOn(signal);
            }
        }
        // A worker that was past its work when the signal came has ended well, and that counts.
        if (WIFEXITED(m_Status)) {
            RemoveFolder();
            ::_exit(WEXITSTATUS(m_Status));
        }
        CleanUp();
        Tell(m_Interruption == 0 ? WTERMSIG(m_Status) : m_Interruption);
    }

  private:
    [[nodiscard]] bool HasEnded() noexcept {
        for (;;) {
            int status = 0;
            const pid_t child = ::waitpid(-1, &status, WNOHANG);
            if (child == 0) {
                return m_HasEnded;
            }
            if (child < 0 && errno != EINTR) {
                return true;
            }
            if (child == m_Worker) {
                m_Status = status;
                m_HasEnded = true;
            }
        }
    }

    // The time for the work is over, or that for putting a signal off. Work that replaces a file is given the
    // latter, too.
    void EndOvertime() {
        if (m_Interruption != 0 || !m_Overtime.empty()) {
            ::kill(m_Worker, SIGKILL);
            m_End = std::nullopt;
            return;
        }
        const std::string tool = CommandBelow(m_Worker);
        m_Overtime = (tool.empty() ? "the module" : tool) + " did not end within " +
                     std::to_string(m_Supervision.timeLimit.count()) + " s, and was ended";
        m_End = steady_clock::now() + kTimeToPutOff;
        ::kill(m_Worker, SIGTERM);
        ::kill(m_Worker, SIGCONT);  // One that is stopped would not hear it.
    }

    void PassOn(int signal) noexcept {
        if (m_Interruption == 0) {
            m_Interruption = signal;
            m_End = steady_clock::now() + kTimeToPutOff;
        }
        ::kill(m_Worker, signal);
        ::kill(m_Worker, SIGCONT);  // One that is stopped would not hear it.
    }

    void CleanUp() {
        // Whoever read the messages may be gone.
        ::signal(SIGPIPE, SIG_IGN);
        ::signal(SIGTTOU, SIG_IGN);
        const bool areAllGone = EndDescendants();
        RemoveFolder();
        if (!areAllGone) {
            Say("a process of the tool does not end; see ps for what it waits for");
        }
    }

    [[noreturn]] void Tell(int signal) {
        const bool isOvertime = !m_Overtime.empty();
        const bool isCrash = !isOvertime && m_Interruption == 0;
        const std::string words = isOvertime ? m_Overtime + m_Supervision.remains
                                  : isCrash  ? "the process that hosts the module was ended by signal " +
                                                  std::to_string(signal) + "; see the system's log"
                                            : "interrupted" + m_Supervision.remains;
        if (m_Supervision.tellEnd != nullptr) {
            ::_exit(m_Supervision.tellEnd(words));
        }
        if (isOvertime) {
            Say(words);
            ::_exit(m_Supervision.overtimeStatus);
        }
        if (!isCrash || signal != SIGPIPE) {  // Whoever closed a pipe wants to hear no more.
            Say(words);
        }
        basics::DieBy(signal);
    }

    void RemoveFolder() const {
        std::error_code ignored;  // Nobody is left who could do something about it.
        if (!m_Folder.empty()) {
            fs::remove_all(m_Folder, ignored);
        }
    }

    void Say(const std::string& words) {
        std::string line = m_IsOnFreshLine ? "" : "\n";
        line.append(m_Supervision.program).append(": ").append(words).append("\n");
        m_IsOnFreshLine = true;
        (void)basics::WriteWhole(STDERR_FILENO, line);
    }

    const Supervision& m_Supervision;
    const SignalQueue& m_Signals;
    pid_t m_Worker;
    std::string m_Folder;
    int m_Interruption = 0;
    std::optional<steady_clock::time_point> m_End;  ///< of the worker's time
    std::string m_Overtime;                         ///< what to say when it was over
    int m_Status = 0;
    bool m_HasEnded = false;
    bool m_IsOnFreshLine = !m_Supervision.drawsProgress;
};

[[noreturn]] void WatchAsParent(const Supervision& supervision, const SignalQueue& signals, pid_t worker,
                                const std::string& folder) noexcept {
    // Without memory the process ends, and with it the worker.
    Parent(supervision, signals, worker, folder).Watch();
}

void BecomeWorker(const SignalQueue& signals, pid_t parent) noexcept {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL, 0, 0, 0);
    if (::getppid() != parent) {
        ::raise(SIGKILL);  // It died before that was said.
    }
    signals.GiveBack();
}

}  // namespace

std::string Supervise(const Supervision& supervision) {
    const SignalQueue signals;
    std::string folder;
    try {
        folder = supervision.privateFolder == nullptr ? "" : MakePrivateFolder(supervision);
    } catch (...) {
        signals.GiveBack();
        throw;
    }
    ::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0);
    const pid_t parent = ::getpid();
    const pid_t worker = ::fork();
    if (worker > 0) {
        WatchAsParent(supervision, signals, worker, folder);
    }
    const int error = errno;
    if (worker < 0) {
        std::error_code ignored;
        fs::remove_all(folder, ignored);
        signals.GiveBack();
        basics::FailSurroundings("no process can be made: " + basics::ErrorText(error) +
                                 "; see the limits of processes (ulimit -u) and of memory");
    }
    BecomeWorker(signals, parent);
    return folder;
}

}  // namespace supervision
