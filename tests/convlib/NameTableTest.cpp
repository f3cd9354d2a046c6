#include "convlib/NameTable.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace convlib {
namespace {

// The names of items 1, 2, 3, ...
std::vector<std::string> ManyNames(std::size_t count) {
    std::vector<std::string> names{"the document"};
    for (std::size_t number = 1; number <= count; ++number) {
        names.push_back("Capacity " + std::to_string(number));
    }
    return names;
}

// So many that some of them have the same 32 bits of hash.
TEST(NameTable, FindsEveryNameHoweverManyThereAre) {
    const std::vector<std::string> names = ManyNames(300'000);
    NameTable table([&names](std::uint32_t item) { return std::string_view(names[item]); });
    for (std::uint32_t item = 1; item < names.size(); ++item) {
        ASSERT_EQ(table.Find(names[item]), decltype(table)::kNone);
        table.Enter(item);
        ASSERT_EQ(table.Find(names[item]), item);
    }
    for (std::uint32_t item = 1; item < names.size(); ++item) {
        ASSERT_EQ(table.Find(names[item]), item);
    }
    EXPECT_EQ(table.Find("Capacity"), decltype(table)::kNone);
}

TEST(NameTable, TheLastItemOfANameIsFound) {
    const std::vector<std::string> names = {"", "Capacity", "", "Capacity", ""};
    NameTable table([&names](std::uint32_t item) { return std::string_view(names[item]); });
    for (std::uint32_t item = 1; item < names.size(); ++item) {
        table.Enter(item);
    }
    EXPECT_EQ(table.Find("Capacity"), 3U);
    EXPECT_EQ(table.Find(""), 4U);
}

}  // namespace
}  // namespace convlib
