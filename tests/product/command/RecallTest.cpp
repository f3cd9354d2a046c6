// What the service remembers: history, events, and the page that shows it.

#include "Recall.h"

#include "DocumentText.h"
#include "basics/Time.h"
#include "history/Archive.h"
#include "test_support/Command.h"
#include "test_support/Waiting.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

namespace command::test::recall {
namespace {

using namespace inventory::test;
using namespace testsupport;
using history::Archive;
using history::TimePoint;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

TimePoint At(const char* text) {
    return *basics::TimeFromUtcText(text);
}

TEST(Since, IsATimeAsPeopleTypeIt) {
    const TimePoint now = At("2031-04-05T06:07:08Z");
    EXPECT_EQ(SinceFrom("30d", now), At("2031-03-06T06:07:08Z"));
    EXPECT_EQ(SinceFrom("12h", now), At("2031-04-04T18:07:08Z"));
    EXPECT_EQ(SinceFrom("90m", now), At("2031-04-05T04:37:08Z"));
    EXPECT_EQ(SinceFrom("2031-04-05", now), At("2031-04-05T00:00:00Z"));
    EXPECT_EQ(SinceFrom("2031-04-05T01:02:03Z", now), At("2031-04-05T01:02:03Z"));
    for (const char* const text :
         {"", "yesterday", "30", "d", "-1d", "2031-4-5", "2031-02-30", "2031-04-05T01:02:03"}) {
        EXPECT_EQ(SinceFrom(text, now), std::nullopt) << text;
    }
}

std::string DriveWith(const std::string& slot, const std::string& serial, const std::string& temperature,
                      bool hasFailed = false) {
    return DriveItem(
        "PD" + slot, hasFailed ? "ERROR" : "NO ERROR", hasFailed ? "FAILED" : "ONLINE",
        Key("Product ID", "TF6") + Key("Serial Number", serial) + Key("Temperature", temperature), "-",
        "None");
}

watch::Event EventNamed(const std::string& id, TimePoint at) {
    watch::Event event;
    event.id = id;
    event.at = at;
    event.kind = watch::EventKind::Began;
    event.level = inventory::Level::Critical;
    event.about.kind = inventory::PartKind::Drive;
    event.about.serial = "7K0001";
    event.words = "event " + id;
    return event;
}

/// A history that somebody has written, and writes.
class Recalled : public testing::Test {
  protected:
    Recalled() : m_Path(m_Folder / "history.db"), m_Archive(m_Path) {
        history::Restored restored;
        EXPECT_EQ(m_Archive.Open(m_Now, restored).trouble, "");
        Record("31 C", false, "one");
        Record("33 C", false, "");
        Record("35 C", true, "two");
    }
    void Record(const std::string& temperature, bool hasFailed, const std::string& event) {
        m_Now += std::chrono::minutes(5);
        const inventory::Snapshot snapshot(Read(ControllerItem("0") +
                                                DriveWith("0", "7K0001", temperature, hasFailed) +
                                                DriveWith("1", "7K0002", "30 C")));
        history::Entry entry;
        entry.at = m_Now;
        entry.snapshot = &snapshot;
        if (!event.empty()) {
            entry.events.push_back(EventNamed(event, m_Now));
        }
        EXPECT_EQ(m_Archive.Record(entry).trouble, "");
    }
    [[nodiscard]] Ended Ask(std::vector<std::string> words) const {
        words.insert(words.end(), {"--history", m_Path});
        return RunCommand(words);
    }

    TempFolder m_Folder;
    std::string m_Path;
    TimePoint m_Now = At("2031-04-05T06:00:00Z");
    Archive m_Archive;
};

TEST_F(Recalled, ShowsAllParts) {
    const Ended ended = Ask({"history"});
    EXPECT_EQ(ended.ExitStatus(), 0);
    EXPECT_EQ(ended.err, "");
    EXPECT_EQ(ended.out,
              "As of 2031-04-05 06:15:00 UTC: 3 parts\n"
              "\n"
              "PART                                       STATE   SINCE (UTC)          MODEL  SERIAL NUMBER\n"
              "controller 0                               OK      2031-04-05 06:05:00  Gate\n"
              "controller 0, PD0 in enclosure 252 slot 0  FAILED  2031-04-05 06:15:00  TF6    7K0001\n"
              "controller 0, PD1 in enclosure 252 slot 1  ONLINE  2031-04-05 06:05:00  TF6    7K0002\n");
}

TEST_F(Recalled, ShowsWhatHappenedToAPart) {
    for (const std::vector<std::string>& part : {std::vector<std::string>{"7k0001"},
                                                 {"0", "252:0"},
                                                 {"252:0"},
                                                 {"controller 0, PD0 in enclosure 252 slot 0"}}) {
        std::vector<std::string> words = {"history", "--since", "2031-01-01"};
        words.insert(words.begin() + 1, part.begin(), part.end());
        const Ended ended = Ask(words);
        EXPECT_EQ(ended.ExitStatus(), 0) << ended.err;
        EXPECT_THAT(ended.out,
                    StartsWith("controller 0, PD0 in enclosure 252 slot 0 (TF6, serial number 7K0001)\n"
                               "FAILED since 2031-04-05 06:15:00, as of 2031-04-05 06:15:00 UTC\n"));
        EXPECT_THAT(ended.out, HasSubstr("  2031-04-05 06:05:00  2031-04-05 06:10:00  ONLINE\n"));
        EXPECT_THAT(ended.out, HasSubstr("\n  temperature    35      31       35  "));
        EXPECT_THAT(ended.out, HasSubstr("event two\n"));
    }
}

TEST_F(Recalled, LooksNoFurtherBackThanItIsTold) {
    const std::string out = Ask({"history", "7K0001", "--since", "2031-04-05T06:12:00Z"}).out;
    EXPECT_THAT(out, Not(HasSubstr("event one")));
    EXPECT_THAT(out, Not(HasSubstr("06:10:00")));
    EXPECT_THAT(out, HasSubstr("event two"));
}

struct Misnamed {
    std::vector<std::string> words;
    const char* complaint;
};

TEST_F(Recalled, SaysWhichPartIsNotKnown) {
    const Misnamed kCases[] = {
        {{"history", "7K0003"},
         "mngsrvraid: no part is called \"7K0003\" (did you mean 7K0001?); mngsrvraid history shows "
         "them all\n"},
        {{"history", "RG7"}, "mngsrvraid: no part is called \"RG7\"; mngsrvraid history shows them all\n"},
    };
    for (const Misnamed& each : kCases) {
        const Ended ended = Ask(each.words);
        EXPECT_EQ(ended.ExitStatus(), 2);
        EXPECT_EQ(ended.out, "");
        EXPECT_EQ(ended.err, each.complaint);
    }
}

TEST_F(Recalled, SaysWhichPartsMayBeMeant) {
    m_Now += std::chrono::minutes(5);
    const inventory::Snapshot snapshot(Read(ControllerItem("0") + DriveWith("0", "7K0001", "31 C") +
                                            ControllerItem("1") + DriveWith("0", "7K0009", "31 C")));
    history::Entry entry;
    entry.at = m_Now;
    entry.snapshot = &snapshot;
    ASSERT_EQ(m_Archive.Record(entry).trouble, "");
    const Ended ended = Ask({"history", "252:0"});
    EXPECT_EQ(ended.ExitStatus(), 2);
    EXPECT_EQ(ended.err,
              "mngsrvraid: \"252:0\" may be any of controller 0, PD0 in enclosure 252 slot 0 (TF6, serial "
              "number 7K0001); "
              "controller 1, PD0 in enclosure 252 slot 0 (TF6, serial number 7K0009); mngsrvraid history "
              "shows them "
              "all\n");
    EXPECT_EQ(Ask({"history", "1", "252:0"}).ExitStatus(), 0);
}

TEST_F(Recalled, IsJsonAndAPageToo) {
    EXPECT_THAT(Ask({"history", "--format", "json"}).out,
                StartsWith("{\n  \"schema_version\": 1,\n  \"host\": null,\n"));
    EXPECT_THAT(Ask({"history", "--format", "json", "--host", "storage7"}).out,
                HasSubstr("\"host\": \"storage7\""));
    EXPECT_THAT(Ask({"history", "7K0001", "--format", "json", "--since", "2031-01-01"}).out,
                HasSubstr("\"counter\": \"temperature\""));
    EXPECT_THAT(Ask({"history", "--format", "html"}).out, HasSubstr("<h1>RAID parts</h1>"));
    EXPECT_THAT(Ask({"history", "7K0001", "--format", "html", "--since", "2031-01-01"}).out,
                HasSubstr("<svg"));
    const Ended stored = Ask({"--output", m_Folder / "page.html", "history", "--format", "html"});
    EXPECT_EQ(stored.out, "");
    EXPECT_THAT(m_Folder.Read("page.html"), HasSubstr("7K0002"));
}

TEST_F(Recalled, TellsEvents) {
    EXPECT_EQ(Ask({"events", "--since", "2031-04-05"}).out,
              "TIME (UTC)           LEVEL     EVENT           WHAT\n"
              "2031-04-05 06:05:00  CRITICAL  began           event one\n"
              "2031-04-05 06:15:00  CRITICAL  began           event two\n");
    EXPECT_EQ(Ask({"events", "--since", "2031-04-05T06:10:00Z", "--format", "json"}).out,
              JsonOf(EventNamed("two", m_Now)) + "\n");
    EXPECT_EQ(Ask({"events", "--since", "2031-04-06"}).out, "no events since 2031-04-06T00:00:00Z\n");
    EXPECT_EQ(Ask({"events", "--since", "2031-04-06", "--format", "json"}).out, "");
    const Ended named = Ask({"--host", "storage7", "events", "--since", "2031-04-05", "--format", "json"});
    EXPECT_THAT(named.out, HasSubstr("\"host\":\"storage7\""));
}

TEST_F(Recalled, IsReadWithoutTheService) {
    m_Archive = Archive(m_Folder / "another.db");
    EXPECT_THAT(Ask({"events", "--since", "2031-01-01"}).out, HasSubstr("event two"));
}

struct Refused {
    std::vector<std::string> words;
    const char* complaint;
};

TEST_F(Recalled, RefusesWhatItCannotUnderstand) {
    const Refused kCases[] = {
        {{"history", "--since", "yesterday"},
         "--since takes a time such as 30d, 12h, 90m, 2031-04-05 or "
         "2031-04-05T06:07:08Z, not \"yesterday\""},
        {{"history", "--format", "xml"}, "--format of history takes table, json or html, not \"xml\""},
        {{"events", "--format", "html"}, "--format of events takes table or json, not \"html\""},
        {{"events", "extra"}, "unexpected argument \"extra\""},
        {{"--scenario", "small", "history"}, "--scenario is a server to ask, which history leaves alone"},
        {{"events", "--follow", "--output", "x"},
         "--follow prints events as they come, which --output does not store"},
        {{"history", "--follow"}, "unknown option \"--follow\""},
        {{"history", "--compact"}, "--compact does not go with history"},
        {{"show", "--history", "x"}, "--history of show goes with --format html alone"},
        {{"events", "--history", ""}, "--history needs a path that is not empty"},
    };
    for (const Refused& each : kCases) {
        const Ended ended = RunCommand(each.words);
        EXPECT_EQ(ended.ExitStatus(), 2) << each.complaint;
        EXPECT_THAT(ended.err, HasSubstr(each.complaint));
    }
}

TEST_F(Recalled, SaysWhereThereIsNoHistory) {
    const Ended ended = RunCommand({"history", "--history", m_Folder / "nothing.db"});
    EXPECT_EQ(ended.ExitStatus(), 4);
    EXPECT_THAT(ended.err,
                StartsWith("mngsrvraid: the history " + m_Folder / "nothing.db" + " is not there, "));
    m_Folder.Write("text", "no database at all, but a text that is long enough to be looked at");
    EXPECT_THAT(RunCommand({"events", "--history", m_Folder / "text"}).err,
                HasSubstr("is damaged (file is not a database)"));
}

TEST_F(Recalled, IsOnThePage) {
    // Of the drives of that server nothing is remembered, but events are.
    const Ended ended = Ask({"--scenario", "small", "show", "--format", "html"});
    EXPECT_EQ(ended.ExitStatus(), 0) << ended.err;
    EXPECT_THAT(ended.out, HasSubstr("What happened in 30 days"));
    EXPECT_THAT(ended.out, HasSubstr("event one"));
    EXPECT_THAT(RunCommand({"--scenario", "small", "show", "--format", "html"}).out,
                Not(HasSubstr("What happened")));
    EXPECT_EQ(
        RunCommand({"--scenario", "small", "show", "--format", "html", "--history", m_Folder / "nothing"})
            .ExitStatus(),
        4);
}

class Following : public Recalled {
  protected:
    /// `events --follow` whose output goes into a file.
    std::unique_ptr<Running> Start(std::vector<std::string> more = {}) {
        std::vector<std::string> words = {"events", "--follow", "--since", "2031-01-01", "--history", m_Path};
        words.insert(words.end(), more.begin(), more.end());
        return Command{.words = words, .standardOutput = m_Folder / "out"}.Start();
    }
    /// As a service does that begins a new file.
    void SetAside() {
        m_Archive = Archive(m_Folder / "another.db");
        for (const char* const beside : {"", "-wal", "-shm"}) {
            if (std::filesystem::exists(m_Path + beside)) {
                std::filesystem::rename(m_Path + beside, m_Path + ".old" + beside);
            }
        }
        m_Archive = Archive(m_Path);
        history::Restored restored;
        EXPECT_EQ(m_Archive.Open(m_Now, restored).trouble, "");
    }
    [[nodiscard]] bool Prints(const std::string& text) const {
        return ComesTrue([&] { return m_Folder.Read("out").find(text) != std::string::npos; });
    }
};

TEST_F(Following, PrintsEventsAsTheyCome) {
    const std::unique_ptr<Running> running = Start();
    EXPECT_TRUE(Prints("event two\n"));
    Record("36 C", true, "three");
    EXPECT_TRUE(Prints("2031-04-05 06:20:00  CRITICAL  began           event three\n"));
    Record("36 C", true, "four");
    EXPECT_TRUE(Prints("event four\n"));
    ::kill(running->Process(), SIGINT);
    const Ended ended = running->Wait();
    EXPECT_TRUE(WIFSIGNALED(ended.status));
    EXPECT_EQ(WTERMSIG(ended.status), SIGINT);
    EXPECT_EQ(ended.err, "");
    EXPECT_EQ(CountLines(m_Folder.Read("out")), 5U);
}

TEST_F(Following, GoesOnWithTheNextFile) {
    const std::unique_ptr<Running> running = Start({"--format", "json"});
    EXPECT_TRUE(Prints("\"event two\""));
    SetAside();
    Record("36 C", true, "three");
    EXPECT_TRUE(Prints("\"event three\""));
    ::kill(running->Process(), SIGINT);
    (void)running->Wait();
    EXPECT_EQ(CountLines(m_Folder.Read("out")), 3U);
}

TEST_F(Following, EndsWhenNobodyReads) {
    const std::string pipe = m_Folder / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const int reading = ::open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    const std::unique_ptr<Running> running =
        Command{.words = {"events", "--follow", "--history", m_Path}, .standardOutput = pipe}.Start();
    char first = 0;
    EXPECT_TRUE(ComesTrue([&] { return ::read(reading, &first, 1) == 1; }));
    ::close(reading);
    EXPECT_EQ(running->Wait().ExitStatus(), 0);
}

}  // namespace
}  // namespace command::test::recall
