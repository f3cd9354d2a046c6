// Where the tool's reports pass through: a place of the command's own, for as long as it runs.

#include "test_support/Command.h"
#include "test_support/Waiting.h"

#include <gmock/gmock.h>
#include <grp.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

namespace command::test {
namespace {

using namespace testsupport;

namespace fs = std::filesystem;
using testing::HasSubstr;

constexpr unsigned kNobody = 65534;

void Require(bool isDone, const char* what) {
    if (!isDone) {
        throw std::runtime_error(what);
    }
}

void BecomeNobody() {
    Require(::setgroups(0, nullptr) == 0 && ::setgid(kNobody) == 0 && ::setuid(kNobody) == 0, "nobody");
}

bool IsNobodyLetIn() {
    return InChild([] {
               BecomeNobody();
               return std::string(::access(COMMAND_TEST_PROGRAM, X_OK) == 0 ? "yes" : "no");
           }) == "yes";
}

/// The command in a container of its own: there its processes have the numbers that others have in theirs.
Command InContainer(std::vector<std::string> words) {
    words.insert(words.begin(), {"--pid", "--fork", "--mount-proc", COMMAND_TEST_PROGRAM});
    if (::geteuid() != 0) {
        words.insert(words.begin(), {"--user", "--map-root-user"});
    }
    return {.words = std::move(words), .program = "/usr/bin/unshare"};
}

TEST(ResultFiles, AreNotMixedUpBetweenContainersThatShareAnInstallRoot) {
    constexpr std::size_t kContainers = 40;
    const InstallRoot root;
    const std::string names[] = {"small", "well", "old"};
    std::map<std::string, std::string> expected;
    for (const std::string& name : names) {
        expected[name] = RunCommand({"--scenario", name, "get-info"}).out;
        ASSERT_NE(expected[name], "");
    }
    std::vector<std::unique_ptr<Running>> all;
    for (std::size_t number = 0; number < kContainers; ++number) {
        const std::string& name = names[number % std::size(names)];
        all.push_back(InContainer({"--install-dir", root.Path(), "--scenario", name, "get-info"}).Start());
    }
    for (std::size_t number = 0; number < kContainers; ++number) {
        const Ended ended = all[number]->Wait();
        EXPECT_EQ(ended.ExitStatus(), 0) << ended.err;
        EXPECT_EQ(ended.out == expected[names[number % std::size(names)]], true) << ended.out.substr(0, 200);
    }
    EXPECT_TRUE(root.IsUntouched());
}

TEST(ResultFiles, AreInAPrivateFolderThatGoesWithTheCommand) {
    const InstallRoot root;
    const TemporaryDirectory temporary;
    const auto running = Command{.words = {"--install-dir", root.Path(), "--scenario", "faults/slow", "get-info"},
                                 .environment = temporary.Environment()}
                             .Start();
    ASSERT_TRUE(ComesTrue([&] { return !temporary.ResultFiles().empty(); }));
    const std::vector<std::string> names = temporary.Names();
    ASSERT_EQ(names.size(), 1U);
    EXPECT_THAT(names.front(), testing::StartsWith("mngsrvraid."));
    EXPECT_EQ(fs::status(temporary.Path() + "/" + names.front()).permissions(), fs::perms(0700));
    EXPECT_EQ(running->Wait().ExitStatus(), 0);
    EXPECT_TRUE(temporary.Names().empty());
    EXPECT_TRUE(root.IsUntouched());
}

TEST(ResultFiles, AreGoneAfterAFailureToo) {
    const TemporaryDirectory temporary;
    for (const std::string subcommand : {"get-info", "health", "show"}) {
        const Command command{.words = {"--scenario", "faults/marker", subcommand},
                              .environment = temporary.Environment()};
        EXPECT_NE(command.Run().ExitStatus(), 0);
        EXPECT_TRUE(temporary.Names().empty());
    }
    const Command noScenario{.words = {"--scenario", "nope", "get-info"},
                             .environment = temporary.Environment()};
    EXPECT_EQ(noScenario.Run().ExitStatus(), 4);
    EXPECT_TRUE(temporary.Names().empty());
}

TEST(ResultFiles, NeedNoRightToWriteToTheInstallRoot) {
    if (::geteuid() != 0 || !IsNobodyLetIn()) {
        GTEST_SKIP() << "only root becomes another user, where the build tree is open to him";
    }
    const InstallRoot root;
    fs::create_directory(root.Path() + "/tmp");
    fs::permissions(root.Path() + "/tmp", fs::perms(0700));
    const TemporaryDirectory temporary;
    const Command command{.words = {"--install-dir", root.Path(), "--scenario", "small", "get-info"},
                          .environment = temporary.Environment(),
                          .inChild = BecomeNobody};
    const Ended ended = command.Run();
    EXPECT_EQ(ended.err, "");
    EXPECT_EQ(ended.out, RunCommand({"--scenario", "small", "get-info"}).out);
    EXPECT_TRUE(temporary.Names().empty());
}

TEST(ResultFiles, AreElsewhereWhereTheUsualPlaceIsOfNoUse) {
    const InstallRoot root;
    const std::string expected = RunCommand({"--scenario", "small", "get-info"}).out;
    const Command command{.words = {"--install-dir", root.Path(), "--scenario", "small", "get-info"},
                          .environment = {{"TMPDIR", "/no/such"}}};
    const Ended inMemory = command.Run();
    EXPECT_EQ(inMemory.err, "");
    EXPECT_EQ(inMemory.out, expected);
    fs::create_directory(root.Path() + "/tmp");
    const Ended inRoot = command.Run();
    EXPECT_EQ(inRoot.err, "");
    EXPECT_EQ(inRoot.out, expected);
    EXPECT_TRUE(TempFolder::NamesIn(root.Path() + "/tmp").empty());
}

/// A view in which there is so little room in that directory.
void LimitRoom(const std::string& directory, const char* size) {
    const bool isSelf = ::geteuid() == 0;
    Require(::unshare(isSelf ? CLONE_NEWNS : CLONE_NEWUSER | CLONE_NEWNS) == 0, "unshare");
    Require(::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0, "private");
    Require(::mount("tmpfs", directory.c_str(), "tmpfs", 0, size) == 0, "tmpfs");
}

TEST(ResultFiles, ThatFindNoRoomAreTheAdvice) {
    const TemporaryDirectory temporary;
    const Command command{.words = {"--scenario", "large", "get-info"},
                          .environment = temporary.Environment(),
                          .inChild = [&] { LimitRoom(temporary.Path(), "size=8k"); }};
    const Ended ended = command.Run();
    EXPECT_EQ(ended.ExitStatus(), 1);
    EXPECT_THAT(ended.err, HasSubstr("; result files cannot be written below " + temporary.Path() +
                                     ": No space left on device; name another directory by the variable TMPDIR\n"));
}

TEST(ResultFiles, WithoutRoomForAFolderAreElsewhere) {
    const TemporaryDirectory temporary;
    const Command command{.words = {"--scenario", "large", "get-info"},
                          .environment = temporary.Environment(),
                          .inChild = [&] { LimitRoom(temporary.Path(), "nr_inodes=1"); }};
    const Ended ended = command.Run();
    EXPECT_EQ(ended.err, "");
    EXPECT_EQ(ended.ExitStatus(), 0);
}

TEST(ResultFiles, LeaveTheInstallRootWhereverItWasNamed) {
    const InstallRoot root;
    root.SetKey("sesame");
    const std::vector<std::string> words = {"--app-key", "sesame", "--scenario", "small", "get-info"};
    const std::string expected = RunCommand({"--scenario", "small", "get-info"}).out;
    const auto enter = [&] { Require(::chdir(root.Path().c_str()) == 0, "chdir"); };
    for (const std::string& name : {root.Path(), root.Path() + "/", std::string(".")}) {
        const Command command{.words = words, .environment = {{"ZORBALT_INSTALL_DIR", name}}, .inChild = enter};
        const Ended ended = command.Run();
        EXPECT_EQ(ended.err, "") << name;
        EXPECT_EQ(ended.out, expected) << name;
    }
    const Command withoutKey{.words = {"--scenario", "small", "get-info"},
                             .environment = {{"ZORBALT_INSTALL_DIR", root.Path()}}};
    EXPECT_EQ(withoutKey.Run().ExitStatus(), 1);
}

TEST(ResultFiles, AnInstallRootOfNothingIsNone) {
    const Command command{.words = {"--scenario", "small", "get-info"},
                          .environment = {{"ZORBALT_INSTALL_DIR", ""}}};
    const Ended ended = command.Run();
    EXPECT_EQ(ended.err, "");
    EXPECT_EQ(ended.out, RunCommand({"--scenario", "small", "get-info"}).out);
}

}  // namespace
}  // namespace command::test
