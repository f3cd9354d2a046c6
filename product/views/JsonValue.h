#pragma once

#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdint>
#include <optional>
#include <string>

namespace views {

using Value = nlohmann::ordered_json;

/// What was not told is null, so that nobody takes it for an empty text.
[[nodiscard]] inline Value Told(const std::string& text) {
    return text.empty() ? Value(nullptr) : Value(text);
}

/// A whole number is written as one: 31, not 31.0.
[[nodiscard]] inline Value NumberValue(const std::optional<double>& number) {
    constexpr double kMostExact = 1LL << 53;
    if (!number) {
        return nullptr;
    }
    const bool isWhole = std::trunc(*number) == *number && std::abs(*number) <= kMostExact;
    return isWhole ? Value(static_cast<std::int64_t>(*number)) : Value(*number);
}

/// An array with what `make` makes of each.
template <typename Parts, typename Make>
[[nodiscard]] Value Each(const Parts& parts, Make make) {
    Value array = Value::array();
    for (const auto& part : parts) {
        array.push_back(make(part));
    }
    return array;
}

/// The whole text. Bytes that are no UTF-8 become U+FFFD.
[[nodiscard]] inline std::string TextOf(const Value& value) {
    constexpr int kIndentation = 2;
    return value.dump(kIndentation, ' ', false, Value::error_handler_t::replace) + '\n';
}

}  // namespace views
