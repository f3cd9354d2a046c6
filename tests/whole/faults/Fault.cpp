#include "Fault.h"

#include "Memory.h"

#include <sys/mman.h>

#include <array>
#include <cerrno>
#include <new>
#include <system_error>

namespace faults {
namespace {

/// Shared with the children that the module forks, so that their calls are counted too. One thread and one
/// running child at a time.
struct Plan {
    Order order;
    bool isOver = false;
    std::array<unsigned long, kKinds> calls{};
    unsigned long timesStruck = 0;
    Place firstStruckAt = Place::LoadingModule;
};
Plan* g_plan = nullptr;
bool g_isOpen = false;

}  // namespace

const char* NameOf(Kind kind) {
    constexpr std::array<const char*, kKinds> kNames = {
        "memory", "open",  "fopen",   "read",    "read (EINTR)",    "lseek", "write",  "close",  "fclose",
        "stat",   "lstat", "fork",    "waitpid", "waitpid (EINTR)", "dup2",  "execlp", "unlink", "mkdir",
        "dlopen", "dlsym", "dlclose", "trace"};
    return kNames.at(static_cast<std::size_t>(kind));
}

void StartOrder(const Order& order) {
    static void* const shared =
        ::mmap(nullptr, sizeof(Plan), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED) {
        throw std::system_error(errno, std::generic_category(), "mmap");
    }
    g_plan = new (shared) Plan;
    g_plan->order = order;
}

Window::Window() {
    g_isOpen = true;
    SetMemoryWatched(true);
}

Window::~Window() {
    SetMemoryWatched(false);
    g_isOpen = false;
}

void EndOrder() {
    g_plan->isOver = true;
}

unsigned long CallsOf(Kind kind) {
    return g_plan->calls.at(static_cast<std::size_t>(kind));
}

unsigned long TimesStruck() {
    return g_plan->timesStruck;
}

Place FirstStruckAt() {
    return g_plan->firstStruckAt;
}

bool Strikes(Kind kind) noexcept {
    if (!g_isOpen || g_plan == nullptr || g_plan->isOver) {
        return false;
    }
    const unsigned long number = ++g_plan->calls[static_cast<std::size_t>(kind)];
    const Order& order = g_plan->order;
    if (kind != order.kind || order.at == 0 || number < order.at || (number > order.at && !order.isLasting)) {
        return false;
    }
    if (g_plan->timesStruck++ == 0) {
        g_plan->firstStruckAt = g_place;
    }
    return true;
}

}  // namespace faults
