#include "inventory/Health.h"

#include "DocumentText.h"

#include <gtest/gtest.h>

namespace inventory::test {
namespace {

Health HealthOf(const std::string& items) {
    const Document document = Read(items);
    return Judge(Survey(document));
}

Level LevelOfDrive(const std::string& status, const std::string& more = "") {
    return HealthOf(ControllerItem("0") + DriveItem("PD0", status, "x", more)).level;
}

Level LevelOfLogicalDrive(const std::string& state, const std::string& driveStatus = "NO ERROR",
                          const std::string& driveGroup = "RG0") {
    const Document document = Read(ControllerItem("0") + GroupItem("RG0", LogicalDriveItem("LD0", state)) +
                                   DriveItem("PD0", driveStatus, "x", "", driveGroup));
    const Server server = Survey(document);
    const Controller& controller = server.controllers[0];
    return LevelOf(controller, controller.groups[0], controller.groups[0].logicalDrives[0]);
}

Level LevelOfUnit(const std::string& keys) {
    return HealthOf(Node("Controller Information", Node("### Battery Backup Unit Information ###", keys)) +
                    DriveItem("PD0", "NO ERROR", "ONLINE"))
        .level;
}

TEST(HealthTest, AFailedDriveIsCriticalARebuildingOneAWarning) {
    EXPECT_EQ(LevelOfDrive("NO ERROR"), Level::Ok);
    EXPECT_EQ(LevelOfDrive("REBUILD"), Level::Warning);
    EXPECT_EQ(LevelOfDrive("ERROR"), Level::Critical);
}

TEST(HealthTest, AStateThatNobodyKnowsIsNeverWell) {
    EXPECT_EQ(LevelOfDrive("UNKNOWN"), Level::Unknown);
    EXPECT_EQ(LevelOfDrive(""), Level::Unknown);
    EXPECT_EQ(LevelOfDrive("FINE"), Level::Unknown);
    EXPECT_EQ(
        HealthOf(ControllerItem("0") + Node("Physical Drive Information", General(Key("PD No.", "PD0"))))
            .level,
        Level::Unknown);
    EXPECT_EQ(LevelOfLogicalDrive("ODD"), Level::Unknown);
    EXPECT_EQ(LevelOfLogicalDrive(""), Level::Unknown);
    EXPECT_EQ(LevelOfUnit(Key("Status", "Odd")), Level::Unknown);
    EXPECT_EQ(LevelOfUnit(Key("BBU", "Odd")), Level::Unknown);
    EXPECT_EQ(HealthOf(ControllerItem("0", Key("Controller Status", "Odd"))).level, Level::Unknown);
}

TEST(HealthTest, OfTwoStatusesTheWorseCounts) {
    EXPECT_EQ(LevelOfDrive("NO ERROR", Key("PD Status", "ERROR")), Level::Critical);
    EXPECT_EQ(LevelOfDrive("ERROR", Key("PD Status", "NO ERROR")), Level::Critical);
}

TEST(HealthTest, APredictedFailureIsAWarning) {
    EXPECT_EQ(LevelOfDrive("NO ERROR", Key("Predictive Failure Count", "0")), Level::Ok);
    EXPECT_EQ(LevelOfDrive("NO ERROR", Key("Predictive Failure Count", "1")), Level::Warning);
    EXPECT_EQ(LevelOfDrive("NO ERROR", Key("Predictive Failure Count", "-")), Level::Ok);
    EXPECT_EQ(LevelOfDrive("NO ERROR", Key("Predictive Failure Count", std::string(400, '9'))),
              Level::Warning);
    EXPECT_EQ(LevelOfDrive("NO ERROR", Key("Predictive Failure Count", "many")), Level::Unknown);
    EXPECT_EQ(LevelOfDrive("NO ERROR", Key("Predictive Failure Count", "0x12")), Level::Unknown);
    EXPECT_EQ(LevelOfDrive("ERROR", Key("Predictive Failure Count", "1")), Level::Critical);
}

TEST(HealthTest, SmartDataHaveASay) {
    const auto levelOf = [](const std::string& status) {
        return HealthOf(Node("Physical Drive Information",
                             General(Key("PD Status", "NO ERROR")) +
                                 Node("### SMART Information ###", Key("SMART Status", status))))
            .level;
    };
    EXPECT_EQ(levelOf("OK"), Level::Ok);
    EXPECT_EQ(levelOf("Alert"), Level::Warning);
    EXPECT_EQ(levelOf("Failed"), Level::Critical);
    EXPECT_EQ(levelOf("Odd"), Level::Unknown);
    EXPECT_EQ(levelOf(""), Level::Ok);
}

TEST(HealthTest, ADegradedLogicalDriveIsCriticalUnlessItsGroupIsBeingRebuilt) {
    EXPECT_EQ(LevelOfLogicalDrive("OPTIMAL"), Level::Ok);
    EXPECT_EQ(LevelOfLogicalDrive("Optimal"), Level::Ok);
    EXPECT_EQ(LevelOfLogicalDrive("DEGRADED"), Level::Critical);
    EXPECT_EQ(LevelOfLogicalDrive("PARTIALLY DEGRADED"), Level::Critical);
    EXPECT_EQ(LevelOfLogicalDrive("DEGRADED", "REBUILD"), Level::Warning);
    EXPECT_EQ(LevelOfLogicalDrive("DEGRADED", "Rebuild"), Level::Warning);
    EXPECT_EQ(LevelOfLogicalDrive("DEGRADED", "REBUILD", "RG1"), Level::Critical);
    EXPECT_EQ(LevelOfLogicalDrive("OFFLINE"), Level::Critical);
    EXPECT_EQ(LevelOfLogicalDrive("FAILED"), Level::Critical);
    EXPECT_EQ(LevelOfLogicalDrive("Initializing"), Level::Warning);
    EXPECT_EQ(LevelOfLogicalDrive("Reconstruction"), Level::Warning);
}

TEST(HealthTest, ABackupUnitMayBeAbsentButNotWorn) {
    EXPECT_EQ(LevelOfUnit(Key("BBU", "Absent")), Level::Ok);
    EXPECT_EQ(LevelOfUnit(Key("BBU", "Present") + Key("Status", "Optimal")), Level::Ok);
    EXPECT_EQ(LevelOfUnit(Key("FBU", "Present") + Key("Status", "")), Level::Ok);
    EXPECT_EQ(LevelOfUnit(Key("FBU", "Odd")), Level::Unknown);
    EXPECT_EQ(LevelOfUnit(""), Level::Ok);
    EXPECT_EQ(LevelOfUnit(Key("Replacement Required", "Yes")), Level::Warning);
    EXPECT_EQ(LevelOfUnit(Key("Status", "Odd")), Level::Unknown);
    EXPECT_EQ(LevelOfUnit(Key("Status", "Learning")), Level::Ok);
    EXPECT_EQ(LevelOfUnit(Key("Status", "Failed")), Level::Warning);
    EXPECT_EQ(LevelOfUnit(Key("Status", "Optimal") + Key("Replacement Required", "Yes")), Level::Warning);
}

TEST(HealthTest, AControllerMayTellNoStatusOfItsOwn) {
    const std::string drive = DriveItem("PD0", "NO ERROR", "ONLINE");
    EXPECT_EQ(HealthOf(ControllerItem("0") + drive).level, Level::Ok);
    EXPECT_EQ(HealthOf(ControllerItem("0", Key("Controller Status", "OK")) + drive).level, Level::Ok);
    EXPECT_EQ(HealthOf(ControllerItem("0", Key("Controller Status", "Needs Attention")) + drive).level,
              Level::Warning);
    EXPECT_EQ(HealthOf(ControllerItem("0", Key("Controller Status", "Failed")) + drive).level,
              Level::Critical);
}

TEST(HealthTest, NothingToJudgeIsUnknownAndSaysSo) {
    EXPECT_EQ(HealthOf("").level, Level::Unknown);
    EXPECT_EQ(Headline(HealthOf("")), "no controller, nothing to judge");
    EXPECT_EQ(HealthOf(ControllerItem("0")).level, Level::Unknown);
    EXPECT_EQ(Headline(HealthOf(ControllerItem("0"))), "1 controller, no drive, nothing to judge");
}

TEST(HealthTest, PutsTheWorstFirstAndKeepsTheOrderOtherwise) {
    const Health health = HealthOf(ControllerItem("0") + DriveItem("PD0", "REBUILD", "REBUILD") +
                                   DriveItem("PD1", "UNKNOWN", "odd") + DriveItem("PD2", "ERROR", "FAILED") +
                                   DriveItem("PD3", "ERROR", "OFFLINE"));
    ASSERT_EQ(health.findings.size(), 4U);
    EXPECT_EQ(health.level, Level::Critical);
    EXPECT_EQ(health.findings[0].part, "PD2");
    EXPECT_EQ(health.findings[1].part, "PD3");
    EXPECT_EQ(health.findings[2].part, "PD0");
    EXPECT_EQ(health.findings[3].part, "PD1");
    EXPECT_EQ(health.findings[3].what, "unknown state \"odd\"");
    EXPECT_EQ(PlaceOf(health.findings[0]), "controller 0, RG0, PD2 in enclosure 252 slot 2");
    EXPECT_EQ(Headline(health), "2 critical, 1 warning, 1 unknown in 1 controller, 4 drives");
}

TEST(HealthTest, AMemberThatNobodyReportsIsUnknown) {
    const std::string member =
        Node("PD List", Key("PD No.", "PD7") + Key("Enclosure No.", "252") + Key("Slot No.", "7"));
    const Health health =
        HealthOf(ControllerItem("0") + GroupItem("RG0", LogicalDriveItem("LD0", "OPTIMAL"), member) +
                 DriveItem("PD0", "NO ERROR", "ONLINE"));
    EXPECT_EQ(health.level, Level::Unknown);
    ASSERT_EQ(health.findings.size(), 1U);
    EXPECT_EQ(PlaceOf(health.findings[0]), "controller 0, RG0, PD7 in enclosure 252 slot 7");
    EXPECT_EQ(health.findings[0].what, "its group names it, no drive is reported");
}

TEST(HealthTest, APlaceholderIsNoState) {
    const std::string placeholder = "<Item Name=\"PD Status\" Value=\"NO ERROR\" Valid=\"FALSE\"/>";
    EXPECT_EQ(HealthOf(Node("Physical Drive Information", General(placeholder))).level, Level::Unknown);
}

TEST(HealthTest, QuotesTheStateThatItDoesNotKnow) {
    const auto what = [](const std::string& keys) {
        return HealthOf(Node("Physical Drive Information", General(keys))).findings.at(0).what;
    };
    EXPECT_EQ(what(Key("PD Status", "ERROR")), "ERROR");
    EXPECT_EQ(what(Key("PD Status", "ODD")), "unknown state \"ODD\"");
    EXPECT_EQ(what(""), "no state is told");
}

TEST(HealthTest, NamesPartsThatHaveNoName) {
    EXPECT_EQ(PlaceOf(Finding{}), "a part without a name");
    EXPECT_EQ(PlaceOf(HealthOf(Node("Physical Drive Information", "")).findings.at(0)), "a drive");
}

TEST(HealthTest, HasThePlugInsNumbers) {
    EXPECT_EQ(PlugInStatusOf(Level::Ok), 0);
    EXPECT_EQ(PlugInStatusOf(Level::Warning), 1);
    EXPECT_EQ(PlugInStatusOf(Level::Critical), 2);
    EXPECT_EQ(PlugInStatusOf(Level::Unknown), 3);
}

}  // namespace
}  // namespace inventory::test
