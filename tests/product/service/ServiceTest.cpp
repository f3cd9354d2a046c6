#include "Service.h"

#include "DocumentText.h"
#include "basics/Time.h"
#include "history/Reader.h"
#include "test_support/InChild.h"
#include "test_support/SmallDisk.h"
#include "test_support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>
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
constexpr const char* kDriveEnded =
    "OK ended: controller 0, RG0, PD1 in enclosure 252 slot 1: FAILED (serial number B): well again";
constexpr const char* kGroupEnded =
    "OK ended: controller 0, RG0, LD0: DEGRADED, nothing is being rebuilt: well again";
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

/// All that the channel was told, a line each.
class WithEverythingTold : public Serving {
  protected:
    WithEverythingTold() {
        m_Configuration.channels.front().least = inventory::Level::Ok;
        m_Configuration.host = "storage7";
        Restart();
    }
    [[nodiscard]] std::string Lines() const {
        std::string lines;
        for (const std::string& line : Told()) {
            lines += line + '\n';
        }
        return lines;
    }
};

TEST_F(WithEverythingTold, AFullDiskIsToldOnceAndSoIsItsEnd) {
    const std::string disk = m_Folder / "disk";
    std::filesystem::create_directory(disk);
    EXPECT_EQ(
        testsupport::InChild([&] {
            testsupport::MountDisk(disk, "size=1m");
            m_Configuration.history = disk + "/history.db";
            Restart();
            Deliver();
            std::filesystem::remove(FileOf("pager"));
            testsupport::FillDisk(disk + "/other");
            for (int inquiry = 0; inquiry < 300; ++inquiry) {
                Sees(Server("OPTIMAL", "NO ERROR", "ONLINE", std::to_string(30 + inquiry % 9) + " C"));
                Deliver();
            }
            Sees(kFailed);
            Deliver();
            std::filesystem::remove(disk + "/other");
            Sees(kWell);
            Deliver();
            m_Service.reset();
            const std::size_t told = Told().size();
            const std::size_t stored =
                history::Reader(m_Configuration.history).EventsSince(history::TimePoint()).size();
            return Lines() + (stored == told + 1 ? "all of it is stored" : std::to_string(stored));
        }),
        "WARNING trouble: the history " + disk +
            "/history.db cannot be written: database or disk is full; it is kept in memory until then\n" +
            kDrive + "\n" + kGroup + "\n" + kDriveEnded + "\n" + kGroupEnded +
            "\n"
            "OK trouble: the history can be written again\nall of it is stored");
}

TEST_F(WithEverythingTold, AFolderThatMayOnlyBeReadIsToldAndWhatIsInItIsKnown) {
    const std::string disk = m_Folder / "disk";
    std::filesystem::create_directory(disk);
    EXPECT_EQ(
        testsupport::InChild([&] {
            testsupport::MountDisk(disk, "size=10m");
            m_Configuration.history = disk + "/history.db";
            Restart();
            Sees(kFailed);
            Deliver();
            m_Service.reset();
            std::filesystem::remove(FileOf("pager"));
            testsupport::MakeReadOnly(disk);
            Begin();
            Sees(kFailed);
            Sees(kFailed);
            Deliver();
            testsupport::MakeWritable(disk);
            Sees(kWell);
            Deliver();
            return Lines();
        }),
        "OK started: watching storage7, CRITICAL at 2031-04-05T06:05:00Z: 2 critical in 1 controller, 1 "
        "group, 1 logical drive, 2 drives, 2 alarms\n"
        "WARNING trouble: the history " +
            disk + "/history.db cannot be written: " + disk +
            "/history.db.lock cannot be opened: Read-only file system; it is kept in memory until then\n" +
            kDriveEnded + "\n" + kGroupEnded + "\nOK trouble: the history can be written again\n");
}

TEST_F(WithEverythingTold, AClockThatJumpsByADayTellsNothingTwice) {
    Sees(kFailed);
    m_Now.wall += hours(24);
    Sees(kFailed);
    m_Now.wall -= hours(24);
    Sees(kFailed);
    Sees(kWell);
    m_Now.wall -= hours(24);
    Sees(kWell);
    m_Now.wall += hours(48);
    Sees(kWell);
    Restart();
    Sees(kWell);
    Deliver();
    EXPECT_EQ(Lines(), std::string("OK started: watching storage7, not asked yet, 0 alarms\n") + kDrive +
                           "\n" + kGroup +
                           "\nCRITICAL reminder: still controller 0, RG0, PD1 in enclosure 252 slot 1: "
                           "FAILED (serial number B), since "
                           "2031-04-05T06:05:00Z; controller 0, RG0, LD0: DEGRADED, nothing is being "
                           "rebuilt, since 2031-04-05T06:05:00Z\n" +
                           kDriveEnded + "\n" + kGroupEnded +
                           "\nOK started: watching storage7, OK at 2031-04-06T06:30:00Z: 1 controller, 1 "
                           "group, 1 logical drive, 2 drives, all well, 0 alarms\n");
    EXPECT_THAT(m_Service->Alarms(), IsEmpty());
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

/// Two drives that are awake and one that sleeps.
const std::string kWithSleeper = Xml(
    ControllerItem("0") + DriveItem("PD0", "NO ERROR", "HOT SPARE", Key("Serial Number", "A")) +
    DriveItem("PD1", "NO ERROR", "HOT SPARE", Key("Serial Number", "B")) +
    DriveItem("PD2", "NO ERROR", "HOT SPARE", Key("Serial Number", "C") + Key("Power Status", "Stopped")));

TEST_F(Serving, AsksEachDriveThatIsAwakeOnceAnIntervalForTwentyFourDays) {
    m_Configuration.interval = minutes(30);
    m_Configuration.smartInterval = hours(6);
    Restart();
    constexpr hours kAll{24 * 24};
    std::map<std::string, std::vector<std::chrono::steady_clock::time_point>> asked;
    std::size_t servers = 0;
    for (const auto end = m_Now.steady + kAll; m_Now.steady < end;) {
        Pass(std::chrono::ceil<seconds>(
            std::max(m_Service->NextDue(false).value_or(m_Now.steady) - m_Now.steady, {})));
        while (const auto inquiry = m_Service->TakeDue(m_Now)) {
            if (inquiry->drive) {
                asked[inquiry->drive->slot].push_back(m_Now.steady);
                m_Service->Answered(inquiry->drive, {"", "no SMART data at all"}, m_Now);
            } else {
                ++servers;
                m_Service->Answered({}, {kWithSleeper, ""}, m_Now);
            }
        }
        Deliver();
    }
    EXPECT_EQ(servers, 24U * 48 + 1) << "at both ends, too";
    ASSERT_EQ(asked.size(), 2U) << "the one that sleeps is left alone";
    for (const auto& [slot, times] : asked) {
        EXPECT_NEAR(static_cast<double>(times.size()), 24 * 4, 1) << slot;
        for (std::size_t number = 1; number < times.size(); ++number) {
            EXPECT_EQ(times[number] - times[number - 1], hours(6)) << slot;
        }
    }
}

}  // namespace
}  // namespace service::test
