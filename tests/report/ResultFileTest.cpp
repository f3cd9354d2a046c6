#include "report/ResultFile.h"

#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace {

class ResultFileTest : public ::testing::Test {
  protected:
    ResultFileTest() { testsupport::WriteFile(m_Path, "report"); }

    [[nodiscard]] bool IsThere() const { return std::filesystem::exists(m_Path); }

    testsupport::TempFolder m_Folder;
    std::string m_Path = m_Folder.Path() / "result.txt";
};

TEST_F(ResultFileTest, LeftBehindItIsRemoved) {
    {
        const ResultFile file(m_Path);
        EXPECT_EQ(file.Path(), m_Path);
        EXPECT_TRUE(IsThere());
    }
    EXPECT_FALSE(IsThere());
}

TEST_F(ResultFileTest, OnceRemovedTheNameIsSomebodyElses) {
    {
        ResultFile file(m_Path);
        file.Delete();
        EXPECT_FALSE(IsThere());
        testsupport::WriteFile(m_Path, "another one");
    }
    EXPECT_TRUE(IsThere());
}

TEST_F(ResultFileTest, KeptItStays) {
    {
        ResultFile file(m_Path);
        file.Keep();
    }
    EXPECT_TRUE(IsThere());
}

}  // namespace
