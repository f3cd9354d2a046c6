#pragma once

#include "Database.h"
#include "history/History.h"
#include "watch/Watch.h"

#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace history {

/// What stands in a database of this version, read with care: rows that make no sense are left out. What the
/// database does not do is thrown as DatabaseError.
class Contents final {
  public:
    explicit Contents(Database& database) : m_Database(database) {}

    /// The parts with their latest states, and the ids of both; 0: it has no state.
    void EachPart(const std::function<void(const Part& part, std::int64_t id, std::int64_t stateId)>& take);

    /// Its states that were seen at that time or later, and in any case the latest, the oldest first.
    [[nodiscard]] std::vector<State> StatesOf(std::int64_t part, TimePoint since);

    /// Its counters that have values since then, by their names.
    [[nodiscard]] std::vector<Series> SeriesOf(std::int64_t part, TimePoint since);

    [[nodiscard]] std::vector<Reading> ReadingsOf(std::int64_t part, const std::string& counter,
                                                  TimePoint since);

    /// In the order in which they happened, whatever the clock said.
    [[nodiscard]] std::vector<NumberedEvent> EventsSince(TimePoint since);
    [[nodiscard]] std::vector<NumberedEvent> EventsAfter(std::int64_t number, std::size_t most);
    /// The number of the last event; 0 before the first.
    [[nodiscard]] std::int64_t LastEvent();

    /// Events that are owed to channels, in their order.
    void EachDebt(const std::function<void(const std::string& channel, const watch::Event& event)>& take);

    [[nodiscard]] std::vector<watch::StateRow> WatchRows();
    [[nodiscard]] std::optional<TimePoint> Answered();
    /// Nothing where there is none.
    [[nodiscard]] std::optional<StoredDocument> Document();

  private:
    using Readings = std::unordered_map<std::int64_t, std::vector<Reading>>;  // by the counters' ids

    [[nodiscard]] Readings AllReadingsOf(std::int64_t part, std::optional<std::int64_t> counter,
                                         TimePoint since);
    void AddDays(std::int64_t part, std::optional<std::int64_t> counter, TimePoint since, Readings& readings);
    void AddSamples(std::int64_t part, std::optional<std::int64_t> counter, TimePoint since,
                    Readings& readings);

    Database& m_Database;
    std::optional<Statement> m_Days, m_NextDay, m_Samples;  ///< once they were needed
};

}  // namespace history
