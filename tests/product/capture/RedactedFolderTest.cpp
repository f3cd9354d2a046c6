#include "capture/RedactedFolder.h"

#include "DiskChanges.h"
#include "basics/Descriptor.h"
#include "basics/Failure.h"
#include "basics/HostName.h"
#include "scenario/ScenarioFolder.h"
#include "test_support/Command.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace capture::test {
namespace {

using namespace testsupport;

namespace fs = std::filesystem;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class RedactedFolderTest : public testing::Test {
  protected:
    RedactedFolderTest() {
        fs::create_directory(Path());
        Put("v.txt", "Product Version : 4.1\n");
        Put("ctrlinfo_aAll.txt", "Serial Number : GS81000442\nHost Name : storage7\n");
        Put("pdinfo_a0.txt", "Serial Number : 7K00025200C4\npath /dev/x7k00025200c4y\n");
        Put("pdinfo_a0.do", "fail-first 2 1  # 7K00025200C4\n");
        Put("README.md", "# Mine\n\nThe drive 7K00025200C4 clicks.\n");
    }

    [[nodiscard]] std::string Path() const { return m_Temporary / "mine"; }
    void Put(const std::string& name, const std::string& text) const { WriteFile(Path() + "/" + name, text); }
    [[nodiscard]] std::string Get(const std::string& name) const { return ReadFile(Path() + "/" + name); }

    /// Everything that is in the folder.
    [[nodiscard]] std::map<std::string, std::string> Everything() const {
        std::map<std::string, std::string> everything;
        for (const std::string& name : TempFolder::NamesIn(Path())) {
            everything[name] = fs::is_directory(Path() + "/" + name) ? "folder" : Get(name);
        }
        return everything;
    }

    [[nodiscard]] std::string Redact(const std::vector<std::string>& words = {}) const {
        try {
            return RedactFolder({.folder = Path(), .words = words});
        } catch (const basics::Failure& failure) {
            return failure.what();
        }
    }

    void ExpectRefused(const std::string& why) const {
        const auto before = Everything();
        EXPECT_THAT(Redact(), HasSubstr(why));
        EXPECT_EQ(Everything(), before);
    }

    TempFolder m_Temporary;
};

TEST_F(RedactedFolderTest, RedactsAllFiles) {
    EXPECT_EQ(Redact(), "redacted in " + Path() +
                            ": 4 of 5 files\n"
                            "replaced: 2 serial numbers, in 5 places\n"
                            "replaced: 1 host name, in 1 place\n"
                            "    serial-0001  1\n"
                            "    serial-0002  4\n"
                            "    host-0001  1\n");
    EXPECT_EQ(Get("v.txt"), "Product Version : 4.1\n");
    EXPECT_EQ(Get("ctrlinfo_aAll.txt"), "Serial Number : serial-0001\nHost Name : host-0001\n");
    EXPECT_EQ(Get("pdinfo_a0.txt"), "Serial Number : serial-0002\npath /dev/xserial-0002y\n");
    EXPECT_EQ(Get("pdinfo_a0.do"), "fail-first 2 1  # serial-0002\n");
    EXPECT_EQ(Get("README.md"),
              "# Mine\n\nThe drive serial-0002 clicks.\n"
              "\n## What was replaced\n\n"
              "- 2 serial numbers, in 5 places\n"
              "- 1 host name, in 1 place\n\n"
              "    serial-0001  1\n"
              "    serial-0002  4\n"
              "    host-0001  1\n");
    EXPECT_THAT(TempFolder::NamesIn(Path()),
                ElementsAre("README.md", "ctrlinfo_aAll.txt", "pdinfo_a0.do", "pdinfo_a0.txt", "v.txt"));
}

TEST_F(RedactedFolderTest, SecondTimeChangesNothing) {
    (void)Redact({"clicks"});
    const auto before = Everything();
    const auto time = fs::last_write_time(Path() + "/README.md");
    EXPECT_EQ(Redact({"clicks"}), "nothing is left to redact in " + Path() + "\n");
    EXPECT_EQ(Redact(), "nothing is left to redact in " + Path() + "\n");
    EXPECT_EQ(Everything(), before);
    EXPECT_EQ(fs::last_write_time(Path() + "/README.md"), time);
}

TEST_F(RedactedFolderTest, WhatIsNewIsRedactedTheNextTime) {
    (void)Redact();
    Put("pdinfo_pd8.1_a0.txt", "Serial Number : 7K99\nSerial Number : serial-0002\n");
    EXPECT_EQ(Redact({"clicks"}), "redacted in " + Path() +
                                      ": 2 of 6 files\n"
                                      "replaced: 1 serial number, in 1 place\n"
                                      "replaced: 1 word of your own, in 1 place\n"
                                      "    serial-0003  1\n"
                                      "    word-0001  1\n");
    EXPECT_EQ(Get("pdinfo_pd8.1_a0.txt"), "Serial Number : serial-0003\nSerial Number : serial-0002\n");
    EXPECT_THAT(Get("README.md"), AllOf(HasSubstr("- 3 serial numbers, in 6 places\n"),
                                        HasSubstr("    serial-0002  4\n    serial-0003  1\n    host-0001  1\n"
                                                  "    word-0001  1\n")));
}

TEST_F(RedactedFolderTest, FolderWithoutReadmeGetsOne) {
    fs::remove(Path() + "/README.md");
    (void)Redact();
    EXPECT_THAT(Get("README.md"), HasSubstr("## What was replaced\n\n- 2 serial numbers"));
}

TEST_F(RedactedFolderTest, NeedsNeitherToolNorModule) {
    const TempFolder empty;
    const Ended ended = RunCommand({"--install-dir", empty.Path().string(), "redact", Path()});
    EXPECT_EQ(ended.ExitStatus(), 0) << ended.err;
    EXPECT_THAT(ended.out, StartsWith("redacted in " + Path()));
    EXPECT_THAT(Get("pdinfo_a0.txt"), HasSubstr("serial-0002"));
}

TEST_F(RedactedFolderTest, HostThatIsNamedIsReplacedAndThisMachineIsNot) {
    Put("pdinfo_a0.txt", "at rack5 and " + basics::HostName() + "9\n");
    EXPECT_EQ(RunCommand({"--host", "rack5", "redact", Path()}).ExitStatus(), 0);
    EXPECT_EQ(Get("pdinfo_a0.txt"), "at host-0001 and " + basics::HostName() + "9\n");
}

TEST_F(RedactedFolderTest, FilesKeepTheirModes) {
    ::chmod((Path() + "/pdinfo_a0.txt").c_str(), 0604);
    (void)Redact();
    struct stat status {};
    EXPECT_EQ(::stat((Path() + "/pdinfo_a0.txt").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0604U);
}

TEST_F(RedactedFolderTest, RefusesWhatIsNoScenario) {
    fs::remove(Path() + "/v.txt");
    ExpectRefused("is no capture and no scenario: it has neither v.txt nor server.conf");
    EXPECT_THROW((void)RedactFolder({.folder = Path() + "/no"}), basics::Failure);
    EXPECT_THROW((void)RedactFolder({.folder = Path() + "/README.md"}), basics::Failure);
    const Ended ended = RunCommand({"redact", "small"});
    EXPECT_EQ(ended.ExitStatus(), 4);
    EXPECT_EQ(
        ended.err,
        "mngsrvraid: small cannot be redacted: No such file or directory; name the folder of a capture\n");
}

TEST_F(RedactedFolderTest, RefusesFilesOfWhichNobodyKnowsWhatTheyTell) {
    for (const char* const name :
         {"notes", "raid.xml", ".v.txt.swp", "pdinfo_7K00025200C4.txt", "other.txt", "v.txt~"}) {
        Put(name, "7K00025200C4");
        ExpectRefused("it holds what is not of a capture, and may tell anything: " + std::string(name) +
                      "; move");
        fs::remove(Path() + "/" + name);
    }
    fs::create_directory(Path() + "/pdinfo_a1.txt");
    ExpectRefused("may tell anything: pdinfo_a1.txt; move");
    fs::remove(Path() + "/pdinfo_a1.txt");
    fs::create_symlink("/etc/hostname", Path() + "/pdinfo_a1.txt");
    ExpectRefused("may tell anything: pdinfo_a1.txt; move");
}

TEST_F(RedactedFolderTest, RefusesAnIncompleteCapture) {
    Put("INCOMPLETE", "");
    ExpectRefused("is an incomplete capture; make another one, with --redact");
}

TEST_F(RedactedFolderTest, RefusesAFolderThatIsWrittenTo) {
    const basics::Descriptor other(::open(Path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    ASSERT_EQ(::flock(other.Number(), LOCK_EX), 0);
    ExpectRefused("another process is writing to it");
}

/// What is left when it was ended while it wrote the new files: they are, in part, beside the old ones.
TEST_F(RedactedFolderTest, BeginsAnewWhereItWasEndedBeforeItReplacedAnything) {
    Put("INCOMPLETE", scenario::kUnderRedaction);
    Put(".pdinfo_a0.txt.redacted", "Serial Number : ser");
    const Ended refused = RunCommand({"--scenario", Path(), "get-info"});
    EXPECT_EQ(refused.ExitStatus(), 4);
    EXPECT_THAT(refused.err, HasSubstr("the redaction of " + Path() +
                                       " has not come to its end; repeat it: mngsrvraid redact"));
    EXPECT_THAT(Redact(), StartsWith("redacted in"));
    EXPECT_EQ(Get("pdinfo_a0.txt"), "Serial Number : serial-0002\npath /dev/xserial-0002y\n");
    EXPECT_EQ(TempFolder::NamesIn(Path()).size(), 5U);
}

TEST_F(RedactedFolderTest, KilledAtAnyPointItIsFinishedByTheNext) {
    const auto before = Everything();
    (void)Redact();
    const auto after = Everything();
    const auto restore = [&] {
        for (const auto& [name, text] : before) {
            Put(name, text);
        }
    };
    restore();
    unsigned change = 0;
    for (; IsKilledAt(change, [this] { (void)Redact(); }); ++change) {
        // Whatever is there, it is marked, or all old, or all new.
        const auto left = Everything();
        EXPECT_TRUE(left.count("INCOMPLETE") > 0 || left == before || left == after) << change;
        (void)Redact();
        EXPECT_EQ(Everything(), after) << change;
        restore();
    }
    EXPECT_GE(change, 15U);
    EXPECT_EQ(Everything(), after);
}

TEST_F(RedactedFolderTest, SignalWaitsUntilAllIsReplaced) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::signal(SIGINT, SIG_DFL);
        SetBeforeDiskChange([] { ::kill(::getpid(), SIGINT); });
        (void)Redact();
        ::_exit(0);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT) << status;
    EXPECT_EQ(Redact(), "nothing is left to redact in " + Path() + "\n");
    EXPECT_EQ(TempFolder::NamesIn(Path()).size(), 5U);
}

TEST_F(RedactedFolderTest, FullDiskChangesNothing) {
    const auto before = Everything();
    const pid_t child = ::fork();
    if (child == 0) {
        const rlimit limit = {60, 60};  // Less than the new README.md.
        ::setrlimit(RLIMIT_FSIZE, &limit);
        ::_exit(Redact().ends_with(": File too large; nothing in it was changed") ? 0 : 1);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(Everything(), before);
    EXPECT_THAT(Redact(), StartsWith("redacted in"));
}

}  // namespace
}  // namespace capture::test
