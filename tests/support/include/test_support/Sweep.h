#pragma once

#include <cstddef>

namespace testsupport {

/// How many points of a sweep are tried, of so many: under the sanitizers, which make each of them cost
/// several times as much, the sweep is coarser.
constexpr std::size_t PointsOf(std::size_t whole) {
#ifdef __SANITIZE_ADDRESS__
    constexpr std::size_t kCoarser = 4;
    return whole / kCoarser;
#else
    return whole;
#endif
}

}  // namespace testsupport
