#include "qel/QelWindows.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

void ShowMessage(const char* text, const char* caption) {
    const char* const wish = std::getenv("ZORBALT_SHOW_MESSAGE");
    if (wish != nullptr && *wish != '\0') {
        std::fprintf(stderr, "%s: %s\n", caption == nullptr ? "" : caption, text == nullptr ? "" : text);
    }
}

BSTR SysAllocString(const char* text) {
    return text == nullptr ? nullptr : ::strdup(text);
}

void SysFreeString(BSTR text) {
    std::free(text);
}

int lstrcmpW(const char* left, const char* right) {
    if (left == nullptr || right == nullptr) {
        return static_cast<int>(left != nullptr) - static_cast<int>(right != nullptr);
    }
    return std::strcmp(left, right);
}

DWORD GetLastError() {
    return static_cast<DWORD>(errno);
}

void Sleep(DWORD milliseconds) {
    constexpr DWORD kPerSecond = 1000;
    constexpr long kNanosecondsEach = 1'000'000;
    timespec left{static_cast<time_t>(milliseconds / kPerSecond),
                  static_cast<long>(milliseconds % kPerSecond) * kNanosecondsEach};
    while (::nanosleep(&left, &left) != 0 && errno == EINTR) {
    }
}

unsigned long GetCurrentThreadId() {
    return static_cast<unsigned long>(::gettid());
}

int _mkdir(const char* path) {
    constexpr mode_t kModeBeforeUmask = 0777;
    return ::mkdir(path, kModeBeforeUmask);
}

BOOL DeleteFileA(const char* path) {
    return ::unlink(path) == 0 ? 1 : 0;
}
