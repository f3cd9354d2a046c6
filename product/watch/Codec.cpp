#include "Codec.h"

#include "basics/Time.h"

#include <algorithm>
#include <array>
#include <utility>

namespace watch {
namespace {

using inventory::Finding;
using inventory::Level;
using inventory::PartKind;
using inventory::Rule;

constexpr std::array<Level, 4> kLevels = {Level::Ok, Level::Unknown, Level::Warning, Level::Critical};

/// `last` is the last of the values.
template <typename Value>
Value ValueNamed(Value last, const std::string& name) {
    for (int value = 0; value <= static_cast<int>(last); ++value) {
        if (NameOf(static_cast<Value>(value)) == name) {
            return static_cast<Value>(value);
        }
    }
    throw CodecError("there is no \"" + name + '"');
}

const Json* Find(const Json& object, const char* key) {
    const auto found = object.find(key);
    return found == object.end() || found->is_null() ? nullptr : &*found;
}

[[noreturn]] void Refuse(const char* key) {
    throw CodecError(std::string(key) + " holds something else");
}

}  // namespace

Json ObjectFrom(std::string_view text) {
    Json value = Json::parse(text, nullptr, false);
    if (!value.is_object()) {
        throw CodecError("it is no object");
    }
    return value;
}

std::string TextOf(const Json& value) {
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string TextIn(const Json& object, const char* key) {
    const Json* const value = Find(object, key);
    if (value != nullptr && !value->is_string()) {
        Refuse(key);
    }
    return value == nullptr ? "" : value->get<std::string>();
}

std::uint64_t CountIn(const Json& object, const char* key) {
    const Json* const value = Find(object, key);
    if (value != nullptr && !value->is_number_unsigned()) {
        Refuse(key);
    }
    return value == nullptr ? 0 : value->get<std::uint64_t>();
}

bool TruthIn(const Json& object, const char* key) {
    const Json* const value = Find(object, key);
    if (value != nullptr && !value->is_boolean()) {
        Refuse(key);
    }
    return value != nullptr && value->get<bool>();
}

std::optional<TimePoint> TimeIn(const Json& object, const char* key) {
    const std::string text = TextIn(object, key);
    const std::optional<TimePoint> time = basics::TimeFromUtcText(text);
    if (!text.empty() && !time) {
        Refuse(key);
    }
    return time;
}

Level LevelIn(const Json& object, const char* key) {
    const std::string name = TextIn(object, key);
    const auto* const found =
        std::find_if(kLevels.begin(), kLevels.end(), [&](Level level) { return NameOf(level) == name; });
    if (found == kLevels.end()) {
        Refuse(key);
    }
    return *found;
}

void Put(Json& object, const char* key, const std::string& text) {
    object[key] = text.empty() ? Json(nullptr) : Json(text);
}

void Put(Json& object, const char* key, const std::optional<TimePoint>& time) {
    object[key] = time ? Json(basics::UtcText(*time)) : Json(nullptr);
}

void Put(Json& object, const Finding& finding) {
    object["part_kind"] = NameOf(finding.kind);
    object["rule"] = NameOf(finding.rule);
    Put(object, "controller", finding.controller);
    Put(object, "group", finding.group);
    Put(object, "part", finding.part);
    Put(object, "enclosure", finding.enclosure);
    Put(object, "slot", finding.slot);
    Put(object, "model", finding.product);
    Put(object, "serial", finding.serial);
    Put(object, "what", finding.what);
}

Finding FindingIn(const Json& object) {
    Finding finding;
    finding.kind = ValueNamed(PartKind::Drive, TextIn(object, "part_kind"));
    finding.rule = ValueNamed(Rule::Spares, TextIn(object, "rule"));
    finding.controller = TextIn(object, "controller");
    finding.group = TextIn(object, "group");
    finding.part = TextIn(object, "part");
    finding.enclosure = TextIn(object, "enclosure");
    finding.slot = TextIn(object, "slot");
    finding.product = TextIn(object, "model");
    finding.serial = TextIn(object, "serial");
    finding.what = TextIn(object, "what");
    return finding;
}

}  // namespace watch
