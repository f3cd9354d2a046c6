#pragma once

#include "watch/Event.h"

#include <span>
#include <string_view>

namespace redfish {

/// An event of the watch as Redfish has it: the key of its message, "Began" of "Zorbalt.1.0.Began", and its
/// `EventType`.
struct EventNames {
    watch::EventKind kind;
    std::string_view key;
    std::string_view eventType;
    std::string_view meaning;
};

[[nodiscard]] std::span<const EventNames> AllEventNames();

}  // namespace redfish
