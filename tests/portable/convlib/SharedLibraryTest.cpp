#include "itemconv/QelLibIF.h"
#include "test_support/ElfFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <dlfcn.h>

namespace {

using Library = std::unique_ptr<void, decltype([](void* handle) { dlclose(handle); })>;

Library Load(int flags = RTLD_LAZY) {
    return Library(dlopen(CONVLIB_TEST_LIBRARY, flags));
}

template <class Function>
Function* Find(const Library& library, const char* name) {
    return reinterpret_cast<Function*>(dlsym(library.get(), name));
}

TEST(SharedLibraryTest, ExportsTheFourEntryPointsAndNothingElse) {
    const ElfFile file = ElfFile::Read(CONVLIB_TEST_LIBRARY);
    const std::vector<std::string> expected = {"CreateItemDisp", "CreateLibIF", "DeleteItemDisp",
                                               "DeleteLibIF"};
    EXPECT_EQ(file.exportedSymbols, expected);
    EXPECT_TRUE(file.uniqueSymbols.empty());
}

TEST(SharedLibraryTest, NeedsTheStandardLibrariesAndNothingElse) {
    std::vector<std::string> allowed = {"libstdc++.so.6", "libgcc_s.so.1", "libc.so.6", "libm.so.6"};
#if defined(__SANITIZE_ADDRESS__)
    allowed.insert(allowed.end(), {"libasan.so.8", "libubsan.so.1"});
#endif
    const ElfFile file = ElfFile::Read(CONVLIB_TEST_LIBRARY);
    EXPECT_FALSE(file.neededLibraries.empty());
    for (const std::string& name : file.neededLibraries) {
        EXPECT_NE(std::find(allowed.begin(), allowed.end(), name), allowed.end()) << name;
    }
}

TEST(SharedLibraryTest, ConvertsWhenLoadedByHand) {
    const Library library = Load();
    ASSERT_NE(library, nullptr) << dlerror();
    auto* const createLibIF = Find<CreateLibIFFunction>(library, "CreateLibIF");
    auto* const deleteLibIF = Find<DeleteLibIFFunction>(library, "DeleteLibIF");
    auto* const createItemDisp = Find<CreateItemDispFunction>(library, "CreateItemDisp");
    auto* const deleteItemDisp = Find<DeleteItemDispFunction>(library, "DeleteItemDisp");
    ASSERT_TRUE(createLibIF && deleteLibIF && createItemDisp && deleteItemDisp);

    ItemList items = {createItemDisp("", "Controller Information", "", "TRUE"),
                      createItemDisp("Controller Information", "Serial", "", "FALSE")};
    QelLibIF* const libIF = createLibIF();
    const char* xml = nullptr;
    EXPECT_EQ(libIF->ConvertToXml(0, "RAID", &items, &xml), 0U);
    EXPECT_STREQ(xml,
                 "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                 "<RAID version=\"1\">\n"
                 "  <Item Name=\"Controller Information\" Valid=\"TRUE\">\n"
                 "    <Item Name=\"Serial\" Value=\"\" Valid=\"FALSE\"/>\n"
                 "  </Item>\n"
                 "</RAID>\n");
    deleteLibIF(libIF);
    for (CItemDisp* item : items) {
        deleteItemDisp(item);
    }
}

TEST(SharedLibraryTest, TheConversionStandsInTheThirdSlot) {
    const Library library = Load();
    ASSERT_NE(library, nullptr) << dlerror();
    QelLibIF* const libIF = Find<CreateLibIFFunction>(library, "CreateLibIF")();
    using Conversion = std::uint32_t(QelLibIF*, int, const char*, ItemList*, const char**);
    auto* const table = *reinterpret_cast<Conversion* const* const*>(libIF);
    ItemList items;
    const char* xml = nullptr;
    EXPECT_EQ(table[2](libIF, 0, "RAID", &items, &xml), 0U);
    EXPECT_STREQ(xml, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<RAID version=\"1\"/>\n");
    Find<DeleteLibIFFunction>(library, "DeleteLibIF")(libIF);
}

TEST(SharedLibraryTest, LeavesTheProcessWhenItIsClosed) {
    for (int round = 0; round < 3; ++round) {
        Library library = Load();
        ASSERT_NE(library, nullptr) << dlerror();
        EXPECT_NE(Load(RTLD_LAZY | RTLD_NOLOAD), nullptr);
        library.reset();
        EXPECT_EQ(Load(RTLD_LAZY | RTLD_NOLOAD), nullptr);
    }
}

}  // namespace
