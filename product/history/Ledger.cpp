#include "Ledger.h"

#include "Calendar.h"
#include "Measurements.h"
#include "watch/SeenPart.h"

#include <algorithm>
#include <tuple>

namespace history {
namespace {

// Reports that are garbled over and over may tell of any number of them.
constexpr std::size_t kMostParts = 50'000;
constexpr std::size_t kMostCounters = 2000;

// What may wait while nothing can be written: weeks of a usual server.
constexpr std::size_t kMostSamples = 100'000;
constexpr std::size_t kMostStates = 10'000;
constexpr std::size_t kMostEvents = 10'000;

auto NamesOf(const inventory::Finding& about) {
    return std::tie(about.kind, about.controller, about.group, about.part, about.enclosure, about.slot,
                    about.product, about.serial);
}

bool IsSame(const State& one, const State& other) {
    return std::tie(one.level, one.words, one.place) == std::tie(other.level, other.words, other.place);
}

template <typename Each>
void KeepLast(std::size_t most, std::vector<Each>& all) {
    if (all.size() > most) {
        all.erase(all.begin(), all.end() - static_cast<std::ptrdiff_t>(most));
    }
}

/// Where the counter's value is, or belongs.
auto PlaceOf(std::vector<Ledger::Value>& values, std::uint32_t counter) {
    return std::lower_bound(
        values.begin(), values.end(), counter,
        [](const Ledger::Value& value, std::uint32_t number) { return value.counter < number; });
}

void Keep(const Ledger::Value& value, std::vector<Ledger::Value>& values) {
    const auto place = PlaceOf(values, value.counter);
    if (place == values.end() || place->counter != value.counter) {
        values.insert(place, value);
    } else {
        *place = value;
    }
}

}  // namespace

void Ledger::Take(const inventory::Snapshot& snapshot, TimePoint now) {
    ++m_Inquiry;
    for (const watch::SeenPart& seen : watch::PartsOf(snapshot)) {
        if (m_Parts.size() >= kMostParts && !m_Parts.contains(seen.key)) {
            continue;
        }
        KnownPart& part = m_Parts[seen.key];
        part.isStored = part.isStored && NamesOf(part.about) == NamesOf(seen.about);
        part.about = seen.about;
        part.inquiry = m_Inquiry;
        See(part, {now, now, seen.level, seen.words, inventory::PlaceOf(seen.about)});
        if (seen.drive != nullptr) {
            MeasureDrive(*seen.drive, [&](const std::string& counter, double value) {
                Measure(part, counter, value, now);
            });
        }
    }
    for (auto& [key, part] : m_Parts) {
        if (part.inquiry != m_Inquiry) {
            See(part, {now, now, std::nullopt, "", part.state.place});
        }
    }
}

void Ledger::See(KnownPart& part, State state) {
    if (part.hasState && IsSame(part.state, state)) {
        const TimePoint seen = std::max(part.state.since, state.seen);  // The clock may have been put back.
        part.isStateStored = part.isStateStored && DayOf(seen) == DayOf(part.state.seen);
        part.state.seen = seen;
        return;
    }
    if (part.hasState) {
        m_Waiting.states.push_back({&part, part.stateId, std::move(part.state)});
    }
    part.state = std::move(state);
    part.stateId = 0;
    part.hasState = true;
    part.isStateStored = false;
}

void Ledger::Measure(KnownPart& part, const std::string& counter, double value, TimePoint now) {
    const std::optional<std::uint32_t> number = NumberOf(counter);
    if (!number) {
        return;
    }
    const auto place = PlaceOf(part.values, *number);
    const bool isKnown = place != part.values.end() && place->counter == *number;
    if (isKnown && place->inquiry == m_Inquiry) {
        return;  // A table may have two rows of one name.
    }
    const std::int64_t day = DayOf(now);
    if (!isKnown || place->value != value || place->day != day) {
        m_Waiting.samples.push_back({&part, *number, now, value});
    }
    const Value known{*number, m_Inquiry, day, value};
    isKnown ? void(*place = known) : void(part.values.insert(place, known));
}

std::optional<std::uint32_t> Ledger::NumberOf(const std::string& counter) {
    if (const auto found = m_CounterNumbers.find(counter); found != m_CounterNumbers.end()) {
        return found->second;
    }
    if (m_Counters.size() >= kMostCounters) {
        return std::nullopt;
    }
    const auto number = static_cast<std::uint32_t>(m_Counters.size());
    m_Counters.push_back({counter});
    m_CounterNumbers.emplace(counter, number);
    return number;
}

void Ledger::Owe(const std::string& channel, const watch::Event& event) {
    auto& [owed, channels] = m_Owed[event.id];
    owed = event;
    if (channels.insert(channel).second) {
        m_Waiting.owed.push_back({channel, event.id});
    }
}

void Ledger::Pay(const std::string& channel, const std::string& event) {
    const auto owed = m_Owed.find(event);
    if (owed == m_Owed.end() || owed->second.second.erase(channel) == 0) {
        return;
    }
    if (owed->second.second.empty()) {
        m_Owed.erase(owed);
    }
    m_Waiting.paid.push_back({channel, event});
}

void Ledger::Settle() {
    m_Waiting = {};
    for (auto& [key, part] : m_Parts) {
        part.isStored = part.isStateStored = true;
    }
    for (Counter& counter : m_Counters) {
        counter.isStored = true;
    }
}

void Ledger::Trim() {
    KeepLast(kMostSamples, m_Waiting.samples);
    KeepLast(kMostStates, m_Waiting.states);
    KeepLast(kMostEvents, m_Waiting.events);
}

void Ledger::Disown() {
    m_OwnedParts.clear();
    m_OwnedCounters.clear();
    for (auto& [key, part] : m_Parts) {
        part.id = part.stateId = 0;
        part.isStored = part.isStateStored = false;
    }
    for (Counter& counter : m_Counters) {
        counter.id = 0;
        counter.isStored = false;
    }
    for (EndedState& ended : m_Waiting.states) {
        ended.id = 0;
    }
}

void Ledger::Own(const Part& stored, std::int64_t id, std::int64_t stateId) {
    KnownPart& part = m_Parts[stored.key];
    m_OwnedParts[id] = &part;
    part.id = id;
    const bool isSeen = part.inquiry != 0;  // What was seen since is newer than what is stored.
    part.isStored = !isSeen || NamesOf(part.about) == NamesOf(stored.about);
    part.about = isSeen ? part.about : stored.about;
    if (stateId == 0 || (isSeen && !IsSame(part.state, stored.state))) {
        return;
    }
    const TimePoint seen = isSeen ? part.state.seen : stored.state.seen;
    part.state = stored.state;
    part.state.seen = std::max(part.state.since, seen);
    part.stateId = stateId;
    part.hasState = true;
    part.isStateStored = !isSeen;
}

void Ledger::OwnCounter(std::int64_t id, const std::string& name) {
    if (const std::optional<std::uint32_t> number = NumberOf(name)) {
        m_Counters[*number].id = id;
        m_Counters[*number].isStored = true;
        m_OwnedCounters[id] = *number;
    }
}

void Ledger::OwnValue(std::int64_t part, std::int64_t counter, std::int64_t day, double value) {
    const auto owner = m_OwnedParts.find(part);
    const auto number = m_OwnedCounters.find(counter);
    if (owner != m_OwnedParts.end() && number != m_OwnedCounters.end() && owner->second->inquiry == 0) {
        Keep({number->second, 0, day, value}, owner->second->values);
    }
}

void Ledger::OwnDebt(const std::string& channel, const watch::Event& event) {
    const std::vector<Debt>& paid = m_Waiting.paid;
    if (std::any_of(paid.begin(), paid.end(),
                    [&](const Debt& debt) { return debt.channel == channel && debt.event == event.id; })) {
        return;
    }
    auto& [owed, channels] = m_Owed[event.id];
    owed = event;
    channels.insert(channel);
}

void Ledger::EndOwning() {
    for (auto& [key, part] : m_Parts) {
        if (part.id == 0) {
            part.values.clear();
        }
    }
    for (const Sample& sample : m_Waiting.samples) {
        if (sample.part->id == 0) {
            Keep({sample.counter, 0, DayOf(sample.at), sample.value}, sample.part->values);
        }
    }
    m_OwnedParts.clear();
    m_OwnedCounters.clear();
    std::vector<watch::Event> events;
    std::vector<Debt> owed;
    for (const auto& [id, debts] : m_Owed) {
        events.push_back(debts.first);
        for (const std::string& channel : debts.second) {
            owed.push_back({channel, id});
        }
    }
    std::sort(events.begin(), events.end(),
              [](const watch::Event& one, const watch::Event& other) { return one.at < other.at; });
    events.insert(events.end(), m_Waiting.events.begin(), m_Waiting.events.end());
    m_Waiting.events = std::move(events);
    m_Waiting.owed = std::move(owed);
}

}  // namespace history
