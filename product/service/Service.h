#pragma once

#include "Configuration.h"
#include "Schedule.h"
#include "Worker.h"
#include "board/Messages.h"
#include "board/Picture.h"
#include "history/Archive.h"
#include "telling/Courier.h"
#include "watch/Watch.h"

#include <chrono>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace service {

/// Now, by both clocks: what people read, which may jump, and what intervals are measured by.
struct Moment {
    std::chrono::system_clock::time_point wall;
    std::chrono::steady_clock::time_point steady;
};

/// The service without its processes: keeps the picture of the server, tells from one answer to the next what
/// happens, remembers it and hands it to the channels. Whoever runs it asks the server when that is due, says
/// what came of it, and waits for the channels' children. The time is what it is told.
///
/// Nothing is told that was not stored first, unless it cannot be stored. One thread.
class Service final {
  public:
    /// `log` gets what concerns whoever looks after the service; a line each.
    using Log = std::function<void(const std::string&)>;

    Service(Configuration configuration, Log log, Moment now);

    /// Who else writes the history, in words; nothing where nobody does. To be asked before `Start`.
    [[nodiscard]] std::optional<std::string> OtherWriter() { return m_Archive.OtherWriter(); }

    /// Goes on from what is remembered.
    void Start(Moment now);

    /// The configuration but for the file of the history takes effect at once.
    void Configure(Configuration configuration, Moment now);
    /// Why a new configuration was not taken up.
    void KeepConfiguration(const std::string& why, Moment now);

    /// What the server is to be asked for now; nothing while nothing is due.
    [[nodiscard]] std::optional<Schedule::Inquiry> TakeDue(Moment now) {
        return m_Schedule.TakeDue(now.steady);
    }
    void Hurry(Moment now) { m_Schedule.Hurry(now.steady); }
    void Answered(const std::optional<calls::DrivePlace>& drive, const Answer& answer, Moment now);

    /// Lets the channels work. To be called when `NextDue` has come, and after each of the others.
    void Work(Moment now);
    /// A child has ended; false where it is none of the channels'.
    bool Ended(pid_t process, int status, Moment now) { return m_Courier.Ended(process, status, now.steady); }

    /// `isAsking`: an inquiry runs, so that another one is not due.
    [[nodiscard]] std::optional<std::chrono::steady_clock::time_point> NextDue(bool isAsking) const;

    void Stop(Moment now);
    [[nodiscard]] bool HasChildren() const { return !m_Courier.Processes().empty(); }

    /// "CRITICAL: 2 critical in 1 controller, ..., 3 alarms", for whoever looks.
    [[nodiscard]] std::string State() const;

    /// Another one for whatever has happened.
    [[nodiscard]] std::uint64_t StateNumber() const { return m_State; }
    /// What clients over the network get to see.
    [[nodiscard]] board::Report TheReport() const;
    [[nodiscard]] std::vector<board::DriveReport> SmartReports() const;

    [[nodiscard]] const Configuration& TheConfiguration() const { return m_Configuration; }
    [[nodiscard]] std::vector<watch::Alarm> Alarms() const { return m_Watch.Alarms(); }
    [[nodiscard]] const inventory::Snapshot* Latest() const { return m_Picture.Latest().get(); }
    [[nodiscard]] std::size_t WaitingFor(const std::string& channel) const {
        return m_Courier.WaitingFor(channel);
    }

  private:
    void TakeServer(const Answer& answer, Moment now);
    [[nodiscard]] inventory::Criteria CriteriaNow(Moment now);
    void Tell(std::vector<watch::Event> events, Moment now, const inventory::Snapshot* snapshot = nullptr,
              std::string_view document = {});
    void TellTrouble(inventory::Level level, const std::string& words, const std::string& advice, Moment now,
                     const std::string& exceptChannel = "");
    void Record(history::Entry entry, Moment now);
    void Keep(const watch::Event& event);
    void ReadEvents();
    /// Only what was to be written shows that it can be.
    void Heed(const history::Outcome& outcome, Moment now, bool isWritten = false);
    void TakeOutcomes(Moment now);
    [[nodiscard]] std::vector<history::Delivery> DeliveriesOf(const std::vector<watch::Event>& events,
                                                              const std::string& exceptChannel) const;

    Configuration m_Configuration;
    Log m_Log;
    watch::Watch m_Watch;
    history::Archive m_Archive;
    telling::Courier m_Courier;
    Schedule m_Schedule;
    board::Picture m_Picture;
    std::string m_Document;          ///< the latest answer, as it came
    inventory::Criteria m_Criteria;  ///< by which it was judged
    std::optional<board::LastInquiry> m_Inquiry;
    std::deque<board::NumberedEvent> m_Events;  ///< the latest
    std::uint64_t m_State = 0;                  ///< grows with whatever happens
    std::chrono::system_clock::time_point m_StartedAt;
    std::optional<inventory::Expectations> m_Expectations;  ///< as they could be read last
    std::string m_ExpectTrouble, m_ArchiveTrouble;          ///< as it was told last
    std::chrono::steady_clock::time_point m_Tidied;
};

}  // namespace service
