#pragma once

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
    bytes.copy(reinterpret_cast<char*>(all.data()), all.size());
    return std::bit_cast<Value>(all);
}

}  // namespace basics
