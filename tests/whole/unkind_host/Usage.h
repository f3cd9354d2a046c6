#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace unkindhost {

/// What this process holds, and what its calls left on disk. All of it stays the same from call to call.
struct Usage {
    std::size_t resident = 0;  ///< KiB
    std::size_t heap = 0;      ///< bytes that malloc has given out; 0 under the address sanitizer
    std::size_t descriptors = 0;
    std::size_t children = 0;
    std::size_t threads = 0;
    std::size_t libraries = 0;    ///< files mapped
    std::size_t resultFiles = 0;  ///< in the install root's tmp/MSRAID

    [[nodiscard]] static Usage Now(const std::filesystem::path& installRoot);

    /// What there is more of than in `before`, one line each; "" when nothing. Memory may vary a little, by
    /// what the C library keeps in reserve.
    [[nodiscard]] std::string GrowthSince(const Usage& before) const;
};

}  // namespace unkindhost
