#include "ProgramRun.h"

#include "Message.h"
#include "basics/Descriptor.h"
#include "basics/Failure.h"
#include "basics/Processes.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>
#include <string_view>

namespace telling {
namespace {

using basics::Descriptor;

constexpr std::size_t kMostOutput = 4096;
constexpr int kCannotRun = 127;

struct Pipe {
    Descriptor read, write;

    Pipe() {
        std::array<int, 2> ends{};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
            basics::FailSurroundings("no pipe for a program: " + basics::ErrorText(errno));
        }
        read = Descriptor(ends[0]);
        write = Descriptor(ends[1]);
    }
};

Descriptor FileOf(const std::string& text) {
    Descriptor file(::memfd_create("input", MFD_CLOEXEC));
    if (!file.IsOpen() || basics::WriteWhole(file.Number(), text) != 0 ||
        ::lseek(file.Number(), 0, SEEK_SET) != 0) {
        basics::FailSurroundings("no memory for a program's input: " + basics::ErrorText(errno));
    }
    return file;
}

// What the service's manager tells the service is not meant for programs.
bool IsForTheServiceAlone(std::string_view variable) {
    constexpr std::string_view kPrefixes[] = {"MNGSRVRAID_",      "NOTIFY_SOCKET=", "WATCHDOG_",
                                              "JOURNAL_STREAM=",  "LISTEN_",        "INVOCATION_ID=",
                                              "SYSTEMD_EXEC_PID="};
    return std::any_of(std::begin(kPrefixes), std::end(kPrefixes),
                       [variable](std::string_view prefix) { return variable.starts_with(prefix); });
}

std::vector<std::string> EnvironmentWith(const std::vector<std::string>& more) {
    std::vector<std::string> variables;
    bool hasPath = false;
    for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable) {
        if (!IsForTheServiceAlone(*variable)) {
            variables.emplace_back(*variable);
            hasPath = hasPath || variables.back().starts_with("PATH=");
        }
    }
    if (!hasPath) {
        variables.emplace_back("PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin");
    }
    variables.insert(variables.end(), more.begin(), more.end());
    return variables;
}

std::vector<char*> PointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

void HoldTermination() noexcept {
    sigset_t termination;
    ::sigemptyset(&termination);
    ::sigaddset(&termination, SIGTERM);
    ::sigprocmask(SIG_BLOCK, &termination, nullptr);
}

bool IsAskedToEnd() noexcept {
    sigset_t pending;
    return ::sigpending(&pending) == 0 && ::sigismember(&pending, SIGTERM) == 1;
}

/// The program while it runs, in the errand's process.
class RunningProgram final {
  public:
    explicit RunningProgram(const ProgramRun& run)
        : m_Words{run.path}, m_Variables(EnvironmentWith(run.environment)) {
        m_Words.insert(m_Words.end(), run.arguments.begin(), run.arguments.end());
        const std::vector<char*> words = PointersTo(m_Words);
        const std::vector<char*> variables = PointersTo(m_Variables);
        const Descriptor input = FileOf(run.input);
        Pipe failure;
        HoldTermination();
        ::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0);
        m_Process = ::fork();
        if (m_Process == 0) {
            Become(words, variables, input.Number(), failure.write.Number());
        }
        if (m_Process < 0) {
            basics::FailSurroundings("no process can be made: " + basics::ErrorText(errno));
        }
        (void)m_Output.write.Close();
        (void)failure.write.Close();
        int error = 0;
        if (::read(failure.read.Number(), &error, sizeof error) == static_cast<ssize_t>(sizeof error)) {
            m_StartError = error;
        }
    }

    /// Its wait status.
    [[nodiscard]] int Wait() {
        const Descriptor process = basics::OpenProcess(m_Process);
        std::array<pollfd, 2> watched{{{process.Number(), POLLIN, 0}, {m_Output.read.Number(), POLLIN, 0}}};
        while (watched[0].revents == 0 && process.IsOpen()) {
            if (::poll(watched.data(), watched.size(), -1) > 0 && watched[1].revents != 0 && !ReadOn()) {
                watched[1].fd = -1;
            }
        }
        int status = 0;
        while (::waitpid(m_Process, &status, 0) < 0 && errno == EINTR) {
        }
        ::fcntl(m_Output.read.Number(), F_SETFL, O_NONBLOCK);
        for (std::size_t rest = 0; rest < kMostRest && ReadOn(); ++rest) {
        }
        return status;
    }

    /// Those that the program has left behind.
    void WaitForOthers() {
        (void)m_Output.read.Close();
        while (::waitpid(-1, nullptr, 0) > 0 || errno == EINTR) {
        }
    }

    [[nodiscard]] const std::string& Output() const { return m_Printed; }
    [[nodiscard]] std::optional<int> StartError() const { return m_StartError; }

  private:
    static constexpr std::size_t kMostRest = 1024;  ///< pieces: what others go on printing has no end

    [[noreturn]] void Become(const std::vector<char*>& words, const std::vector<char*>& variables, int input,
                             int failure) const noexcept {
        ::prctl(PR_SET_PDEATHSIG, SIGTERM, 0, 0, 0);
        ::dup2(input, STDIN_FILENO);
        ::dup2(m_Output.write.Number(), STDOUT_FILENO);
        ::dup2(m_Output.write.Number(), STDERR_FILENO);
        TakeSignalsAsUsual();
        ::execve(words.front(), words.data(), variables.data());
        const int error = errno;
        (void)!::write(failure, &error, sizeof error);
        ::_exit(kCannotRun);
    }

    // False when there is nothing to read any more.
    bool ReadOn() {
        std::array<char, kMostOutput> piece{};
        const ssize_t size = ::read(m_Output.read.Number(), piece.data(), piece.size());
        if (size > 0) {
            m_Printed.append(piece.data(), static_cast<std::size_t>(size));
            m_Printed.erase(0, m_Printed.size() - std::min(m_Printed.size(), kMostOutput));
        }
        return size > 0 || (size < 0 && errno == EINTR);
    }

    std::vector<std::string> m_Words, m_Variables;
    Pipe m_Output;
    std::string m_Printed;  ///< its end
    pid_t m_Process = -1;
    std::optional<int> m_StartError;
};

std::string WordsFor(const std::string& path, int status, const std::string& printed) {
    const std::string last = LastLineOf(printed);
    const std::string end = WIFEXITED(status) ? " ended with status " + std::to_string(WEXITSTATUS(status))
                                              : " was ended by signal " + std::to_string(WTERMSIG(status));
    return path + end + (last.empty() ? "" : ": " + last);
}

}  // namespace

bool ProgramRun::Run(const Errand::Say& say) const {
    say(path);
    RunningProgram program(*this);
    const int status = program.Wait();
    const bool isDone = !program.StartError() && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    say(program.StartError() ? path + " cannot be run: " + basics::ErrorText(*program.StartError())
        : isDone             ? LastLineOf(program.Output())
                             : WordsFor(path, status, program.Output()));
    if (IsAskedToEnd()) {
        program.WaitForOthers();
    }
    return isDone;
}

}  // namespace telling
