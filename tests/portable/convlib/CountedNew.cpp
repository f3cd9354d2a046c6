#include "CountedNew.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

struct Counts {
    bool isWatched = false;
    std::size_t failAt = countednew::Watch::kNever;
    std::size_t allocations = 0;
    std::size_t bytes = 0;
};

thread_local Counts counts;

void* Allocate(std::size_t size) {
    if (counts.isWatched) {
        if (counts.allocations++ == counts.failAt) {
            return nullptr;
        }
        counts.bytes += size;
    }
    return std::malloc(size);
}

void* AllocateOrThrow(std::size_t size) {
    void* const memory = Allocate(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

}  // namespace

void* operator new(std::size_t size) {
    return AllocateOrThrow(size);
}
void* operator new[](std::size_t size) {
    return AllocateOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}

namespace countednew {

Watch::Watch(std::size_t failAt) {
    counts = {true, failAt, 0, 0};
}
Watch::~Watch() {
    counts = {};
}

std::size_t Watch::Allocations() const {
    return counts.allocations;
}
std::size_t Watch::Bytes() const {
    return counts.bytes;
}

}  // namespace countednew
