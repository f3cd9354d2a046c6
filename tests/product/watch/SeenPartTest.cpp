#include "watch/SeenPart.h"

#include "DocumentText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace watch::test {
namespace {

using namespace inventory::test;
using testing::ElementsAre;

std::string SeenDrive(const std::string& number, const std::string& serial,
                      const std::string& status = "NO ERROR", const std::string& detail = "ONLINE",
                      const std::string& more = "") {
    return DriveItem(number, status, detail, Key("Serial Number", serial) + more);
}

std::string SeenGroup(const std::string& state) {
    return GroupItem("RG0", LogicalDriveItem("LD0", state), {"PD0", "PD1"}, "RAID 1");
}

// "drive/A OK ONLINE".
std::vector<std::string> LinesOf(const std::string& items, const inventory::Criteria& criteria = {}) {
    const inventory::Snapshot snapshot(Read(items), "", {}, criteria);
    std::vector<std::string> lines;
    for (const SeenPart& part : PartsOf(snapshot)) {
        lines.push_back(part.key + " " + std::string(NameOf(part.level)) +
                        (part.words.empty() ? "" : " " + part.words));
    }
    return lines;
}

TEST(SeenParts, TellTheirStates) {
    EXPECT_THAT(LinesOf(ControllerItem("0", Key("Controller Status", "OK")) + SeenGroup("OPTIMAL") +
                        SeenDrive("PD0", "A") + SeenDrive("PD1", "B")),
                ElementsAre("controller/0 OK OK", "group/0/RG0 OK", "logical-drive/0/LD0 OK OPTIMAL",
                            "drive/A OK ONLINE", "drive/B OK ONLINE"));
}

// The group takes the level of what belongs to it, the controller only its own.
TEST(SeenParts, TellWhatIsNotWell) {
    EXPECT_THAT(LinesOf(ControllerItem("0") + SeenGroup("DEGRADED") + SeenDrive("PD0", "A") +
                        SeenDrive("PD1", "B", "ERROR", "FAILED")),
                ElementsAre("controller/0 OK", "group/0/RG0 CRITICAL",
                            "logical-drive/0/LD0 CRITICAL DEGRADED, nothing is being rebuilt",
                            "drive/A OK ONLINE", "drive/B CRITICAL FAILED"));
}

TEST(SeenParts, AreAsWellAsTheySayWhateverTheLimitsAre) {
    inventory::Criteria criteria;
    criteria.limits.temperature = 30;
    EXPECT_THAT(LinesOf(ControllerItem("0") + SeenGroup("OPTIMAL") +
                            SeenDrive("PD0", "A", "NO ERROR", "ONLINE", Key("Temperature", "40 C")) +
                            SeenDrive("PD1", "B"),
                        criteria),
                ElementsAre("controller/0 OK", "group/0/RG0 OK", "logical-drive/0/LD0 OK OPTIMAL",
                            "drive/A OK ONLINE", "drive/B OK ONLINE"));
}

TEST(SeenParts, HaveKeysOfTheirOwn) {
    EXPECT_THAT(LinesOf(ControllerItem("0") + SeenDrive("PD0", "A") + SeenDrive("PD0", "") +
                        SeenDrive("PD0", "") + SeenDrive("PD1", "A")),
                ElementsAre(testing::StartsWith("controller/0"), testing::StartsWith("slot/0/252/0"),
                            testing::StartsWith("slot/0/252/1")));
}

TEST(SeenParts, LeadToTheirDrives) {
    const inventory::Snapshot snapshot(Read(ControllerItem("0") + SeenDrive("PD0", "A")));
    const std::vector<SeenPart> parts = PartsOf(snapshot);
    EXPECT_EQ(parts.at(0).drive, nullptr);
    EXPECT_EQ(parts.at(1).drive, &snapshot.TheServer().controllers.front().drives.front());
}

}  // namespace
}  // namespace watch::test
