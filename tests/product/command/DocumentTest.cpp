// What the command prints and stores when all goes well.

#include "test_support/Command.h"
#include "test_support/XmlLint.h"

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace command::test {
namespace {

using namespace testsupport;

namespace fs = std::filesystem;

class ShippedScenario : public testing::TestWithParam<const char*> {};

TEST_P(ShippedScenario, GivesAValidDocumentAndNothingElse) {
    const InstallRoot root;
    const Ended ended = RunCommand({"--install-dir", root.Path(), "--scenario", GetParam(), "get-info"});
    EXPECT_EQ(ended.ExitStatus(), 0);
    EXPECT_EQ(ended.err, "");
    EXPECT_EQ(testsupport::ValidateAgainstSchema(ended.out), "");
    EXPECT_TRUE(root.IsUntouched());
}

INSTANTIATE_TEST_SUITE_P(All, ShippedScenario, testing::Values("awkward", "empty", "large", "old", "small"),
                         [](const auto& scenario) { return scenario.param; });

TEST(Document, HoldsTheDriveThatWasAskedFor) {
    const Ended ended = RunCommand({"get-pd-info", "--scenario", "large", "0", "252", "3"});
    EXPECT_EQ(ended.ExitStatus(), 0);
    EXPECT_EQ(ended.err, "");
    EXPECT_EQ(testsupport::ValidateAgainstSchema(ended.out), "");
    EXPECT_EQ(testsupport::EvaluateXPath(ended.out, "string(//Item[@Name='Slot No.']/@Value)"), "3");
}

TEST(Document, IsTheSameWhereverTheOptionsStand) {
    const Ended before = RunCommand({"--scenario", "small", "get-pd-info", "0", "252", "1"});
    EXPECT_EQ(before.ExitStatus(), 0);
    EXPECT_NE(before.out, "");
    EXPECT_EQ(RunCommand({"get-pd-info", "0", "--scenario=small", "252", "1"}).out, before.out);
    EXPECT_EQ(RunCommand({"get-pd-info", "0", "252", "1", "--scenario", "small"}).out, before.out);
}

TEST(Document, IsTheSameForEveryWayToNameItsScenario) {
    const TempFolder folder;
    fs::copy(fs::path(COMMAND_TEST_SCENARIOS) / "small", folder.Path() / "mine", fs::copy_options::recursive);
    fs::create_directory_symlink("mine", folder.Path() / "link");
    const std::string expected = RunCommand({"--scenario", "small", "get-info"}).out;
    EXPECT_NE(expected, "");
    const std::vector<std::string> names = {"mine", "./mine/", "link", "link/",
                                            "../" + folder.Path().filename().string() + "/mine"};
    for (const std::string& name : names) {
        const Command command{.words = {"--scenario", name, "get-info"},
                              .inChild = [&] { EXPECT_EQ(::chdir(folder.Path().c_str()), 0); }};
        const Ended ended = command.Run();
        EXPECT_EQ(ended.err, "") << name;
        EXPECT_EQ(ended.out, expected) << name;
    }
    EXPECT_EQ(RunCommand({"--scenario", folder / "mine", "get-info"}).out, expected);
}

TEST(Document, FolderInTheWorkingDirectoryComesBeforeAShippedScenario) {
    const TempFolder folder;
    fs::copy(fs::path(COMMAND_TEST_SCENARIOS) / "empty", folder.Path() / "small",
             fs::copy_options::recursive);
    const Command command{.words = {"--scenario", "small", "get-info"},
                          .inChild = [&] { EXPECT_EQ(::chdir(folder.Path().c_str()), 0); }};
    EXPECT_EQ(command.Run().out, RunCommand({"--scenario", "empty", "get-info"}).out);
}

TEST(Document, ParametersAndKeyArePassedOnAsTheyWereTyped) {
    const InstallRoot root;
    root.UseFakeModule();
    const Command command{
        .words = {"--install-dir", root.Path(), "--app-key", " k'\" ", "get-pd-info", "007", "", "1e3 [x]"},
        .environment = {{"FAKE_MODULE", "parameters"}}};
    const Ended ended = command.Run();
    EXPECT_EQ(ended.out, "[007][][1e3 [x]][ k'\" ]");
    EXPECT_EQ(
        ended.err,
        "mngsrvraid: warning: ENCL \"\" is no number from 0 to 2147483647; it is passed on, and read as 0\n"
        "mngsrvraid: warning: PD \"1e3 [x]\" is no number from 0 to 2147483647; it is passed on, and read as "
        "1\n");
    EXPECT_EQ(ended.ExitStatus(), 0);
}

TEST(Document, CallerWithTheRightKeyIsLetIn) {
    const InstallRoot root;
    root.SetKey("sesame");
    const Ended ended =
        RunCommand({"--install-dir", root.Path(), "--app-key", "sesame", "--scenario", "empty", "get-info"});
    EXPECT_EQ(ended.err, "");
    EXPECT_EQ(ended.ExitStatus(), 0);
}

TEST(Document, InstallRootMayBeRelative) {
    const InstallRoot root;
    const Command command{.words = {"--install-dir", ".", "--scenario", "empty", "get-info"},
                          .inChild = [&] { EXPECT_EQ(::chdir(root.Path().c_str()), 0); }};
    EXPECT_EQ(command.Run().ExitStatus(), 0);
    EXPECT_TRUE(root.IsUntouched());
}

TEST(Document, OutputFileHasTheWholeDocumentAndTheUsualMode) {
    const TempFolder folder;
    const Command command{.words = {"--scenario", "small", "--output", folder / "raid.xml", "get-info"},
                          .inChild = [] { ::umask(027); }};
    const Ended ended = command.Run();
    EXPECT_EQ(ended.ExitStatus(), 0);
    EXPECT_EQ(ended.out, "");
    EXPECT_EQ(ended.err, "");
    EXPECT_EQ(ReadFile(folder / "raid.xml"), RunCommand({"--scenario", "small", "get-info"}).out);
    EXPECT_EQ(fs::status(folder / "raid.xml").permissions(), fs::perms(0640));
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"raid.xml"});
}

TEST(Document, OutputThroughALinkReplacesTheFileAndKeepsTheLink) {
    const TempFolder folder;
    WriteFile(folder / "raid.xml", "old");
    fs::create_symlink("raid.xml", folder / "link");
    EXPECT_EQ(RunCommand({"--scenario", "empty", "--output", folder / "link", "get-info"}).ExitStatus(), 0);
    EXPECT_TRUE(fs::is_symlink(folder / "link"));
    EXPECT_EQ(ReadFile(folder / "raid.xml"), RunCommand({"--scenario", "empty", "get-info"}).out);
}

TEST(Document, OutputToAHyphenIsStandardOutput) {
    const TempFolder folder;
    const Command command{.words = {"--scenario", "empty", "--output", "-", "get-info"},
                          .inChild = [&folder] { fs::current_path(folder.Path()); }};
    EXPECT_EQ(command.Run().out, RunCommand({"--scenario", "empty", "get-info"}).out);
    EXPECT_TRUE(folder.Names().empty());
}

TEST(Document, OutputToADeviceLeavesTheDevice) {
    EXPECT_EQ(RunCommand({"--scenario", "empty", "--output", "/dev/null", "get-info"}).ExitStatus(), 0);
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST(Document, NoProcessIsLeftBehind) {
    // Whoever loses his parent becomes this process's child.
    ASSERT_EQ(::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0), 0);
    for (const char* const scenario : {"small", "half-failed"}) {
        (void)RunCommand({"--scenario", scenario, "get-info"});
        int status = 0;
        EXPECT_EQ(::waitpid(-1, &status, WNOHANG), -1) << scenario;
        EXPECT_EQ(errno, ECHILD);
    }
    // What other tests start may leave some: the shells of the completions do.
    ASSERT_EQ(::prctl(PR_SET_CHILD_SUBREAPER, 0, 0, 0, 0), 0);
}

TEST(Trace, EveryLineOfTheFileHasFiveFields) {
    const TempFolder folder;
    const Ended ended = RunCommand({"--scenario", "awkward", "--trace-file", folder / "trace", "get-info"});
    EXPECT_EQ(ended.err.find("\tmsraid\t"), std::string::npos);
    const std::string trace = ReadFile(folder / "trace");
    EXPECT_NE(trace.find("\tmsraid\t1\texecute vdkcli command.(vdkcli -v)\n"), std::string::npos);
    EXPECT_NE(trace.find("\tmsraid\t4\tCZORBALT_MngSrvRaid::GetInfo [END]\n"), std::string::npos);
    EXPECT_EQ(trace.back(), '\n');
    for (std::size_t start = 0; start < trace.size();) {
        const std::size_t end = trace.find('\n', start);
        const std::string line = trace.substr(start, end - start);
        EXPECT_EQ(std::count(line.begin(), line.end(), '\t'), 4) << line;
        start = end + 1;
    }
}

TEST(Trace, GoesToStandardErrorAtTheLevelsAskedForAndNoOthers) {
    const Ended ended = RunCommand({"--scenario", "small", "--trace", "1", "get-info"});
    EXPECT_EQ(ended.ExitStatus(), 0);
    EXPECT_EQ(CountLines(ended.err), 8U);  // seven runs of the tool and the result
    EXPECT_EQ(ended.err.find("\t4\t"), std::string::npos);
    EXPECT_EQ(testsupport::ValidateAgainstSchema(ended.out), "");
}

TEST(Help, NamesEverySubcommandOptionAndExitStatus) {
    const Ended ended = RunCommand({"--help"});
    EXPECT_EQ(ended.ExitStatus(), 0);
    EXPECT_EQ(ended.err, "");
    for (const char* const word :
         {"get-info", "get-pd-info", "CTRL ENCL PD", "--scenario", "--install-dir", "--trace LEVELS",
          "--trace-file", "--app-key", "--output", "--version", "\n  0  success", "\n  1  ", "\n  2  ",
          "\n  3  ", "\n  4  ", "Examples:"}) {
        EXPECT_NE(ended.out.find(word), std::string::npos) << word;
    }
    EXPECT_EQ(RunCommand({"get-pd-info", "--help"}).out, ended.out);
}

TEST(Version, IsThatOfTheCommandAndOfTheModule) {
    const Ended ended = RunCommand({"--version"});
    EXPECT_EQ(ended.ExitStatus(), 0);
    EXPECT_EQ(ended.out,
              "mngsrvraid " COMMAND_TEST_VERSION "\nlibqelp_Zorbalt_MngSrvRaid.so 2.10 (msraid, zorbalt)\n");
}

TEST(Version, IsThatOfTheCommandAloneWhereThereIsNoModule) {
    const TempFolder folder;
    const Ended ended = RunCommand({"--install-dir", folder.Path().string(), "--version"});
    EXPECT_EQ(ended.ExitStatus(), 0);
    EXPECT_EQ(ended.out, "mngsrvraid " COMMAND_TEST_VERSION "\n");
}

}  // namespace
}  // namespace command::test
