// What is read back from the service's history, which may be damaged: rows of its tables, a section each,
// whatever their values are; then the service goes on with them. A row is the letter of its table and its
// values, 0x1F before each: "#7" a whole number, ".5" another one, "~" null, "%..." bytes, anything else a
// text. A section "?" is what somebody types for a part.

#include "views/History.h"
#include "Contents.h"
#include "Ledger.h"
#include "Retention.h"
#include "Schema.h"
#include "Store.h"
#include "basics/Text.h"
#include "basics/Words.h"
#include "support/Input.h"
#include "support/Property.h"

#include <expat.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace {

using fuzzing::Require;
using history::Contents;
using history::Database;
using history::DatabaseError;
using history::TimePoint;

constexpr TimePoint kNow{std::chrono::hours(24 * 22'374)};
constexpr TimePoint kSince = kNow - std::chrono::hours(24 * 30);

/// A database whose columns take any value, as a file's may that was damaged.
Database LooseTables() {
    Database strict = Database::InMemory();
    history::Upgrade(strict);
    std::string sql;
    strict.Prepare("SELECT sql FROM sqlite_schema WHERE sql IS NOT NULL AND name NOT LIKE 'sqlite%'")
        .Each([&sql](const history::Row& row) { sql += row.Text(0) + ";\n"; });
    for (std::size_t place = sql.find("STRICT"); place != std::string::npos; place = sql.find("STRICT")) {
        const bool isFirst = sql.compare(place, 8, "STRICT, ") == 0;
        sql.erase(place, isFirst ? 8 : 6);
    }
    Database loose = Database::InMemory();
    loose.Run(sql);
    return loose;
}

struct Table {
    const char* name;
    std::size_t columns;
};

const Table* TableOf(char letter) {
    static const std::map<char, Table> kTables = {
        {'m', {"marks", 2}},   {'p', {"parts", 10}},   {'s', {"states", 7}}, {'c', {"counters", 2}},
        {'v', {"samples", 5}}, {'d', {"days", 7}},     {'e', {"events", 4}}, {'o', {"deliveries", 2}},
        {'w', {"watch", 2}},   {'x', {"document", 2}},
    };
    const auto found = kTables.find(letter);
    return found == kTables.end() ? nullptr : &found->second;
}

std::string Hex(std::string_view bytes) {
    std::string hex = "x'";
    for (const char byte : bytes) {
        hex += basics::Digits(static_cast<unsigned char>(byte), 2, 16);
    }
    return hex + "'";
}

std::string LiteralOf(std::string_view value) {
    const std::string_view rest = value.substr(std::min<std::size_t>(1, value.size()));
    if (value.starts_with('#')) {
        const auto number = basics::NumberFrom<std::int64_t>(rest).value_or(0);
        return number == std::numeric_limits<std::int64_t>::min() ? "0" : std::to_string(number);
    }
    if (value.starts_with('.')) {
        const double number = basics::NumberFrom<double>(rest).value_or(0.5);
        return std::isfinite(number) ? std::to_string(number) : "9e999";
    }
    if (value.starts_with('~')) {
        return "NULL";
    }
    return value.starts_with('%') ? Hex(rest) : "CAST(" + Hex(value) + " AS TEXT)";
}

/// What the table refuses all the same is no row.
void Insert(Database& database, std::string_view section) {
    const fuzzing::Sections fields = fuzzing::Split(section, fuzzing::kFieldEnd);
    const Table* const table = fields.front().size() == 1 ? TableOf(fields.front().front()) : nullptr;
    if (table == nullptr) {
        return;
    }
    std::string sql;
    for (std::size_t column = 1; column <= table->columns; ++column) {
        sql += (column == 1 ? "" : ", ") +
               (column < fields.size() ? LiteralOf(fields[column]) : std::string("0"));
    }
    try {
        database.Run(std::string("INSERT INTO ") + table->name + " VALUES(" + sql + ")");
    } catch (const DatabaseError&) {
        return;
    }
}

void CheckLines(const std::string& text) {
    Require(text.ends_with('\n'), "what is shown ends with a line");
    for (const std::string_view line : fuzzing::Split(text, '\n')) {
        Require(basics::Printable(line) == line, "nothing that is shown steers a terminal");
    }
}

void CheckPage(const std::string& page) {
    const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(XML_ParserCreate(nullptr),
                                                                              XML_ParserFree);
    Require(XML_Parse(parser.get(), page.data(), static_cast<int>(page.size()), XML_TRUE) == XML_STATUS_OK,
            "a page is well-formed");
}

void CheckReadings(const std::vector<history::Reading>& readings) {
    TimePoint last = TimePoint::min();
    for (const history::Reading& each : readings) {
        Require(std::isfinite(each.low) && std::isfinite(each.high) && std::isfinite(each.last),
                "values are numbers");
        Require(last <= each.from && each.from <= each.until, "values are in their order");
        last = each.from;
    }
}

void CheckEvents(const std::vector<history::NumberedEvent>& events) {
    for (std::size_t index = 0; index < events.size(); ++index) {
        const std::optional<watch::Event> again = watch::EventFrom(JsonOf(events[index].event));
        Require(again && JsonOf(*again) == JsonOf(events[index].event), "an event is read as it was kept");
        Require(index == 0 || events[index - 1].number < events[index].number, "events are in their order");
        CheckLines(views::EventLine(events[index].event, {60}));
    }
}

void CheckPart(Contents& contents, const history::Part& part, std::int64_t id) {
    history::PartHistory told{part,
                              kSince,
                              contents.Answered(),
                              contents.StatesOf(id, kSince),
                              contents.SeriesOf(id, kSince),
                              contents.EventsSince(kSince)};
    for (const history::State& state : told.states) {
        Require(state.since <= state.seen, "a state begins before it ends");
    }
    for (const history::Series& series : told.series) {
        Require(!series.readings.empty(), "a counter has values");
        CheckReadings(series.readings);
    }
    CheckReadings(contents.ReadingsOf(id, history::kTemperature, kSince));
    CheckLines(views::HistoryTable(told, {80}));
    Require(nlohmann::json::accept(views::HistoryJson(told, "")), "every text can be told as JSON");
    CheckPage(views::HistoryHtml(told, ""));
}

void CheckContents(Database& database, const std::string& words) {
    constexpr std::size_t kMostLookedAt = 3;
    Contents contents(database);
    history::Overview overview{contents.Answered()};
    std::vector<std::int64_t> ids;
    contents.EachPart([&](const history::Part& part, std::int64_t id, std::int64_t) {
        overview.parts.push_back(part);
        ids.push_back(id);
    });
    for (std::size_t index = 0; index < std::min(ids.size(), kMostLookedAt); ++index) {
        CheckPart(contents, overview.parts[index], ids[index]);
    }
    CheckLines(views::HistoryTable(overview, {80}));
    Require(nlohmann::json::accept(views::HistoryJson(overview, "")), "every text can be told as JSON");
    CheckPage(views::HistoryHtml(overview, ""));
    Require(history::PartsNamed(overview.parts, words).size() <= overview.parts.size(),
            "names are those of parts");
    CheckEvents(contents.EventsSince(TimePoint::min()));
    CheckEvents(contents.EventsAfter(contents.LastEvent() / 2, 10));
    contents.EachDebt([](const std::string&, const watch::Event& event) {
        Require(!event.id.empty(), "what is owed can be told");
    });
    watch::Watch watch(watch::Rules(), [](TimePoint) { return std::string("id"); });
    const std::vector<watch::StateRow> rows = contents.WatchRows();
    Require(watch.Restore(rows) <= rows.size(), "a watch takes what it can read");
    (void)contents.Document();
}

const inventory::Snapshot& Answer() {
    static const inventory::Snapshot snapshot(inventory::Document::Read(
        "<RAID version=\"1\"><Item Name=\"Physical Drive Information\" Valid=\"TRUE\">"
        "<Item Name=\"### General Information ###\" Valid=\"TRUE\"><Item Name=\"PD No.\" Value=\"PD0\" "
        "Valid=\"TRUE\"/>"
        "<Item Name=\"Serial Number\" Value=\"A\" Valid=\"TRUE\"/>"
        "<Item Name=\"Temperature\" Value=\"31 C\" Valid=\"TRUE\"/></Item></Item></RAID>"));
    return snapshot;
}

/// The service goes on, or finds out that it cannot.
void GoOn(Database& database) {
    try {
        history::Store store(database);
        history::Ledger ledger;
        store.Load(ledger);
        ledger.Take(Answer(), kNow);
        store.Write(ledger);
        ledger.Settle();
        store.WriteRows({{"watch", "{}"}});
        history::Retention retention(database);
        for (int step = 0; step < 10 && retention.Step(kNow).isMore; ++step) {
        }
        bool isThere = false;
        Contents(database).EachPart([&isThere](const history::Part& part, std::int64_t, std::int64_t) {
            isThere = isThere || (part.key == "drive/A" && part.state.level);
        });
        Require(isThere, "what was stored is there");
    } catch (const DatabaseError& error) {
        Require(std::string_view(error.what()).size() > 1, "what cannot be done is told in words");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Database database = LooseTables();
    std::string words;
    database.Run("BEGIN");
    for (const std::string_view section : fuzzing::Split(fuzzing::TextOf(data, size), fuzzing::kSectionEnd)) {
        if (section.starts_with('?')) {
            words = section.substr(1);
        } else {
            Insert(database, section);
        }
    }
    try {
        CheckContents(database, words);
    } catch (const DatabaseError& error) {
        Require(std::string_view(error.what()).size() > 1, "what cannot be read is told in words");
    }
    GoOn(database);
    database.Run("ROLLBACK");
    return 0;
}
