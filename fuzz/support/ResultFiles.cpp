// Else the system's headers have inline versions of the functions that are replaced below.
#undef _FORTIFY_SOURCE

#include "ResultFiles.h"

#include "Property.h"

#include "qel/QelWindows.h"

#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <functional>
#include <map>

namespace fuzzing {
namespace {

constexpr std::string_view kNameEnd = "_MngSrvRaid.txt";

std::map<std::string, std::string_view, std::less<>> g_files;
std::FILE* g_open = nullptr;  // one at a time: the module reads one report after the other
std::string_view g_unread;

bool IsResultFile(std::string_view path) {
    return path.ends_with(kNameEnd);
}

/// The system's own function, behind the one of that name here.
template <typename Function>
Function* Next(const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

std::FILE* OpenOnDisk(const char* path, const char* mode) {
    static auto* const next = Next<std::FILE*(const char*, const char*)>("fopen64");
    return next(path, mode);
}

/// What an open file is to the standard library: a real one, so that it has a number of its own.
std::FILE* Stand() {
    static std::FILE* const stand = OpenOnDisk("/dev/null", "r");
    return stand;
}

}  // namespace

void ResultFiles::Write(const std::string& path, std::string_view text) {
    g_files.insert_or_assign(path, text);
}

void ResultFiles::Remove(const std::string& path) {
    g_files.erase(path);
}

bool ResultFiles::IsOneOpen() {
    return g_open != nullptr;
}

std::size_t ResultFiles::RemoveAll() {
    const std::size_t count = g_files.size();
    g_files.clear();
    return count;
}

}  // namespace fuzzing

using namespace fuzzing;

// In the place of the framework's and the system's own.

BOOL DeleteFileA(const char* path) {
    return g_files.erase(path) == 1 ? 1 : 0;
}

extern "C" {

int stat(const char* path, struct stat* status) noexcept {
    if (!IsResultFile(path)) {
        static auto* const next = Next<int(const char*, struct stat*)>("stat");
        return next(path, status);
    }
    *status = {};
    status->st_mode = S_IFREG;
    errno = ENOENT;
    return g_files.contains(std::string_view(path)) ? 0 : -1;
}

std::FILE* fopen64(const char* path, const char* mode) {
    if (!IsResultFile(path)) {
        return OpenOnDisk(path, mode);
    }
    Require(g_open == nullptr, "one report is read at a time");
    const auto file = g_files.find(std::string_view(path));
    if (file == g_files.end()) {
        errno = ENOENT;
        return nullptr;
    }
    g_unread = file->second;
    return g_open = Stand();
}

ssize_t read(int descriptor, void* buffer, std::size_t size) {
    if (g_open == nullptr || descriptor != ::fileno(g_open)) {
        static auto* const next = Next<ssize_t(int, void*, std::size_t)>("read");
        return next(descriptor, buffer, size);
    }
    const std::size_t count = g_unread.copy(static_cast<char*>(buffer), size);
    g_unread.remove_prefix(count);
    return static_cast<ssize_t>(count);
}

int fclose(std::FILE* file) {
    if (file != g_open || file == nullptr) {
        static auto* const next = Next<int(std::FILE*)>("fclose");
        return next(file);
    }
    g_open = nullptr;
    return 0;
}
}
