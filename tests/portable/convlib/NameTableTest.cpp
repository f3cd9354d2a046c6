#include "NameTable.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace convlib {
namespace {

NameTable::Number NumberOf(NameTable& table, std::string_view name) {
    return table.NumberOf(name, HashOf(name));
}

NameTable::Number Find(const NameTable& table, std::string_view name) {
    return table.Find(name, HashOf(name));
}

// So many names that some of them have the same 32 bits of hash.
TEST(NameTable, FindsEveryNameHoweverManyThereAre) {
    std::vector<std::string> names;
    for (std::size_t number = 0; number < 300'000; ++number) {
        names.push_back("Capacity " + std::to_string(number));
    }
    NameTable table;
    for (NameTable::Number number = 0; number < names.size(); ++number) {
        ASSERT_EQ(Find(table, names[number]), NameTable::kNone);
        ASSERT_EQ(NumberOf(table, names[number]), number);
    }
    EXPECT_EQ(table.Size(), names.size());
    for (NameTable::Number number = 0; number < names.size(); ++number) {
        ASSERT_EQ(Find(table, names[number]), number);
    }
    EXPECT_EQ(Find(table, "Capacity"), NameTable::kNone);
}

TEST(NameTable, ANameKeepsItsNumber) {
    NameTable table;
    EXPECT_EQ(NumberOf(table, "Capacity"), 0U);
    EXPECT_EQ(NumberOf(table, ""), 1U);
    EXPECT_EQ(NumberOf(table, "Capacity"), 0U);
    EXPECT_EQ(NumberOf(table, ""), 1U);
    EXPECT_EQ(table.Size(), 2U);
}

TEST(NameFilter, KnowsEveryNameAddedAndFewOthers) {
    for (const std::size_t count :
         {std::size_t{0}, std::size_t{1}, std::size_t{1000}, std::size_t{100'000}}) {
        NameFilter filter(count);
        for (std::size_t number = 0; number < count; ++number) {
            filter.Add(HashOf("Capacity " + std::to_string(number)));
        }
        std::size_t mistaken = 0;
        for (std::size_t number = 0; number < count; ++number) {
            ASSERT_TRUE(filter.MayHold(HashOf("Capacity " + std::to_string(number))));
            mistaken += filter.MayHold(HashOf("Parent " + std::to_string(number))) ? 1U : 0U;
        }
        EXPECT_LE(mistaken, count / 14);
    }
}

}  // namespace
}  // namespace convlib
