#include "tests/support/CountedSleep.h"

#include "qel/QelWindows.h"

#include <atomic>

namespace {

std::atomic<std::size_t> g_pauses{0};

}  // namespace

void Sleep(DWORD milliseconds) {
    g_pauses += milliseconds == 1000 ? 1 : 1000;
}  // Any other pause stands out.

namespace testsupport {

std::size_t PausesTaken() {
    return g_pauses;
}
void ResetPauses() {
    g_pauses = 0;
}

}  // namespace testsupport
