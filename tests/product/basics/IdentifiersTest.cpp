#include "basics/Identifiers.h"

#include <gtest/gtest.h>

#include <string>

namespace basics::test {
namespace {

TEST(IdentifiersTest, FillersStandForNothing) {
    for (const char* const value :
         {"", " ", "-", "---", "N/A", "n/a", "Unknown", " none ", "Not Available", "0000000000000000", "0x0",
          "0xFFFFFFFF", "ffff", "00:00:00:00", "To be filled by O.E.M."}) {
        EXPECT_TRUE(StandsForNothing(value)) << value;
    }
    for (const char* const value :
         {"7K00025200C4", "0x5000C500", "10", "7", "no", "Nothing7", "serial-0001", "Unknown2"}) {
        EXPECT_FALSE(StandsForNothing(value)) << value;
    }
}

TEST(IdentifiersTest, RedactedWordsAreKnown) {
    for (const char* const value : {"serial-0001", "serial-12345", "wwn-0012"}) {
        EXPECT_TRUE(IsRedacted(value)) << value;
    }
    for (const char* const value : {"", "serial", "serial-", "serial-001", "serial-00A1", "Serial-0001",
                                    "raid-0001", "xserial-0001", "serial-0001 "}) {
        EXPECT_FALSE(IsRedacted(value)) << value;
    }
}

}  // namespace
}  // namespace basics::test
