// What is to be seen of the page in a browser.

#include "Browser.h"
#include "Documents.h"
#include "views/Views.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace views::test {
namespace {

/// As bright as the eye takes it, from 0 to 255.
double GreyOf(const nlohmann::json& color) {
    return 0.299 * color[0].get<double>() + 0.587 * color[1].get<double>() + 0.114 * color[2].get<double>();
}

bool IsRed(const nlohmann::json& color) {
    constexpr double kMuch = 90;
    return color[0].get<double>() > color[1].get<double>() + kMuch &&
           color[0].get<double>() > color[2].get<double>() + kMuch;
}

class HtmlSight : public testing::TestWithParam<bool> {};

TEST_P(HtmlSight, FailedDrivesAreFoundByTheirLooks) {
    const std::string page = Html(SnapshotOf("large"));
    const Look look{.width = 800, .height = 1000, .isDark = GetParam()};
    const nlohmann::json slots = Probe(page, look)["slots"];
    ASSERT_EQ(slots.size(), 26U);
    nlohmann::json boxes;
    for (std::size_t index = 0; index < 15; ++index) {  // those of controller 0; they fit in the picture
        boxes.push_back(slots[index]["box"]);
    }
    const nlohmann::json colors = ColorsIn(page, look, boxes);
    ASSERT_EQ(colors.size(), boxes.size());

    // Drive 13 has taken data along; 10 and 12, which are in no use, are bad, too, and drive 0 is well.
    constexpr double kPlain = 60;  // a quarter of what there is between black and white
    std::vector<std::string> red;
    std::vector<std::string> striking;
    for (std::size_t index = 0; index < colors.size(); ++index) {
        if (IsRed(colors[index])) {
            red.push_back(slots[index]["id"]);
        }
        if (std::abs(GreyOf(colors[index]) - GreyOf(colors[0])) > kPlain) {
            striking.push_back(slots[index]["id"]);
        }
    }
    EXPECT_THAT(red, testing::ElementsAre("d0-13"));
    EXPECT_THAT(striking, testing::ElementsAre("d0-13"));
    EXPECT_EQ(slots[10]["drive"], "PD10");
}

TEST_P(HtmlSight, TextsKeepTheirContrast) {
    constexpr double kReadable = 4.5;
    for (const char* const scenario : {"large", "awkward", "small"}) {
        const nlohmann::json probe = Probe(Html(SnapshotOf(scenario)), {.isDark = GetParam()});
        EXPECT_GE(probe["least"]["contrast"], kReadable) << scenario << ": " << probe["least"];
    }
}

// What fades behind the edge is darker there, or lighter, than in the middle; what ends there is not.
TEST_P(HtmlSight, ATableThatGoesOnBehindTheEdgeHasAShadowThere) {
    constexpr double kSeen = 12;  // of 255
    for (const bool goesOn : {true, false}) {
        const std::string page = Html(goesOn ? SnapshotOf("large")
                                             : SnapshotFrom(ControllerXml() + DriveXml("1") + DriveXml("2")));
        const Look look{.width = 800, .height = 2200, .isDark = GetParam()};
        const nlohmann::json table = Probe(page, look)["tables"].at(0);
        const double x = table["box"][0];
        const double y = table["box"][1];
        const double right = x + table["box"][2].get<double>() - 1;  // less the border
        const double height = table["box"][3];
        const auto strip = [&](double from) { return nlohmann::json{from, y + 1, 2, height - 2}; };
        const nlohmann::json colors =
            ColorsIn(page, look, {strip(x + 1), strip(right - 2), strip(right - 40)});
        const double plain = GreyOf(colors[2]);
        EXPECT_LT(std::abs(GreyOf(colors[0]) - plain), kSeen) << "nothing is before it";
        EXPECT_EQ(table["goesOn"], goesOn);
        EXPECT_EQ(std::abs(GreyOf(colors[1]) - plain) > kSeen, goesOn);
    }
}

INSTANTIATE_TEST_SUITE_P(In, HtmlSight, testing::Bool(),
                         [](const auto& isDark) { return isDark.param ? "Dark" : "Light"; });

TEST(HtmlSightOfTables, ADriveCanBeOrderedByWhatIsSeenWithoutScrolling) {
    for (const char* const scenario : {"large", "small", "old", "well"}) {
        const nlohmann::json tables = Probe(Html(SnapshotOf(scenario)), {})["tables"];
        EXPECT_FALSE(tables.empty()) << scenario;
        for (const nlohmann::json& table : tables) {
            EXPECT_THAT(table["whole"].get<std::vector<std::string>>(),
                        testing::IsSupersetOf({"Drive", "State", "Slot", "Model", "Serial number", "Size"}))
                << scenario << ": " << table;
        }
    }
}

TEST(HtmlSightOfTargets, WhatCanBeClickedIsLargeEnoughForAFinger) {
    constexpr double kFinger = 24;
    std::string items = ControllerXml();
    for (int slot = 0; slot < 30; ++slot) {
        items += DriveXml(std::to_string(slot), {ItemXml("PD Status", "ERROR")});
    }
    const std::string drive = Html(SnapshotOf("large", {"0", "252", "0"}));
    for (const std::string& page : {Html(SnapshotOf("large")), drive, Html(SnapshotFrom(items))}) {
        const nlohmann::json targets = Probe(page, {.width = 390})["targets"];
        EXPECT_GE(targets.size(), 2U);
        for (const nlohmann::json& target : targets) {
            EXPECT_GE(target["height"], kFinger) << target;
            EXPECT_GE(target["width"], kFinger) << target;
        }
    }
}

// Also where a server has so many controllers that most of them are closed.
TEST(HtmlSightOfTargets, WhatAFindingLeadsToIsNotFoldedAway) {
    std::string items;
    for (int number = 0; number < 5; ++number) {
        items +=
            WellControllerXml(std::to_string(number)) +
            ParentXml("Logical Drive Information",
                      {ParentXml(
                          "### General Information ###",
                          {ItemXml("RG No.", "RG0"),
                           ParentXml("LD List", {ItemXml("LD No.", "LD0"), ItemXml("State", "OFFLINE")})})}) +
            DriveXml("1", {ItemXml("PD Status", "ERROR")});
    }
    const nlohmann::json probe = Probe(Html(SnapshotFrom(items)), {});
    std::size_t links = 0;
    for (const nlohmann::json& target : probe["targets"]) {
        if (target["href"].is_string()) {
            const std::string anchor = target["href"].get<std::string>().substr(1);
            EXPECT_THAT(probe["anchors"].get<std::vector<std::string>>(), testing::Contains(anchor));
            ++links;
        }
    }
    EXPECT_GE(links, 15U);
}

TEST(HtmlSightOnAPhone, NothingIsWiderThanTheScreen) {
    for (const char* const scenario : {"awkward", "empty", "large", "old", "small"}) {
        const nlohmann::json probe = Probe(Html(SnapshotOf(scenario)), {.width = 320, .height = 640});
        EXPECT_LE(probe["contentWidth"], 320) << scenario;
    }
    const nlohmann::json probe =
        Probe(Html(SnapshotFrom(DriveXml(
                  "1", {ItemXml("PD Status", std::string(400, 'w')), ItemXml("PD No.", std::string(400, 'x')),
                        ItemXml("Serial Number", std::string(400, 'y')),
                        ItemXml("Capacity", std::string(400, 'z'))}))),
              {.width = 320, .height = 640});
    EXPECT_LE(probe["contentWidth"], 320);
}

}  // namespace
}  // namespace views::test
