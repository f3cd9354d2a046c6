#include "inventory/Changes.h"

#include "DocumentText.h"

#include <gtest/gtest.h>

namespace inventory::test {
namespace {

std::vector<std::string> Between(const std::string& before, const std::string& after) {
    const Document old = Read(before);
    const Document now = Read(after);
    std::vector<std::string> lines;
    for (const Change& change : ChangesBetween(old, now)) {
        const char* const word = change.kind == Change::Kind::Appeared   ? "+ "
                                 : change.kind == Change::Kind::Vanished ? "- "
                                                                         : "~ ";
        lines.push_back(word + change.place + " | " + change.key + " | " + change.before + " | " +
                        change.after);
    }
    return lines;
}

using Lines = std::vector<std::string>;

TEST(ChangesTest, ThereAreNoneInADocumentAndItself) {
    const std::string items = ControllerItem("0") + GroupItem("RG0", LogicalDriveItem("LD0", "OPTIMAL")) +
                              DriveItem("PD0", "NO ERROR", "ONLINE") + Key("Notice", "x");
    EXPECT_EQ(Between(items, items), Lines());
}

TEST(ChangesTest, NamesTheDriveByItsPlaceAndTheKey) {
    EXPECT_EQ(Between(ControllerItem("0") + DriveItem("PD1", "NO ERROR", "ONLINE"),
                      ControllerItem("0") + DriveItem("PD1", "ERROR", "ONLINE")),
              Lines{"~ controller 0, the drive in enclosure 252 slot 1 | General Information / PD Status | "
                    "NO ERROR | "
                    "ERROR"});
}

TEST(ChangesTest, ADriveComesOrGoesAsAWhole) {
    const std::string first = DriveItem("PD0", "NO ERROR", "ONLINE");
    const std::string second = DriveItem("PD1", "NO ERROR", "ONLINE");
    const std::string third = DriveItem("PD2", "NO ERROR", "ONLINE");
    EXPECT_EQ(Between(ControllerItem("0") + first + second, ControllerItem("0") + first + third),
              (Lines{"- controller 0, the drive in enclosure 252 slot 1 |  |  | ",
                     "+ controller 0, the drive in enclosure 252 slot 2 |  |  | "}));
}

TEST(ChangesTest, DoesNotMindTheOrderOfDrives) {
    const std::string first = DriveItem("PD0", "NO ERROR", "ONLINE");
    const std::string second = DriveItem("PD1", "NO ERROR", "ONLINE");
    EXPECT_EQ(Between(ControllerItem("0") + first + second, ControllerItem("0") + second + first), Lines());
}

TEST(ChangesTest, KnowsLogicalDrivesByTheirNumbers) {
    const std::string lost = LogicalDriveItem("LD1", "OPTIMAL");
    const std::string kept = LogicalDriveItem("LD2", "OPTIMAL");
    EXPECT_EQ(Between(ControllerItem("0") + GroupItem("RG0", lost + kept),
                      ControllerItem("0") + GroupItem("RG0", kept)),
              (Lines{"- controller 0, RG0 | General Information / LD List LD1 / LD No. | LD1 | ",
                     "- controller 0, RG0 | General Information / LD List LD1 / State | OPTIMAL | "}));
}

TEST(ChangesTest, CountsKeysThatNobodyKnowsAndThoseThatOccurTwice) {
    EXPECT_EQ(Between(ControllerItem("0", Key("Odd", "1") + Key("Odd", "2")),
                      ControllerItem("0", Key("Odd", "1") + Key("Odd", "3"))),
              Lines{"~ controller 0 | General Information / Odd (2) | 2 | 3"});
    EXPECT_EQ(Between(Key("Notice", "a"), Key("Notice", "b")), Lines{"~ document, Notice | Notice | a | b"});
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
        (Lines{"- a drive | SMART Information / SMART Detail(SATA) 5 A5 / ID | 5 | ",
               "- a drive | SMART Information / SMART Detail(SATA) 5 A5 / Attribute | A5 | ",
               "- a drive | SMART Information / SMART Detail(SATA) 5 A5 / Raw Data | 0 | ",
               "~ a drive | SMART Information / SMART Detail(SATA) 9 A9 / Raw Data | 1 | 2"}));
}

TEST(ChangesTest, APlaceholderIsNoValue) {
    EXPECT_EQ(Between(ControllerItem("0", Placeholder("Rate")), ControllerItem("0", Key("Rate", ""))),
              Lines{"~ controller 0 | General Information / Rate | (not told) | "});
}

TEST(ChangesTest, ControllersOfOneNumberAreToldApart) {
    EXPECT_EQ(Between(ControllerItem("0") + ControllerItem("0"), ControllerItem("0")),
              Lines{"- controller 0 (2) |  |  | "});
}

}  // namespace
}  // namespace inventory::test
