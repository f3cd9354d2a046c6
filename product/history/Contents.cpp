#include "Contents.h"

#include "Calendar.h"
#include "Schema.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace history {
namespace {

using inventory::Level;
using inventory::PartKind;

template <typename Enumeration>
std::optional<Enumeration> NamedBy(std::int64_t number, Enumeration last) {
    const bool isOne = 0 <= number && number <= static_cast<std::int64_t>(last);
    return isOne ? std::optional(static_cast<Enumeration>(number)) : std::nullopt;
}

/// "since, seen, level, words, place" from that column on.
std::optional<State> StateIn(const Row& row, int column) {
    const std::optional<TimePoint> since = TimeOf(row.Integer(column));
    const std::optional<TimePoint> seen = TimeOf(row.Integer(column + 1));
    const bool isReported = !row.IsNull(column + 2);
    const std::optional<Level> level = NamedBy(row.Integer(column + 2), Level::Critical);
    if (!since || !seen || (isReported && !level)) {
        return std::nullopt;
    }
    return State{*since, std::max(*since, *seen), isReported ? level : std::nullopt, row.Text(column + 3),
                 row.Text(column + 4)};
}

std::optional<inventory::Finding> AboutIn(const Row& row, int column) {
    const std::optional<PartKind> kind = NamedBy(row.Integer(column), PartKind::Drive);
    if (!kind) {
        return std::nullopt;
    }
    inventory::Finding about;
    about.kind = *kind;
    for (std::string* const name : {&about.controller, &about.group, &about.part, &about.enclosure,
                                    &about.slot, &about.product, &about.serial}) {
        *name = row.Text(++column);
    }
    return about;
}

/// "number, text".
void AddEvent(const Row& row, std::vector<NumberedEvent>& events) {
    if (std::optional<watch::Event> event = watch::EventFrom(row.Text(1))) {
        events.push_back({row.Integer(0), std::move(*event)});
    }
}

bool AreNumbers(double low, double high, double last) {
    return std::isfinite(low) && std::isfinite(high) && std::isfinite(last);
}

Statement& Once(std::optional<Statement>& statement, Database& database, const char* sql) {
    return statement ? *statement : statement.emplace(database.Prepare(sql));
}

}  // namespace

void Contents::EachPart(
    const std::function<void(const Part& part, std::int64_t id, std::int64_t stateId)>& take) {
    m_Database
        .Prepare(
            R"(SELECT parts.id, key, kind, controller, "group", parts.part, enclosure, slot, model, serial,
                           states.id, since, seen, level, words, place
                    FROM parts LEFT JOIN states ON states.id =
                         (SELECT max(latest.id) FROM states AS latest WHERE latest.part = parts.id))")
        .Each([&take](const Row& row) {
            const std::optional<inventory::Finding> about = AboutIn(row, 2);
            const std::optional<State> state = row.IsNull(10) ? std::optional(State()) : StateIn(row, 11);
            if (about && state) {
                take({row.Text(1), *about, *state}, row.Integer(0), row.Integer(10));
            }
        });
}

std::vector<State> Contents::StatesOf(std::int64_t part, TimePoint since) {
    std::vector<State> states;
    m_Database
        .Prepare(
            "SELECT since, seen, level, words, place FROM states WHERE part = ?1 AND "
            "(seen >= ?2 OR id = (SELECT max(id) FROM states WHERE part = ?1)) ORDER BY id")
        .Each(
            [&states](const Row& row) {
                if (std::optional<State> state = StateIn(row, 0)) {
                    states.push_back(std::move(*state));
                }
            },
            part, SecondsOf(since));
    return states;
}

// Days on which a counter was the same are one row, which may begin long before.
void Contents::AddDays(std::int64_t part, std::optional<std::int64_t> counter, TimePoint since,
                       Readings& readings) {
    Once(m_Days, m_Database,
         "SELECT counter, day, run, low, high, last FROM days WHERE part = ?1 AND counter BETWEEN "
         "coalesce(?2, -9223372036854775807) AND coalesce(?2, 9223372036854775807) ORDER BY counter, day")
        .Each(
            [&](const Row& row) {
                const std::int64_t day = row.Integer(1);
                const std::int64_t run = row.Integer(2);
                const Reading reading{{}, {}, row.Number(3), row.Number(4), row.Number(5)};
                const bool isTime = kFirstDay <= day && day < kLastDay && 0 < run && run <= kLastDay - day;
                if (!isTime || !AreNumbers(reading.low, reading.high, reading.last)) {
                    return;
                }
                const TimePoint from = *TimeOf(day * kSecondsOfDay);
                const TimePoint until = *TimeOf((day + run) * kSecondsOfDay - 1);
                if (until >= since) {
                    std::vector<Reading>& all = readings[row.Integer(0)];
                    all.push_back(reading);
                    all.back().from = std::max(from, since);
                    all.back().until = until;
                }
            },
            part, counter);
}

void Contents::AddSamples(std::int64_t part, std::optional<std::int64_t> counter, TimePoint since,
                          Readings& readings) {
    Statement& next = Once(m_NextDay, m_Database,
                           "SELECT day FROM samples WHERE day >= ? AND day < ? ORDER BY day LIMIT 1");
    Statement& samples = Once(
        m_Samples, m_Database,
        "SELECT counter, second, value FROM samples WHERE day = ?1 AND part = ?2 AND counter BETWEEN "
        "coalesce(?3, -9223372036854775807) AND coalesce(?3, 9223372036854775807) ORDER BY counter, second");
    // What a damaged file has in the place of a day, and is no number, comes behind all days.
    std::optional<std::int64_t> day = next.Integer(std::max(DayOf(since), kFirstDay), kLastDay);
    while (day) {
        samples.Each(
            [&](const Row& row) {
                const std::int64_t second = row.Integer(1);
                const double value = row.Number(2);
                if (second < 0 || second >= kSecondsOfDay || !std::isfinite(value)) {
                    return;
                }
                const TimePoint at = *TimeOf(*day * kSecondsOfDay + second);
                if (at >= since) {
                    readings[row.Integer(0)].push_back({at, at, value, value, value});
                }
            },
            *day, part, counter);
        day = next.Integer(*day + 1, kLastDay);
    }
}

Contents::Readings Contents::AllReadingsOf(std::int64_t part, std::optional<std::int64_t> counter,
                                           TimePoint since) {
    Readings readings;
    AddDays(part, counter, since, readings);
    AddSamples(part, counter, since, readings);
    for (auto& [id, all] : readings) {  // A clock that was put back has mixed them.
        std::stable_sort(all.begin(), all.end(),
                         [](const Reading& one, const Reading& other) { return one.from < other.from; });
    }
    return readings;
}

std::vector<Series> Contents::SeriesOf(std::int64_t part, TimePoint since) {
    Readings readings = AllReadingsOf(part, std::nullopt, since);
    std::vector<Series> series;
    m_Database.Prepare("SELECT id, name FROM counters ORDER BY name").Each([&](const Row& row) {
        if (const auto found = readings.find(row.Integer(0)); found != readings.end()) {
            series.push_back({row.Text(1), std::move(found->second)});
            readings.erase(found);
        }
    });
    return series;
}

std::vector<Reading> Contents::ReadingsOf(std::int64_t part, const std::string& counter, TimePoint since) {
    const std::optional<std::int64_t> id =
        m_Database.Prepare("SELECT id FROM counters WHERE name = ?").Integer(counter);
    return id ? std::move(AllReadingsOf(part, id, since)[*id]) : std::vector<Reading>();
}

std::vector<NumberedEvent> Contents::EventsSince(TimePoint since) {
    std::vector<NumberedEvent> events;
    m_Database.Prepare("SELECT number, text FROM events WHERE at >= ? ORDER BY number")
        .Each([&events](const Row& row) { AddEvent(row, events); }, SecondsOf(since));
    return events;
}

std::vector<NumberedEvent> Contents::EventsAfter(std::int64_t number, std::size_t most) {
    std::vector<NumberedEvent> events;
    m_Database.Prepare("SELECT number, text FROM events WHERE number > ? ORDER BY number LIMIT ?")
        .Each([&events](const Row& row) { AddEvent(row, events); }, number, most);
    return events;
}

std::int64_t Contents::LastEvent() {
    return m_Database.Integer("SELECT max(number) FROM events");
}

void Contents::EachDebt(
    const std::function<void(const std::string& channel, const watch::Event& event)>& take) {
    m_Database
        .Prepare(
            "SELECT channel, text FROM deliveries JOIN events ON events.number = deliveries.event "
            "ORDER BY events.number, channel")
        .Each([&take](const Row& row) {
            if (const std::optional<watch::Event> event = watch::EventFrom(row.Text(1))) {
                take(row.Text(0), *event);
            }
        });
}

std::vector<watch::StateRow> Contents::WatchRows() {
    std::vector<watch::StateRow> rows;
    m_Database.Prepare("SELECT key, text FROM watch ORDER BY key").Each([&rows](const Row& row) {
        rows.push_back({row.Text(0), row.Text(1)});
    });
    return rows;
}

std::optional<TimePoint> Contents::Answered() {
    const std::optional<std::int64_t> seconds =
        m_Database.Prepare("SELECT value FROM marks WHERE name = ?").Integer(std::string_view(kAnswered));
    return seconds ? TimeOf(*seconds) : std::nullopt;
}

std::optional<StoredDocument> Contents::Document() {
    const std::optional<TimePoint> answered = Answered();
    std::optional<StoredDocument> document;
    m_Database.Prepare("SELECT text FROM document").Each([&](const Row& row) {
        document = StoredDocument{answered.value_or(TimePoint()), row.Text(0)};
    });
    return answered ? document : std::nullopt;
}

}  // namespace history
