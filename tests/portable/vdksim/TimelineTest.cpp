#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <map>

#include "ReportShape.h"
#include "Tool.h"

namespace vdksim::test {

namespace {

namespace fs = std::filesystem;

// A line of the state's file of inquiries.
std::string InquiryAt(long at) {
    std::string line = std::to_string(at) + "\n";
    return std::string(16 - line.size(), '0') + line;
}

long MillisecondsNow() {
    timespec now{};
    ::clock_gettime(CLOCK_BOOTTIME, &now);
    return now.tv_sec * 1000 + now.tv_nsec / 1'000'000;
}

// A scenario whose stages are told by their controller's report.
class TimelineTest : public ::testing::Test {
  protected:
    TimelineTest() {
        m_Folder.Write("v.txt", "Product Version : 4.1\n");
        m_Folder.Write("ctrlinfo_a0.txt", "own\n");
        for (const std::string stage : {"well", "failed", "mended"}) {
            fs::create_directory(m_Folder.Path() / stage);
            m_Folder.Write(stage + "/ctrlinfo_a0.txt", stage + "\n");
        }
    }

    [[nodiscard]] Ended Run(const std::string& arguments) const {
        return Tool(m_Folder.Path()).WithState(m_State.Path()).Run(arguments);
    }
    // Also where the scenario is a folder in the one that has the files.
    [[nodiscard]] Ended RunIn(const std::string& folder, const std::string& arguments) const {
        return Tool(m_Folder.Path() / folder).WithState(m_State.Path()).Run(arguments);
    }

    [[nodiscard]] std::string Stage() const { return Run("-ctrlinfo -a0").out; }

    // When the first inquiry and the last one began.
    void SetInquiries(long first, long last) const {
        m_State.Write("inquiries", InquiryAt(first) + InquiryAt(last));
    }

    TempFolder m_Folder;
    TempFolder m_State;
};

TEST_F(TimelineTest, SecondsAreThoseFromTheFirstInquiryToTheLast) {
    m_Folder.Write("timeline", "# a server that is mended\r\n\n0 well\n10\tfailed  # ten seconds\n60 mended");
    constexpr std::array<std::pair<long, const char*>, 6> kStages = {{{0, "well\n"},
                                                                      {9999, "well\n"},
                                                                      {10'000, "failed\n"},
                                                                      {59'999, "failed\n"},
                                                                      {60'000, "mended\n"},
                                                                      {9'000'000, "mended\n"}}};
    for (const auto& [later, stage] : kStages) {
        SetInquiries(5000, 5000 + later);
        EXPECT_EQ(Stage(), stage) << later;
    }
    // The machine was started anew.
    SetInquiries(5'000'000, 4000);
    EXPECT_EQ(Stage(), "well\n");
}

TEST_F(TimelineTest, InquiryIsOfTheTimeAtWhichItBegins) {
    m_Folder.Write("timeline", "0 well\n5 failed\n86400 mended\n");
    for (int run = 0; run < 2; ++run) {
        EXPECT_EQ(Stage(), "well\n") << "before the first inquiry";
    }
    EXPECT_EQ(m_State.Read("inquiries"), "");
    const long before = MillisecondsNow();
    EXPECT_EQ(Run("-v").out, "Product Version : 4.1\n");
    EXPECT_GE(m_State.Read("inquiries"), InquiryAt(before));
    EXPECT_LE(m_State.Read("inquiries"), InquiryAt(MillisecondsNow()));
    m_State.Write("inquiries", InquiryAt(before - 6000));
    EXPECT_EQ(Stage(), "well\n") << "the inquiry that is going on";
    EXPECT_EQ(Run("-v").ExitStatus(), 0);
    EXPECT_EQ(Stage(), "failed\n");
    EXPECT_EQ(m_State.Read("inquiries").size(), 32U);
}

TEST_F(TimelineTest, InquiriesAreCountedWhereTheTimelineSaysSo) {
    m_Folder.Write("timeline", "count inquiries\n0 well\n1 failed\n3 .\n");
    for (const char* stage : {"well\n", "failed\n", "failed\n", "own\n", "own\n"}) {
        EXPECT_EQ(Run("-v").ExitStatus(), 0);
        EXPECT_EQ(Stage(), stage);
        EXPECT_EQ(Stage(), stage);
    }
}

TEST_F(TimelineTest, RepeatBeginsAnew) {
    m_Folder.Write("timeline", "count inquiries\n0 well\n2 failed\nrepeat 3\n");
    for (const char* stage : {"well\n", "well\n", "failed\n", "well\n", "well\n", "failed\n", "well\n"}) {
        EXPECT_EQ(Run("-v").ExitStatus(), 0);
        EXPECT_EQ(Stage(), stage);
    }
    m_Folder.Write("timeline", "count seconds\n0 well\n2 failed\nrepeat 3\n");
    SetInquiries(0, 3000L * 1'000'000'000 + 2500);
    EXPECT_EQ(Stage(), "failed\n");
}

TEST_F(TimelineTest, InquiryThatBeginsIsAnsweredFromItsOwnStage) {
    m_Folder.Write("timeline", "count inquiries\n0 .\n1 failed\n");
    m_Folder.Write("failed/v.txt", "Product Version : 3.9\n");
    EXPECT_EQ(Run("-v").out, "Product Version : 4.1\n");
    EXPECT_EQ(Run("-pdinfo -nosmart -a0").ExitStatus(), 2);
    EXPECT_EQ(Run("-v").out, "Product Version : 3.9\n");
    EXPECT_EQ(Run("-pdinfo -nosmart -a0").out, "Error - Invalid input at or near token -nosmart\n");
}

TEST_F(TimelineTest, WhatAStageLacksIsTheScenarios) {
    m_Folder.Write("timeline", "0 failed\n");
    m_Folder.Write("server.conf", "drives 1\n");
    m_Folder.Write("ldpdinfo_a0.txt", "groups\n");
    m_Folder.Write("ldpdinfo_a0.do", "repeat 2\n");
    m_Folder.Write("any.do", "exit 7\n");
    m_Folder.Write("failed/any.do", "exit 9\n");
    EXPECT_EQ(Run("-ctrlinfo -a0").out, "failed\n");
    EXPECT_EQ(Run("-ctrlinfo -a0").ExitStatus(), 9);
    EXPECT_EQ(Run("-ldpdinfo -a0").out, "groups\ngroups\n");
    EXPECT_EQ(Run("-ldpdinfo -a0").ExitStatus(), 0) << "a command's own instructions are in the way";
    EXPECT_EQ(DriveHeaders(Run("-pdinfo -a0").out).size(), 1U);
    m_Folder.Write("failed/server.conf", "drives 3\n");
    EXPECT_EQ(DriveHeaders(Run("-pdinfo -a0").out).size(), 3U);
    m_Folder.Write("failed/server.conf", "drives\n");
    EXPECT_EQ(Run("-v").err, "vdkcli simulator: " + (m_Folder / "failed/server.conf") +
                                 ":1: expected 'version V', 'controllers N' or 'drives N'\n");
}

TEST_F(TimelineTest, StageIsAScenarioOfItsOwn) {
    m_Folder.Write("timeline", "0 well\n10 failed\n");
    const Tool tool(m_Folder.Path() / "failed");  // without a state folder
    EXPECT_EQ(tool.Run("-v").out, "Product Version : 4.1\n");
    EXPECT_EQ(tool.Run("-ctrlinfo -a0").out, "failed\n");
    fs::remove(m_Folder.Path() / "v.txt");
    EXPECT_EQ(tool.Run("-v").err, "vdkcli simulator: " + (m_Folder / "v.txt") + ": missing\n");
    fs::remove(m_Folder.Path() / "timeline");
    m_Folder.Write("v.txt", "Product Version : 4.1\n");
    EXPECT_EQ(tool.Run("-v").err, "vdkcli simulator: " + (m_Folder / "failed/v.txt") + ": missing\n");
}

TEST_F(TimelineTest, StagesMayBeThoseOfTheScenarioAbove) {
    m_Folder.Write("timeline", "0 well\n10 failed\n");
    fs::create_directories(m_Folder.Path() / "again" / "worse");
    m_Folder.Write("again/timeline", "count inquiries\n0 failed\n1 worse\n2 .\n");
    m_Folder.Write("again/worse/ctrlinfo_a0.txt", "worse\n");
    m_Folder.Write("again/ldpdinfo_a0.txt", "again\n");
    for (const char* stage : {"failed\n", "worse\n", "own\n"}) {
        EXPECT_EQ(RunIn("again", "-v").out, "Product Version : 4.1\n");
        EXPECT_EQ(RunIn("again", "-ctrlinfo -a0").out, stage);
        EXPECT_EQ(RunIn("again", "-ldpdinfo -a0").out, "again\n");
    }
}

TEST_F(TimelineTest, WhatIsWrongIsNamedWithFileAndLine) {
    const std::map<std::string, std::string> kFaults = {
        {"0 well\n10 faild\n", ":2: there is no folder 'faild'"},
        {"0 well\n10 v.txt\n", ":2: there is no folder 'v.txt'"},
        {"0 ../well\n", ":1: a stage is a folder beside the timeline, or '.', not '../well'"},
        {"0 ..\n", ":1: a stage is a folder beside the timeline, or '.', not '..'"},
        {"# late\n5 well\n", ":2: the first stage has to begin at 0"},
        {"0 well\n10 failed\n10 mended\n", ":3: a stage has to begin later than the one before it"},
        {"0 well\n10 failed\n9 mended\n", ":3: a stage has to begin later than the one before it"},
        {"0 well\n10 failed\nrepeat 10\n",
         ":3: 'repeat' has to come later than the last stage, and behind it"},
        {"repeat 10\n0 well\n", ":1: 'repeat' has to come later than the last stage, and behind it"},
        {"0 well\nrepeat 5\n6 failed\n", ":3: no stage can stand behind 'repeat'"},
        {"", ": has no stage"},
        {"count inquiries\n", ": has no stage"}};
    for (const auto& [timeline, complaint] : kFaults) {
        m_Folder.Write("timeline", timeline);
        const Ended ended = Run("-v");
        EXPECT_EQ(ended.err, "vdkcli simulator: " + (m_Folder / "timeline") + complaint + "\n");
        EXPECT_EQ(ended.ExitStatus(), 65) << timeline;
        EXPECT_EQ(ended.out, "") << timeline;
    }
    for (const char* line :
         {"10", "-1 failed", "1.5 failed", "10s failed", "99999999999 failed", "10 failed now", "failed 10",
          "count", "count days", "repeat", "repeat often", "repeat 5 6"}) {
        m_Folder.Write("timeline", std::string("0 well\n") + line);
        EXPECT_EQ(Run("-v").err,
                  "vdkcli simulator: " + (m_Folder / "timeline") +
                      ":2: expected 'N STAGE', 'repeat N', 'count seconds' or 'count inquiries'\n")
            << line;
    }
    EXPECT_EQ(m_State.Read("inquiries"), "") << "nothing has been played";
    fs::remove(m_Folder.Path() / "timeline");
    fs::create_directory(m_Folder.Path() / "timeline");
    EXPECT_EQ(Run("-v").err, "vdkcli simulator: " + (m_Folder / "timeline") + ": cannot be read\n");
    EXPECT_EQ(Run("-v").ExitStatus(), 66);
}

TEST_F(TimelineTest, WithoutAStateFolderItSaysWhatItNeeds) {
    m_Folder.Write("timeline", "0 well\n");
    for (const char* arguments : {"-v", "-ctrlinfo -a0"}) {
        const Ended ended = Tool(m_Folder.Path()).Run(arguments);
        EXPECT_EQ(ended.ExitStatus(), 73);
        EXPECT_EQ(ended.out, "");
        EXPECT_EQ(ended.err,
                  "vdkcli simulator: a timeline needs a state folder; name one with VDKSIM_STATE\n");
    }
}

TEST_F(TimelineTest, StateThatIsNotItsOwnIsSaidClearly) {
    m_Folder.Write("timeline", "0 well\n");
    for (const char* state : {"soon, very soon\n", "0000000000005000", "-00000000005000\n"}) {
        m_State.Write("inquiries", state);
        const Ended ended = Run("-ctrlinfo -a0");
        EXPECT_EQ(ended.ExitStatus(), 73) << state;
        EXPECT_EQ(ended.err, "vdkcli simulator: " + (m_State / "inquiries") +
                                 ": cannot be understood; delete it to start over\n");
    }
    m_State.Write("inquiries", InquiryAt(5) + "000");
    EXPECT_EQ(Stage(), "well\n") << "the disk was full";
}

TEST_F(TimelineTest, InquiriesAtTheSameTimeAgreeOnTheStage) {
    m_Folder.Write("timeline", "count inquiries\n0 well\n5 failed\n15 mended\n");
    for (const std::string stage : {"well", "failed", "mended"}) {
        m_Folder.Write(stage + "/v.txt", stage + "\n");
    }
    const TempFolder outputs;
    const Tool tool = Tool(m_Folder.Path()).WithState(m_State.Path());
    std::array<pid_t, 20> children{};
    for (std::size_t number = 0; number < children.size(); ++number) {
        const int out =
            ::open((outputs / std::to_string(number)).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        children.at(number) = tool.Start("-v", out, STDERR_FILENO);
        ::close(out);
    }
    std::map<std::string, int> stages;
    for (std::size_t number = 0; number < children.size(); ++number) {
        int status = 0;
        ASSERT_EQ(::waitpid(children.at(number), &status, 0), children.at(number));
        EXPECT_EQ(status, 0);
        ++stages[outputs.Read(std::to_string(number))];
    }
    EXPECT_EQ(stages, (std::map<std::string, int>{{"well\n", 5}, {"failed\n", 10}, {"mended\n", 5}}));
    EXPECT_EQ(LinesOf(m_State.Read("inquiries")).size(), 20U);
    EXPECT_EQ(Stage(), "mended\n");
}

TEST_F(TimelineTest, ScenarioWithoutOneCountsNoInquiries) {
    EXPECT_EQ(Run("-v").ExitStatus(), 0);
    EXPECT_EQ(m_State.Names(), std::vector<std::string>{"runs.log"});
}

}  // namespace

}  // namespace vdksim::test
