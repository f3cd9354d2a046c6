#pragma once

#include "Value.h"

#include <string>
#include <string_view>
#include <vector>

namespace redfish {

/// What a resource is. Behind each collection stands what its members are.
enum class Kind {
    ServiceRoot,
    ComputerSystemCollection,
    ComputerSystem,
    ChassisCollection,
    Chassis,
    StorageCollection,
    Storage,
    StorageControllerCollection,
    StorageController,
    DriveCollection,
    Drive,
    EnvironmentMetrics,
    DriveMetrics,
    VolumeCollection,
    Volume,
    LogServiceCollection,
    LogService,
    LogEntryCollection,
    LogEntry,
    EventService,
    SessionService,
    SessionCollection,
    Session,
    MessageRegistryFileCollection,
    MessageRegistryFile,
    MessageRegistry,
    Event,
    Message,
    // What is no resource of a schema.
    Versions,
    Odata,
    Metadata,
};

/// A schema: "Drive", "v1_22_0"; a collection has no version.
struct Type {
    Kind kind;
    std::string_view name;
    std::string_view version;
    bool isSwordfish = false;
};

/// Null for what has no schema.
[[nodiscard]] const Type* TypeOf(Kind kind);
[[nodiscard]] const std::vector<Type>& AllTypes();

[[nodiscard]] bool IsCollection(Kind kind);
/// What a collection's members are.
[[nodiscard]] inline Kind MemberOf(Kind collection) {
    return static_cast<Kind>(static_cast<int>(collection) + 1);
}

/// "#Drive.v1_22_0.Drive"
[[nodiscard]] std::string NameOf(Kind kind);

/// Where its JSON schema is published; empty for what has none.
[[nodiscard]] std::string SchemaUriOf(Kind kind);

/// The beginning of a resource: its type, its path, its id where it has one, and its name.
[[nodiscard]] Value Resource(Kind kind, const std::string& path, const std::string& id,
                             const std::string& name);

/// A whole collection.
[[nodiscard]] Value Collection(Kind kind, const std::string& path, const std::string& name,
                               const std::vector<std::string>& members);

}  // namespace redfish
