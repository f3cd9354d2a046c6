#pragma once

#include "history/History.h"
#include "inventory/Snapshot.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace history {

/// What is known to stand in the file, so that only what is new goes there, and what waits to be written.
/// While there is no file to write to it takes everything all the same; what waits is bounded by `Trim`.
///
/// Ids are those of the file that is open; 0: none yet. Knows no database.
class Ledger final {
  public:
    struct Counter {
        std::string name;
        std::int64_t id = 0;
        bool isStored = false;
    };
    /// The value of a counter that was stored last, or waits.
    struct Value {
        std::uint32_t counter = 0;
        std::uint32_t inquiry = 0;  ///< in which it was last told
        std::int64_t day = 0;       ///< of which it is stored
        double value = 0;
    };
    struct KnownPart {
        std::int64_t id = 0;
        inventory::Finding about = {};
        State state = {};
        std::int64_t stateId = 0;
        bool hasState = false;
        bool isStored = false, isStateStored = false;
        std::uint32_t inquiry = 0;       ///< in which it was last told; 0: by none since the start
        std::vector<Value> values = {};  ///< by counter
    };
    /// A state that has ended.
    struct EndedState {
        KnownPart* part = nullptr;
        std::int64_t id = 0;
        State state;
    };
    struct Sample {
        KnownPart* part = nullptr;
        std::uint32_t counter = 0;
        TimePoint at;
        double value = 0;
    };
    /// An event that is owed to a channel.
    struct Debt {
        std::string channel, event;
    };
    struct Waiting {
        std::vector<EndedState> states;
        std::vector<Sample> samples;
        std::vector<watch::Event> events;
        std::vector<Debt> owed, paid;
    };

    /// The states and the counters that a server told.
    void Take(const inventory::Snapshot& snapshot, TimePoint now);
    void Take(const watch::Event& event) { m_Waiting.events.push_back(event); }
    void Owe(const std::string& channel, const watch::Event& event);
    void Pay(const std::string& channel, const std::string& event);

    [[nodiscard]] Waiting& Waits() { return m_Waiting; }
    [[nodiscard]] std::unordered_map<std::string, KnownPart>& Parts() { return m_Parts; }
    [[nodiscard]] std::vector<Counter>& Counters() { return m_Counters; }

    /// Everything that waited is stored, and every part, state and counter is.
    void Settle();
    /// It was not: forgets the oldest of what would be too much to keep.
    void Trim();

    // Another file takes the place of the one before: first nothing is stored, then what stands in it.
    void Disown();
    void Own(const Part& part, std::int64_t id, std::int64_t stateId);
    void OwnCounter(std::int64_t id, const std::string& name);
    void OwnValue(std::int64_t part, std::int64_t counter, std::int64_t day, double value);
    void OwnDebt(const std::string& channel, const watch::Event& event);
    /// What is left to be stored anew.
    void EndOwning();

    /// For parts that are gone from the file; nothing may be waiting.
    void Forget(const std::string& key) { m_Parts.erase(key); }

    /// Ids that no row of the file has.
    std::int64_t nextPart = 1, nextState = 1, nextCounter = 1;

  private:
    void See(KnownPart& part, State state);
    void Measure(KnownPart& part, const std::string& counter, double value, TimePoint now);
    [[nodiscard]] std::optional<std::uint32_t> NumberOf(const std::string& counter);

    std::unordered_map<std::string, KnownPart> m_Parts;
    std::unordered_map<std::int64_t, KnownPart*> m_OwnedParts;  ///< while a file is taken over
    std::unordered_map<std::int64_t, std::uint32_t> m_OwnedCounters;
    std::vector<Counter> m_Counters;
    std::unordered_map<std::string, std::uint32_t> m_CounterNumbers;
    /// Events that are owed to anybody, by their ids.
    std::map<std::string, std::pair<watch::Event, std::set<std::string>>> m_Owed;
    Waiting m_Waiting;
    std::uint32_t m_Inquiry = 0;
};

}  // namespace history
