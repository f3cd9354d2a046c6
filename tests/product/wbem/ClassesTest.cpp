#include "Classes.h"

#include "HealthInstance.h"

#include "qel/portable/CWbemRepository.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

namespace wbem {
namespace {

struct Repository {
    Repository(std::vector<WbemProperty> properties, std::vector<WbemMethod> methods) {
        made->DeclareClass({kRaidClass, std::move(properties), std::move(methods)});
    }
    ~Repository() { made->Release(); }
    Repository(const Repository&) = delete;
    Repository& operator=(const Repository&) = delete;

    CWbemRepository* made = CWbemRepository::Create();
};

std::string Describe(const Method& method) {
    std::string text = method.name;
    for (const Parameter& parameter : method.parameters) {
        text += std::string(" ") + (parameter.isIn ? "in " : "") + (parameter.isOut ? "out " : "") +
                NameOf(parameter.type) + " " + parameter.name;
    }
    return text;
}

TEST(Classes, AreThoseOfTheRepository) {
    const Classes classes(CWbemRepository::Process());
    ASSERT_EQ(classes.All().size(), 2U);
    const Class& raid = classes.All().front();
    EXPECT_EQ(raid.name, kRaidClass);
    EXPECT_TRUE(raid.properties.empty());
    ASSERT_EQ(raid.methods.size(), 2U);
    EXPECT_EQ(Describe(raid.methods[0]), "GetInfo out string XmlData");
    EXPECT_EQ(Describe(raid.methods[1]),
              "GetPDInfo in string CtrlNo in string EnclNo in string PDNo out string XmlData");
}

TEST(Classes, HaveTheTypesAndTheOrderOfTheDeclaration) {
    const Repository repository(
        {{"Property", WbemType::Boolean}},
        {{"GetInfo", {{"Z", WbemType::Uint32}, {"Both", WbemType::Sint32}}, {{"Both", WbemType::Sint32}}},
         {"GetPDInfo", {}, {{"B", WbemType::Boolean}, {"A", WbemType::String}}}});
    const Classes classes(*repository.made);
    const Class& raid = classes.All().front();
    EXPECT_EQ(Describe(raid.methods[0]), "GetInfo in uint32 Z in out sint32 Both");
    EXPECT_EQ(Describe(raid.methods[1]), "GetPDInfo out boolean B out string A");
    ASSERT_EQ(raid.properties.size(), 1U);
    EXPECT_EQ(raid.properties.front().type, Type::Boolean);
}

TEST(Classes, AreNotMadeWithoutTheMethods) {
    const Repository repository({}, {{"GetInfo", {}, {}}});
    EXPECT_THROW(Classes classes(*repository.made), std::runtime_error);
    repository.made->RemoveClass(kRaidClass);
    EXPECT_THROW(Classes classes(*repository.made), std::runtime_error);
}

TEST(Classes, AreFoundInAnyCase) {
    const Classes classes(CWbemRepository::Process());
    ASSERT_NE(classes.Find("zorbalt_mngsrvraid"), nullptr);
    EXPECT_NE(classes.Find("zorbalt_mngsrvraid")->FindMethod("GETINFO"), nullptr);
    EXPECT_EQ(classes.Find("ZORBALT"), nullptr);
    EXPECT_EQ(classes.All().front().FindMethod("Get"), nullptr);
}

TEST(AValue, IsOneOfItsType) {
    for (const char* const number : {"0", "252", "4294967295", "+1"}) {
        EXPECT_TRUE(IsValue(number, Type::Uint32)) << number;
    }
    for (const char* const other : {"", "-1", "4294967296", "1 ", "0x1", "one", "++1"}) {
        EXPECT_FALSE(IsValue(other, Type::Uint32)) << other;
    }
    EXPECT_TRUE(IsValue("-2147483648", Type::Sint32));
    EXPECT_FALSE(IsValue("2147483648", Type::Sint32));
    EXPECT_TRUE(IsValue("True", Type::Boolean));
    EXPECT_FALSE(IsValue("1", Type::Boolean));
    EXPECT_TRUE(IsValue("whatever", Type::String));
}

TEST(TheHealthInstance, HasAValueForEachProperty) {
    EXPECT_EQ(HealthValues({}).size(), HealthClass().properties.size());
}

}  // namespace
}  // namespace wbem
