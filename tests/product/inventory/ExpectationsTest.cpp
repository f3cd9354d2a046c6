#include "inventory/Expectations.h"

#include "DocumentText.h"
#include "inventory/Snapshot.h"

#include <gtest/gtest.h>

namespace inventory::test {
namespace {

constexpr const char* kToday = "2031-04-05";

std::string DriveWith(const std::string& number, const std::string& serial, const std::string& more = "",
                      const std::string& group = "RG0", const std::string& membership = "LD0") {
    return DriveItem(number, "NO ERROR", "ONLINE",
                     Key("Product ID", "TF600S15") + Key("Serial Number", serial) + more, group, membership);
}

std::string SpareWith(const std::string& number, const std::string& serial, const std::string& more = "") {
    return DriveWith(number, serial, more, "-", "GHS");
}

std::string UnusedWith(const std::string& number, const std::string& serial) {
    return DriveWith(number, serial, "", "-", "None");
}

std::string ControllerWith(const std::string& number, const std::string& serial) {
    return ControllerItem(number, Key("Serial Number", serial));
}

const std::string kGroup = GroupItem("RG0", LogicalDriveItem("LD0", "OPTIMAL"), {"PD0", "PD1"}, "RAID 1");
const std::string kMirror =
    ControllerWith("0", "C0") + kGroup + DriveWith("PD0", "A") + DriveWith("PD1", "B");
const std::string kWell = kMirror + SpareWith("PD2", "S");

Expectations SavedFrom(const std::string& items) {
    const Document document = Read(items);
    Expectations expectations;
    expectations.host = "storage7";
    expectations.savedAt = "2031-04-05T06:07:08Z";
    expectations.controllers = ExpectedOf(Survey(document));
    return expectations;
}

Health HealthWith(const std::string& items, const Criteria& criteria) {
    return Snapshot(Read(items), "", {}, criteria).TheHealth();
}

std::string FindingsOf(const Health& health) {
    std::string text;
    for (const Finding& finding : health.findings) {
        text.append(NameOfLevel(finding)).append(" ").append(Describe(finding)).append("\n");
    }
    return text;
}

// What is not as it was saved, through the file's text.
std::string Differences(const std::string& saved, const std::string& now, const Limits& limits = {}) {
    const Criteria criteria = {ReadExpectations(Text(SavedFrom(saved))), limits, kToday};
    return FindingsOf(HealthWith(now, criteria));
}

std::string BeyondLimits(const std::string& items, const Limits& limits) {
    return FindingsOf(HealthWith(items, {{}, limits, kToday}));
}

std::string WhyNot(const std::string& text) {
    try {
        (void)ReadExpectations(text);
    } catch (const ExpectationsError& error) {
        return error.what();
    }
    return "";
}

TEST(ExpectationsText, HasAPartALine) {
    Expectations expectations = SavedFrom(kWell);
    expectations.accepted = {
        {"controller 0, RG0, LD0", "", "OFFLINE", "2031-06-30", "a spare part is ordered"},
        {"controller 0, PD9", "7K", "FAILED", "2031-07-01", "known"}};
    EXPECT_EQ(Text(expectations), R"({
  "version": 1,
  "host": "storage7",
  "saved_at": "2031-04-05T06:07:08Z",
  "controllers": [
    {
      "number": "0",
      "product": "Gate",
      "serial": "C0",
      "groups": [
        { "number": "RG0", "raid_level": "RAID 1", "logical_drives": ["LD0"] }
      ],
      "drives": [
        { "enclosure": "252", "slot": "0", "model": "TF600S15", "serial": "A", "role": "LD0" },
        { "enclosure": "252", "slot": "1", "model": "TF600S15", "serial": "B", "role": "LD0" },
        { "enclosure": "252", "slot": "2", "model": "TF600S15", "serial": "S", "role": "global spare" }
      ]
    }
  ],
  "accepted": [
    { "place": "controller 0, RG0, LD0", "what": "OFFLINE", "until": "2031-06-30", "reason": "a spare part is ordered" },
    { "place": "controller 0, PD9", "serial": "7K", "what": "FAILED", "until": "2031-07-01", "reason": "known" }
  ]
}
)");
}

TEST(ExpectationsText, ReadsAsItWasWritten) {
    Expectations expectations = SavedFrom(kWell + UnusedWith("PD3", "&quot;\\&amp;\xC3\xBC"));
    expectations.accepted = {{"controller 0", "", "a \"state\"", "2031-06-30", "line\nfeed"}};
    const std::string text = Text(expectations);
    EXPECT_EQ(Text(ReadExpectations(text)), text);
    EXPECT_EQ(ReadExpectations(text).accepted.front().reason, "line\nfeed");
}

TEST(ExpectationsText, IsTextWhateverAReportHolds) {
    Expectations expectations;
    expectations.host = "a\xFFz";
    EXPECT_EQ(ReadExpectations(Text(expectations)).host, "a\xEF\xBF\xBDz");
}

TEST(ExpectationsText, MayHaveComments) {
    const Expectations expectations = ReadExpectations(R"({
      // The spare moved to storage8.
      "version": 1, /* nothing else */ "controllers": []
    })");
    ASSERT_TRUE(expectations.controllers);
    EXPECT_TRUE(expectations.controllers->empty());
}

TEST(ExpectationsText, WithoutControllersExpectsWhateverIsThere) {
    const Criteria criteria = {ReadExpectations(R"({"version": 1})"), {}, kToday};
    EXPECT_EQ(FindingsOf(HealthWith(kWell, criteria)), "");
}

TEST(ExpectationsText, SaysWhereASlipIs) {
    const std::string drive = R"({"version": 1, "controllers": [{"number": "0", "drives": [{"slot": "0"}, )";
    const std::string accepted =
        R"({"version": 1, "accepted": [{"place": "controller 0", "what": "FAILED", )";
    const std::pair<std::string, std::string> kSlips[] = {
        {"", "line 1: it cannot be read as JSON"},
        {"{\n  \"version\": 1,\n}", "line 3: it cannot be read as JSON"},
        {R"({"version": 1e999})", "a number in it is too large"},
        {"[]", "the file: it is no object"},
        {"{}", "version: it is missing"},
        {R"({"version": 2})", "version: 1 is known, not 2"},
        {R"({"version": "1"})", "version: it is no whole number"},
        {R"({"version": 1, "acepted": []})", "acepted: there is no such key; did you mean accepted?"},
        {R"({"version": 1, "accepted": {}})", "accepted: it is no list"},
        {R"({"version": 1, "controllers": [7]})", "controllers[0]: it is no object"},
        {R"({"version": 1, "controllers": [{"product": "Gate"}]})",
         "controllers[0].number: it is missing, or empty"},
        {R"({"version": 1, "controllers": [{"number": "0", "groups": [{"number": 0}]}]})",
         "controllers[0].groups[0].number: it is no text"},
        {R"({"version": 1, "controllers": [{"number": "0", "groups": [{"number": "RG0", "logical_drives": [0]}]}]})",
         "controllers[0].groups[0].logical_drives[0]: it is no text"},
        {drive + R"({"slot": "1", "serail": "7K"}]}]})",
         "controllers[0].drives[1].serail: there is no such key; did you mean serial?"},
        {drive + R"({"slot": "1", "media_errors": -1}]}]})",
         "controllers[0].drives[1].media_errors: it is no whole number"},
        {drive + R"({"model": "TF600S15"}]}]})",
         "controllers[0].drives[1]: neither slot nor serial says which drive it is"},
        {accepted + R"("reason": "known"}]})", "accepted[0].until: it is missing, or empty"},
        {accepted + R"("until": "2031-06-30"}]})", "accepted[0].reason: it is missing, or empty"},
        {accepted + R"("until": "2031-06-31", "reason": "known"}]})",
         "accepted[0].until: it is no day such as 2031-06-30"},
    };
    for (const auto& [text, words] : kSlips) {
        EXPECT_EQ(WhyNot(text), words) << text;
    }
}

TEST(ExpectationsText, KnowsDays) {
    for (const char* const day : {"2031-06-30", "2032-02-29", "0001-01-01"}) {
        EXPECT_TRUE(IsDay(day)) << day;
    }
    for (const char* const other : {"", "2031-02-29", "2031-13-01", "2031-00-10", "31-06-2030", "2031/06/30",
                                    "2031-6-30", "2031-06-30 ", "+031-06-30", "0000-01-01", "2031-06-+3"}) {
        EXPECT_FALSE(IsDay(other)) << other;
    }
}

TEST(Expectations, LeaveOutWhatNobodyCouldFindAgain) {
    const std::string nameless = Node("Physical Drive Information", General(Key("Product ID", "TF600S15")));
    const Expectations saved =
        SavedFrom(kWell + GroupItem("", LogicalDriveItem("LD9", "OPTIMAL")) + nameless + ControllerItem(""));
    EXPECT_EQ(Text(ReadExpectations(Text(saved))), Text(saved));
    ASSERT_EQ(saved.controllers->size(), 1U);
    EXPECT_EQ(saved.controllers->front().groups.size(), 1U);
    EXPECT_EQ(saved.controllers->front().drives.size(), 3U);
}

TEST(Expectations, OfAServerThatIsAsItWasAddNothing) {
    EXPECT_EQ(Differences(kWell, kWell), "");
}

TEST(Expectations, TellWhatIsGone) {
    EXPECT_EQ(Differences(kWell + UnusedWith("PD3", "U"), kWell),
              "WARNING controller 0, the drive in enclosure 252 slot 3: gone, expected: unused "
              "(TF600S15, serial number U)\n");
    EXPECT_EQ(Differences(kWell, kMirror),
              "WARNING controller 0, the drive in enclosure 252 slot 2: gone, expected: global spare "
              "(TF600S15, serial number S)\n");
    const std::string second =
        GroupItem("RG1", LogicalDriveItem("LD1", "OPTIMAL") + LogicalDriveItem("LD2", "OPTIMAL"),
                  {"PD4", "PD5"}, "RAID 1");
    const std::string drives =
        DriveWith("PD4", "D", "", "RG1", "LD1") + DriveWith("PD5", "E", "", "RG1", "LD1");
    const std::string one = GroupItem("RG1", LogicalDriveItem("LD1", "OPTIMAL"), {"PD4", "PD5"}, "RAID 1");
    const std::string before =
        ControllerWith("0", "C0") + kGroup + second + DriveWith("PD0", "A") + DriveWith("PD1", "B") + drives;
    EXPECT_EQ(Differences(before, ControllerWith("0", "C0") + kGroup + one + DriveWith("PD0", "A") +
                                      DriveWith("PD1", "B") + drives),
              "CRITICAL controller 0, RG1, LD2: gone\n");
    EXPECT_EQ(
        Differences(before, ControllerWith("0", "C0") + kGroup + DriveWith("PD0", "A") +
                                DriveWith("PD1", "B") + UnusedWith("PD4", "D") + UnusedWith("PD5", "E")),
        "CRITICAL controller 0, RG1: gone, with LD1, LD2\n"
        "WARNING controller 0, PD4 in enclosure 252 slot 4: unused, expected: LD1 "
        "(TF600S15, serial number D)\n"
        "WARNING controller 0, PD5 in enclosure 252 slot 5: unused, expected: LD1 "
        "(TF600S15, serial number E)\n");
}

TEST(Expectations, TellOfAControllerThatIsGoneOnce) {
    EXPECT_EQ(Differences(kWell + ControllerWith("1", "C1") + SpareWith("PD0", "T"), kWell),
              "CRITICAL controller 1: gone (Gate, serial number C1)\n");
}

TEST(Expectations, TellWhatIsNew) {
    EXPECT_EQ(Differences(kMirror, kWell),
              "WARNING controller 0, PD2 in enclosure 252 slot 2: new (TF600S15, serial number S)\n");
    EXPECT_EQ(Differences(kWell, kWell + ControllerWith("1", "C1") + SpareWith("PD0", "T")),
              "WARNING controller 1: new (Gate, serial number C1)\n");
    const std::string plain = ControllerWith("0", "C0") + SpareWith("PD0", "A") + SpareWith("PD1", "B");
    EXPECT_EQ(Differences(plain, kMirror),
              "WARNING controller 0, RG0, PD0 in enclosure 252 slot 0: LD0, expected: global spare "
              "(TF600S15, serial number A)\n"
              "WARNING controller 0, RG0, PD1 in enclosure 252 slot 1: LD0, expected: global spare "
              "(TF600S15, serial number B)\n"
              "WARNING controller 0, RG0: new\n");
    const std::string more =
        GroupItem("RG0", LogicalDriveItem("LD0", "OPTIMAL") + LogicalDriveItem("LD1", "OPTIMAL"),
                  {"PD0", "PD1"}, "RAID 1");
    EXPECT_EQ(Differences(kMirror,
                          ControllerWith("0", "C0") + more + DriveWith("PD0", "A") + DriveWith("PD1", "B")),
              "WARNING controller 0, RG0, LD1: new\n");
}

TEST(Expectations, TellWhatWasSwapped) {
    EXPECT_EQ(Differences(kWell, kMirror + SpareWith("PD2", "T")),
              "WARNING controller 0, PD2 in enclosure 252 slot 2: another drive, expected: TF600S15, serial "
              "number S (TF600S15, serial number T)\n");
    EXPECT_EQ(Differences(kWell, ControllerWith("0", "C9") + kGroup + DriveWith("PD0", "A") +
                                     DriveWith("PD1", "B") + SpareWith("PD2", "S")),
              "WARNING controller 0: another controller, expected: serial number C0 "
              "(Gate, serial number C9)\n");
}

TEST(Expectations, TellWhatWasMoved) {
    EXPECT_EQ(
        Differences(kWell, kMirror + SpareWith("PD7", "S")),
        "WARNING controller 0, PD7 in enclosure 252 slot 7: moved, expected: controller 0, the drive in "
        "enclosure 252 slot 2 (TF600S15, serial number S)\n");
    EXPECT_EQ(
        Differences(kWell, ControllerWith("0", "C0") + kGroup + DriveWith("PD0", "B") +
                               DriveWith("PD1", "A") + SpareWith("PD2", "S")),
        "WARNING controller 0, RG0, PD1 in enclosure 252 slot 1: moved, expected: controller 0, the drive "
        "in enclosure 252 slot 0 (TF600S15, serial number A)\n"
        "WARNING controller 0, RG0, PD0 in enclosure 252 slot 0: moved, expected: controller 0, the drive "
        "in enclosure 252 slot 1 (TF600S15, serial number B)\n");
    // One takes the place of another, and the other is gone.
    EXPECT_EQ(
        Differences(kWell + UnusedWith("PD3", "U"), kMirror + UnusedWith("PD2", "U")),
        "WARNING controller 0, the drive in enclosure 252 slot 2: gone, expected: global spare "
        "(TF600S15, serial number S)\n"
        "WARNING controller 0, PD2 in enclosure 252 slot 2: moved, expected: controller 0, the drive in "
        "enclosure 252 slot 3 (TF600S15, serial number U)\n");
    // To another controller, whose own is gone.
    EXPECT_EQ(
        Differences(kMirror + ControllerWith("1", "C1") + SpareWith("PD4", "S"),
                    kMirror + SpareWith("PD4", "S")),
        "CRITICAL controller 1: gone (Gate, serial number C1)\n"
        "WARNING controller 0, PD4 in enclosure 252 slot 4: moved, expected: controller 1, the drive in "
        "enclosure 252 slot 4 (TF600S15, serial number S)\n");
}

TEST(Expectations, TellWhenASpareIsNoneAnyMore) {
    EXPECT_EQ(Differences(kWell, kMirror + UnusedWith("PD2", "S")),
              "WARNING controller 0, PD2 in enclosure 252 slot 2: unused, expected: global spare "
              "(TF600S15, serial number S)\n");
}

TEST(Expectations, TellOfAnotherLevel) {
    const std::string stripes =
        GroupItem("RG0", LogicalDriveItem("LD0", "OPTIMAL"), {"PD0", "PD1"}, "RAID 0");
    EXPECT_EQ(Differences(kMirror, ControllerWith("0", "C0") + stripes + DriveWith("PD0", "A") +
                                       DriveWith("PD1", "B")),
              "WARNING controller 0, RG0: RAID 0, expected: RAID 1\n");
}

TEST(Expectations, FindADriveBySlotWhereSerialNumbersTellNothing) {
    const std::string twins = kMirror + SpareWith("PD2", "0000") + SpareWith("PD3", "0000");
    EXPECT_EQ(Differences(twins, twins), "");
    const std::string nameless = kMirror + SpareWith("PD2", "");
    EXPECT_EQ(Differences(nameless, nameless), "");
    EXPECT_EQ(Differences(kWell, nameless), "");
    EXPECT_EQ(Differences(nameless, kMirror),
              "WARNING controller 0, the drive in enclosure 252 slot 2: gone, expected: global spare "
              "(TF600S15)\n");
}

TEST(Expectations, AreNothingToTheAnswerAboutOneDrive) {
    EXPECT_EQ(Differences(kWell, DriveWith("PD0", "A")), "");
}

TEST(Expectations, MakePartsWorseAndThoseThatHoldThem) {
    const Criteria criteria = {SavedFrom(kWell), {}, kToday};
    const Snapshot swapped(Read(ControllerWith("0", "C0") + kGroup + DriveWith("PD0", "A") +
                                DriveWith("PD1", "X") + SpareWith("PD2", "S")),
                           "", {}, criteria);
    const Controller& controller = swapped.TheServer().controllers.front();
    EXPECT_EQ(controller.drives[0].health, Level::Ok);
    EXPECT_EQ(controller.drives[1].health, Level::Warning);
    EXPECT_EQ(controller.groups.front().health, Level::Warning);
    EXPECT_EQ(controller.health, Level::Warning);
    EXPECT_EQ(swapped.TheHealth().level, Level::Warning);
}

class Accepting : public testing::Test {
  protected:
    static Health HealthAccepting(const std::vector<Acceptance>& accepted,
                                  const std::string& state = "OFFLINE") {
        Criteria criteria;
        criteria.expectations.emplace().accepted = accepted;
        criteria.today = kToday;
        return HealthWith(ControllerWith("0", "C0") +
                              GroupItem("RG0", LogicalDriveItem("LD0", state), {"PD0", "PD1"}, "RAID 1") +
                              DriveWith("PD0", "A", Key("Predictive Failure Count", "1")) +
                              DriveWith("PD1", "B"),
                          criteria);
    }

    const Acceptance m_LogicalDrive = {"controller 0, RG0, LD0", "", "OFFLINE", kToday, "being restored"};
    const Acceptance m_Drive = {"controller 0, RG0, PD0 in enclosure 252 slot 0", "A",
                                "failure predicted (1)", "2031-12-31", "ordered"};
};

TEST_F(Accepting, ShowsAFindingAndDoesNotCountIt) {
    const Health health = HealthAccepting({m_LogicalDrive});
    EXPECT_EQ(
        FindingsOf(health),
        "WARNING controller 0, RG0, PD0 in enclosure 252 slot 0: failure predicted (1) (TF600S15, serial "
        "number A)\n"
        "ACCEPTED controller 0, RG0, LD0: OFFLINE (accepted until 2031-04-05: being restored)\n");
    EXPECT_EQ(health.level, Level::Warning);
    EXPECT_EQ(Headline(health),
              "1 warning in 1 controller, 1 group, 1 logical drive, 2 drives, 1 finding accepted");
    EXPECT_EQ(CountOf(health, Level::Critical), 0U);
    EXPECT_EQ(CountAccepted(health), 1U);
}

TEST_F(Accepting, AllOfItLeavesTheServerWell) {
    const Health health = HealthAccepting({m_LogicalDrive, m_Drive});
    EXPECT_EQ(health.level, Level::Ok);
    EXPECT_EQ(Headline(health),
              "1 controller, 1 group, 1 logical drive, 2 drives, all else well, 2 findings accepted");
}

TEST_F(Accepting, EndsAfterItsDay) {
    Acceptance over = m_LogicalDrive;
    over.until = "2031-04-04";
    const Health health = HealthAccepting({over, m_Drive});
    EXPECT_EQ(health.level, Level::Critical);
    EXPECT_EQ(Describe(health.findings.front()),
              "controller 0, RG0, LD0: OFFLINE (not accepted any more since 2031-04-04: being restored)");
    // What holds longest counts, in whatever order.
    EXPECT_EQ(HealthAccepting({over, m_LogicalDrive, m_Drive}).level, Level::Ok);
    EXPECT_EQ(HealthAccepting({m_LogicalDrive, over, m_Drive}).level, Level::Ok);
}

TEST_F(Accepting, IsForOneStateOfOnePart) {
    EXPECT_EQ(HealthAccepting({m_LogicalDrive, m_Drive}, "FAILED").level, Level::Critical);
    Acceptance other = m_Drive;
    other.serial = "B";
    EXPECT_EQ(HealthAccepting({m_LogicalDrive, other}).level, Level::Warning);
    other.serial.clear();  // whichever drive it is
    EXPECT_EQ(HealthAccepting({m_LogicalDrive, other}).level, Level::Ok);
    other.place = "controller 0, RG0, PD1 in enclosure 252 slot 1";
    EXPECT_EQ(HealthAccepting({m_LogicalDrive, other}).level, Level::Warning);
}

TEST_F(Accepting, MakesThePartItselfNoBetter) {
    Criteria criteria;
    criteria.expectations.emplace().accepted = {m_LogicalDrive};
    criteria.today = kToday;
    const Snapshot snapshot(
        Read(ControllerWith("0", "C0") +
             GroupItem("RG0", LogicalDriveItem("LD0", "OFFLINE"), {"PD0", "PD1"}, "RAID 1") +
             DriveWith("PD0", "A") + DriveWith("PD1", "B")),
        "", {}, criteria);
    EXPECT_EQ(snapshot.TheHealth().level, Level::Ok);
    EXPECT_EQ(snapshot.TheServer().controllers.front().health, Level::Critical);
}

TEST_F(Accepting, IsMadeFromAFinding) {
    const Health health = HealthAccepting({});
    std::vector<Acceptance> accepted;
    for (const Finding& finding : health.findings) {
        accepted.push_back(AcceptanceOf(finding, "2031-12-31", "known"));
    }
    ASSERT_EQ(accepted.size(), 2U);
    EXPECT_EQ(HealthAccepting(accepted).level, Level::Ok);
}

TEST_F(Accepting, NeverMakesAServerWithoutDrivesWell) {
    Criteria criteria;
    criteria.expectations.emplace().accepted = {
        {"controller 0", "", "neither groups nor drives are told", "2031-12-31", "known"}};
    criteria.today = kToday;
    const Health health = HealthWith(ControllerWith("0", "C0"), criteria);
    EXPECT_EQ(CountAccepted(health), 1U);
    EXPECT_EQ(health.level, Level::Unknown);
}

TEST(Limits, AreOfTemperatures) {
    const std::string warm = kMirror + SpareWith("PD2", "S", Key("Temperature", "41 C"));
    EXPECT_EQ(BeyondLimits(warm, {.temperature = 41}), "");
    EXPECT_EQ(BeyondLimits(warm, {.temperature = 40}),
              "WARNING controller 0, PD2 in enclosure 252 slot 2: 41 C, limit 40 C "
              "(TF600S15, serial number S)\n");
    EXPECT_EQ(BeyondLimits(kMirror + SpareWith("PD2", "S", Key("Temperature", "N/A")), {.temperature = 0}),
              "");
}

TEST(Limits, AreOfMediaErrors) {
    const auto with = [](const std::string& count) {
        return kMirror + SpareWith("PD2", "S", Key("Media Error Count", count));
    };
    EXPECT_EQ(BeyondLimits(with("10"), {.mediaErrors = 10}), "");
    EXPECT_EQ(BeyondLimits(with("11"), {.mediaErrors = 10}),
              "WARNING controller 0, PD2 in enclosure 252 slot 2: 11 media errors, limit 10 "
              "(TF600S15, serial number S)\n");
    EXPECT_EQ(BeyondLimits(with("1"), {.mediaErrors = 0}),
              "WARNING controller 0, PD2 in enclosure 252 slot 2: 1 media error, limit 0 "
              "(TF600S15, serial number S)\n");
    EXPECT_EQ(BeyondLimits(with("-"), {.mediaErrors = 0}), "");
}

TEST(Limits, AreOfTheGrowthOfMediaErrors) {
    const auto with = [](const std::string& count, const std::string& slot = "PD2") {
        return kMirror + SpareWith(slot, "S", Key("Media Error Count", count));
    };
    EXPECT_EQ(Differences(with("3"), with("5"), {.mediaErrorGrowth = 2}), "");
    EXPECT_EQ(
        Differences(with("3"), with("6"), {.mediaErrorGrowth = 2}),
        "WARNING controller 0, PD2 in enclosure 252 slot 2: 6 media errors, 3 when it was saved, limit of "
        "growth 2 (TF600S15, serial number S)\n");
    EXPECT_EQ(Differences(with("3"), with("2"), {.mediaErrorGrowth = 0}), "");
    EXPECT_EQ(Differences(kWell, with("6"), {.mediaErrorGrowth = 0}), "");
    // It follows the drive.
    EXPECT_NE(
        Differences(with("3"), with("9", "PD5"), {.mediaErrorGrowth = 2}).find("9 media errors, 3 when"),
        std::string::npos);
}

TEST(Limits, AreOfGoodSparesForGroups) {
    EXPECT_EQ(BeyondLimits(kWell, {.spares = 1}), "");
    EXPECT_EQ(BeyondLimits(kWell, {.spares = 2}), "WARNING controller 0: 1 spare, fewest wanted 2\n");
    EXPECT_EQ(BeyondLimits(kMirror, {.spares = 1}), "WARNING controller 0: no spare, fewest wanted 1\n");
    EXPECT_EQ(BeyondLimits(kMirror + DriveWith("PD2", "D", "", "RG0", "DHS"), {.spares = 1}), "");
    const std::string failed = kMirror + DriveItem("PD2", "ERROR", "FAILED", "", "-", "GHS");
    EXPECT_NE(BeyondLimits(failed, {.spares = 1}).find("no spare, fewest wanted 1"), std::string::npos);
    // Where there is nothing to take the place of.
    EXPECT_EQ(BeyondLimits(ControllerWith("0", "C0") + UnusedWith("PD0", "U"), {.spares = 1}), "");
}

}  // namespace
}  // namespace inventory::test
