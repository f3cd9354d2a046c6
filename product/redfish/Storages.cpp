#include "Resources.h"
#include "inventory/Measure.h"

#include <algorithm>

namespace redfish {
namespace {

using inventory::Controller;
using inventory::Level;

constexpr std::string_view kSettingsTitle = "### Controller Settings Information ###";

std::string ControllerName(const Controller& controller) {
    std::string name = controller.number.empty() ? "Controller" : "Controller " + controller.number;
    return controller.product.empty() ? name : name + " (" + controller.product + ")";
}

/// Of what is still there, and of what was: a drive that was pulled is in no report any more.
Level LevelWithAlarms(const World& world, const Controller& controller) {
    Level level = controller.health;
    for (const board::StandingAlarm& alarm : world.board->alarms) {
        const bool isIts = alarm.finding.controller == controller.number && !controller.number.empty();
        level = isIts ? std::max(level, alarm.finding.level) : level;
    }
    return level;
}

Value ControllerStatusOf(const Controller& controller) {
    return StatusOf(Translate(Property::ControllerState, controller.status),
                    HealthOf(controller.statusHealth));
}

void PutIdentity(Value& value, const Controller& controller) {
    Put(value, "Model", controller.product);
    Put(value, "SerialNumber", controller.serial);
    Put(value, "FirmwareVersion", controller.firmware);
    value["Status"] = ControllerStatusOf(controller);
}

Value BackupUnitOf(const inventory::BackupUnit& unit) {
    Value value = {{"@odata.type", "#" + std::string(kOemNamespace) + ".BackupUnit"}};
    Put(value, "Name", unit.name);
    value["Level"] = inventory::NameOf(unit.health);
    Put(value, "Presence", unit.presence);
    Put(value, "Status", unit.status);
    Put(value, "ReplacementRequired", unit.replacement);
    return value;
}

Value ControllerOemOf(const Controller& controller) {
    const auto general = [&](std::string_view key) { return ToldIn(controller.item, kGeneralTitle, key); };
    Value oem = {{"Level", inventory::NameOf(controller.statusHealth)}};
    Put(oem, "Number", controller.number);
    Put(oem, "Status", controller.status);
    Put(oem, "HostInterface", general("Host Interface"));
    Put(oem, "PciLocation", general("PCI Location"));
    Put(oem, "MemorySize", general("Memory Size"));
    for (const inventory::BackupUnit& unit : controller.backupUnits) {
        oem["BackupUnits"].push_back(BackupUnitOf(unit));
    }
    return oem;
}

/// "30 %" as 30.
void PutRate(Value& rates, const char* key, const std::string& told) {
    const std::optional<inventory::Measure> rate = inventory::MeasureFrom(told);
    constexpr double kAll = 100;
    if (rate && rate->unit == "%" && rate->number >= 0 && rate->number <= kAll) {
        rates[key] = static_cast<int>(rate->number);
    }
}

Value RatesOf(const Controller& controller) {
    const auto setting = [&](std::string_view key) { return ToldIn(controller.item, kSettingsTitle, key); };
    Value rates = Value::object();
    PutRate(rates, "ConsistencyCheckRatePercent", setting("Consistency Check Rate"));
    PutRate(rates, "RebuildRatePercent", setting("Rebuild Rate"));
    PutRate(rates, "TransformationRatePercent", setting("Reconstruction Rate"));
    return rates;
}

std::vector<std::string> PathsOf(const std::vector<DrivePlace>& drives) {
    std::vector<std::string> paths;
    for (const DrivePlace& drive : drives) {
        paths.push_back(drive.path);
    }
    return paths;
}

}  // namespace

Value MakeStorages(const World& world, const Subject& subject) {
    std::vector<std::string> paths;
    for (const StoragePlace& storage : world.places.All()) {
        paths.push_back(storage.path);
    }
    return Collection(subject.kind, subject.path, "Storage", paths);
}

Value MakeStorage(const World& world, const Subject& subject) {
    const Controller& controller = world.server.controllers[subject.controller];
    const StoragePlace& place = world.places.All()[subject.controller];
    Value value = Resource(subject.kind, subject.path, place.id, ControllerName(controller));
    const std::string_view health = HealthOf(controller.statusHealth);
    value["Status"] = StatusOf("Enabled", health, HealthOf(LevelWithAlarms(world, controller)));
    value["Controllers"] = LinkTo(subject.path + "/Controllers");
    if (!place.controllerPath.empty()) {  // Where older clients look for it.
        Value old = {{"@odata.id", subject.path + "#/StorageControllers/0"},
                     {"MemberId", "0"},
                     {"Name", ControllerName(controller)}};
        PutIdentity(old, controller);
        value["StorageControllers@odata.count"] = 1;
        value["StorageControllers"].push_back(std::move(old));
    }
    PutLinks(value, "Drives", PathsOf(place.drives));
    value["Volumes"] = LinkTo(subject.path + "/Volumes");
    PutLinks(value["Links"], "Enclosures", {kChassisPath});
    return value;
}

Value MakeControllers(const World& world, const Subject& subject) {
    const std::string& path = world.places.All()[subject.controller].controllerPath;
    return Collection(subject.kind, subject.path, "Controllers",
                      path.empty() ? std::vector<std::string>() : std::vector<std::string>{path});
}

Value MakeController(const World& world, const Subject& subject) {
    constexpr std::uint64_t kMebibyte = 1U << 20U;
    const Controller& controller = world.server.controllers[subject.controller];
    const StoragePlace& place = world.places.All()[subject.controller];
    Value value = Resource(subject.kind, subject.path, place.id, ControllerName(controller));
    PutIdentity(value, controller);
    const auto cache = inventory::BytesFrom(ToldIn(controller.item, kGeneralTitle, "Cache Memory Size"));
    if (cache) {
        value["CacheSummary"]["TotalCacheSizeMiB"] = *cache / kMebibyte;
    }
    if (Value rates = RatesOf(controller); !rates.empty()) {
        value["ControllerRates"] = std::move(rates);
    }
    std::vector<std::string> volumes;
    for (const VolumePlace& volume : place.volumes) {
        volumes.push_back(volume.path);
    }
    PutLinks(value["Links"], "AttachedVolumes", volumes);
    PutOem(value, "Controller", ControllerOemOf(controller));
    return value;
}

}  // namespace redfish
