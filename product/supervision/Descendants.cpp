#include "supervision/Descendants.h"

#include "basics/Processes.h"
#include "basics/Words.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

namespace supervision {
namespace {

namespace fs = std::filesystem;
using std::chrono::steady_clock;

constexpr std::chrono::seconds kTimeToEnd{1};
constexpr std::chrono::seconds kTimeToBeKilled{5};
constexpr std::chrono::milliseconds kLook{10};

fs::path ProgramOf(pid_t process) {
    std::error_code gone;
    return fs::read_symlink(fs::path("/proc") / std::to_string(process) / "exe", gone);
}

// False when there is no child left to wait for.
bool Reap() noexcept {
    pid_t child = 0;
    do {
        child = ::waitpid(-1, nullptr, WNOHANG);
    } while (child > 0 || (child < 0 && errno == EINTR));
    return child == 0;
}

}  // namespace

std::string CommandOf(pid_t process) {
    std::ifstream file(fs::path("/proc") / std::to_string(process) / "cmdline");
    std::vector<std::string> words;
    for (std::string word; std::getline(file, word, '\0');) {
        words.push_back(word);
    }
    constexpr std::size_t kShellWords = 3;  // sh -c COMMAND
    const std::string command =
        words.size() == kShellWords && words[1] == "-c" ? words.back() : basics::Joined(words, " ");
    const std::size_t end = command.find(' ');
    const std::size_t folder = command.substr(0, end).rfind('/');
    return folder == std::string::npos ? command : command.substr(folder + 1);
}

std::string CommandBelow(pid_t process) {
    std::string command;
    for (const pid_t child : basics::ChildrenOf(process)) {
        if (command.empty()) {
            command = ProgramOf(child) == ProgramOf(process) ? CommandBelow(child) : CommandOf(child);
        }
    }
    return command;
}

bool EndDescendants() {
    std::vector<pid_t> asked;
    const auto start = steady_clock::now();
    while (Reap()) {
        const auto time = steady_clock::now() - start;
        if (time > kTimeToEnd + kTimeToBeKilled) {
            return false;
        }
        for (const pid_t child : basics::ChildrenOf(::getpid())) {
            if (time > kTimeToEnd) {
                ::kill(child, SIGKILL);
            } else if (std::find(asked.begin(), asked.end(), child) == asked.end()) {
                ::kill(child, SIGTERM);
                ::kill(child, SIGCONT);  // One that is stopped would not hear it.
                asked.push_back(child);
            }
        }
        std::this_thread::sleep_for(kLook);
    }
    return true;
}

}  // namespace supervision
