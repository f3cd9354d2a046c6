#include "CountedNew.h"
#include "Items.h"
#include "test_support/XmlLint.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <string_view>

#include <pthread.h>
#include <time.h>

namespace {

using testsupport::EvaluateXPath;
using testsupport::ValidateAgainstSchema;

std::size_t CountOf(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) {
        ++count;
    }
    return count;
}

/// A name of the same length for every number.
std::string NameOf(std::size_t number) {
    return std::to_string(1000000 + number);
}

void FillChain(Items& items, std::size_t count) {
    items.Add("", NameOf(0));
    for (std::size_t number = 1; number < count; ++number) {
        items.Add(NameOf(number - 1), NameOf(number));
    }
}

void FillOneName(Items& items, std::size_t count) {
    for (std::size_t number = 0; number < count; ++number) {
        items.Add("x", "x", "1");
    }
}

void FillOneParent(Items& items, std::size_t count) {
    items.Add("", NameOf(0));
    for (std::size_t number = 1; number < count; ++number) {
        items.Add(NameOf(0), NameOf(number));
    }
}

void FillNoParent(Items& items, std::size_t count) {
    for (std::size_t number = 0; number < count; ++number) {
        items.Add("nobody" + NameOf(number), NameOf(number));
    }
}

/// Runs the function on a thread whose stack has no room for a recursion over the items.
template <class Function>
void RunOnSmallStack(Function function) {
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, 256 * 1024), 0);
    pthread_t thread{};
    const auto run = [](void* argument) -> void* {
        (*static_cast<Function*>(argument))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, run, &function), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

TEST(XmlGrowthTest, AChainOfAHundredThousandLevelsNeedsNoDeepStack) {
    constexpr std::size_t kCount = 100000;
    Items items;
    FillChain(items, kCount);
    std::string xml;
    RunOnSmallStack([&items, &xml] { xml = Convert(items); });
    EXPECT_EQ(CountOf(xml, "<Item "), kCount);
    EXPECT_EQ(CountOf(xml, "</Item>"), kCount - 1);
    EXPECT_EQ(CountOf(xml, "Parent="), 0U);
    EXPECT_EQ(xml.find(std::string(65, ' ')), std::string::npos);
    EXPECT_EQ(ValidateAgainstSchema(xml), "");
}

TEST(XmlGrowthTest, EveryFurtherLevelOfAChainCostsTheSameText) {
    const auto sizeOf = [](std::size_t count) {
        Items items;
        FillChain(items, count);
        return Convert(items).size();
    };
    const std::size_t oneMore = sizeOf(1001) - sizeOf(1000);
    EXPECT_EQ(sizeOf(20000) - sizeOf(1000), 19000 * oneMore);
}

TEST(XmlGrowthTest, LinesAreIndentedByTwoBlanksALevelUpToTheThirtySecond) {
    Items items;
    FillChain(items, 40);
    const std::string xml = Convert(items);
    for (std::size_t number = 0; number < 40; ++number) {
        const std::size_t depth = number + 1;
        const std::string indent(2 * (depth < 32 ? depth : 32), ' ');
        EXPECT_NE(xml.find("\n" + indent + "<Item Name=\"" + NameOf(number)), std::string::npos) << depth;
    }
    EXPECT_EQ(CountOf(xml, "\n" + std::string(64, ' ') + "<Item"), 9U);
    EXPECT_EQ(CountOf(xml, "\n" + std::string(64, ' ') + "</Item>"), 8U);
    EXPECT_EQ(ValidateAgainstSchema(xml), "");
}

TEST(XmlGrowthTest, AChainDeeperThanParsersLikeIsValidStill) {
    Items items;
    FillChain(items, 3000);
    const std::string xml = Convert(items);
    EXPECT_EQ(ValidateAgainstSchema(xml), "");
    EXPECT_EQ(EvaluateXPath(xml, "count(//Item)"), "3000");
}

TEST(XmlGrowthTest, ManyItemsAllAlikeFormOneChain) {
    constexpr std::size_t kCount = 100000;
    Items items;
    FillOneName(items, kCount);
    std::string xml;
    RunOnSmallStack([&items, &xml] { xml = Convert(items); });
    EXPECT_EQ(CountOf(xml, "<Item "), kCount);
    EXPECT_EQ(CountOf(xml, "</Item>"), kCount - 1);
    EXPECT_EQ(CountOf(xml, "Parent="), 1U);
}

TEST(XmlGrowthTest, ManyItemsWithoutTheirParentsAllStandUnderTheDocument) {
    constexpr std::size_t kCount = 50000;
    Items items;
    FillNoParent(items, kCount);
    const std::string xml = Convert(items);
    EXPECT_EQ(ValidateAgainstSchema(xml), "");
    EXPECT_EQ(CountOf(xml, "\n  <Item "), kCount);
    EXPECT_EQ(CountOf(xml, " Parent=\"nobody"), kCount);
    EXPECT_EQ(CountOf(xml, "</Item>"), 0U);
}

TEST(XmlGrowthTest, ManyDrivesWithTheSameNamesKeepTheirOwnKeys) {
    constexpr std::size_t kDrives = 5000;
    Items items;
    for (std::size_t drive = 0; drive < kDrives; ++drive) {
        items.Add("", "Physical Drive Information");
        items.Add("Physical Drive Information", "### General Information ###");
        items.Add("### General Information ###", "PD No.", NameOf(drive));
        items.Add("Physical Drive Information", "### SMART Information ###");
        items.Add("### SMART Information ###", "Temperature", "", "FALSE");
    }
    const std::string xml = Convert(items);
    EXPECT_EQ(ValidateAgainstSchema(xml), "");
    EXPECT_EQ(EvaluateXPath(xml, "count(/RAID/Item[count(Item)=2 and count(Item/Item)=2])"), "5000");
    EXPECT_EQ(EvaluateXPath(xml, "string(/RAID/Item[4322]/Item[1]/Item[1]/@Value)"), NameOf(4321));
}

TEST(XmlGrowthTest, ChildrenOfAlternatingParentsKeepTheOrderOfTheList) {
    constexpr std::size_t kCount = 1000;
    Items items;
    items.Add("", "even");
    items.Add("", "odd");
    for (std::size_t number = 0; number < kCount; ++number) {
        items.Add(number % 2 == 0 ? "even" : "odd", "key", NameOf(number));
    }
    const std::string xml = Convert(items);
    std::size_t at = 0;
    for (const std::size_t first : {0U, 1U}) {
        for (std::size_t number = first; number < kCount; number += 2) {
            at = xml.find("Value=\"" + NameOf(number) + "\"", at);
            ASSERT_NE(at, std::string::npos) << number;
        }
    }
}

TEST(XmlGrowthTest, ConversionTakesFortyBytesAnItemAndEightyForItsText) {
    constexpr std::size_t kDrives = 5000;
    Items items;
    for (std::size_t drive = 0; drive < kDrives; ++drive) {
        items.Add("", "Physical Drive Information");
        items.Add("Physical Drive Information", "### General Information ###");
        items.Add("### General Information ###", "PD No.", NameOf(drive));
    }
    const LibIFPointer libIF = MakeLibIF();
    const char* xml = nullptr;
    std::size_t bytes = 0;
    std::size_t allocations = 0;
    {
        const countednew::Watch watch;
        ASSERT_EQ(libIF->ConvertToXml(0, "RAID", &items.List(), &xml), 0U);
        bytes = watch.Bytes();
        allocations = watch.Allocations();
    }
    EXPECT_GE(bytes, std::string_view(xml).size());
    EXPECT_LE(bytes, (40 + 80) * items.List().size() + 1000);
    EXPECT_LE(allocations, 10U);
}

/// Of the processor, for one conversion of `count` items: the least of some tries.
double SecondsOf(void (*fill)(Items& items, std::size_t count), std::size_t count) {
    Items items;
    fill(items, count);
    const auto now = [] {
        struct timespec time {};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
    };
    double least = std::numeric_limits<double>::max();
    for (int round = 0; round < 5; ++round) {
        const double start = now();
        EXPECT_FALSE(Convert(items).empty());
        least = std::min(least, now() - start);
    }
    return least;
}

// Linear is ten times and, where items leave the processor's caches, up to thirty; quadratic is a hundred.
TEST(XmlGrowthTest, TenTimesTheItemsTakeFarLessThanAHundredTimesTheTime) {
    constexpr std::size_t kFew = 4000;
    for (auto* const fill : {FillChain, FillOneName, FillOneParent, FillNoParent}) {
        // Where other work on the machine takes the caches, another try shows it.
        bool isFarLess = false;
        for (int tries = 0; tries < 5 && !isFarLess; ++tries) {
            isFarLess = SecondsOf(fill, 10 * kFew) < 50 * SecondsOf(fill, kFew);
        }
        EXPECT_TRUE(isFarLess);
    }
}

}  // namespace
