#pragma once

#include "inventory/Finding.h"
#include "watch/Event.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace watch {

using Json = nlohmann::ordered_json;

/// Why a text is none of this room's.
class CodecError final : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// What is in a text; throws CodecError for what is no JSON object.
[[nodiscard]] Json ObjectFrom(std::string_view text);

/// On one line. Bytes that are no UTF-8 become U+FFFD.
[[nodiscard]] std::string TextOf(const Json& value);

// Values by key. Those that read throw CodecError where a value is another one than it should be; what is
// null or missing is empty.
[[nodiscard]] std::string TextIn(const Json& object, const char* key);
[[nodiscard]] std::uint64_t CountIn(const Json& object, const char* key);
[[nodiscard]] bool TruthIn(const Json& object, const char* key);
[[nodiscard]] std::optional<TimePoint> TimeIn(const Json& object, const char* key);
[[nodiscard]] inventory::Level LevelIn(const Json& object, const char* key);
void Put(Json& object, const char* key, const std::string& text);
void Put(Json& object, const char* key, const std::optional<TimePoint>& time);

/// Of a finding: the part, where it is and what it is, its state.
void Put(Json& object, const inventory::Finding& finding);
[[nodiscard]] inventory::Finding FindingIn(const Json& object);

}  // namespace watch
