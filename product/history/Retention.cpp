#include "Retention.h"

#include "Calendar.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace history {
namespace {

// What a call may do, so that whoever calls is not kept waiting.
constexpr std::int64_t kMostSeriesAtOnce = 2000;
constexpr std::int64_t kMostRowsAtOnce = 1000;
constexpr std::int64_t kMostPartsAtOnce = 20;

}  // namespace

TimePoint FollowClock(TimePoint followed, TimePoint clock, std::chrono::seconds elapsed) {
    constexpr int kPace = 24;
    constexpr std::chrono::hours kMost{24 * 365};
    const auto step = std::clamp<std::chrono::seconds>(elapsed, std::chrono::seconds(0), kMost) * kPace;
    // In seconds: they may be centuries apart.
    const std::chrono::seconds ahead(SecondsOf(clock) - SecondsOf(followed));
    return ahead > step ? followed + step : ahead < -step ? followed - step : clock;
}

Retention::Retention(Database& database)
    : m_Database(database),
      m_OldestDay(database.Prepare("SELECT day FROM samples ORDER BY day LIMIT 1")),
      m_DayOf(
          database.Prepare("SELECT part, counter, min(value), max(value), (SELECT value FROM samples AS last "
                           "WHERE last.day = ?1 AND last.part = samples.part AND "
                           "last.counter = samples.counter ORDER BY second DESC LIMIT 1) FROM samples "
                           "WHERE day = ?1 GROUP BY part, counter ORDER BY part, counter LIMIT ?2")),
      m_RemoveSamples(database.Prepare("DELETE FROM samples WHERE day = ? AND (part, counter) <= (?, ?)")),
      m_RunBefore(
          database.Prepare("SELECT day, run, low, high, last FROM days WHERE part = ? AND counter = ? "
                           "AND day <= ? ORDER BY day DESC LIMIT 1")),
      m_WriteRun(database.Prepare("INSERT OR REPLACE INTO days(part, counter, day, run, low, high, last) "
                                  "VALUES(?, ?, ?, ?, ?, ?, ?)")),
      m_RemoveRun(database.Prepare("DELETE FROM days WHERE part = ? AND counter = ? AND day = ?")),
      m_RemoveOldRuns(database.Prepare("DELETE FROM days WHERE part = ?1 AND counter = ?2 AND day < ?3 "
                                       "AND day + run <= ?3")),
      m_RemoveStates(
          database.Prepare("DELETE FROM states WHERE id IN (SELECT id FROM states AS old WHERE seen < ?1 AND "
                           "EXISTS (SELECT 1 FROM "
                           "states AS next WHERE next.part = old.part AND next.id > old.id) LIMIT ?2)")),
      m_RemoveSpareStates(
          database.Prepare("DELETE FROM states WHERE id IN (SELECT id FROM states AS old WHERE EXISTS "
                           "(SELECT 1 FROM states AS next "
                           "WHERE next.part = old.part AND next.id > old.id) ORDER BY id LIMIT ?1)")),
      m_OldestEvents(
          database.Prepare("SELECT number, at, EXISTS (SELECT 1 FROM deliveries WHERE event = number) "
                           "FROM events ORDER BY number LIMIT ?")),
      m_RemoveEvent(database.Prepare("DELETE FROM events WHERE number = ?")),
      m_SweptDay(std::numeric_limits<std::int64_t>::min()) {}

Retention::Done Retention::Step(TimePoint now) {
    const std::int64_t today = DayOf(now);
    Done done{ThinOut(today)};
    if (today != m_SweptDay) {  // Looking for them costs as much as there are.
        const bool hasStates = DropStates(today);
        const bool hasEvents = DropEvents(today);
        done.parts = ForgetParts(today);
        const bool isSwept = !hasStates && !hasEvents && done.parts.empty();
        m_SweptDay = isSwept ? today : m_SweptDay;
        done.isMore = done.isMore || !isSwept;
    }
    return done;
}

bool Retention::ThinOut(std::int64_t today) {
    struct Told {
        std::int64_t part, counter;
        Reading reading;
    };
    const std::optional<std::int64_t> day = m_OldestDay.Integer();
    if (!day || *day >= today - kDaysInFull) {
        return false;
    }
    std::vector<Told> told;
    m_DayOf.Each(
        [&told](const Row& row) {
            told.push_back(
                {row.Integer(0), row.Integer(1), {{}, {}, row.Number(2), row.Number(3), row.Number(4)}});
        },
        *day, kMostSeriesAtOnce);
    for (const Told& each : told) {
        if (*day >= today - kDaysInAll) {
            AddDay(each.part, each.counter, *day, each.reading);
        }
        m_RemoveOldRuns.Run(each.part, each.counter, today - kDaysInAll);
    }
    if (!told.empty()) {
        m_RemoveSamples.Run(*day, told.back().part, told.back().counter);
    }
    return true;
}

// Days that follow each other and are alike are one row with a count. A clock that was put back by weeks may
// add to a day that is there already, in the middle of such a row.
void Retention::AddDay(std::int64_t part, std::int64_t counter, std::int64_t day, const Reading& reading) {
    std::int64_t first = 0;
    std::int64_t run = 0;
    Reading before;
    m_RunBefore.Each(
        [&](const Row& row) {
            first = row.Integer(0);
            run = first < kFirstDay ? 0 : std::clamp<std::int64_t>(row.Integer(1), 0, kLastDay);
            before = {{}, {}, row.Number(2), row.Number(3), row.Number(4)};
        },
        part, counter, day);
    const auto write = [&](std::int64_t from, std::int64_t days, const Reading& value) {
        m_WriteRun.Run(part, counter, from, days, value.low, value.high, value.last);
    };
    const bool isSame =
        before.low == reading.low && before.high == reading.high && before.last == reading.last;
    const std::int64_t end = first + run;
    if (run > 0 && day == end && isSame) {
        write(first, run + 1, before);
    } else if (run <= 0 || day >= end) {
        write(day, 1, reading);
    } else {
        if (first < day) {
            write(first, day - first, before);
        }
        if (day + 1 < end) {
            write(day + 1, end - day - 1, before);
        }
        write(day, 1,
              {{}, {}, std::min(before.low, reading.low), std::max(before.high, reading.high), reading.last});
    }
}

// The latest state of a part stays as long as the part does.
bool Retention::DropStates(std::int64_t today) {
    m_RemoveStates.Run((today - kDaysInAll) * kSecondsOfDay, kMostRowsAtOnce);
    std::int64_t removed = m_Database.Changes();
    const std::int64_t spare = m_Database.Integer("SELECT count(*) FROM states") - kMostStatesKept;
    if (spare > 0) {
        m_RemoveSpareStates.Run(std::min(spare, kMostRowsAtOnce));
        removed += m_Database.Changes();
    }
    return removed > 0;
}

// In their order, up to the first one that stays: one that was written while the clock was wrong is as old as
// those around it. What is owed to a channel stays.
bool Retention::DropEvents(std::int64_t today) {
    std::int64_t spare = m_Database.Integer("SELECT count(*) FROM events") - kMostEventsKept;
    std::vector<std::int64_t> old;
    bool isOver = false;
    m_OldestEvents.Each(
        [&](const Row& row) {
            isOver = isOver || (spare <= 0 && row.Integer(1) >= (today - kDaysInAll) * kSecondsOfDay);
            if (!isOver && row.Integer(2) == 0) {
                old.push_back(row.Integer(0));
                --spare;
            }
        },
        kMostRowsAtOnce);
    for (const std::int64_t number : old) {
        m_RemoveEvent.Run(number);
    }
    return !old.empty();
}

// Of a part that is in no report for longer than anything is kept nothing is left but that.
std::vector<std::string> Retention::ForgetParts(std::int64_t today) {
    std::vector<std::pair<std::int64_t, std::string>> parts;
    m_Database
        .Prepare(
            "SELECT parts.id, key FROM parts JOIN states ON states.part = parts.id WHERE level IS NULL AND "
            "since < ? AND NOT EXISTS (SELECT 1 FROM states AS other WHERE other.part = parts.id AND "
            "other.id <> states.id) LIMIT ?")
        .Each([&parts](const Row& row) { parts.emplace_back(row.Integer(0), row.Text(1)); },
              (today - kDaysInAll) * kSecondsOfDay, kMostPartsAtOnce);
    std::vector<std::string> keys;
    for (auto& [id, key] : parts) {
        m_Database.Prepare("DELETE FROM days WHERE part = ?").Run(id);
        m_Database.Prepare("DELETE FROM states WHERE part = ?").Run(id);
        m_Database.Prepare("DELETE FROM parts WHERE id = ?").Run(id);
        keys.push_back(std::move(key));
    }
    return keys;
}

}  // namespace history
