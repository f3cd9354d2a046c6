#pragma once

#include "inventory/Level.h"

#include <span>
#include <string>
#include <string_view>

namespace redfish {

/// A property of Redfish whose values are made of words of the report.
enum class Property {
    Health,
    DriveState,
    DriveOperation,
    VolumeState,
    VolumeOperation,
    ControllerState,
    HotspareType,
    Protocol,
    MediaType,
    RaidType,
    ReadCachePolicy,
    WriteCachePolicy,
    AccessCapabilities,
};

/// A row of the one table that translates; docs/redfish.md shows it.
struct Translation {
    Property property;
    std::string_view told;   ///< in any letter case; empty: where nothing is told
    std::string_view value;  ///< "Enabled"; of a list "Read,Write"
};

/// What a property is called, and what it is made of: "Drive `Status.State`", "`PD Status(Detail)`".
struct PropertyNames {
    Property property;
    std::string_view name;
    std::string_view from;
};

[[nodiscard]] std::span<const Translation> Translations();
[[nodiscard]] std::span<const PropertyNames> AllPropertyNames();

/// Empty for words that Redfish has none for.
[[nodiscard]] std::string_view Translate(Property property, std::string_view told);

/// "Warning"
[[nodiscard]] std::string_view HealthOf(inventory::Level level);

/// A property of one of our own objects, below "Oem": {"Zorbalt": {"@odata.type": "#Zorbalt.v1_0_0.Drive",
/// ...
struct OemKey {
    std::string_view type;     ///< "Drive"
    std::string_view key;      ///< "PowerStatus"
    std::string_view edm;      ///< "Edm.String"
    std::string_view meaning;  ///< for people
};

inline constexpr std::string_view kOemName = "Zorbalt";
inline constexpr std::string_view kOemNamespace = "Zorbalt.v1_0_0";

[[nodiscard]] std::span<const OemKey> OemKeys();

}  // namespace redfish
