#include "Service.h"

#include "DocumentText.h"
#include "basics/Time.h"
#include "test_support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

namespace service::test {
namespace {

using namespace inventory::test;
using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

std::string Server(const std::string& state, const std::string& status, const std::string& detail,
                   const std::string& temperature = "31 C") {
    return Xml(
        ControllerItem("0") + GroupItem("RG0", LogicalDriveItem("LD0", state), {"PD0", "PD1"}, "RAID 1") +
        DriveItem("PD0", "NO ERROR", "ONLINE", Key("Serial Number", "A") + Key("Temperature", temperature)) +
        DriveItem("PD1", status, detail, Key("Serial Number", "B")));
}
const std::string kWell = Server("OPTIMAL", "NO ERROR", "ONLINE");
const std::string kFailed = Server("DEGRADED", "ERROR", "FAILED");

class Serving : public testing::Test {
  protected:
    Serving() {
        m_Configuration.history = m_Folder.Path() / "history.db";
        m_Configuration.smartInterval = seconds(0);
        m_Configuration.rules.calm = seconds(0);
        AddChannel("pager");
        Begin();
    }

    // A program that keeps what it is told in a file of the channel's name.
    void AddChannel(const std::string& name) {
        telling::Channel channel;
        channel.name = name;
        telling::Exec exec;
        exec.program = "/bin/sh";
        exec.arguments = {"-c", "cat >>" + FileOf(name)};
        channel.way = exec;
        m_Configuration.channels.push_back(channel);
    }

    void Begin() {
        m_Service = std::make_unique<Service>(
            m_Configuration, [this](const std::string& line) { m_Log.push_back(line); }, m_Now);
        ASSERT_EQ(m_Service->OtherWriter(), std::nullopt);
        m_Service->Start(m_Now);
    }

    // As a process that is killed: nothing of it is asked again.
    void Restart() {
        m_Service.reset();
        Begin();
    }

    void Pass(seconds time) {
        m_Now.wall += time;
        m_Now.steady += time;
    }

    void Sees(const std::string& xml) {
        Pass(minutes(5));
        m_Service->Answered({}, {xml, ""}, m_Now);
    }
    void Fails(const std::string& why) {
        Pass(minutes(5));
        m_Service->Answered({}, {"", why}, m_Now);
    }

    // Until all channels have been told.
    void Deliver() {
        for (;;) {
            m_Service->Work(m_Now);
            m_Service->Work(m_Now);  // What has become of the last may be something to tell.
            if (!m_Service->HasChildren()) {
                return;
            }
            int status = 0;
            const pid_t child = ::waitpid(-1, &status, 0);
            ASSERT_GT(child, 0);
            (void)m_Service->Ended(child, status, m_Now);
        }
    }

    [[nodiscard]] std::string FileOf(const std::string& channel) const { return m_Folder.Path() / channel; }

    [[nodiscard]] std::vector<watch::Event> EventsOf(const std::string& channel) const {
        std::ifstream file(FileOf(channel));
        std::vector<watch::Event> events;
        for (std::string line; std::getline(file, line);) {
            const auto event = watch::EventFrom(line);
            EXPECT_TRUE(event) << line;
            events.push_back(event.value_or(watch::Event()));
        }
        return events;
    }

    // What the channel was told, in words.
    [[nodiscard]] std::vector<std::string> Told(const std::string& channel = "pager") const {
        std::vector<std::string> lines;
        for (const watch::Event& event : EventsOf(channel)) {
            lines.push_back(Describe(event));
        }
        return lines;
    }

    const testsupport::TempFolder m_Folder;
    Configuration m_Configuration;
    Moment m_Now = {*basics::TimeFromUtcText("2031-04-05T06:00:00Z"),
                    std::chrono::steady_clock::time_point(hours(1))};
    std::vector<std::string> m_Log;
    std::unique_ptr<Service> m_Service;
};

constexpr const char* kDrive =
    "CRITICAL began: controller 0, RG0, PD1 in enclosure 252 slot 1: FAILED (serial number B)";
constexpr const char* kGroup = "CRITICAL began: controller 0, RG0, LD0: DEGRADED, nothing is being rebuilt";

TEST_F(Serving, AServerThatStartsDegradedIsToldOnceWhateverRestarts) {
    Sees(kFailed);
    Deliver();
    EXPECT_THAT(Told(), ElementsAre(kDrive, kGroup));
    for (int times = 0; times < 3; ++times) {
        Restart();
        Sees(kFailed);
        Deliver();
    }
    EXPECT_EQ(Told().size(), 2U);
    EXPECT_EQ(m_Service->Alarms().size(), 2U);
}

TEST_F(Serving, WhatWasNotDeliveredIsDeliveredAfterARestartUnderItsId) {
    Sees(kFailed);
    Restart();
    EXPECT_EQ(m_Service->WaitingFor("pager"), 2U);
    Deliver();
    EXPECT_THAT(Told(), ElementsAre(kDrive, kGroup));
    Restart();
    EXPECT_EQ(m_Service->WaitingFor("pager"), 0U);
    std::set<std::string> ids;
    for (const watch::Event& event : EventsOf("pager")) {
        ids.insert(event.id);
    }
    EXPECT_EQ(ids.size(), 2U);
}

TEST_F(Serving, ShowsTheLastKnownStateAfterARestart) {
    Sees(kFailed);
    Restart();
    ASSERT_NE(m_Service->Latest(), nullptr);
    EXPECT_EQ(m_Service->Latest()->TheHealth().level, inventory::Level::Critical);
    EXPECT_THAT(m_Service->State(), HasSubstr("CRITICAL at 2031-04-05T06:05:00Z: 2 critical in "));
    EXPECT_THAT(m_Service->State(), HasSubstr(", 2 alarms"));
}

TEST_F(Serving, AServerThatCannotBeAskedIsAnAlarmAfterSomeTime) {
    Sees(kWell);
    Fails("vdkcli -v did not end within 50 s, and was ended");
    Fails("vdkcli -v did not end within 50 s, and was ended");
    Deliver();
    EXPECT_THAT(Told(), IsEmpty());
    Fails("vdkcli -v did not end within 50 s, and was ended");
    Deliver();
    ASSERT_EQ(Told().size(), 1U);
    EXPECT_THAT(Told().front(),
                HasSubstr("UNKNOWN began: the server: cannot be asked, 3 times in a row: vdkcli -v did"));
    EXPECT_EQ(m_Service->Latest()->TheHealth().level, inventory::Level::Ok);
    Sees(kWell);
    Deliver();
    EXPECT_EQ(Told().back(), "OK ended: the server answers again");
}

TEST_F(Serving, NonsenseIsAFailureToAsk) {
    for (int times = 0; times < 3; ++times) {
        Sees("<html/>");
    }
    Deliver();
    ASSERT_EQ(Told().size(), 1U);
    EXPECT_THAT(Told().front(), HasSubstr("what the module returned is no RAID document: "));
}

TEST_F(Serving, AChannelThatIsDownHoldsBackAndIsToldToTheOthers) {
    m_Configuration.channels.front().way = telling::Exec{"/nowhere/program"};
    AddChannel("other");
    Restart();
    Sees(kFailed);
    Deliver();
    EXPECT_THAT(Told("other"),
                ElementsAre(kDrive, kGroup, HasSubstr("WARNING trouble: the channel pager is down: ")));
    EXPECT_EQ(m_Service->WaitingFor("pager"), 2U);
    m_Configuration.channels.front().way = telling::Exec{"/bin/sh", {"-c", "cat >>" + FileOf("pager")}};
    m_Service->Configure(m_Configuration, m_Now);
    Deliver();
    EXPECT_THAT(Told(), ElementsAre(kDrive, kGroup));
    EXPECT_EQ(Told("other").size(), 3U) << "that it works again is only information";
}

TEST_F(Serving, TellsUnderItsNewNameWhatWaitsWhenTheHostIsCalledAnother) {
    m_Configuration.host = "storage7";
    Restart();
    Sees(kFailed);
    m_Configuration.host = "storage8";
    m_Service->Configure(m_Configuration, m_Now);
    Deliver();
    EXPECT_THAT(testsupport::ReadFile(FileOf("pager")),
                AllOf(HasSubstr("\"host\":\"storage8\""), Not(HasSubstr("\"host\":\"storage7\""))));
}

TEST_F(Serving, AHistoryThatCannotBeWrittenIsToldAndNothingIsLost) {
    m_Configuration.history = "/proc/nowhere/history.db";
    Restart();
    Sees(kFailed);
    Deliver();
    EXPECT_THAT(Told(), Contains(HasSubstr("WARNING trouble: ")));
    EXPECT_THAT(Told(), Contains(kDrive));
    const std::size_t count = Told().size();
    Sees(kFailed);
    Deliver();
    EXPECT_EQ(Told().size(), count) << testing::PrintToString(Told());
}

TEST_F(Serving, ExpectationsThatCannotBeReadAreToldAndThoseBeforeCount) {
    const std::string file = m_Folder.Path() / "expect.json";
    testsupport::WriteFile(file, R"({"version": 1, "accepted": [{"place": "controller 0, RG0, LD0", "what":
        "DEGRADED, nothing is being rebuilt", "until": "2999-12-31", "reason": "known"}]})");
    m_Configuration.expect = file;
    m_Service->Configure(m_Configuration, m_Now);
    Sees(kFailed);
    testsupport::WriteFile(file, "{");
    Sees(kFailed);
    Sees(kFailed);
    Deliver();
    EXPECT_THAT(Told(), ElementsAre(kDrive, HasSubstr("WARNING trouble: " + file +
                                                      " holds no expectations: line 1")));
}

std::size_t ResidentPages() {
    std::ifstream file("/proc/self/statm");
    std::size_t all = 0;
    std::size_t resident = 0;
    file >> all >> resident;
    return resident;
}

std::size_t OpenDescriptors() {
    std::size_t count = 0;
    for (const auto& each : std::filesystem::directory_iterator("/proc/self/fd")) {
        count += each.is_symlink() ? 1U : 0U;
    }
    return count;
}

TEST_F(Serving, NothingGrowsInTwentyFourDays) {
    constexpr int kInquiriesADay = 288;
    constexpr int kDays = 24;
    const auto liveADay = [this] {
        for (int inquiry = 0; inquiry < kInquiriesADay; ++inquiry) {
            const std::string degrees = std::to_string(30 + inquiry % 5) + " C";
            Sees(inquiry == 100 ? kFailed : Server("OPTIMAL", "NO ERROR", "ONLINE", degrees));
            Deliver();
        }
    };
    liveADay();
    liveADay();
    const std::size_t descriptors = OpenDescriptors();
    [[maybe_unused]] const std::size_t pages = ResidentPages();
    for (int day = 2; day < kDays; ++day) {
        liveADay();
    }
    EXPECT_EQ(OpenDescriptors(), descriptors);
#if !defined(__SANITIZE_ADDRESS__)            // The sanitizer keeps what is freed.
    EXPECT_LT(ResidentPages(), pages + 512);  // two megabytes, for what the allocator keeps
#endif
    EXPECT_EQ(m_Service->WaitingFor("pager"), 0U);
    EXPECT_EQ(Told().size(), 24U * 4);  // a drive and a logical drive, begun and ended, each day
    EXPECT_LE(::waitpid(-1, nullptr, WNOHANG), 0);
}

}  // namespace
}  // namespace service::test
