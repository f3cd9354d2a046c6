// The allocation functions of this program, in front of the C library's for every library of the process and
// for the dynamic loader.
#include "Memory.h"

#include "Fault.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}

namespace {

/// Addresses of live blocks, in a table with open addressing that has no gaps within a run.
class LiveBlocks final {
  public:
    void Add(const void* block) noexcept {
        if (++m_Count == kSlots) {
            std::abort();  // More than a call ever holds.
        }
        std::size_t at = HomeOf(block);
        while (m_Slots[at] != nullptr) {
            at = Next(at);
        }
        m_Slots[at] = block;
    }

    void Remove(const void* block) noexcept {
        std::size_t at = HomeOf(block);
        while (m_Slots[at] != block) {
            if (m_Slots[at] == nullptr) {
                return;  // From before the watch.
            }
            at = Next(at);
        }
        --m_Count;
        m_Slots[at] = nullptr;
        // Whatever stands behind the gap and could have stood in it moves up.
        std::size_t gap = at;
        for (at = Next(at); m_Slots[at] != nullptr; at = Next(at)) {
            const std::size_t home = HomeOf(m_Slots[at]);
            if (((at - home) & kMask) >= ((at - gap) & kMask)) {
                m_Slots[gap] = m_Slots[at];
                m_Slots[at] = nullptr;
                gap = at;
            }
        }
    }

    [[nodiscard]] std::size_t Count() const noexcept { return m_Count; }

  private:
    static constexpr std::size_t kSlots = std::size_t{1} << 15U;
    static constexpr std::size_t kMask = kSlots - 1;

    static std::size_t HomeOf(const void* block) noexcept {
        constexpr std::uintptr_t kMix = 0x9E3779B97F4A7C15U;
        return (reinterpret_cast<std::uintptr_t>(block) >> 4U) * kMix >> 49U;
    }
    static std::size_t Next(std::size_t at) noexcept { return (at + 1) & kMask; }

    std::array<const void*, kSlots> m_Slots{};
    std::size_t m_Count = 0;
};
constinit LiveBlocks g_blocks;
constinit bool g_isWatched = false;

void* Watched(void* block) noexcept {
    if (g_isWatched && block != nullptr) {
        g_blocks.Add(block);
    }
    return block;
}

template <class Allocation>
void* Allocate(Allocation allocation) noexcept {
    if (faults::Strikes(faults::Kind::Memory)) {
        errno = ENOMEM;
        return nullptr;
    }
    return Watched(allocation());
}

}  // namespace

void faults::SetMemoryWatched(bool isWatched) noexcept {
    g_isWatched = isWatched;
}

std::size_t faults::BlocksLeft() {
    return g_blocks.Count();
}

extern "C" {

void* malloc(std::size_t size) noexcept {
    return Allocate([=] { return __libc_malloc(size); });
}

void* calloc(std::size_t count, std::size_t size) noexcept {
    return Allocate([=] { return __libc_calloc(count, size); });
}

void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    return Allocate([=] { return __libc_memalign(alignment, size); });
}

void* memalign(std::size_t alignment, std::size_t size) noexcept {
    return Allocate([=] { return __libc_memalign(alignment, size); });
}

int posix_memalign(void** place, std::size_t alignment, std::size_t size) noexcept {
    void* const block = Allocate([=] { return __libc_memalign(alignment, size); });
    if (block == nullptr) {
        return ENOMEM;
    }
    *place = block;
    return 0;
}

void* realloc(void* block, std::size_t size) noexcept {
    if (faults::Strikes(faults::Kind::Memory)) {
        errno = ENOMEM;
        return nullptr;
    }
    void* const moved = __libc_realloc(block, size);
    if (moved != nullptr || size == 0) {
        g_blocks.Remove(block);
    }
    return Watched(moved);
}

void free(void* block) noexcept {
    if (block != nullptr) {
        g_blocks.Remove(block);
        __libc_free(block);
    }
}
}
