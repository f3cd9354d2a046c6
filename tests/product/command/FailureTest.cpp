// Every class of failure: one line on standard error, nothing on standard output, an exit status of its own.

#include "sandbox/Sandbox.h"
#include "test_support/Command.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <stdexcept>

namespace command::test {
namespace {

using namespace testsupport;

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::StartsWith;

void ExpectFailure(const Ended& ended, int exitStatus, const std::string& line) {
    EXPECT_EQ(ended.ExitStatus(), exitStatus);
    EXPECT_EQ(ended.out, "");
    EXPECT_EQ(ended.err, "mngsrvraid: " + line + "\n");
}

void ExpectFailureLike(const Ended& ended, int exitStatus, const std::string& part) {
    EXPECT_EQ(ended.ExitStatus(), exitStatus);
    EXPECT_EQ(ended.out, "");
    EXPECT_THAT(ended.err, StartsWith("mngsrvraid: "));
    EXPECT_THAT(ended.err, HasSubstr(part));
    EXPECT_EQ(CountLines(ended.err), 1U) << ended.err;
}

Ended RunFake(
    const char* mode, std::vector<std::string> words, std::function<void()> inChild = [] {}) {
    const InstallRoot root;
    root.UseFakeModule();
    words.insert(words.begin(), {"--install-dir", root.Path()});
    return Command{.words = words, .environment = {{"FAKE_MODULE", mode}}, .inChild = inChild}.Run();
}

TEST(MethodFailure, ToolIsNotInstalled) {
    const Command command{.words = {"get-info"}, .inChild = sandbox::EnterSandboxWithoutTool};
    ExpectFailure(
        command.Run(), 1,
        "get-info failed with return value 0x000000a0: the tool is not installed (03); install it in "
        "/opt/zorbalt/vdk, or name a scenario by --scenario");
}

TEST(MethodFailure, ToolCannotBeRun) {
    const InstallRoot root;
    ExpectFailure(
        RunCommand({"--install-dir", root.Path(), "--scenario", "faults/marker", "get-info"}), 1,
        "get-info failed with return value 0x000000a1: the tool's run failed (01) at all controllers: "
        "controller data (vdkcli -ctrlinfo -aAll): exit status 1: \"Error - Invalid input at or near token "
        "-aAll\"; look at the scenario faults/marker, and at what --trace 1,2 shows");
    EXPECT_TRUE(root.IsUntouched());
}

TEST(MethodFailure, SecondControllerFails) {
    const InstallRoot root;
    ExpectFailureLike(RunCommand({"--install-dir", root.Path(), "--scenario", "half-failed", "get-info"}), 1,
                      "(01) at controller 1: logical drives (vdkcli -ldpdinfo -a1): exit status 3: \"Ca\"; ");
    EXPECT_TRUE(root.IsUntouched());
}

TEST(MethodFailure, StoppedToolIsAFailedRun) {
    const InstallRoot root;
    // In a process group of its own, so that the kernel ends the stopped processes when the command has
    // ended.
    const Ended ended = Command{
        .words = {"--install-dir", root.Path(), "--scenario", "faults/stopped", "--trace", "2", "get-info"},
        .inChild = [] {
            EXPECT_EQ(::setpgid(0, 0), 0);
        }}.Run();
    EXPECT_EQ(ended.ExitStatus(), 1);
    EXPECT_THAT(ended.err, HasSubstr("ExecForeignModule WEXITSTATUS Error 0000137f."));
    EXPECT_THAT(ended.err, HasSubstr("(01)"));
}

TEST(SurroundingsFailure, FolderThatIsNoScenario) {
    const TempFolder folder;
    ExpectFailureLike(RunCommand({"--scenario", folder.Path().string(), "get-info"}), 4,
                      "is no scenario: it has no v.txt, server.conf or timeline; shipped scenarios: ");
}

TEST(MethodFailure, ReportCannotBeUnderstood) {
    const InstallRoot root;
    ExpectFailure(
        RunCommand({"--install-dir", root.Path(), "--scenario", "old", "get-pd-info", "0", "1", "1"}), 1,
        "get-pd-info failed with return value 0x80000001: the tool's report could not be understood (06) "
        "at controller 0: drive 1:1 (vdkcli -pdinfo -pd[1:1] -a0): exit status 0: \"199 Interface CRC Error "
        "Count (Ultra DMA/SAT 000A 75    75    0      000000002835 OK\"; look at the scenario old, and at "
        "what --trace 1,2 shows");
    EXPECT_TRUE(root.IsUntouched());
}

TEST(MethodFailure, ConversionLibraryIsMissing) {
    const InstallRoot root;
    fs::remove(root.Cim() / fs::path(COMMAND_TEST_CONVERSION_LIBRARY).filename());
    ExpectFailure(
        RunCommand({"--install-dir", root.Path(), "--scenario", "small", "get-info"}), 1,
        "get-info failed with return value 0x80000001: the conversion library could not be loaded (05); see "
        "that cim/ below the install root is complete");
}

TEST(MethodFailure, ApplicationKeyIsWrongOrMissing) {
    const InstallRoot root;
    root.SetKey("sesame");
    const std::string line =
        "get-info failed with return value 0x00000011: the caller has no operating authority (07); give the "
        "right "
        "application key by --app-key";
    ExpectFailure(
        RunCommand({"--install-dir", root.Path(), "--app-key", "wrong", "--scenario", "small", "get-info"}),
        1, line);
    ExpectFailure(RunCommand({"--install-dir", root.Path(), "--scenario", "small", "get-info"}), 1, line);
}

TEST(MethodFailure, SeveralReasonsAreToldNewestFirst) {
    ExpectFailure(
        RunFake("reasons", {"get-info"}), 1,
        "get-info failed with return value 0x80000001: the tool's report could not be opened (04), before "
        "that the tool's report could not be understood (06); see that the folder mngsrvraid.* below TMPDIR "
        "is "
        "left alone");
}

TEST(MethodFailure, WithoutAReasonTheLineSaysSo) {
    ExpectFailure(
        RunFake("wordless", {"get-info"}), 1,
        "get-info failed with return value 0x80000001: no reason was given; run again with --trace all to "
        "see where");
}

TEST(MethodFailure, LeavesTheOutputFileAsItWas) {
    const TempFolder folder;
    WriteFile(folder / "raid.xml", "old");
    ExpectFailureLike(
        RunCommand({"--scenario", "faults/marker", "--output", folder / "raid.xml", "get-info"}), 1, "(01)");
    EXPECT_EQ(ReadFile(folder / "raid.xml"), "old");
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"raid.xml"});
}

TEST(StatusFailure, ProviderReportsOne) {
    ExpectFailure(
        RunFake("status", {"get-info"}), 3,
        "get-info failed with WBEM status 0x8004100c: the class repository does not have the provider's "
        "class; check the installation");
}

TEST(StatusFailure, ProviderThrows) {
    ExpectFailure(
        RunFake("throw", {"get-pd-info", "0", "1", "2"}), 3,
        "get-pd-info failed with WBEM status 0x80041001: out of\\ncheese; run again with --trace all to see "
        "where");
}

TEST(StatusFailure, NamesTheInstallRootThatPeopleKnow) {
    const InstallRoot root;
    root.UseFakeModule();
    const Command command{.words = {"--install-dir", root.Path(), "get-info"},
                          .environment = {{"FAKE_MODULE", "throw-root"}}};
    ExpectFailure(command.Run(), 3,
                  "get-info failed with WBEM status 0x80041001: no key in " + root.Path() +
                      "/etc; run again with --trace all to see where");
}

TEST(StatusFailure, ProviderGivesNoResult) {
    ExpectFailure(RunFake("silent", {"get-info"}), 3,
                  "get-info ended without a result; run again with --trace all to see where");
}

TEST(WrongUse, IsToldInOneLine) {
    const std::string see = "; see mngsrvraid --help";
    const std::string missing =
        "a subcommand is missing: show, smart, health, expect, get-info, get-pd-info, capture, redact, "
        "diff, history, events or test-alert";
    const std::string three = "get-pd-info needs a drive: CTRL ENCL PD, or CTRL ENCL:PD";
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{}, missing},
        {{"--scenario", "small"}, missing},
        {{"get-pd-info"}, three},
        {{"get-pd-info", "0", "252"}, three},
        {{"get-pd-info", "0", "252", "1", "2"}, "unexpected argument \"2\""},
        {{"get-info", "now"}, "unexpected argument \"now\""},
        {{"get-info", "get-info"}, "unexpected argument \"get-info\""},
        {{"status"}, "unexpected argument \"status\""},
        {{"--scen", "small", "get-info"}, "unknown option \"--scen\""},
        {{"get-info", "-x"}, "unknown option \"-x\""},
        {{"test-alert", "--output", "a"},
         "test-alert prints what each channel says as it comes, which --output does not store"},
        {{"test-alert", "--config", ""}, "--config needs a path that is not empty"},
        {{"show", "--config", "a"}, "unknown option \"--config\""},
        {{"helth"}, "unexpected argument \"helth\" (did you mean health?)"},
        {{"--fromat=json", "show"}, "unknown option \"--fromat=json\" (did you mean --format?)"},
        {{"show", "--smrt"}, "unknown option \"--smrt\" (did you mean --smart?)"},
        {{"get-info", "--smrt"}, "unknown option \"--smrt\""},
        {{"show", "--jobs", "2"}, "--jobs goes with --smart alone"},
        {{"show", "--document", "-", "--jobs", "2"}, "--jobs goes with --smart alone"},
        {{"show", "--smart", "--jobs", "0"}, "--jobs takes a number from 1 to 64, not \"0\""},
        {{"show", "--smart", "--jobs", "65"}, "--jobs takes a number from 1 to 64, not \"65\""},
        {{"show", "--smart", "--jobs", "some"}, "--jobs takes a number from 1 to 64, not \"some\""},
        {{"get-info", "--jobs", "2"}, "unknown option \"--jobs\""},
        {{"--timeout", "soon", "show"},
         "--timeout takes whole seconds up to 1000000, or 0 for none, not \"soon\""},
        {{"--timeout", "-1", "show"},
         "--timeout takes whole seconds up to 1000000, or 0 for none, not \"-1\""},
        {{"--trace", "3", "get-info"}, "--trace takes any of 1,2,4,8 separated by commas, or all, not \"3\""},
        {{"--trace", "1,", "get-info"},
         "--trace takes any of 1,2,4,8 separated by commas, or all, not \"1,\""},
        {{"capture"}, "capture needs a folder to make: DIR"},
        {{"redact"}, "redact needs the folder of a capture: DIR"},
        {{"capture", "/no/a", "--redact-word", "acme"}, "--redact-word goes with --redact"},
        {{"redact", "/no/a", "--redact-word"}, "--redact-word needs a value"},
        {{"redact", "/no/a", "--redact-word", "acme", "--redact-word", "ab"},
         "--redact-word takes a word of three characters or more, not \"ab\""},
        {{"capture", "/no/a", "--redact", "--redact-word", "-:-"},
         "--redact-word takes a word of three characters or more, not \"-:-\""},
        {{"redact", "/no/a", "/no/b"}, "unexpected argument \"/no/b\""},
        {{"--format", "xml", "redact", "/no/a"}, "--format does not go with redact"},
        {{"--output", "", "get-info"}, "--output needs a path that is not empty"},
        {{"get-info", "--output"}, "--output needs a value"},
        {{"--output", "a", "--output", "b", "get-info"}, "--output is given more than once"},
    };
    for (const auto& [words, line] : cases) {
        ExpectFailure(RunCommand(words), 2, line + see);
    }
}

TEST(Surroundings, ModuleIsMissing) {
    const TempFolder folder;
    ExpectFailureLike(RunCommand({"--install-dir", folder.Path().string(), "get-info"}), 4,
                      "the RAID module cannot be loaded: " + (folder / "cim/libqelp_ZORBALT_MngSrvRaid.so"));
}

TEST(Surroundings, ModuleIsNone) {
    const InstallRoot root;
    const fs::path module = root.Cim() / fs::path(COMMAND_TEST_MODULE).filename();
    fs::remove(module);
    fs::create_symlink(COMMAND_TEST_CONVERSION_LIBRARY, module);
    ExpectFailureLike(RunCommand({"--install-dir", root.Path(), "get-info"}), 4, "undefined symbol: create");
}

TEST(Surroundings, ModuleGivesNoProvider) {
    ExpectFailureLike(RunFake("no-provider", {"get-info"}), 4, "create gave no provider");
}

TEST(Surroundings, ScenarioIsMissing) {
    const Ended ended = RunCommand({"--scenario", "no\nsuch", "get-info"});
    ExpectFailureLike(ended, 4, "there is no scenario no\\nsuch; shipped scenarios: awkward, empty, faults/");
    EXPECT_THAT(ended.err, HasSubstr(", watch/moves/by-inquiry, well\n"));
}

TEST(Surroundings, ScenarioIsMisspelt) {
    constexpr std::pair<const char*, const char*> kNames[] = {
        {"lrage", "large"},
        {"Small", "small"},
        {"faults/flakey", "faults/flaky"},
        {"falts/flaky", "faults/flaky"},
        {"flaky", "faults/flaky"},
        {"watch/loses-drive/fialed", "watch/loses-drive/failed"}};
    for (const auto& [typed, meant] : kNames) {
        ExpectFailure(RunCommand({"--scenario", typed, "get-info"}), 4,
                      std::string("there is no scenario ") + typed + "; did you mean " + meant + "?");
    }
    for (const char* const typed : {"x", "faults/foo", "full"}) {
        ExpectFailureLike(RunCommand({"--scenario", typed, "get-info"}), 4,
                          std::string("there is no scenario ") + typed + "; shipped scenarios: awkward, ");
    }
}

TEST(Surroundings, ScenarioIsAFile) {
    const TempFolder folder;
    WriteFile(folder / "v.txt", "");
    ExpectFailureLike(RunCommand({"--scenario", folder / "v.txt", "get-info"}), 4, "not a folder: ");
}

// Makes every `unshare` of this process and its children fail as it does in a confined container.
void RefuseUnshare() {
    std::array<sock_filter, 4> filter = {
        {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, 0), BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_unshare, 0, 1),
         BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM), BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)}};
    const sock_fprog program{filter.size(), filter.data()};
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
        ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0) {
        throw std::runtime_error("no filter");
    }
}

TEST(Surroundings, KernelRefusesAPrivateView) {
    const Command command{.words = {"--scenario", "small", "get-info"}, .inChild = RefuseUnshare};
    const Ended ended = command.Run();
    ExpectFailureLike(
        ended, 4,
        "the scenario cannot take the tool's place: the kernel refuses a private view of the file "
        "system: unshare with a user namespace: Operation not permitted; run as root, or ");
}

TEST(Surroundings, TraceFileCannotBeWritten) {
    ExpectFailure(RunCommand({"--trace-file", "/no/such/file", "get-info"}), 4,
                  "the trace file /no/such/file cannot be written: No such file or directory; name another "
                  "file by --trace-file");
}

TEST(Surroundings, OutputDirectoryIsMissing) {
    // Refused before anything else is done: the scenario is not even looked for.
    ExpectFailure(
        RunCommand({"--output", "/no/such/file", "--scenario", "nope", "get-info"}), 4,
        "the document cannot be written to /no/such/file: No such file or directory; name another file by "
        "--output");
}

TEST(Surroundings, OutputDirectoryIsNotWritable) {
    // Refused to root as well.
    ExpectFailureLike(RunCommand({"--output", "/proc/raid.xml", "--scenario", "small", "get-info"}), 4,
                      "the document cannot be written to /proc/raid.xml: ");
}

TEST(Surroundings, OutputIsADirectory) {
    const TempFolder folder;
    ExpectFailureLike(RunCommand({"--output", folder.Path().string(), "get-info"}), 4, "Is a directory");
    EXPECT_TRUE(folder.Names().empty());
}

TEST(Surroundings, DeviceIsFull) {
    const std::string reason = ": No space left on device; name another file by --output";
    ExpectFailure(RunCommand({"--output", "/dev/full", "--scenario", "empty", "get-info"}), 4,
                  "the document cannot be written to /dev/full" + reason);
    const Command toFull{.words = {"--scenario", "empty", "get-info"}, .standardOutput = "/dev/full"};
    ExpectFailure(toFull.Run(), 4, "the document cannot be written to standard output" + reason);
    const Command help{.words = {"--help"}, .standardOutput = "/dev/full"};
    ExpectFailure(help.Run(), 4, "the document cannot be written to standard output" + reason);
}

TEST(Surroundings, StandardOutputIsClosed) {
    const TempFolder folder;
    const Command command{.words = {"--scenario", "empty", "--trace-file", folder / "trace", "get-info"},
                          .inChild = [] { ::close(STDOUT_FILENO); }};
    ExpectFailureLike(command.Run(), 4, "standard output: Bad file descriptor");
    EXPECT_EQ(ReadFile(folder / "trace").find("<RAID"), std::string::npos);
}

TEST(Surroundings, NothingHalfWrittenStaysBehind) {
    const TempFolder folder;
    WriteFile(folder / "raid.xml", "old");
    const Ended ended = RunFake("large", {"--output", folder / "raid.xml", "get-info"}, [] {
        constexpr rlim_t kMost = 1'000'000;
        const rlimit limit{kMost, kMost};
        if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) {
            throw std::runtime_error("no limit");
        }
    });
    ExpectFailureLike(ended, 4, "File too large");
    EXPECT_EQ(ReadFile(folder / "raid.xml"), "old");
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"raid.xml"});
}

}  // namespace
}  // namespace command::test
