#pragma once

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

namespace basics {

/// A plain value as it lies in memory, for another process of this program.
template <typename Value>
[[nodiscard]] std::string BytesOf(const Value& value) {
    static_assert(std::is_trivially_copyable_v<Value>);
    return {reinterpret_cast<const char*>(&value), sizeof value};
}

/// What those bytes are; where some are missing, the rest is as it is without a value.
template <typename Value>
[[nodiscard]] Value ValueIn(std::string_view bytes) {
    static_assert(std::is_trivially_copyable_v<Value>);
    Value value{};
    std::memcpy(&value, bytes.data(), std::min(bytes.size(), sizeof value));
    return value;
}

}  // namespace basics
