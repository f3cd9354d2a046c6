#include "board/Picture.h"

#include "DocumentText.h"

#include <gtest/gtest.h>

namespace board::test {
namespace {

using namespace inventory::test;
using inventory::Snapshot;

constexpr std::chrono::system_clock::time_point kNow{std::chrono::hours(1)};

std::string Drive(const std::string& number, const std::string& serial, const std::string& smart = "") {
    std::string drive = DriveItem(number, "NO ERROR", "HOT SPARE", Key("Serial Number", serial), "-", "GHS");
    return smart.empty() ? drive
                         : drive.insert(drive.rfind("</Item>"), Node("### SMART Information ###", smart));
}

std::string Temperature(const std::string& degrees) {
    return Key("Temperature", degrees);
}

inventory::DriveAnswer First(const std::string& roots) {
    return {"0", "252", "0", Read(roots)};
}

// What is told of the SMART data of the drive in slot 0.
std::string SmartOfFirst(const Snapshot& snapshot) {
    const inventory::Drive& drive = snapshot.TheServer().controllers.front().drives.front();
    return drive.smart == nullptr ? "nothing" : ValueOf(*drive.smart, "Temperature");
}

TEST(Picture, IsNothingBeforeTheFirstAnswer) {
    EXPECT_EQ(Picture().Latest(), nullptr);
}

TEST(Picture, ShowsSmartDataWithTheServersNextAnswers) {
    Picture picture;
    const std::string server = ControllerItem("0") + Drive("PD0", "A") + Drive("PD1", "B");
    EXPECT_EQ(SmartOfFirst(picture.SeeServer(Read(server), {}, kNow)), "nothing");
    picture.SeeDrive(First(Drive("PD0", "A", Temperature("31 C"))));
    EXPECT_EQ(SmartOfFirst(*picture.Latest()), "nothing");
    EXPECT_EQ(SmartOfFirst(picture.SeeServer(Read(server), {}, kNow)), "31 C");
    EXPECT_EQ(SmartOfFirst(picture.SeeServer(Read(server), {}, kNow)), "31 C");
    picture.SeeDrive(First(Drive("PD0", "A", Temperature("32 C"))));
    EXPECT_EQ(SmartOfFirst(picture.SeeServer(Read(server), {}, kNow)), "32 C");
    EXPECT_EQ(picture.Latest()->Answers().size(), 1U);
    EXPECT_EQ(picture.Latest()->takenAt, kNow);
}

TEST(Picture, LeavesOutWhatAnotherDriveInTheSlotTold) {
    Picture picture;
    picture.SeeDrive(First(Drive("PD0", "A", Temperature("31 C"))));
    EXPECT_EQ(SmartOfFirst(picture.SeeServer(Read(ControllerItem("0") + Drive("PD0", "C")), {}, kNow)),
              "nothing");
    EXPECT_EQ(SmartOfFirst(picture.SeeServer(Read(ControllerItem("0") + Drive("PD0", "A")), {}, kNow)),
              "nothing");
    EXPECT_TRUE(picture.Latest()->Answers().empty());
}

TEST(Picture, LeavesOutAnswersThatTellOfNoDrive) {
    Picture picture;
    picture.SeeDrive(First(""));
    EXPECT_TRUE(picture.SeeServer(Read(ControllerItem("0") + Drive("PD0", "A")), {}, kNow).Answers().empty());
}

TEST(Picture, IsJudgedByWhatIsWanted) {
    inventory::Criteria criteria;
    criteria.limits.temperature = 30;
    const std::string drive =
        DriveItem("PD0", "NO ERROR", "HOT SPARE", Key("Temperature", "31 C"), "-", "GHS");
    Picture picture;
    EXPECT_EQ(picture.SeeServer(Read(ControllerItem("0") + drive), criteria, kNow).TheHealth().level,
              inventory::Level::Warning);
}

}  // namespace
}  // namespace board::test
