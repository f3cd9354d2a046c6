#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <string>
#include <string_view>

namespace basics {

/// A plain value as it lies in memory, for another process of this program.
template <typename Value>
[[nodiscard]] std::string BytesOf(const Value& value) {
    const auto bytes = std::bit_cast<std::array<unsigned char, sizeof(Value)>>(value);
    return {bytes.begin(), bytes.end()};
}

/// What those bytes are; where some are missing, the rest is as it is without a value.
template <typename Value>
[[nodiscard]] Value ValueIn(std::string_view bytes) {
    auto all = std::bit_cast<std::array<unsigned char, sizeof(Value)>>(Value{});
    std::copy_n(bytes.begin(), std::min(bytes.size(), all.size()), all.begin());
    return std::bit_cast<Value>(all);
}

}  // namespace basics
