#include "Redaction.h"

#include <gtest/gtest.h>

namespace capture::test {
namespace {

std::string Redacted(const std::string& text) {
    Redaction redaction;
    redaction.Collect(text);
    return redaction.Redact(text);
}

TEST(Redaction, ReplacesTheValuesOfKeysThatNameHardware) {
    EXPECT_EQ(Redacted(" Serial Number                : 7K00025200C4\n"),
              " Serial Number                : serial-0001\n");
    for (const char* const key : {"SERIAL NO.", "board serial", "Product SerialNumber"}) {
        EXPECT_EQ(Redacted(std::string(key) + ":GS81000442"), std::string(key) + ":serial-0001");
    }
    for (const char* const key : {"WWN", "World Wide Name", "world-wide id", "SAS Address 0", "LD GUID",
                                  "SAS Addr", "NAA", "Unique ID", "Enclosure Logical ID"}) {
        EXPECT_EQ(Redacted(std::string(key) + " : 5000c500a1b2c3d4"), std::string(key) + " : wwn-0001");
    }
}

TEST(Redaction, KnowsShortNamesOfSerialNumbers) {
    EXPECT_EQ(Redacted("Controller S/N : AB12"), "Controller S/N : serial-0001");
    EXPECT_EQ(Redacted("PD SN : AB12"), "PD SN : serial-0001");
    EXPECT_EQ(Redacted("Snapshot : AB12"), "Snapshot : AB12");
}

TEST(Redaction, LeavesOtherKeysAndPlaceholders) {
    for (const char* const line :
         {"Product ID : TF600S15", "Serial Number : -", "Serial Number : N/A",
          "Serial Number :", "Serial Number : 123", "Serial Number : Not Available", "WWN : 0000000000000000",
          "WWN : 0xFFFFFFFFFFFFFFFF", "Serial Number : \"\"", "Serial Number 7K00025200C4",
          "Serial Number : unknown", ""}) {
        EXPECT_EQ(Redacted(line), line);
    }
}

TEST(Redaction, TheSameValueIsTheSameWordEverywhere) {
    EXPECT_EQ(
        Redacted("Serial Number : AB12\nSerial Number : CD34\nSerial : AB12\nWWN : CD34\nWWN : 5000C500\n"
                 "drive AB12, (CD34)/ab12\n"),
        "Serial Number : serial-0001\nSerial Number : serial-0002\nSerial : serial-0001\nWWN : serial-0002\n"
        "WWN : wwn-0001\ndrive serial-0001, (serial-0002)/serial-0001\n");
}

TEST(Redaction, KeepsItsWordsFromTextToText) {
    Redaction redaction;
    redaction.Collect("Serial : AB12");
    redaction.Collect("Serial : CD34\nSerial : AB12");
    EXPECT_EQ(redaction.Count(), 2U);
    EXPECT_EQ(redaction.Redact("CD34 AB12"), "serial-0002 serial-0001");
}

TEST(Redaction, ReplacesWholeWordsOnly) {
    EXPECT_EQ(Redacted("Serial : AB12\nxAB12 AB123 AB12x 1AB12 AB12-3 _AB12."),
              "Serial : serial-0001\nxAB12 AB123 AB12x 1AB12 serial-0001-3 _serial-0001.");
}

TEST(Redaction, LongerValueGoesBeforeOneThatItBeginsWith) {
    EXPECT_EQ(Redacted("Serial : AB12\nSerial : AB12-CD\nAB12-CD AB12-CE"),
              "Serial : serial-0001\nSerial : serial-0002\nserial-0002 serial-0001-CE");
}

TEST(Redaction, ValueOfSeveralWordsIsReplacedAsAWholeAndByItsParts) {
    EXPECT_EQ(Redacted("SAS Address : 5000c500a1, 5000c500a2\n5000C500A2\n"),
              "SAS Address : wwn-0001\nwwn-0003\n");
    EXPECT_EQ(Redacted("Serial : see label 4711A\nlabel 4711A"), "Serial : serial-0001\nlabel serial-0002");
}

TEST(Redaction, LeavesAllOtherBytesAlone) {
    std::string bytes;
    for (int round = 0; round < 3; ++round) {
        for (int byte = 0; byte < 256; ++byte) {
            bytes += static_cast<char>(byte);
        }
    }
    EXPECT_EQ(Redacted(bytes), bytes);
    EXPECT_EQ(Redacted("Serial\t:\tAB12\t\r\n" + bytes), "Serial\t:\tserial-0001\t\r\n" + bytes);
}

}  // namespace
}  // namespace capture::test
