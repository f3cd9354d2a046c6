#pragma once

#include "Errand.h"
#include "telling/Courier.h"

#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace telling {

/// A channel with the events that wait for it, the first of which may be on its way. One at a time, in order;
/// what weighs least is dropped first when there are too many, of those the oldest.
class Courier::Outbox final {
  public:
    /// Both outlive it.
    Outbox(Channel channel, const Manner& manner, std::vector<Outcome>& outcomes);

    [[nodiscard]] const Channel& About() const { return m_Channel; }
    [[nodiscard]] std::size_t Waiting() const { return m_Events.size(); }

    /// Other settings under the same name; what is on its way goes on by the old ones.
    void Change(const Channel& channel, SteadyTime now);

    void Add(const watch::Event& event);

    /// The channel is gone.
    void DropAll(const std::string& why);

    void Work(SteadyTime now);
    void Stop(SteadyTime now);
    void Ended(int status, SteadyTime now);
    [[nodiscard]] std::optional<SteadyTime> NextDue() const;

    /// The child that runs.
    [[nodiscard]] std::optional<pid_t> Process() const;

  private:
    [[nodiscard]] bool IsUnderWay() const { return m_Errand.has_value(); }
    void DropToFit();
    void Drop(std::size_t number, const std::string& why);
    void Start(SteadyTime now);
    void AskToEnd(SteadyTime now);
    void Finish(bool isDelivered, const std::string& words, SteadyTime now);
    void Succeed(const std::string& words);
    void Fail(const std::string& words, SteadyTime now);
    [[nodiscard]] std::chrono::steady_clock::duration Pause() const;
    void Tell(Outcome::What what, const std::string& id, const std::string& words);

    Channel m_Channel;
    const Manner& m_Manner;
    std::vector<Outcome>& m_Outcomes;
    std::deque<watch::Event> m_Events;
    std::optional<Errand> m_Errand;       ///< with the first of them
    std::chrono::seconds m_TimeLimit{0};  ///< of that
    SteadyTime m_End;                     ///< of its time; then of the time that it has to end
    bool m_IsAskedToEnd = false;
    bool m_IsStopped = false;
    std::size_t m_Dropped = 0;        ///< of which the channel has not been told
    std::size_t m_DroppedToTell = 0;  ///< of which it is told by what is on its way
    unsigned m_Failures = 0;          ///< in a row
    SteadyTime m_NextTry;
};

}  // namespace telling
