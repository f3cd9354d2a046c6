#include "DisplayItem.h"

#include "ItemMemory.h"

#include <cstddef>
#include <new>

namespace convlib {
namespace {

/// Never destroyed: it keeps nothing once every item has been deleted, and an item that somebody holds beyond
/// the library's end is not to be pulled from under him.
ItemMemory& Memory() {
    static_assert(alignof(DisplayItem) == alignof(void*));
    alignas(ItemMemory) static std::byte place[sizeof(ItemMemory)];
    static ItemMemory& memory = *new (place) ItemMemory(sizeof(DisplayItem));
    return memory;
}

}  // namespace

void* DisplayItem::operator new(std::size_t /*size*/) {
    return Memory().Take();
}

// Whether a null pointer comes here is left to the compiler.
void DisplayItem::operator delete(void* item) noexcept {
    if (item != nullptr) {
        Memory().Give(item);
    }
}

}  // namespace convlib
