#include "convlib/NameTable.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace convlib {
namespace {

// So many names that some of them have the same 32 bits of hash.
TEST(NameTable, FindsEveryNameHoweverManyThereAre) {
    std::vector<std::string> names;
    for (std::size_t number = 0; number < 300'000; ++number) {
        names.push_back("Capacity " + std::to_string(number));
    }
    NameTable table;
    for (NameTable::Number number = 0; number < names.size(); ++number) {
        ASSERT_EQ(table.Find(names[number]), NameTable::kNone);
        ASSERT_EQ(table.NumberOf(names[number]), number);
    }
    EXPECT_EQ(table.Size(), names.size());
    for (NameTable::Number number = 0; number < names.size(); ++number) {
        ASSERT_EQ(table.Find(names[number]), number);
    }
    EXPECT_EQ(table.Find("Capacity"), NameTable::kNone);
}

TEST(NameTable, ANameKeepsItsNumber) {
    NameTable table;
    EXPECT_EQ(table.NumberOf("Capacity"), 0U);
    EXPECT_EQ(table.NumberOf(""), 1U);
    EXPECT_EQ(table.NumberOf("Capacity"), 0U);
    EXPECT_EQ(table.NumberOf(""), 1U);
    EXPECT_EQ(table.Size(), 2U);
}

}  // namespace
}  // namespace convlib
