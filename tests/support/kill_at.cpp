// Preloaded into a program: ends it, as by kill -9, at its nth call to the system of those that change
// anything or that it waits in. KILL_AT_PROGRAM names the program, KILL_AT says n (0: never), KILL_AT_COUNT a
// file for the number of calls of a program that ends by itself. What it starts, and its children, are left
// alone. Half of what was to be written at that call is written.

#include <dlfcn.h>
#include <poll.h>
#include <signal.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

pid_t counted = 0;
unsigned long killAt = 0;
unsigned long calls = 0;

__attribute__((constructor)) void Begin() {
    char path[PATH_MAX] = "";
    (void)!::readlink("/proc/self/exe", path, sizeof path - 1);
    const char* const wanted = std::getenv("KILL_AT_PROGRAM");
    if (wanted != nullptr && std::strcmp(path, wanted) == 0) {
        counted = ::getpid();
        const char* const number = std::getenv("KILL_AT");
        killAt = number == nullptr ? 0 : std::strtoul(number, nullptr, 10);
    }
}

__attribute__((destructor)) void End() {
    const char* const path = std::getenv("KILL_AT_COUNT");
    if (counted == ::getpid() && path != nullptr) {
        if (std::FILE* const file = std::fopen(path, "w")) {
            (void)std::fprintf(file, "%lu\n", calls);
            (void)std::fclose(file);
        }
    }
}

/// The call's number has come. It ends the process, after what was given to it.
bool IsLast() {
    return counted != 0 && ::getpid() == counted && ++calls == killAt;
}

void Die() {
    (void)::raise(SIGKILL);
}

template <typename Function>
Function* Next(const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

#define CALL(result, name, parameters, arguments)                 \
    extern "C" result name parameters {                           \
        if (IsLast()) {                                           \
            Die();                                                \
        }                                                         \
        static auto* const next = Next<result parameters>(#name); \
        return next arguments;                                    \
    }

#define WRITE(name, parameters, whole, half)                       \
    extern "C" ssize_t name parameters {                           \
        static auto* const next = Next<ssize_t parameters>(#name); \
        if (IsLast()) {                                            \
            (void)!next half;                                      \
            Die();                                                 \
        }                                                          \
        return next whole;                                         \
    }

WRITE(write, (int file, const void* bytes, size_t size), (file, bytes, size), (file, bytes, size / 2))
WRITE(pwrite, (int file, const void* bytes, size_t size, off_t place), (file, bytes, size, place),
      (file, bytes, size / 2, place))
WRITE(pwrite64, (int file, const void* bytes, size_t size, off64_t place), (file, bytes, size, place),
      (file, bytes, size / 2, place))
CALL(int, fdatasync, (int file), (file))
CALL(int, fsync, (int file), (file))
CALL(int, ftruncate, (int file, off_t size), (file, size))
CALL(int, ftruncate64, (int file, off64_t size), (file, size))
CALL(int, unlink, (const char* path), (path))
CALL(pid_t, fork, (), ())
CALL(int, kill, (pid_t process, int signal), (process, signal))
CALL(pid_t, waitpid, (pid_t process, int* status, int options), (process, status, options))
CALL(int, poll, (struct pollfd * files, nfds_t count, int timeout), (files, count, timeout))
