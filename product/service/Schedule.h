#pragma once

#include "calls/Drives.h"
#include "inventory/Server.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace service {

/// When the server is asked for what: for everything at an interval, and for the SMART data of one drive
/// after the other, spread over an interval of their own. One inquiry at a time, which whoever asks sees to.
/// Knows steady time alone.
class Schedule final {
  public:
    using TimePoint = std::chrono::steady_clock::time_point;

    struct Intervals {
        std::chrono::seconds server, smart;  ///< `smart`: for all drives together; 0: never
        bool asksSleeping = false;
    };

    Schedule(Intervals intervals, TimePoint now) : m_Intervals(intervals), m_NextServer(now) {}

    /// Intervals that are shorter take effect at once.
    void Set(Intervals intervals, TimePoint now);

    /// What is due: the server, or a drive; nothing while nothing is. It counts as asked then.
    struct Inquiry {
        std::optional<calls::DrivePlace> drive;
    };
    [[nodiscard]] std::optional<Inquiry> TakeDue(TimePoint now);

    /// When something is due next.
    [[nodiscard]] TimePoint NextDue() const;

    /// The server is asked as soon as possible.
    void Hurry(TimePoint now) { m_NextServer = now; }

    /// Which drives there are, in the server's latest answer.
    void SeeDrives(const inventory::Server& server, TimePoint now);

  private:
    [[nodiscard]] bool IsAskedForSmart() const { return m_Intervals.smart.count() > 0 && !m_Drives.empty(); }
    [[nodiscard]] std::chrono::steady_clock::duration SmartPace() const;

    Intervals m_Intervals;
    TimePoint m_NextServer;
    std::optional<TimePoint> m_NextSmart;
    std::vector<calls::DrivePlace> m_Drives;  ///< that may be asked, in the document's order
    std::size_t m_NextDrive = 0;
};

/// Whether a drive has been put to sleep, and would be woken by being asked: "Stopped", "Standby".
[[nodiscard]] bool IsAsleep(const inventory::Drive& drive);

}  // namespace service
