// The system calls of this program, in front of the C library's for every library of the process. A call that
// fails leaves behind what the kernel would: a close that fails has closed all the same, and a child whose
// wait fails is gone.
#include "Fault.h"
#include "Next.h"

#include "qel/QelWindows.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <string_view>

using faults::Kind;
using faults::Next;
using faults::Place;
using faults::PlaceScope;
using faults::Strikes;

namespace {

int Fail(int error) noexcept {
    errno = error;
    return -1;
}

Place PlaceOf(const char* path) {
    if (std::string_view(path).ends_with("/etc/app.key")) {
        return Place::AppKey;
    }
    return faults::g_isVersionQuery ? Place::VersionFile : Place::Report;
}

}  // namespace

void Sleep(DWORD /*milliseconds*/) {}  // The module's pauses cost nothing.

extern "C" {

int open(const char* path, int flags, ...) {
    static auto* const next = Next<int(const char*, int, ...)>("open");
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return Strikes(Kind::Open) ? Fail(ENOSPC) : next(path, flags, mode);
}

std::FILE* fopen64(const char* path, const char* mode) {
    static auto* const next = Next<std::FILE*(const char*, const char*)>("fopen64");
    faults::g_openedLast = PlaceOf(path);
    const PlaceScope scope(faults::g_openedLast);
    if (Strikes(Kind::OpenStream)) {
        errno = EMFILE;
        return nullptr;
    }
    return next(path, mode);
}

std::FILE* fopen(const char* path, const char* mode) {
    return fopen64(path, mode);
}

ssize_t read(int file, void* place, std::size_t size) {
    static auto* const next = Next<ssize_t(int, void*, std::size_t)>("read");
    const PlaceScope scope(faults::g_openedLast);
    if (Strikes(Kind::InterruptedRead)) {
        return Fail(EINTR);
    }
    return Strikes(Kind::Read) ? Fail(EIO) : next(file, place, size);
}

off64_t lseek64(int file, off64_t offset, int whence) noexcept {
    static auto* const next = Next<off64_t(int, off64_t, int)>("lseek64");
    return Strikes(Kind::Seek) ? Fail(EIO) : next(file, offset, whence);
}

ssize_t write(int file, const void* bytes, std::size_t size) {
    static auto* const next = Next<ssize_t(int, const void*, std::size_t)>("write");
    return Strikes(Kind::Write) ? Fail(ENOSPC) : next(file, bytes, size);
}

int close(int file) {
    static auto* const next = Next<int(int)>("close");
    const int result = next(file);
    return Strikes(Kind::Close) ? Fail(EIO) : result;
}

int fclose(std::FILE* file) {
    static auto* const next = Next<int(std::FILE*)>("fclose");
    const int result = next(file);
    return Strikes(Kind::CloseStream) ? Fail(EIO) : result;
}

int stat(const char* path, struct stat* status) noexcept {
    static auto* const next = Next<int(const char*, struct stat*)>("stat");
    return Strikes(Kind::Stat) ? Fail(EIO) : next(path, status);
}

int lstat(const char* path, struct stat* status) noexcept {
    static auto* const next = Next<int(const char*, struct stat*)>("lstat");
    return Strikes(Kind::LinkStat) ? Fail(EIO) : next(path, status);
}

pid_t fork() noexcept {
    static auto* const next = Next<pid_t()>("fork");
    return Strikes(Kind::Fork) ? Fail(EAGAIN) : next();
}

pid_t waitpid(pid_t child, int* status, int options) {
    static auto* const next = Next<pid_t(pid_t, int*, int)>("waitpid");
    if (Strikes(Kind::InterruptedWait)) {
        return Fail(EINTR);
    }
    if (Strikes(Kind::Wait)) {  // As in a host that ignores the signal of its children's death.
        next(child, nullptr, 0);
        return Fail(ECHILD);
    }
    return next(child, status, options);
}

int dup2(int from, int to) noexcept {
    static auto* const next = Next<int(int, int)>("dup2");
    return Strikes(Kind::Duplicate) ? Fail(EBUSY) : next(from, to);
}

int execlp(const char* file, const char* first, ...) noexcept {
    static auto* const next = Next<int(const char*, char* const*)>("execvp");
    std::array<char*, 8> arguments{};  // More than the module ever passes.
    va_list rest;
    va_start(rest, first);
    const char* argument = first;
    for (std::size_t at = 0; at + 1 < arguments.size() && argument != nullptr; ++at) {
        arguments[at] = const_cast<char*>(argument);
        argument = va_arg(rest, const char*);
    }
    va_end(rest);
    return Strikes(Kind::Execute) ? Fail(ENOMEM) : next(file, arguments.data());
}

int unlink(const char* path) noexcept {
    static auto* const next = Next<int(const char*)>("unlink");
    return Strikes(Kind::Unlink) ? Fail(EIO) : next(path);
}

int mkdir(const char* path, mode_t mode) noexcept {
    static auto* const next = Next<int(const char*, mode_t)>("mkdir");
    return Strikes(Kind::MakeDirectory) ? Fail(ENOSPC) : next(path, mode);
}
}
