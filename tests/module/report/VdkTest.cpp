#include "report/CMSRAID_VDK.h"

#include "test_support/ModuleTest.h"
#include "test_support/TraceHook.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <new>
#include <sstream>
#include <stdexcept>

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testsupport::PausesTaken;
using testsupport::ToolBench;

bool g_hasRoomForProcesses = true;

constexpr const char* kMarker = "Error - Invalid input at or near token";

class VdkTest : public testsupport::ModuleTest {
  protected:
    [[nodiscard]] std::string ResultFile() const { return m_Root.Path() / "result.txt"; }

    [[nodiscard]] std::string Result() const {
        std::ifstream file(ResultFile());
        return {std::istreambuf_iterator<char>(file), {}};
    }

    [[nodiscard]] std::string VersionFrom(const std::string& text) {
        m_Tool.Answer("v.txt", text);
        return CMSRAID_VDK::GetVDKVersion(ResultFile());
    }
};

TEST_F(VdkTest, ASuccessfulRunLeavesStandardOutputAndErrorInTheFile) {
    m_Tool.Answer("v.txt", "Product Version : 4.1\n");
    EXPECT_TRUE(CMSRAID_VDK::ExecCli("vdkcli -v; echo complaint >&2", ResultFile()));
    EXPECT_EQ(Result(), "Product Version : 4.1\ncomplaint\n");
    EXPECT_THAT(ToolBench::Runs(), ElementsAre("-v"));
    EXPECT_THAT(m_Trace.Lines(), ElementsAre("1 execute vdkcli command.(vdkcli -v; echo complaint >&2)"));
    EXPECT_EQ(PausesTaken(), 0U);
}

TEST_F(VdkTest, WithoutTheToolNothingIsRun) {
    m_Tool.Uninstall();
    EXPECT_FALSE(CMSRAID_VDK::IsVDKInstalled());
    EXPECT_FALSE(CMSRAID_VDK::ExecCli("vdkcli -v", ResultFile()));
    EXPECT_THAT(m_Trace.Lines(), ElementsAre("2 VDK is not installed."));
    EXPECT_FALSE(std::filesystem::exists(ResultFile()));
}

TEST_F(VdkTest, AToolThatSucceedsWithTheMarkerHasSucceeded) {
    m_Tool.Answer("v.txt", std::string(kMarker) + " -v\n");
    EXPECT_TRUE(CMSRAID_VDK::ExecCli("vdkcli -v", ResultFile()));
    EXPECT_THAT(ToolBench::Runs(), ElementsAre("-v"));
}

TEST_F(VdkTest, ARejectedCommandIsNotTriedAgain) {
    EXPECT_FALSE(CMSRAID_VDK::ExecCli("vdkcli -unknown", ResultFile()));
    EXPECT_EQ(Result().substr(0, std::string(kMarker).size()), kMarker);
    EXPECT_THAT(ToolBench::Runs(), ElementsAre("-unknown"));
    EXPECT_EQ(PausesTaken(), 0U);
    EXPECT_THAT(m_Trace.Lines(), ElementsAre("1 execute vdkcli command.(vdkcli -unknown)",
                                             "2 Failed to execute vdkcli command.(vdkcli -unknown)"));
}

TEST_F(VdkTest, AForkThatFailsIsAFailedRunWithoutATrace) {
    g_hasRoomForProcesses = false;
    const bool hasSucceeded = CMSRAID_VDK::ExecCli("vdkcli -v", ResultFile());
    g_hasRoomForProcesses = true;
    EXPECT_FALSE(hasSucceeded);
    EXPECT_EQ(PausesTaken(), 2U);
    EXPECT_THAT(Failures(), ElementsAre("Failed to execute vdkcli command.(vdkcli -v)"));
    EXPECT_THAT(ToolBench::Runs(), IsEmpty());
}

TEST_F(VdkTest, AMarkerThatIsNotAtTheVeryStartCostsThreeRunsAndTwoPauses) {
    for (const std::string before : {" ", "first line\n"}) {
        testsupport::ResetPauses();
        EXPECT_FALSE(CMSRAID_VDK::ExecCli(
            "vdkcli -v >/dev/null 2>&1; printf '" + before + kMarker + "'; exit 1", ResultFile()));
        EXPECT_EQ(PausesTaken(), 2U);
    }
    EXPECT_THAT(ToolBench::Runs(), ElementsAre("-v", "-v", "-v", "-v", "-v", "-v"));
}

TEST_F(VdkTest, AMarkerThatIsCutShortIsNoMarker) {
    const std::string cut(kMarker, 37);
    EXPECT_FALSE(
        CMSRAID_VDK::ExecCli("vdkcli -v >/dev/null 2>&1; printf '" + cut + "'; exit 1", ResultFile()));
    EXPECT_EQ(PausesTaken(), 2U);
}

TEST_F(VdkTest, AToolThatRecoversAtTheThirdRunHasSucceeded) {
    m_Tool.Answer("v.txt", "Product Version : 4.1\n");
    m_Tool.Answer("v.do", "fail-first 2\n");
    EXPECT_TRUE(CMSRAID_VDK::ExecCli("vdkcli -v", ResultFile()));
    EXPECT_EQ(PausesTaken(), 2U);
    EXPECT_THAT(ToolBench::Runs(), ElementsAre("-v", "-v", "-v"));
    EXPECT_THAT(Failures(), IsEmpty());
}

TEST_F(VdkTest, AnEmptyResultFilePathStartsNoProcess) {
    EXPECT_FALSE(CMSRAID_VDK::ExecCli("vdkcli -v", ""));
    EXPECT_THAT(ToolBench::Runs(), IsEmpty());
    EXPECT_EQ(PausesTaken(), 2U);
    EXPECT_THAT(Failures(), ElementsAre("Failed to execute vdkcli command.(vdkcli -v)"));
}

TEST_F(VdkTest, AResultFileThatCannotBeMadeIsTriedThreeTimes) {
    EXPECT_FALSE(CMSRAID_VDK::ExecCli("vdkcli -v", m_Root.Path() / "missing" / "result.txt"));
    EXPECT_THAT(ToolBench::Runs(), IsEmpty());
    EXPECT_EQ(PausesTaken(), 2U);
}

TEST_F(VdkTest, AChildKilledByASignalIsTracedWithItsRawStatusAndTriedAgain) {
    EXPECT_FALSE(CMSRAID_VDK::ExecCli("vdkcli -v; kill -9 $$", ResultFile()));
    EXPECT_EQ(PausesTaken(), 2U);
    EXPECT_THAT(Failures(), ElementsAre("ExecForeignModule WEXITSTATUS Error 00000009.",
                                        "ExecForeignModule WEXITSTATUS Error 00000009.",
                                        "ExecForeignModule WEXITSTATUS Error 00000009.",
                                        "Failed to execute vdkcli command.(vdkcli -v; kill -9 $$)"));
}

TEST_F(VdkTest, AStoppedChildIsOneFailedRunEachTimeAndNotWaitedForAgain) {
    EXPECT_FALSE(CMSRAID_VDK::ExecCli("vdkcli >/dev/null; kill -STOP $$", ResultFile()));
    EXPECT_THAT(Failures(), Contains("ExecForeignModule WEXITSTATUS Error 0000137f.").Times(3));
    // Three stopped shells are left; they end here.
    std::ifstream children("/proc/self/task/" + std::to_string(::gettid()) + "/children");
    int stopped = 0;
    for (pid_t child = 0; children >> child; ++stopped) {
        EXPECT_EQ(::kill(child, SIGKILL), 0);
        EXPECT_EQ(::waitpid(child, nullptr, 0), child);
    }
    EXPECT_EQ(stopped, 3);
}

TEST_F(VdkTest, WithChildrenReapedByTheSystemTheWaitFails) {
    const auto old = std::signal(SIGCHLD, SIG_IGN);
    EXPECT_FALSE(CMSRAID_VDK::ExecCli("vdkcli -v", ResultFile()));
    std::signal(SIGCHLD, old);
    EXPECT_THAT(Failures(), Contains("ExecForeignModule waitpid Error.").Times(3));
}

class LibraryPathTest : public VdkTest {
  protected:
    LibraryPathTest() {
        if (const char* const old = std::getenv("LD_LIBRARY_PATH")) {
            m_Old = old;
            m_WasSet = true;
        }
    }
    ~LibraryPathTest() override {
        if (m_WasSet) {
            ::setenv("LD_LIBRARY_PATH", m_Old.c_str(), 1);
        } else {
            ::unsetenv("LD_LIBRARY_PATH");
        }
    }
    std::string PathInChild() {
        EXPECT_TRUE(
            CMSRAID_VDK::ExecCli("vdkcli -v >/dev/null 2>&1; printf %s \"$LD_LIBRARY_PATH\"", ResultFile()));
        return Result();
    }
    std::string m_Old;
    bool m_WasSet = false;
};

TEST_F(LibraryPathTest, TheToolsDirectoryFollowsTheOnesThatAreThere) {
    ::setenv("LD_LIBRARY_PATH", "/usr/local/mine", 1);
    EXPECT_EQ(PathInChild(), "/usr/local/mine:/opt/zorbalt/vdk/lib");
    EXPECT_STREQ(std::getenv("LD_LIBRARY_PATH"), "/usr/local/mine");
}

TEST_F(LibraryPathTest, AnEmptyPathGivesAnEmptyFirstDirectory) {
    ::setenv("LD_LIBRARY_PATH", "", 1);
    EXPECT_EQ(PathInChild(), ":/opt/zorbalt/vdk/lib");
}

TEST_F(LibraryPathTest, WithoutAPathTheToolsDirectoryStandsAlone) {
    ::unsetenv("LD_LIBRARY_PATH");
    EXPECT_EQ(PathInChild(), "/opt/zorbalt/vdk/lib");
    EXPECT_EQ(std::getenv("LD_LIBRARY_PATH"), nullptr);
}

TEST_F(LibraryPathTest, TheRestOfTheEnvironmentReachesTheTool) {
    ::setenv("MSRAID_TEST_WORD", "kept", 1);
    EXPECT_TRUE(
        CMSRAID_VDK::ExecCli("vdkcli -v >/dev/null 2>&1; printf %s \"$MSRAID_TEST_WORD\"", ResultFile()));
    EXPECT_EQ(Result(), "kept");
    ::unsetenv("MSRAID_TEST_WORD");
}

TEST_F(VdkTest, TheResultFileIsEmptiedAndHasTheModeThatTheUmaskLeaves) {
    std::ofstream(ResultFile()) << std::string(100000, 'x');
    std::filesystem::remove(ResultFile());
    const mode_t old = ::umask(0027);
    EXPECT_TRUE(CMSRAID_VDK::ExecCli("vdkcli -v >/dev/null 2>&1; true", ResultFile()));
    ::umask(old);
    EXPECT_EQ(std::filesystem::status(ResultFile()).permissions(), std::filesystem::perms{0640});
    std::ofstream(ResultFile()) << std::string(100000, 'x');
    EXPECT_TRUE(CMSRAID_VDK::ExecCli("vdkcli -v >/dev/null 2>&1; echo new", ResultFile()));
    EXPECT_EQ(Result(), "new\n");
}

TEST_F(VdkTest, EverybodyMayReadAndWriteTheResultFileWhereNoUmaskForbidsIt) {
    const mode_t old = ::umask(0);
    EXPECT_TRUE(CMSRAID_VDK::ExecCli("vdkcli -v >/dev/null 2>&1; true", ResultFile()));
    ::umask(old);
    EXPECT_EQ(std::filesystem::status(ResultFile()).permissions(), std::filesystem::perms{0666});
}

TEST_F(VdkTest, TheToolHasTheResultFileAsItsStandardOutputAndErrorAndNotOnceMore) {
    // The list names the one that it is made through as well, which is gone then.
    EXPECT_TRUE(
        CMSRAID_VDK::ExecCli("vdkcli -v >/dev/null 2>&1; readlink /proc/$$/fd/*; true", ResultFile()));
    std::istringstream descriptors(Result());
    int count = 0;
    for (std::string target; std::getline(descriptors, target);) {
        count += target == ResultFile() ? 1 : 0;
    }
    EXPECT_EQ(count, 2) << Result();
}

TEST_F(VdkTest, NoDescriptorAndNoChildIsLeft) {
    const auto descriptors = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    };
    const auto before = descriptors();
    for (const char* const end : {"true", "false", "kill -9 $$"}) {
        static_cast<void>(CMSRAID_VDK::ExecCli(std::string("vdkcli -v; ") + end, ResultFile()));
    }
    EXPECT_EQ(descriptors(), before);
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

/// Traces of the child, which no listener hears.
class ChildTraceTest : public VdkTest {
  protected:
    /// Runs the tool once `prepare` has spoiled something, in a child process; returns its trace of failures.
    /// With `toStandardError` the trace takes the way through standard error instead of a file.
    std::string TraceWhen(const std::function<void()>& prepare, const std::string& resultFile,
                          bool toStandardError = false) {
        const std::string traceFile = m_Root.Path() / "trace";
        const pid_t child = ::fork();
        if (child == 0) {
            if (toStandardError) {
                const int file = ::open(traceFile.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
                ::dup2(file, STDERR_FILENO);
            } else if (!CTraceOutput::OpenFile(traceFile)) {
                ::_exit(2);
            }
            prepare();
            CTraceOutput::SetLevels(2);
            ::_exit(CMSRAID_VDK::ExecCli("vdkcli -v", resultFile) ? 1 : 0);
        }
        int status = 0;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
        return testsupport::ReadFile(traceFile);
    }
};

TEST_F(ChildTraceTest, AResultFileThatCannotBeOpened) {
    EXPECT_THAT(TraceWhen([] {}, m_Root.Path() / "missing" / "result.txt"),
                ::testing::HasSubstr("\tmsraid\t2\tExecForeignModule open Error 00000002.\n"));
}

TEST_F(ChildTraceTest, AStandardOutputThatIsNone) {
    EXPECT_THAT(TraceWhen([] { std::fclose(stdout); }, ResultFile()),
                ::testing::HasSubstr("\tmsraid\t2\tExecForeignModule dup2 Error 00000009.\n"));
}

TEST_F(ChildTraceTest, AStandardErrorThatIsNone) {
    EXPECT_THAT(TraceWhen([] { std::fclose(stderr); }, ResultFile()),
                ::testing::HasSubstr("\tmsraid\t2\tExecForeignModule dup2 Error 00000009.\n"));
}

TEST_F(ChildTraceTest, AShellThatIsNotFound) {
    EXPECT_THAT(TraceWhen([] { ::setenv("PATH", "/nonexistent", 1); }, ResultFile()),
                ::testing::HasSubstr("\tmsraid\t2\tExecForeignModule execlp Error 00000002.\n"));
}

TEST_F(ChildTraceTest, ReachesStandardErrorAlthoughTheToolsOwnGoesToTheResultFile) {
    EXPECT_THAT(TraceWhen([] { ::setenv("PATH", "/nonexistent", 1); }, ResultFile(), true),
                ::testing::HasSubstr("\tmsraid\t2\tExecForeignModule execlp Error 00000002.\n"));
}

TEST_F(VdkTest, AResultFileThatIsTheStandardOutputAlreadyStaysOpen) {
    m_Tool.Answer("v.txt", "Product Version : 4.1\n");
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(1);  // The lowest free descriptor, which the result file gets.
        ::_exit(CMSRAID_VDK::ExecCli("vdkcli -v; echo more >&2", ResultFile()) ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(Result(), "Product Version : 4.1\nmore\n");
}

TEST_F(VdkTest, WithStandardStreamsClosedTheReportStillArrives) {
    m_Tool.Answer("v.txt", "Product Version : 4.1\n");
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(0);
        ::close(1);
        ::close(2);
        ::_exit(CMSRAID_VDK::ExecCli("vdkcli -v; echo more >&2", ResultFile()) ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(Result(), "Product Version : 4.1\nmore\n");
}

TEST_F(VdkTest, ADirectoryThatIsGoneIsNothingForTheToolToComplainOf) {
    m_Tool.Answer("v.txt", "Product Version : 4.1\n");
    const pid_t child = ::fork();
    if (child == 0) {
        const std::filesystem::path gone = m_Root.Path() / "gone";
        std::filesystem::create_directory(gone);
        std::filesystem::current_path(gone);
        std::filesystem::remove(gone);
        ::_exit(CMSRAID_VDK::ExecCli("vdkcli -v; pwd", ResultFile()) ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(Result(), "Product Version : 4.1\n/\n");
}

TEST_F(VdkTest, AFailingChildDoesNotFlushWhatTheHostHadBuffered) {
    const std::string captured = m_Root.Path() / "captured";
    const pid_t child = ::fork();
    if (child == 0) {
        FILE* const out = std::fopen(captured.c_str(), "w");
        std::fputs("once", out);
        static_cast<void>(CMSRAID_VDK::ExecCli("vdkcli -v", m_Root.Path() / "missing" / "result.txt"));
        std::fclose(out);
        ::_exit(0);
    }
    ASSERT_EQ(::waitpid(child, nullptr, 0), child);
    EXPECT_EQ(std::filesystem::file_size(captured), 4U);
}

TEST_F(VdkTest, AChildWhoseTraceThrowsIsAFailedRunLikeAnyOther) {
    testsupport::OnTrace([](int /*level*/, std::string_view text) {
        if (text.starts_with("ExecForeignModule open Error")) {
            throw std::runtime_error("no trace");
        }
    });
    EXPECT_FALSE(CMSRAID_VDK::ExecCli("vdkcli -v", m_Root.Path() / "missing" / "result.txt"));
    testsupport::ResetTrace();
    EXPECT_THAT(Failures(), ElementsAre("Failed to execute vdkcli command.(vdkcli -v)"));
}

TEST_F(VdkTest, AnInterruptedWaitIsResumed) {
    m_Tool.Answer("v.txt", "Product Version : 4.1\n");
    struct sigaction action {};
    struct sigaction old {};
    action.sa_handler = [](int) {};
    ASSERT_EQ(::sigaction(SIGALRM, &action, &old), 0);  // Without SA_RESTART.
    const itimerval often{{0, 2000}, {0, 2000}};
    ASSERT_EQ(::setitimer(ITIMER_REAL, &often, nullptr), 0);
    EXPECT_TRUE(CMSRAID_VDK::ExecCli("vdkcli -v; sleep 0.1", ResultFile()));
    const itimerval never{};
    ::setitimer(ITIMER_REAL, &never, nullptr);
    ::sigaction(SIGALRM, &old, nullptr);
    EXPECT_THAT(Failures(), IsEmpty());
}

TEST_F(VdkTest, TheVersionIsWhatFollowsTheColonAndOneCharacter) {
    EXPECT_EQ(VersionFrom("Tool\nProduct Version : 4.1 \r\nProduct Version : 9.9\n"), "4.1");
    EXPECT_FALSE(std::filesystem::exists(ResultFile()));
}

TEST_F(VdkTest, WithoutABlankBehindTheColonTheVersionLosesItsFirstCharacter) {
    EXPECT_EQ(VersionFrom("Product Version :14.1\n"), "4.1");
}

TEST_F(VdkTest, TheVersionsFrontIsNotTrimmed) {
    EXPECT_EQ(VersionFrom("Product Version :  4.1\n"), " 4.1");
}

TEST_F(VdkTest, AVersionOfWhiteSpaceIsEmpty) {
    EXPECT_EQ(VersionFrom("Product Version : \t \r\n"), "");
}

TEST_F(VdkTest, WithoutTheKeyTheVersionIsEmpty) {
    EXPECT_EQ(VersionFrom("Version : 4.1\n"), "");
    EXPECT_FALSE(std::filesystem::exists(ResultFile()));
}

TEST_F(VdkTest, OnlyTheFirstLineWithTheKeyCounts) {
    EXPECT_EQ(VersionFrom("the Product Version follows\nProduct Version : 4.1\n"), "");
}

TEST_F(VdkTest, AColonThatEndsTheVersionLineLeavesByExceptionAndKeepsTheFile) {
    EXPECT_THROW(static_cast<void>(VersionFrom("Product Version :\n")), std::out_of_range);
    EXPECT_TRUE(std::filesystem::exists(ResultFile()));
}

TEST_F(VdkTest, AnyOtherExceptionTakesTheVersionFileAlong) {
    m_Tool.Answer("v.do", "exit 3\n");
    testsupport::OnPause([this] {
        EXPECT_TRUE(std::filesystem::exists(ResultFile()));
        throw std::bad_alloc();
    });
    EXPECT_THROW(static_cast<void>(CMSRAID_VDK::GetVDKVersion(ResultFile())), std::bad_alloc);
    EXPECT_FALSE(std::filesystem::exists(ResultFile()));
    EXPECT_THAT(Failures(), IsEmpty());
}

TEST_F(VdkTest, AColonBeforeOneLastCharacterGivesAnEmptyVersion) {
    EXPECT_EQ(VersionFrom("Product Version :x\n"), "");
}

TEST_F(VdkTest, AFailedVersionQueryGivesAnEmptyVersionAndDeletesTheFile) {
    EXPECT_EQ(CMSRAID_VDK::GetVDKVersion(ResultFile()), "");
    EXPECT_FALSE(std::filesystem::exists(ResultFile()));
}

TEST_F(VdkTest, AVersionFileThatCannotBeDeletedIsTraced) {
    EXPECT_EQ(CMSRAID_VDK::GetVDKVersion(""), "");
    EXPECT_THAT(Failures(), Contains("Failed to delete file()."));
}

}  // namespace

// In the C library's place, so that it can fail.
pid_t fork() noexcept {
    static const auto real = reinterpret_cast<decltype(&fork)>(::dlsym(RTLD_NEXT, "fork"));
    if (!g_hasRoomForProcesses) {
        errno = EAGAIN;
        return -1;
    }
    return real();
}
