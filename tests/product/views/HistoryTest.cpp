// What is remembered, as tables, JSON and pages.

#include "views/History.h"

#include "Course.h"
#include "DocumentText.h"
#include "Documents.h"
#include "basics/Text.h"
#include "basics/Time.h"
#include "test_support/Pattern.h"
#include "test_support/TempFolder.h"
#include "test_support/XmlLint.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <cmath>
#include <sstream>

namespace views::test::remembered {
namespace {

using history::Reading;
using history::TimePoint;
using inventory::Finding;
using inventory::Level;
using inventory::PartKind;
using std::chrono::hours;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

TimePoint At(const char* text) {
    return *basics::TimeFromUtcText(text);
}

const TimePoint kSince = At("2031-03-06T00:00:00Z");
const TimePoint kNow = At("2031-04-05T06:07:08Z");

Reading Value(TimePoint at, double value) {
    return {at, at, value, value, value};
}

Reading Days(TimePoint from, int days, double low, double high, double last) {
    return {from, from + hours(24 * days) - std::chrono::seconds(1), low, high, last};
}

TEST(ACourse, HoldsAValueUntilTheNextOne) {
    const Course course =
        CourseOf({Value(kSince, 1), Value(kSince + hours(5), 3)}, kSince, kSince + hours(10), 5);
    EXPECT_THAT(course, ElementsAre(1, 1, 3, 3, 3));
}

TEST(ACourse, TakesTheHighestOfEachPiece) {
    const Course course =
        CourseOf({Value(kSince, 1), Value(kSince + hours(1), 9), Value(kSince + hours(2) - hours(1) / 2, 2)},
                 kSince, kSince + hours(4), 2);
    EXPECT_THAT(course, ElementsAre(9, 2));
}

TEST(ACourse, HasAGapWhereNobodyLooked) {
    const Course course =
        CourseOf({Value(kSince, 1), Value(kSince + hours(24 * 5), 2)}, kSince, kSince + hours(24 * 6), 6);
    EXPECT_THAT(course, ElementsAre(1, 1, std::nullopt, std::nullopt, 2, 2));
}

TEST(ACourse, GoesThroughWholeDays) {
    const Course course =
        CourseOf({Days(kSince, 2, 1, 5, 2), Value(kSince + hours(48), 3)}, kSince, kSince + hours(72), 3);
    EXPECT_THAT(course, ElementsAre(5, 5, 3));
}

TEST(ACourse, OfNothingIsNothing) {
    EXPECT_THAT(CourseOf({}, kSince, kNow, 2), ElementsAre(std::nullopt, std::nullopt));
    EXPECT_THAT(CourseOf({Value(kSince, 1)}, kNow, kSince, 2), ElementsAre(std::nullopt, std::nullopt));
    EXPECT_FALSE(ExtentOf(Course(3)));
}

TEST(ACourse, IsALineOfBlocks) {
    EXPECT_EQ(BlockLine({0, 1, 7, std::nullopt, 3.5}), "▁▂█ ▅");
    EXPECT_EQ(BlockLine({4, 4}), "▁▁");
    EXPECT_EQ(basics::WidthOf(BlockLine(Course(30, 1.0))), 30U);
}

TEST(ACourse, AddsUp) {
    EXPECT_THAT(Sum({1, std::nullopt, std::nullopt}, {2, 3, std::nullopt}), ElementsAre(3, 3, std::nullopt));
}

TEST(Numbers, AreShort) {
    EXPECT_EQ(ShortNumber(31), "31");
    EXPECT_EQ(ShortNumber(291.93), "291.93");
    EXPECT_EQ(ShortNumber(0.1 + 0.2), "0.3");
    EXPECT_EQ(ShortNumber(-4), "-4");
    EXPECT_EQ(ShortNumber(1e300), "1e+300");
}

Finding DriveAt(const std::string& slot, const std::string& serial) {
    Finding about;
    about.kind = PartKind::Drive;
    about.controller = "0";
    about.part = "PD" + slot;
    about.enclosure = "252";
    about.slot = slot;
    about.product = "TF6";
    about.serial = serial;
    return about;
}

history::State StateOf(TimePoint since, TimePoint seen, std::optional<Level> level,
                       const std::string& words = "") {
    return {since, seen, level, words, "controller 0, PD3 in enclosure 252 slot 3"};
}

history::Overview Parts() {
    Finding controller;
    controller.controller = "0";
    controller.product = "Gate";
    return {kNow,
            {{"controller/0", controller, StateOf(kSince, kNow, Level::Ok)},
             {"drive/A", DriveAt("3", "A"), StateOf(kNow - hours(2), kNow, Level::Critical, "FAILED")},
             {"drive/B", DriveAt("4", "B"), StateOf(kNow - hours(1), kNow, std::nullopt)}}};
}

history::PartHistory Drive() {
    history::PartHistory part{Parts().parts.at(1), kSince, kNow};
    part.states = {StateOf(kSince, kNow - hours(3), Level::Ok, "ONLINE"), part.part.state};
    part.states.front().place = "controller 0, PD9 in enclosure 252 slot 9";
    part.series = {
        {"SMART Power-On Time", {Value(kSince, 20411)}},
        {"SMART Reallocated Sector Count, Raw Data", {Value(kSince, 0), Value(kNow - hours(9), 12)}},
        {"media errors", {Value(kSince, 0), Value(kNow - hours(2), 3)}},
        {"temperature", {Days(kSince, 1, 28, 40, 31), Value(kNow - hours(24), 33.5)}}};
    watch::Event event;
    event.id = "one";
    event.at = kNow - hours(2);
    event.kind = watch::EventKind::Began;
    event.level = Level::Critical;
    event.about = DriveAt("3", "A");
    event.words = "controller 0, PD3 in enclosure 252 slot 3: FAILED (TF6, serial number A)";
    event.advice = "Replace it.";
    part.events = {{7, event}};
    return part;
}

TEST(PartsTable, TellsStatesAndSinceWhen) {
    EXPECT_EQ(
        HistoryTable(Parts(), {}),
        "As of 2031-04-05 06:07:08 UTC: 3 parts, 1 of them in no report any more\n"
        "\n"
        "PART                                       STATE         SINCE (UTC)          MODEL  SERIAL NUMBER\n"
        "controller 0                               OK            2031-03-06 00:00:00  Gate\n"
        "controller 0, PD3 in enclosure 252 slot 3  FAILED        2031-04-05 04:07:08  TF6    A\n"
        "controller 0, PD4 in enclosure 252 slot 4  not reported  2031-04-05 05:07:08  TF6    B\n");
    EXPECT_EQ(HistoryTable(history::Overview(), {}), "As of no answer yet: 0 parts\n");
}

TEST(PartTable, TellsWhatHappenedToIt) {
    EXPECT_EQ(
        HistoryTable(Drive(), {}),
        "controller 0, PD3 in enclosure 252 slot 3 (TF6, serial number A)\n"
        "FAILED since 2031-04-05 04:07:08, as of 2031-04-05 06:07:08 UTC\n"
        "\n"
        "States since 2031-03-06 00:00:00 UTC\n"
        "  SINCE                UNTIL                STATE   PLACE\n"
        "  2031-03-06 00:00:00  2031-04-05 03:07:08  ONLINE  controller 0, PD9 in enclosure 252 slot 9\n"
        "  2031-04-05 04:07:08  now                  FAILED\n"
        "\n"
        "Counters since 2031-03-06 00:00:00 UTC\n"
        "  COUNTER                                   LAST  LOWEST  HIGHEST  LINE\n"
        "  media errors                                 3       0        3  ▁▁                           █\n"
        "  temperature                               33.5      28       40  █▁▁                          ▃\n"
        "  SMART Reallocated Sector Count, Raw Data    12       0       12  ▁▁                           █\n"
        "  1 other has not changed; --format json has it\n"
        "\n"
        "Events since 2031-03-06 00:00:00 UTC\n"
        "TIME (UTC)           LEVEL     EVENT           WHAT\n"
        "2031-04-05 04:07:08  CRITICAL  began           controller 0, PD3 in enclosure 252 slot 3: FAILED "
        "(TF6, serial number A)\n");
}

TEST(PartTable, SaysWhereNothingIsKnown) {
    history::PartHistory part{Parts().parts.at(0), kSince};
    EXPECT_EQ(HistoryTable(part, {}),
              "controller 0 (Gate)\n"
              "OK since 2031-03-06 00:00:00 UTC\n"
              "\n"
              "States since 2031-03-06 00:00:00 UTC\n"
              "  none is known\n"
              "\n"
              "Events since 2031-03-06 00:00:00 UTC\n"
              "  none\n");
}

TEST(HistoryTables, FitTheTerminal) {
    for (const std::size_t columns : {20U, 40U, 60U, 80U, 120U}) {
        for (const std::string& text : {HistoryTable(Parts(), {columns}), HistoryTable(Drive(), {columns})}) {
            std::istringstream lines(text);
            for (std::string line; std::getline(lines, line);) {
                EXPECT_LE(basics::WidthOf(line), std::max<std::size_t>(columns, 40))
                    << columns << ": " << line;
            }
        }
    }
}

TEST(EventLines, BreakAtTheirWords) {
    watch::Event event = Drive().events.front().event;
    EXPECT_EQ(EventLine(event, {40}),
              "2031-04-05 04:07:08  CRITICAL\n"
              "  began: controller 0, PD3 in enclosure\n"
              "  252 slot 3: FAILED (TF6, serial number\n"
              "  A)\n");
    EXPECT_EQ(EventLine(event, {80}),
              "2031-04-05 04:07:08  CRITICAL  began           controller 0, PD3 in enclosure\n"
              "                                               252 slot 3: FAILED (TF6, serial\n"
              "                                               number A)\n");
}

TEST(HistoryTables, AreColouredByLevels) {
    EXPECT_THAT(HistoryTable(Parts(), {0, true}), HasSubstr("\x1b[1;31mFAILED"));
    EXPECT_THAT(HistoryTable(Drive(), {0, true}), HasSubstr("\x1b[1;31mCRITICAL"));
    EXPECT_THAT(HistoryTable(Parts(), {}), Not(HasSubstr("\x1b")));
}

TEST(HistoryTables, ShowTextsThatSteerNoTerminal) {
    history::PartHistory part = Drive();
    part.part.about.serial = part.states.front().words = part.states.front().place =
        part.series.front().counter = part.events.front().event.words = "a\x1b[2J\nb\xFF";
    for (const std::string& text :
         {HistoryTable(part, {}), HistoryTable(history::Overview{kNow, {part.part}}, {})}) {
        EXPECT_EQ(text.find('\x1b'), std::string::npos);
        EXPECT_EQ(text.find('\xFF'), std::string::npos);
        EXPECT_EQ(text.find("\nb"), std::string::npos);
    }
}

/// What an independent validator says of a text; "" where it is content.
std::string Validate(const std::string& json) {
    const testsupport::TempFolder folder;
    folder.Write("json", json);
    return Ask("check_json.py", {VIEWS_TEST_HISTORY_SCHEMA, folder / "json"});
}

TEST(HistoryJson, IsAsItsSchemaSays) {
    EXPECT_EQ(Validate(HistoryJson(Parts(), "storage7")), "");
    EXPECT_EQ(Validate(HistoryJson(Drive(), "")), "");
    EXPECT_EQ(Validate(HistoryJson(history::Overview(), "")), "");
    history::PartHistory odd = Drive();
    odd.part.about.serial = odd.states.front().words = odd.events.front().event.words = "\xFF";
    odd.series.front().readings.front() = Value(kSince, 1e300);
    EXPECT_EQ(Validate(HistoryJson(odd, "\xFF")), "");
    EXPECT_THAT(Validate("{}"), HasSubstr("the schema refuses it"));
}

TEST(HistoryJson, TellsEverything) {
    const auto json = nlohmann::json::parse(HistoryJson(Drive(), "storage7"));
    EXPECT_EQ(json["host"], "storage7");
    EXPECT_EQ(json["since"], "2031-03-06T00:00:00Z");
    EXPECT_EQ(json["part"]["key"], "drive/A");
    EXPECT_EQ(json["part"]["part_kind"], "drive");
    EXPECT_EQ(json["part"]["present"]["level"], "CRITICAL");
    EXPECT_EQ(json["states"].size(), 2U);
    EXPECT_EQ(json["counters"].size(), 4U);
    EXPECT_EQ(
        json["counters"][3]["readings"][0].dump(),
        R"({"from":"2031-03-06T00:00:00Z","high":40,"last":31,"low":28,"until":"2031-03-06T23:59:59Z"})");
    EXPECT_EQ(json["counters"][3]["readings"][1]["last"], 33.5);
    EXPECT_EQ(json["events"][0]["id"], "one");
    EXPECT_EQ(nlohmann::json::parse(HistoryJson(Parts(), ""))["parts"][2]["present"]["level"], nullptr);
}

TEST(HistoryPages, AreWellFormedAndWhole) {
    const std::string parts = HistoryHtml(Parts(), "storage7");
    EXPECT_EQ(testsupport::EvaluateXPath(parts, "string(//*[local-name()='h1'])"), "RAID parts on storage7");
    EXPECT_EQ(testsupport::EvaluateXPath(parts, "count(//*[local-name()='tbody']/*)"), "3");
    EXPECT_EQ(testsupport::EvaluateXPath(parts, "string(//*[local-name()='tr'][@class='critical']/*[1])"),
              "controller 0, PD3 in enclosure 252 slot 3");
    const std::string drive = HistoryHtml(Drive(), "");
    EXPECT_EQ(testsupport::EvaluateXPath(drive, "count(//*[local-name()='svg'])"), "3");
    EXPECT_THAT(drive, HasSubstr("aria-label=\"28 to 40\""));
    EXPECT_THAT(drive, HasSubstr("Replace it."));
    EXPECT_THAT(drive, Not(HasSubstr("<script")));
    EXPECT_THAT(testsupport::MatchesIn(parts + drive, "(src|href)=\"[^#]"), testing::IsEmpty());
}

/// Parts of paths that lead out of the picture.
std::vector<std::string> PointsOutside(const std::string& page) {
    std::vector<std::string> outside;
    for (const testsupport::Match& point : testsupport::MatchesIn(page, "[ML]([0-9.-]+),([0-9.-]+)")) {
        const double across = std::stod(point.at(1));
        const double down = std::stod(point.at(2));
        if (across < 0 || across > 120 || down < 0 || down > 24) {
            outside.push_back(point.front());
        }
    }
    return outside;
}

TEST(HistoryPages, DrawLinesWithinTheirPictures) {
    history::PartHistory part = Drive();
    part.series.front().readings.clear();
    for (int hour = 0; hour < 30 * 24; ++hour) {
        part.series.front().readings.push_back(Value(kSince + hours(hour), std::sin(hour) * 1e9));
    }
    const std::string page = HistoryHtml(part, "");
    EXPECT_THAT(PointsOutside(page), testing::IsEmpty());
    EXPECT_GT(testsupport::MatchesIn(page, "L[0-9]+,[0-9]+").size(), 39U);
    EXPECT_EQ(testsupport::MatchesIn(page, "d=\"[^\"]*[^0-9MLh,\"][^\"]*\"").size(), 0U);
}

class APageWithItsHistory : public testing::Test {
  protected:
    APageWithItsHistory() {
        using namespace inventory::test;
        m_Snapshot.emplace(inventory::test::Read(
            ControllerItem("0") +
            DriveItem("PD3", "NO ERROR", "HOT SPARE", Key("Serial Number", "A") + Key("Temperature", "31 C"),
                      "-", "GHS") +
            DriveItem("PD4", "NO ERROR", "HOT SPARE", Key("Serial Number", "B"), "-", "GHS")));
        m_History.since = kNow - hours(24 * 30);
        m_History.until = kNow;
        m_History.drives["drive/A"] = {{Value(kNow - hours(24 * 3), 28), Value(kNow - hours(50), 40)},
                                       {Value(kNow - hours(20), 0), Value(kNow - hours(2), 3)},
                                       {Value(kNow - hours(20), 4)}};
        m_History.events = Drive().events;
    }
    [[nodiscard]] std::string Find(const std::string& path) const {
        return testsupport::EvaluateXPath(Html(*m_Snapshot, &m_History), path);
    }

    std::optional<inventory::Snapshot> m_Snapshot;
    history::ServerHistory m_History;
};

TEST_F(APageWithItsHistory, ShowsALineOfEachDrive) {
    EXPECT_EQ(Find("string((//*[local-name()='table'][.//*[local-name()='th']='Drive']//"
                   "*[local-name()='th'][contains("
                   ".,'30 days')])[1])"),
              "Temperature in 30 days");
    EXPECT_EQ(Find("count(//*[local-name()='svg'])"), "2");
    EXPECT_EQ(Find("string((//*[local-name()='svg'])[1]/@aria-label)"), "28 to 40 °C");
    EXPECT_EQ(Find("string((//*[local-name()='svg'])[2]/@aria-label)"), "4 to 7");
}

TEST_F(APageWithItsHistory, ShowsWhatHappened) {
    EXPECT_EQ(Find("string(//*[local-name()='h2'][contains(.,'happened')])"), "What happened in 30 days");
    EXPECT_EQ(Find("string(//*[local-name()='a'][contains(.,'serial number A')]/@href)"), "#d0-0");
}

TEST_F(APageWithItsHistory, IsAsItWasWithoutOne) {
    const std::string page = Html(*m_Snapshot);
    EXPECT_THAT(page, Not(HasSubstr("<svg")));
    EXPECT_THAT(page, Not(HasSubstr("30 days")));
    EXPECT_THAT(page, Not(HasSubstr("happened")));
}

TEST_F(APageWithItsHistory, SaysThatNothingHappened) {
    m_History.events.clear();
    m_History.drives.clear();
    EXPECT_EQ(Find("count(//*[local-name()='svg'])"), "0");
    EXPECT_EQ(Find("count(//*[local-name()='p'][.='Nothing that is known.'])"), "1");
}

TEST_F(APageWithItsHistory, ClosesWhatIsManyEvents) {
    for (int number = 0; number < 50; ++number) {
        m_History.events.push_back(m_History.events.front());
        m_History.events.back().event.words = "event " + std::to_string(number);
    }
    EXPECT_EQ(Find("count(//*[local-name()='ul'][@class='findings']/*)"), "51");
    EXPECT_EQ(Find("count(//*[local-name()='details']//*[local-name()='ul'][@class='findings']/*)"), "31");
    EXPECT_EQ(Find("string(((//*[local-name()='ul'][@class='findings'])[1]/*)[1])").find("event 49") !=
                  std::string::npos,
              true);
}

}  // namespace
}  // namespace views::test::remembered
