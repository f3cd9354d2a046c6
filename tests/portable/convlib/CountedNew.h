#pragma once

#include <cstddef>

/// Replaces the allocation operators of the whole test program, so that a test can count allocations and make
/// a chosen one fail. Counts are of the calling thread.
namespace countednew {

/// While it stands, counts this thread's allocations; the one numbered `failAt` (from 0) throws
/// `std::bad_alloc`, or yields null where the caller asked for that. One at a time.
class Watch final {
  public:
    static constexpr std::size_t kNever = static_cast<std::size_t>(-1);

    explicit Watch(std::size_t failAt = kNever);
    ~Watch();
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    [[nodiscard]] std::size_t Allocations() const;
    [[nodiscard]] std::size_t Bytes() const;  ///< asked for in total, freed ones included
};

}  // namespace countednew
