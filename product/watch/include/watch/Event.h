#pragma once

#include "inventory/Finding.h"

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace watch {

using TimePoint = std::chrono::system_clock::time_point;

enum class EventKind {
    Started,        ///< the watch began
    Began,          ///< something is not well
    Changed,        ///< and is so in another way
    Ended,          ///< and is well again, or accepted
    Reminder,       ///< and is still critical
    Came,           ///< a part is new, or back
    Went,           ///< a part is in no report any more
    Moved,          ///< a drive is in another slot
    Grew,           ///< a counter grew faster than it may
    InquiryFailed,  ///< the server could not be asked, once
    Trouble,        ///< of the watch itself: a channel that is down, a history that cannot be written
    Test,
};

/// "began", "inquiry-failed".
[[nodiscard]] std::string_view NameOf(EventKind kind);
[[nodiscard]] std::optional<EventKind> EventKindFrom(std::string_view name);

/// Something that happened, as it is told to people and programs. A plain value.
struct Event {
    std::string id;  ///< one for each event, whoever is told of it: "20310405T060708Z-3f2a9c41"
    TimePoint at;
    EventKind kind = EventKind::Started;
    inventory::Level level = inventory::Level::Ok;   ///< of the part from now on
    inventory::Level before = inventory::Level::Ok;  ///< until now
    inventory::Finding about = {};                   ///< the part; its `what` is the state that it is about
    std::string words;                               ///< "controller 0, RG2, LD4: OFFLINE"
    std::string advice = {};                         ///< what to do; empty where there is nothing
};

/// How much it matters: what ends mattered as much as what began.
[[nodiscard]] inline inventory::Level WeightOf(const Event& event) {
    return std::max(event.level, event.before);
}

/// "CRITICAL began: controller 0, RG2, LD4: OFFLINE".
[[nodiscard]] std::string Describe(const Event& event);

/// One line of JSON, as programs get it, without the line feed; `host` may be empty. docs/watch.md has its
/// keys.
[[nodiscard]] std::string JsonOf(const Event& event, const std::string& host = "");

/// The event of such a line; nothing for any other text.
[[nodiscard]] std::optional<Event> EventFrom(std::string_view json);

}  // namespace watch
