#pragma once

#include <cstddef>
#include <memory_resource>
#include <mutex>

namespace convlib {

/// Memory for display items: side by side, apart from their texts, in large pages where there are many. A
/// server's items are made together and deleted together, and each pass over a large list waits for memory
/// more than for anything else.
///
///     void* item = memory.Take();  // room for one item
///     memory.Give(item);           // the next one taken
///
/// Rooms given back are taken again; when all have been given back, the pages go back to where they came
/// from. Any thread may take and give. `Take` throws std::bad_alloc.
class ItemMemory final {
  public:
    /// `itemSize` is that of a class that is aligned as pointers are, and no smaller than one.
    explicit ItemMemory(std::size_t itemSize) : m_ItemSize(itemSize) {}

    [[nodiscard]] void* Take();
    void Give(void* item) noexcept;

  private:
    struct FreeRoom {
        FreeRoom* next;
    };

    /// The heap, told to use large pages for what fills some.
    class Pages final : public std::pmr::memory_resource {
        void* do_allocate(std::size_t size, std::size_t alignment) override;
        void do_deallocate(void* pages, std::size_t size, std::size_t alignment) override;
        [[nodiscard]] bool do_is_equal(const memory_resource& other) const noexcept override {
            return this == &other;
        }
    };

    const std::size_t m_ItemSize;
    std::mutex m_Mutex;
    Pages m_Pages;
    std::pmr::monotonic_buffer_resource m_Rooms{&m_Pages};
    FreeRoom* m_Free = nullptr;
    std::size_t m_Taken = 0;
};

}  // namespace convlib
