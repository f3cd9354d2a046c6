// The scenarios that change with time, asked through the module and watched from beginning to end: whether
// they show what they were made for.

#include "LoadedProvider.h"
#include "inventory/Snapshot.h"
#include "sandbox/Sandbox.h"
#include "test_support/InChild.h"
#include "test_support/Processes.h"
#include "test_support/TempFolder.h"
#include "test_support/Waiting.h"
#include "watch/Watch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <filesystem>

namespace timelines {
namespace {

using std::chrono::hours;
using testing::HasSubstr;
using testing::Not;

/// A server that is asked every hour, in a process that sees the scenario in the tool's place: how well it
/// is, inquiry by inquiry, and behind that a line for each event.
std::string Watched(const std::string& scenario, int inquiries) {
    const testsupport::TempFolder root;
    std::filesystem::create_directory_symlink(UNKIND_HOST_CIM, root.Path() / "cim");
    ::setenv("ZORBALT_INSTALL_DIR", root.Path().c_str(), 1);
    sandbox::EnterSandbox(UNKIND_HOST_SIMULATOR,
                          std::string(TIMELINES_SCENARIOS) + "/watch/" + scenario + "/by-inquiry");
    const unkindhost::LoadedProvider provider;
    watch::Watch watch(watch::Rules(), [](watch::TimePoint) { return "id"; });
    watch::TimePoint now{};
    std::string levels;
    std::string events;
    for (int inquiry = 0; inquiry < inquiries; ++inquiry) {
        now += hours(1);
        const inventory::Snapshot snapshot(inventory::Document::Read(provider.GetInfo()));
        levels += std::string(inventory::NameOf(snapshot.TheHealth().level)) + " ";
        for (const watch::Event& event : watch.Take(snapshot, now)) {
            events += Describe(event) + "\n";
        }
    }
    return levels + "\n" + events;
}

std::string WatchedInChild(const std::string& scenario, int inquiries) {
    return testsupport::InChild([&] { return Watched(scenario, inquiries); });
}

TEST(Timelines, DriveIsLostAndReplaced) {
    const std::string told = WatchedInChild("loses-drive", 7);
    EXPECT_THAT(told, testing::StartsWith("OK WARNING CRITICAL CRITICAL WARNING OK OK \n"));
    for (const char* event :
         {"WARNING began: controller 0, RG1, PD3 in enclosure 252 slot 3: failure predicted (1) ",
          "media errors from 0 to 14 ",
          "CRITICAL changed: controller 0, RG1, PD3 in enclosure 252 slot 3: FAILED, failure predicted (2) ",
          "CRITICAL began: controller 0, RG1, LD1: DEGRADED, nothing is being rebuilt",
          "controller 0, RG1, PD3 in enclosure 252 slot 3: its group names it, no drive is reported",
          "WARNING went: controller 0, RG1, PD3 in enclosure 252 slot 3 (MARLE HD2000N7, serial number "
          "WMY413072)",
          "OK came: controller 0, RG1, PD3 in enclosure 252 slot 3 (MARLE HD2000N7, serial number WMY620855)",
          "WARNING changed: controller 0, RG1, LD1: DEGRADED, being rebuilt",
          "OK ended: controller 0, RG1, LD1"}) {
        EXPECT_THAT(told, HasSubstr(event));
    }
    EXPECT_THAT(told, Not(HasSubstr("RG0"))) << "the other group has nothing to do with it";
}

TEST(Timelines, ErrorsGrowWhileAllIsWell) {
    const std::string told = WatchedInChild("grows-errors", 7);
    EXPECT_THAT(told, testing::StartsWith("OK OK OK OK OK OK OK \n"));
    EXPECT_THAT(told, HasSubstr("WARNING grew: controller 0, RG0, PD1 in enclosure 252 slot 1 "));
    EXPECT_THAT(told, Not(HasSubstr("PD0")));
}

TEST(Timelines, DriveGoesAndComes) {
    const std::string told = WatchedInChild("flaps", 9);
    EXPECT_THAT(told, testing::StartsWith("OK CRITICAL CRITICAL WARNING OK CRITICAL CRITICAL WARNING OK \n"));
    EXPECT_THAT(told, HasSubstr("WARNING went: controller 0, RG0, PD1 "));
    EXPECT_THAT(told, HasSubstr("OK came: controller 0, RG0, PD1 "));
}

TEST(Timelines, ReportIsLostOnce) {
    EXPECT_THAT(WatchedInChild("half-told", 5), testing::StartsWith("OK UNKNOWN OK OK OK \n"));
}

TEST(Timelines, DrivesChangeTheirSlots) {
    const std::string told = WatchedInChild("moves", 4);
    EXPECT_THAT(told, testing::StartsWith("OK OK OK OK \n"));
    for (const char* drive : {"PD2 in enclosure 252 slot 5", "RG0, PD0 in enclosure 252 slot 1",
                              "RG0, PD1 in enclosure 252 slot 0"}) {
        EXPECT_THAT(told, HasSubstr(std::string("OK moved: controller 0, ") + drive));
    }
}

/// Begins an inquiry; whether the tool answers, or sleeps behind what it notes of it.
std::string Begin(std::uintmax_t inquiry) {
    const pid_t tool = ::fork();
    if (tool == 0) {
        ::execl("/opt/zorbalt/vdk/cli/vdkcli", "vdkcli", "-v", nullptr);
        ::_exit(1);
    }
    const auto isNoted = [&] {
        std::error_code missing;
        constexpr std::uintmax_t kLine = 16;
        return std::filesystem::file_size("/opt/zorbalt/vdk/state/inquiries", missing) == kLine * inquiry;
    };
    const bool isSettled = testsupport::ComesTrue([&] {
        const char state = testsupport::Look(tool).state;
        return state == 'Z' || (state == 'S' && isNoted());
    });
    ::kill(tool, SIGKILL);
    int status = 0;
    ::waitpid(tool, &status, 0);
    return !isSettled ? "neither" : WIFEXITED(status) ? "answers" : "hangs";
}

TEST(Timelines, ToolThatHungAnswersAgain) {
    const std::string told = testsupport::InChild([] {
        sandbox::EnterSandbox(UNKIND_HOST_SIMULATOR, TIMELINES_SCENARIOS "/watch/hangs/by-inquiry");
        std::string text;
        for (std::uintmax_t inquiry = 1; inquiry <= 5; ++inquiry) {
            text += Begin(inquiry) + " ";
        }
        return text;
    });
    EXPECT_EQ(told, "answers hangs hangs hangs answers ");
}

}  // namespace
}  // namespace timelines
