#include "inventory/Measure.h"

#include <gtest/gtest.h>

namespace inventory::test {
namespace {

struct Reading {
    const char* text;
    double number;
    const char* unit;
};

TEST(Measure, IsADecimalNumberWithAUnit) {
    constexpr Reading kReadings[] = {{"0", 0, ""},
                                     {"20411 Hours", 20411, "Hours"},
                                     {" -3.5  C ", -3.5, "C"},
                                     {"000000020411", 20411, ""},
                                     {"30%", 30, "%"},
                                     {"30 %", 30, "%"},
                                     {"291.930", 291.93, ""}};
    for (const Reading& reading : kReadings) {
        const std::optional<Measure> measure = MeasureFrom(reading.text);
        ASSERT_TRUE(measure) << reading.text;
        EXPECT_EQ(measure->number, reading.number) << reading.text;
        EXPECT_EQ(measure->unit, reading.unit) << reading.text;
    }
}

TEST(Measure, IsNothingForOtherTexts) {
    for (const char* const text : {"", " ", "-", "- 3", "000B", "0x1F", "1e3", "5/10", "1,234", "N/A", "nan",
                                   "inf", "-inf", "OK", "1.2.3", "3 of 4", "31 (Min 20)", "\xC2\xB0"}) {
        EXPECT_FALSE(MeasureFrom(text)) << text;
    }
}

TEST(Measure, IsNoPatternOfBits) {
    EXPECT_EQ(MeasureFrom("0032", "Value")->number, 32);
    EXPECT_FALSE(MeasureFrom("0032", "Flag"));
    EXPECT_FALSE(MeasureFrom("0032", "FLAG"));
}

TEST(Temperature, IsReadInCelsius) {
    for (const char* const text : {"31", "31 C", "31C", "31.0 C", "31 degrees C",
                                   "31 \xC2\xB0"
                                   "C",
                                   "31 Celsius", "31C (87.80 F)"}) {
        EXPECT_EQ(CelsiusFrom(text), 31.0) << text;
    }
    EXPECT_EQ(CelsiusFrom("-5 C"), -5.0);
}

TEST(Temperature, FahrenheitIsConverted) {
    EXPECT_EQ(CelsiusFrom("212 F"), 100.0);
    EXPECT_EQ(CelsiusFrom("88 F"), 31.11);
    EXPECT_EQ(CelsiusFrom("32 degrees Fahrenheit"), 0.0);
}

TEST(Temperature, IsNothingWithoutANumberOrInAnotherUnit) {
    for (const char* const text : {"", "N/A", "C", "nan C", "31 Cats", "31 Floors", "300 K", "hot"}) {
        EXPECT_FALSE(CelsiusFrom(text)) << text;
    }
}

}  // namespace
}  // namespace inventory::test
