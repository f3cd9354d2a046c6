#pragma once

#include "inventory/Snapshot.h"
#include "watch/Event.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace watch {

struct Present;  ///< the parts of a snapshot

/// When something is told. The defaults and their reasons are in docs/watch.md.
struct Rules {
    unsigned failuresToTell = 3;           ///< in a row, until "the server cannot be asked" is an alarm
    std::chrono::seconds calm{600};        ///< how long a part has to be well until its alarm ends
    std::chrono::seconds reminder{86400};  ///< from one to the next
    /// How much counters may grow in a day.
    std::uint64_t mediaErrors = 10, otherErrors = 100, predictiveFailures = 0;
    bool operator==(const Rules&) const = default;
};

/// Something that is not well, from its beginning to its end. It stands while its part is in no report.
struct Alarm {
    std::string key;             ///< of part and rule: "drive/7K00025200C4|state"
    std::string part, place;     ///< keys of the part, and of where it is
    inventory::Finding finding;  ///< as it was last seen
    TimePoint since, told;
    std::optional<TimePoint> wellSince = {};  ///< while it may be about to end
    std::optional<TimePoint> ended = {};      ///< kept for a day, to know what comes back
    unsigned returns = 0;     ///< how often it has come back within a day of its end: it flaps
    bool isVanished = false;  ///< its part is in no report any more
};

/// A part that was seen.
struct KnownPart {
    std::string key, place;    ///< as of an alarm
    inventory::Finding about;  ///< how it is called
    unsigned missing = 0;      ///< inquiries in a row that did not tell of it
    bool isGone = false;       ///< that was told
};

/// A counter of a drive, and what it was when its day began.
struct Growth {
    std::string key;  ///< of drive and counter: "drive/7K00025200C4|media errors"
    TimePoint since;
    std::uint64_t first = 0;
    bool isTold = false;
};

/// A piece of what the watch has to know after a restart. Whoever keeps it need not understand it.
struct StateRow {
    std::string key, text;
};

/// Turns what a server tells from time to time into events: what began, changed, ended; what came, went,
/// moved, grew. It knows nothing of how the server is asked, or who is told; the time is what it is told, and
/// may jump. One thread.
class Watch final {
  public:
    /// Makes the id of an event.
    using IdSource = std::function<std::string(TimePoint)>;

    explicit Watch(Rules rules, IdSource ids);

    void SetRules(const Rules& rules) { m_Rules = rules; }

    /// Goes on from what `Rows` gave. Rows that cannot be read are left out; how many.
    std::size_t Restore(const std::vector<StateRow>& rows);
    [[nodiscard]] std::vector<StateRow> Rows() const;

    [[nodiscard]] Event Started(TimePoint now, const std::string& words);

    /// The server answered.
    [[nodiscard]] std::vector<Event> Take(const inventory::Snapshot& snapshot, TimePoint now);

    /// It did not.
    [[nodiscard]] std::vector<Event> FailedToAsk(const std::string& why, TimePoint now);

    /// Reminders that are due, between inquiries too.
    [[nodiscard]] std::vector<Event> Remind(TimePoint now);

    /// Of the watch itself.
    [[nodiscard]] Event TroubleWith(inventory::Level level, const std::string& words,
                                    const std::string& advice, TimePoint now);

    /// Those that stand, the worst first.
    [[nodiscard]] std::vector<Alarm> Alarms() const;

    /// When the server last answered; nothing where it never did.
    [[nodiscard]] std::optional<TimePoint> LastAnswer() const { return m_LastAnswer; }

  private:
    void CompareParts(const Present& present, TimePoint now);
    void CompareFindings(const Present& present, const inventory::Health& health, TimePoint now);
    void Raise(const Present& present, const inventory::Finding& finding, TimePoint now);
    Event* RaiseItself(const char* key, const inventory::Finding& finding, TimePoint now);
    void Settle(const Present& present, const std::unordered_set<std::string>& found, TimePoint now);
    void Calm(Alarm& alarm, TimePoint now);
    void End(Alarm& alarm, const std::string& words, TimePoint now);
    void CountGrowth(const Present& present, TimePoint now);
    void CountGrowth(const std::string& drive, const inventory::Finding& about, const char* counter,
                     const std::string& told, std::uint64_t most, TimePoint now);
    void Forget(TimePoint now);
    void SetBackTo(TimePoint now);
    Event& Tell(EventKind kind, const inventory::Finding& about, TimePoint now);
    [[nodiscard]] std::vector<Event> Told();

    Rules m_Rules;
    IdSource m_Ids;
    std::map<std::string, Alarm> m_Alarms;
    std::map<std::string, KnownPart> m_Parts;
    std::map<std::string, Growth> m_Growths;
    std::optional<TimePoint> m_LastAnswer, m_LastReminder;
    unsigned m_Failures = 0;
    std::string m_LastFailure;
    std::vector<Event> m_Events;  ///< of the call that is going on
};

/// Ids of time and chance, which no two events share, whatever the clock does: "20310405T060708Z-3f2a9c41".
[[nodiscard]] std::string RandomId(TimePoint now);

/// What to do about a finding, in a sentence.
[[nodiscard]] std::string AdviceFor(const inventory::Finding& finding);

}  // namespace watch
