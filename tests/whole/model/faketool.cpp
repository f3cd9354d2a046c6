// The tool of the replay: prints what the case has for this run of this command, then ends as it
// says. Plain system calls, since it is started several times in every case.
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

constexpr int kBroken = 99;  // No case asks for this status.
constexpr std::size_t kBlock = 64 * 1024;

bool Exists(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0;
}

std::string ReadFile(const std::string& path) {
    std::string text;
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    std::array<char, kBlock> block{};
    ssize_t length = 0;
    while (file >= 0 && (length = ::read(file, block.data(), block.size())) > 0) {
        text.append(block.data(), static_cast<std::size_t>(length));
    }
    ::close(file);
    return text;
}

void WriteAll(int file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t length = ::write(file, text.data(), text.size());
        if (length <= 0) {
            ::_exit(kBroken);
        }
        text.remove_prefix(static_cast<std::size_t>(length));
    }
}

std::string JoinArguments(int count, char** arguments) {
    std::string joined;
    for (int at = 1; at < count; ++at) {
        joined.append(at == 1 ? "" : " ").append(arguments[at]);
    }
    return joined;
}

std::string FileStem(std::string arguments) {
    for (char& character : arguments) {
        const bool isDigit = character >= '0' && character <= '9';
        const bool isLetter =
            (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
        character = isDigit || isLetter ? character : '_';
    }
    return arguments;
}

std::string PathBehind(int descriptor) {
    std::array<char, kBlock> path{};
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    const ssize_t length = ::readlink(link.c_str(), path.data(), path.size());
    return {path.data(), length > 0 ? static_cast<std::size_t>(length) : 0};
}

/// The descriptors that lead to that file, such as "1,2".
std::string DescriptorsOf(const std::string& path) {
    constexpr int kEnd = 64;
    std::string numbers;
    for (int descriptor = 0; descriptor < kEnd; ++descriptor) {
        if (PathBehind(descriptor) == path) {
            numbers.append(numbers.empty() ? "" : ",").append(std::to_string(descriptor));
        }
    }
    return numbers;
}

/// Adds this run to the log and returns how often these arguments stand there now.
int LogRun(const std::string& log, const std::string& arguments, const std::string& outputPath) {
    const int file = ::open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    WriteAll(file, arguments + '\t' + outputPath + '\t' + DescriptorsOf(outputPath) + '\n');
    ::close(file);

    const std::string lines = ReadFile(log);
    const std::string wanted = arguments + '\t';
    int count = 0;
    for (std::size_t at = 0; at < lines.size(); at = lines.find('\n', at) + 1) {
        count += lines.compare(at, wanted.size(), wanted) == 0 ? 1 : 0;
    }
    return count;
}

bool IsRun(const std::string& stem, int number) {
    const std::string run = stem + '.' + std::to_string(number);
    return Exists(run + ".out") || Exists(run + ".exit");
}

bool IsShell(pid_t process) {
    std::string name = ReadFile("/proc/" + std::to_string(process) + "/comm");
    name.erase(name.find_last_not_of('\n') + 1);
    return name == "sh" || name == "dash" || name == "bash" || name == "busybox" || name == "ksh" ||
           name == "zsh";
}

// A shell that stays around the tool must die with it: it would report the tool's death in its own way.
[[noreturn]] void DieBySignal(int signal) {
    const pid_t parent = ::getppid();
    if (IsShell(parent)) {
        ::kill(parent, signal);
        ::_exit(0);
    }
    ::kill(::getpid(), signal);
    ::_exit(kBroken);
}

[[noreturn]] void End(const std::string& how) {
    constexpr std::string_view kSignal = "signal ";
    if (how.starts_with(kSignal)) {
        DieBySignal(std::atoi(how.c_str() + kSignal.size()));
    }
    ::_exit(std::atoi(how.c_str()));
}

}  // namespace

int main(int argumentCount, char** argumentList) {
    const char* const folder = std::getenv("REPLAY_CASE");
    const char* const log = std::getenv("REPLAY_LOG");
    if (folder == nullptr || log == nullptr) {
        return kBroken;
    }
    const std::string arguments = JoinArguments(argumentCount, argumentList);
    const std::string stem = std::string(folder) + "/tool/" + FileStem(arguments);
    const std::string outputPath = PathBehind(STDOUT_FILENO);
    int number = LogRun(log, arguments, outputPath);
    while (number > 0 && !IsRun(stem, number)) {
        --number;
    }
    if (number == 0) {
        WriteAll(STDOUT_FILENO, "Error - Invalid input at or near token unknown\n");
        return 1;
    }
    const std::string run = stem + '.' + std::to_string(number);
    if (Exists(run + ".out")) {
        WriteAll(STDOUT_FILENO, ReadFile(run + ".out"));
    } else {
        ::unlink(outputPath.c_str());
    }
    End(ReadFile(run + ".exit"));
}
