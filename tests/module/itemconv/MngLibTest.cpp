#include "itemconv/CMSRAID_MngLib.h"

#include "test_support/ModuleTest.h"

#include <dlfcn.h>

#include <filesystem>
#include <fstream>

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::StartsWith;

class MngLibTest : public testsupport::ModuleTest {
  protected:
    static std::filesystem::path LibraryWithout(const std::string& entryPoint) {
        return std::filesystem::path(TEST_SUPPORT_LIBRARIES) / ("liblibrary_without_" + entryPoint + ".so");
    }
};

TEST_F(MngLibTest, EntryPointsAreNullBeforeTheFirstLoad) {
    const CMSRAID_MngLib library;
    EXPECT_EQ(library.CreateLibIF, nullptr);
    EXPECT_EQ(library.DeleteLibIF, nullptr);
    EXPECT_EQ(library.CreateItemDisp, nullptr);
    EXPECT_EQ(library.DeleteItemDisp, nullptr);
}

TEST_F(MngLibTest, EntryPointsStandBehindTheTableInTheirOrder) {
    CMSRAID_MngLib library;
    auto* const base = reinterpret_cast<char*>(&library);
    EXPECT_EQ(reinterpret_cast<char*>(&library.CreateLibIF) - base, 8);
    EXPECT_EQ(reinterpret_cast<char*>(&library.DeleteLibIF) - base, 16);
    EXPECT_EQ(reinterpret_cast<char*>(&library.CreateItemDisp) - base, 24);
    EXPECT_EQ(reinterpret_cast<char*>(&library.DeleteItemDisp) - base, 32);
}

TEST_F(MngLibTest, ConstructorAndDestructorTraceThemselves) {
    { const CMSRAID_MngLib library; }
    EXPECT_THAT(
        m_Trace.Lines(),
        ElementsAre("4 CMSRAID_MngLib::CMSRAID_MngLib [START]", "4 CMSRAID_MngLib::CMSRAID_MngLib [END]",
                    "4 CMSRAID_MngLib::~CMSRAID_MngLib [START]", "4 CMSRAID_MngLib::~CMSRAID_MngLib [END]"));
}

TEST_F(MngLibTest, LoadFillsTheEntryPointsAndUnloadLeavesThem) {
    CMSRAID_MngLib library;
    m_Trace.Clear();
    void* const handle = library.Load();
    ASSERT_NE(handle, nullptr);
    EXPECT_NE(library.CreateLibIF, nullptr);
    EXPECT_NE(library.DeleteLibIF, nullptr);
    EXPECT_NE(library.CreateItemDisp, nullptr);
    EXPECT_NE(library.DeleteItemDisp, nullptr);
    library.Unload(handle);
    EXPECT_NE(library.CreateItemDisp, nullptr);
    EXPECT_THAT(
        m_Trace.Lines(),
        ElementsAre("4 CMSRAID_MngLib::MngSrvLibLoad [START]", "4 CMSRAID_MngLib::MngSrvLibLoad [END]",
                    "4 CMSRAID_MngLib::MngSrvLibUnload [START]", "4 CMSRAID_MngLib::MngSrvLibUnload [END]"));
}

TEST_F(MngLibTest, UnloadClosesTheLibrary) {
    CMSRAID_MngLib library;
    void* const handle = library.Load();
    ASSERT_NE(handle, nullptr);
    const std::string file = LibraryWithout("nothing");
    EXPECT_NE(::dlopen(file.c_str(), RTLD_LAZY | RTLD_NOLOAD), nullptr);  // This looks and holds.
    ::dlclose(handle);                                                    // Lets go of the look's hold.
    library.Unload(handle);
    EXPECT_EQ(::dlopen(file.c_str(), RTLD_LAZY | RTLD_NOLOAD), nullptr);
}

TEST_F(MngLibTest, UnloadOfNullWritesOnlyItsTwoLines) {
    CMSRAID_MngLib library;
    m_Trace.Clear();
    library.Unload(nullptr);
    EXPECT_THAT(m_Trace.Lines(), ElementsAre("4 CMSRAID_MngLib::MngSrvLibUnload [START]",
                                             "4 CMSRAID_MngLib::MngSrvLibUnload [END]"));
}

TEST_F(MngLibTest, AnUnloadThatFailsIsTraced) {
    // Closing once more than it was opened fails, for a library that others hold open.
    void* const handle = ::dlopen("libc.so.6", RTLD_LAZY);
    ASSERT_NE(handle, nullptr);
    CMSRAID_MngLib library;
    library.Unload(handle);
    EXPECT_THAT(Failures(), IsEmpty());
    library.Unload(handle);
    EXPECT_THAT(Failures(), ElementsAre(StartsWith("Unload Library is FAILED (Error=")));
}

TEST_F(MngLibTest, AMissingLibraryIsTracedWithTheLoadersWords) {
    m_Root.UseLibrary("/nowhere/at/all.so");
    CMSRAID_MngLib library;
    EXPECT_EQ(library.Load(), nullptr);
    ASSERT_THAT(Failures(), SizeIs(1));
    EXPECT_THAT(Failures()[0], StartsWith("Failed to load MngSrv_QelLib Library(" + m_Root.Path().string() +
                                          "/cim/libqel_MngSrv_QelLib.so: "));
    EXPECT_EQ(Failures()[0].substr(Failures()[0].size() - 2), ").");
}

TEST_F(MngLibTest, AFileThatIsNoLibraryCannotBeLoaded) {
    std::ofstream(m_Root.Path() / "text.so") << "not a library";
    m_Root.UseLibrary(m_Root.Path() / "text.so");
    CMSRAID_MngLib library;
    EXPECT_EQ(library.Load(), nullptr);
    EXPECT_THAT(Failures(), ElementsAre(StartsWith("Failed to load MngSrv_QelLib Library(")));
}

TEST_F(MngLibTest, AnEmptyInstallPathSearchesTheBareName) {
    ::setenv("ZORBALT_INSTALL_DIR", "", 1);
    CMSRAID_MngLib library;
    EXPECT_EQ(library.Load(), nullptr);
    EXPECT_THAT(Failures(),
                ElementsAre("Failed to get INSTALLPATH_CIM.",
                            StartsWith("Failed to load MngSrv_QelLib Library(libqel_MngSrv_QelLib.so: ")));
}

class IncompleteLibraryTest : public MngLibTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(IncompleteLibraryTest, ALibraryThatLacksAnEntryPointIsRefusedAndStaysOpen) {
    const std::string file = LibraryWithout(GetParam());
    m_Root.UseLibrary(file);
    CMSRAID_MngLib library;
    EXPECT_EQ(library.Load(), nullptr);
    ASSERT_THAT(Failures(), SizeIs(1));
    EXPECT_THAT(Failures()[0], StartsWith("Failed to load MngSrv_QelLib Library("));
    EXPECT_EQ(Failures()[0].substr(Failures()[0].size() - 3), ") .");
    EXPECT_EQ(library.CreateLibIF == nullptr, std::string("CreateLibIF") == GetParam());
    EXPECT_EQ(library.DeleteLibIF == nullptr, std::string("DeleteLibIF") == GetParam());
    EXPECT_EQ(library.CreateItemDisp == nullptr, std::string("CreateItemDisp") == GetParam());
    EXPECT_EQ(library.DeleteItemDisp == nullptr, std::string("DeleteItemDisp") == GetParam());
    void* const stillOpen = ::dlopen(file.c_str(), RTLD_LAZY | RTLD_NOLOAD);
    ASSERT_NE(stillOpen, nullptr);
    ::dlclose(stillOpen);
    ::dlclose(stillOpen);
}

INSTANTIATE_TEST_SUITE_P(EachEntryPoint, IncompleteLibraryTest,
                         ::testing::Values("CreateLibIF", "DeleteLibIF", "CreateItemDisp", "DeleteItemDisp"),
                         [](const auto& entryPoint) { return std::string(entryPoint.param); });

TEST_F(MngLibTest, TheLoadersWordsAreEmptyWhenTheLastEntryPointIsThere) {
    m_Root.UseLibrary(LibraryWithout("CreateLibIF"));
    CMSRAID_MngLib library;
    EXPECT_EQ(library.Load(), nullptr);
    EXPECT_THAT(Failures(), ElementsAre("Failed to load MngSrv_QelLib Library() ."));
}

TEST_F(MngLibTest, AnEmptyListIsConvertedToo) {
    std::string xml = "before";
    m_Trace.Clear();
    EXPECT_TRUE(m_Library.Wrapper()->XmlConvert(&m_Items, &xml));
    EXPECT_EQ(xml, "<fake items=\"0\"/>");
    EXPECT_EQ(m_Library.InterfacesAlive(), 0U);
    EXPECT_THAT(m_Trace.Lines(),
                ElementsAre("4 CMSRAID_MngLib::XmlConvert [START]", "4 CMSRAID_MngLib::XmlConvert [END]"));
}

TEST_F(MngLibTest, AFailedConversionLeavesTheTextAloneAndTracesTheStatus) {
    m_Library.SetConversion(0x12345, true);
    std::string xml = "before";
    EXPECT_FALSE(m_Library.Wrapper()->XmlConvert(&m_Items, &xml));
    EXPECT_EQ(xml, "before");
    EXPECT_EQ(m_Library.InterfacesAlive(), 0U);
    EXPECT_THAT(Failures(), ElementsAre("Failed to convert XML format 00012345."));
}

TEST_F(MngLibTest, SuccessWithoutATextIsAFailure) {
    m_Library.SetConversion(0, false);
    std::string xml = "before";
    EXPECT_FALSE(m_Library.Wrapper()->XmlConvert(&m_Items, &xml));
    EXPECT_EQ(xml, "before");
    EXPECT_THAT(Failures(), ElementsAre("Failed to convert XML format 00000000."));
}

TEST_F(MngLibTest, ARefusedInterfaceObjectIsAFailure) {
    m_Library.RefuseInterface();
    std::string xml;
    EXPECT_FALSE(m_Library.Wrapper()->XmlConvert(&m_Items, &xml));
    EXPECT_THAT(Failures(), ElementsAre("Failed to initialize QelLibIF."));
}

TEST_F(MngLibTest, ConversionBeforeTheFirstLoadIsAFailure) {
    CMSRAID_MngLib library;
    std::string xml;
    EXPECT_FALSE(library.XmlConvert(&m_Items, &xml));
    EXPECT_THAT(Failures(), ElementsAre("Failed to initialize QelLibIF."));
}

}  // namespace
