#pragma once

#include "inventory/Snapshot.h"
#include "watch/Event.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace board {

using watch::TimePoint;

/// How the last inquiry went.
struct LastInquiry {
    TimePoint at;
    std::string failure{};  ///< why there was no answer; empty: there was one
    unsigned failuresInARow = 0;
};

struct NumberedEvent {
    std::int64_t number = 0;  ///< grows with each event, whatever the clock does
    watch::Event event;
};

/// Something that is not well, from its beginning to its end; it may be of a part that is in no report any
/// more.
struct StandingAlarm {
    TimePoint since;
    inventory::Finding finding;
    bool isVanished = false;  ///< its part is in no report any more
};

/// What the doors to the network answer from: what the service knows of the server at one time. It is
/// replaced as a whole, and never changed once others may see it, so that any number of threads may read it.
struct Board {
    std::uint64_t number = 0;  ///< of this state of things; grows
    std::string host;          ///< what the server is called; may be empty
    TimePoint startedAt;       ///< the service
    /// The latest answer, with the SMART data that drives have told; null before the first one. With when it
    /// was asked for (`takenAt`).
    std::shared_ptr<const inventory::Snapshot> snapshot{};
    std::shared_ptr<const std::string> document{};  ///< its XML as the module made it; null likewise
    std::optional<LastInquiry> inquiry{};           ///< nothing before the first one
    std::vector<StandingAlarm> alarms{};
    std::vector<NumberedEvent> events{};  ///< the latest, the oldest first
};

/// How well the server is as far as is known: the worst of its latest answer and of the alarms, among which
/// may be one of a part that is in no report any more, or that the server cannot be asked. Unknown at least
/// before the first answer, and while the last inquiry was not answered.
[[nodiscard]] inventory::Level LevelOf(const Board& board);

}  // namespace board
