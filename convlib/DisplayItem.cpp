#include "convlib/DisplayItem.h"

#include "convlib/ItemMemory.h"

namespace convlib {
namespace {

ItemMemory& Memory() {
    static ItemMemory memory(sizeof(DisplayItem));
    return memory;
}

}  // namespace

void* DisplayItem::operator new(std::size_t /*size*/) {
    return Memory().Take();
}

void DisplayItem::operator delete(void* item) noexcept {
    Memory().Give(item);
}

}  // namespace convlib
