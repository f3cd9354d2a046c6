// The module as the framework gets it: one file, loaded and asked for a provider.
#include "test_support/ElfFile.h"
#include "test_support/ModuleTest.h"

#include "qel/CZORBALT_ServerService.h"

#include <dlfcn.h>

#include <filesystem>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

using CreateFunction = CZORBALT_ServerService*();

class ModuleFileTest : public testsupport::ModuleTest {};

TEST_F(ModuleFileTest, ExportsCreateAndNothingElse) {
    const ElfFile file = ElfFile::Read(TEST_MODULE_FILE);
    EXPECT_THAT(file.exportedSymbols, ElementsAre("create"));
    EXPECT_THAT(file.uniqueSymbols, IsEmpty());
}

TEST_F(ModuleFileTest, NeedsTheFrameworksTwoLibrariesAndThoseOfTheLanguage) {
    std::vector<std::string> needed = ElfFile::Read(TEST_MODULE_FILE).neededLibraries;
    std::erase_if(needed, [](const std::string& name) {
        return name.starts_with("libasan.") || name.starts_with("libubsan.") || name == "libm.so.6";
    });
    EXPECT_THAT(needed, ::testing::UnorderedElementsAre("libqel_ProviderBase.so", "libqel_ComLib.so",
                                                        "libstdc++.so.6", "libgcc_s.so.1", "libc.so.6"));
}

TEST_F(ModuleFileTest, LeavesNothingExecutableOrWritableThatNeedNotBe) {
    for (const char* const path : {TEST_MODULE_FILE, TEST_CONVERSION_LIBRARY_FILE}) {
        const ElfFile file = ElfFile::Read(path);
        EXPECT_FALSE(file.hasExecutableStack) << path;
        EXPECT_TRUE(file.hasReadOnlyRelocated) << path;
        EXPECT_TRUE(file.isBoundAtLoad) << path;
    }
}

TEST_F(ModuleFileTest, GivesAProviderThatTheCallerDeletes) {
    void* const module = ::dlopen(TEST_MODULE_FILE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(module, nullptr) << ::dlerror();
    auto* const create = reinterpret_cast<CreateFunction*>(::dlsym(module, "create"));
    ASSERT_NE(create, nullptr);
    m_Trace.Clear();
    CZORBALT_ServerService* const provider = create();
    ASSERT_NE(provider, nullptr);
    delete provider;
    EXPECT_THAT(m_Trace.Lines(), ElementsAre("4 CZORBALT_MngSrvRaid::CZORBALT_MngSrvRaid [START]",
                                             "4 CMSRAID_MngLib::CMSRAID_MngLib [START]",
                                             "4 CMSRAID_MngLib::CMSRAID_MngLib [END]",
                                             "4 CZORBALT_MngSrvRaid::CZORBALT_MngSrvRaid [END]",
                                             "4 CZORBALT_MngSrvRaid::~CZORBALT_MngSrvRaid [START]",
                                             "4 CZORBALT_MngSrvRaid::~CZORBALT_MngSrvRaid [END]"));
    ::dlclose(module);
}

TEST_F(ModuleFileTest, LeavesTheProcessWhenItIsClosed) {
    for (int round = 0; round < 3; ++round) {
        void* const module = ::dlopen(TEST_MODULE_FILE, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(module, nullptr) << ::dlerror();
        ::dlclose(module);
        EXPECT_EQ(::dlopen(TEST_MODULE_FILE, RTLD_LAZY | RTLD_NOLOAD), nullptr);
    }
}

}  // namespace
