#include "test_support/ElfFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <cxxabi.h>

namespace {

using Owners = std::set<std::string>;

std::string Demangled(const std::string& symbol) {
    int status = 0;
    const std::unique_ptr<char, decltype([](char* text) { std::free(text); })> name(
        abi::__cxa_demangle(symbol.c_str(), nullptr, nullptr, &status));
    return name == nullptr ? symbol : name.get();
}

// The class that a symbol belongs to; a function's own name where it belongs to none.
std::string OwnerOf(const std::string& symbol) {
    std::string name = Demangled(symbol);
    for (const std::string prefix : {"vtable for ", "typeinfo for ", "typeinfo name for "}) {
        if (name.starts_with(prefix)) {
            return name.substr(prefix.size());
        }
    }
    name = name.substr(0, name.find_first_of("(["));
    const std::size_t lastColons = name.rfind("::");
    return lastColons == std::string::npos ? name : name.substr(0, lastColons);
}

// Inline parts of the standard library, and what the sanitizers add, are no work of the framework's. A
// mangled name has its outermost namespace behind letters that say what kind of thing it is; those of std
// begin with an S.
bool IsOurs(const std::string& symbol) {
    if (!symbol.starts_with("_Z")) {
        return !symbol.starts_with("__");
    }
    const std::string name = symbol.substr(symbol.find_first_not_of("ZNKTVI", 1));
    return !name.starts_with("S") && !name.starts_with("9__gnu_cxx");
}

Owners ExportedBy(const std::string& library) {
    Owners owners;
    for (const std::string& symbol : ElfFile::Read(library).exportedSymbols) {
        if (IsOurs(symbol)) {
            owners.insert(OwnerOf(symbol));
        }
    }
    return owners;
}

TEST(ExportsTest, TheCommonLibraryExportsItsClassesAndFunctionsAndNothingElse) {
    const Owners expected = {// classes
                             "CFileUtility", "CIWbemUtil", "CStringUtil", "CTraceOutput", "CTraceUtility",
                             "CVersionLog", "CWbemRepository", "QelException",
                             // functions
                             "DeleteFileA", "GetCurrentThreadId", "GetLastError", "ShowMessage", "Sleep",
                             "SysAllocString", "SysFreeString", "_mkdir", "lstrcmpW"};
    EXPECT_EQ(ExportedBy(FRAMEWORK_TEST_COMLIB), expected);
}

TEST(ExportsTest, TheProviderBaseLibraryExportsTheBaseClassesAndNothingElse) {
    const Owners expected = {"CZORBALT_ServerService", "CZORBALT_SysService"};
    EXPECT_EQ(ExportedBy(FRAMEWORK_TEST_PROVIDERBASE), expected);
}

TEST(ExportsTest, TheFunctionsHaveTheirPlainNames) {
    const std::vector<std::string> symbols = ElfFile::Read(FRAMEWORK_TEST_COMLIB).exportedSymbols;
    for (const char* const name : {"DeleteFileA", "GetCurrentThreadId", "GetLastError", "ShowMessage",
                                   "Sleep", "SysAllocString", "SysFreeString", "_mkdir", "lstrcmpW"}) {
        EXPECT_TRUE(std::binary_search(symbols.begin(), symbols.end(), name)) << name;
    }
}

TEST(ExportsTest, AModuleBuiltOnTheHeadersExportsItsFactoryAlone) {
    EXPECT_EQ(ExportedBy(FRAMEWORK_TEST_MODULE), Owners{"create"});
}

}  // namespace
