#include "Support.h"

#include "qel/CFileUtility.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include <sys/stat.h>

namespace {

using qel::test::ScopedVariable;
using qel::test::TempFolder;
using qel::test::WriteFile;

class InstallPathTest : public testing::Test {
  protected:
    void SetRoot(const std::optional<std::string>& root) {
        m_Variable.reset();
        m_Variable = std::make_unique<ScopedVariable>("ZORBALT_INSTALL_DIR", root);
    }

  private:
    std::unique_ptr<ScopedVariable> m_Variable;
};

std::string OutputOf(const std::string& command) {
    const std::unique_ptr<FILE, decltype([](FILE* pipe) { ::pclose(pipe); })> pipe(
        ::popen(command.c_str(), "r"));
    std::string output;
    for (int character = 0; pipe != nullptr && (character = std::fgetc(pipe.get())) != EOF;) {
        output += static_cast<char>(character);
    }
    return output;
}

TEST_F(InstallPathTest, TheVariableNamesTheRoot) {
    SetRoot("/srv/zorbalt");
    EXPECT_EQ(CFileUtility::GetInstallPath(INSTALLPATH_ROOT), "/srv/zorbalt");
    EXPECT_EQ(CFileUtility::GetInstallPath(0), "/srv/zorbalt");
    EXPECT_EQ(CFileUtility::GetInstallPath(INSTALLPATH_CIM), "/srv/zorbalt/cim");
    EXPECT_EQ(CFileUtility::GetInstallPath(4), "/srv/zorbalt/cim");
}

TEST_F(InstallPathTest, TheVariableIsAskedEveryTime) {
    SetRoot("/first");
    EXPECT_EQ(CFileUtility::GetInstallPath(INSTALLPATH_ROOT), "/first");
    SetRoot("/second");
    EXPECT_EQ(CFileUtility::GetInstallPath(INSTALLPATH_ROOT), "/second");
}

TEST_F(InstallPathTest, SlashesAtTheEndOfTheVariableDoNotCount) {
    SetRoot("/srv/zorbalt/");
    EXPECT_EQ(CFileUtility::GetInstallPath(INSTALLPATH_ROOT), "/srv/zorbalt");
    EXPECT_EQ(CFileUtility::GetInstallPath(INSTALLPATH_CIM), "/srv/zorbalt/cim");
    SetRoot("/srv/zorbalt///");
    EXPECT_EQ(CFileUtility::GetInstallPath(INSTALLPATH_ROOT), "/srv/zorbalt");
    EXPECT_EQ(CFileUtility::GetInstallPath(INSTALLPATH_CIM), "/srv/zorbalt/cim");
}

TEST_F(InstallPathTest, TheRootDirectoryIsAnInstallRootLikeAnyOther) {
    for (const char* const root : {"/", "///"}) {
        SetRoot(root);
        EXPECT_EQ(CFileUtility::GetInstallPath(INSTALLPATH_ROOT), "/");
        EXPECT_EQ(CFileUtility::GetInstallPath(INSTALLPATH_CIM), "/cim");
    }
}

TEST_F(InstallPathTest, NoPathIsKnownWhenTheVariableIsEmpty) {
    SetRoot("");
    EXPECT_EQ(CFileUtility::GetInstallPath(INSTALLPATH_ROOT), "");
    EXPECT_EQ(CFileUtility::GetInstallPath(INSTALLPATH_CIM), "");
}

TEST_F(InstallPathTest, OtherKindsAreUnknown) {
    SetRoot("/srv/zorbalt");
    for (const int kind : {-1, 1, 2, 3, 5, 100}) {
        EXPECT_EQ(CFileUtility::GetInstallPath(kind), "") << kind;
    }
}

TEST_F(InstallPathTest, WithoutTheVariableTheRootIsAboveTheLibrarysFolder) {
    SetRoot(std::nullopt);
    const std::filesystem::path library = std::filesystem::canonical(FRAMEWORK_TEST_COMLIB);
    const std::string root = library.parent_path().parent_path().string();
    ASSERT_FALSE(root.empty());
    EXPECT_EQ(CFileUtility::GetInstallPath(INSTALLPATH_ROOT), root);
    EXPECT_EQ(CFileUtility::GetInstallPath(INSTALLPATH_CIM), root + "/cim");
    EXPECT_EQ(CFileUtility::GetInstallPath(1), "");
}

TEST_F(InstallPathTest, AnInstallationMayStandAnywhereAndBeLoadedByARelativePath) {
    SetRoot(std::nullopt);
    const TempFolder folder;
    std::filesystem::create_directories(folder.Path() / "moved/lib");
    std::filesystem::copy_file(FRAMEWORK_TEST_COMLIB, folder / "moved/lib/libqel_ComLib.so");
    const std::string output = OutputOf("cd '" + (folder / "moved/lib") +
                                        "' && LD_LIBRARY_PATH=. '" FRAMEWORK_TEST_PATH_PROBE "' /");
    EXPECT_EQ(output, (folder / "moved") + "\n");
}

TEST(FileExistTest, AFileIsThere) {
    const TempFolder folder;
    WriteFile(folder / "empty", "");
    EXPECT_TRUE(CFileUtility::IsFileExist(folder / "empty"));
}

TEST(FileExistTest, ADirectoryIsNoFile) {
    const TempFolder folder;
    EXPECT_FALSE(CFileUtility::IsFileExist(folder.Path().string()));
    std::filesystem::create_directory_symlink(folder.Path(), folder / "link");
    EXPECT_FALSE(CFileUtility::IsFileExist(folder / "link"));
}

TEST(FileExistTest, ALinkIsWhatItLeadsTo) {
    const TempFolder folder;
    std::filesystem::create_symlink(folder / "target", folder / "link");
    EXPECT_FALSE(CFileUtility::IsFileExist(folder / "link"));
    WriteFile(folder / "target", "x");
    EXPECT_TRUE(CFileUtility::IsFileExist(folder / "link"));
}

TEST(FileExistTest, WhatIsMissingIsNoFile) {
    const TempFolder folder;
    EXPECT_FALSE(CFileUtility::IsFileExist(folder / "missing"));
    EXPECT_FALSE(CFileUtility::IsFileExist(folder / "missing/below"));
    EXPECT_FALSE(CFileUtility::IsFileExist(""));
    WriteFile(folder / "file", "x");
    EXPECT_FALSE(CFileUtility::IsFileExist(folder / "file/below"));
}

TEST(FileExistTest, AnythingThatIsNoDirectoryCounts) {
    const TempFolder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_TRUE(CFileUtility::IsFileExist(folder / "pipe"));
    EXPECT_TRUE(CFileUtility::IsFileExist("/dev/null"));
}

TEST(FileExistTest, PermissionsDoNotCount) {
    const TempFolder folder;
    WriteFile(folder / "closed", "x");
    ASSERT_EQ(::chmod((folder / "closed").c_str(), 0), 0);
    EXPECT_TRUE(CFileUtility::IsFileExist(folder / "closed"));
}

}  // namespace
