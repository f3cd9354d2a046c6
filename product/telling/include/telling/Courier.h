#pragma once

#include "telling/Channel.h"
#include "watch/Event.h"

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace telling {

using SteadyTime = std::chrono::steady_clock::time_point;

/// What has become of an event, or of a channel.
struct Outcome {
    enum class What {
        Delivered,  ///< an event; it is no longer kept
        Failed,     ///< an attempt; the event is kept
        Recovered,  ///< the channel, whose attempts failed until now
        Dropped,    ///< an event that was never delivered: the queue was full
    };
    What what = What::Delivered;
    std::string channel;
    std::string id = {};     ///< of the event
    std::string words = {};  ///< "notify.sh ended with status 3: no such pager"; what the channel said
    unsigned attempts = 0;   ///< that failed in a row; 1: the channel has just gone down
    std::chrono::seconds nextTry{0};  ///< of Failed: until then
};

/// How deliveries are tried again, and by whom events are told.
struct Manner {
    std::string host = {};                                    ///< whose events they are: "storage7"
    std::chrono::seconds firstPause{10}, longestPause{3600};  ///< doubled from one failure to the next
    /// A number from 0 up to 1, anew each time: a tenth of the pause is left to chance, so that many servers
    /// do not try at once. Empty: a random one.
    std::function<double()> chance = {};
};

/// Tells channels of events: keeps a queue for each of them in memory, delivers one event at a time and in
/// order, at least once, and tries again after growing pauses. Channels do not wait for each other.
///
/// What may hang runs in a child process, with all rights of this one for programs and with none for HTTP.
/// The owner reaps children and tells of each by `Ended`; he calls `Work` when `NextDue` has come, and takes
/// `Outcomes` after any call. Nothing here blocks, or looks at the clock.
///
/// A failure is worth an event of its own where `attempts` is 1, for the other channels alone; so is a
/// recovery.
///
/// One thread, and a process that has no other. Children that run are killed by the destructor, with their
/// own.
class Courier final {
  public:
    explicit Courier(Manner manner);
    Courier(const Courier&) = delete;
    Courier& operator=(const Courier&) = delete;
    ~Courier();

    /// What the server is called from now on; what is on its way has the name that it had.
    void SetHost(const std::string& host) { m_Manner.host = host; }

    /// Those that stay keep their queues, and try at once what has failed; what waits for one that is gone is
    /// dropped.
    void SetChannels(const std::vector<Channel>& channels, SteadyTime now);

    /// Whatever the channel's least level is. An event that waits there already is not added again. False
    /// where there is no such channel.
    bool Add(const std::string& channel, const watch::Event& event);

    /// Starts what is due, ends what takes too long.
    void Work(SteadyTime now);

    /// Of a child that was waited for. False where it is none of these.
    bool Ended(pid_t process, int status, SteadyTime now);

    /// When `Work` has something to do; nothing while only children or new events can bring any.
    [[nodiscard]] std::optional<SteadyTime> NextDue() const;

    /// What has happened since the last call, in order.
    [[nodiscard]] std::vector<Outcome> Outcomes();

    /// Starts nothing any more and asks what runs to end; `Work` kills it two seconds later.
    void Stop(SteadyTime now);

    /// Children that run.
    [[nodiscard]] std::vector<pid_t> Processes() const;

    /// How many events wait for a channel, those included that are being delivered.
    [[nodiscard]] std::size_t WaitingFor(const std::string& channel) const;

  private:
    class Outbox;

    [[nodiscard]] Outbox* Find(const std::string& channel) const;

    Manner m_Manner;
    std::vector<std::unique_ptr<Outbox>> m_Outboxes;
    std::vector<Outcome> m_Outcomes;
};

}  // namespace telling
