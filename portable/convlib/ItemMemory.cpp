#include "ItemMemory.h"

#include <algorithm>
#include <new>

#include <sanitizer/asan_interface.h>  // Its marks are nothing where the address sanitizer is not built in.
#include <sys/mman.h>

namespace convlib {
namespace {

constexpr std::size_t kLargePage = std::size_t{2} << 20U;

/// Whether what is left empty of the last large page is little beside the rest.
bool IsForLargePages(std::size_t size) {
    return size >= 4 * kLargePage;
}

std::align_val_t AlignmentOf(std::size_t size, std::size_t alignment) {
    return std::align_val_t(IsForLargePages(size) ? std::max(alignment, kLargePage) : alignment);
}

}  // namespace

void* ItemMemory::Take() {
    const std::lock_guard lock(m_Mutex);
    void* room = m_Free;
    if (m_Free != nullptr) {
        m_Free = m_Free->next;
        ASAN_UNPOISON_MEMORY_REGION(room, m_ItemSize);
    } else {
        room = m_Rooms.allocate(m_ItemSize, alignof(FreeRoom));
    }
    ++m_Taken;
    return room;
}

void ItemMemory::Give(void* item) noexcept {
    const std::lock_guard lock(m_Mutex);
    m_Free = new (item) FreeRoom{m_Free};
    ASAN_POISON_MEMORY_REGION(m_Free + 1, m_ItemSize - sizeof(FreeRoom));
    --m_Taken;
    if (m_Taken == 0) {
        m_Free = nullptr;
        m_Rooms.release();
    }
}

void* ItemMemory::Pages::do_allocate(std::size_t size, std::size_t alignment) {
    void* const pages = ::operator new(size, AlignmentOf(size, alignment));
    if (IsForLargePages(size)) {
        ::madvise(pages, size, MADV_HUGEPAGE);  // Where the system has none, small ones do.
    }
    return pages;
}

void ItemMemory::Pages::do_deallocate(void* pages, std::size_t size, std::size_t alignment) {
    ::operator delete(pages, AlignmentOf(size, alignment));
}

}  // namespace convlib
