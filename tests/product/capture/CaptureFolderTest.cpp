#include "CaptureFolder.h"

#include "DiskChanges.h"
#include "basics/Failure.h"
#include "test_support/InChild.h"
#include "test_support/TempFolder.h"

#include <gmock/gmock.h>
#include <unistd.h>

namespace capture::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testsupport::ReadFile;
using testsupport::TempFolder;
using testsupport::WriteFile;

class CaptureFolderTest : public testing::Test {
  protected:
    [[nodiscard]] std::string Path() const { return m_Temporary / "mine"; }
    [[nodiscard]] std::vector<std::string> Names() const { return TempFolder::NamesIn(Path()); }
    [[nodiscard]] bool IsThere() const { return fs::exists(Path()); }

    /// Why the folder is not taken; "" where it is.
    [[nodiscard]] std::string Refusal() const {
        try {
            const CaptureFolder folder(Path());
            return "";
        } catch (const basics::Failure& failure) {
            return failure.what();
        }
    }

    /// As a capture that was killed leaves it.
    void LeaveInterrupted(const std::vector<std::string>& more = {}) const {
        fs::create_directory(Path());
        WriteFile(Path() + "/INCOMPLETE", "");
        WriteFile(Path() + "/README.md", "# Incomplete capture\n\nof any version\n");
        for (const std::string& name : more) {
            WriteFile(Path() + "/" + name, "old");
        }
    }

    TempFolder m_Temporary;
};

TEST_F(CaptureFolderTest, IsMarkedUntilItIsComplete) {
    CaptureFolder folder(Path());
    EXPECT_THAT(Names(), ElementsAre("INCOMPLETE", "README.md"));
    EXPECT_THAT(ReadFile(Path() + "/README.md"), HasSubstr("has not come to its end"));
    folder.Write("v.txt", "4.1");
    folder.Describe("# Mine");
    EXPECT_THAT(Names(), ElementsAre("INCOMPLETE", "README.md", "v.txt"));
    folder.Complete();
    EXPECT_THAT(Names(), ElementsAre("README.md", "v.txt"));
    EXPECT_EQ(ReadFile(Path() + "/README.md"), "# Mine");
}

TEST_F(CaptureFolderTest, RemovesWhatItHasMadeUnlessItIsComplete) {
    {
        CaptureFolder folder(Path() + "/");
        folder.Write("v.txt", "4.1");
        folder.Describe("# Mine");
    }
    EXPECT_FALSE(IsThere());
    {
        CaptureFolder folder(Path());
        folder.Complete();
    }
    EXPECT_TRUE(IsThere());
}

TEST_F(CaptureFolderTest, LeavesAnEmptyFolderThatWasThere) {
    fs::create_directory(Path());
    { CaptureFolder(Path()).Write("v.txt", "4.1"); }
    EXPECT_TRUE(IsThere());
    EXPECT_THAT(Names(), ElementsAre());
}

TEST_F(CaptureFolderTest, LeavesWhatSomebodyElsePutsThere) {
    {
        const CaptureFolder folder(Path());
        WriteFile(Path() + "/notes", "mine");
    }
    EXPECT_THAT(Names(), ElementsAre("notes"));
}

TEST_F(CaptureFolderTest, StaysTheSamePlaceInAnotherWorkingDirectory) {
    const TempFolder elsewhere;
    const std::string seen = testsupport::InChild([&] {
        EXPECT_EQ(::chdir(m_Temporary.Path().c_str()), 0);
        {
            const CaptureFolder folder("mine");
            EXPECT_TRUE(fs::exists(Path()));
            EXPECT_EQ(::chdir(elsewhere.Path().c_str()), 0);
        }
        return std::string(fs::exists(Path()) ? "there" : "gone");
    });
    EXPECT_EQ(seen, "gone");
}

TEST_F(CaptureFolderTest, TakesOverWhatAnInterruptedCaptureHasLeft) {
    LeaveInterrupted({"v.txt", "pdinfo_pd252.1_a0.txt", "v.do", ".unfinished"});
    CaptureFolder folder(Path());
    EXPECT_THAT(Names(), testing::Contains("pdinfo_pd252.1_a0.txt"));  // Until there is something better.
    folder.Write("v.txt", "new");
    EXPECT_THAT(Names(), ElementsAre("INCOMPLETE", "README.md", "v.txt"));
    EXPECT_EQ(ReadFile(Path() + "/v.txt"), "new");
    folder.Describe("# Mine");
    folder.Complete();
    EXPECT_THAT(Names(), ElementsAre("README.md", "v.txt"));
}

TEST_F(CaptureFolderTest, OneThatWasInterruptedAtItsVeryEndIsTakenOverToo) {
    LeaveInterrupted({"v.txt"});
    WriteFile(Path() + "/README.md", "# Capture of a RAID server\n");
    EXPECT_EQ(Refusal(), "");
    fs::remove(Path() + "/README.md");
    EXPECT_EQ(Refusal(), "");
}

TEST_F(CaptureFolderTest, FailureLeavesAnInterruptedOneToTheNext) {
    LeaveInterrupted({"v.txt"});
    { const CaptureFolder folder(Path()); }
    EXPECT_THAT(Names(), ElementsAre("INCOMPLETE", "README.md", "v.txt"));
    { CaptureFolder(Path()).Write("v.txt", "new"); }
    EXPECT_THAT(Names(), ElementsAre("INCOMPLETE", "README.md"));
    EXPECT_EQ(Refusal(), "");
}

TEST_F(CaptureFolderTest, TakesOverNothingElse) {
    const auto expectRefused = [this] {
        const std::vector<std::string> before = Names();
        EXPECT_THAT(Refusal(), HasSubstr("it is there and is not empty, and nothing is overwritten"));
        EXPECT_EQ(Names(), before);
        fs::remove_all(Path());
    };
    LeaveInterrupted({"v.txt", "notes"});
    expectRefused();
    LeaveInterrupted({"pdinfo_7K00025200C4.txt"});
    expectRefused();
    LeaveInterrupted();
    fs::create_directory(Path() + "/v.txt");
    expectRefused();
    LeaveInterrupted();
    WriteFile(Path() + "/README.md", "# My own\n");
    expectRefused();
    LeaveInterrupted({"v.txt"});
    fs::remove(Path() + "/INCOMPLETE");  // Somebody means to use what is there.
    expectRefused();
    LeaveInterrupted({"v.txt"});
    WriteFile(Path() + "/INCOMPLETE", "The redaction of this folder has not come to its end.");
    expectRefused();
}

TEST_F(CaptureFolderTest, OneThatIsKilledAtAnyPointIsTakenOver) {
    const auto capture = [this] {
        CaptureFolder folder(Path());
        folder.Write("v.txt", "4.1");
        folder.Write("ctrlinfo_aAll.txt", "x");
        folder.Describe("# Capture of a RAID server\n");
        folder.Complete();
    };
    unsigned change = 0;
    unsigned complete = 0;
    for (; IsKilledAt(change, capture); ++change) {
        const bool isComplete = !Names().empty() && !fs::exists(Path() + "/INCOMPLETE");
        complete += isComplete ? 1 : 0;
        EXPECT_EQ(Refusal().empty(), !isComplete) << change;
        fs::remove_all(Path());
    }
    EXPECT_EQ(complete, 0U);  // Nothing is changed behind the last step.
    EXPECT_GE(change, 7U);
    EXPECT_THAT(Names(), ElementsAre("README.md", "ctrlinfo_aAll.txt", "v.txt"));
}

TEST_F(CaptureFolderTest, TwoCapturesDoNotWriteToOneFolder) {
    const CaptureFolder folder(Path());
    EXPECT_THAT(Refusal(), HasSubstr("another capture is writing to it"));
    EXPECT_THAT(Names(), ElementsAre("INCOMPLETE", "README.md"));
}

}  // namespace
}  // namespace capture::test
