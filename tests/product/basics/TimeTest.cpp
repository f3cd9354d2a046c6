#include "basics/Time.h"

#include <gtest/gtest.h>

namespace basics::test {
namespace {

using std::chrono::sys_days;

constexpr auto kTime =
    sys_days(std::chrono::year(2031) / 4 / 5) + std::chrono::hours(18) + std::chrono::milliseconds(7999);

TEST(Time, IsToldToTheSecondInUtcWhateverTheTimeZone) {
    ASSERT_EQ(::setenv("TZ", "JST-9", 1), 0);
    ::tzset();
    EXPECT_EQ(UtcText(kTime), "2031-04-05T18:00:07Z");
    EXPECT_EQ(UtcText(kTime, "%d.%m. at %H:%M:%S"), "05.04. at 18:00:07");
    ASSERT_EQ(::unsetenv("TZ"), 0);
    ::tzset();
}

}  // namespace
}  // namespace basics::test
