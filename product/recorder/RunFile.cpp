#include "recorder/RunFile.h"

#include "basics/Descriptor.h"
#include "basics/Failure.h"
#include "basics/Words.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <string_view>
#include <system_error>

namespace recorder {
namespace {

namespace fs = std::filesystem;
using basics::Descriptor;
using basics::WriteWhole;

constexpr std::string_view kFirstLine = "run 1\n";
constexpr const char* kRunEnding = ".run";
constexpr const char* kNoteEnding = ".note";
constexpr mode_t kPrivate = 0600;

std::string LastError(const std::string& what) {
    return what + ": " + basics::ErrorText(errno);
}

bool CopyWhole(int from, int to) {
    constexpr std::size_t kChunk = 1U << 16U;
    std::string chunk(kChunk, '\0');
    for (;;) {
        const ssize_t count = ::read(from, chunk.data(), chunk.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return count == 0;
        }
        if (WriteWhole(to, std::string_view(chunk).substr(0, static_cast<std::size_t>(count))) != 0) {
            return false;
        }
    }
}

// A description of its own of the same file, so that the position of the other is left alone.
Descriptor OpenAgain(int descriptor) {
    return Descriptor(::open(("/proc/self/fd/" + std::to_string(descriptor)).c_str(), O_RDONLY | O_CLOEXEC));
}

std::string WriteRun(const fs::path& file, const std::string& header, int output) {
    struct stat status {};
    if (::fstat(output, &status) != 0 || !S_ISREG(status.st_mode)) {
        return "the output is no file";
    }
    const Descriptor from = OpenAgain(output);
    if (!from.IsOpen()) {
        return LastError("the output cannot be read");
    }
    Descriptor to(::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, kPrivate));
    const bool isWritten = to.IsOpen() && WriteWhole(to.Number(), header) == 0 &&
                           CopyWhole(from.Number(), to.Number()) && to.Close();
    return isWritten ? "" : LastError("the record cannot be written");
}

fs::path NumberedFile(const fs::path& folder, unsigned number) {
    return folder / (basics::Digits(number, 8) + kRunEnding);
}

std::string GiveNextName(const fs::path& file, const fs::path& folder) {
    for (unsigned number = 1;; ++number) {
        if (::renameat2(AT_FDCWD, file.c_str(), AT_FDCWD, NumberedFile(folder, number).c_str(),
                        RENAME_NOREPLACE) == 0) {
            return "";
        }
        if (errno != EEXIST) {
            return LastError("the record cannot be given its name");
        }
    }
}

std::vector<fs::path> FilesEndingWith(const fs::path& folder, const char* ending) {
    std::vector<fs::path> files;
    std::error_code error;
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
        if (at->path().extension() == ending) {
            files.push_back(at->path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace

std::string StoreRun(const fs::path& folder, const std::string& command, int status, int outputDescriptor) {
    const fs::path unfinished = folder / ("unfinished." + std::to_string(::getpid()));
    const std::string header = std::string(kFirstLine) + "status " + std::to_string(status) + "\ncommand " +
                               std::to_string(command.size()) + "\n" + command + "\n";
    std::string failure = WriteRun(unfinished, header, outputDescriptor);
    if (failure.empty()) {
        failure = GiveNextName(unfinished, folder);
    }
    if (!failure.empty()) {
        ::unlink(unfinished.c_str());
    }
    return failure;
}

void StoreNote(const fs::path& folder, const std::string& note) noexcept {
    try {
        const fs::path file = folder / (std::to_string(::getpid()) + kNoteEnding);
        std::ofstream(file, std::ios::binary) << note << '\n';
    } catch (...) {
        return;  // Then there is no note.
    }
}

std::vector<fs::path> RunFiles(const fs::path& folder) {
    return FilesEndingWith(folder, kRunEnding);
}

std::vector<fs::path> NoteFiles(const fs::path& folder) {
    return FilesEndingWith(folder, kNoteEnding);
}

std::optional<KeptRun> ReadRun(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::string firstLine;
    std::getline(in, firstLine);
    KeptRun run;
    std::string status;
    std::string command;
    std::size_t length = 0;
    in >> status >> run.status >> command >> length;
    if (!in || firstLine + "\n" != kFirstLine || status != "status" || command != "command" ||
        in.get() != '\n' || length > fs::file_size(file)) {
        return std::nullopt;
    }
    run.command.resize(length);
    in.read(run.command.data(), static_cast<std::streamsize>(length));
    if (in.get() != '\n') {
        return std::nullopt;
    }
    run.output.assign(std::istreambuf_iterator<char>(in), {});
    return run;
}

}  // namespace recorder
