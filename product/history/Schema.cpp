#include "Schema.h"

#include <array>

namespace history {
namespace {

// Times are whole seconds of 1970 on, days are whole days. Types are kept to (STRICT), so that a file whose
// values have been damaged is found out by looking through it once.

// Parts have numbers of their own, since their keys are long and stand for them everywhere. Samples lie by
// day, so that the day that is being written and the one that is due to be thinned out each lie together.
constexpr const char* kFirst = R"sql(
CREATE TABLE marks(
    name TEXT NOT NULL PRIMARY KEY, value INTEGER NOT NULL) STRICT, WITHOUT ROWID;
CREATE TABLE parts(
    id INTEGER PRIMARY KEY, key TEXT NOT NULL UNIQUE, kind INTEGER NOT NULL,
    controller TEXT NOT NULL, "group" TEXT NOT NULL, part TEXT NOT NULL,
    enclosure TEXT NOT NULL, slot TEXT NOT NULL, model TEXT NOT NULL, serial TEXT NOT NULL) STRICT;
CREATE TABLE states(
    id INTEGER PRIMARY KEY, part INTEGER NOT NULL, since INTEGER NOT NULL,
    level INTEGER, words TEXT NOT NULL, place TEXT NOT NULL) STRICT;
CREATE INDEX states_of_part ON states(part, id);
CREATE TABLE counters(
    id INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE) STRICT;
CREATE TABLE samples(
    day INTEGER NOT NULL, part INTEGER NOT NULL, counter INTEGER NOT NULL,
    second INTEGER NOT NULL, value REAL NOT NULL,
    PRIMARY KEY(day, part, counter, second)) STRICT, WITHOUT ROWID;
CREATE TABLE days(
    part INTEGER NOT NULL, counter INTEGER NOT NULL, day INTEGER NOT NULL,
    low REAL NOT NULL, high REAL NOT NULL, last REAL NOT NULL,
    PRIMARY KEY(part, counter, day)) STRICT, WITHOUT ROWID;
CREATE TABLE events(
    number INTEGER PRIMARY KEY AUTOINCREMENT, id TEXT NOT NULL UNIQUE,
    at INTEGER NOT NULL, text TEXT NOT NULL) STRICT;
CREATE TABLE deliveries(
    event INTEGER NOT NULL, channel TEXT NOT NULL,
    PRIMARY KEY(event, channel)) STRICT, WITHOUT ROWID;
CREATE TABLE watch(
    key TEXT NOT NULL PRIMARY KEY, text TEXT NOT NULL) STRICT, WITHOUT ROWID;
CREATE TABLE document(
    id INTEGER PRIMARY KEY CHECK(id = 1), text TEXT NOT NULL) STRICT;
)sql";

// When a state was last seen, so that it can be told from a time when nobody looked; of those of before, the
// next state is all that is known. Days on which a counter was the same are one row. Events by their time.
constexpr const char* kSecond = R"sql(
ALTER TABLE states ADD COLUMN seen INTEGER NOT NULL DEFAULT 0;
UPDATE states SET seen = max(since, coalesce(
    (SELECT next.since FROM states AS next
     WHERE next.part = states.part AND next.id > states.id ORDER BY next.id LIMIT 1), since));
ALTER TABLE days ADD COLUMN run INTEGER NOT NULL DEFAULT 1;
CREATE INDEX events_by_time ON events(at);
)sql";

constexpr std::array<const char*, kSchemaVersion> kSteps = {kFirst, kSecond};

}  // namespace

std::int64_t VersionOf(Database& database) {
    return database.Integer("PRAGMA user_version");
}

FileKind KindOf(Database& database) {
    const std::int64_t version = VersionOf(database);
    const std::int64_t application = database.Integer("PRAGMA application_id");
    if (version == 0 && application == 0 && database.Integer("SELECT count(*) FROM sqlite_schema") == 0) {
        return FileKind::New;
    }
    if (application != kApplicationId || version < 1) {
        return FileKind::Foreign;
    }
    return version > kSchemaVersion ? FileKind::Newer : FileKind::Ours;
}

void Upgrade(Database& database, int last) {
    const std::int64_t version = VersionOf(database);
    if (version >= last) {
        return;
    }
    Transaction transaction(database);
    for (std::int64_t step = version; step < last; ++step) {
        database.Run(kSteps.at(static_cast<std::size_t>(step)));
    }
    database.Run("PRAGMA application_id = " + std::to_string(kApplicationId) +
                 "; PRAGMA user_version = " + std::to_string(last));
    transaction.Commit();
}

std::string DamageOf(Database& database) {
    const std::string words = database.Text("PRAGMA quick_check(1)");
    return words == "ok" ? "" : words;
}

}  // namespace history
