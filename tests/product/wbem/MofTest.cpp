#include "Mof.h"

#include "Classes.h"

#include "qel/portable/CWbemRepository.h"
#include "test_support/TempFolder.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace wbem::test {
namespace {

std::string LineOf(const Property& property) {
    return std::string(property.isKey ? "[Key] " : "") + NameOf(property.type) + " " + property.name +
           (property.isArray ? "[]" : "");
}

std::string LineOf(const Method& method) {
    std::string line = "[Static] uint32 " + method.name + "(";
    for (const Parameter& parameter : method.parameters) {
        line += line.ends_with('(') ? "" : ", ";
        line += parameter.isIn ? "[In" : "[In(false)";
        line += parameter.isOut ? ", Out] " : "] ";
        line += std::string(NameOf(parameter.type)) + " " + parameter.name;
    }
    return line + ")";
}

TEST(TheMofFile, DeclaresWhatTheRepositoryAndTheDoorDo) {
    const Classes classes(CWbemRepository::Process());
    std::vector<std::string> lines;
    for (const Class& each : classes.All()) {
        lines.push_back("class " + each.name);
        for (const Property& property : each.properties) {
            lines.push_back(LineOf(property));
        }
        for (const Method& method : each.methods) {
            lines.push_back(LineOf(method));
        }
    }
    EXPECT_EQ(DeclarationsIn(testsupport::ReadFile(WBEM_TEST_MOF)), lines);
}

TEST(TheMofReader, TellsEverythingButDescriptions) {
    EXPECT_EQ(DeclarationsIn(
                  "// [x]\n[Description(\"a;\" \"b\"), Version(\"2\")] class A { [Key, Description(\"k\")]\n"
                  "string K; sint32 L[]; uint32 M([In (false), Out] string X, boolean Y); };"),
              (std::vector<std::string>{"[Version(\")] class A", "[Key] string K", "sint32 L[]",
                                        "uint32 M([In(false), Out] string X, boolean Y)"}));
    EXPECT_THROW((void)DeclarationsIn("class A { string; };"), std::runtime_error);
    EXPECT_THROW((void)DeclarationsIn("class A { string B; }"), std::runtime_error);
}

}  // namespace
}  // namespace wbem::test
