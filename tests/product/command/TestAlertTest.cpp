// test-alert, which the service beside the command does.

#include "test_support/Command.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace command::test::testalert {
namespace {

using namespace testsupport;

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::StartsWith;

TEST(TestAlert, GoesThroughAllChannelsOfTheService) {
    const TempFolder folder;
    folder.Write("service.toml",
                 "[[channel]]\nname = \"pager\"\nkind = \"exec\"\nlevel = \"critical\"\nprogram = "
                 "\"/bin/sh\"\narguments = [\"-c\", \"cat >> " +
                     (folder / "told") + "\"]\n");
    const Ended ended = RunCommand({"test-alert", "--config", folder / "service.toml"});
    EXPECT_EQ(ended.ExitStatus(), 0);
    EXPECT_THAT(ended.out, StartsWith("pager: delivered ("));
    EXPECT_EQ(ended.err, "");
    EXPECT_THAT(folder.Read("told"), HasSubstr("\"kind\":\"test\""));
}

TEST(TestAlert, FailsWhereAChannelDoes) {
    const TempFolder folder;
    folder.Write("service.toml", "[[channel]]\nkind = \"exec\"\nprogram = \"/bin/false\"\n");
    const Ended ended = RunCommand({"test-alert", "--config", folder / "service.toml"});
    EXPECT_EQ(ended.ExitStatus(), 1);
    EXPECT_THAT(ended.out, StartsWith("exec: failed: /bin/false ended with status 1 ("));
}

TEST(TestAlert, SaysThatItsConfigurationCannotBeRead) {
    const Ended ended = RunCommand({"test-alert", "--config", "/nowhere"});
    EXPECT_EQ(ended.ExitStatus(), 4);
    EXPECT_EQ(ended.err, "mngsrvraidd: /nowhere cannot be read: No such file or directory\n");
}

/// The command alone in a folder of that name.
class CommandElsewhere : public testing::Test {
  protected:
    [[nodiscard]] Ended Run(const std::string& place) const {
        const fs::path program = m_Folder.Path() / place / "mngsrvraid";
        fs::create_directories(program.parent_path());
        fs::copy_file(COMMAND_TEST_PROGRAM, program);
        const fs::path libraries = fs::path(COMMAND_TEST_PROGRAM).parent_path().parent_path() / "lib";
        return Command{.words = {"--scenario", "small", "test-alert", "--config", "a b"},
                       .environment = {{"LD_LIBRARY_PATH", libraries.string()}},
                       .program = program}
            .Run();
    }

    void PutService(const std::string& place, const std::string& text) const {
        const fs::path program = m_Folder.Path() / place / "mngsrvraidd";
        fs::create_directories(program.parent_path());
        WriteFile(program, text);
        fs::permissions(program, fs::perms::owner_all);
    }

    static constexpr const char* kTellsWords = "#!/bin/sh\nprintf '[%s]' \"$@\"\n";
    const TempFolder m_Folder;
};

TEST_F(CommandElsewhere, TakesTheServiceBesideIt) {
    PutService("bin", kTellsWords);
    EXPECT_EQ(Run("bin").out, "[--test-alert][--config][a b][--scenario][small]");
}

TEST_F(CommandElsewhere, TakesTheServiceFromBin) {
    PutService("bin", kTellsWords);
    EXPECT_EQ(Run("sbin").out, "[--test-alert][--config][a b][--scenario][small]");
}

TEST_F(CommandElsewhere, SaysThatThereIsNoService) {
    const Ended ended = Run("bin");
    EXPECT_EQ(ended.ExitStatus(), 4);
    EXPECT_EQ(ended.err, "mngsrvraid: there is no mngsrvraidd in " + (m_Folder / "bin") +
                             ", whose channels are to be tested; install the service beside the command\n");
}

TEST_F(CommandElsewhere, SaysThatTheServiceCannotBeRun) {
    PutService("bin", "#!/nowhere/sh\n");
    const Ended ended = Run("bin");
    EXPECT_EQ(ended.ExitStatus(), 4);
    EXPECT_EQ(ended.err, "mngsrvraid: " + (m_Folder / "bin/mngsrvraidd") +
                             " cannot be run: No such file or directory\n");
}

}  // namespace
}  // namespace command::test::testalert
