// A stand-in for the shell and the tool in one: "sh -c '/opt/zorbalt/vdk/cli/vdkcli -ctrlinfo -a0'" prints
// the file of that name ("-ctrlinfo -a0") in the folder $STANDIN_REPORTS, its first half on standard output,
// the rest on standard error. Beside the report may stand
//   NAME.wait   the tool waits until standard input ends
//   NAME.spin   the tool takes this file away and then computes for ever
//   notes       every run adds a line: where its output goes, its open descriptors, its library path
// Plain system calls, since starting it is most of its work.

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr int kUnknownCommand = 98;
constexpr std::size_t kBlock = 64 * 1024;

void WriteAll(int file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t length = ::write(file, text.data(), text.size());
        if (length <= 0) {
            ::_exit(kUnknownCommand);
        }
        text.remove_prefix(static_cast<std::size_t>(length));
    }
}

std::string ReadAll(int file) {
    std::string text;
    std::array<char, kBlock> block;
    for (ssize_t length = 0; (length = ::read(file, block.data(), block.size())) > 0;) {
        text.append(block.data(), static_cast<std::size_t>(length));
    }
    return text;
}

std::string OpenDescriptors() {
    std::vector<int> numbers;
    DIR* const folder = ::opendir("/proc/self/fd");
    while (const dirent* const entry = folder == nullptr ? nullptr : ::readdir(folder)) {
        const int number = std::atoi(entry->d_name);
        if (entry->d_name[0] != '.' && number != ::dirfd(folder)) {
            numbers.push_back(number);
        }
    }
    std::sort(numbers.begin(), numbers.end());
    std::string text;
    for (const int number : numbers) {
        text.append(text.empty() ? "" : ",").append(std::to_string(number));
    }
    return text;
}

void TakeNotes(const std::string& file) {
    const int notes = ::open(file.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
    if (notes < 0) {
        return;
    }
    ::close(notes);  // Its own descriptor is not to be among those noted.
    std::array<char, kBlock> path;
    const ssize_t length = ::readlink("/proc/self/fd/1", path.data(), path.size());
    std::string line(path.data(), static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
    const char* const libraries = std::getenv("LD_LIBRARY_PATH");
    line += '\t' + OpenDescriptors() + '\t' + (libraries == nullptr ? "(none)" : libraries) + '\n';
    const int again = ::open(file.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
    WriteAll(again, line);
    ::close(again);
}

}  // namespace

int main(int count, char** arguments) {
    const char* const folder = std::getenv("STANDIN_REPORTS");
    const std::string command = count == 3 ? arguments[2] : "";
    const std::size_t blank = command.find(' ');
    if (folder == nullptr || blank == std::string::npos) {
        return kUnknownCommand;
    }
    TakeNotes(std::string(folder) + "/notes");
    const std::string report = std::string(folder) + "/" + command.substr(blank + 1);
    if (::access((report + ".wait").c_str(), F_OK) == 0) {
        ReadAll(STDIN_FILENO);
    }
    if (::unlink((report + ".spin").c_str()) == 0) {
        while (::getppid() != 0) {
        }
    }
    const int file = ::open(report.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        WriteAll(STDOUT_FILENO, "Error - Invalid input at or near token " + command.substr(blank + 1) + "\n");
        return 1;
    }
    const std::string text = ReadAll(file);
    WriteAll(STDOUT_FILENO, std::string_view(text).substr(0, text.size() / 2));
    WriteAll(STDERR_FILENO, std::string_view(text).substr(text.size() / 2));
    return 0;
}
