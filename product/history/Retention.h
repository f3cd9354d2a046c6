#pragma once

#include "Database.h"
#include "history/History.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace history {

/// How long what is kept; docs/watch.md has the reasons.
inline constexpr std::int64_t kDaysInFull = 30;
inline constexpr std::int64_t kDaysInAll = 730;
inline constexpr std::int64_t kMostEventsKept = 100'000;
inline constexpr std::int64_t kMostStatesKept = 200'000;

/// The time that ages are measured by: it follows the clock, but only so fast that a clock which is wrong for
/// a while makes nothing old. It covers a day in an hour, back and forth.
[[nodiscard]] TimePoint FollowClock(TimePoint followed, TimePoint clock, std::chrono::seconds elapsed);

/// Takes away what is older than it is to get, a little at a time: what is left of a day in full becomes its
/// minimum, maximum and last value, and those are gone in the end. What it does not do is thrown as
/// DatabaseError.
class Retention final {
  public:
    explicit Retention(Database& database);

    struct Done {
        bool isMore = false;               ///< to be done
        std::vector<std::string> parts{};  ///< keys of those of which nothing is known any more
    };

    /// To be called in a transaction. What `now` is comes from `FollowClock`.
    [[nodiscard]] Done Step(TimePoint now);

  private:
    [[nodiscard]] bool ThinOut(std::int64_t today);
    void AddDay(std::int64_t part, std::int64_t counter, std::int64_t day, const Reading& reading);
    [[nodiscard]] bool DropStates(std::int64_t today);
    [[nodiscard]] bool DropEvents(std::int64_t today);
    [[nodiscard]] std::vector<std::string> ForgetParts(std::int64_t today);

    Database& m_Database;
    Statement m_OldestDay, m_DayOf, m_RemoveSamples, m_RunBefore, m_WriteRun, m_RemoveRun, m_RemoveOldRuns,
        m_RemoveStates, m_RemoveSpareStates, m_OldestEvents, m_RemoveEvent;
    std::int64_t m_SweptDay;  ///< up to which there is nothing left to take away of states and events
};

}  // namespace history
