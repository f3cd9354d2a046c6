#include "Documents.h"
#include "views/Views.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <sstream>

namespace views::test {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::IsSupersetOf;
using testing::Not;
using testsupport::TempFolder;

std::vector<std::string> LinesOf(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// What promtool says of a text: "" where it has nothing to say.
std::string CheckMetrics(const std::string& text) {
    const TempFolder folder;
    folder.Write("metrics", text);
    const testsupport::Command command{
        .words = {"-c", "exec promtool check metrics < \"$1\"", "sh", folder / "metrics"},
        .program = "/bin/sh"};
    const testsupport::Ended ended = command.Run();
    return ended.out + ended.err + (ended.ExitStatus() == 0 ? "" : "exit status is not 0");
}

/// Series that are there more than once, whatever their values, and metrics that begin twice.
std::vector<std::string> Repetitions(const std::string& text) {
    std::set<std::string> seen;
    std::vector<std::string> repetitions;
    for (const std::string& line : LinesOf(text)) {
        if (const std::string what = line.substr(0, line.rfind(' ')); !seen.insert(what).second) {
            repetitions.push_back(what);
        }
    }
    return repetitions;
}

/// The lines of the metrics of that name.
std::vector<std::string> SeriesOf(const std::string& metric, const std::string& text) {
    std::vector<std::string> series;
    for (const std::string& line : LinesOf(text)) {
        if (line.starts_with(metric + "{") || line.starts_with(metric + " ")) {
            series.push_back(line.substr(metric.size()));
        }
    }
    return series;
}

std::string Metrics(const std::string& items) {
    const std::string text = Prometheus(SnapshotFrom(items));
    EXPECT_EQ(CheckMetrics(text), "");
    EXPECT_EQ(Repetitions(text), std::vector<std::string>{});
    return text;
}

class PrometheusOfScenario : public testing::TestWithParam<const char*> {};

TEST_P(PrometheusOfScenario, PassesPromtoolAndRepeatsNothing) {
    const std::string text = Prometheus(SnapshotOf(GetParam()));
    EXPECT_EQ(CheckMetrics(text), "");
    EXPECT_EQ(Repetitions(text), std::vector<std::string>{});
    EXPECT_EQ(SeriesOf("raid_health", text).size(), 1U);
}

INSTANTIATE_TEST_SUITE_P(All, PrometheusOfScenario, testing::ValuesIn(kScenarios),
                         [](const auto& scenario) { return scenario.param; });

TEST(Prometheus, PassesPromtoolWithSmartAnswers) {
    for (const char* const scenario : {"large", "old", "small"}) {
        const std::string text = Prometheus(SnapshotWithSmart(scenario));
        EXPECT_EQ(CheckMetrics(text), "") << scenario;
        EXPECT_EQ(Repetitions(text), std::vector<std::string>{}) << scenario;
        EXPECT_NE(SeriesOf("raid_drive_smart_errors_total", text), std::vector<std::string>{}) << scenario;
    }
}

TEST(Prometheus, PassesPromtoolForSingleDrives) {
    for (const char* const slot : {"0", "1", "2"}) {
        const std::string text = Prometheus(SnapshotOf("awkward", {"0", "252", slot}));
        EXPECT_EQ(CheckMetrics(text), "") << slot;
        EXPECT_EQ(Repetitions(text), std::vector<std::string>{}) << slot;
        EXPECT_EQ(SeriesOf("raid_drive_health", text).size(), 1U) << slot;
    }
}

TEST(Prometheus, ChecksFindWhatIsWrong) {
    EXPECT_NE(CheckMetrics("raid_x 1\n"), "");
    EXPECT_NE(CheckMetrics("# HELP raid_x X.\n# TYPE raid_x gauge\nraid_x{a=\"1\" 1\n"), "");
    EXPECT_NE(Repetitions("a{b=\"1\"} 1\na{b=\"1\"} 2\n"), std::vector<std::string>{});
}

TEST(Prometheus, TellsTheStateOfEveryPart) {
    const std::string text = Prometheus(SnapshotOf("large"));
    EXPECT_THAT(SeriesOf("raid_health", text), Contains(" 2"));
    EXPECT_THAT(SeriesOf("raid_last_success_timestamp_seconds", text), Contains(" 1933135628"));
    EXPECT_THAT(SeriesOf("raid_parts", text), Contains("{kind=\"drive\"} 26"));
    EXPECT_THAT(SeriesOf("raid_controller_health", text),
                testing::ElementsAre("{controller=\"0\"} 2", "{controller=\"1\"} 0"));
    EXPECT_THAT(SeriesOf("raid_drive_health", text),
                IsSupersetOf({"{controller=\"0\",enclosure=\"252\",slot=\"0\"} 0",
                              "{controller=\"0\",enclosure=\"252\",slot=\"4\"} 1",
                              "{controller=\"0\",enclosure=\"16\",slot=\"2\"} 1"}));
    EXPECT_THAT(SeriesOf("raid_drive_state", text),
                IsSupersetOf({"{controller=\"0\",enclosure=\"252\",slot=\"0\"} 0",
                              "{controller=\"0\",enclosure=\"252\",slot=\"4\"} 4",
                              "{controller=\"0\",enclosure=\"16\",slot=\"2\"} 5"}));
    EXPECT_THAT(SeriesOf("raid_logical_drive_health", text),
                Contains("{controller=\"0\",group=\"RG2\",logical_drive=\"LD4\"} 2"));
    EXPECT_EQ(SeriesOf("raid_drive_health", text).size(), 26U);
}

TEST(Prometheus, UnknownIsThreeAsPlugInsCount) {
    const std::string drive = DriveXml("3", {ItemXml("PD Status", "PURPLE")});
    const std::string text = Metrics(ControllerXml() + drive);
    EXPECT_THAT(SeriesOf("raid_drive_health", text),
                Contains("{controller=\"0\",enclosure=\"252\",slot=\"3\"} 3"));
    EXPECT_THAT(SeriesOf("raid_health", text), Contains(" 3"));
    // What is known of a drive is no news of its server.
    EXPECT_TRUE(SeriesOf("raid_health", Metrics(drive)).empty());
}

TEST(Prometheus, ToolRunsAreToldWhereTheyWereWatched) {
    inventory::Snapshot snapshot = SnapshotFrom("");
    EXPECT_THAT(Prometheus(snapshot), Not(HasSubstr("raid_tool_")));
    snapshot.runs = {7, 1, 4, std::chrono::duration<double>(1.5)};
    const std::string text = Prometheus(snapshot);
    EXPECT_EQ(CheckMetrics(text), "");
    EXPECT_THAT(LinesOf(text), IsSupersetOf({"raid_tool_commands 7", "raid_tool_failed_commands 1",
                                             "raid_tool_failed_runs 4", "raid_tool_duration_seconds 1.5"}));
}

TEST(Prometheus, TemperatureThatIsNoNumberIsLeftOut) {
    const std::string text = Metrics(DriveXml("1", {ItemXml("Temperature", "N/A")}) +
                                     DriveXml("2", {ItemXml("Temperature", "31 C")}) +
                                     DriveXml("3", {ItemXml("Temperature", "nan")}) +
                                     DriveXml("4", {ItemXml("Temperature", "88 F")}) + DriveXml("5"));
    EXPECT_THAT(
        SeriesOf("raid_drive_temperature_celsius", text),
        testing::ElementsAre("{enclosure=\"252\",slot=\"2\"} 31", "{enclosure=\"252\",slot=\"4\"} 31.11"));
}

TEST(Prometheus, CountsErrors) {
    const std::string text =
        Metrics(DriveXml("1", {ItemXml("Media Error Count", "4"), ItemXml("Other Error Count", "many"),
                               ItemXml("Predictive Failure Count", "0")}));
    const std::string drive = "{enclosure=\"252\",slot=\"1\"} ";
    EXPECT_THAT(SeriesOf("raid_drive_media_errors_total", text), Contains(drive + "4"));
    EXPECT_THAT(SeriesOf("raid_drive_other_errors_total", text), testing::IsEmpty());
    EXPECT_THAT(SeriesOf("raid_drive_predictive_failures_total", text), Contains(drive + "0"));
}

TEST(Prometheus, WhatIsNoCountOfErrorsIsLeftOut) {
    const std::string text =
        Metrics(DriveXml("1", {ItemXml("Media Error Count", "-4"), ItemXml("Other Error Count", "12 K"),
                               ItemXml("Predictive Failure Count", "1.5")}));
    EXPECT_THAT(SeriesOf("raid_drive_media_errors_total", text), testing::IsEmpty());
    EXPECT_THAT(SeriesOf("raid_drive_other_errors_total", text), testing::IsEmpty());
    EXPECT_THAT(SeriesOf("raid_drive_predictive_failures_total", text), testing::IsEmpty());
}

/// The labels of the series of a metric, without their values.
std::vector<std::string> LabelsOf(const std::string& metric, const std::string& text) {
    std::vector<std::string> labels = SeriesOf(metric, text);
    for (std::string& series : labels) {
        series.resize(series.rfind(' '));
    }
    return labels;
}

// A series that ended with a state would take its past along, and an alert with it.
TEST(Prometheus, StatesChangeNoLabelsOfAPart) {
    const auto drive = [](const char* status, const char* detail, const char* role) {
        return Metrics(ControllerXml() +
                       DriveXml("3", {ItemXml("PD Status", status), ItemXml("PD Status(Detail)", detail),
                                      ItemXml("LD No.", role), ItemXml("Serial Number", "7K")}));
    };
    const std::string well = drive("NO ERROR", "ONLINE", "LD0");
    const std::string failed = drive("ERROR", "FAILED", "RLD");
    EXPECT_NE(SeriesOf("raid_drive_state", well), SeriesOf("raid_drive_state", failed));
    for (const char* const metric : {"raid_drive_health", "raid_drive_state", "raid_drive_info"}) {
        EXPECT_THAT(LabelsOf(metric, well), testing::SizeIs(1));
        EXPECT_EQ(LabelsOf(metric, well), LabelsOf(metric, failed));
    }
}

TEST(Prometheus, StatesOfDrivesAreNumbers) {
    struct Case {
        const char *status, *detail, *role, *state;
    };
    for (const Case& each :
         {Case{"NO ERROR", "ONLINE", "LD0", "0"}, Case{"NO ERROR", "HOT SPARE", "GHS", "1"},
          Case{"NO ERROR", "HOT SPARE", "DHS", "1"}, Case{"NO ERROR", "UNCONFIGURED GOOD", "None", "2"},
          Case{"NO ERROR", "COPYBACK", "LD0", "3"}, Case{"REBUILD", "REBUILD", "LD0", "4"},
          Case{"ERROR", "FAILED", "GHS", "5"}, Case{"PURPLE", "ONLINE", "LD0", "6"}}) {
        const std::string text =
            Metrics(DriveXml("3", {ItemXml("PD Status", each.status),
                                   ItemXml("PD Status(Detail)", each.detail), ItemXml("LD No.", each.role)}));
        EXPECT_THAT(SeriesOf("raid_drive_state", text),
                    testing::ElementsAre(std::string("{enclosure=\"252\",slot=\"3\"} ") + each.state))
            << each.status << ' ' << each.detail << ' ' << each.role;
    }
}

TEST(Prometheus, TellsEachFindingWithItsPartAndInWords) {
    const std::string text = Prometheus(SnapshotOf("large"));
    const std::string offline =
        "{controller=\"0\",group=\"RG2\",kind=\"drive\",part=\"PD13\",enclosure=\"16\",slot=\"5\","
        "model=\"TF800P\",serial=\"7K1301605C4\",rule=\"state\"";
    EXPECT_THAT(SeriesOf("raid_finding_level", text), Contains(offline + "} 2"));
    EXPECT_THAT(
        SeriesOf("raid_finding_level", text),
        Contains("{controller=\"0\",group=\"RG2\",kind=\"logical-drive\",part=\"LD4\",rule=\"state\"} 2"));
    EXPECT_EQ(SeriesOf("raid_finding_level", text).size(), SnapshotOf("large").TheHealth().findings.size());
    EXPECT_THAT(SeriesOf("raid_finding_info", text),
                Contains(offline + ",what=\"OFFLINE\",advice=\"Replace the drive by another TF800P; see that "
                                   "it is the one with this serial number.\"} 1"));
    EXPECT_THAT(SeriesOf("raid_finding_level", Prometheus(SnapshotOf("well"))), testing::IsEmpty());
}

// The rest of the SMART data is what the history is for: a table has dozens of numbers for each drive.
TEST(Prometheus, OfSmartDataThereIsWhatEveryDriveHas) {
    const std::vector<std::string> row = {ItemXml("ID", "9"), ItemXml("Attribute", "Power-On Hours"),
                                          ItemXml("Value", "81"), ItemXml("Raw Data", "000000020411")};
    const auto withSmart = [&](const char* slot, const char* on, const char* errors) {
        return DriveXml(
            slot, {},
            {ParentXml("### SMART Information ###",
                       {ItemXml("SMART Status", "OK"), ItemXml("Power-On Time", on),
                        ItemXml("SMART Error Count", errors), ParentXml("SMART Detail(SATA)", row)})});
    };
    const std::string text = Metrics(withSmart("1", "20411 Hours", "7") + withSmart("2", "3 Moons", "few"));
    const std::string drive = "{enclosure=\"252\",slot=\"1\"} ";
    EXPECT_THAT(SeriesOf("raid_drive_power_on_seconds", text), testing::ElementsAre(drive + "73479600"));
    EXPECT_THAT(SeriesOf("raid_drive_smart_errors_total", text), testing::ElementsAre(drive + "7"));
    EXPECT_THAT(text, Not(HasSubstr("Power-On Hours")));
}

// Whatever a report repeats: controllers without a number, groups, logical drives, units and drives.
TEST(Prometheus, PartsThatAreThereTwiceHaveOneMoreLabel) {
    const std::string unit =
        ParentXml("### Battery Backup Unit Information ###", {ItemXml("BBU", "Present")});
    const std::string controller =
        ParentXml("Controller Information",
                  {ParentXml("### General Information ###", {ItemXml("Controller No.", "0")}), unit, unit});
    const std::string logicalDrive =
        ParentXml("LD List", {ItemXml("LD No.", "LD0"), ItemXml("State", "OPTIMAL")});
    const std::string group = ParentXml(
        "Logical Drive Information",
        {ParentXml("### General Information ###", {ItemXml("RG No.", "RG0"), logicalDrive, logicalDrive})});
    const std::string all = controller + group + group + DriveXml("1") + DriveXml("1");
    const std::string text = Metrics(all + all);
    EXPECT_THAT(SeriesOf("raid_drive_health", text),
                IsSupersetOf({"{controller=\"0\",enclosure=\"252\",slot=\"1\"} 3",
                              "{controller=\"0\",controller_copy=\"2\",enclosure=\"252\",slot=\"1\","
                              "copy=\"2\"} 3"}));
    EXPECT_EQ(SeriesOf("raid_drive_info", text).size(), 4U);
    EXPECT_EQ(SeriesOf("raid_group_health", text).size(), 4U);
    EXPECT_EQ(SeriesOf("raid_logical_drive_health", text).size(), 8U);
    EXPECT_EQ(SeriesOf("raid_backup_unit_health", text).size(), 4U);
}

TEST(Prometheus, HostileValuesAreOnlyValues) {
    const std::string text = Metrics(
        DriveXml("1", {ItemXml("Serial Number", "a\"} 1\nraid_evil 1\n\\n\\"), ItemXml("Vendor", "\xFF\x01"),
                       ItemXml("Product ID", std::string(100'000, 'x'))}));
    EXPECT_THAT(text, HasSubstr("serial=\"a\\\"} 1 raid_evil 1 \\\\n\\\\\""));
    EXPECT_THAT(text, HasSubstr("vendor=\"\xEF\xBF\xBD\xEF\xBF\xBD\""));
    for (const std::string& line : LinesOf(text)) {
        EXPECT_LT(line.size(), 1000U);
        EXPECT_TRUE(line.starts_with("raid_drive_") || line.find("evil") == std::string::npos);
    }
}

}  // namespace
}  // namespace views::test
