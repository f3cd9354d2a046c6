#include "Instructions.h"

#include <gtest/gtest.h>

#include <csignal>

#include "ScenarioError.h"
#include "Tool.h"

namespace vdksim {

namespace {

class InstructionsTest : public ::testing::Test {
  protected:
    Instructions Read(const std::string& text) {
        m_Folder.Write("any.do", text);
        return Instructions::FromFile(m_Folder.Path() / "any.do");
    }

    // The complaint behind the path, or "" when the text was taken.
    std::string Complaint(const std::string& text) {
        try {
            static_cast<void>(Read(text));
        } catch (const ScenarioError& error) {
            EXPECT_EQ(error.Status(), kExitBadScenario);
            const std::string path = (m_Folder.Path() / "any.do").string();
            EXPECT_TRUE(std::string(error.what()).starts_with(path)) << error.what();
            return std::string(error.what()).substr(path.size());
        }
        return "";
    }

    test::TempFolder m_Folder;
};

TEST_F(InstructionsTest, EveryInstructionIsRead) {
    const Instructions read = Read(
        "exit 3\nfail-first 2 9\nmarker -x\nsignal SIGSEGV\nstop\nsleep 0.25\nendless\nrepeat 5\nbytes 2K\n"
        "stderr\nclose-stdout\nspawn-holder 2\ntruncate 0\npass-first 4\nspawn-writer 0.5\n");
    EXPECT_EQ(read.exitStatus, 3);
    EXPECT_EQ(read.failFirst, 2U);
    EXPECT_EQ(read.failStatus, 9);
    EXPECT_EQ(read.passFirst, 4U);
    EXPECT_EQ(read.marker, "-x");
    EXPECT_EQ(read.signal, SIGSEGV);
    EXPECT_FALSE(read.takesShellAlong);
    EXPECT_TRUE(Read("signal SEGV shell").takesShellAlong);
    EXPECT_TRUE(read.stop);
    EXPECT_DOUBLE_EQ(read.delay.count(), 0.25);
    EXPECT_TRUE(read.endless);
    EXPECT_EQ(read.repeat, 5U);
    EXPECT_EQ(read.bytes, 2048U);
    EXPECT_TRUE(read.toStandardError);
    EXPECT_TRUE(read.closeOutput);
    EXPECT_DOUBLE_EQ(read.holdOutput.count(), 2);
    EXPECT_EQ(read.truncate, 0U);
    EXPECT_DOUBLE_EQ(read.keepWriting.count(), 0.5);
}

TEST_F(InstructionsTest, CommentsBlankLinesAndCarriageReturnsArePassedOver) {
    const Instructions read = Read("# exit 1\r\n\r\n  \t\n exit  7   # seven\r\nmarker # none of its own");
    EXPECT_EQ(read.exitStatus, 7);
    EXPECT_EQ(read.marker, "");
}

TEST_F(InstructionsTest, ALaterLineReplacesAnEarlierOne) {
    const Instructions read = Read("exit 1\nexit 2\nfail-first 2 9\nfail-first 3\n");
    EXPECT_EQ(read.exitStatus, 2);
    EXPECT_EQ(read.failFirst, 3U);
    EXPECT_EQ(read.failStatus, 1);
}

TEST_F(InstructionsTest, CountsMayCarryAUnit) {
    EXPECT_EQ(Read("bytes 1G").bytes, 1073741824U);
    EXPECT_EQ(Read("bytes 3M").bytes, 3145728U);
    EXPECT_EQ(Complaint("bytes 99999999999G"), ":1: 'bytes' does not take '99999999999G'");
}

TEST_F(InstructionsTest, ABadLineIsNamedWithItsFileAndNumber) {
    const std::pair<const char*, const char*> cases[] = {
        {"\n# good\nexti 1", ":3: unknown instruction 'exti'"},
        {"exit", ":1: 'exit' needs a value"},
        {"exit 256", ":1: 'exit' does not take '256'"},
        {"exit -1", ":1: 'exit' does not take '-1'"},
        {"exit 1 2", ":1: too many words behind 'exit'"},
        {"fail-first x", ":1: 'fail-first' does not take 'x'"},
        {"fail-first 2 x", ":1: 'fail-first' does not take '2 x'"},
        {"marker a b", ":1: too many words behind 'marker'"},
        {"signal FOO", ":1: 'signal' does not take 'FOO'"},
        {"signal STOP", ":1: 'signal' does not take 'STOP'"},
        {"signal KILL tool", ":1: 'signal' does not take 'KILL tool'"},
        {"signal KILL shell now", ":1: too many words behind 'signal'"},
        {"pass-first", ":1: 'pass-first' needs a value"},
        {"pass-first -1", ":1: 'pass-first' does not take '-1'"},
        {"spawn-writer", ":1: 'spawn-writer' needs a value"},
        {"spawn-writer x", ":1: 'spawn-writer' does not take 'x'"},
        {"sleep -1", ":1: 'sleep' does not take '-1'"},
        {"sleep 1s", ":1: 'sleep' does not take '1s'"},
        {"sleep nan", ":1: 'sleep' does not take 'nan'"},
        {"sleep inf", ":1: 'sleep' does not take 'inf'"},
        {"stop now", ":1: too many words behind 'stop'"},
        {"truncate 1.5", ":1: 'truncate' does not take '1.5'"},
        {"repeat", ":1: 'repeat' needs a value"},
        {"bytes K", ":1: 'bytes' does not take 'K'"},
    };
    for (const auto& [text, complaint] : cases) {
        EXPECT_EQ(Complaint(text), complaint) << text;
    }
}

TEST_F(InstructionsTest, AFileThatCannotBeReadIsNoEmptyOne) {
    try {
        static_cast<void>(Instructions::FromFile(m_Folder.Path()));
        FAIL() << "a folder was read";
    } catch (const ScenarioError& error) {
        EXPECT_EQ(error.Status(), kExitNoScenario);
        EXPECT_EQ(error.what(), m_Folder.Path().string() + ": cannot be read");
    }
}

}  // namespace

}  // namespace vdksim
