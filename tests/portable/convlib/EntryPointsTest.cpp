#include "convlib/EntryPoints.h"

#include "CountedNew.h"
#include "Items.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

namespace {

TEST(EntryPointsTest, AnItemHoldsCopiesOfWhatItWasMadeFrom) {
    std::string parentName = "### General Information ###";
    std::string name = "Controller No.";
    std::string value = "0";
    CItemDisp* const item = CreateItemDisp(parentName.c_str(), name.c_str(), value.c_str(), "TRUE");
    ASSERT_NE(item, nullptr);
    parentName.assign(parentName.size(), '?');
    name.assign(name.size(), '?');
    value.assign(value.size(), '?');
    EXPECT_EQ(item->m_ParentName, "### General Information ###");
    EXPECT_EQ(item->m_Name, "Controller No.");
    EXPECT_EQ(item->m_Value, "0");
    DeleteItemDisp(item);
}

TEST(EntryPointsTest, AnItemBeginsWithItsThreeTextsInOrder) {
    static_assert(!std::is_polymorphic_v<CItemDisp>);
    CItemDisp* const item = CreateItemDisp("parent", "name", "value", "FALSE");
    ASSERT_NE(item, nullptr);
    const auto* const texts = reinterpret_cast<const std::string*>(item);
    EXPECT_EQ(texts + 0, &item->m_ParentName);
    EXPECT_EQ(texts + 1, &item->m_Name);
    EXPECT_EQ(texts + 2, &item->m_Value);
    DeleteItemDisp(item);
}

TEST(EntryPointsTest, AValidFlagOtherThanTrueOrFalseMakesNoItem) {
    for (const char* flag : {"", "true", "False", "TRUE ", " TRUE", "TRUEX", "TRU", "0", "1"}) {
        EXPECT_EQ(CreateItemDisp("", "name", "", flag), nullptr) << flag;
    }
}

TEST(EntryPointsTest, ANullTextMakesNoItem) {
    EXPECT_EQ(CreateItemDisp(nullptr, "", "", "TRUE"), nullptr);
    EXPECT_EQ(CreateItemDisp("", nullptr, "", "TRUE"), nullptr);
    EXPECT_EQ(CreateItemDisp("", "", nullptr, "TRUE"), nullptr);
    EXPECT_EQ(CreateItemDisp("", "", "", nullptr), nullptr);
}

TEST(EntryPointsTest, DeletingNothingIsPassedOver) {
    DeleteItemDisp(nullptr);
    DeleteLibIF(nullptr);
}

TEST(EntryPointsTest, NullArgumentsFailTheConversionAndLeaveTheTextPointerAlone) {
    const LibIFPointer libIF = MakeLibIF();
    const char* const before = "as it was";
    const char* xml = before;
    Items items;
    EXPECT_NE(libIF->ConvertToXml(0, nullptr, &items.List(), &xml), 0U);
    EXPECT_NE(libIF->ConvertToXml(0, "RAID", nullptr, &xml), 0U);
    EXPECT_NE(libIF->ConvertToXml(0, "RAID", &items.List(), nullptr), 0U);
    EXPECT_EQ(xml, before);
}

TEST(EntryPointsTest, AKindThatIsNoElementNameFailsTheConversion) {
    const LibIFPointer libIF = MakeLibIF();
    const char* const before = "as it was";
    const char* xml = before;
    Items items;
    for (const char* kind : {"", "1", "a b", "a:b", "<", "RAID\n", "caf\xE9"}) {
        EXPECT_EQ(libIF->ConvertToXml(0, kind, &items.List(), &xml), 0x80000001U) << kind;
    }
    EXPECT_EQ(xml, before);
}

TEST(EntryPointsTest, AnOptionOtherThanZeroFailsTheConversion) {
    const LibIFPointer libIF = MakeLibIF();
    const char* xml = nullptr;
    Items items;
    for (const int option : {1, -1, 256}) {
        EXPECT_EQ(libIF->ConvertToXml(option, "RAID", &items.List(), &xml), 0x80000001U);
    }
    EXPECT_EQ(xml, nullptr);
}

TEST(EntryPointsTest, ShortMemoryMakesNoInterfaceObject) {
    const countednew::Watch watch(0);
    EXPECT_EQ(CreateLibIF(), nullptr);
}

TEST(EntryPointsTest, ShortMemoryMakesNoItemAtWhicheverAllocationItStrikes) {
    const std::string longText(100, 'x');
    for (std::size_t failAt = 0; failAt < 4; ++failAt) {
        const countednew::Watch watch(failAt);
        EXPECT_EQ(CreateItemDisp(longText.c_str(), longText.c_str(), longText.c_str(), "TRUE"), nullptr);
        EXPECT_EQ(watch.Allocations(), failAt + 1);
    }
    const countednew::Watch watch(4);
    CItemDisp* const item = CreateItemDisp(longText.c_str(), longText.c_str(), longText.c_str(), "TRUE");
    EXPECT_NE(item, nullptr);
    DeleteItemDisp(item);
}

TEST(EntryPointsTest, ShortMemoryFailsTheConversionAtWhicheverAllocationItStrikes) {
    Items items;
    items.Add("", "Controller Information");
    items.Add("Controller Information", "### General Information ###");
    for (int number = 0; number < 50; ++number) {
        items.Add("### General Information ###", "key " + std::to_string(number), "value");
    }
    const std::string whole = Convert(items);
    const LibIFPointer libIF = MakeLibIF();
    std::size_t failAt = 0;
    for (;; ++failAt) {
        const char* const before = "as it was";
        const char* xml = before;
        std::uint32_t status = 0;
        std::size_t allocations = 0;
        {
            const countednew::Watch watch(failAt);
            status = libIF->ConvertToXml(0, "RAID", &items.List(), &xml);
            allocations = watch.Allocations();
        }
        if (allocations <= failAt) {
            EXPECT_EQ(status, 0U);
            EXPECT_EQ(xml, whole);
            break;
        }
        ASSERT_EQ(status, 0x80000002U) << failAt;
        ASSERT_EQ(xml, before) << failAt;
    }
    EXPECT_GT(failAt, 3U);
}

}  // namespace
