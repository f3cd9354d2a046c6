#include "Remembering.h"

#include "Database.h"

#include <algorithm>

namespace history::test {

using namespace inventory::test;

std::string ItemsOf(const std::vector<MadeUpDrive>& drives) {
    std::string items = ControllerItem("0");
    for (const MadeUpDrive& drive : drives) {
        const bool isWell = drive.state == "ONLINE";
        std::string item = DriveItem("PD" + drive.slot, isWell ? "NO ERROR" : "ERROR", drive.state,
                                     Key("Product ID", "TF6") + Key("Serial Number", drive.serial) +
                                         Key("Temperature", std::to_string(drive.temperature) + " C") +
                                         Key("Media Error Count", std::to_string(drive.mediaErrors)),
                                     "-", "None");
        items += drive.smart.empty()
                     ? item
                     : item.insert(item.rfind("</Item>"), Node("### SMART Information ###", drive.smart));
    }
    return items;
}

Snapshot SnapshotOf(const std::vector<MadeUpDrive>& drives) {
    return Snapshot(inventory::test::Read(ItemsOf(drives)));
}

watch::Event EventNamed(const std::string& id, TimePoint at, const std::string& serial) {
    watch::Event event;
    event.id = id;
    event.at = at;
    event.kind = watch::EventKind::Began;
    event.level = Level::Critical;
    event.about.kind = inventory::PartKind::Drive;
    event.about.level = Level::Critical;
    event.about.controller = "0";
    event.about.part = "PD0";
    event.about.enclosure = "252";
    event.about.slot = "0";
    event.about.serial = serial;
    event.about.what = "FAILED";
    event.words = "drive " + serial + ": FAILED";
    return event;
}

Entry EntryOf(const Snapshot& snapshot, TimePoint at) {
    Entry entry;
    entry.at = at;
    entry.snapshot = &snapshot;
    return entry;
}

namespace {

std::string Text(double value) {
    std::string text = std::to_string(value);
    text.erase(text.find_last_not_of('0') + 1);
    return text.ends_with('.') ? text.substr(0, text.size() - 1) : text;
}

}  // namespace

std::vector<std::string> Lines(const std::vector<Reading>& readings) {
    std::vector<std::string> lines;
    for (const Reading& reading : readings) {
        std::string line = Text(reading.last);
        if (reading.from != reading.until) {
            line = Text(reading.low) + " to " + Text(reading.high) + ", " + line + ": " +
                   basics::UtcText(reading.from, "%m-%d") + " - " + basics::UtcText(reading.until, "%m-%d");
        }
        lines.push_back(line);
    }
    return lines;
}

std::vector<std::string> Lines(const std::vector<State>& states) {
    std::vector<std::string> lines;
    for (const State& state : states) {
        const std::string level(state.level ? NameOf(*state.level) : "gone");
        lines.push_back(basics::UtcText(state.since) + " " + basics::UtcText(state.seen) + " " + level +
                        (state.words.empty() ? "" : " " + state.words));
    }
    return lines;
}

std::vector<std::string> Ids(const std::vector<NumberedEvent>& events) {
    std::vector<std::string> ids;
    for (const NumberedEvent& each : events) {
        ids.push_back(each.event.id);
    }
    return ids;
}

std::string IntegrityOf(const std::string& path) {
    return Database(path, Database::Mode::Write).Text("PRAGMA integrity_check");
}

std::int64_t Count(const std::string& path, const std::string& sql) {
    return Database(path, Database::Mode::Write).Integer(sql);
}

void Change(const std::string& path, const std::string& sql) {
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &database), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(database);
    EXPECT_EQ(sqlite3_close(database), SQLITE_OK);
}

std::vector<std::string> Remembering::StatesOf(const std::string& key) const {
    Reader reader(m_Path);
    for (const Part& part : reader.Parts().parts) {
        if (part.key == key) {
            return Lines(reader.HistoryOf(part, TimePoint()).states);
        }
    }
    return {"no such part"};
}

}  // namespace history::test
