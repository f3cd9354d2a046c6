#include "basics/NearestName.h"

#include <gtest/gtest.h>

namespace basics::test {
namespace {

TEST(NearestNameTest, IsWhatWasMeant) {
    const std::vector<std::string> names = {"faults/flaky", "small", "large", "health"};
    EXPECT_EQ(NearestName(names, "samll"), "small");
    EXPECT_EQ(NearestName(names, "helth"), "health");
    EXPECT_EQ(NearestName(names, "flaky"), "faults/flaky");
    EXPECT_EQ(NearestName(names, "faults/flakey"), "faults/flaky");
    EXPECT_EQ(NearestName(names, "x"), "");
    EXPECT_EQ(NearestName(names, "status"), "");
    EXPECT_EQ(NearestName({}, "small"), "");
}

}  // namespace
}  // namespace basics::test
