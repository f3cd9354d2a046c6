#include "inventory/Server.h"

#include "DocumentText.h"
#include "inventory/Smart.h"
#include "inventory/Snapshot.h"

#include <gtest/gtest.h>

namespace inventory::test {
namespace {

TEST(ServerTest, PutsGroupsAndDrivesUnderTheControllerBeforeThem) {
    const Document document =
        Read(ControllerItem("0") + GroupItem("RG0", "") + DriveItem("PD0", "NO ERROR", "ONLINE") +
             DriveItem("PD1", "NO ERROR", "ONLINE") + ControllerItem("1") +
             DriveItem("PD0", "NO ERROR", "ONLINE"));
    const Server server = Survey(document);
    ASSERT_EQ(server.controllers.size(), 2U);
    EXPECT_EQ(server.controllers[0].number, "0");
    EXPECT_EQ(server.controllers[0].groups.size(), 1U);
    EXPECT_EQ(server.controllers[0].drives.size(), 2U);
    EXPECT_EQ(server.controllers[1].number, "1");
    EXPECT_EQ(server.controllers[1].drives.size(), 1U);
}

TEST(ServerTest, BeginsAnotherControllerWhereItsOwnReportIsMissing) {
    const Document document = Read(ControllerItem("0") + DriveItem("PD0", "NO ERROR", "ONLINE") +
                                   GroupItem("RG0", "") + DriveItem("PD0", "NO ERROR", "ONLINE"));
    const Server server = Survey(document);
    ASSERT_EQ(server.controllers.size(), 2U);
    EXPECT_EQ(server.controllers[1].item, nullptr);
    EXPECT_EQ(server.controllers[1].groups.size(), 1U);
    EXPECT_EQ(server.controllers[1].drives.size(), 1U);
}

TEST(ServerTest, NamesTheControllerThatADriveWasAskedFor) {
    const Document document = Read(DriveItem("PD3", "NO ERROR", "ONLINE"));
    const Server server = Survey(document, "7");
    ASSERT_EQ(server.controllers.size(), 1U);
    EXPECT_EQ(server.controllers[0].number, "7");
    EXPECT_EQ(server.controllers[0].drives[0].enclosure, "252");
    EXPECT_EQ(server.controllers[0].drives[0].slot, "3");
}

TEST(ServerTest, LeavesRootsThatItDoesNotKnow) {
    const Document document = Read(Key("Notice", "x") + Node("### Preface ###", Key("a", "b")));
    EXPECT_TRUE(Survey(document).controllers.empty());
}

TEST(ServerTest, TakesAPlaceholderForNothing) {
    const Document document =
        Read(ControllerItem("0", Placeholder("Controller Status") + Key("Serial Number", "")) +
             GroupItem("RG0", Placeholder("Associated CacheCade LD")));
    const Server server = Survey(document);
    EXPECT_EQ(server.controllers[0].status, "");
    EXPECT_EQ(server.controllers[0].serial, "");
    EXPECT_TRUE(server.controllers[0].groups[0].caches.empty());
}

TEST(ServerTest, FallsBackOnTheFirmwareVersionWithoutAPackage) {
    const Document document =
        Read(Node("Controller Information",
                  Node("### Firmware/BIOS/Driver Information ###",
                       Placeholder("Firmware Package Version") + Key("Firmware Version", "1.12"))));
    EXPECT_EQ(Survey(document).controllers[0].firmware, "1.12");
}

TEST(ServerTest, FindsBackupUnitsByTheirTitle) {
    const Document document =
        Read(Node("Controller Information", Node("### Flash Backup Unit Information ###",
                                                 Key("FBU", "Present") + Key("Status", "Optimal") +
                                                     Key("Replacement Required", "No"))));
    const Server server = Survey(document);
    const std::vector<BackupUnit>& units = server.controllers[0].backupUnits;
    ASSERT_EQ(units.size(), 1U);
    EXPECT_EQ(units[0].name, "Flash Backup Unit");
    EXPECT_EQ(units[0].presence, "Present");
    EXPECT_EQ(units[0].status, "Optimal");
    EXPECT_EQ(units[0].replacement, "No");
}

TEST(ServerTest, ReadsAGroupWithLogicalDrivesCachesAndMembers) {
    const std::string cache = Node("Associated CacheCade LD", Key("LD No.", "LD3") + Key("State", "OPTIMAL"));
    const Document document =
        Read(ControllerItem("0") + GroupItem("RG1", LogicalDriveItem("LD1", "DEGRADED") + cache, {"PD4"}) +
             DriveItem("PD4", "REBUILD", "REBUILD", "", "RG1"));
    const Server server = Survey(document);
    const Controller& controller = server.controllers[0];
    const Group& group = controller.groups[0];
    EXPECT_EQ(group.number, "RG1");
    EXPECT_EQ(group.level, "RAID 5");
    EXPECT_EQ(group.logicalDrives[0].state, "DEGRADED");
    EXPECT_EQ(group.caches[0].number, "LD3");
    EXPECT_EQ(group.members[0].slot, "4");
    EXPECT_EQ(DriveOf(controller, group.members[0]), &controller.drives[0]);
    EXPECT_EQ(GroupOf(controller, controller.drives[0]), &group);
}

TEST(ServerTest, ADriveInNoGroupNamesNone) {
    const Document document = Read(DriveItem("PD0", "NO ERROR", "HOT SPARE", "", "-") +
                                   DriveItem("PD1", "NO ERROR", "ONLINE", "", "RG-"));
    const Server server = Survey(document);
    EXPECT_EQ(server.controllers.at(0).drives.at(0).group, "");
    EXPECT_EQ(server.controllers.at(0).drives.at(1).group, "RG-");
}

TEST(ServerTest, SaysWhatADriveDoes) {
    const auto roleOf = [](const std::string& membership, const std::string& group) {
        Drive drive;
        drive.membership = membership;
        drive.group = group;
        return RoleOf(drive);
    };
    EXPECT_EQ(roleOf("LD1,LD2", "RG1"), "LD1,LD2");
    EXPECT_EQ(roleOf("GHS", ""), "global spare");
    EXPECT_EQ(roleOf("DHS", "RG2"), "spare of RG2");
    EXPECT_EQ(roleOf("DHS", ""), "spare of a group");
    EXPECT_EQ(roleOf("None", ""), "unused");
    EXPECT_EQ(roleOf("RLD", ""), "replaced (RLD)");
}

TEST(SmartTest, LaysOutKeysAndRowsOfDifferentColumns) {
    const std::string row1 =
        Node("SMART Detail(SATA)", Key("ID", "5") + Key("Attribute", "Reallocated") + Key("Raw Data", "0"));
    const std::string row2 =
        Node("SMART Detail(SATA)", Key("ID", "9") + Key("Flag", "x") + Key("Raw Data", "20411"));
    const Document document =
        Read(Node("Physical Drive Information",
                  Node("### SMART Information ###",
                       Key("SMART Status", "OK") + Placeholder("Temperature") + row1 + row2)));
    const Server server = Survey(document);
    const Smart smart = SmartOf(server.controllers[0].drives[0]);
    EXPECT_EQ(smart.keys, (std::vector<std::pair<std::string, std::string>>{{"SMART Status", "OK"},
                                                                            {"Temperature", ""}}));
    EXPECT_EQ(smart.tableName, "SMART Detail(SATA)");
    EXPECT_EQ(smart.columns, (std::vector<std::string>{"ID", "Attribute", "Raw Data", "Flag"}));
    EXPECT_EQ(smart.rows, (std::vector<std::vector<std::string>>{{"5", "Reallocated", "0", ""},
                                                                 {"9", "", "20411", "x"}}));
}

TEST(SmartTest, APlaceholderIsNoCell) {
    const std::string row =
        Node("SMART Detail(SAS)",
             Key("Attribute", "Read") + "<Item Name=\"Worst\" Value=\"77\" Valid=\"FALSE\"/>");
    const Document document =
        Read(Node("Physical Drive Information", Node("### SMART Information ###", row)));
    const Server server = Survey(document);
    EXPECT_EQ(SmartOf(server.controllers[0].drives[0]).rows,
              (std::vector<std::vector<std::string>>{{"Read", ""}}));
}

TEST(SmartTest, HasNoTableFromAPlaceholder) {
    const Document document = Read(Node("Physical Drive Information",
                                        Node("### SMART Information ###", Placeholder("SMART Detail(SAS)"))));
    const Server server = Survey(document);
    const Smart smart = SmartOf(server.controllers[0].drives[0]);
    EXPECT_TRUE(smart.keys.empty());
    EXPECT_TRUE(smart.rows.empty());
}

TEST(SnapshotTest, AddsSmartDataToTheDriveInThatSlot) {
    std::vector<DriveAnswer> answers;
    answers.push_back({"0", "252", "1",
                       Read(Node("Physical Drive Information",
                                 Node("### SMART Information ###", Key("SMART Status", "OK"))))});
    Snapshot snapshot(Read(ControllerItem("0") + DriveItem("PD0", "NO ERROR", "ONLINE") +
                           DriveItem("PD1", "NO ERROR", "ONLINE")),
                      "", std::move(answers));
    const Snapshot moved = std::move(snapshot);
    const std::vector<Drive>& drives = moved.TheServer().controllers[0].drives;
    EXPECT_EQ(drives[0].smart, nullptr);
    ASSERT_NE(drives[1].smart, nullptr);
    EXPECT_EQ(ValueOf(*drives[1].smart, "SMART Status"), "OK");
}

}  // namespace
}  // namespace inventory::test
