#include "telling/Courier.h"

#include "Bench.h"
#include "test_support/InChild.h"
#include "test_support/Sweep.h"

#include <malloc.h>
#include <signal.h>
#include <sys/resource.h>

namespace telling::test {
namespace {

using testsupport::ComesTrue;

// Fails while there is no file "up".
class CourierTest : public testing::Test {
  protected:
    [[nodiscard]] Channel Log(const std::string& name) const {
        return ExecChannel(name,
                           MakeScript(m_Folder, name + ".sh",
                                      "echo $MNGSRVRAID_ID >> " + (m_Folder / name) + "\n" + "test -e " +
                                          (m_Folder / "up") + " || { echo 'nobody there' >&2; exit 3; }\n"));
    }

    [[nodiscard]] Channel Hanging(const std::string& name) const {
        return ExecChannel(
            name, MakeScript(m_Folder, name + ".sh", "echo > " + (m_Folder / name) + "\nexec sleep 1000\n"));
    }

    [[nodiscard]] bool IsThere(const std::string& name) const {
        return std::filesystem::exists(m_Folder / name);
    }

    void WaitFor(const std::string& name) const {
        ASSERT_TRUE(ComesTrue([&] { return IsThere(name); })) << name;
    }

    void SetUp() override { m_Folder.Write("up", ""); }
    void GoDown() const { std::filesystem::remove(m_Folder / "up"); }
    void GoUp() const { m_Folder.Write("up", ""); }

    TempFolder m_Folder;
};

TEST_F(CourierTest, DeliversInOrder) {
    Bench bench({Log("a")});
    for (const char* const id : {"1", "2", "3"}) {
        bench.Add("a", id);
    }
    EXPECT_EQ(bench.courier.WaitingFor("a"), 3U);
    bench.Settle();
    EXPECT_EQ(m_Folder.Read("a"), "1\n2\n3\n");
    EXPECT_THAT(bench.Which(What::Delivered), ElementsAre("a 1", "a 2", "a 3"));
    EXPECT_EQ(bench.courier.WaitingFor("a"), 0U);
    EXPECT_EQ(bench.courier.NextDue(), std::nullopt);
}

TEST_F(CourierTest, DeliversOneAtATime) {
    Bench bench({Hanging("a")});
    bench.Add("a", "1");
    bench.Add("a", "2");
    bench.Work();
    bench.Work();
    EXPECT_EQ(bench.courier.Processes().size(), 1U);
}

TEST_F(CourierTest, KnowsItsChannels) {
    Bench bench({Log("a")});
    EXPECT_FALSE(bench.courier.Add("b", MakeEvent("1")));
    EXPECT_EQ(bench.courier.WaitingFor("b"), 0U);
    EXPECT_FALSE(bench.courier.Ended(::getpid(), 0, bench.now));
}

TEST_F(CourierTest, AddsAnEventOnce) {
    Bench bench({Log("a")});
    bench.Add("a", "1");
    bench.Add("a", "1");
    bench.Settle();
    EXPECT_EQ(m_Folder.Read("a"), "1\n");
}

TEST_F(CourierTest, TriesAgainAfterGrowingPauses) {
    GoDown();
    Bench bench({Log("a")});
    bench.Add("a", "1");
    bench.Add("a", "2");
    std::vector<seconds> pauses;
    for (int attempt = 0; attempt < 12; ++attempt) {
        bench.Settle();
        const Outcome& failure = bench.outcomes.back();
        EXPECT_EQ(failure.what, What::Failed);
        EXPECT_EQ(failure.id, "1");
        EXPECT_EQ(failure.attempts, static_cast<unsigned>(attempt + 1));
        pauses.push_back(failure.nextTry);
        const std::size_t before = bench.outcomes.size();
        bench.now += failure.nextTry - std::chrono::nanoseconds(1);
        bench.Settle();
        EXPECT_EQ(bench.outcomes.size(), before) << "too early";
        bench.now += std::chrono::nanoseconds(1);
        EXPECT_EQ(bench.courier.NextDue(), bench.now);
    }
    using s = seconds;
    EXPECT_THAT(pauses, ElementsAre(s(10), s(20), s(40), s(80), s(160), s(320), s(640), s(1280), s(2560),
                                    s(3600), s(3600), s(3600)));
    EXPECT_EQ(m_Folder.Read("a"), "1\n1\n1\n1\n1\n1\n1\n1\n1\n1\n1\n1\n");
}

TEST_F(CourierTest, TellsFailureAndRecovery) {
    GoDown();
    Bench bench({Log("a")});
    bench.Add("a", "1");
    bench.Settle();
    EXPECT_EQ(bench.LastWords(), (m_Folder / "a.sh") + " ended with status 3: nobody there");
    GoUp();
    bench.Add("a", "2");
    bench.now += seconds(10);
    bench.Settle();
    EXPECT_THAT(bench.Which(What::Failed), ElementsAre("a 1"));
    EXPECT_THAT(bench.Which(What::Recovered), ElementsAre("a"));
    EXPECT_EQ(bench.outcomes[2].what, What::Recovered);
    EXPECT_EQ(bench.outcomes[2].attempts, 1U);
    EXPECT_THAT(bench.Which(What::Delivered), ElementsAre("a 1", "a 2"));
    GoDown();
    bench.Add("a", "3");
    bench.Settle();
    EXPECT_EQ(bench.outcomes.back().attempts, 1U) << "it is down anew";
    EXPECT_EQ(bench.outcomes.back().nextTry, seconds(10));
}

TEST_F(CourierTest, LeavesATenthOfThePauseToChance) {
    GoDown();
    Bench bench({Log("a")}, {.firstPause = seconds(100), .chance = [] { return 0.5; }});
    bench.Add("a", "1");
    bench.Settle();
    EXPECT_EQ(bench.outcomes.back().nextTry, seconds(95));
    EXPECT_EQ(bench.courier.NextDue(), bench.now + seconds(95));
}

TEST_F(CourierTest, ChanceIsThereByDefault) {
    GoDown();
    Bench bench({Log("a")}, Manner{});
    bench.Add("a", "1");
    bench.Settle();
    EXPECT_GE(bench.outcomes.back().nextTry, seconds(9));
    EXPECT_LE(bench.outcomes.back().nextTry, seconds(10));
}

TEST_F(CourierTest, OneChannelThatHangsHoldsUpNoOther) {
    Bench bench({Hanging("a"), Log("b")});
    bench.Add("a", "1");
    for (const char* const id : {"1", "2", "3"}) {
        bench.Add("b", id);
    }
    EXPECT_TRUE(ComesTrue([&] {
        bench.Work();
        for (const pid_t process : bench.courier.Processes()) {
            bench.Reap(process);
        }
        return bench.courier.WaitingFor("b") == 0;
    }));
    EXPECT_EQ(m_Folder.Read("b"), "1\n2\n3\n");
    EXPECT_EQ(bench.courier.WaitingFor("a"), 1U);
}

TEST_F(CourierTest, FullQueueDropsTheOldestOfWhatWeighsLeast) {
    GoDown();
    Channel channel = Log("a");
    channel.capacity = 3;
    Bench bench({channel});
    bench.Add("a", "critical", Level::Critical);
    bench.Add("a", "warning 1", Level::Warning);
    bench.Add("a", "warning 2", Level::Warning);
    bench.Add("a", "critical 2", Level::Critical);
    bench.Add("a", "ok", Level::Ok);
    bench.Add("a", "critical 3", Level::Critical);
    bench.Add("a", "critical 4", Level::Critical);
    bench.Take();
    EXPECT_THAT(bench.Which(What::Dropped), ElementsAre("a warning 1", "a ok", "a warning 2", "a critical"));
    EXPECT_EQ(bench.LastWords(), "more than 3 events wait for it");
}

TEST_F(CourierTest, EndedAlarmWeighsAsMuchAsTheAlarm) {
    Channel channel = Log("a");
    channel.capacity = 1;
    Bench bench({channel});
    watch::Event ended = MakeEvent("ended", Level::Ok);
    ended.before = Level::Critical;
    bench.courier.Add("a", ended);
    bench.Add("a", "warning", Level::Warning);
    bench.Take();
    EXPECT_THAT(bench.Which(What::Dropped), ElementsAre("a warning"));
}

TEST_F(CourierTest, WhatIsOnItsWayIsNotDropped) {
    Channel channel = Hanging("a");
    channel.capacity = 2;
    Bench bench({channel});
    bench.Add("a", "1", Level::Ok);
    bench.Work();
    bench.Add("a", "2", Level::Critical);
    bench.Add("a", "3", Level::Warning);
    bench.Take();
    EXPECT_THAT(bench.Which(What::Dropped), ElementsAre("a 3"));
}

TEST_F(CourierTest, TellsWithTheNextDeliveryHowManyWereDropped) {
    GoDown();
    const std::string count =
        MakeScript(m_Folder, "count.sh",
                   "test -e " + (m_Folder / "up") + " && echo $MNGSRVRAID_ID:$MNGSRVRAID_DROPPED >> " +
                       (m_Folder / "a") + "\n");
    Channel channel = ExecChannel("a", count);
    channel.capacity = 2;
    Bench bench({channel});
    for (int number = 0; number < 5; ++number) {
        bench.Add("a", std::to_string(number));
    }
    bench.Settle();
    bench.Add("a", "5");  // One more is dropped between two attempts.
    GoUp();
    bench.now += seconds(10);
    bench.Settle();
    EXPECT_EQ(m_Folder.Read("a"), "4:4\n5:\n");
}

TEST_F(CourierTest, TellsOfWhatWasDroppedDuringADeliveryWithTheNext) {
    Channel channel =
        ExecChannel("a", MakeScript(m_Folder, "slow.sh",
                                    "echo $MNGSRVRAID_ID:$MNGSRVRAID_DROPPED >> " + (m_Folder / "a") + "\n" +
                                        "while ! test -e " + (m_Folder / "go") + "; do sleep 0.01; done\n"));
    channel.capacity = 2;
    Bench bench({channel});
    bench.Add("a", "1");
    bench.Work();
    bench.Add("a", "2");
    bench.Add("a", "3");
    m_Folder.Write("go", "");
    bench.Settle();
    EXPECT_EQ(m_Folder.Read("a"), "1:\n3:1\n");
}

TEST_F(CourierTest, NewSettingsKeepWhatWaitsAndAreTriedAtOnce) {
    GoDown();
    Bench bench({Log("a"), Log("b")});
    bench.Add("a", "1");
    bench.Settle();
    Channel better = Log("c");
    better.name = "a";
    GoUp();
    bench.courier.SetChannels({better}, bench.now);
    bench.Settle();
    EXPECT_EQ(m_Folder.Read("c"), "1\n");
    EXPECT_THAT(bench.Which(What::Recovered), ElementsAre("a"));
    EXPECT_FALSE(bench.courier.Add("b", MakeEvent("2")));
}

TEST_F(CourierTest, SameSettingsDoNotShortenAPause) {
    GoDown();
    Bench bench({Log("a")});
    bench.Add("a", "1");
    bench.Settle();
    bench.courier.SetChannels({Log("a")}, bench.now);
    EXPECT_EQ(bench.courier.NextDue(), bench.now + seconds(10));
}

TEST_F(CourierTest, SmallerQueueDropsWhatIsTooMuch) {
    GoDown();
    Bench bench({Log("a")});
    bench.Add("a", "1", Level::Warning);
    bench.Add("a", "2");
    Channel smaller = Log("a");
    smaller.capacity = 1;
    bench.courier.SetChannels({smaller}, bench.now);
    bench.Take();
    EXPECT_THAT(bench.Which(What::Dropped), ElementsAre("a 1"));
}

TEST_F(CourierTest, WhatWaitsForAChannelThatIsGoneIsDropped) {
    Bench bench({Hanging("a"), Log("b")});
    bench.Add("a", "1");
    bench.Add("a", "2");
    bench.Work();
    const pid_t process = bench.courier.Processes().front();
    bench.courier.SetChannels({Log("b")}, bench.now);
    bench.Take();
    EXPECT_THAT(bench.Which(What::Dropped), ElementsAre("a 1", "a 2"));
    EXPECT_EQ(testsupport::Look(process).id, -1) << "it was left running";
    EXPECT_THAT(bench.courier.Processes(), IsEmpty());
}

TEST_F(CourierTest, StopEndsWhatRunsAndStartsNothing) {
    Bench bench({Hanging("a"), Log("b")});
    bench.Add("a", "1");
    bench.Work();
    WaitFor("a");
    bench.courier.Stop(bench.now);
    bench.Add("b", "1");
    bench.Settle();
    EXPECT_THAT(bench.outcomes, IsEmpty()) << "nobody failed";
    EXPECT_FALSE(IsThere("b"));
    EXPECT_EQ(bench.courier.WaitingFor("a"), 1U);
    EXPECT_EQ(bench.courier.NextDue(), std::nullopt);
}

TEST_F(CourierTest, StopKillsWhatDoesNotEndInTwoSeconds) {
    Bench bench({ExecChannel(
        "a", MakeScript(m_Folder, "deaf.sh",
                        "trap '' TERM\necho > " + (m_Folder / "a") + "\nwhile :; do sleep 1000; done\n"))});
    bench.Add("a", "1");
    bench.Work();
    WaitFor("a");
    bench.courier.Stop(bench.now);
    EXPECT_EQ(bench.courier.NextDue(), bench.now + seconds(2));
    bench.now += seconds(2);
    bench.Settle();
    EXPECT_THAT(bench.courier.Processes(), IsEmpty());
}

TEST_F(CourierTest, DestructorLeavesNobodyBehind) {
    {
        Bench bench({Hanging("a")});
        bench.Add("a", "1");
        bench.Work();
        WaitFor("a");
    }
    EXPECT_THAT(testsupport::DescendantsOf(::getpid()), IsEmpty());
}

std::size_t OpenFiles() {
    return TempFolder::NamesIn("/proc/self/fd").size();
}

constexpr int kRounds = static_cast<int>(testsupport::PointsOf(200));

TEST_F(CourierTest, NothingGrowsInAThousandDeliveries) {
    Channel bad = ExecChannel("bad", "/bin/false");
    Channel missing = ExecChannel("missing", "/no/such");
    bad.capacity = missing.capacity = 2;
    Bench bench({ExecChannel("good", "/bin/true"),
                 bad,
                 missing,
                 {.name = "log", .way = Journal{.usesStandardError = true}}});
    testing::internal::CaptureStderr();
    std::size_t attempts = 0;
    const auto deliver = [&](int round) {
        for (const char* const channel : {"good", "bad", "missing", "log"}) {
            bench.Add(channel, std::to_string(round) + " first");
            bench.Add(channel, std::to_string(round) + " second");
        }
        bench.Settle();
        bench.now += std::chrono::hours(1);
        attempts += bench.Which(What::Delivered).size() + bench.Which(What::Failed).size();
        bench.outcomes = {};
    };
    deliver(-1);
    const std::size_t files = OpenFiles();
    const std::size_t memory = ::mallinfo2().uordblks;
    for (int round = 0; round < kRounds; ++round) {
        deliver(round);
    }
    constexpr std::size_t kSlack = 65536;  // What the allocator keeps at hand comes and goes.
    EXPECT_EQ(OpenFiles(), files);
    EXPECT_LE(::mallinfo2().uordblks, memory + kSlack);
    EXPECT_THAT(testsupport::DescendantsOf(::getpid()), IsEmpty());
    EXPECT_EQ(attempts, (kRounds + 1) * 6U);
    (void)testing::internal::GetCapturedStderr();
}

// As with too many open files, or processes.
#if !defined(__SANITIZE_ADDRESS__)  // The undefined-behaviour sanitizer looks at objects through a pipe.
TEST_F(CourierTest, WhatCannotBeStartedIsTriedAgain) {
    EXPECT_EQ(testsupport::InChild([] {
                  Bench bench({ExecChannel("a", "/bin/true")});
                  bench.Add("a", "1");
                  rlimit files{};
                  ::getrlimit(RLIMIT_NOFILE, &files);
                  const rlimit none{0, files.rlim_max};
                  ::setrlimit(RLIMIT_NOFILE, &none);
                  bench.Work();
                  ::setrlimit(RLIMIT_NOFILE, &files);
                  const std::string words = bench.LastWords();
                  bench.now += seconds(10);
                  bench.Settle();
                  return words + "; delivered " + std::to_string(bench.Which(What::Delivered).size());
              }),
              "no memory for a child process: Too many open files; delivered 1");
}
#endif

}  // namespace
}  // namespace telling::test
