#include "test_support/FakeLibrary.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <set>
#include <utility>

namespace testsupport {
namespace {

constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();

struct FakeItem final : CItemDisp {
    FakeItem(const char* parentName, const char* name, const char* value, const char* validFlag)
        : CItemDisp(parentName, name, value), flag(validFlag) {}
    std::string flag;
};

struct State {
    std::set<const CItemDisp*> alive;
    std::size_t deleted = 0;
    std::size_t interfaces = 0;
    std::size_t creationsLeft = kNever;
    std::uint32_t conversionStatus = 0;
    bool hasText = true;
    bool refusesInterface = false;
    std::function<void()> onCreate = [] {};
    std::vector<std::string> lastConversion;
};
State g_state;

struct FakeInterface final : QelLibIF {
    std::uint32_t ConvertToXml(int option, const char* kind, ItemList* items, const char** xml) override {
        EXPECT_EQ(option, 0);
        EXPECT_STREQ(kind, "RAID");
        g_state.lastConversion = FakeLibrary::Describe(*items);
        if (g_state.conversionStatus == 0 && g_state.hasText) {
            text = "<fake items=\"" + std::to_string(items->size()) + "\"/>";
            *xml = text.c_str();
        }
        return g_state.conversionStatus;
    }
    std::string text;
};

}  // namespace
}  // namespace testsupport

using testsupport::g_state;

// Exported, so that a library file in the module's place for it can forward to them.
extern "C" {

QelLibIF* TestCreateLibIF() {
    if (g_state.refusesInterface) {
        return nullptr;
    }
    ++g_state.interfaces;
    return new testsupport::FakeInterface;
}

void TestDeleteLibIF(QelLibIF* converter) {
    --g_state.interfaces;
    delete converter;
}

CItemDisp* TestCreateItemDisp(const char* parentName, const char* name, const char* value,
                              const char* validFlag) {
    g_state.onCreate();
    if (g_state.creationsLeft == 0) {
        return nullptr;
    }
    g_state.creationsLeft -= g_state.creationsLeft == testsupport::kNever ? 0 : 1;
    auto item = std::make_unique<testsupport::FakeItem>(parentName, name, value, validFlag);
    g_state.alive.insert(item.get());
    return item.release();
}

void TestDeleteItemDisp(CItemDisp* item) {
    if (g_state.alive.erase(item) == 0) {
        ADD_FAILURE() << "an item was deleted twice, or is not of this library";
        return;
    }
    ++g_state.deleted;
    delete static_cast<testsupport::FakeItem*>(item);
}
}

namespace testsupport {

FakeLibrary::FakeLibrary() {
    g_state = State();
    m_Wrapper.CreateLibIF = TestCreateLibIF;
    m_Wrapper.DeleteLibIF = TestDeleteLibIF;
    m_Wrapper.CreateItemDisp = TestCreateItemDisp;
    m_Wrapper.DeleteItemDisp = TestDeleteItemDisp;
}

FakeLibrary::~FakeLibrary() {
    EXPECT_EQ(g_state.alive.size(), 0U) << "items were left behind";
    EXPECT_EQ(g_state.interfaces, 0U) << "interface objects were left behind";
}

void FakeLibrary::FailCreationsFrom(std::size_t creation) {
    g_state.creationsLeft = creation - 1;
}

void FakeLibrary::OnCreate(std::function<void()> hook) {
    g_state.onCreate = std::move(hook);
}

void FakeLibrary::SetConversion(std::uint32_t status, bool hasText) {
    g_state.conversionStatus = status;
    g_state.hasText = hasText;
}

void FakeLibrary::RefuseInterface() {
    g_state.refusesInterface = true;
}

std::size_t FakeLibrary::ItemsAlive() {
    return g_state.alive.size();
}
std::size_t FakeLibrary::ItemsDeleted() {
    return g_state.deleted;
}
std::size_t FakeLibrary::InterfacesAlive() {
    return g_state.interfaces;
}

std::vector<std::string> FakeLibrary::Describe(const ItemList& items) {
    std::vector<std::string> lines;
    for (const CItemDisp* const item : items) {
        lines.push_back(item->m_ParentName + "|" + item->m_Name + "|" + item->m_Value + "|" +
                        static_cast<const FakeItem*>(item)->flag);
    }
    return lines;
}

const std::vector<std::string>& FakeLibrary::LastConversion() {
    return g_state.lastConversion;
}

void FakeLibrary::Delete(ItemList& items) {
    for (CItemDisp* const item : items) {
        TestDeleteItemDisp(item);
    }
    items.clear();
}

}  // namespace testsupport
