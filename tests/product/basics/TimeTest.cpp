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

TEST(Time, IsReadAsItIsWritten) {
    for (const char* const text :
         {"2031-04-05T06:07:08Z", "1970-01-01T00:00:00Z", "2032-02-29T23:59:59Z", "2261-12-31T23:59:59Z"}) {
        const auto time = TimeFromUtcText(text);
        ASSERT_TRUE(time) << text;
        EXPECT_EQ(UtcText(*time), text);
    }
    for (const char* const other :
         {"", "2031-04-05", "2031-04-05T06:07:08", "2031-04-05 06:07:08Z", "2031-02-29T00:00:00Z",
          "2031-04-05T24:00:00Z", "2031-04-05T06:60:08Z", "2031-04-05T06:07:60Z", "+031-04-05T06:07:08Z",
          "9999-01-01T00:00:00Z", "1969-12-31T23:59:59Z", "2031-04-05T06:07:08ZZ"}) {
        EXPECT_FALSE(TimeFromUtcText(other)) << other;
    }
}

}  // namespace
}  // namespace basics::test
