// What of a watch outlives a restart.

#include "Codec.h"
#include "watch/Watch.h"

#include <utility>

namespace watch {
namespace {

constexpr std::string_view kAlarm = "alarm ";
constexpr std::string_view kPart = "part ";
constexpr std::string_view kGrowth = "growth ";
constexpr const char* kItself = "watch";

StateRow RowOf(std::string_view prefix, const std::string& key, const Json& object) {
    return {std::string(prefix) + key, TextOf(object)};
}

StateRow RowOf(const Alarm& alarm) {
    Json object = Json::object();
    object["level"] = NameOf(alarm.finding.level);
    Put(object, alarm.finding);
    Put(object, "part_key", alarm.part);
    Put(object, "place_key", alarm.place);
    Put(object, "since", std::optional(alarm.since));
    Put(object, "told", std::optional(alarm.told));
    Put(object, "well_since", alarm.wellSince);
    Put(object, "ended", alarm.ended);
    object["returns"] = alarm.returns;
    object["vanished"] = alarm.isVanished;
    return RowOf(kAlarm, alarm.key, object);
}

StateRow RowOf(const KnownPart& part) {
    Json object = Json::object();
    Put(object, part.about);
    Put(object, "place_key", part.place);
    object["missing"] = part.missing;
    object["gone"] = part.isGone;
    return RowOf(kPart, part.key, object);
}

StateRow RowOf(const Growth& growth) {
    Json object = Json::object();
    Put(object, "since", std::optional(growth.since));
    object["first"] = growth.first;
    object["told"] = growth.isTold;
    return RowOf(kGrowth, growth.key, object);
}

TimePoint NeededTimeIn(const Json& object, const char* key) {
    const std::optional<TimePoint> time = TimeIn(object, key);
    if (!time) {
        throw CodecError(std::string(key) + " is missing");
    }
    return *time;
}

unsigned SmallCountIn(const Json& object, const char* key) {
    constexpr std::uint64_t kMost = 1'000'000;
    return static_cast<unsigned>(std::min(CountIn(object, key), kMost));
}

Alarm AlarmFrom(const std::string& key, const Json& object) {
    Alarm alarm;
    alarm.key = key;
    alarm.finding = FindingIn(object);
    alarm.finding.level = LevelIn(object, "level");
    alarm.part = TextIn(object, "part_key");
    alarm.place = TextIn(object, "place_key");
    alarm.since = NeededTimeIn(object, "since");
    alarm.told = NeededTimeIn(object, "told");
    alarm.wellSince = TimeIn(object, "well_since");
    alarm.ended = TimeIn(object, "ended");
    alarm.returns = SmallCountIn(object, "returns");
    alarm.isVanished = TruthIn(object, "vanished");
    return alarm;
}

}  // namespace

std::vector<StateRow> Watch::Rows() const {
    std::vector<StateRow> rows;
    Json itself = Json::object();
    Put(itself, "last_answer", m_LastAnswer);
    Put(itself, "last_reminder", m_LastReminder);
    itself["failures"] = m_Failures;
    Put(itself, "last_failure", m_LastFailure);
    rows.push_back({kItself, TextOf(itself)});
    for (const auto& [key, alarm] : m_Alarms) {
        rows.push_back(RowOf(alarm));
    }
    for (const auto& [key, part] : m_Parts) {
        rows.push_back(RowOf(part));
    }
    for (const auto& [key, growth] : m_Growths) {
        rows.push_back(RowOf(growth));
    }
    return rows;
}

std::size_t Watch::Restore(const std::vector<StateRow>& rows) {
    std::size_t unread = 0;
    const auto take = [this](const StateRow& row) {
        const Json object = ObjectFrom(row.text);
        const auto keyBehind = [&row](std::string_view prefix) { return row.key.substr(prefix.size()); };
        if (row.key == kItself) {
            m_LastAnswer = TimeIn(object, "last_answer");
            m_LastReminder = TimeIn(object, "last_reminder");
            m_Failures = SmallCountIn(object, "failures");
            m_LastFailure = TextIn(object, "last_failure");
        } else if (row.key.starts_with(kAlarm)) {
            Alarm alarm = AlarmFrom(keyBehind(kAlarm), object);
            m_Alarms.insert_or_assign(alarm.key, std::move(alarm));
        } else if (row.key.starts_with(kPart)) {
            const std::string key = keyBehind(kPart);
            m_Parts.insert_or_assign(key,
                                     KnownPart{key, TextIn(object, "place_key"), FindingIn(object),
                                               SmallCountIn(object, "missing"), TruthIn(object, "gone")});
        } else if (row.key.starts_with(kGrowth)) {
            const std::string key = keyBehind(kGrowth);
            m_Growths.insert_or_assign(key, Growth{key, NeededTimeIn(object, "since"),
                                                   CountIn(object, "first"), TruthIn(object, "told")});
        } else {
            throw CodecError("it is of another kind");
        }
    };
    for (const StateRow& row : rows) {
        try {
            take(row);
        } catch (const CodecError&) {
            ++unread;
        }
    }
    return unread;
}

}  // namespace watch
