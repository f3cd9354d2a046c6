#include "Store.h"

#include "Calendar.h"
#include "Contents.h"

#include <algorithm>
#include <utility>

namespace history {
namespace {

std::size_t HashOf(std::string_view text) {
    return std::hash<std::string_view>()(text);
}

}  // namespace

Store::Store(Database& database)
    : m_Database(database),
      m_WritePart(database.Prepare(
          R"(INSERT INTO parts(id, key, kind, controller, "group", part, enclosure, slot, model, serial)
             VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10)
             ON CONFLICT(id) DO UPDATE SET kind = ?3, controller = ?4, "group" = ?5, part = ?6, enclosure = ?7,
             slot = ?8, model = ?9, serial = ?10)")),
      m_WriteState(database.Prepare(
          R"(INSERT INTO states(id, part, since, seen, level, words, place) VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7)
             ON CONFLICT(id) DO UPDATE SET since = ?3, seen = ?4)")),
      m_WriteCounter(
          database.Prepare("INSERT INTO counters(id, name) VALUES(?, ?) ON CONFLICT(id) DO NOTHING")),
      m_WriteSample(
          database.Prepare("INSERT INTO samples(day, part, counter, second, value) VALUES(?, ?, ?, ?, ?) "
                           "ON CONFLICT DO NOTHING")),
      m_WriteEvent(
          database.Prepare("INSERT INTO events(id, at, text) VALUES(?, ?, ?) ON CONFLICT DO NOTHING")),
      m_WriteDebt(database.Prepare("INSERT INTO deliveries(channel, event) SELECT ?, number FROM events "
                                   "WHERE id = ? ON CONFLICT DO NOTHING")),
      m_PayDebt(database.Prepare("DELETE FROM deliveries WHERE channel = ? AND event = "
                                 "(SELECT number FROM events WHERE id = ?)")),
      m_WriteRow(database.Prepare("INSERT INTO watch(key, text) VALUES(?1, ?2) "
                                  "ON CONFLICT(key) DO UPDATE SET text = ?2")),
      m_RemoveRow(database.Prepare("DELETE FROM watch WHERE key = ?")),
      m_WriteDocument(database.Prepare("INSERT INTO document(id, text) VALUES(1, ?1) "
                                       "ON CONFLICT(id) DO UPDATE SET text = ?1")),
      m_WriteMark(database.Prepare("INSERT INTO marks(name, value) VALUES(?1, ?2) "
                                   "ON CONFLICT(name) DO UPDATE SET value = ?2")),
      m_ReadMark(database.Prepare("SELECT value FROM marks WHERE name = ?")) {}

void Store::Load(Ledger& ledger) {
    ledger.Disown();
    ledger.nextPart = NextOf("id", "parts");
    ledger.nextState = NextOf("id", "states");
    ledger.nextCounter = NextOf("id", "counters");
    (void)NextOf("number", "events");
    Contents contents(m_Database);
    contents.EachPart([&ledger](const Part& part, std::int64_t id, std::int64_t stateId) {
        ledger.Own(part, id, stateId);
    });
    m_Database.Prepare("SELECT id, name FROM counters").Each([&ledger](const Row& row) {
        ledger.OwnCounter(row.Integer(0), row.Text(1));
    });
    LoadValues(ledger);
    contents.EachDebt(
        [&ledger](const std::string& channel, const watch::Event& event) { ledger.OwnDebt(channel, event); });
    ledger.EndOwning();
    ForgetRows();
}

std::int64_t Store::NextOf(const char* id, const char* table) {
    constexpr std::int64_t kMost = std::int64_t{1} << 53U;  // Nobody counts so far.
    const std::int64_t last = m_Database.Integer(std::string("SELECT max(") + id + ") FROM " + table);
    if (last < 0 || last > kMost) {
        throw DatabaseError(DatabaseError::Kind::Damaged,
                            std::string("numbers in ") + table + " make no sense");
    }
    return last + 1;
}

// Every counter that is told has a sample of each day, so that the last two days have all of them.
void Store::LoadValues(Ledger& ledger) {
    m_Database
        .Prepare(
            "SELECT part, counter, day, value FROM samples "
            "WHERE day >= (SELECT max(day) FROM samples) - 1 ORDER BY day, part, counter, second")
        .Each([&ledger](const Row& row) {
            ledger.OwnValue(row.Integer(0), row.Integer(1), row.Integer(2), row.Number(3));
        });
}

Store::Hashes Store::LoadRows() {
    Hashes hashes;
    for (const watch::StateRow& row : Contents(m_Database).WatchRows()) {
        hashes.emplace(row.key, HashOf(row.text));
    }
    return hashes;
}

void Store::Write(Ledger& ledger) {
    Ledger::Waiting& waits = ledger.Waits();
    WriteParts(ledger);
    for (Ledger::Counter& counter : ledger.Counters()) {
        if (!counter.isStored) {
            counter.id = counter.id == 0 ? ledger.nextCounter++ : counter.id;
            m_WriteCounter.Run(counter.id, counter.name);
        }
    }
    for (Ledger::EndedState& ended : waits.states) {
        ended.id = ended.id == 0 ? ledger.nextState++ : ended.id;
        WriteState(*ended.part, ended.id, ended.state);
    }
    for (auto& [key, part] : ledger.Parts()) {
        if (part.hasState && !part.isStateStored) {
            part.stateId = part.stateId == 0 ? ledger.nextState++ : part.stateId;
            WriteState(part, part.stateId, part.state);
        }
    }
    for (const Ledger::Sample& sample : waits.samples) {
        WriteSample(sample, ledger.Counters()[sample.counter].id);
    }
    for (const watch::Event& event : waits.events) {
        m_WriteEvent.Run(event.id, SecondsOf(event.at), JsonOf(event));
    }
    for (const Ledger::Debt& debt : waits.owed) {
        m_WriteDebt.Run(debt.channel, debt.event);
    }
    for (const Ledger::Debt& debt : waits.paid) {
        m_PayDebt.Run(debt.channel, debt.event);
    }
}

void Store::WriteParts(Ledger& ledger) {
    for (auto& [key, part] : ledger.Parts()) {
        if (!part.isStored) {
            part.id = part.id == 0 ? ledger.nextPart++ : part.id;
            const inventory::Finding& about = part.about;
            m_WritePart.Run(part.id, key, static_cast<int>(about.kind), about.controller, about.group,
                            about.part, about.enclosure, about.slot, about.product, about.serial);
        }
    }
}

// A second that is taken, by the same time before the clock was put back, say, gives way to the next one.
void Store::WriteSample(const Ledger::Sample& sample, std::int64_t counter) {
    constexpr int kMostTries = 30;
    std::int64_t time = SecondsOf(sample.at);
    for (int tries = 0; tries < kMostTries; ++tries, ++time) {
        const std::int64_t day = DayOf(time);
        m_WriteSample.Run(day, sample.part->id, counter, time - day * kSecondsOfDay, sample.value);
        if (m_Database.Changes() > 0) {
            return;
        }
    }
}

void Store::WriteState(const Ledger::KnownPart& part, std::int64_t id, const State& state) {
    const auto level = state.level ? std::optional(static_cast<int>(*state.level)) : std::nullopt;
    m_WriteState.Run(id, part.id, SecondsOf(state.since), SecondsOf(state.seen), level, state.words,
                     state.place);
}

void Store::WriteRows(const std::vector<watch::StateRow>& rows) {
    Hashes stored = m_Rows ? *std::exchange(m_Rows, std::nullopt) : LoadRows();
    Hashes written;
    for (const watch::StateRow& row : rows) {
        const std::size_t hash = HashOf(row.text);
        const auto before = stored.find(row.key);
        if (before == stored.end() || before->second != hash) {
            m_WriteRow.Run(row.key, row.text);
        }
        if (before != stored.end()) {
            stored.erase(before);
        }
        written.emplace(row.key, hash);
    }
    for (const auto& [key, hash] : stored) {
        m_RemoveRow.Run(key);
    }
    m_Rows = std::move(written);
}

void Store::WriteDocument(std::string_view xml) {
    const std::size_t hash = HashOf(xml);
    if (m_Document != hash) {
        m_Document.reset();
        m_WriteDocument.Run(xml);
        m_Document = hash;
    }
}

}  // namespace history
