#include "Resources.h"
#include "basics/Words.h"
#include "inventory/Measure.h"
#include "inventory/Smart.h"

namespace redfish {
namespace {

using inventory::Drive;

std::string SmartTold(const Drive& drive, std::string_view key) {
    return drive.smart == nullptr ? "" : ValueOf(*drive.smart, key);
}

std::string DriveName(const Drive& drive) {
    std::string name = drive.number.empty() ? "Drive" : drive.number;
    name += drive.enclosure.empty() ? "" : " in enclosure " + drive.enclosure;
    return drive.slot.empty() ? name : name + (drive.enclosure.empty() ? " in slot " : " slot ") + drive.slot;
}

/// 12 of "12.0 Gb/s"; nothing of "8.0 GT/s", which counts something else.
std::optional<double> GigabitsFrom(std::string_view speed) {
    constexpr std::string_view kUnit = "Gb/s";
    if (speed.size() <= kUnit.size() ||
        !basics::IsSameWord(speed.substr(speed.size() - kUnit.size()), kUnit)) {
        return std::nullopt;
    }
    const auto measure = inventory::MeasureFrom(speed.substr(0, speed.size() - kUnit.size()));
    return measure && measure->unit.empty() ? std::optional(measure->number) : std::nullopt;
}

std::optional<double> PowerOnHoursOf(const Drive& drive) {
    const auto measure = inventory::MeasureFrom(SmartTold(drive, "Power-On Time"));
    const bool isHours =
        measure && (basics::IsSameWord(measure->unit, "Hours") || basics::IsSameWord(measure->unit, "h"));
    return isHours ? std::optional(measure->number) : std::nullopt;
}

/// Nothing where nobody said so, either way.
std::optional<bool> IsFailurePredicted(const Drive& drive) {
    const bool isAnnounced = basics::IsSameWord(SmartTold(drive, "SMART Status"), "Failed") ||
                             (drive.smart != nullptr && !FailingRowsOf(SmartOf(drive)).empty());
    const std::optional<std::uint64_t> count = inventory::CountFrom(drive.predictiveFailures);
    if (isAnnounced) {
        return true;
    }
    return count ? std::optional(*count > 0) : std::nullopt;
}

/// A drive of which the reports say two things at once is in neither of these states for certain.
std::string_view TranslatedState(Property property, const Drive& drive) {
    return Translate(property, drive.statuses.size() > 1 ? drive.detail : StatusOf(drive));
}

std::string_view HotspareTypeOf(const Drive& drive) {
    return drive.membership.starts_with("LD") ? "None" : Translate(Property::HotspareType, drive.membership);
}

Value LocationOf(const Drive& drive) {
    Value location = Value::object();
    std::string label = drive.enclosure.empty() ? "" : "Enclosure " + drive.enclosure;
    label += drive.slot.empty() ? "" : (label.empty() ? "Slot " : " Slot ") + drive.slot;
    Value part = Value::object();
    Put(part, "ServiceLabel", label);
    if (!drive.slot.empty()) {
        part["LocationType"] = "Slot";
        PutCount(part, "LocationOrdinalValue", basics::NumberFrom<std::int32_t>(drive.slot));
    }
    if (!part.empty()) {
        location["PartLocation"] = std::move(part);
    }
    Put(location, "PartLocationContext", drive.position);
    return location;
}

Value DriveLinksOf(const StoragePlace& storage, const DrivePlace& place) {
    std::vector<std::string> volumes;
    for (const std::size_t group : place.groups) {
        for (std::size_t each = storage.firstVolume[group]; each < storage.firstVolume[group + 1]; ++each) {
            volumes.push_back(storage.volumes[each].path);
        }
    }
    Value links = Value::object();
    links["Chassis"] = LinkTo(kChassisPath);
    links["Storage"] = LinkTo(storage.path);
    PutLinks(links, "Volumes", volumes);
    return links;
}

void PutDriveOem(Value& value, const Drive& drive, Value oem) {
    oem["Level"] = inventory::NameOf(drive.health);
    Put(oem, "Number", drive.number);
    Put(oem, "Enclosure", drive.enclosure);
    Put(oem, "Slot", drive.slot);
    Put(oem, "RaidGroup", drive.group);
    Put(oem, "Membership", drive.membership);
    Put(oem, "Status", basics::Joined(drive.statuses));
    Put(oem, "StatusDetail", drive.detail);
    Put(oem, "PowerStatus", drive.power);
    PutCount(oem, "MediaErrorCount", inventory::CountFrom(drive.mediaErrors));
    PutCount(oem, "OtherErrorCount", inventory::CountFrom(drive.otherErrors));
    PutCount(oem, "PredictiveFailureCount", inventory::CountFrom(drive.predictiveFailures));
    Put(oem, "SmartStatus", SmartTold(drive, "SMART Status"));
    PutOem(value, "Drive", oem);
}

const Drive& DriveAt(const World& world, const Subject& subject) {
    return world.server.controllers[subject.controller].drives[subject.part];
}

}  // namespace

bool HasEnvironment(const inventory::Drive& drive) {
    return inventory::CelsiusFrom(drive.temperature).has_value();
}

bool HasMetrics(const inventory::Drive& drive) {
    return PowerOnHoursOf(drive).has_value();
}

Value MakeDrive(const World& world, const Subject& subject) {
    const Drive& drive = DriveAt(world, subject);
    const StoragePlace& storage = world.places.All()[subject.controller];
    const DrivePlace& place = storage.drives[subject.part];
    Value oem = Value::object();
    Value value = Resource(subject.kind, subject.path, place.id, DriveName(drive));
    value["Status"] = StatusOf(TranslatedState(Property::DriveState, drive), HealthOf(drive.health));
    Put(value, "Manufacturer", drive.vendor);
    Put(value, "Model", drive.product);
    Put(value, "SerialNumber", drive.serial);
    Put(value, "FirmwareVersion", drive.firmware);
    PutTranslated(value, "Protocol", Property::Protocol, drive.interfaceType, oem, "Interface");
    PutTranslated(value, "MediaType", Property::MediaType, drive.media, oem, "Media");
    PutCount(value, "CapacityBytes", inventory::BytesFrom(drive.capacity));
    const std::string speed = ToldIn(drive.item, kGeneralTitle, "Link Speed");
    const std::optional<double> gigabits = GigabitsFrom(speed);
    PutNumber(value, "NegotiatedSpeedGbs", gigabits);
    Put(oem, "LinkSpeed", gigabits ? "" : speed);
    PutCount(value, "FailurePredicted", IsFailurePredicted(drive));
    Put(value, "HotspareType", HotspareTypeOf(drive));
    if (const std::string_view operation = TranslatedState(Property::DriveOperation, drive);
        !operation.empty()) {
        value["Operations"].push_back({{"Operation", operation}});
    }
    if (Value location = LocationOf(drive); !location.empty()) {
        value["PhysicalLocation"] = std::move(location);
    }
    if (HasEnvironment(drive)) {
        value["EnvironmentMetrics"] = LinkTo(subject.path + "/EnvironmentMetrics");
    }
    if (HasMetrics(drive)) {
        value["Metrics"] = LinkTo(subject.path + "/Metrics");
    }
    value["Links"] = DriveLinksOf(storage, place);
    PutDriveOem(value, drive, std::move(oem));
    return value;
}

Value MakeEnvironment(const World& world, const Subject& subject) {
    const Drive& drive = DriveAt(world, subject);
    Value value =
        Resource(subject.kind, subject.path, "EnvironmentMetrics", DriveName(drive) + ", environment");
    PutNumber(value["TemperatureCelsius"], "Reading", inventory::CelsiusFrom(drive.temperature));
    return value;
}

Value MakeDriveMetrics(const World& world, const Subject& subject) {
    const Drive& drive = DriveAt(world, subject);
    Value value = Resource(subject.kind, subject.path, "Metrics", DriveName(drive) + ", metrics");
    PutNumber(value, "PowerOnHours", PowerOnHoursOf(drive));
    return value;
}

}  // namespace redfish
