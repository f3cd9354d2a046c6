#include "JsonValue.h"
#include "views/Views.h"

namespace views {
namespace {

constexpr int kDifferencesVersion = 1;

// An empty value is one, unlike what was not told.
Value ValueTold(const std::optional<std::string>& value) {
    return value ? Value(*value) : Value(nullptr);
}

Value FromPart(const inventory::ChangedPart& part) {
    return {{"place", part.place},       {"controller", Told(part.controller)}, {"group", Told(part.group)},
            {"part", Told(part.part)},   {"enclosure", Told(part.enclosure)},   {"slot", Told(part.slot)},
            {"model", Told(part.model)}, {"serial", Told(part.serial)}};
}

Value FromChange(const inventory::Change& change) {
    Value value = {{"kind", NameOf(change.kind)}};
    value.update(FromPart(*change.part));
    value["key"] = Told(change.key);
    value["before"] = ValueTold(change.before);
    value["after"] = ValueTold(change.after);
    value["from"] = change.from ? FromPart(*change.from) : Value(nullptr);
    value["to"] = change.from ? FromPart(*change.part) : Value(nullptr);
    return value;
}

Value FromSource(const Source& source) {
    return {{"source", source.name}, {"kind", source.isScenario ? "scenario" : "document"}};
}

Value CountsOf(const inventory::Changes& changes) {
    Value counts = Value::object();
    for (const inventory::Change::Kind kind : inventory::kChangeKinds) {
        counts[std::string(NameOf(kind))] = CountOf(changes, kind);
    }
    counts["left_out"] = {{"movements", changes.movements},
                          {"redactions", changes.redactions},
                          {"repetitions", changes.repetitions}};
    return counts;
}

}  // namespace

std::string DifferencesJson(const inventory::Changes& changes, const Source& before, const Source& after) {
    Value value = Value::object();
    value["schema_version"] = kDifferencesVersion;
    value["before"] = FromSource(before);
    value["after"] = FromSource(after);
    value["counts"] = CountsOf(changes);
    value["changes"] = Each(changes.list, FromChange);
    return TextOf(value);
}

}  // namespace views
