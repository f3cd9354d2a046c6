#include "MethodCall.h"

#include "itemconv/DisplayItems.h"
#include "test_support/ModuleTest.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// An output instance that answers every `Put` with the same status.
class FakeOutput final : public IWbemClassObject {
  public:
    explicit FakeOutput(HRESULT status) : m_Status(status) {}

    HRESULT Get(const char*, WbemValue*) const override { return m_Status; }
    HRESULT Put(const char*, const WbemValue&) override { return m_Status; }
    HRESULT GetNames(std::vector<std::string>*) const override { return m_Status; }
    HRESULT GetMethod(const char*, long, IWbemClassObject**, IWbemClassObject**) override { return m_Status; }
    HRESULT SpawnInstance(long, IWbemClassObject**) override { return m_Status; }
    DWORD AddRef() noexcept override { return 2; }
    DWORD Release() noexcept override { return 1; }

  private:
    HRESULT m_Status;
};

class MethodCallTest : public testsupport::ModuleTest {
  protected:
    void AddItem(ItemList& list) {
        ASSERT_TRUE(msraid::InsertItem(m_Library.Wrapper(), list, list.end(), "", "item", "",
                                       msraid::Validity::FromReport));
    }
};

TEST_F(MethodCallTest, ANewReasonStandsInFrontAndAReadersReasonReplacesAll) {
    MethodCall call(nullptr);
    EXPECT_EQ(call.FailAs("06", 1U), 1U);
    EXPECT_EQ(call.Fail("02", 2U), 2U);
    EXPECT_EQ(call.Reason(), "0206");
    EXPECT_EQ(call.FailAs("0401", 3U), 3U);
    EXPECT_EQ(call.Reason(), "0401");
}

TEST_F(MethodCallTest, OnlyANegativeStatusIsAFailureToStore) {
    FakeOutput partly(1);
    MethodCall call(nullptr);
    EXPECT_EQ(call.Store(&partly), 0U);
    EXPECT_EQ(call.Reason(), "");
    EXPECT_THAT(Failures(), IsEmpty());

    FakeOutput refusing(-1);
    EXPECT_EQ(call.Store(&refusing), 0x80000001U);
    EXPECT_EQ(call.Reason(), "08");
    EXPECT_THAT(Failures(),
                ElementsAre("setParameterClassArrayToIWbemClassObject XmlData is FAILED (hr=ffffffff)."));
}

TEST_F(MethodCallTest, WhatItStillHoldsInTheEndIsDeletedWithoutATrace) {
    {
        MethodCall call(m_Library.Wrapper());
        AddItem(call.m_Items);
        AddItem(call.m_Scratch);
        EXPECT_EQ(m_Library.ItemsAlive(), 2U);
        m_Trace.Clear();
    }
    EXPECT_EQ(m_Library.ItemsAlive(), 0U);
    EXPECT_THAT(m_Trace.Lines(), IsEmpty());
}

}  // namespace
