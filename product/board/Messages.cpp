#include "board/Messages.h"

#include "board/Wire.h"

#include <bit>
#include <chrono>
#include <cmath>
#include <functional>
#include <utility>

namespace board {
namespace {

using Micros = std::chrono::microseconds;
using inventory::Limits;

void PackTime(Packer& packer, TimePoint time) {
    packer.Number(
        static_cast<std::uint64_t>(std::chrono::duration_cast<Micros>(time.time_since_epoch()).count()));
}

TimePoint UnpackTime(Unpacker& unpacker) {
    const Micros since(static_cast<std::int64_t>(unpacker.Number()));
    constexpr std::chrono::hours kLongest{24 * 365 * 200};
    if (since > kLongest || since < -kLongest) {
        throw WireError("the message holds a time out of all reach");
    }
    return TimePoint(std::chrono::duration_cast<TimePoint::duration>(since));
}

/// A number as the wire has it, in fewer bytes; cut short it would be another one.
template <typename Number>
Number NumberIn(Unpacker& unpacker) {
    const std::uint64_t wide = unpacker.Number();
    const auto number = static_cast<Number>(wide);
    if (static_cast<std::uint64_t>(number) != wide) {
        throw WireError("the message holds a number that is too large");
    }
    return number;
}

template <typename Value>
void PackMaybe(Packer& packer, const std::optional<Value>& value,
               const std::function<void(const Value&)>& pack) {
    packer.Number(value ? 1 : 0);
    if (value) {
        pack(*value);
    }
}

template <typename Value>
std::optional<Value> UnpackMaybe(Unpacker& unpacker, const std::function<Value()>& unpack) {
    return unpacker.Flag() ? std::optional<Value>(unpack()) : std::nullopt;
}

template <typename Number>
void PackMaybeNumber(Packer& packer, const std::optional<Number>& value) {
    PackMaybe<Number>(packer, value, [&](const Number& number) {
        if constexpr (std::is_floating_point_v<Number>) {
            packer.Number(std::bit_cast<std::uint64_t>(number));
        } else {
            packer.Number(static_cast<std::uint64_t>(number));
        }
    });
}

template <typename Number>
void UnpackMaybeNumber(Unpacker& unpacker, std::optional<Number>& value) {
    value = UnpackMaybe<Number>(unpacker, [&] {
        if constexpr (std::is_floating_point_v<Number>) {
            return std::bit_cast<Number>(unpacker.Number());
        } else {
            return NumberIn<Number>(unpacker);
        }
    });
}

void PackCriteria(Packer& packer, const inventory::Criteria& criteria) {
    PackMaybe<inventory::Expectations>(
        packer, criteria.expectations,
        [&](const inventory::Expectations& expectations) { packer.Text(Text(expectations)); });
    PackMaybeNumber(packer, criteria.limits.temperature);
    PackMaybeNumber(packer, criteria.limits.mediaErrors);
    PackMaybeNumber(packer, criteria.limits.mediaErrorGrowth);
    PackMaybeNumber(packer, criteria.limits.spares);
    packer.Text(criteria.today);
}

inventory::Criteria UnpackCriteria(Unpacker& unpacker) {
    inventory::Criteria criteria;
    criteria.expectations = UnpackMaybe<inventory::Expectations>(unpacker, [&] {
        try {
            return inventory::ReadExpectations(unpacker.Text());
        } catch (const inventory::ExpectationsError& error) {
            throw WireError(std::string("the message holds no expectations: ") + error.what());
        }
    });
    UnpackMaybeNumber(unpacker, criteria.limits.temperature);
    UnpackMaybeNumber(unpacker, criteria.limits.mediaErrors);
    UnpackMaybeNumber(unpacker, criteria.limits.mediaErrorGrowth);
    UnpackMaybeNumber(unpacker, criteria.limits.spares);
    criteria.today = unpacker.Text();
    return criteria;
}

watch::Event UnpackEvent(Unpacker& unpacker) {
    std::optional<watch::Event> event = watch::EventFrom(unpacker.Text());
    if (!event) {
        throw WireError("the message holds an event that is none");
    }
    return std::move(*event);
}

// An alarm is its finding and when it began, as an event is.
void PackAlarm(Packer& packer, const StandingAlarm& alarm) {
    watch::Event event;
    event.id = "alarm";
    event.at = alarm.since;
    event.kind = watch::EventKind::Began;
    event.level = alarm.finding.level;
    event.about = alarm.finding;
    packer.Text(JsonOf(event));
    packer.Number(alarm.isVanished ? 1 : 0);
}

StandingAlarm UnpackAlarm(Unpacker& unpacker) {
    watch::Event event = UnpackEvent(unpacker);
    return {event.at, std::move(event.about), unpacker.Flag()};
}

void PackRuns(Packer& packer, const inventory::ToolRuns& runs) {
    packer.Number(runs.commands);
    packer.Number(runs.failures);
    packer.Number(runs.failedRuns);
    packer.Number(std::bit_cast<std::uint64_t>(runs.duration.count()));
}

inventory::ToolRuns UnpackRuns(Unpacker& unpacker) {
    inventory::ToolRuns runs;
    for (std::size_t* const number : {&runs.commands, &runs.failures, &runs.failedRuns}) {
        *number = NumberIn<std::size_t>(unpacker);
    }
    const auto seconds = std::bit_cast<double>(unpacker.Number());
    if (!std::isfinite(seconds) || seconds < 0) {
        throw WireError("the message holds a duration that is none");
    }
    runs.duration = std::chrono::duration<double>(seconds);
    return runs;
}

void PackInquiry(Packer& packer, const LastInquiry& inquiry) {
    PackTime(packer, inquiry.at);
    packer.Text(inquiry.failure);
    packer.Number(inquiry.failuresInARow);
}

LastInquiry UnpackInquiry(Unpacker& unpacker) {
    LastInquiry inquiry;
    inquiry.at = UnpackTime(unpacker);
    inquiry.failure = unpacker.Text();
    inquiry.failuresInARow = NumberIn<unsigned>(unpacker);
    return inquiry;
}

}  // namespace

std::string Pack(const Settings& settings) {
    Packer packer;
    packer.Number(settings.listeners.size());
    for (const Settings::Listener& listener : settings.listeners) {
        packer.Number(listener.descriptor);
        packer.Number(listener.isEncrypted ? 1 : 0);
    }
    packer.Text(settings.key);
    packer.Text(settings.certificate);
    PackMaybe<std::string>(packer, settings.accounts, [&](const std::string& text) { packer.Text(text); });
    packer.Number(settings.metricsFrom.size());
    for (const std::string& net : settings.metricsFrom) {
        packer.Text(net);
    }
    packer.Number(settings.user);
    packer.Number(settings.group);
    packer.Number(static_cast<std::uint64_t>(settings.interval.count()));
    return packer.Take();
}

Settings UnpackSettings(std::string_view bytes) {
    Unpacker unpacker(bytes);
    Settings settings;
    settings.listeners.resize(unpacker.Count());
    for (Settings::Listener& listener : settings.listeners) {
        listener.descriptor = NumberIn<std::uint32_t>(unpacker);
        listener.isEncrypted = unpacker.Flag();
    }
    settings.key = unpacker.Text();
    settings.certificate = unpacker.Text();
    settings.accounts = UnpackMaybe<std::string>(unpacker, [&] { return unpacker.Text(); });
    settings.metricsFrom.resize(unpacker.Count());
    for (std::string& net : settings.metricsFrom) {
        net = unpacker.Text();
    }
    settings.user = NumberIn<std::uint32_t>(unpacker);
    settings.group = NumberIn<std::uint32_t>(unpacker);
    settings.interval = std::chrono::seconds(static_cast<std::int64_t>(unpacker.Number()));
    unpacker.End();
    return settings;
}

std::string Pack(const std::vector<DriveReport>& drives) {
    Packer packer;
    packer.Number(drives.size());
    for (const DriveReport& drive : drives) {
        for (const std::string* const text :
             {&drive.controller, &drive.enclosure, &drive.slot, &drive.document}) {
            packer.Text(*text);
        }
    }
    return packer.Take();
}

std::vector<DriveReport> UnpackDrives(std::string_view bytes) {
    Unpacker unpacker(bytes);
    std::vector<DriveReport> drives(unpacker.Count());
    for (DriveReport& drive : drives) {
        for (std::string* const text : {&drive.controller, &drive.enclosure, &drive.slot, &drive.document}) {
            *text = unpacker.Text();
        }
    }
    unpacker.End();
    return drives;
}

std::string Pack(const Report& report) {
    Packer packer;
    packer.Number(report.number);
    packer.Text(report.host);
    PackTime(packer, report.startedAt);
    packer.Text(report.document);
    PackTime(packer, report.takenAt);
    PackRuns(packer, report.runs);
    PackCriteria(packer, report.criteria);
    PackMaybe<LastInquiry>(packer, report.inquiry,
                           [&](const LastInquiry& inquiry) { PackInquiry(packer, inquiry); });
    packer.Number(report.alarms.size());
    for (const StandingAlarm& alarm : report.alarms) {
        PackAlarm(packer, alarm);
    }
    packer.Number(report.events.size());
    for (const NumberedEvent& each : report.events) {
        packer.Number(static_cast<std::uint64_t>(each.number));
        packer.Text(JsonOf(each.event));
    }
    return packer.Take();
}

Report UnpackReport(std::string_view bytes) {
    Unpacker unpacker(bytes);
    Report report;
    report.number = unpacker.Number();
    report.host = unpacker.Text();
    report.startedAt = UnpackTime(unpacker);
    report.document = unpacker.Text();
    report.takenAt = UnpackTime(unpacker);
    report.runs = UnpackRuns(unpacker);
    report.criteria = UnpackCriteria(unpacker);
    report.inquiry = UnpackMaybe<LastInquiry>(unpacker, [&] { return UnpackInquiry(unpacker); });
    for (std::size_t left = unpacker.Count(); left > 0; --left) {
        report.alarms.push_back(UnpackAlarm(unpacker));
    }
    for (std::size_t left = unpacker.Count(); left > 0; --left) {
        const auto number = static_cast<std::int64_t>(unpacker.Number());
        report.events.push_back({number, UnpackEvent(unpacker)});
    }
    unpacker.End();
    return report;
}

std::string Pack(const Call& call) {
    Packer packer;
    packer.Number(call.id);
    packer.Number(static_cast<std::uint32_t>(call.what));
    for (const auto* const number : {&call.controller, &call.enclosure, &call.slot}) {
        PackMaybeNumber(packer, *number);
    }
    for (const auto* const text : {&call.appKey, &call.part}) {
        PackMaybe<std::string>(packer, *text, [&](const std::string& key) { packer.Text(key); });
    }
    return packer.Take();
}

Call UnpackCall(std::string_view bytes) {
    Unpacker unpacker(bytes);
    Call call;
    call.id = unpacker.Number();
    const std::uint64_t what = unpacker.Number();
    if (what < static_cast<std::uint32_t>(Call::What::GetInfo) ||
        what > static_cast<std::uint32_t>(Call::What::HistoryJson)) {
        throw WireError("the message wants what nobody does");
    }
    call.what = static_cast<Call::What>(what);
    for (auto* const number : {&call.controller, &call.enclosure, &call.slot}) {
        UnpackMaybeNumber(unpacker, *number);
    }
    for (auto* const text : {&call.appKey, &call.part}) {
        *text = UnpackMaybe<std::string>(unpacker, [&] { return unpacker.Text(); });
        if (*text && (*text)->size() > kMostKey) {
            throw WireError("the message holds a key that is too long");
        }
    }
    unpacker.End();
    return call;
}

std::string Pack(const Outcome& outcome) {
    Packer packer;
    packer.Number(outcome.id);
    packer.Text(outcome.failure);
    packer.Number(outcome.status);
    PackMaybeNumber(packer, outcome.returnValue);
    PackMaybe<std::string>(packer, outcome.document, [&](const std::string& text) { packer.Text(text); });
    return packer.Take();
}

Outcome UnpackOutcome(std::string_view bytes) {
    Unpacker unpacker(bytes);
    Outcome outcome;
    outcome.id = unpacker.Number();
    outcome.failure = unpacker.Text();
    outcome.status = NumberIn<std::uint32_t>(unpacker);
    UnpackMaybeNumber(unpacker, outcome.returnValue);
    outcome.document = UnpackMaybe<std::string>(unpacker, [&] { return unpacker.Text(); });
    unpacker.End();
    return outcome;
}

}  // namespace board
