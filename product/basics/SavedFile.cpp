#include "basics/SavedFile.h"

#include "basics/Descriptor.h"
#include "basics/Failure.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace basics {
namespace {

[[noreturn]] void FailToRead(const std::string& path, const std::string& why) {
    FailSurroundings((path == "-" ? "standard input" : path) + " cannot be read: " + why);
}

}  // namespace

std::string ReadFile(const std::string& path, std::size_t mostMebibytes) {
    constexpr std::size_t kPiece = std::size_t{64} * 1024;
    constexpr std::size_t kMebibyte = std::size_t{1024} * 1024;
    const bool isStandardInput = path == "-";
    const Descriptor opened(isStandardInput ? ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                                            : ::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!opened.IsOpen()) {
        FailToRead(path, ErrorText(errno));
    }
    std::string text;
    std::array<char, kPiece> piece;
    for (ssize_t size = 1; size != 0;) {
        size = ::read(opened.Number(), piece.data(), piece.size());
        if (size < 0 && errno != EINTR) {
            FailToRead(path, ErrorText(errno));
        }
        text.append(piece.data(), size < 0 ? 0 : static_cast<std::size_t>(size));
        if (text.size() > mostMebibytes * kMebibyte) {
            FailToRead(path,
                       "it is larger than " + std::to_string(mostMebibytes) + " MiB, as no RAID document is");
        }
    }
    return text;
}

}  // namespace basics
