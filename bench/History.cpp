// What the memory of the service takes on the disk: the life of a server, simulated day by day. A temperature
// moves by a degree every fourth inquiry of five minutes; SMART data are asked for every six hours, half of
// the drives tell 20 attributes with value and raw data, of which 4 numbers move each time, the others tables
// of 10 rows by 7 columns, of which half the numbers grow; errors are few.

#include "Database.h"
#include "Ledger.h"
#include "Retention.h"
#include "Schema.h"
#include "Store.h"
#include "basics/Time.h"
#include "history/Archive.h"
#include "support/InChild.h"
#include "test_support/TempFolder.h"

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <random>

namespace bench {
namespace {

using history::TimePoint;
using std::chrono::hours;
using std::chrono::minutes;

constexpr int kInquiriesOfDay = 288;
constexpr int kSmartEvery = 72;

std::string Item(const std::string& name, const std::string& value) {
    return "<Item Name=\"" + name + "\" Value=\"" + value + "\" Valid=\"TRUE\"/>";
}

std::string Node(const std::string& name, const std::string& items) {
    return "<Item Name=\"" + name + "\" Valid=\"TRUE\">" + items + "</Item>";
}

std::string Table(int rows, int columns) {
    std::string table;
    for (int row = 0; row < rows; ++row) {
        std::string cells = Item("Attribute", "Attribute " + std::to_string(row));
        for (int column = 0; column < columns; ++column) {
            cells += Item("Column " + std::to_string(column), std::to_string(1000 * row + column));
        }
        table += Node("SMART Detail(SAS)", cells);
    }
    return table;
}

/// A server of so many drives that are well, in enclosures of 24.
std::string Document(int drives, int temperature = 31) {
    std::string items =
        Node("Controller Information", Node("### General Information ###", Item("Controller No.", "0")));
    for (int drive = 0; drive < drives; ++drive) {
        const std::string number = std::to_string(drive);
        items += Node("Physical Drive Information",
                      Node("### General Information ###",
                           Item("PD No.", "PD" + number) + Item("PD Status", "NO ERROR") +
                               Item("PD Status(Detail)", "HOT SPARE") + Item("LD No.", "GHS") +
                               Item("Vendor", "TALLFIR") + Item("Product ID", "TF600S15") +
                               Item("Serial Number", "7K" + std::to_string(10'000'000 + drive)) +
                               Item("Temperature", std::to_string(temperature + drive % 7) + " C") +
                               Item("Media Error Count", "0") + Item("Other Error Count", "0") +
                               Item("Predictive Failure Count", "0")) +
                          Node("### SMART Information ###",
                               Item("Temperature", "31 C") + Item("Power-On Time", "20411 Hours") +
                                   (drive % 2 == 0 ? Table(20, 2) : Table(10, 7))) +
                          Node("### Enclosure Properties Information ###",
                               Item("Enclosure No.", std::to_string(drive / 24)) +
                                   Item("Slot No.", std::to_string(drive % 24))));
    }
    return "<RAID version=\"1\">" + items + "</RAID>";
}

/// The server's values as they move, without its documents, which would take most of the time.
class Life final {
  public:
    Life(history::Store& store, history::Ledger& ledger, TimePoint start, int drives)
        : m_Store(store), m_Ledger(ledger), m_Now(start) {
        const inventory::Snapshot snapshot(inventory::Document::Read(Document(drives)));
        m_Ledger.Take(snapshot, m_Now);
        for (auto& [key, part] : m_Ledger.Parts()) {
            if (part.values.size() > 1) {
                m_Parts.push_back(&part);
            }
        }
    }

    [[nodiscard]] TimePoint Now() const { return m_Now; }

    /// All in one transaction: the file does not know.
    void Day(history::Database& database) {
        history::Transaction transaction(database);
        for (int inquiry = 0; inquiry < kInquiriesOfDay; ++inquiry) {
            m_Now += minutes(5);
            std::size_t number = 0;
            for (history::Ledger::KnownPart* const part : m_Parts) {
                const bool hasSmart = (static_cast<std::size_t>(inquiry) + number++) % kSmartEvery == 0;
                Move(*part, inquiry == 0, hasSmart);
            }
            m_Store.Write(m_Ledger);
            m_Ledger.Settle();
        }
        transaction.Commit();
    }

  private:
    void Move(history::Ledger::KnownPart& part, bool isFirst, bool hasSmart) {
        for (history::Ledger::Value& value : part.values) {
            const std::string& name = m_Ledger.Counters()[value.counter].name;
            const bool isSmart = name.starts_with("SMART");
            bool isNew = isFirst;
            if (name == history::kTemperature && Chance(4)) {
                value.value += Chance(2) ? 1 : -1;
                isNew = true;
            } else if (isSmart && hasSmart && Moves(value.counter, part)) {
                value.value += 1 + static_cast<double>(m_Chance() % 100);
                isNew = true;
            } else if (!isSmart && name != history::kTemperature && Chance(200'000)) {
                value.value += 1;
                isNew = true;
            }
            if (isNew) {
                m_Ledger.Waits().samples.push_back({&part, value.counter, m_Now, value.value});
            }
        }
    }

    /// 4 of 42 numbers, or half of 72.
    static bool Moves(std::uint32_t counter, const history::Ledger::KnownPart& part) {
        return counter % (part.values.size() > 60 ? 2 : 11) == 0;
    }
    bool Chance(std::uint32_t of) { return m_Chance() % of == 0; }

    history::Store& m_Store;
    history::Ledger& m_Ledger;
    TimePoint m_Now;
    std::vector<history::Ledger::KnownPart*> m_Parts;
    std::mt19937 m_Chance{1};
};

double BytesOf(history::Database& database, const std::string& tables) {
    return static_cast<double>(
        database.Integer("SELECT coalesce(sum(pgsize), 0) FROM dbstat WHERE name IN (" + tables + ")"));
}

/// Bytes of the file after so many days, and how many of those are of values in full, and of days.
void Size(benchmark::State& state) {
    const auto drives = static_cast<int>(state.range(0));
    const auto days = static_cast<int>(state.range(1));
    for ([[maybe_unused]] const auto each : state) {
        const testsupport::TempFolder folder;
        history::Database database(folder / "history.db", history::Database::Mode::Write);
        database.Run("PRAGMA journal_mode = WAL; PRAGMA synchronous = OFF; PRAGMA secure_delete = OFF");
        history::Upgrade(database);
        history::Store store(database);
        history::Ledger ledger;
        Life life(store, ledger, *basics::TimeFromUtcText("2031-01-01T00:00:00Z"), drives);
        history::Retention retention(database);
        for (int day = 0; day < days; ++day) {
            life.Day(database);
            history::Transaction transaction(database);
            while (retention.Step(life.Now()).isMore) {
            }
            transaction.Commit();
        }
        database.Run("PRAGMA wal_checkpoint(TRUNCATE)");
        state.counters["bytes"] =
            static_cast<double>(database.Integer("PRAGMA page_count") * database.Integer("PRAGMA page_size"));
        state.counters["in_full"] = BytesOf(database, "'samples'");
        state.counters["by_day"] = BytesOf(database, "'days'");
        state.counters["free"] = static_cast<double>(database.Integer("PRAGMA freelist_count") *
                                                     database.Integer("PRAGMA page_size"));
    }
}

/// What storing an inquiry takes, with its document and its temperatures, every fourth of which has changed.
void Record(benchmark::State& state) {
    const auto drives = static_cast<int>(state.range(0));
    const testsupport::TempFolder folder;
    const std::string documents[2] = {Document(drives, 31), Document(drives, 32)};
    const inventory::Snapshot snapshots[2] = {
        inventory::Snapshot(inventory::Document::Read(documents[0])),
        inventory::Snapshot(inventory::Document::Read(documents[1])),
    };
    history::Archive archive(folder / "history.db");
    history::Restored restored;
    TimePoint now = *basics::TimeFromUtcText("2031-01-01T00:00:00Z");
    state.counters["resident"] = InChild([&] {
        const double before = Resident();
        history::Archive other(folder / "other.db");
        (void)other.Open(now, restored);
        history::Entry entry;
        entry.at = now;
        entry.snapshot = snapshots;
        entry.document = documents[0];
        (void)other.Record(entry);
        ::malloc_trim(0);
        return Resident() - before;
    });
    (void)archive.Open(now, restored);
    std::size_t number = 0;
    for ([[maybe_unused]] const auto each : state) {
        now += minutes(5);
        history::Entry entry;
        entry.at = now;
        const std::size_t which = number++ / 2 % 2;
        entry.snapshot = &snapshots[which];
        entry.document = documents[which];
        if (!archive.Record(entry).IsStored()) {
            state.SkipWithError("nothing is stored");
        }
    }
    state.counters["document"] = static_cast<double>(documents[0].size());
}

/// What a start takes with the file of a year: looking through it, and reading what was stored last.
void Start(benchmark::State& state) {
    const auto drives = static_cast<int>(state.range(0));
    const testsupport::TempFolder folder;
    const std::string path = folder / "history.db";
    {
        history::Database database(path, history::Database::Mode::Write);
        database.Run("PRAGMA journal_mode = WAL; PRAGMA synchronous = OFF");
        history::Upgrade(database);
        history::Store store(database);
        history::Ledger ledger;
        Life life(store, ledger, *basics::TimeFromUtcText("2031-01-01T00:00:00Z"), drives);
        for (int day = 0; day < static_cast<int>(state.range(1)); ++day) {
            life.Day(database);
        }
    }
    for ([[maybe_unused]] const auto each : state) {
        history::Archive archive(path);
        history::Restored restored;
        if (!archive.Open(*basics::TimeFromUtcText("2031-03-01T00:00:00Z"), restored).IsStored()) {
            state.SkipWithError("it cannot be opened");
        }
    }
}

}  // namespace

BENCHMARK(Size)
    ->Name("history/bytes")
    ->Args({26, 40})
    ->Args({26, 365})
    ->Args({26, 1000})
    ->Args({4096, 40})
    ->Args({4096, 365})
    ->ArgNames({"drives", "days"})
    ->Iterations(1)
    ->Unit(benchmark::kSecond);
BENCHMARK(Record)->Name("history/record")->Arg(26)->Arg(4096)->Unit(benchmark::kMillisecond);
BENCHMARK(Start)->Name("history/start")->Args({26, 30})->Args({4096, 5})->Unit(benchmark::kMillisecond);

}  // namespace bench

BENCHMARK_MAIN();
