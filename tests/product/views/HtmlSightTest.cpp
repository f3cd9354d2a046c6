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

INSTANTIATE_TEST_SUITE_P(In, HtmlSight, testing::Bool(),
                         [](const auto& isDark) { return isDark.param ? "Dark" : "Light"; });

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
