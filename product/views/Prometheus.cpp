#include "Exposition.h"
#include "basics/Words.h"
#include "inventory/Measure.h"
#include "views/Views.h"
#include "watch/Watch.h"

#include <initializer_list>
#include <utility>

namespace views {
namespace {

using inventory::Level;

constexpr std::string_view kGauge = "gauge";
constexpr std::string_view kCounter = "counter";

constexpr double kSecondsOfHour = 3600;

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
constexpr Metric kFindingLevel = {"raid_finding_level", kGauge,
                                  "What is not well: 1 warning, 2 critical, 3 unknown."};
constexpr Metric kStanding = {
    "raid_standing_alarm", kGauge,
    "A part that is in no report any more and was not well: 1 warning, 2 critical, 3 unknown."};
constexpr Metric kFindingInfo = {"raid_finding_info", kGauge,
                                 "What is not well, and what to do about it, in words; always 1."};
constexpr Metric kParts = {"raid_parts", kGauge, "How many parts of a kind there are."};
constexpr Metric kFindings = {"raid_findings", kGauge, "How many things of a level are not well."};

constexpr Metric kControllerHealth = {
    "raid_controller_health", kGauge,
    "Worst of a controller's status and its parts: 0 ok, 1 warning, 2 critical, 3 unknown."};
constexpr Metric kControllerInfo = {"raid_controller_info", kGauge, "What a controller is; always 1."};
constexpr Metric kUnitHealth = {"raid_backup_unit_health", kGauge,
                                "A backup unit: 0 ok, 1 warning, 2 critical, 3 unknown."};
constexpr Metric kGroupHealth = {
    "raid_group_health", kGauge,
    "Worst of a group's logical drives and members: 0 ok, 1 warning, 2 critical, 3 unknown."};
constexpr Metric kGroupInfo = {"raid_group_info", kGauge, "What a group is; always 1."};
constexpr Metric kLogicalHealth = {"raid_logical_drive_health", kGauge,
                                   "A logical drive: 0 ok, 1 warning, 2 critical, 3 unknown."};
constexpr Metric kLogicalInfo = {"raid_logical_drive_info", kGauge, "What a logical drive is; always 1."};
constexpr Metric kDriveHealth = {"raid_drive_health", kGauge,
                                 "A drive: 0 ok, 1 warning, 2 critical, 3 unknown."};
constexpr Metric kDriveState = {"raid_drive_state", kGauge,
                                "What a drive does: 0 serves, 1 spare, 2 not used, 3 being copied, 4 being "
                                "rebuilt, 5 failed, 6 unknown."};
constexpr Metric kDriveInfo = {"raid_drive_info", kGauge, "What a drive is; always 1."};
constexpr Metric kTemperature = {"raid_drive_temperature_celsius", kGauge, "Temperature of a drive."};
constexpr Metric kMediaErrors = {"raid_drive_media_errors_total", kCounter, "Media errors of a drive."};
constexpr Metric kOtherErrors = {"raid_drive_other_errors_total", kCounter, "Other errors of a drive."};
constexpr Metric kPredictions = {"raid_drive_predictive_failures_total", kCounter,
                                 "How often a drive predicted that it would fail."};
constexpr Metric kPowerOn = {"raid_drive_power_on_seconds", kGauge,
                             "How long a drive has been powered on, where its SMART data tell it."};
constexpr Metric kSmartErrors = {"raid_drive_smart_errors_total", kCounter,
                                 "Errors that a drive counts in its SMART data."};

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
        for (const inventory::Finding& finding : watching.standing) {
            Add(kStanding, finding);
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
        for (const inventory::Finding& finding : health.findings) {
            if (!finding.isAccepted) {
                Add(kFindingLevel, finding);
            }
        }
    }

    /// A finding is known by its part; what is said of the part may change while it lasts.
    void Add(const Metric& metric, const inventory::Finding& finding) {
        const Labels labels = m_Findings.Distinct(Labels()
                                                      .With("controller", finding.controller)
                                                      .With("group", finding.group)
                                                      .With("kind", NameOf(finding.kind))
                                                      .With("part", finding.part)
                                                      .With("enclosure", finding.enclosure)
                                                      .With("slot", finding.slot)
                                                      .With("model", finding.product)
                                                      .With("serial", finding.serial)
                                                      .With("rule", NameOf(finding.rule)));
        m_Exposition.Add(metric, labels, PlugInStatusOf(finding.level));
        m_Exposition.Add(kFindingInfo,
                         labels.With("what", finding.what).With("advice", watch::AdviceFor(finding)), 1);
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
                {{"product", controller.product},
                 {"serial", controller.serial},
                 {"firmware", controller.firmware}});
        DistinctLabels units("copy");
        for (const inventory::BackupUnit& unit : controller.backupUnits) {
            m_Exposition.Add(kUnitHealth, units.Distinct(labels.With("unit", unit.name)),
                             PlugInStatusOf(unit.health));
        }
        DistinctLabels groups("group_copy");
        for (const inventory::Group& group : controller.groups) {
            Add(group, groups.Distinct(labels.With("group", group.number)));
        }
        DistinctLabels drives("copy");
        for (const inventory::Drive& drive : controller.drives) {
            Add(drive, drives.Distinct(labels.With("enclosure", drive.enclosure).With("slot", drive.slot)));
        }
    }

    void Add(const inventory::Group& group, const Labels& labels) {
        AddPart(kGroupHealth, kGroupInfo, labels, group.health,
                {{"raid_level", group.level}, {"capacity", group.capacity}});
        DistinctLabels drives("copy");
        for (const inventory::LogicalDrive& drive : group.logicalDrives) {
            AddPart(kLogicalHealth, kLogicalInfo, drives.Distinct(labels.With("logical_drive", drive.number)),
                    drive.health, {{"name", drive.name}, {"capacity", drive.capacity}});
        }
    }

    void Add(const inventory::Drive& drive, const Labels& labels) {
        AddPart(kDriveHealth, kDriveInfo, labels, drive.health,
                {{"drive", drive.number},
                 {"vendor", drive.vendor},
                 {"model", drive.product},
                 {"serial", drive.serial},
                 {"firmware", drive.firmware},
                 {"interface", drive.interfaceType},
                 {"media", drive.media},
                 {"capacity", drive.capacity}});
        m_Exposition.Add(kDriveState, labels, static_cast<double>(DutyOf(drive)));
        if (const std::optional<double> celsius = inventory::CelsiusFrom(drive.temperature)) {
            m_Exposition.Add(kTemperature, labels, *celsius);
        }
        AddCount(kMediaErrors, labels, drive.mediaErrors);
        AddCount(kOtherErrors, labels, drive.otherErrors);
        AddCount(kPredictions, labels, drive.predictiveFailures);
        if (drive.smart != nullptr) {
            Add(*drive.smart, labels);
        }
    }

    /// A count is a whole number and nothing else: "12 K" is better not told than told as 12.
    void AddCount(const Metric& metric, const Labels& labels, const std::string& text) {
        const bool isWhole = text.find_first_not_of("0123456789") == std::string::npos;
        if (const std::optional<inventory::Measure> count = inventory::MeasureFrom(text); count && isWhole) {
            m_Exposition.Add(metric, labels, count->number);
        }
    }

    void Add(const inventory::Item& smart, const Labels& labels) {
        const std::optional<inventory::Measure> on =
            inventory::MeasureFrom(inventory::ValueOf(smart, "Power-On Time"));
        if (on && basics::IsSameWord(on->unit, "Hours")) {
            m_Exposition.Add(kPowerOn, labels, on->number * kSecondsOfHour);
        }
        AddCount(kSmartErrors, labels, inventory::ValueOf(smart, "SMART Error Count"));
    }

    Exposition m_Exposition;
    DistinctLabels m_Controllers{"controller_copy"};
    DistinctLabels m_Findings{"copy"};
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
