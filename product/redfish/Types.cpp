#include "Types.h"

#include <algorithm>

namespace redfish {

const std::vector<Type>& AllTypes() {
    static const std::vector<Type> types = {
        {Kind::ServiceRoot, "ServiceRoot", "v1_21_0"},
        {Kind::ComputerSystemCollection, "ComputerSystemCollection", ""},
        {Kind::ComputerSystem, "ComputerSystem", "v1_28_0"},
        {Kind::ChassisCollection, "ChassisCollection", ""},
        {Kind::Chassis, "Chassis", "v1_28_0"},
        {Kind::StorageCollection, "StorageCollection", ""},
        {Kind::Storage, "Storage", "v1_22_0"},
        {Kind::StorageControllerCollection, "StorageControllerCollection", ""},
        {Kind::StorageController, "StorageController", "v1_12_0"},
        {Kind::DriveCollection, "DriveCollection", ""},
        {Kind::Drive, "Drive", "v1_22_0"},
        {Kind::EnvironmentMetrics, "EnvironmentMetrics", "v1_6_0"},
        {Kind::DriveMetrics, "DriveMetrics", "v1_4_0"},
        {Kind::VolumeCollection, "VolumeCollection", "", true},
        {Kind::Volume, "Volume", "v1_10_2", true},
        {Kind::LogServiceCollection, "LogServiceCollection", ""},
        {Kind::LogService, "LogService", "v1_9_0"},
        {Kind::LogEntryCollection, "LogEntryCollection", ""},
        {Kind::LogEntry, "LogEntry", "v1_21_0"},
        {Kind::EventService, "EventService", "v1_12_0"},
        {Kind::SessionService, "SessionService", "v1_2_0"},
        {Kind::SessionCollection, "SessionCollection", ""},
        {Kind::Session, "Session", "v1_8_0"},
        {Kind::MessageRegistryFileCollection, "MessageRegistryFileCollection", ""},
        {Kind::MessageRegistryFile, "MessageRegistryFile", "v1_1_5"},
        {Kind::MessageRegistry, "MessageRegistry", "v1_8_0"},
        {Kind::Event, "Event", "v1_13_0"},
        {Kind::Message, "Message", "v1_3_0"},
    };
    return types;
}

const Type* TypeOf(Kind kind) {
    const auto place = static_cast<std::size_t>(kind);
    return place < AllTypes().size() ? &AllTypes()[place] : nullptr;
}

bool IsCollection(Kind kind) {
    const Type* const type = TypeOf(kind);
    return type != nullptr && type->version.empty();
}

std::string NameOf(Kind kind) {
    const Type* const type = TypeOf(kind);
    std::string name = "#";
    if (type != nullptr) {
        name.append(type->name).append(".");
        name.append(type->version).append(type->version.empty() ? "" : ".").append(type->name);
    }
    return name;
}

std::string SchemaUriOf(Kind kind) {
    const Type* const type = TypeOf(kind);
    if (type == nullptr) {
        return "";
    }
    std::string uri = "http://redfish.dmtf.org/schemas/";
    uri.append(type->isSwordfish ? "swordfish/" : "").append("v1/").append(type->name);
    return uri.append(type->version.empty() ? "" : ".").append(type->version) + ".json";
}

Value Resource(Kind kind, const std::string& path, const std::string& id, const std::string& name) {
    Value value = {{"@odata.type", NameOf(kind)}, {"@odata.id", path}};
    Put(value, "Id", id);
    value["Name"] = name;
    return value;
}

Value Collection(Kind kind, const std::string& path, const std::string& name,
                 const std::vector<std::string>& members) {
    Value value = Resource(kind, path, "", name);
    PutLinks(value, "Members", members);
    return value;
}

}  // namespace redfish
