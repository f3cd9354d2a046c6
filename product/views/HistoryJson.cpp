#include "JsonValue.h"
#include "basics/Time.h"
#include "views/History.h"

namespace views {
namespace {

using history::TimePoint;

constexpr int kHistoryVersion = 1;

Value TimeValue(const std::optional<TimePoint>& time) {
    return time ? Value(basics::UtcText(*time)) : Value(nullptr);
}

Value FromRememberedState(const history::State& state) {
    return {{"since", TimeValue(state.since)},
            {"seen", TimeValue(state.seen)},
            {"level", state.level ? Value(NameOf(*state.level)) : Value(nullptr)},
            {"state", Told(state.words)},
            {"place", Told(state.place)}};
}

Value FromRememberedPart(const history::Part& part) {
    const inventory::Finding& about = part.about;
    return {{"key", part.key},
            {"part_kind", NameOf(about.kind)},
            {"controller", Told(about.controller)},
            {"group", Told(about.group)},
            {"part", Told(about.part)},
            {"enclosure", Told(about.enclosure)},
            {"slot", Told(about.slot)},
            {"model", Told(about.product)},
            {"serial", Told(about.serial)},
            {"present", FromRememberedState(part.state)}};
}

Value FromReading(const history::Reading& reading) {
    return {{"from", TimeValue(reading.from)},
            {"until", TimeValue(reading.until)},
            {"low", NumberValue(reading.low)},
            {"high", NumberValue(reading.high)},
            {"last", NumberValue(reading.last)}};
}

Value FromSeries(const history::Series& series) {
    return {{"counter", series.counter}, {"readings", Each(series.readings, FromReading)}};
}

Value FromEvent(const history::NumberedEvent& each) {
    return Value::parse(JsonOf(each.event));
}

}  // namespace

std::string HistoryJson(const history::Overview& overview, const std::string& host) {
    Value value = Value::object();
    value["schema_version"] = kHistoryVersion;
    value["host"] = Told(host);
    value["answered_at"] = TimeValue(overview.answered);
    value["parts"] = Each(overview.parts, FromRememberedPart);
    return TextOf(value);
}

std::string HistoryJson(const history::PartHistory& part, const std::string& host) {
    Value value = Value::object();
    value["schema_version"] = kHistoryVersion;
    value["host"] = Told(host);
    value["answered_at"] = TimeValue(part.answered);
    value["since"] = TimeValue(part.since);
    value["part"] = FromRememberedPart(part.part);
    value["states"] = Each(part.states, FromRememberedState);
    value["counters"] = Each(part.series, FromSeries);
    value["events"] = Each(part.events, FromEvent);
    return TextOf(value);
}

}  // namespace views
