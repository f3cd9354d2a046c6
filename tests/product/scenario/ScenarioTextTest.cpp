#include "scenario/ScenarioText.h"

#include <gtest/gtest.h>

#include <csignal>

namespace scenario::test {
namespace {

constexpr int kGood = 0;
constexpr int kFailed1 = 1 << 8;
constexpr int kFailed7 = 7 << 8;
constexpr int kStopped = (SIGSTOP << 8) | 0x7f;

TEST(ScenarioText, FilesAreNamedAfterTheArguments) {
    EXPECT_EQ(ScenarioStem("-v"), "v");
    EXPECT_EQ(ScenarioStem("-ctrlinfo -aAll"), "ctrlinfo_aAll");
    EXPECT_EQ(ScenarioStem("-pdinfo -nosmart -a12"), "pdinfo_nosmart_a12");
    EXPECT_EQ(ScenarioStem("-pdinfo -pd[252:3] -a0"), "pdinfo_pd252.3_a0");
    EXPECT_EQ(ScenarioStem("-pdinfo -pd[-1:3] -a-2"), "pdinfo_pd-1.3_a-2");
    EXPECT_EQ(ScenarioStem("../odd/x.y\n"), "___odd_x_y_");
}

TEST(ScenarioText, InstructionsSayHowTheRunsEnded) {
    EXPECT_EQ(ScenarioInstructions({kGood}), "");
    EXPECT_EQ(ScenarioInstructions({kGood, kGood}), "");
    EXPECT_EQ(ScenarioInstructions({kFailed7, kFailed7, kFailed7}), "exit 7\n");
    EXPECT_EQ(ScenarioInstructions({kFailed1, kFailed1, kGood}), "fail-first 2 1\n");
    EXPECT_EQ(ScenarioInstructions({kFailed1, kFailed7, kFailed7}), "fail-first 1 1\nexit 7\n");
    EXPECT_EQ(ScenarioInstructions({kFailed1, kFailed7, kGood}), "fail-first 2 1\n");
    EXPECT_EQ(ScenarioInstructions({kGood, kFailed7, kFailed7}), "pass-first 1\nexit 7\n");
    EXPECT_EQ(ScenarioInstructions({kGood, kFailed7, kGood}), "pass-first 1\nfail-first 1 7\n");
    EXPECT_EQ(ScenarioInstructions({SIGKILL, SIGKILL}), "signal KILL shell\n");
    EXPECT_EQ(ScenarioInstructions({SIGSEGV | 0x80}), "signal SEGV shell\n");
    EXPECT_EQ(ScenarioInstructions({SIGSEGV, kGood}), "fail-first 1 139\n");
    EXPECT_EQ(ScenarioInstructions({kStopped, kStopped}), "stop\n");
    EXPECT_EQ(ScenarioInstructions({kStopped, kGood}), "fail-first 1 1\n");
    EXPECT_EQ(ScenarioInstructions({kFailed1, kGood, kFailed1, kGood}), std::nullopt);
}

}  // namespace
}  // namespace scenario::test
