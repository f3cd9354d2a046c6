// Stands in for the shell and the tool in one, since they are started many thousand times: `sh -c "DIR/vdkcli
// -v"` prints v.txt of the scenario as the simulator would. A report that cannot be written whole is a failed
// run.
#include <fcntl.h>
#include <unistd.h>

#include <cstring>

namespace {

constexpr int kNoReport = 2;
constexpr int kNotWritten = 3;

/// The report's file for arguments such as "-pdinfo -pd[252:0] -a0": pdinfo_pd252.0_a0.txt.
void MakePath(const char* arguments, char* path, std::size_t size) {
    std::strcpy(path, "/opt/zorbalt/vdk/scenario/");
    std::size_t at = std::strlen(path);
    for (; *arguments != '\0' && at + 5 < size; ++arguments) {
        switch (*arguments) {
            case '-':
            case '[':
            case ']':
                break;
            case ' ':
                path[at++] = '_';
                break;
            case ':':
                path[at++] = '.';
                break;
            default:
                path[at++] = *arguments;
        }
    }
    std::strcpy(path + at, ".txt");
}

bool WriteAll(const char* bytes, ssize_t size) {
    while (size > 0) {
        const ssize_t written = ::write(STDOUT_FILENO, bytes, static_cast<std::size_t>(size));
        if (written <= 0) {
            return false;
        }
        bytes += written;
        size -= written;
    }
    return true;
}

}  // namespace

int main(int argumentCount, char** argumentList) {
    const char* const arguments = argumentCount == 3 ? std::strstr(argumentList[2], "/vdkcli ") : nullptr;
    if (arguments == nullptr) {
        return kNoReport;
    }
    static char path[256];
    MakePath(arguments + std::strlen("/vdkcli "), path, sizeof path);
    const int report = ::open(path, O_RDONLY);
    if (report < 0) {
        return kNoReport;
    }
    static char block[65536];
    ssize_t size = 0;
    while ((size = ::read(report, block, sizeof block)) > 0) {
        if (!WriteAll(block, size)) {
            return kNotWritten;
        }
    }
    return 0;
}
