#include "ResultFile.h"

#include "test_support/TempFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>
#include <fstream>
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

TEST(OpenReportTest, OpensWhatIsThereAndFailsWhereNothingIs) {
    const testsupport::TempFolder folder;
    folder.Write("report", "RAID Controller : 0\n");
    std::string line;
    std::ifstream report = OpenReport(folder / "report");
    EXPECT_TRUE(std::getline(report, line));
    EXPECT_EQ(line, "RAID Controller : 0");
    EXPECT_FALSE(OpenReport(folder / "missing").good());
}

TEST(OpenReportTest, DoesNotWaitForTheOtherEndOfAPipe) {
    const testsupport::TempFolder folder;
    const std::string pipe = folder / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_TRUE(IsPipe(pipe));
    EXPECT_FALSE(OpenReport(pipe).good());
}

}  // namespace
