#pragma once

#include <dlfcn.h>

#include <cstdlib>

namespace faults {

/// The function of that name that this program's own stands in front of. `dlsym` is asked by its version,
/// since this program has a `dlsym` too.
template <class Function>
Function* Next(const char* name) noexcept {
    using LookUp = void*(void*, const char*);
    static auto* const lookUp = reinterpret_cast<LookUp*>(::dlvsym(RTLD_NEXT, "dlsym", "GLIBC_2.34"));
    void* const found = lookUp == nullptr ? nullptr : lookUp(RTLD_NEXT, name);
    if (found == nullptr) {
        std::abort();
    }
    return reinterpret_cast<Function*>(found);
}

}  // namespace faults
