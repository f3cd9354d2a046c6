#include "Resources.h"
#include "basics/Words.h"
#include "inventory/Measure.h"

#include <algorithm>

namespace redfish {
namespace {

using inventory::Controller;
using inventory::Group;
using inventory::LogicalDrive;

constexpr std::string_view kGroupSettingsTitle = "### LD Settings Information ###";
// The controller's drives serve other groups there.
constexpr std::string_view kCacheGroup = "scRG";

std::string VolumeName(const LogicalDrive& drive) {
    const std::string number = drive.number.empty() ? "Logical drive" : drive.number;
    return drive.name.empty() ? number : number + " (" + drive.name + ")";
}

/// The drives that a group names, each once.
std::vector<std::size_t> MembersOf(const Group& group, std::size_t drives) {
    std::vector<std::size_t> members;
    std::vector<bool> isKnown(drives, false);
    for (const inventory::Member& member : group.members) {
        if (member.drive < drives && !isKnown[member.drive]) {
            isKnown[member.drive] = true;
            members.push_back(member.drive);
        }
    }
    return members;
}

Value VolumeOperationsOf(const Controller& controller, const LogicalDrive& drive,
                         const std::vector<std::size_t>& members) {
    Value operations = Value::array();
    const auto add = [&](std::string_view operation) {
        if (!operation.empty()) {
            operations.push_back({{"Operation", operation}});
        }
    };
    add(Translate(Property::VolumeOperation, drive.state));
    const bool isRebuilt = std::any_of(members.begin(), members.end(), [&](std::size_t member) {
        return !Translate(Property::DriveOperation, StatusOf(controller.drives[member])).empty();
    });
    add(isRebuilt ? "Rebuild" : "");
    return operations;
}

Value VolumeLinksOf(const Controller& controller, const StoragePlace& storage, const VolumePlace& place,
                    const std::vector<std::size_t>& members) {
    const Group& group = controller.groups[place.group];
    std::vector<std::string> drives;
    for (const std::size_t member : members) {
        drives.push_back(storage.drives[member].path);
    }
    std::vector<std::string> spares;
    for (std::size_t each = 0; each < controller.drives.size(); ++each) {
        const inventory::Drive& drive = controller.drives[each];
        if (drive.membership == "DHS" && !drive.group.empty() && drive.group == group.number) {
            spares.push_back(storage.drives[each].path);
        }
    }
    Value links = Value::object();
    PutLinks(links, "Drives", drives);
    PutLinks(links, "DedicatedSpareDrives", spares);
    if (!storage.controllerPath.empty()) {
        PutLinks(links, "Controllers", {storage.controllerPath});
    }
    links["OwningStorageResource"] = LinkTo(storage.path);
    if (!group.caches.empty()) {  // Redfish has a place for one.
        const VolumePlace* const cache = Places::VolumeOf(storage, group.caches.front().number);
        if (cache != nullptr && cache != &place) {
            links["CacheVolumeSource"] = LinkTo(cache->path);
        }
    }
    return links;
}

void PutPolicies(Value& value, const Group& group, Value& oem) {
    const auto setting = [&](std::string_view key) { return ToldIn(group.item, kGroupSettingsTitle, key); };
    PutTranslated(value, "ReadCachePolicy", Property::ReadCachePolicy, setting("Read Policy"), oem,
                  "ReadPolicy");
    PutTranslated(value, "WriteCachePolicy", Property::WriteCachePolicy, setting("Write Policy"), oem,
                  "WritePolicy");
    const std::string access = setting("Access Policy");
    const std::string_view capabilities = Translate(Property::AccessCapabilities, access);
    for (const std::string_view word : basics::Words(capabilities, ",")) {
        value["AccessCapabilities"].push_back(word);
    }
    Put(oem, "AccessPolicy", capabilities.empty() ? access : "");
    Put(oem, "IoPolicy", setting("IO Policy"));
    Put(oem, "DiskCache", setting("Disk Cache"));
    Put(oem, "BackgroundInitialization", setting("Background Initialization"));
}

void PutVolumeOem(Value& value, const Group& group, const LogicalDrive& drive, Value oem) {
    oem["Level"] = inventory::NameOf(drive.health);
    Put(oem, "Number", drive.number);
    Put(oem, "State", drive.state);
    Put(oem, "RaidGroup", group.number);
    Put(oem, "RaidLevel", group.level);
    PutCount(oem, "MemberCount", inventory::CountFrom(group.memberCount));
    Put(oem, "StripeSize", ToldIn(group.item, kGeneralTitle, "Stripe Size"));
    PutOem(value, "Volume", oem);
}

}  // namespace

Value MakeVolumes(const World& world, const Subject& subject) {
    std::vector<std::string> paths;
    for (const VolumePlace& volume : world.places.All()[subject.controller].volumes) {
        paths.push_back(volume.path);
    }
    return Collection(subject.kind, subject.path, "Volumes", paths);
}

Value MakeVolume(const World& world, const Subject& subject) {
    const Controller& controller = world.server.controllers[subject.controller];
    const StoragePlace& storage = world.places.All()[subject.controller];
    const VolumePlace& place = storage.volumes[subject.part];
    const Group& group = controller.groups[place.group];
    const LogicalDrive& drive = group.logicalDrives[place.logicalDrive];
    const std::vector<std::size_t> members = MembersOf(group, storage.drives.size());
    Value oem = Value::object();
    Value value = Resource(subject.kind, subject.path, place.id, VolumeName(drive));
    value["Status"] = StatusOf(Translate(Property::VolumeState, drive.state), HealthOf(drive.health));
    Put(value, "DisplayName", drive.name);
    Put(value, "RAIDType", Translate(Property::RaidType, group.level));
    PutCount(value, "CapacityBytes", inventory::BytesFrom(drive.capacity));
    Put(value, "VolumeUsage", group.number.starts_with(kCacheGroup) ? "CacheOnly" : "");
    PutPolicies(value, group, oem);
    if (Value operations = VolumeOperationsOf(controller, drive, members); !operations.empty()) {
        value["Operations"] = std::move(operations);
    }
    value["Links"] = VolumeLinksOf(controller, storage, place, members);
    PutVolumeOem(value, group, drive, std::move(oem));
    return value;
}

}  // namespace redfish
