#include "Value.h"

#include <cmath>

namespace redfish {

void Put(Value& object, const char* key, std::string_view text) {
    if (!text.empty()) {
        object[key] = text;
    }
}

void PutNumber(Value& object, const char* key, std::optional<double> number) {
    constexpr double kMostExact = 1LL << 53;
    if (!number || !std::isfinite(*number)) {
        return;
    }
    const bool isWhole = std::trunc(*number) == *number && std::abs(*number) <= kMostExact;
    object[key] = isWhole ? Value(static_cast<std::int64_t>(*number)) : Value(*number);
}

Value LinkTo(const std::string& path) {
    return {{"@odata.id", path}};
}

void PutLinks(Value& object, const std::string& key, const std::vector<std::string>& paths) {
    Value links = Value::array();
    for (const std::string& path : paths) {
        links.push_back(LinkTo(path));
    }
    object[key + "@odata.count"] = paths.size();
    object[key] = std::move(links);
}

std::string TextOf(const Value& value) {
    return value.dump(-1, ' ', false, Value::error_handler_t::replace);
}

}  // namespace redfish
