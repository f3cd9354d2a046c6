#include "inventory/Changes.h"

#include "DocumentText.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace inventory::test {
namespace {

using Lines = std::vector<std::string>;

std::string LineOf(const Change& change) {
    std::string line = std::string(NameOf(change.kind)) + " ";
    if (change.from != nullptr) {
        line += change.from->place + " " + change.from->serial + " -> ";
    }
    line += change.part->place;
    if (change.key.empty()) {
        return line + " " + change.part->serial;
    }
    return line + " | " + change.key + " | " + change.before.value_or("(none)") + " | " +
           change.after.value_or("(none)");
}

Lines LinesOf(const Changes& changes) {
    Lines lines;
    for (const Change& change : changes.list) {
        lines.push_back(LineOf(change));
    }
    return lines;
}

Changes Compared(const std::string& before, const std::string& after, bool hasAll = false) {
    return ChangesBetween(Read(before), Read(after), hasAll);
}

Lines Between(const std::string& before, const std::string& after, bool hasAll = false) {
    return LinesOf(Compared(before, after, hasAll));
}

/// A drive with a serial number in a slot of enclosure 252, known there as PD and the number of the slot.
std::string DriveIn(const std::string& slot, const std::string& serial, const std::string& more = "") {
    return DriveItem("PD" + slot, "NO ERROR", "ONLINE",
                     Key("Product ID", "TF600S15") + Key("Serial Number", serial) + more);
}

TEST(ChangesTest, ThereAreNoneInADocumentAndItself) {
    const std::string items = ControllerItem("0") +
                              GroupItem("RG0", LogicalDriveItem("LD0", "OPTIMAL"), {"PD0", "PD1"}) +
                              DriveIn("0", "7K00") + DriveIn("1", "7K01") + Key("Notice", "x");
    EXPECT_EQ(Between(items, items, true), Lines());
}

TEST(ChangesTest, NamesTheDriveByItsPlaceAndTheKey) {
    EXPECT_EQ(
        Between(ControllerItem("0") + DriveItem("PD1", "NO ERROR", "ONLINE"),
                ControllerItem("0") + DriveItem("PD1", "ERROR", "ONLINE")),
        Lines{"changed controller 0, the drive in enclosure 252 slot 1 | General Information / PD Status "
              "| NO ERROR | ERROR"});
}

TEST(ChangesTest, ADriveComesOrGoesAsAWhole) {
    EXPECT_EQ(Between(ControllerItem("0") + DriveIn("0", "7K00") + DriveIn("1", "7K01"),
                      ControllerItem("0") + DriveIn("0", "7K00") + DriveIn("2", "7K02")),
              (Lines{"vanished controller 0, the drive in enclosure 252 slot 1 7K01",
                     "appeared controller 0, the drive in enclosure 252 slot 2 7K02"}));
}

TEST(ChangesTest, DoesNotMindTheOrderOfDrives) {
    const std::string first = DriveItem("PD0", "NO ERROR", "ONLINE");
    const std::string second = DriveItem("PD1", "NO ERROR", "ONLINE");
    EXPECT_EQ(Between(ControllerItem("0") + first + second, ControllerItem("0") + second + first), Lines());
}

TEST(ChangesTest, ADriveThatHasMovedIsFollowedByWhatElseChanged) {
    const std::string before =
        ControllerItem("0") + DriveIn("4", "7K04", Key("Media Error Count", "0")) + DriveIn("5", "7K05");
    const std::string after =
        ControllerItem("0") + DriveIn("5", "7K05") + DriveIn("7", "7K04", Key("Media Error Count", "3"));
    const Changes changes = Compared(before, after);
    EXPECT_EQ(
        LinesOf(changes),
        (Lines{"moved controller 0, the drive in enclosure 252 slot 4 7K04 -> controller 0, the drive in "
               "enclosure 252 slot 7 7K04",
               "changed controller 0, the drive in enclosure 252 slot 7 | General Information / Media "
               "Error Count | 0 | 3"}));
    EXPECT_EQ(changes.repetitions, 2U);
    EXPECT_EQ(changes.list[0].part->identity, "TF600S15, serial number 7K04");
    EXPECT_EQ(
        Between(before, after, true),
        (Lines{"moved controller 0, the drive in enclosure 252 slot 4 7K04 -> controller 0, the drive in "
               "enclosure 252 slot 7 7K04",
               "changed controller 0, the drive in enclosure 252 slot 7 | General Information / PD No. | "
               "PD4 | PD7",
               "changed controller 0, the drive in enclosure 252 slot 7 | General Information / Media "
               "Error Count | 0 | 3",
               "changed controller 0, the drive in enclosure 252 slot 7 | Enclosure Properties "
               "Information / Slot No. | 4 | 7"}));
}

TEST(ChangesTest, TwoDrivesThatChangedPlacesHaveMovedBoth) {
    EXPECT_EQ(
        Between(ControllerItem("0") + DriveIn("4", "7K04") + DriveIn("7", "7K07"),
                ControllerItem("0") + DriveIn("4", "7K07") + DriveIn("7", "7K04")),
        (Lines{"moved controller 0, the drive in enclosure 252 slot 4 7K04 -> controller 0, the drive in "
               "enclosure 252 slot 7 7K04",
               "moved controller 0, the drive in enclosure 252 slot 7 7K07 -> controller 0, the drive in "
               "enclosure 252 slot 4 7K07"}));
}

TEST(ChangesTest, AnotherDriveInTheSamePlaceIsAReplacement) {
    const Changes changes = Compared(
        ControllerItem("0") + DriveIn("4", "7K04", Key("Capacity", "558 GB")),
        ControllerItem("0") + DriveItem("PD4", "REBUILD", "REBUILD",
                                        Key("Product ID", "TF900S15") + Key("Serial Number", "9X01") +
                                            Key("Capacity", "837 GB")));
    EXPECT_EQ(
        LinesOf(changes),
        (Lines{
            "replaced controller 0, the drive in enclosure 252 slot 4 7K04 -> controller 0, the drive in "
            "enclosure 252 slot 4 9X01",
            "changed controller 0, the drive in enclosure 252 slot 4 | General Information / PD Status | NO "
            "ERROR | REBUILD",
            "changed controller 0, the drive in enclosure 252 slot 4 | General Information / PD "
            "Status(Detail) | ONLINE | REBUILD",
            "changed controller 0, the drive in enclosure 252 slot 4 | General Information / Capacity | 558 "
            "GB | 837 GB"}));
    EXPECT_EQ(changes.list[0].from->identity, "TF600S15, serial number 7K04");
    EXPECT_EQ(changes.list[0].part->identity, "TF900S15, serial number 9X01");
    EXPECT_EQ(changes.repetitions, 2U);
}

TEST(ChangesTest, ADriveInThePlaceOfOneThatHasMovedReplacesNone) {
    EXPECT_EQ(
        Between(ControllerItem("0") + DriveIn("4", "7K04") + DriveIn("5", "7K05"),
                ControllerItem("0") + DriveIn("4", "9X01") + DriveIn("5", "7K04")),
        (Lines{"appeared controller 0, the drive in enclosure 252 slot 4 9X01",
               "moved controller 0, the drive in enclosure 252 slot 4 7K04 -> controller 0, the drive in "
               "enclosure 252 slot 5 7K04",
               "vanished controller 0, the drive in enclosure 252 slot 5 7K05"}));
}

TEST(ChangesTest, ADriveMovesToAnotherController) {
    EXPECT_EQ(
        Between(ControllerItem("0") + DriveIn("4", "7K04") + ControllerItem("1"),
                ControllerItem("0") + ControllerItem("1") + DriveIn("4", "7K04")),
        Lines{"moved controller 0, the drive in enclosure 252 slot 4 7K04 -> controller 1, the drive in "
              "enclosure 252 slot 4 7K04"});
}

TEST(ChangesTest, DrivesThatTheirSerialNumbersDoNotTellApartAreComparedByPlace) {
    for (const std::string serial : {"7K04", "", "-", "N/A", "00000000", "serial-0001"}) {
        // Two of one number, or two without any: where they stand is all there is.
        EXPECT_EQ(Between(ControllerItem("0") + DriveIn("4", serial) + DriveIn("5", serial),
                          ControllerItem("0") + DriveIn("4", serial) + DriveIn("7", serial)),
                  (Lines{"vanished controller 0, the drive in enclosure 252 slot 5 " + serial,
                         "appeared controller 0, the drive in enclosure 252 slot 7 " + serial}))
            << serial;
    }
    // Only one of each, but no number that would name it.
    for (const std::string serial : {"", "-", "N/A", "00000000", "serial-0001"}) {
        EXPECT_EQ(
            Between(ControllerItem("0") + DriveIn("4", serial), ControllerItem("0") + DriveIn("7", serial)),
            (Lines{"vanished controller 0, the drive in enclosure 252 slot 4 " + serial,
                   "appeared controller 0, the drive in enclosure 252 slot 7 " + serial}))
            << serial;
    }
}

TEST(ChangesTest, ANumberThatIsToldTwiceOnOneSideDoesNotMoveDrives) {
    EXPECT_EQ(Between(ControllerItem("0") + DriveIn("4", "7K04"),
                      ControllerItem("0") + DriveIn("3", "7K04") + DriveIn("4", "7K04")),
              Lines{"appeared controller 0, the drive in enclosure 252 slot 3 7K04"});
    EXPECT_EQ(Between(ControllerItem("0") + DriveIn("3", "7K04") + DriveIn("4", "7K04"),
                      ControllerItem("0") + DriveIn("4", "7K04")),
              Lines{"vanished controller 0, the drive in enclosure 252 slot 3 7K04"});
}

TEST(ChangesTest, ASerialNumberThatIsNoLongerToldIsNoReplacement) {
    EXPECT_EQ(Between(ControllerItem("0") + DriveIn("4", "7K04"), ControllerItem("0") + DriveIn("4", "N/A")),
              Lines{"changed controller 0, the drive in enclosure 252 slot 4 | General Information / Serial "
                    "Number | 7K04 | N/A"});
}

TEST(ChangesTest, ADriveWithoutASlotHasNotMoved) {
    const auto drive = [](const std::string& number) {
        return Node("Physical Drive Information",
                    General(Key("PD No.", number) + Key("Serial Number", "7K04")));
    };
    EXPECT_EQ(Between(ControllerItem("0") + drive("PD4"), ControllerItem("0") + drive("PD5")),
              Lines{"changed controller 0, PD5 | General Information / PD No. | PD4 | PD5"});
}

TEST(ChangesTest, ADriveWhosePlaceIsNoLongerToldHasNotMoved) {
    const auto drive = [](const std::string& place) {
        return Node("Physical Drive Information",
                    General(Key("PD No.", "PD4") + Key("Serial Number", "7K04")) +
                        Node("### Enclosure Properties Information ###", place));
    };
    const std::string slot = Key("Slot No.", "4");
    const std::string enclosure = Key("Enclosure No.", "252");
    EXPECT_EQ(
        Between(ControllerItem("0") + drive(enclosure + slot), ControllerItem("0") + drive(enclosure)),
        Lines{"vanished controller 0, PD4 in enclosure 252 | Enclosure Properties Information / Slot No. "
              "| 4 | (none)"});
    EXPECT_EQ(Between(ControllerItem("0") + drive(slot), ControllerItem("0") + drive(enclosure + slot)),
              Lines{"appeared controller 0, the drive in enclosure 252 slot 4 | Enclosure Properties "
                    "Information / Enclosure No. | (none) | 252"});
    // The document of a single drive names no controller.
    EXPECT_EQ(Between(drive(slot), ControllerItem("0") + drive(slot)), Lines{"appeared controller 0 "});
}

TEST(ChangesTest, AMemberThatIsNamedTwiceIsComparedTwice) {
    const auto group = [](const std::string& capacity) {
        const std::string member =
            Node("PD List", Key("PD No.", "PD4") + Key("Slot No.", "4") + Key("Capacity", "1 GB"));
        return Node("Logical Drive Information",
                    member + Node("PD List", Key("PD No.", "PD4") + Key("Capacity", capacity)) +
                        General(Key("RG No.", "RG0") + Key("Name", capacity)));
    };
    EXPECT_EQ(Between(ControllerItem("0") + group("2 GB") + DriveIn("4", "7K04"),
                      ControllerItem("0") + group("3 GB") + DriveIn("4", "7K04")),
              (Lines{"changed controller 0, RG0 | PD List PD4 (2) / Capacity | 2 GB | 3 GB",
                     "changed controller 0, RG0 | General Information / Name | 2 GB | 3 GB"}));
}

TEST(ChangesTest, RedactedValuesAreNotCompared) {
    const std::string before = ControllerItem("0") + DriveIn("4", "serial-0001") +
                               DriveIn("5", "serial-0002", Key("WWN", "wwn-0001"));
    const std::string after =
        ControllerItem("0") + DriveIn("4", "7K04") + DriveIn("5", "serial-0001", Key("WWN", "wwn-0002"));
    const Changes changes = Compared(before, after);
    EXPECT_EQ(LinesOf(changes), Lines());
    EXPECT_EQ(changes.redactions, 3U);
    EXPECT_EQ(Compared(after, before).redactions, 3U);
    EXPECT_EQ(Compared(before, after, true).list.size(), 3U);
}

TEST(ChangesTest, AGroupOnlyFollowsAMemberThatHasMoved) {
    const std::string before = ControllerItem("0") + GroupItem("RG0", "", {"PD0", "PD4"}) +
                               DriveIn("0", "7K00") + DriveIn("4", "7K04");
    const std::string after = ControllerItem("0") + GroupItem("RG0", "", {"PD0", "PD7"}) +
                              DriveIn("0", "7K00") + DriveIn("7", "7K04");
    EXPECT_EQ(
        Between(before, after),
        Lines{"moved controller 0, the drive in enclosure 252 slot 4 7K04 -> controller 0, the drive in "
              "enclosure 252 slot 7 7K04"});
    const Lines all = Between(before, after, true);
    EXPECT_EQ(
        std::count(all.begin(), all.end(), "changed controller 0, RG0 | PD List PD7 / Slot No. | 4 | 7"), 1);
    EXPECT_EQ(
        std::count(all.begin(), all.end(), "changed controller 0, RG0 | PD List PD7 / PD No. | PD4 | PD7"),
        1);
}

TEST(ChangesTest, AGroupThatContradictsItsMemberIsADifference) {
    const auto group = [](const std::string& slot) {
        return Node(
            "Logical Drive Information",
            Node("PD List", Key("PD No.", "PD4") + Key("Slot No.", slot)) + General(Key("RG No.", "RG0")));
    };
    EXPECT_EQ(Between(ControllerItem("0") + group("4") + DriveIn("4", "7K04"),
                      ControllerItem("0") + group("6") + DriveIn("4", "7K04")),
              Lines{"changed controller 0, RG0 | PD List PD4 / Slot No. | 4 | 6"});
}

TEST(ChangesTest, AMemberThatLeavesItsGroupIsTold) {
    const std::string drives = DriveIn("0", "7K00") + DriveIn("4", "7K04");
    EXPECT_EQ(Between(ControllerItem("0") + GroupItem("RG0", "", {"PD0", "PD4"}) + drives,
                      ControllerItem("0") + GroupItem("RG0", "", {"PD0"}) + drives),
              (Lines{"vanished controller 0, RG0 | PD List PD4 / PD No. | PD4 | (none)",
                     "vanished controller 0, RG0 | PD List PD4 / Enclosure No. | 252 | (none)",
                     "vanished controller 0, RG0 | PD List PD4 / Slot No. | 4 | (none)",
                     "changed controller 0, RG0 | General Information / # of PD | 2 | 1"}));
}

TEST(ChangesTest, KnowsLogicalDrivesByTheirNumbers) {
    const std::string lost = LogicalDriveItem("LD1", "OPTIMAL");
    const std::string kept = LogicalDriveItem("LD2", "OPTIMAL");
    EXPECT_EQ(Between(ControllerItem("0") + GroupItem("RG0", lost + kept),
                      ControllerItem("0") + GroupItem("RG0", kept)),
              (Lines{"vanished controller 0, RG0 | General Information / LD List LD1 / LD No. | LD1 | (none)",
                     "vanished controller 0, RG0 | General Information / LD List LD1 / State | OPTIMAL | "
                     "(none)"}));
}

TEST(ChangesTest, CountsKeysThatNobodyKnowsAndThoseThatOccurTwice) {
    EXPECT_EQ(Between(ControllerItem("0", Key("Odd", "1") + Key("Odd", "2")),
                      ControllerItem("0", Key("Odd", "1") + Key("Odd", "3"))),
              Lines{"changed controller 0 | General Information / Odd (2) | 2 | 3"});
    const std::string likeANumber = Key("Odd", "1") + Key("Odd", "2") + Key("Odd (2)", "3");
    EXPECT_EQ(Between(ControllerItem("0", likeANumber), ControllerItem("0", likeANumber + Key("New", "x"))),
              Lines{"appeared controller 0 | General Information / New | (none) | x"});
    EXPECT_EQ(Between(Key("Notice", "a"), Key("Notice", "b")),
              Lines{"changed document, Notice | Notice | a | b"});
    EXPECT_EQ(Between(Key("", "a"), Key("", "b")), Lines{"changed document, (no name) | (no name) | a | b"});
}

TEST(ChangesTest, KnowsRowsOfSmartTablesByTheirAttributes) {
    const auto row = [](const std::string& id, const std::string& raw) {
        return Node("SMART Detail(SATA)", Key("ID", id) + Key("Attribute", "A" + id) + Key("Raw Data", raw));
    };
    const auto drive = [](const std::string& rows) {
        return Node("Physical Drive Information", Node("### SMART Information ###", rows));
    };
    EXPECT_EQ(
        Between(drive(row("5", "0") + row("9", "1") + row("12", "7")), drive(row("9", "2") + row("12", "7"))),
        (Lines{"vanished a drive | SMART Information / SMART Detail(SATA) 5 A5 / ID | 5 | (none)",
               "vanished a drive | SMART Information / SMART Detail(SATA) 5 A5 / Attribute | A5 | (none)",
               "vanished a drive | SMART Information / SMART Detail(SATA) 5 A5 / Raw Data | 0 | (none)",
               "changed a drive | SMART Information / SMART Detail(SATA) 9 A9 / Raw Data | 1 | 2"}));
}

TEST(ChangesTest, TablesOfTwoDrivesAreNotCompared) {
    const auto drive = [](const std::string& serial, const std::string& raw, const std::string& status) {
        return Node("Physical Drive Information",
                    General(Key("Serial Number", serial)) +
                        Node("### Enclosure Properties Information ###", Key("Slot No.", "4")) +
                        Node("### SMART Information ###",
                             Key("SMART Status", status) +
                                 Node("SMART Detail(SATA)",
                                      Key("Attribute", "Spin Retry Count") + Key("Raw Data", raw))));
    };
    EXPECT_EQ(Between(drive("7K04", "12", "OK"), drive("9X01", "0", "Alert")),
              (Lines{"replaced the drive in slot 4 7K04 -> the drive in slot 4 9X01",
                     "changed the drive in slot 4 | SMART Information / SMART Status | OK | Alert"}));
    EXPECT_EQ(Between(drive("7K04", "12", "OK"), drive("9X01", "0", "OK"), true).size(), 3U);
}

TEST(ChangesTest, APlaceholderIsNoValue) {
    EXPECT_EQ(Between(ControllerItem("0", Placeholder("Rate")), ControllerItem("0", Key("Rate", ""))),
              Lines{"changed controller 0 | General Information / Rate | (none) | "});
}

TEST(ChangesTest, ControllersOfOneNumberAreToldApart) {
    EXPECT_EQ(Between(ControllerItem("0") + ControllerItem("0"), ControllerItem("0")),
              Lines{"vanished controller 0 (2) "});
}

TEST(ChangesTest, WhatIsNewStandsBeforeWhatItComesBefore) {
    EXPECT_EQ(Between(ControllerItem("0") + DriveIn("1", "A1") + DriveIn("3", "A3") + DriveIn("4", "A4"),
                      ControllerItem("0") + DriveIn("0", "A0") + DriveIn("1", "A4") + DriveIn("2", "A2") +
                          DriveIn("4", "A1") + DriveIn("6", "A6")),
              (Lines{"appeared controller 0, the drive in enclosure 252 slot 0 A0",
                     "moved controller 0, the drive in enclosure 252 slot 1 A1 -> controller 0, the drive in "
                     "enclosure 252 slot 4 A1",
                     "vanished controller 0, the drive in enclosure 252 slot 3 A3",
                     "moved controller 0, the drive in enclosure 252 slot 4 A4 -> controller 0, the drive in "
                     "enclosure 252 slot 1 A4",
                     "appeared controller 0, the drive in enclosure 252 slot 2 A2",
                     "appeared controller 0, the drive in enclosure 252 slot 6 A6"}));
}

/// A key that has another value, and where it stands.
struct Moved {
    const char* key;
    const char* before;
    const char* after;
};

TEST(Movement, OfWhatIsMeasuredSaysNothing) {
    constexpr Moved kMoved[] = {
        {"Temperature", "31 C", "45 C"},          {"Drive Temperature", "31 C", "45 C"},
        {"Voltage", "4053 mV", "4050 mV"},        {"Current", "0 mA", "-12 mA"},
        {"Relative State of Charge", "98", "97"}, {"Absolute State of Charge", "98 %", "97 %"},
        {"Capacitance", "100 %", "98 %"},         {"Remaining Capacity", "1300 mAh", "1299 mAh"},
        {"Power-On Time", "9 Hours", "10 Hours"}};
    for (const auto& [key, before, after] : kMoved) {
        const std::string old = ControllerItem("0", Key(key, before));
        const std::string now = ControllerItem("0", Key(key, after));
        EXPECT_EQ(Between(old, now), Lines()) << key;
        EXPECT_EQ(Compared(old, now).movements, 1U) << key;
        EXPECT_EQ(Between(old, now, true).size(), 1U) << key;
    }
}

TEST(Movement, IsNotWhatSaysSomething) {
    constexpr Moved kTold[] = {{"Temperature", "31 C", "N/A"},
                               {"Temperature", "31 C", ""},
                               {"Temperature", "", "31 C"},
                               {"Temperature Limit", "60 C", "65 C"},
                               {"OverCurrent", "1", "2"},
                               {"Write Policy Current", "Write Back", "Write Through"},
                               {"Media Error Count", "0", "1"},
                               {"SMART Error Count", "0", "1"},
                               {"Power Status", "Active", "Stopped"}};
    for (const auto& [key, before, after] : kTold) {
        EXPECT_EQ(Between(ControllerItem("0", Key(key, before)), ControllerItem("0", Key(key, after))).size(),
                  1U)
            << key << " " << after;
    }
    EXPECT_EQ(Between(ControllerItem("0", Key("Voltage", "1 V")), ControllerItem("0")).size(), 1U);
    EXPECT_EQ(Between(ControllerItem("0", Key("Voltage", "1 V")), ControllerItem("0", Placeholder("Voltage")))
                  .size(),
              1U);
}

/// A cell of a SMART table, and whether another number there says nothing.
struct Cell {
    const char* attribute;
    const char* column;
    bool isMoving;
};

TEST(Movement, InSmartTablesIsTimeTemperatureAndData) {
    constexpr Cell kCells[] = {{"Power-On Hours", "Raw Data", true},
                               {"Power_On_Hours", "Value", true},
                               {"Power-On Hours", "Worst", true},
                               {"Power-On Hours", "Thresh", false},
                               {"Power Cycle Count", "Raw Data", false},
                               {"Drive Temperature", "Raw Data", true},
                               {"Airflow_Temperature_Cel", "Raw Data", true},
                               {"Over Temperature Count", "Raw Data", false},
                               {"Head Flying Hours", "Raw Data", true},
                               {"Total LBAs Written", "Raw Data", true},
                               {"Raw Read Error Rate", "Raw Data", false},
                               {"Reallocated Sectors Count", "Raw Data", false},
                               {"[Head 0]Read", "Fast", true},
                               {"[Head 0]Read", "Algorithm", true},
                               {"Verify", "Corrected", true},
                               {"Write", "Gigabytes", true},
                               {"Write", "Delayed", false},
                               {"Write", "Retries", false},
                               {"Read", "Uncorrected", false},
                               {"[Head 0]Non-medium error", "Fast", false},
                               {"[Head 0]Non-medium error", "Gigabytes", true}};
    for (const auto& [attribute, column, isMoving] : kCells) {
        const auto drive = [attribute = attribute, column = column](const std::string& value) {
            return Node("Physical Drive Information",
                        Node("### SMART Information ###",
                             Node("SMART Detail(SAS)", Key("Attribute", attribute) + Key(column, value))));
        };
        EXPECT_EQ(Between(drive("00A3"), drive("00A4")).empty(), isMoving) << attribute << " " << column;
        EXPECT_EQ(Between(drive("00A3"), drive("00A4"), true).size(), 1U) << attribute << " " << column;
        EXPECT_EQ(Between(drive("17"), drive("unknown")).size(), 1U) << attribute << " " << column;
    }
}

}  // namespace
}  // namespace inventory::test
