#include "Support.h"

#include "qel/portable/CWbemRepository.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <limits>
#include <string>
#include <thread>
#include <vector>

namespace {

using qel::test::Owned;
using qel::test::Result;

using Names = std::vector<std::string>;

class WbemObjectTest : public testing::Test {
  protected:
    void SetUp() override {
        m_Repository->DeclareClass({"SAMPLE_Drive",
                                    {{"Present", WbemType::Boolean},
                                     {"Temperature", WbemType::Sint32},
                                     {"Slot", WbemType::Uint32},
                                     {"Model", WbemType::String}},
                                    {{"Locate",
                                      {{"Seconds", WbemType::Uint32}, {"Colour", WbemType::String}},
                                      {{"Done", WbemType::Boolean}}},
                                     {"Forget", {}, {}}}});
        IWbemClassObject* definition = nullptr;
        ASSERT_EQ(m_Repository->GetObject("SAMPLE_Drive", 0, nullptr, &definition, nullptr), 0);
        m_Class.reset(definition);
    }

    [[nodiscard]] Owned<IWbemClassObject> Spawn() const { return SpawnOf(*m_Class); }
    static Owned<IWbemClassObject> SpawnOf(IWbemClassObject& from) {
        IWbemClassObject* instance = nullptr;
        EXPECT_EQ(from.SpawnInstance(0, &instance), 0);
        return Owned<IWbemClassObject>(instance);
    }

    struct Signatures {
        Owned<IWbemClassObject> in;
        Owned<IWbemClassObject> out;
    };
    [[nodiscard]] Signatures SignaturesOf(const char* method) const {
        IWbemClassObject* in = nullptr;
        IWbemClassObject* out = nullptr;
        EXPECT_EQ(m_Class->GetMethod(method, 0, &in, &out), 0);
        return {Owned<IWbemClassObject>(in), Owned<IWbemClassObject>(out)};
    }

    static WbemValue ValueOf(const IWbemClassObject& object, const char* name) {
        WbemValue value = "(no such property)";
        EXPECT_EQ(object.Get(name, &value), 0) << name;
        return value;
    }
    static Names NamesOf(const IWbemClassObject& object) {
        Names names = {"left", "over"};
        EXPECT_EQ(object.GetNames(&names), 0);
        return names;
    }

    Owned<CWbemRepository> m_Repository{CWbemRepository::Create()};
    Owned<IWbemClassObject> m_Class;
};

TEST_F(WbemObjectTest, ANewInstanceHasNoPropertySet) {
    const auto instance = Spawn();
    EXPECT_EQ(NamesOf(*instance), (Names{"Present", "Temperature", "Slot", "Model"}));
    for (const char* const name : {"Present", "Temperature", "Slot", "Model", "__AppKey"}) {
        EXPECT_EQ(ValueOf(*instance, name), WbemValue()) << name;
    }
}

TEST_F(WbemObjectTest, APropertyTakesItsOwnTypeAndNoOther) {
    const struct {
        const char* name;
        WbemValue first;
        WbemValue second;
    } properties[] = {
        {"Present", true, false},
        {"Temperature", std::int32_t{-40}, std::numeric_limits<std::int32_t>::min()},
        {"Slot", std::uint32_t{7}, std::numeric_limits<std::uint32_t>::max()},
        {"Model", std::string("ZX-1"), std::string()},
        {"__AppKey", std::string("secret"), std::string("other")},
    };
    const WbemValue values[] = {true, std::int32_t{1}, std::uint32_t{1}, std::string("1")};
    const auto instance = Spawn();
    for (const auto& property : properties) {
        EXPECT_EQ(instance->Put(property.name, property.first), 0) << property.name;
        EXPECT_EQ(ValueOf(*instance, property.name), property.first) << property.name;
        EXPECT_EQ(instance->Put(property.name, property.second), 0) << property.name;
        for (const WbemValue& value : values) {
            if (value.index() != property.first.index()) {
                EXPECT_EQ(instance->Put(property.name, value), Result(WBEM_E_TYPE_MISMATCH))
                    << property.name << " takes alternative " << value.index();
            }
        }
        EXPECT_EQ(ValueOf(*instance, property.name), property.second) << "a refused value changes nothing";
    }
}

TEST_F(WbemObjectTest, NotSetSuitsEveryType) {
    const auto instance = Spawn();
    ASSERT_EQ(instance->Put("Present", true), 0);
    ASSERT_EQ(instance->Put("Temperature", std::int32_t{1}), 0);
    ASSERT_EQ(instance->Put("Slot", std::uint32_t{1}), 0);
    ASSERT_EQ(instance->Put("Model", std::string("ZX-1")), 0);
    for (const char* const name : {"Present", "Temperature", "Slot", "Model"}) {
        EXPECT_EQ(instance->Put(name, WbemValue()), 0) << name;
        EXPECT_EQ(ValueOf(*instance, name), WbemValue()) << name;
    }
}

TEST_F(WbemObjectTest, AnUnknownPropertyIsNotFound) {
    const auto instance = Spawn();
    WbemValue value = std::string("untouched");
    for (const char* const name : {"Unknown", "model", "Model ", ""}) {
        EXPECT_EQ(instance->Get(name, &value), Result(WBEM_E_NOT_FOUND)) << name;
        EXPECT_EQ(instance->Put(name, std::string("x")), Result(WBEM_E_NOT_FOUND)) << name;
    }
    EXPECT_EQ(instance->Get(nullptr, &value), Result(WBEM_E_NOT_FOUND));
    EXPECT_EQ(instance->Put(nullptr, std::string("x")), Result(WBEM_E_NOT_FOUND));
    EXPECT_EQ(value, WbemValue(std::string("untouched")));
}

TEST_F(WbemObjectTest, PropertiesDoNotShareTheirValues) {
    const auto first = Spawn();
    const auto second = Spawn();
    ASSERT_EQ(first->Put("Model", std::string("ZX-1")), 0);
    ASSERT_EQ(first->Put("Slot", std::uint32_t{3}), 0);
    EXPECT_EQ(ValueOf(*first, "Model"), WbemValue(std::string("ZX-1")));
    EXPECT_EQ(ValueOf(*first, "Slot"), WbemValue(std::uint32_t{3}));
    EXPECT_EQ(ValueOf(*second, "Model"), WbemValue());
}

TEST_F(WbemObjectTest, AnInstanceOfAnInstanceHasTheSamePropertiesNoneSet) {
    const auto first = Spawn();
    ASSERT_EQ(first->Put("Model", std::string("ZX-1")), 0);
    ASSERT_EQ(first->Put("__AppKey", std::string("secret")), 0);
    const auto second = SpawnOf(*first);
    EXPECT_EQ(NamesOf(*second), NamesOf(*first));
    EXPECT_EQ(ValueOf(*second, "Model"), WbemValue());
    EXPECT_EQ(ValueOf(*second, "__AppKey"), WbemValue());
    EXPECT_EQ(second->Put("Slot", std::string("3")), Result(WBEM_E_TYPE_MISMATCH));
}

TEST_F(WbemObjectTest, AClassHasNamesAndNoValues) {
    EXPECT_EQ(NamesOf(*m_Class), (Names{"Present", "Temperature", "Slot", "Model"}));
    WbemValue value;
    EXPECT_EQ(m_Class->Get("Model", &value), Result(WBEM_E_NOT_FOUND));
    EXPECT_LT(m_Class->Put("Model", std::string("ZX-1")), 0);
}

TEST_F(WbemObjectTest, ASignatureHasTheParametersAndTheOutputAReturnValueBesides) {
    const Signatures locate = SignaturesOf("Locate");
    EXPECT_EQ(NamesOf(*locate.in), (Names{"Seconds", "Colour"}));
    EXPECT_EQ(NamesOf(*locate.out), (Names{"Done", "ReturnValue"}));
    const Signatures forget = SignaturesOf("Forget");
    EXPECT_EQ(NamesOf(*forget.in), Names());
    EXPECT_EQ(NamesOf(*forget.out), Names{"ReturnValue"});
}

TEST_F(WbemObjectTest, ParametersAreTypedByTheirDeclaration) {
    const Signatures locate = SignaturesOf("Locate");
    const auto in = SpawnOf(*locate.in);
    EXPECT_EQ(in->Put("Seconds", std::uint32_t{5}), 0);
    EXPECT_EQ(in->Put("Seconds", std::int32_t{5}), Result(WBEM_E_TYPE_MISMATCH));
    EXPECT_EQ(in->Put("Colour", std::string("red")), 0);
    EXPECT_EQ(in->Put("__AppKey", std::string("secret")), 0);
    const auto out = SpawnOf(*locate.out);
    EXPECT_EQ(out->Put("Done", true), 0);
    EXPECT_EQ(out->Put("ReturnValue", std::uint32_t{0x80000001}), 0);
    EXPECT_EQ(out->Put("ReturnValue", std::int32_t{1}), Result(WBEM_E_TYPE_MISMATCH));
    EXPECT_EQ(out->Put("Seconds", std::uint32_t{5}), Result(WBEM_E_NOT_FOUND));
}

TEST_F(WbemObjectTest, APlaceThatIsNullIsNotWanted) {
    IWbemClassObject* wanted = nullptr;
    ASSERT_EQ(m_Class->GetMethod("Locate", 0, nullptr, &wanted), 0);
    Owned<IWbemClassObject> out(wanted);
    EXPECT_EQ(NamesOf(*out), (Names{"Done", "ReturnValue"}));
    ASSERT_EQ(m_Class->GetMethod("Locate", 0, &wanted, nullptr), 0);
    const Owned<IWbemClassObject> in(wanted);
    EXPECT_EQ(NamesOf(*in), (Names{"Seconds", "Colour"}));
    EXPECT_EQ(m_Class->GetMethod("Locate", 0, nullptr, nullptr), 0);
}

TEST_F(WbemObjectTest, AMethodThatTheClassLacksLeavesThePlacesAlone) {
    const auto mark = Spawn();
    for (const char* const name : {"Unknown", "locate", "", static_cast<const char*>(nullptr)}) {
        IWbemClassObject* in = mark.get();
        IWbemClassObject* out = mark.get();
        EXPECT_EQ(m_Class->GetMethod(name, 0, &in, &out), Result(WBEM_E_INVALID_METHOD));
        EXPECT_EQ(in, mark.get());
        EXPECT_EQ(out, mark.get());
    }
}

TEST_F(WbemObjectTest, InstancesHaveNoMethods) {
    IWbemClassObject* out = nullptr;
    EXPECT_EQ(Spawn()->GetMethod("Locate", 0, nullptr, &out), Result(WBEM_E_INVALID_METHOD));
    EXPECT_EQ(out, nullptr);
}

TEST_F(WbemObjectTest, NoPlaceForAResultIsAnInvalidParameter) {
    const auto instance = Spawn();
    EXPECT_EQ(instance->Get("Model", nullptr), Result(WBEM_E_INVALID_PARAMETER));
    EXPECT_EQ(instance->GetNames(nullptr), Result(WBEM_E_INVALID_PARAMETER));
    EXPECT_EQ(instance->SpawnInstance(0, nullptr), Result(WBEM_E_INVALID_PARAMETER));
    EXPECT_EQ(m_Class->GetNames(nullptr), Result(WBEM_E_INVALID_PARAMETER));
    EXPECT_EQ(m_Class->SpawnInstance(0, nullptr), Result(WBEM_E_INVALID_PARAMETER));
}

TEST_F(WbemObjectTest, EveryObjectIsHandedOutWithOneReference) {
    const auto instance = Spawn();
    const Signatures locate = SignaturesOf("Locate");
    for (IQelUnknown* const object : std::initializer_list<IQelUnknown*>{m_Class.get(), instance.get(),
                                                                         locate.in.get(), locate.out.get()}) {
        EXPECT_EQ(object->AddRef(), 2U);
        EXPECT_EQ(object->AddRef(), 3U);
        EXPECT_EQ(object->Release(), 2U);
        EXPECT_EQ(object->Release(), 1U);
    }
    EXPECT_EQ(Spawn().release()->Release(), 0U);
}

TEST_F(WbemObjectTest, AnInstanceOutlivesItsClassAndItsRepository) {
    const Signatures locate = SignaturesOf("Locate");
    const auto instance = Spawn();
    m_Class.reset();
    m_Repository.reset();
    EXPECT_EQ(instance->Put("Model", std::string("ZX-1")), 0);
    EXPECT_EQ(NamesOf(*SpawnOf(*locate.out)), (Names{"Done", "ReturnValue"}));
}

TEST_F(WbemObjectTest, ReferencesMayBeCountedOnManyThreads) {
    constexpr int kThreads = 4;
    constexpr int kRounds = 2000;
    auto instance = Spawn();
    std::atomic<int> gone{0};
    std::vector<std::thread> threads;
    for (int each = 0; each < kThreads; ++each) {
        instance->AddRef();
        threads.emplace_back([&gone, object = instance.get()] {
            for (int round = 0; round < kRounds; ++round) {
                object->AddRef();
                object->Release();
            }
            gone += object->Release() == 0 ? 1 : 0;
        });
    }
    gone += instance.release()->Release() == 0 ? 1 : 0;
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(gone, 1) << "one thread, and no other, drops the last reference";
}

}  // namespace
