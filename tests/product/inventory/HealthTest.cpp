#include "inventory/Health.h"

#include "DocumentText.h"

#include <gtest/gtest.h>

#include <sstream>

namespace inventory::test {
namespace {

Health HealthOf(const std::string& items) {
    const Document document = Read(items);
    Server server = Survey(document);
    return Judge(server);
}

// The words of a drive's report: "ONLINE", "FAILED", "HOT-SPARE" for "HOT SPARE".
std::string DriveSaying(const std::string& number, std::string detail, const std::string& more = "") {
    const bool isGone = detail == "FAILED" || detail == "OFFLINE";
    if (detail == "HOT-SPARE") {
        detail = "HOT SPARE";
    }
    return DriveItem(number, isGone ? "ERROR" : detail == "REBUILD" ? "REBUILD" : "NO ERROR", detail, more);
}

// A group of that level with a logical drive, and its drives, each with a word: "ONLINE FAILED ONLINE".
std::string Server1(const std::string& level, const std::string& state, const std::string& drives,
                    const std::string& more = "") {
    std::istringstream words(drives);
    std::vector<std::string> members;
    std::string items;
    for (std::string word; words >> word;) {
        members.push_back("PD" + std::to_string(members.size()));
        items += DriveSaying(members.back(), word, members.size() == 1 ? more : "");
    }
    return ControllerItem("0") + GroupItem("RG0", LogicalDriveItem("LD0", state), members, level) + items;
}

Level LevelOfGroup(const std::string& level, const std::string& state, const std::string& drives) {
    return HealthOf(Server1(level, state, drives)).level;
}

Level LevelOfDrive(const std::string& status, const std::string& more = "") {
    return HealthOf(ControllerItem("0") +
                    GroupItem("RG0", LogicalDriveItem("LD0", "OPTIMAL"), {"PD0", "PD1"}, "RAID 1") +
                    DriveItem("PD0", status, "", more) + DriveItem("PD1", "NO ERROR", "ONLINE"))
        .level;
}

// A mirror, one of whose drives has an announced failure.
Level LevelWithSmart(const std::string& level, const std::string& smart) {
    std::string items = Server1(level, "OPTIMAL", "ONLINE ONLINE");
    const std::string end = "</Item>";
    items.insert(items.rfind(end), Node("### SMART Information ###", smart));
    return HealthOf(items).level;
}

Level LevelOfLogicalDrive(const std::string& state) {
    return LevelOfGroup("RAID 1", state, "ONLINE ONLINE");
}

std::string Spare(const std::string& number, const std::string& status, const std::string& detail) {
    return DriveItem(number, status, detail, "", "-", "GHS");
}

Level LevelOfSection(const std::string& title, const std::string& keys) {
    return HealthOf(Node("Controller Information",
                         General(Key("Product Name", "Gate")) + Node(title, keys) +
                             Node("### Controller Settings Information ###", Key("Rebuild Rate", "30 %"))) +
                    Spare("PD0", "NO ERROR", "HOT SPARE"))
        .level;
}

Level LevelOfUnit(const std::string& keys) {
    return LevelOfSection("### Battery Backup Unit Information ###", keys);
}

Level LevelOfController(const std::string& more) {
    return HealthOf(ControllerItem("0", more) + Spare("PD0", "NO ERROR", "HOT SPARE")).level;
}

// What is told of a server besides what is well.
std::vector<std::string> WrongsOf(const std::string& items) {
    std::vector<std::string> wrongs;
    for (const Finding& finding : HealthOf(items).findings) {
        wrongs.push_back(std::string(NameOf(finding.level)) + " " + PlaceOf(finding) + ": " + finding.what);
    }
    return wrongs;
}

using Wrongs = std::vector<std::string>;

std::string WellServer() {
    return Server1("RAID 1", "OPTIMAL", "ONLINE ONLINE");
}

TEST(HealthTest, AWellServerIsWell) {
    EXPECT_EQ(HealthOf(WellServer()).level, Level::Ok);
    EXPECT_EQ(WrongsOf(WellServer()), Wrongs());
}

TEST(HealthTest, AStateThatNobodyKnowsIsNeverWell) {
    EXPECT_EQ(LevelOfDrive("NO ERROR"), Level::Ok);
    EXPECT_EQ(LevelOfDrive("UNKNOWN"), Level::Unknown);
    EXPECT_EQ(LevelOfDrive(""), Level::Unknown);
    EXPECT_EQ(LevelOfDrive("FINE"), Level::Unknown);
    EXPECT_EQ(LevelOfLogicalDrive("ODD"), Level::Unknown);
    EXPECT_EQ(LevelOfLogicalDrive(""), Level::Unknown);
    EXPECT_EQ(LevelOfUnit(Key("Status", "Odd")), Level::Unknown);
    EXPECT_EQ(LevelOfUnit(Key("BBU", "Odd")), Level::Unknown);
    EXPECT_EQ(LevelOfUnit(Key("Replacement Required", "Perhaps")), Level::Unknown);
    EXPECT_EQ(LevelOfController(Key("Controller Status", "Odd")), Level::Unknown);
}

TEST(HealthTest, OfTwoStatusesTheWorseCounts) {
    EXPECT_EQ(LevelOfDrive("NO ERROR", Key("PD Status", "ERROR")), Level::Critical);
    EXPECT_EQ(LevelOfDrive("ERROR", Key("PD Status", "NO ERROR")), Level::Critical);
}

struct Case {
    const char* level;
    const char* state;
    const char* drives;
    Level expected;
};

// CRITICAL: data are lost, or one more fault loses some and nothing is under way against it.
constexpr Case kCases[] = {
    {"RAID 0", "OPTIMAL", "ONLINE ONLINE", Level::Ok},
    {"RAID 0", "OFFLINE", "ONLINE FAILED", Level::Critical},
    {"RAID 0", "OPTIMAL", "ONLINE FAILED", Level::Critical},
    {"RAID 1", "DEGRADED", "ONLINE FAILED", Level::Critical},
    {"RAID 1", "DEGRADED", "ONLINE REBUILD", Level::Warning},
    {"RAID 1", "DEGRADED", "ONLINE ONLINE", Level::Critical},  // the drive that was pulled is in no report
    {"RAID 1", "OPTIMAL", "ONLINE FAILED", Level::Critical},
    {"RAID 1", "OPTIMAL", "ONLINE HOT-SPARE", Level::Critical},
    {"RAID 5", "DEGRADED", "ONLINE ONLINE FAILED", Level::Critical},
    {"RAID 5", "DEGRADED", "ONLINE ONLINE REBUILD", Level::Warning},
    {"RAID 5", "DEGRADED", "ONLINE FAILED REBUILD", Level::Critical},
    {"RAID 5", "PARTIALLY DEGRADED", "ONLINE ONLINE ONLINE", Level::Critical},
    {"RAID 6", "PARTIALLY DEGRADED", "ONLINE ONLINE ONLINE FAILED", Level::Warning},
    {"RAID 6", "DEGRADED", "ONLINE ONLINE ONLINE FAILED", Level::Warning},
    {"RAID 6", "PARTIALLY DEGRADED", "ONLINE ONLINE ONLINE ONLINE", Level::Warning},
    {"RAID 6", "DEGRADED", "ONLINE ONLINE ONLINE ONLINE", Level::Critical},
    {"RAID 6", "DEGRADED", "ONLINE ONLINE FAILED FAILED", Level::Critical},
    {"RAID 6", "DEGRADED", "ONLINE ONLINE FAILED REBUILD", Level::Warning},
    {"RAID 6", "PARTIALLY DEGRADED", "ONLINE ONLINE ONLINE REBUILD", Level::Warning},
    {"RAID 6", "OPTIMAL", "ONLINE ONLINE ONLINE HOT-SPARE", Level::Warning},
    {"RAID 6", "DEGRADED", "ONLINE FAILED FAILED REBUILD", Level::Critical},
    {"RAID 10", "DEGRADED", "ONLINE FAILED ONLINE ONLINE", Level::Critical},
    {"RAID 10", "DEGRADED", "ONLINE REBUILD ONLINE ONLINE", Level::Warning},
    {"RAID 10", "DEGRADED", "ONLINE REBUILD ONLINE REBUILD", Level::Warning},
    {"RAID 10", "DEGRADED", "ONLINE FAILED ONLINE REBUILD", Level::Critical},
    {"RAID 1", "DEGRADED", "ONLINE FAILED ONLINE REBUILD", Level::Critical},
    {"RAID 50", "DEGRADED", "ONLINE ONLINE FAILED ONLINE ONLINE ONLINE", Level::Critical},
    {"RAID 50", "DEGRADED", "ONLINE ONLINE REBUILD ONLINE ONLINE ONLINE", Level::Warning},
    {"RAID 60", "DEGRADED", "ONLINE ONLINE FAILED ONLINE ONLINE ONLINE ONLINE ONLINE", Level::Warning},
    {"RAID 60", "DEGRADED", "ONLINE FAILED FAILED ONLINE ONLINE ONLINE ONLINE ONLINE", Level::Critical},
    {"RAID 60", "DEGRADED", "ONLINE FAILED REBUILD ONLINE ONLINE ONLINE ONLINE ONLINE", Level::Warning},
    {"RAID 60", "DEGRADED", "FAILED FAILED REBUILD ONLINE ONLINE ONLINE ONLINE ONLINE", Level::Critical},
    {"RAID 7", "DEGRADED", "ONLINE ONLINE FAILED", Level::Critical},
    {"RAID 7", "DEGRADED", "ONLINE ONLINE REBUILD", Level::Warning},
    {"", "DEGRADED", "ONLINE ONLINE FAILED", Level::Critical},
};

TEST(HealthTest, AGroupIsJudgedByWhatOneMoreFaultWouldDo) {
    for (const Case& each : kCases) {
        EXPECT_EQ(LevelOfGroup(each.level, each.state, each.drives), each.expected)
            << each.level << " " << each.state << ": " << each.drives;
    }
}

TEST(HealthTest, TellsWhatOneMoreFaultWouldDo) {
    EXPECT_EQ(WrongsOf(Server1("RAID 6", "PARTIALLY DEGRADED", "ONLINE ONLINE ONLINE FAILED")),
              (Wrongs{"WARNING controller 0, RG0, PD3 in enclosure 252 slot 3: FAILED",
                      "WARNING controller 0, RG0, LD0: PARTIALLY DEGRADED, another drive may fail"}));
    EXPECT_EQ(WrongsOf(Server1("RAID 5", "DEGRADED", "ONLINE ONLINE FAILED")),
              (Wrongs{"CRITICAL controller 0, RG0, PD2 in enclosure 252 slot 2: FAILED",
                      "CRITICAL controller 0, RG0, LD0: DEGRADED, nothing is being rebuilt"}));
    EXPECT_EQ(WrongsOf(Server1("RAID 5", "DEGRADED", "ONLINE ONLINE REBUILD")),
              (Wrongs{"WARNING controller 0, RG0, PD2 in enclosure 252 slot 2: REBUILD",
                      "WARNING controller 0, RG0, LD0: DEGRADED, being rebuilt"}));
    EXPECT_EQ(WrongsOf(Server1("RAID 10", "DEGRADED", "ONLINE FAILED ONLINE REBUILD")).at(1),
              "CRITICAL controller 0, RG0, LD0: DEGRADED, not all is being rebuilt");
    EXPECT_EQ(WrongsOf(Server1("RAID 5", "DEGRADED", "FAILED ONLINE FAILED")).at(2),
              "CRITICAL controller 0, RG0, LD0: DEGRADED, more drives are gone than the level bears");
    EXPECT_EQ(
        WrongsOf(Server1("RAID 1", "OPTIMAL", "ONLINE HOT-SPARE")),
        (Wrongs{"CRITICAL controller 0, RG0, PD1 in enclosure 252 slot 1: HOT SPARE, dropped out of RG0"}));
}

TEST(HealthTest, WhatNoLogicalDriveStandsOnIsAWarning) {
    const std::string server = WellServer();
    EXPECT_EQ(HealthOf(server + Spare("PD7", "ERROR", "FAILED")).level, Level::Warning);
    EXPECT_EQ(HealthOf(server + DriveItem("PD7", "ERROR", "Unconfig BAD", "", "-", "None")).level,
              Level::Warning);
    EXPECT_EQ(HealthOf(server + DriveItem("PD7", "ERROR", "FAILED", "", "-", "RLD")).level, Level::Warning);
    EXPECT_EQ(HealthOf(server + DriveItem("PD7", "ERROR", "FAILED", "", "RG0", "DHS")).level, Level::Warning);
}

TEST(HealthTest, ADriveThatAnnouncesItsFailureIsTheFaultThatItsGroupBearsOrNot) {
    const std::string predicted = Key("Predictive Failure Count", "1");
    EXPECT_EQ(HealthOf(Server1("RAID 1", "OPTIMAL", "ONLINE ONLINE", predicted)).level, Level::Warning);
    EXPECT_EQ(HealthOf(Server1("RAID 0", "OPTIMAL", "ONLINE ONLINE", predicted)).level, Level::Critical);
    EXPECT_EQ(HealthOf(Server1("RAID 5", "DEGRADED", "ONLINE ONLINE REBUILD", predicted)).level,
              Level::Critical);
    EXPECT_EQ(HealthOf(Server1("RAID 6", "DEGRADED", "ONLINE ONLINE ONLINE REBUILD", predicted)).level,
              Level::Warning);
    EXPECT_EQ(HealthOf(WellServer() + DriveItem("PD7", "NO ERROR", "HOT SPARE", predicted, "-", "GHS")).level,
              Level::Warning);
}

TEST(HealthTest, APredictedFailureIsACount) {
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
        return LevelWithSmart("RAID 1", Key("SMART Status", status));
    };
    EXPECT_EQ(levelOf("OK"), Level::Ok);
    EXPECT_EQ(levelOf(""), Level::Ok);
    EXPECT_EQ(levelOf("Alert"), Level::Warning);
    EXPECT_EQ(levelOf("Failed"), Level::Warning);
    EXPECT_EQ(levelOf("Odd"), Level::Unknown);
    EXPECT_EQ(LevelWithSmart("RAID 0", Key("SMART Status", "Failed")), Level::Critical);
}

TEST(HealthTest, RowsOfSmartTablesHaveASay) {
    const auto row = [](const std::string& value, const std::string& threshold, const std::string& more = "",
                        const std::string& heading = "Threshold") {
        return Node("SMART Detail(SATA)", Key("ID", "5") + Key("Attribute", "Program Fail Count") +
                                              Key("Value", value) + Key(heading, threshold) + more);
    };
    for (const char* const heading : {"Thresh", "THRESH", "threshold"}) {
        EXPECT_EQ(LevelWithSmart("RAID 1", row("36", "36", "", heading)), Level::Warning) << heading;
        EXPECT_EQ(LevelWithSmart("RAID 1", row("37", "36", "", heading)), Level::Ok) << heading;
    }
    EXPECT_EQ(LevelWithSmart("RAID 1", row("100", "36")), Level::Ok);
    EXPECT_EQ(LevelWithSmart("RAID 1", row("37", "36")), Level::Ok);
    EXPECT_EQ(LevelWithSmart("RAID 1", row("36", "36")), Level::Warning);
    EXPECT_EQ(LevelWithSmart("RAID 1", row("1", "36")), Level::Warning);
    EXPECT_EQ(LevelWithSmart("RAID 0", row("1", "36")), Level::Critical);
    EXPECT_EQ(LevelWithSmart("RAID 1", row("0", "0")), Level::Ok);  // no threshold
    EXPECT_EQ(LevelWithSmart("RAID 1", row("odd", "36")), Level::Ok);
    EXPECT_EQ(LevelWithSmart("RAID 1", row("100", "36", Key("When Failed", "FAILING_NOW"))), Level::Warning);
    EXPECT_EQ(LevelWithSmart("RAID 1", row("100", "36", Key("Result", "FAIL"))), Level::Warning);
    EXPECT_EQ(LevelWithSmart("RAID 1", row("100", "36", Key("When Failed", "-"))), Level::Ok);
}

TEST(HealthTest, ALogicalDrivesWordCounts) {
    EXPECT_EQ(LevelOfLogicalDrive("Optimal"), Level::Ok);
    EXPECT_EQ(LevelOfLogicalDrive("OFFLINE"), Level::Critical);
    EXPECT_EQ(LevelOfLogicalDrive("FAILED"), Level::Critical);
    EXPECT_EQ(LevelOfLogicalDrive("Initializing"), Level::Warning);
    EXPECT_EQ(LevelOfLogicalDrive("Reconstruction"), Level::Warning);
}

TEST(HealthTest, WorkThatEndsByItselfIsNoFindingAndStillNotDone) {
    const auto isBusy = [](const char* status, const char* detail) {
        const Document document = Read(ControllerItem("0") + Spare("PD0", status, detail));
        Server server = Survey(document);
        EXPECT_EQ(Judge(server).findings.empty(), std::string(status) == "NO ERROR") << detail;
        return IsBusy(server.controllers.at(0).drives.at(0));
    };
    EXPECT_TRUE(isBusy("NO ERROR", "COPYBACK"));
    EXPECT_TRUE(isBusy("NO ERROR", "Copyback"));
    EXPECT_FALSE(isBusy("NO ERROR", "ONLINE"));
    EXPECT_FALSE(isBusy("NO ERROR", "HOT SPARE"));
    EXPECT_FALSE(isBusy("NO ERROR", "COPYBACK DONE"));
    EXPECT_FALSE(isBusy("REBUILD", "COPYBACK")) << "a warning is more than work";

    const auto isUnitBusy = [](const std::string& keys) {
        const Document document =
            Read(Node("Controller Information", Node("### Battery Backup Unit Information ###", keys)));
        Server server = Survey(document);
        (void)Judge(server);
        return IsBusy(server.controllers.at(0).backupUnits.at(0));
    };
    EXPECT_TRUE(isUnitBusy(Key("Status", "Learning")));
    EXPECT_TRUE(isUnitBusy(Key("Status", "CHARGING")));
    EXPECT_FALSE(isUnitBusy(Key("Status", "Optimal")));
    EXPECT_FALSE(isUnitBusy(Key("Status", "Learning") + Key("Replacement Required", "Yes")));
}

TEST(HealthTest, ABackupUnitMayBeAbsentButNotWorn) {
    EXPECT_EQ(LevelOfUnit(Key("BBU", "Absent")), Level::Ok);
    EXPECT_EQ(LevelOfUnit(Key("BBU", "Present") + Key("Status", "Optimal")), Level::Ok);
    EXPECT_EQ(LevelOfUnit(Key("FBU", "Present") + Key("Status", "")), Level::Ok);
    EXPECT_EQ(LevelOfUnit(Key("FBU", "Odd")), Level::Unknown);
    EXPECT_EQ(LevelOfUnit(""), Level::Ok);
    EXPECT_EQ(LevelOfUnit(Key("Replacement Required", "Yes")), Level::Warning);
    EXPECT_EQ(LevelOfUnit(Key("Replacement Required", "True")), Level::Warning);
    EXPECT_EQ(LevelOfUnit(Key("Replacement Required", "False")), Level::Ok);
    EXPECT_EQ(LevelOfUnit(Key("Status", "Learning")), Level::Ok);
    EXPECT_EQ(LevelOfUnit(Key("Status", "Failed")), Level::Warning);
    EXPECT_EQ(LevelOfUnit(Key("Status", "Optimal") + Key("Replacement Required", "Yes")), Level::Warning);
}

TEST(HealthTest, AnySectionsStatusIsSomebodys) {
    EXPECT_EQ(LevelOfSection("### Supercap Information ###", Key("Status", "Optimal")), Level::Ok);
    EXPECT_EQ(LevelOfSection("### Supercap Information ###", Key("Status", "Failed")), Level::Warning);
    EXPECT_EQ(LevelOfSection("### Cache Vault ###", Key("Status", "Gone")), Level::Unknown);
    EXPECT_EQ(LevelOfSection("### Supercap Information ###", Key("Replacement Required", "Yes")),
              Level::Warning);
}

TEST(HealthTest, AControllerMayTellNoStatusOfItsOwn) {
    EXPECT_EQ(LevelOfController(""), Level::Ok);
    EXPECT_EQ(LevelOfController(Key("Controller Status", "OK")), Level::Ok);
    EXPECT_EQ(LevelOfController(Key("Controller Status", "Needs Attention")), Level::Warning);
    EXPECT_EQ(LevelOfController(Key("Controller Status", "Failed")), Level::Critical);
}

TEST(HealthTest, NothingToJudgeIsUnknownAndSaysSo) {
    EXPECT_EQ(HealthOf("").level, Level::Unknown);
    EXPECT_EQ(Headline(HealthOf("")), "no controller, nothing to judge");
    EXPECT_EQ(WrongsOf(ControllerItem("0")),
              (Wrongs{"UNKNOWN controller 0: neither groups nor drives are told"}));
}

TEST(HealthTest, AControllerThatToldNothingIsUnknownBesideOneThatIsWell) {
    EXPECT_EQ(WrongsOf(WellServer() + ControllerItem("1")),
              (Wrongs{"UNKNOWN controller 1: neither groups nor drives are told"}));
    EXPECT_EQ(WrongsOf(Node("Controller Information", General(Key("Controller No.", "0"))) +
                       Spare("PD0", "NO ERROR", "HOT SPARE")),
              (Wrongs{"UNKNOWN controller 0: it tells nothing of itself"}));
    EXPECT_EQ(WrongsOf(Node("Controller Information",
                            General(Key("Controller No.", "0") + Key("Product Name", "Gate"))) +
                       Spare("PD0", "NO ERROR", "HOT SPARE")),
              (Wrongs{"UNKNOWN controller 0: its report ends early"}));
    EXPECT_EQ(WrongsOf(Spare("PD0", "NO ERROR", "HOT SPARE") + Spare("PD1", "NO ERROR", "HOT SPARE")),
              (Wrongs{"UNKNOWN a controller: its own report is missing"}));
}

TEST(HealthTest, WhatADriveNamesHasToBeThere) {
    const std::string start = ControllerItem("0");
    EXPECT_EQ(WrongsOf(start + DriveItem("PD0", "NO ERROR", "ONLINE")),
              (Wrongs{"UNKNOWN controller 0, RG0, PD0 in enclosure 252 slot 0: it is in LD0, which is not "
                      "reported, it is in "
                      "RG0, which is not reported"}));
    EXPECT_EQ(WrongsOf(WellServer() + DriveItem("PD2", "NO ERROR", "ONLINE")),
              (Wrongs{"UNKNOWN controller 0, RG0, PD2 in enclosure 252 slot 2: RG0 does not name it"}));
    EXPECT_EQ(WrongsOf(WellServer() + DriveItem("PD2", "NO ERROR", "ONLINE", "", "-")),
              (Wrongs{"UNKNOWN controller 0, PD2 in enclosure 252 slot 2: its group is not told"}));
    EXPECT_EQ(
        WrongsOf(WellServer() + DriveItem("PD2", "NO ERROR", "HOT SPARE", "", "RG5", "DHS")),
        (Wrongs{
            "UNKNOWN controller 0, RG5, PD2 in enclosure 252 slot 2: it is in RG5, which is not reported"}));
    const std::string two = start + GroupItem("RG0", LogicalDriveItem("LD0", "OPTIMAL"), {"PD0"}, "RAID 0") +
                            GroupItem("RG1", LogicalDriveItem("LD1", "OPTIMAL"), {"PD1"}, "RAID 0");
    EXPECT_EQ(
        WrongsOf(two + DriveItem("PD0", "NO ERROR", "ONLINE", "", "RG0", "LD1") +
                 DriveItem("PD1", "NO ERROR", "ONLINE", "", "RG1", "LD1")),
        (Wrongs{
            "UNKNOWN controller 0, RG0, PD0 in enclosure 252 slot 0: it is in LD1, which is not in RG0"}));
    EXPECT_EQ(WrongsOf(two + DriveItem("PD0", "NO ERROR", "ONLINE") +
                       DriveItem("PD1", "NO ERROR", "ONLINE", "", "RG0", "LD0")),
              (Wrongs{"UNKNOWN controller 0, RG0, PD1 in enclosure 252 slot 1: RG0 does not name it, RG1 "
                      "names it, it says "
                      "RG0"}));
}

TEST(HealthTest, WhatAGroupNamesHasToBeThere) {
    const std::string drive = DriveItem("PD0", "NO ERROR", "ONLINE");
    const std::string start = ControllerItem("0");
    EXPECT_EQ(WrongsOf(start + GroupItem("RG0", LogicalDriveItem("LD0", "OPTIMAL"), {"PD0", "PD7"}) + drive),
              (Wrongs{"UNKNOWN controller 0, RG0, PD7 in enclosure 252 slot 7: its group names it, no drive "
                      "is reported"}));
    EXPECT_EQ(
        WrongsOf(start + GroupItem("RG0", "", {"PD0"}, "RAID 0") + DriveItem("PD0", "NO ERROR", "ONLINE"))
            .front(),
        "UNKNOWN controller 0, RG0, PD0 in enclosure 252 slot 0: it is in LD0, which is not reported");
    EXPECT_EQ(WrongsOf(start + GroupItem("RG0", "", {}) + Spare("PD0", "NO ERROR", "HOT SPARE")),
              (Wrongs{"UNKNOWN controller 0, RG0: no logical drive is told"}));
    const auto withCount = [&](const std::string& count) {
        return WrongsOf(start +
                        Node("Logical Drive Information",
                             MemberItem("PD0") +
                                 General(Key("RG No.", "RG0") + LogicalDriveItem("LD0", "OPTIMAL") + count) +
                                 Node("### LD Settings Information ###", Key("Read Policy", "Normal"))) +
                        drive);
    };
    EXPECT_EQ(withCount(Key("# of PD", "1")), Wrongs());
    EXPECT_EQ(withCount(Key("# of PD", "2")),
              (Wrongs{"UNKNOWN controller 0, RG0: it has 2 drives, and names 1"}));
    EXPECT_EQ(withCount(Key("# of PD", "x")), (Wrongs{"UNKNOWN controller 0, RG0: it has \"x\" drives"}));
    EXPECT_EQ(withCount(""), (Wrongs{"UNKNOWN controller 0, RG0: how many drives it has is not told"}));
    EXPECT_EQ(
        WrongsOf(start +
                 Node("Logical Drive Information",
                      MemberItem("PD0") + General(Key("RG No.", "RG0") + LogicalDriveItem("LD0", "OPTIMAL") +
                                                  Key("# of PD", "1"))) +
                 drive),
        (Wrongs{"UNKNOWN controller 0, RG0: its report ends early"}));
}

TEST(HealthTest, APartThatIsToldTwiceIsUnknownAndBothAreJudged) {
    EXPECT_EQ(WrongsOf(WellServer() + WellServer()),
              (Wrongs{"UNKNOWN controller 0: the document tells it more than once"}));
    EXPECT_EQ(
        WrongsOf(WellServer() + DriveItem("PD1", "ERROR", "FAILED", "", "-", "GHS")),
        (Wrongs{
            "WARNING controller 0, PD1 in enclosure 252 slot 1: FAILED, the document tells it more than once",
            "UNKNOWN controller 0, RG0, PD1 in enclosure 252 slot 1: the document tells it more than once"}));
    EXPECT_EQ(
        WrongsOf(ControllerItem("0") +
                 GroupItem("RG0", LogicalDriveItem("LD0", "OPTIMAL") + LogicalDriveItem("LD0", "OFFLINE"),
                           {"PD0"}) +
                 DriveItem("PD0", "NO ERROR", "ONLINE")),
        (Wrongs{"CRITICAL controller 0, RG0, LD0: OFFLINE, the document tells it more than once",
                "UNKNOWN controller 0, RG0, LD0: the document tells it more than once"}));
    EXPECT_EQ(WrongsOf(ControllerItem("0") + GroupItem("RG0", LogicalDriveItem("LD0", "OPTIMAL"), {"PD0"}) +
                       GroupItem("RG0", LogicalDriveItem("LD1", "OPTIMAL"), {}) +
                       DriveItem("PD0", "NO ERROR", "ONLINE")),
              (Wrongs{"UNKNOWN controller 0, RG0: the document tells it more than once",
                      "UNKNOWN controller 0, RG0: the document tells it more than once"}));
    const std::string place = "<Item Name=\"Slot No.\" Value=\"";
    std::string other = Spare("PD7", "NO ERROR", "HOT SPARE");
    other.replace(other.find(place) + place.size(), 1, "1");
    EXPECT_EQ(WrongsOf(WellServer() + other).back(),
              "UNKNOWN controller 0, PD7 in enclosure 252 slot 1: another drive is told in the same slot");
}

TEST(HealthTest, ADriveWhoseSlotIsNotToldCannotBeFound) {
    EXPECT_EQ(WrongsOf(WellServer() + Node("Physical Drive Information",
                                           General(Key("PD No.", "PD7") + Key("LD No.", "GHS") +
                                                   Key("PD Status", "NO ERROR")))),
              (Wrongs{"UNKNOWN controller 0, PD7: its slot is not told"}));
}

TEST(HealthTest, PutsTheWorstFirstAndKeepsTheOrderOtherwise) {
    const Health health = HealthOf(
        ControllerItem("0") +
        GroupItem("RG0", LogicalDriveItem("LD0", "OPTIMAL"), {"PD0", "PD1", "PD2", "PD3"}) +
        DriveItem("PD0", "REBUILD", "REBUILD") + DriveItem("PD1", "UNKNOWN", "odd") +
        DriveItem("PD2", "ERROR", "FAILED", Key("Product ID", "TF600") + Key("Serial Number", "7K0")) +
        DriveItem("PD3", "ERROR", "OFFLINE"));
    ASSERT_EQ(health.findings.size(), 4U);
    EXPECT_EQ(health.level, Level::Critical);
    EXPECT_EQ(health.findings[0].part, "PD2");
    EXPECT_EQ(health.findings[0].product, "TF600");
    EXPECT_EQ(health.findings[0].serial, "7K0");
    EXPECT_EQ(health.findings[1].part, "PD3");
    EXPECT_EQ(health.findings[2].part, "PD0");
    EXPECT_EQ(health.findings[3].part, "PD1");
    EXPECT_EQ(health.findings[3].what, "unknown state \"odd\"");
    EXPECT_EQ(PlaceOf(health.findings[0]), "controller 0, RG0, PD2 in enclosure 252 slot 2");
    EXPECT_EQ(Headline(health),
              "2 critical, 1 warning, 1 unknown in 1 controller, 1 group, 1 logical drive, 4 drives");
}

TEST(HealthTest, EveryPartKnowsHowWellItIs) {
    const Document document = Read(Server1("RAID 6", "PARTIALLY DEGRADED", "ONLINE ONLINE ONLINE FAILED"));
    Server server = Survey(document);
    EXPECT_EQ(server.controllers[0].drives[0].health, Level::Unknown);
    (void)Judge(server);
    const Controller& controller = server.controllers[0];
    EXPECT_EQ(controller.statusHealth, Level::Ok);
    EXPECT_EQ(controller.health, Level::Warning);
    EXPECT_EQ(controller.groups[0].health, Level::Warning);
    EXPECT_EQ(controller.groups[0].logicalDrives[0].health, Level::Warning);
    EXPECT_EQ(controller.drives[0].health, Level::Ok);
    EXPECT_EQ(controller.drives[3].health, Level::Warning);
}

TEST(HealthTest, AControllerWhoseReportIsMissingIsNotWellEither) {
    const Document document =
        Read(Spare("PD0", "NO ERROR", "HOT SPARE") + Spare("PD1", "NO ERROR", "HOT SPARE"));
    Server server = Survey(document);
    EXPECT_EQ(Judge(server).level, Level::Unknown);
    EXPECT_EQ(server.controllers[0].health, Level::Unknown);
    EXPECT_EQ(server.controllers[0].drives[0].health, Level::Ok);
}

TEST(HealthTest, APlaceholderIsNoState) {
    const std::string placeholder = "<Item Name=\"PD Status\" Value=\"NO ERROR\" Valid=\"FALSE\"/>";
    EXPECT_EQ(HealthOf(Node("Physical Drive Information", General(placeholder))).level, Level::Unknown);
}

TEST(HealthTest, ADriveThatTheDocumentIsAboutIsJudgedAlone) {
    const auto levelOf = [](const std::string& status, const std::string& membership) {
        return HealthOf(DriveItem("PD0", status, "", "", "RG0", membership)).level;
    };
    EXPECT_EQ(levelOf("NO ERROR", "LD0"), Level::Ok);
    EXPECT_EQ(levelOf("ERROR", "LD0"), Level::Critical);
    EXPECT_EQ(levelOf("ERROR", "GHS"), Level::Warning);
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
