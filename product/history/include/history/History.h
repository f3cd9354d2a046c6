#pragma once

#include "inventory/Finding.h"
#include "watch/Event.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace history {

using watch::TimePoint;

// What is remembered of a server, as it is read back. Plain values.

/// A state that a part was in.
struct State {
    TimePoint since;                          ///< when it was first seen in it
    TimePoint seen;                           ///< and when last: to the day while it stands
    std::optional<inventory::Level> level{};  ///< nothing while it was in no report
    std::string words{};                      ///< "OPTIMAL"; empty where it told none
    std::string place{};                      ///< "controller 0, RG1, PD9 in enclosure 16 slot 1"
};

/// A part that is there, or was.
struct Part {
    std::string key;           ///< "drive/7K00025200C4": what the watch calls it
    inventory::Finding about;  ///< what and where it was last
    State state;               ///< its latest
};

/// Values of a counter: one, of a moment, or what a time of whole days comes to.
struct Reading {
    TimePoint from, until;  ///< the same for a single value
    double low = 0, high = 0, last = 0;
};

/// A counter of a drive over time, the oldest first.
struct Series {
    std::string counter;  ///< "temperature", "media errors", "SMART Power-On Time"
    std::vector<Reading> readings;
};

struct NumberedEvent {
    std::int64_t number = 0;  ///< grows with each event, whatever the clock does
    watch::Event event;
};

/// The parts of a server as the latest answer has them.
struct Overview {
    std::optional<TimePoint> answered = {};  ///< nothing where there was no answer yet
    std::vector<Part> parts = {};            ///< those that are in no report any more stand last
};

/// What happened to a part since a time.
struct PartHistory {
    Part part;
    TimePoint since;
    std::optional<TimePoint> answered = {};
    std::vector<State> states = {};  ///< those that stood then or later, the oldest first
    std::vector<Series> series = {};
    std::vector<NumberedEvent> events = {};
};

/// A drive's counters that say how it is getting on.
struct DriveLines {
    std::vector<Reading> temperature, mediaErrors, otherErrors;
};

/// What happened to a server in a time.
struct ServerHistory {
    TimePoint since, until;
    std::map<std::string, DriveLines> drives = {};  ///< by their keys
    std::vector<NumberedEvent> events = {};
};

/// The server's RAID document, and when it was told.
struct StoredDocument {
    TimePoint at;
    std::string xml;
};

// Names of counters that are no SMART data.
inline constexpr const char* kTemperature = "temperature";
inline constexpr const char* kMediaErrors = "media errors";
inline constexpr const char* kOtherErrors = "other errors";
inline constexpr const char* kPredictedFailures = "predicted failures";

/// Those that are meant by what people type: "7K00025200C4", "0 252:3", "RG1", "controller 0", or a place as
/// it is printed. Where one that is there and others that were are called so, it is the one that is there.
[[nodiscard]] std::vector<Part> PartsNamed(const std::vector<Part>& parts, const std::string& words);

}  // namespace history
