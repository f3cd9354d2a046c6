#include "sandbox/Sandbox.h"

#include "test_support/Command.h"

#include <gmock/gmock.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <stdexcept>

namespace sandbox::test {
namespace {

using namespace testsupport;

namespace fs = std::filesystem;
using testing::HasSubstr;

constexpr const char* kSimulator = COMMAND_TEST_SIMULATOR;
const fs::path kScenarios = COMMAND_TEST_SCENARIOS;
constexpr uid_t kNobody = 65534;

// What a shell command prints, without the closing line feed.
std::string Shell(const std::string& command) {
    std::FILE* const pipe = ::popen((command + " 2>&1").c_str(), "r");
    std::string text;
    for (int character = std::fgetc(pipe); character != EOF; character = std::fgetc(pipe)) {
        text += static_cast<char>(character);
    }
    ::pclose(pipe);
    while (text.ends_with('\n')) {
        text.pop_back();
    }
    return text;
}

std::string ToolVersion() {
    return Shell("/opt/zorbalt/vdk/cli/vdkcli -v | grep 'Product Version' | sed 's/.*: //; s/ *$//'");
}

// /opt as it is on a server with other software and without the tool.
void MakeOptWithoutTool() {
    EnterSandboxWithoutTool();
    if (::mount("tmpfs", "/opt", "tmpfs", 0, nullptr) != 0) {
        throw std::runtime_error("no /opt to play with");
    }
    fs::create_directories("/opt/other/deep");
    WriteFile("/opt/other/deep/file", "deep");
    WriteFile("/opt/file", "flat");
    fs::create_symlink("other/deep", "/opt/link");
    fs::create_symlink("nowhere", "/opt/dangling");
    fs::create_directory("/opt/servers");
    fs::copy(kScenarios / "small", "/opt/servers/mine", fs::copy_options::recursive);
}

TEST(Sandbox, ToolAnswersFromTheScenario) {
    const std::string seen = InChild([] {
        EnterSandbox(kSimulator, kScenarios / "small");
        return ToolVersion();
    });
    EXPECT_EQ(seen, "3.9");
}

TEST(Sandbox, ScenarioCanBeChangedAndTheStateIsThenEmpty) {
    const std::string seen = InChild([] {
        EnterSandbox(kSimulator, kScenarios / "small");
        std::string text = ToolVersion();
        text += " " + Shell("ls /opt/zorbalt/vdk/state");
        UseScenario(kScenarios / "large");
        text += " " + std::to_string(TempFolder::NamesIn("/opt/zorbalt/vdk/state").size());
        text += " " + ToolVersion();
        for (int round = 0; round < 20; ++round) {
            UseScenario(kScenarios / "old");
        }
        return text + " " + ToolVersion();
    });
    EXPECT_EQ(seen, "3.9 runs.log 0 4.1 3.5");
}

// Of the mirror, inquiry by inquiry.
std::string States(int inquiries) {
    std::string states;
    for (int inquiry = 0; inquiry < inquiries; ++inquiry) {
        states += states.empty() ? "" : " ";
        (void)Shell("/opt/zorbalt/vdk/cli/vdkcli -v");
        states +=
            Shell("echo $(/opt/zorbalt/vdk/cli/vdkcli -ldpdinfo -a0 | sed -n 's/^>LD.*, //p' | tr -d ')')");
    }
    return states;
}

TEST(Sandbox, ScenarioThatChangesGoesOnUntilItIsUsedAnew) {
    const std::string seen = InChild([] {
        EnterSandbox(kSimulator, kScenarios / "watch/flaps/by-inquiry");
        // Each in a process of its own, as those of somebody who asks now and then.
        std::string text = InChild([] { return States(1); });
        text += " " + InChild([] { return States(2); });
        UseScenario(kScenarios / "watch/flaps/by-inquiry");
        text += " " + States(1);
        UseScenario(kScenarios / "small");
        text += " " + States(1);
        UseScenario(kScenarios / "watch/flaps/gone");
        return text + " " + States(2);
    });
    EXPECT_EQ(seen, "OPTIMAL DEGRADED DEGRADED OPTIMAL OPTIMAL DEGRADED DEGRADED");
}

TEST(Sandbox, StageComesWithTheFolderAboveIt) {
    const TempFolder folder;
    fs::copy(kScenarios / "watch/flaps", folder.Path() / "mine", fs::copy_options::recursive);
    fs::create_directory_symlink("mine/gone", folder.Path() / "link");
    const std::string seen = InChild([&] {
        EnterSandbox(kSimulator, folder.Path() / "link");
        std::string text = ToolVersion() + " " + States(1);
        fs::current_path(folder.Path() / "mine/back");
        UseScenario(".");
        text += " " + ToolVersion() + " " + States(1);
        return text + Shell("touch /opt/zorbalt/vdk/scenario/new /opt/zorbalt/vdk/scenario/../new");
    });
    EXPECT_THAT(seen, testing::StartsWith("4.2 DEGRADED 4.2 DEGRADED"));
    EXPECT_THAT(seen, HasSubstr("scenario/new': Read-only file system"));
    EXPECT_THAT(seen, HasSubstr("scenario/../new': Read-only file system"));
}

TEST(Sandbox, ScenarioThatCannotBeOpenedLeavesTheOldOne) {
    const std::string seen = InChild([]() -> std::string {
        EnterSandbox(kSimulator, kScenarios / "small");
        try {
            UseScenario("/no/such");
            return "no exception";
        } catch (const SandboxError& error) {
            return std::string(error.what()) + " " + ToolVersion();
        }
    });
    EXPECT_EQ(seen, "the scenario cannot be opened: /no/such: No such file or directory 3.9");
}

TEST(Sandbox, ScenarioCannotBeChangedBeforeThereIsOne) {
    EXPECT_THAT(InChild([]() -> std::string {
                    UseScenario(kScenarios / "small");
                    return "";
                }),
                HasSubstr("threw: there is no scenario"));
    EXPECT_THAT(InChild([]() -> std::string {
                    EnterSandboxWithoutTool();
                    UseScenario(kScenarios / "small");
                    return "";
                }),
                HasSubstr("threw: there is no scenario"));
}

TEST(Sandbox, ScenarioIsReadOnlyAndTheStateIsNot) {
    const TempFolder folder;
    fs::copy(kScenarios / "small", folder.Path() / "mine", fs::copy_options::recursive);
    const std::string seen = InChild([&] {
        EnterSandbox(kSimulator, folder.Path() / "mine");
        return Shell("touch /opt/zorbalt/vdk/state/new /opt/zorbalt/vdk/scenario/new");
    });
    EXPECT_THAT(seen, HasSubstr("Read-only file system"));
    EXPECT_THAT(seen, testing::Not(HasSubstr("state/new")));
    EXPECT_FALSE(fs::exists(folder.Path() / "mine" / "new"));
}

TEST(Sandbox, WithoutToolThereIsNone) {
    const std::string seen = InChild([] {
        EnterSandboxWithoutTool();
        return Shell("ls -A /opt/zorbalt/vdk; echo $?");
    });
    EXPECT_EQ(seen, "0");
}

TEST(Sandbox, RestOfTheCoveredDirectoryStaysVisible) {
    const std::string seen = InChild([] {
        MakeOptWithoutTool();
        EnterSandbox(kSimulator, kScenarios / "small");
        return Shell(
            "echo $(ls -A /opt); cat /opt/other/deep/file /opt/file /opt/link/file; readlink /opt/dangling");
    });
    EXPECT_EQ(seen, "dangling file link other servers zorbalt\ndeepflatdeepnowhere");
}

TEST(Sandbox, ScenarioMayLieInTheCoveredDirectory) {
    const std::string seen = InChild([] {
        MakeOptWithoutTool();
        fs::current_path("/opt/servers");
        EnterSandbox(kSimulator, "mine/");
        std::string text = ToolVersion();
        UseScenario("/opt/servers/mine");
        return text + " " + ToolVersion();
    });
    EXPECT_EQ(seen, "3.9 3.9");
}

TEST(Sandbox, ScenariosForLaterMayLieInTheToolsDirectory) {
    const std::string seen = InChild([]() -> std::string {
        MakeOptWithoutTool();
        const fs::path inTool = "/opt/zorbalt/vdk/mine";
        fs::create_directories(inTool.parent_path());
        fs::copy(kScenarios / "large", inTool, fs::copy_options::recursive);
        EnterSandbox(kSimulator, kScenarios / "small", {inTool});
        std::string text = ToolVersion() + (fs::exists(inTool) ? " seen" : " covered");
        UseScenario(inTool);
        text += " " + ToolVersion();
        UseScenario(kScenarios / "old");
        return text + " " + ToolVersion();
    });
    EXPECT_EQ(seen, "3.9 covered 4.1 3.5");
}

TEST(Sandbox, WhatIsInTheWayOfTheToolsDirectoryIsLeftOut) {
    const std::string seen = InChild([] {
        MakeOptWithoutTool();
        fs::create_directory("/opt/zorbalt");
        WriteFile("/opt/zorbalt/vdk", "a file");
        WriteFile("/opt/zorbalt/notes", "notes");
        EnterSandbox(kSimulator, kScenarios / "small");
        return ToolVersion() + " " + ReadFile("/opt/zorbalt/notes");
    });
    EXPECT_EQ(seen, "3.9 notes");
}

TEST(Sandbox, InstalledToolStaysAsItIs) {
    const InstallRoot root;
    const auto read = [&](std::vector<std::string> words) {
        words.insert(words.begin(), {"--install-dir", root.Path()});
        return RunCommand(words).out;
    };
    const std::string expected = read({"--scenario", "small", "get-info"}) +
                                 read({"--scenario", "old", "get-info"}) +
                                 read({"--scenario", "small", "get-info"});
    const std::string seen = InChild([&] {
        EnterSandbox(kSimulator, kScenarios / "small");  // the tool that is "installed"
        return read({"get-info"}) + read({"--scenario", "old", "get-info"}) + read({"get-info"});
    });
    EXPECT_EQ(seen, expected);
}

TEST(Sandbox, NothingOutsideChanges) {
    const auto look = [] {
        return Shell("ls -laR --time-style=full-iso /opt; cat /proc/self/mountinfo; id");
    };
    const std::string before = look();
    EXPECT_EQ(RunCommand({"--scenario", "small", "get-info"}).ExitStatus(), 0);
    EXPECT_EQ(RunCommand({"--scenario", "half-failed", "get-info"}).ExitStatus(), 1);
    EXPECT_EQ(look(), before);
}

TEST(Sandbox, SimulatorThatMayNotBeRunIsToldOf) {
    const TempFolder folder;
    WriteFile(folder / "vdkcli", "");
    const std::string seen = InChild([&]() -> std::string {
        EnterSandbox(folder.Path() / "vdkcli", kScenarios / "small");
        return "no exception";
    });
    EXPECT_THAT(seen, HasSubstr("threw: the simulator may not be run: Permission denied"));
}

class OrdinaryUser : public testing::Test {
  protected:
    static void BecomeOrdinary() {
        if (::geteuid() == 0 &&
            (::setgroups(0, nullptr) != 0 || ::setresgid(kNobody, kNobody, kNobody) != 0 ||
             ::setresuid(kNobody, kNobody, kNobody) != 0)) {
            throw std::runtime_error("cannot become an ordinary user");
        }
        // Changing the user takes away the process's own files in /proc; starting a program gives them back.
        ::prctl(PR_SET_DUMPABLE, 1, 0, 0, 0);
    }

    // Build trees below /root and the like are closed to others.
    static bool MayRunCommand() {
        const std::string answer = InChild([] {
            BecomeOrdinary();
            const bool may = ::access(COMMAND_TEST_PROGRAM, X_OK) == 0 && ::access(kSimulator, X_OK) == 0 &&
                             ::access((kScenarios / "small" / "v.txt").c_str(), R_OK) == 0;
            return std::string(may ? "yes" : "no");
        });
        return answer == "yes";
    }
};

TEST_F(OrdinaryUser, NeedsNoRights) {
    if (!MayRunCommand()) {
        GTEST_SKIP() << "the build tree is closed to ordinary users";
    }
    const InstallRoot root;
    const std::string before = Shell("ls -laR --time-style=full-iso /opt");
    const Command command{.words = {"--install-dir", root.Path(), "--scenario", "small", "get-info"},
                          .inChild = BecomeOrdinary};
    const Ended ended = command.Run();
    EXPECT_EQ(ended.err, "");
    EXPECT_EQ(ended.out, RunCommand({"--scenario", "small", "get-info"}).out);
    EXPECT_TRUE(root.IsUntouched());
    EXPECT_EQ(Shell("ls -laR --time-style=full-iso /opt"), before);
}

TEST_F(OrdinaryUser, IsRefusedAClosedOutputDirectoryBeforeAnythingElse) {
    if (!MayRunCommand()) {
        GTEST_SKIP() << "the build tree is closed to ordinary users";
    }
    const TempFolder folder;
    fs::permissions(folder.Path(), fs::perms(0555));
    const Command command{.words = {"--output", folder / "raid.xml", "--scenario", "nope", "get-info"},
                          .inChild = BecomeOrdinary};
    const Ended ended = command.Run();
    EXPECT_EQ(ended.err, "mngsrvraid: the document cannot be written to " + (folder / "raid.xml") +
                             ": its directory: Permission denied; name another file by --output\n");
    EXPECT_EQ(ended.ExitStatus(), 4);
}

TEST_F(OrdinaryUser, StaysOneInside) {
    if (!MayRunCommand()) {
        GTEST_SKIP() << "the build tree is closed to ordinary users";
    }
    const TempFolder folder;
    fs::permissions(folder.Path(), fs::perms::all);
    const std::string seen = InChild([&] {
        BecomeOrdinary();
        const fs::path closed = folder.Path() / "closed";
        fs::create_directory(closed);
        fs::permissions(closed, fs::perms::owner_read | fs::perms::owner_exec);
        EnterSandbox(kSimulator, kScenarios / "small");
        const bool written = fs::exists(closed) && ::mkdir((closed / "new").c_str(), 0700) == 0;
        UseScenario(kScenarios / "large");
        return ToolVersion() + (written ? " written" : " refused") +
               (::geteuid() != 0 ? " ordinary" : " root");
    });
    EXPECT_EQ(seen, "4.1 refused ordinary");
}

}  // namespace
}  // namespace sandbox::test
