#include "Schedule.h"

#include "basics/Words.h"

#include <algorithm>

namespace service {

bool IsAsleep(const inventory::Drive& drive) {
    constexpr std::string_view kAwake[] = {"", "-", "N/A", "Active", "Active/Idle", "Idle", "Spun up", "On"};
    return std::none_of(std::begin(kAwake), std::end(kAwake),
                        [&drive](std::string_view word) { return basics::IsSameWord(word, drive.power); });
}

std::chrono::steady_clock::duration Schedule::SmartPace() const {
    return std::chrono::steady_clock::duration(m_Intervals.smart) / static_cast<long>(m_Drives.size());
}

void Schedule::Set(Intervals intervals, TimePoint now) {
    m_Intervals = intervals;
    m_NextServer = std::min(m_NextServer, now + intervals.server);
    if (!IsAskedForSmart()) {
        m_NextSmart.reset();
    } else {
        m_NextSmart = std::min(m_NextSmart.value_or(now + SmartPace()), now + SmartPace());
    }
}

// A machine that slept asks once, and goes on from there.
std::optional<Schedule::Inquiry> Schedule::TakeDue(TimePoint now) {
    if (now >= m_NextServer) {
        m_NextServer = now + m_Intervals.server;
        return Inquiry{};
    }
    if (m_NextSmart && now >= *m_NextSmart && IsAskedForSmart()) {
        m_NextSmart = now + SmartPace();
        const std::size_t number = m_NextDrive++ % m_Drives.size();
        return Inquiry{m_Drives[number]};
    }
    return std::nullopt;
}

Schedule::TimePoint Schedule::NextDue() const {
    return m_NextSmart ? std::min(m_NextServer, *m_NextSmart) : m_NextServer;
}

void Schedule::SeeDrives(const inventory::Server& server, TimePoint now) {
    m_Drives.clear();
    const std::vector<calls::DrivePlace> places = calls::DrivePlaces(server);
    std::size_t number = 0;
    for (const inventory::Controller& controller : server.controllers) {
        for (const inventory::Drive& drive : controller.drives) {
            const calls::DrivePlace& place = places[number++];
            if (place.IsKnown() && (m_Intervals.asksSleeping || !IsAsleep(drive))) {
                m_Drives.push_back(place);
            }
        }
    }
    if (!IsAskedForSmart()) {
        m_NextSmart.reset();
    } else if (!m_NextSmart) {
        m_NextSmart = now + SmartPace();
    }
}

}  // namespace service
