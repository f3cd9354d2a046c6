#include "Exposition.h"
#include "basics/Words.h"
#include "inventory/Measure.h"
#include "inventory/Smart.h"
#include "views/Views.h"

#include <algorithm>
#include <initializer_list>
#include <utility>

namespace views {
namespace {

using inventory::Level;

constexpr std::string_view kGauge = "gauge";
constexpr std::string_view kCounter = "counter";

constexpr Metric kHealth = {"raid_health", kGauge,
                            "How well the server is: 0 ok, 1 warning, 2 critical, 3 unknown."};
constexpr Metric kLastSuccess = {"raid_last_success_timestamp_seconds", kGauge,
                                 "When the server was asked with success, in seconds since 1970."};
constexpr Metric kRuns = {"raid_tool_commands", kGauge, "Commands of the RAID tool behind this answer."};
constexpr Metric kFailures = {"raid_tool_failed_commands", kGauge, "Those of them that failed for good."};
constexpr Metric kFailedRuns = {"raid_tool_failed_runs", kGauge,
                                "Runs of the RAID tool that failed, those that a retry mended included."};
constexpr Metric kDuration = {"raid_tool_duration_seconds", kGauge, "How long they took."};
constexpr Metric kAsked = {"raid_last_inquiry_timestamp_seconds", kGauge,
                           "When the service asked the server last, in seconds since 1970."};
constexpr Metric kAnswered = {"raid_last_inquiry_success", kGauge, "Whether it answered then."};
constexpr Metric kFailuresInARow = {"raid_inquiry_failures_in_a_row", kGauge,
                                    "How often it has not answered since it did."};
constexpr Metric kStanding = {
    "raid_standing_alarm", kGauge,
    "A part that is in no report any more and was not well: 1 warning, 2 critical, 3 unknown."};
constexpr Metric kParts = {"raid_parts", kGauge, "How many parts of a kind there are."};
constexpr Metric kFindings = {"raid_findings", kGauge, "How many things of a level are not well."};

constexpr Metric kControllerHealth = {
    "raid_controller_health", kGauge,
    "Worst of a controller's status and its parts: 0 ok, 1 warning, 2 critical, 3 unknown."};
constexpr Metric kControllerInfo = {"raid_controller_info", kGauge, "What a controller is; always 1."};
constexpr Metric kUnitHealth = {"raid_backup_unit_health", kGauge,
                                "A backup unit: 0 ok, 1 warning, 2 critical, 3 unknown."};
constexpr Metric kUnitInfo = {"raid_backup_unit_info", kGauge, "What a backup unit says; always 1."};
constexpr Metric kGroupHealth = {
    "raid_group_health", kGauge,
    "Worst of a group's logical drives and members: 0 ok, 1 warning, 2 critical, 3 unknown."};
constexpr Metric kGroupInfo = {"raid_group_info", kGauge, "What a group is; always 1."};
constexpr Metric kLogicalHealth = {"raid_logical_drive_health", kGauge,
                                   "A logical drive: 0 ok, 1 warning, 2 critical, 3 unknown."};
constexpr Metric kLogicalInfo = {"raid_logical_drive_info", kGauge, "What a logical drive is; always 1."};
constexpr Metric kDriveHealth = {"raid_drive_health", kGauge,
                                 "A drive: 0 ok, 1 warning, 2 critical, 3 unknown."};
constexpr Metric kDriveInfo = {"raid_drive_info", kGauge, "What a drive is and says; always 1."};
constexpr Metric kTemperature = {"raid_drive_temperature_celsius", kGauge, "Temperature of a drive."};
constexpr Metric kMediaErrors = {"raid_drive_media_errors_total", kCounter, "Media errors of a drive."};
constexpr Metric kOtherErrors = {"raid_drive_other_errors_total", kCounter, "Other errors of a drive."};
constexpr Metric kPredictions = {"raid_drive_predictive_failures_total", kCounter,
                                 "How often a drive predicted that it would fail."};
constexpr Metric kSmartKey = {"raid_drive_smart_key_value", kGauge,
                              "A number of the key lines of a drive's SMART data."};
constexpr Metric kSmartTable = {"raid_drive_smart_table_value", kGauge,
                                "A number of the table of a drive's SMART data."};

/// The cell in the first column of that name; empty without one.
std::string_view CellOf(const std::vector<std::string>& columns, const std::vector<std::string>& row,
                        std::string_view name) {
    const auto column = std::find(columns.begin(), columns.end(), name);
    return column == columns.end()
               ? ""
               : std::string_view(row[static_cast<std::size_t>(column - columns.begin())]);
}

/// Writes the series of a server. Every part gets labels of its own, which all of its series begin with: that
/// makes them distinct, and lets them be joined.
class Series final {
  public:
    void Add(const inventory::Snapshot& snapshot, const Watching* watching) {
        AddRollUp(snapshot, LevelOf(snapshot.TheHealth(), watching));
        for (const inventory::Controller& controller : snapshot.TheServer().controllers) {
            Add(controller);
        }
    }

    void Add(const Watching& watching) {
        if (watching.askedAt) {
            m_Exposition.Add(kAsked, {},
                             static_cast<double>(std::chrono::system_clock::to_time_t(*watching.askedAt)));
            m_Exposition.Add(kAnswered, {}, watching.failure.empty() ? 1 : 0);
        }
        m_Exposition.Add(kFailuresInARow, {}, watching.failuresInARow);
        DistinctLabels alarms("copy");
        for (const inventory::Finding& finding : watching.standing) {
            m_Exposition.Add(kStanding,
                             alarms.Distinct(Labels()
                                                 .With("controller", finding.controller)
                                                 .With("group", finding.group)
                                                 .With("part", finding.part)
                                                 .With("enclosure", finding.enclosure)
                                                 .With("slot", finding.slot)
                                                 .With("model", finding.product)
                                                 .With("serial", finding.serial)
                                                 .With("what", finding.what)),
                             PlugInStatusOf(finding.level));
        }
    }

    [[nodiscard]] std::string Text() const { return m_Exposition.Text(); }

  private:
    void AddRollUp(const inventory::Snapshot& snapshot, Level worst) {
        const inventory::Health& health = snapshot.TheHealth();
        if (health.counts.controllers == 0 && health.counts.drives > 0) {
            return;  // What is known of a drive is no news of its server.
        }
        m_Exposition.Add(kHealth, {}, PlugInStatusOf(worst));
        if (snapshot.takenAt) {
            m_Exposition.Add(kLastSuccess, {},
                             static_cast<double>(std::chrono::system_clock::to_time_t(*snapshot.takenAt)));
        }
        if (snapshot.runs.commands > 0) {
            m_Exposition.Add(kRuns, {}, static_cast<double>(snapshot.runs.commands));
            m_Exposition.Add(kFailures, {}, static_cast<double>(snapshot.runs.failures));
            m_Exposition.Add(kFailedRuns, {}, static_cast<double>(snapshot.runs.failedRuns));
            m_Exposition.Add(kDuration, {}, snapshot.runs.duration.count());
        }
        const auto addParts = [&](std::string_view kind, std::size_t count) {
            m_Exposition.Add(kParts, Labels().With("kind", kind), static_cast<double>(count));
        };
        addParts("controller", health.counts.controllers);
        addParts("group", health.counts.groups);
        addParts("logical_drive", health.counts.logicalDrives);
        addParts("drive", health.counts.drives);
        constexpr std::pair<std::string_view, Level> kLevels[] = {
            {"warning", Level::Warning}, {"critical", Level::Critical}, {"unknown", Level::Unknown}};
        for (const auto& [name, level] : kLevels) {
            m_Exposition.Add(kFindings, Labels().With("level", name),
                             static_cast<double>(CountOf(health, level)));
        }
        m_Exposition.Add(kFindings, Labels().With("level", "accepted"),
                         static_cast<double>(CountAccepted(health)));
    }

    void AddPart(const Metric& healthMetric, const Metric& infoMetric, const Labels& part, Level level,
                 std::initializer_list<std::pair<std::string_view, std::string_view>> info) {
        m_Exposition.Add(healthMetric, part, PlugInStatusOf(level));
        Labels labels = part;
        for (const auto& [name, value] : info) {
            labels = labels.With(name, value);
        }
        m_Exposition.Add(infoMetric, labels, 1);
    }

    void Add(const inventory::Controller& controller) {
        const Labels labels = m_Controllers.Distinct(Labels().With("controller", controller.number));
        AddPart(kControllerHealth, kControllerInfo, labels, controller.health,
                {{"status", controller.status},
                 {"product", controller.product},
                 {"serial", controller.serial},
                 {"firmware", controller.firmware}});
        DistinctLabels units("copy");
        for (const inventory::BackupUnit& unit : controller.backupUnits) {
            AddPart(kUnitHealth, kUnitInfo, units.Distinct(labels.With("unit", unit.name)), unit.health,
                    {{"status", unit.status},
                     {"presence", unit.presence},
                     {"replacement_required", unit.replacement}});
        }
        DistinctLabels groups("group_copy");
        for (const inventory::Group& group : controller.groups) {
            Add(group, groups.Distinct(labels.With("group", group.number)));
        }
        DistinctLabels drives("copy");
        for (const inventory::Drive& drive : controller.drives) {
            Add(drive, drives.Distinct(labels.With("enclosure", drive.enclosure)
                                           .With("slot", drive.slot)
                                           .With("drive", drive.number)));
        }
    }

    void Add(const inventory::Group& group, const Labels& labels) {
        AddPart(kGroupHealth, kGroupInfo, labels, group.health,
                {{"raid_level", group.level}, {"capacity", group.capacity}});
        DistinctLabels drives("copy");
        for (const inventory::LogicalDrive& drive : group.logicalDrives) {
            AddPart(kLogicalHealth, kLogicalInfo, drives.Distinct(labels.With("logical_drive", drive.number)),
                    drive.health,
                    {{"status", drive.state}, {"name", drive.name}, {"capacity", drive.capacity}});
        }
    }

    void Add(const inventory::Drive& drive, const Labels& labels) {
        AddPart(kDriveHealth, kDriveInfo, labels, drive.health,
                {{"status", basics::Joined(drive.statuses)},
                 {"detail", drive.detail},
                 {"role", RoleOf(drive)},
                 {"group", drive.group},
                 {"vendor", drive.vendor},
                 {"model", drive.product},
                 {"serial", drive.serial},
                 {"firmware", drive.firmware},
                 {"interface", drive.interfaceType},
                 {"media", drive.media},
                 {"capacity", drive.capacity},
                 {"power", drive.power}});
        if (const std::optional<double> celsius = inventory::CelsiusFrom(drive.temperature)) {
            m_Exposition.Add(kTemperature, labels, *celsius);
        }
        AddCount(kMediaErrors, labels, drive.mediaErrors);
        AddCount(kOtherErrors, labels, drive.otherErrors);
        AddCount(kPredictions, labels, drive.predictiveFailures);
        if (drive.smart != nullptr) {
            Add(SmartOf(drive), labels);
        }
    }

    /// A count is a whole number and nothing else: "12 K" is better not told than told as 12.
    void AddCount(const Metric& metric, const Labels& labels, const std::string& text) {
        const bool isWhole = text.find_first_not_of("0123456789") == std::string::npos;
        if (const std::optional<inventory::Measure> count = inventory::MeasureFrom(text); count && isWhole) {
            m_Exposition.Add(metric, labels, count->number);
        }
    }

    void Add(const inventory::Smart& smart, const Labels& labels) {
        DistinctLabels keys("repeat");
        for (const auto& [name, value] : smart.keys) {
            AddSmart(kSmartKey, keys, labels.With("attribute", name), inventory::MeasureFrom(value));
        }
        DistinctLabels cells("repeat");
        for (const std::vector<std::string>& row : smart.rows) {
            Add(smart.columns, row, cells, labels);
        }
    }

    /// What a row is about stands in its columns "Attribute" and "ID".
    void Add(const std::vector<std::string>& columns, const std::vector<std::string>& row,
             DistinctLabels& cells, const Labels& drive) {
        const Labels labels =
            drive.With("attribute", CellOf(columns, row, "Attribute")).With("id", CellOf(columns, row, "ID"));
        for (std::size_t column = 0; column < row.size(); ++column) {
            const std::string& name = columns[column];
            if (name != "Attribute" && name != "ID") {
                AddSmart(kSmartTable, cells, labels.With("column", name),
                         inventory::MeasureFrom(row[column], name));
            }
        }
    }

    void AddSmart(const Metric& metric, DistinctLabels& distinct, const Labels& labels,
                  const std::optional<inventory::Measure>& measure) {
        if (measure) {
            m_Exposition.Add(metric, distinct.Distinct(labels.With("unit", measure->unit)), measure->number);
        }
    }

    Exposition m_Exposition;
    DistinctLabels m_Controllers{"controller_copy"};
};

}  // namespace

std::string Prometheus(const inventory::Snapshot& snapshot, const Watching* watching) {
    Series series;
    series.Add(snapshot, watching);
    if (watching != nullptr) {
        series.Add(*watching);
    }
    return series.Text();
}

}  // namespace views
