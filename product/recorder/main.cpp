// Stands in for the shell, found first in PATH under its name, and keeps what a command prints:
//
//     MNGSRVRAID_RECORD=/tmp/record MNGSRVRAID_RECORD_PATH=$PATH
//     PATH=/opt/x/libexec/recorder:$PATH
//     sh -c "vdkcli -v" >result.txt 2>&1
//
// The command is run by the real shell, in the environment and with the descriptors that it would have had
// without the recorder. When it has ended, it is kept as a run file in the record folder with what is in the
// file that is standard output, and the recorder ends just as the shell did. Where that cannot be kept, a
// note in the folder says so and the run is as it is.

#include "basics/Signal.h"
#include "recorder/RunFile.h"

#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <optional>
#include <string>
#include <string_view>

namespace {

constexpr const char* kFolder = "MNGSRVRAID_RECORD";
constexpr const char* kPath = "MNGSRVRAID_RECORD_PATH";
constexpr int kNotStarted = 1;  // What the caller's child does when there is no shell at all.

std::optional<std::string> Variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

void LeaveEnvironmentAsItWas(const std::optional<std::string>& path) {
    if (path) {
        ::setenv("PATH", path->c_str(), 1);
    } else {
        ::unsetenv("PATH");
    }
    ::unsetenv(kFolder);
    ::unsetenv(kPath);
}

bool IsThisProgram(const struct stat& file) {
    struct stat own {};
    return ::stat("/proc/self/exe", &own) == 0 && own.st_dev == file.st_dev && own.st_ino == file.st_ino;
}

// The shell that PATH finds, other than this program; "" where there is none.
std::string FindShell() {
    const std::string usual = Variable("PATH").value_or("/bin:/usr/bin");
    for (std::string_view rest = usual;;) {
        const std::size_t length = std::min(rest.find(':'), rest.size());
        const std::string directory(length == 0 ? "." : rest.substr(0, length));
        std::string file = directory + "/sh";
        struct stat status {};
        if (::stat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
            ::access(file.c_str(), X_OK) == 0 && !IsThisProgram(status)) {
            return file;
        }
        if (length == rest.size()) {
            return "";
        }
        rest.remove_prefix(length + 1);
    }
}

/// How the caller left the signals, while all of them wait to be passed on.
class HeldSignals final {
  public:
    HeldSignals() noexcept {
        ::sigfillset(&m_All);
        ::sigprocmask(SIG_SETMASK, &m_All, &m_MaskBefore);
        // Where it is ignored nobody can wait for a child.
        struct sigaction action {};
        action.sa_handler = SIG_DFL;
        ::sigaction(SIGCHLD, &action, &m_ChildBefore);
    }
    void GiveBack() const noexcept {
        ::sigaction(SIGCHLD, &m_ChildBefore, nullptr);
        ::sigprocmask(SIG_SETMASK, &m_MaskBefore, nullptr);
    }
    [[nodiscard]] siginfo_t Next() const noexcept {
        siginfo_t signal{};
        while (::sigwaitinfo(&m_All, &signal) < 0) {
        }
        return signal;
    }

  private:
    sigset_t m_All{};
    sigset_t m_MaskBefore{};
    struct sigaction m_ChildBefore {};
};

bool EndsByDefault(int signal) {
    return signal == SIGINT || signal == SIGTERM || signal == SIGHUP || signal == SIGQUIT;
}

/// A run of the real shell and what is to be kept of it.
class RecordedRun final {
  public:
    RecordedRun(std::string folder, std::string command, const HeldSignals& signals, pid_t shell)
        : m_Folder(std::move(folder)), m_Command(std::move(command)), m_Signals(signals), m_Shell(shell) {}

    /// The wait status of the shell when it is gone.
    [[nodiscard]] int Follow() {
        for (;;) {
            int status = 0;
            const pid_t news = ::waitpid(m_Shell, &status, WNOHANG | WUNTRACED);
            if (news == m_Shell && WIFSTOPPED(status)) {
                StopToo(status);
            } else if (news == m_Shell) {
                Keep(status);
                return status;
            } else {
                PassOn(m_Signals.Next());
            }
        }
    }

  private:
    // Whoever waits for this process is told of the stop, and may not wait any longer.
    void StopToo(int status) {
        Keep(status);
        ::kill(::getpid(), SIGSTOP);
        ::kill(m_Shell, SIGCONT);
    }

    void PassOn(const siginfo_t& signal) {
        m_IsToEnd |= EndsByDefault(signal.si_signo);
        // What a terminal sends has reached the shell already.
        if (signal.si_signo != SIGCHLD && signal.si_code != SI_KERNEL) {
            ::kill(m_Shell, signal.si_signo);
        }
    }

    void Keep(int status) {
        if (m_IsToEnd || m_IsKept) {
            return;
        }
        m_IsKept = true;
        const std::string failure = recorder::StoreRun(m_Folder, m_Command, status, STDOUT_FILENO);
        if (!failure.empty()) {
            recorder::StoreNote(m_Folder, m_Command + " is not recorded: " + failure);
        }
    }

    std::string m_Folder;
    std::string m_Command;
    const HeldSignals& m_Signals;
    pid_t m_Shell;
    bool m_IsToEnd = false;
    bool m_IsKept = false;
};

[[noreturn]] void BecomeShell(const std::string& shell, char** words) noexcept {
    ::execv(shell.c_str(), words);
    ::_exit(kNotStarted);
}

[[noreturn]] void EndLike(int status) noexcept {
    if (WIFEXITED(status)) {
        ::_exit(WEXITSTATUS(status));
    }
    basics::DieBy(WTERMSIG(status));
}

[[noreturn]] void Record(const std::string& folder, const std::string& shell, char** words) {
    // Not "sh": whoever wants to know whether a shell waits for the command looks at this name.
    ::prctl(PR_SET_NAME, "recorder");
    // A caller that is gone takes the command with it.
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    const HeldSignals signals;
    const pid_t child = ::fork();
    if (child <= 0) {
        if (child == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        }
        signals.GiveBack();
        BecomeShell(shell, words);  // Where no process can be made, without being recorded.
    }
    EndLike(RecordedRun(folder, words[2], signals, child).Follow());
}

}  // namespace

int main(int count, char** words) {
    constexpr int kWords = 3;
    const std::optional<std::string> folder = Variable(kFolder);
    if (folder) {
        LeaveEnvironmentAsItWas(Variable(kPath));
    }
    const std::string shell = FindShell();
    if (!folder || count != kWords || words[1] != std::string_view("-c")) {
        BecomeShell(shell, words);
    }
    Record(*folder, shell, words);
}
