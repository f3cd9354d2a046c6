#include "basics/Duration.h"

#include <gtest/gtest.h>

#include <utility>

namespace basics::test {
namespace {

TEST(Duration, IsANumberWithAUnit) {
    const std::pair<const char*, int> kTexts[] = {{"0", 0},         {"50s", 50}, {"90m", 5400}, {"6h", 21600},
                                                  {"30d", 2592000}, {"0s", 0},   {"007m", 420}};
    for (const auto& [text, seconds] : kTexts) {
        ASSERT_TRUE(DurationFrom(text)) << text;
        EXPECT_EQ(DurationFrom(text)->count(), seconds) << text;
    }
}

TEST(Duration, IsNothingForOtherTexts) {
    for (const char* const text :
         {"", "5", "m", "5 m", "-5m", "+5m", "5M", "1.5h", "5m30s", "36526d", "4294967296s", "5m "}) {
        EXPECT_FALSE(DurationFrom(text)) << text;
    }
}

TEST(Duration, IsToldInTheLargestUnitThatFits) {
    for (const char* const text : {"0", "1s", "50s", "5m", "90m", "6h", "30d", "25h"}) {
        EXPECT_EQ(DurationText(*DurationFrom(text)), text);
    }
    EXPECT_EQ(DurationText(std::chrono::seconds(120)), "2m");
    EXPECT_EQ(DurationText(std::chrono::hours(48)), "2d");
}

}  // namespace
}  // namespace basics::test
