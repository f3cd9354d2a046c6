#include "Options.h"

#include <gtest/gtest.h>

#include <optional>

namespace command::test {
namespace {

TEST(TraceLevels, AreAnyOfTheFourOrAll) {
    EXPECT_EQ(ParseTraceLevels("1"), 1U);
    EXPECT_EQ(ParseTraceLevels("8,1"), 9U);
    EXPECT_EQ(ParseTraceLevels("2,2"), 2U);
    EXPECT_EQ(ParseTraceLevels("all"), 15U);
    for (const char* const text :
         {"", ",", "1,", ",1", "3", "12", "1 ,2", "ALL", "all,1", "-1", "16", "1,,2"}) {
        EXPECT_EQ(ParseTraceLevels(text), std::nullopt) << text;
    }
}

TEST(DriveNumber, IsDigitsUpToTheLargestThatEveryLayerTakes) {
    for (const char* const text : {"0", "007", "252", "2147483647"}) {
        EXPECT_TRUE(IsDriveNumber(text)) << text;
    }
    for (const char* const text :
         {"", "-1", "+1", " 1", "1 ", "0x1", "1a", "1.0", "-0", "2147483648", "99999999999999999999"}) {
        EXPECT_FALSE(IsDriveNumber(text)) << text;
    }
}

}  // namespace
}  // namespace command::test
