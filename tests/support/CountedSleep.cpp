#include "test_support/CountedSleep.h"

#include "qel/QelWindows.h"

#include <atomic>
#include <utility>

namespace {

std::atomic<std::size_t> g_pauses{0};
std::function<void()> g_onPause = [] {};

}  // namespace

void Sleep(DWORD milliseconds) {
    g_pauses += milliseconds == 1000 ? 1 : 1000;  // Any other pause stands out.
    g_onPause();
}

namespace testsupport {

std::size_t PausesTaken() {
    return g_pauses;
}

void ResetPauses() {
    g_pauses = 0;
    g_onPause = [] {};
}

void OnPause(std::function<void()> hook) {
    g_onPause = std::move(hook);
}

}  // namespace testsupport
