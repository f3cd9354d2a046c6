#include "JsonValue.h"
#include "basics/Time.h"
#include "basics/Words.h"
#include "inventory/Measure.h"
#include "inventory/Smart.h"
#include "views/Views.h"

namespace views {
namespace {

using inventory::NameOf;

constexpr int kSchemaVersion = 2;

/// Null for what is no whole number.
Value Count(const std::string& text) {
    const std::optional<std::uint64_t> count = inventory::CountFrom(text);
    return count ? Value(*count) : Value(nullptr);
}

Value Bytes(const std::string& text) {
    const std::optional<std::uint64_t> bytes = inventory::BytesFrom(text);
    return bytes ? Value(*bytes) : Value(nullptr);
}

Value Number(const std::optional<inventory::Measure>& measure) {
    return NumberValue(measure ? std::optional(measure->number) : std::nullopt);
}

Value FromFinding(const inventory::Finding& finding) {
    return {{"level", NameOf(finding.level)},
            {"place", inventory::PlaceOf(finding)},
            {"controller", Told(finding.controller)},
            {"group", Told(finding.group)},
            {"part", Told(finding.part)},
            {"enclosure", Told(finding.enclosure)},
            {"slot", Told(finding.slot)},
            {"model", Told(finding.product)},
            {"serial", Told(finding.serial)},
            {"what", finding.what},
            {"accepted", finding.isAccepted},
            {"accepted_until", Told(finding.until)},
            {"accepted_reason", Told(finding.reason)}};
}

Value FromHealth(const inventory::Health& health) {
    return {{"level", NameOf(health.level)},
            {"headline", inventory::Headline(health)},
            {"counts",
             {{"controllers", health.counts.controllers},
              {"groups", health.counts.groups},
              {"logical_drives", health.counts.logicalDrives},
              {"drives", health.counts.drives}}},
            {"findings", Each(health.findings, FromFinding)}};
}

Value FromRuns(const inventory::ToolRuns& runs) {
    if (runs.commands == 0) {  // Nobody watched.
        return nullptr;
    }
    return {{"commands", runs.commands},
            {"failures", runs.failures},
            {"failed_runs", runs.failedRuns},
            {"duration_seconds", runs.duration.count()}};
}

Value FromBackupUnit(const inventory::BackupUnit& unit) {
    return {{"name", Told(unit.name)},
            {"level", NameOf(unit.health)},
            {"presence", Told(unit.presence)},
            {"status", Told(unit.status)},
            {"replacement_required", Told(unit.replacement)}};
}

Value FromCache(const inventory::LogicalDrive& drive) {
    return {{"number", Told(drive.number)},
            {"name", Told(drive.name)},
            {"capacity", Told(drive.capacity)},
            {"capacity_bytes", Bytes(drive.capacity)},
            {"state", Told(drive.state)}};
}

Value FromMember(const inventory::Member& member) {
    return {{"number", Told(member.number)},
            {"enclosure", Told(member.enclosure)},
            {"slot", Told(member.slot)},
            {"capacity", Told(member.capacity)},
            {"capacity_bytes", Bytes(member.capacity)}};
}

Value FromLogicalDrive(const inventory::LogicalDrive& drive) {
    Value value = FromCache(drive);
    value["level"] = NameOf(drive.health);
    return value;
}

Value FromGroup(const inventory::Group& group) {
    return {{"number", Told(group.number)},
            {"level", NameOf(group.health)},
            {"raid_level", Told(group.level)},
            {"capacity", Told(group.capacity)},
            {"capacity_bytes", Bytes(group.capacity)},
            {"logical_drives", Each(group.logicalDrives, FromLogicalDrive)},
            {"caches", Each(group.caches, FromCache)},
            {"members", Each(group.members, FromMember)}};
}

Value FromSmartKey(const std::pair<std::string, std::string>& key) {
    const std::optional<inventory::Measure> measure = inventory::MeasureFrom(key.second);
    return {{"name", key.first},
            {"value", Told(key.second)},
            {"number", Number(measure)},
            {"unit", Told(measure ? measure->unit : "")}};
}

Value NumbersOf(const std::vector<std::string>& cells, const std::vector<std::string>& columns) {
    Value numbers = Value::array();
    for (std::size_t column = 0; column < cells.size(); ++column) {
        numbers.push_back(Number(inventory::MeasureFrom(cells[column], columns[column])));
    }
    return numbers;
}

Value FromSmartTable(const inventory::Smart& smart) {
    if (smart.tableName.empty()) {
        return nullptr;
    }
    return {
        {"name", smart.tableName},
        {"columns", smart.columns},
        {"rows", Each(smart.rows, [](const auto& cells) { return Each(cells, Told); })},
        {"numbers", Each(smart.rows, [&](const auto& cells) { return NumbersOf(cells, smart.columns); })}};
}

Value FromSmart(const inventory::Drive& drive) {
    if (drive.smart == nullptr) {
        return nullptr;
    }
    const inventory::Smart smart = SmartOf(drive);
    return {{"keys", Each(smart.keys, FromSmartKey)}, {"table", FromSmartTable(smart)}};
}

Value FromDrive(const inventory::Drive& drive) {
    return {{"number", Told(drive.number)},
            {"level", NameOf(drive.health)},
            {"role", Told(RoleOf(drive))},
            {"group", Told(drive.group)},
            {"membership", Told(drive.membership)},
            {"statuses", Each(drive.statuses, Told)},
            {"detail", Told(drive.detail)},
            {"enclosure", Told(drive.enclosure)},
            {"slot", Told(drive.slot)},
            {"position", Told(drive.position)},
            {"vendor", Told(drive.vendor)},
            {"product", Told(drive.product)},
            {"serial", Told(drive.serial)},
            {"firmware", Told(drive.firmware)},
            {"interface", Told(drive.interfaceType)},
            {"media", Told(drive.media)},
            {"capacity", Told(drive.capacity)},
            {"capacity_bytes", Bytes(drive.capacity)},
            {"temperature", Told(drive.temperature)},
            {"temperature_celsius", NumberValue(inventory::CelsiusFrom(drive.temperature))},
            {"power", Told(drive.power)},
            {"media_errors", Count(drive.mediaErrors)},
            {"media_errors_told", Told(drive.mediaErrors)},
            {"other_errors", Count(drive.otherErrors)},
            {"other_errors_told", Told(drive.otherErrors)},
            {"predictive_failures", Count(drive.predictiveFailures)},
            {"predictive_failures_told", Told(drive.predictiveFailures)},
            {"smart", FromSmart(drive)}};
}

Value FromController(const inventory::Controller& controller) {
    return {{"number", Told(controller.number)},
            {"level", NameOf(controller.health)},
            {"status", Told(controller.status)},
            {"product", Told(controller.product)},
            {"serial", Told(controller.serial)},
            {"firmware", Told(controller.firmware)},
            {"backup_units", Each(controller.backupUnits, FromBackupUnit)},
            {"groups", Each(controller.groups, FromGroup)},
            {"drives", Each(controller.drives, FromDrive)}};
}

Value FromItem(const inventory::Item& item) {
    Value value = Value::object();
    value["name"] = item.name;
    value["value"] = item.hasValue ? Value(item.value) : Value(nullptr);
    value["valid"] = !item.isPlaceholder;
    if (!item.lostParent.empty()) {
        value["parent"] = item.lostParent;
    }
    value["items"] = Each(ChildrenOf(item), FromItem);
    return value;
}

Value FromAnswer(const inventory::DriveAnswer& answer) {
    return {{"controller", answer.controller},
            {"enclosure", answer.enclosure},
            {"slot", answer.slot},
            {"items", Each(answer.document.Roots(), FromItem)}};
}

}  // namespace

std::string Json(const inventory::Snapshot& snapshot, bool isCompact) {
    Value value = Value::object();
    value["schema_version"] = kSchemaVersion;
    value["taken_at"] = snapshot.takenAt ? Value(basics::UtcText(*snapshot.takenAt)) : Value();
    value["host"] = Told(snapshot.host);
    value["health"] = FromHealth(snapshot.TheHealth());
    value["tool_runs"] = FromRuns(snapshot.runs);
    value["controllers"] = Each(snapshot.TheServer().controllers, FromController);
    value["items"] = isCompact ? Value() : Each(snapshot.Main().Roots(), FromItem);
    value["drive_documents"] = isCompact ? Value() : Each(snapshot.Answers(), FromAnswer);
    return TextOf(value);
}

}  // namespace views
