#pragma once

#include "Places.h"
#include "Tables.h"
#include "Types.h"
#include "inventory/Server.h"

#include <cstddef>
#include <string>

namespace redfish {

/// Which resource it is: its path, and which part of the server or of the events it tells of.
struct Subject {
    Kind kind;
    std::string path;  ///< without "/" at its end
    std::size_t controller = 0;
    std::size_t part = 0;  ///< drive, volume, or event
};

// Each writes one resource, out of what is told.

[[nodiscard]] Value MakeServiceRoot(const World& world, const Subject& subject);
[[nodiscard]] Value MakeSystem(const World& world, const Subject& subject);
[[nodiscard]] Value MakeSystems(const World& world, const Subject& subject);
[[nodiscard]] Value MakeChassis(const World& world, const Subject& subject);
[[nodiscard]] Value MakeAllChassis(const World& world, const Subject& subject);
[[nodiscard]] Value MakeSessionService(const World& world, const Subject& subject);

[[nodiscard]] Value MakeStorages(const World& world, const Subject& subject);
[[nodiscard]] Value MakeStorage(const World& world, const Subject& subject);
[[nodiscard]] Value MakeControllers(const World& world, const Subject& subject);
[[nodiscard]] Value MakeController(const World& world, const Subject& subject);

[[nodiscard]] Value MakeChassisDrives(const World& world, const Subject& subject);
[[nodiscard]] Value MakeDrive(const World& world, const Subject& subject);
[[nodiscard]] Value MakeEnvironment(const World& world, const Subject& subject);
[[nodiscard]] Value MakeDriveMetrics(const World& world, const Subject& subject);
/// Whether there is anything to tell there.
[[nodiscard]] bool HasEnvironment(const inventory::Drive& drive);
[[nodiscard]] bool HasMetrics(const inventory::Drive& drive);

[[nodiscard]] Value MakeVolumes(const World& world, const Subject& subject);
[[nodiscard]] Value MakeVolume(const World& world, const Subject& subject);

[[nodiscard]] Value MakeLogServices(const World& world, const Subject& subject);
[[nodiscard]] Value MakeLog(const World& world, const Subject& subject);
[[nodiscard]] Value MakeEntries(const World& world, const Subject& subject);
[[nodiscard]] Value MakeEntry(const World& world, const Subject& subject);
[[nodiscard]] Value MakeEventService(const World& world, const Subject& subject);
[[nodiscard]] Value MakeRegistries(const World& world, const Subject& subject);
[[nodiscard]] Value MakeRegistryFile(const World& world, const Subject& subject);
[[nodiscard]] Value MakeRegistry(const World& world, const Subject& subject);
/// The path of an event's entry in the log.
[[nodiscard]] std::string EntryPathOf(const board::NumberedEvent& event);
/// What is sent of an event, by itself.
[[nodiscard]] Value MakeEvent(const World& world, const board::NumberedEvent& event);
/// Something that is not well, as a member of "Conditions".
[[nodiscard]] Value MakeCondition(const World& world, const board::StandingAlarm& alarm);

// What is no resource of a schema.
[[nodiscard]] Value MakeVersions(const World& world, const Subject& subject);
[[nodiscard]] Value MakeOdata(const World& world, const Subject& subject);
/// XML.
[[nodiscard]] std::string MetadataText();

// Parts of resources.

/// {"State": ..., "Health": ...} without what is empty.
[[nodiscard]] Value StatusOf(std::string_view state, std::string_view health, std::string_view rollup = "");
/// Puts {"Zorbalt": {"@odata.type": "#Zorbalt.v1_0_0.Drive", ...}} where it holds anything.
void PutOem(Value& object, std::string_view type, const Value& oem);
/// Puts the word of Redfish where there is one, else what was told under a key of our own.
void PutTranslated(Value& object, const char* key, Property property, const std::string& told, Value& oem,
                   const char* oemKey);
/// What a part's report tells under a key in the sections of that title; else "".
[[nodiscard]] std::string ToldIn(const inventory::Item* root, std::string_view title, std::string_view key);
inline constexpr std::string_view kGeneralTitle = "### General Information ###";

}  // namespace redfish
