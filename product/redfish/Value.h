#pragma once

#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace redfish {

using Value = nlohmann::ordered_json;

// Members of an object. What was not told is left out.

void Put(Value& object, const char* key, std::string_view text);
/// A whole number is written as one: 31, not 31.0.
void PutNumber(Value& object, const char* key, std::optional<double> number);

template <typename Number>
void PutCount(Value& object, const char* key, const std::optional<Number>& number) {
    if (number) {
        object[key] = *number;
    }
}

/// {"@odata.id": "/redfish/v1/Systems/1"}
[[nodiscard]] Value LinkTo(const std::string& path);

/// An array of links with its count before it: "Drives@odata.count", "Drives".
void PutLinks(Value& object, const std::string& key, const std::vector<std::string>& paths);

/// On one line. Bytes that are no UTF-8 become U+FFFD.
[[nodiscard]] std::string TextOf(const Value& value);

}  // namespace redfish
