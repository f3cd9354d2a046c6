#pragma once

#include "DocumentText.h"
#include "basics/Time.h"
#include "history/Archive.h"
#include "history/Reader.h"
#include "test_support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

namespace history::test {

using inventory::Level;
using inventory::Snapshot;
using std::chrono::hours;
using std::chrono::minutes;

/// A drive of a made-up server.
struct MadeUpDrive {
    std::string serial;
    std::string slot = "0";
    int temperature = 31;
    int mediaErrors = 0;
    std::string state = "ONLINE";
    std::string smart = {};  ///< the items of its SMART data
};

[[nodiscard]] std::string ItemsOf(const std::vector<MadeUpDrive>& drives);
[[nodiscard]] Snapshot SnapshotOf(const std::vector<MadeUpDrive>& drives);

[[nodiscard]] inline TimePoint At(const char* text) {
    return *basics::TimeFromUtcText(text);
}

[[nodiscard]] watch::Event EventNamed(const std::string& id, TimePoint at, const std::string& serial = "A");

/// An entry with such a snapshot, which must live as long.
[[nodiscard]] Entry EntryOf(const Snapshot& snapshot, TimePoint at);

/// "31", "30 to 33, 31": its values, with a dash between the days of one that lasted.
[[nodiscard]] std::vector<std::string> Lines(const std::vector<Reading>& readings);
/// "2031-04-05T06:00:00Z 2031-04-05T06:05:00Z OK ONLINE".
[[nodiscard]] std::vector<std::string> Lines(const std::vector<State>& states);
[[nodiscard]] std::vector<std::string> Ids(const std::vector<NumberedEvent>& events);

/// What SQLite says of the file: "ok".
[[nodiscard]] std::string IntegrityOf(const std::string& path);
/// The only number that a query gives.
[[nodiscard]] std::int64_t Count(const std::string& path, const std::string& sql);
/// Changes a file behind everybody's back.
void Change(const std::string& path, const std::string& sql);

/// A history in a folder of its own, and a clock.
class Remembering : public testing::Test {
  protected:
    Remembering() : m_Path(m_Folder / "history.db"), m_Archive(m_Path) {}

    [[nodiscard]] Outcome Open() {
        m_Restored = {};
        return m_Archive.Open(m_Now, m_Restored);
    }
    /// Another process takes over, without a word from the one before.
    [[nodiscard]] Outcome Restart() {
        m_Archive = Archive(m_Path);
        return Open();
    }
    /// Five minutes later.
    [[nodiscard]] Outcome Sees(const std::vector<MadeUpDrive>& drives,
                               std::vector<watch::Event> events = {}) {
        m_Now += minutes(5);
        const Snapshot snapshot = SnapshotOf(drives);
        Entry entry = EntryOf(snapshot, m_Now);
        entry.events = std::move(events);
        return m_Archive.Record(entry);
    }
    [[nodiscard]] std::vector<std::string> Readings(const std::string& key, const std::string& counter,
                                                    TimePoint since = TimePoint()) const {
        return Lines(Reader(m_Path).ReadingsOf(key, counter, since));
    }
    [[nodiscard]] std::vector<std::string> StatesOf(const std::string& key) const;

    testsupport::TempFolder m_Folder;
    std::string m_Path;
    TimePoint m_Now = At("2031-04-05T06:00:00Z");
    Archive m_Archive;
    Restored m_Restored;
};

}  // namespace history::test
