#include "Support.h"

#include "qel/CIWbemUtil.h"
#include "qel/portable/CWbemRepository.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace {

using qel::test::Owned;
using qel::test::Result;

class WbemUtilTest : public testing::Test {
  protected:
    void SetUp() override {
        const Owned<CWbemRepository> repository(CWbemRepository::Create());
        repository->DeclareClass(
            {"SAMPLE_Drive",
             {{"Model", WbemType::String}, {"Slot", WbemType::Uint32}, {"ReturnValue", WbemType::Uint32}},
             {}});
        IWbemClassObject* definition = nullptr;
        ASSERT_EQ(repository->GetObject("SAMPLE_Drive", 0, nullptr, &definition, nullptr), 0);
        const Owned<IWbemClassObject> owned(definition);
        IWbemClassObject* instance = nullptr;
        ASSERT_EQ(definition->SpawnInstance(0, &instance), 0);
        m_Instance.reset(instance);
    }

    [[nodiscard]] WbemValue ValueOf(const char* name) const {
        WbemValue value;
        EXPECT_EQ(m_Instance->Get(name, &value), 0);
        return value;
    }

    Owned<IWbemClassObject> m_Instance;
};

// Another's object, which fails in a way of its own.
class BrokenObject final : public IWbemClassObject {
  public:
    DWORD AddRef() noexcept override { return 1; }
    DWORD Release() noexcept override { return 1; }
    HRESULT Get(const char*, WbemValue* value) const override {
        *value = std::string("not to be used");
        return Result(WBEM_E_FAILED);
    }
    HRESULT Put(const char*, const WbemValue&) override { return Result(WBEM_E_OUT_OF_MEMORY); }
    HRESULT GetNames(std::vector<std::string>*) const override { return Result(WBEM_E_FAILED); }
    HRESULT GetMethod(const char*, long, IWbemClassObject**, IWbemClassObject**) override {
        return Result(WBEM_E_FAILED);
    }
    HRESULT SpawnInstance(long, IWbemClassObject**) override { return Result(WBEM_E_FAILED); }
};

TEST_F(WbemUtilTest, AStringThatWasSetIsRead) {
    EXPECT_EQ(CIWbemUtil::setStringToIWbemClassObject(m_Instance.get(), "Model", "ZX-1"), 0);
    EXPECT_EQ(ValueOf("Model"), WbemValue(std::string("ZX-1")));
    std::string value;
    EXPECT_EQ(CIWbemUtil::getStringFromIWbemClassObject(m_Instance.get(), "Model", &value), 0);
    EXPECT_EQ(value, "ZX-1");
    const std::string withNul("a\0b", 3);
    EXPECT_EQ(CIWbemUtil::setStringToIWbemClassObject(m_Instance.get(), "Model", withNul), 0);
    EXPECT_EQ(CIWbemUtil::getStringFromIWbemClassObject(m_Instance.get(), "Model", &value), 0);
    EXPECT_EQ(value, withNul);
}

TEST_F(WbemUtilTest, AFailedReadLeavesTheValueAlone) {
    ASSERT_EQ(m_Instance->Put("Slot", std::uint32_t{3}), 0);
    std::string value = "untouched";
    const auto read = [this, &value](const char* name) {
        return CIWbemUtil::getStringFromIWbemClassObject(m_Instance.get(), name, &value);
    };
    EXPECT_EQ(read("Model"), Result(WBEM_E_NOT_FOUND)) << "not set";
    EXPECT_EQ(read("Unknown"), Result(WBEM_E_NOT_FOUND));
    EXPECT_EQ(read("Slot"), Result(WBEM_E_TYPE_MISMATCH));
    EXPECT_EQ(value, "untouched");
}

TEST_F(WbemUtilTest, AStringIsSetOnAStringPropertyOnly) {
    EXPECT_EQ(CIWbemUtil::setStringToIWbemClassObject(m_Instance.get(), "Slot", "3"),
              Result(WBEM_E_TYPE_MISMATCH));
    EXPECT_EQ(CIWbemUtil::setStringToIWbemClassObject(m_Instance.get(), "Unknown", "3"),
              Result(WBEM_E_NOT_FOUND));
    EXPECT_EQ(ValueOf("Slot"), WbemValue());
}

TEST_F(WbemUtilTest, AReturnValueIsUnsigned) {
    EXPECT_EQ(CIWbemUtil::setReturnValueToIWbemClassObject(m_Instance.get(), 0x80000002), 0);
    EXPECT_EQ(ValueOf("ReturnValue"), WbemValue(std::uint32_t{0x80000002}));
    EXPECT_EQ(ValueOf("Slot"), WbemValue());
}

TEST_F(WbemUtilTest, AnObjectWithoutAReturnValueIsRefused) {
    const Owned<CWbemRepository> repository(CWbemRepository::Create());
    repository->DeclareClass({"SAMPLE_Empty", {}, {}});
    IWbemClassObject* definition = nullptr;
    ASSERT_EQ(repository->GetObject("SAMPLE_Empty", 0, nullptr, &definition, nullptr), 0);
    const Owned<IWbemClassObject> owned(definition);
    IWbemClassObject* instance = nullptr;
    ASSERT_EQ(definition->SpawnInstance(0, &instance), 0);
    const Owned<IWbemClassObject> ownedInstance(instance);
    EXPECT_EQ(CIWbemUtil::setReturnValueToIWbemClassObject(instance, 0), Result(WBEM_E_NOT_FOUND));
}

TEST_F(WbemUtilTest, NullsAreInvalidParameters) {
    const HRESULT invalid = Result(WBEM_E_INVALID_PARAMETER);
    std::string value = "untouched";
    EXPECT_EQ(CIWbemUtil::getStringFromIWbemClassObject(nullptr, "Model", &value), invalid);
    EXPECT_EQ(CIWbemUtil::getStringFromIWbemClassObject(m_Instance.get(), nullptr, &value), invalid);
    EXPECT_EQ(CIWbemUtil::getStringFromIWbemClassObject(m_Instance.get(), "Model", nullptr), invalid);
    EXPECT_EQ(CIWbemUtil::setStringToIWbemClassObject(nullptr, "Model", "x"), invalid);
    EXPECT_EQ(CIWbemUtil::setStringToIWbemClassObject(m_Instance.get(), nullptr, "x"), invalid);
    EXPECT_EQ(CIWbemUtil::setReturnValueToIWbemClassObject(nullptr, 0), invalid);
    EXPECT_EQ(value, "untouched");
    EXPECT_EQ(ValueOf("Model"), WbemValue());
}

TEST_F(WbemUtilTest, AnObjectsOwnFailureIsPassedOn) {
    BrokenObject broken;
    std::string value = "untouched";
    EXPECT_EQ(CIWbemUtil::getStringFromIWbemClassObject(&broken, "Model", &value), Result(WBEM_E_FAILED));
    EXPECT_EQ(value, "untouched");
    EXPECT_EQ(CIWbemUtil::setStringToIWbemClassObject(&broken, "Model", "x"), Result(WBEM_E_OUT_OF_MEMORY));
    EXPECT_EQ(CIWbemUtil::setReturnValueToIWbemClassObject(&broken, 1), Result(WBEM_E_OUT_OF_MEMORY));
}

TEST(WbemStatusTest, EveryErrorIsANegativeResult) {
    for (const WbemStatus status :
         {WBEM_E_FAILED, WBEM_E_NOT_FOUND, WBEM_E_TYPE_MISMATCH, WBEM_E_OUT_OF_MEMORY,
          WBEM_E_INVALID_PARAMETER, WBEM_E_NOT_SUPPORTED, WBEM_E_INVALID_CLASS, WBEM_E_INVALID_METHOD}) {
        EXPECT_LT(Result(status), 0);
    }
    EXPECT_EQ(static_cast<DWORD>(WBEM_E_NOT_SUPPORTED), 0x8004100CU);
    EXPECT_EQ(static_cast<DWORD>(WBEM_E_FAILED), 0x80041001U);
}

}  // namespace
