// In place of Memory.cpp under the sanitizers, whose allocation functions must stay: only what C++ allocates
// can fail, and lost memory is the leak sanitizer's to find.
#include "Fault.h"
#include "Memory.h"

#include <sanitizer/lsan_interface.h>

#include <cstdlib>
#include <new>

namespace {

void* Allocate(std::size_t size) noexcept {
    return faults::Strikes(faults::Kind::Memory) ? nullptr : std::malloc(size);
}

}  // namespace

void faults::SetMemoryWatched(bool /*isWatched*/) noexcept {}

std::size_t faults::BlocksLeft() {
    return __lsan_do_recoverable_leak_check() == 0 ? 0 : 1;
}

void* operator new(std::size_t size) {
    if (void* const block = Allocate(size)) {
        return block;
    }
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return Allocate(size);
}
void* operator new[](std::size_t size) {
    return operator new(size);
}
void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return Allocate(size);
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t /*size*/) noexcept {
    std::free(block);
}
void operator delete(void* block, const std::nothrow_t& /*tag*/) noexcept {
    std::free(block);
}
void operator delete[](void* block) noexcept {
    std::free(block);
}
void operator delete[](void* block, std::size_t /*size*/) noexcept {
    std::free(block);
}
void operator delete[](void* block, const std::nothrow_t& /*tag*/) noexcept {
    std::free(block);
}
