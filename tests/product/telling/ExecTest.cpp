#include "Bench.h"
#include "Message.h"
#include "test_support/InChild.h"
#include "watch/Event.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace telling::test {
namespace {

using testsupport::ComesTrue;

class ExecTest : public testing::Test {
  protected:
    // The program that these lines are, run once for an event.
    Outcome Run(const std::string& lines, const std::vector<std::string>& arguments = {}) {
        Bench bench({ExecChannel("a", MakeScript(m_Folder, "a.sh", lines), arguments)});
        bench.Add("a", "1");
        bench.Settle();
        EXPECT_EQ(bench.outcomes.size(), 1U);
        return bench.outcomes.empty() ? Outcome() : bench.outcomes.front();
    }

    [[nodiscard]] std::string Program() const { return m_Folder / "a.sh"; }
    [[nodiscard]] std::string Mark() const { return m_Folder / "mark"; }

    void WaitForMark() const {
        ASSERT_TRUE(ComesTrue([&] { return std::filesystem::exists(Mark()); }));
    }

    TempFolder m_Folder;
};

TEST_F(ExecTest, HasTheEventOnItsStandardInput) {
    Run("cat > " + Mark());
    EXPECT_EQ(m_Folder.Read("mark"), watch::JsonOf(MakeEvent("1"), "storage7") + "\n");
}

TEST_F(ExecTest, HasTheEventInItsEnvironment) {
    ::setenv("MNGSRVRAID_STALE", "1", 1);
    ::setenv("NOTIFY_SOCKET", "/run/notify", 1);
    ::setenv("JOURNAL_STREAM", "1:2", 1);
    ::setenv("OF_THE_SERVICE", "kept", 1);
    Run("env | grep -E '^(MNGSRVRAID_|NOTIFY_SOCKET|JOURNAL_STREAM|OF_THE_SERVICE|PATH=)' | sed "
        "'s/^PATH=.*/PATH/' | sort > " +
        Mark());
    for (const char* const name : {"MNGSRVRAID_STALE", "NOTIFY_SOCKET", "JOURNAL_STREAM", "OF_THE_SERVICE"}) {
        ::unsetenv(name);
    }
    EXPECT_EQ(m_Folder.Read("mark"),
              "MNGSRVRAID_ADVICE=Replace it.\n"
              "MNGSRVRAID_AT=2031-04-05T06:07:08Z\n"
              "MNGSRVRAID_BEFORE=OK\n"
              "MNGSRVRAID_CONTROLLER=0\n"
              "MNGSRVRAID_ENCLOSURE=16\n"
              "MNGSRVRAID_GROUP=RG1\n"
              "MNGSRVRAID_HOST=storage7\n"
              "MNGSRVRAID_ID=1\n"
              "MNGSRVRAID_KIND=began\n"
              "MNGSRVRAID_LEVEL=CRITICAL\n"
              "MNGSRVRAID_MODEL=TF600S15\n"
              "MNGSRVRAID_PART=PD9\n"
              "MNGSRVRAID_PART_KIND=drive\n"
              "MNGSRVRAID_RULE=state\n"
              "MNGSRVRAID_SERIAL=7K00025200C4\n"
              "MNGSRVRAID_SLOT=1\n"
              "MNGSRVRAID_WHAT=FAILED\n"
              "MNGSRVRAID_WORDS=controller 0, RG1, PD9 in enclosure 16 slot 1: FAILED\n"
              "OF_THE_SERVICE=kept\n"
              "PATH\n");
}

TEST_F(ExecTest, EnvironmentIsPrintableAndBounded) {
    watch::Event event = MakeEvent("1");
    event.words = std::string("a\0b\nc\x1B[2J", 9) + std::string(200'000, 'x');
    event.about.serial = "";
    const std::vector<std::string> fields = FieldsOf({event, "", 0});
    EXPECT_THAT(fields, testing::Contains(StartsWith("MNGSRVRAID_WORDS=a\xEF\xBF\xBD"
                                                     "b c\xEF\xBF\xBD[2Jx")));
    EXPECT_THAT(fields, testing::Contains("MNGSRVRAID_SERIAL="));
    EXPECT_THAT(fields, testing::Each(testing::Property(&std::string::size, testing::Lt(10'000U))));
    Bench bench({ExecChannel("a", "/bin/true")});
    bench.courier.Add("a", event);
    bench.Settle();
    EXPECT_THAT(bench.Which(What::Delivered), ElementsAre("a 1")) << bench.LastWords();
}

TEST_F(ExecTest, HasItsArgumentsAsTheyAre) {
    Run("for each; do echo \"<$each>\"; done > " + Mark(), {"one two", "$HOME", "", "*", "`id`"});
    EXPECT_EQ(m_Folder.Read("mark"), "<one two>\n<$HOME>\n<>\n<*>\n<`id`>\n");
}

TEST_F(ExecTest, MayIgnoreItsInput) {
    EXPECT_EQ(Run("exec 0<&-\n").what, What::Delivered);
}

TEST_F(ExecTest, LastLineIsWhatItSays) {
    const Outcome good = Run("echo one; echo two; echo; echo ' '");
    EXPECT_EQ(good.what, What::Delivered);
    EXPECT_EQ(good.words, "two");
    const Outcome bad = Run("echo out; echo \"err\033[1m\" >&2; exit 7");
    EXPECT_EQ(bad.what, What::Failed);
    EXPECT_EQ(bad.words, Program() + " ended with status 7: err\xEF\xBF\xBD[1m");
    EXPECT_EQ(Run("exit 1").words, Program() + " ended with status 1");
    EXPECT_EQ(Run("kill -9 $$").words, Program() + " was ended by signal 9");
}

TEST_F(ExecTest, MayOpenItsStreamsByName) {
    EXPECT_EQ(Run("echo one > /dev/stdout; echo two > /dev/stderr; exit 1").words,
              Program() + " ended with status 1: two");
}

TEST_F(ExecTest, MayPrintMegabytes) {
    const Outcome good = Run("yes 'so much to say' | head -c 20000000; printf '\\nall said\\n'");
    EXPECT_EQ(good.what, What::Delivered);
    EXPECT_EQ(good.words, "all said");
    EXPECT_LE(Run("head -c 5000000 /dev/zero | tr '\\0' x; exit 1").words.size(), 500U);
}

TEST_F(ExecTest, ThatIsMissingOrNoProgramIsToldOf) {
    m_Folder.Write("text", "no program\n");
    m_Folder.Write("empty.sh", "#!/no/such/shell\n");
    std::filesystem::permissions(m_Folder / "empty.sh", std::filesystem::perms::owner_all);
    for (const auto& [program, why] : {std::pair(m_Folder / "none", "No such file or directory"),
                                       {m_Folder / "text", "Permission denied"},
                                       {m_Folder / "empty.sh", "No such file or directory"},
                                       {m_Folder.Path().string(), "Permission denied"}}) {
        Bench bench({ExecChannel("a", program)});
        bench.Add("a", "1");
        bench.Settle();
        EXPECT_EQ(bench.LastWords(), program + " cannot be run: " + why);
        EXPECT_THAT(bench.Which(What::Failed), ElementsAre("a 1"));
    }
}

TEST_F(ExecTest, ThatEndsWith127HasRun) {
    EXPECT_EQ(Run("exit 127").words, Program() + " ended with status 127");
}

TEST_F(ExecTest, ThatHangsIsEndedWhenItsTimeIsOver) {
    Bench bench({ExecChannel(
        "a", MakeScript(m_Folder, "a.sh",
                        "echo waiting for the pager\necho > " + Mark() + "\nexec sleep 1000\n"))});
    bench.Add("a", "1");
    bench.Work();
    WaitForMark();
    EXPECT_EQ(bench.courier.NextDue(), bench.now + seconds(60));
    bench.now += seconds(60) - std::chrono::nanoseconds(1);
    bench.Work();
    EXPECT_THAT(bench.outcomes, IsEmpty());
    bench.now += std::chrono::nanoseconds(1);
    bench.Work();
    bench.WaitForOne();
    EXPECT_EQ(bench.LastWords(), "it took longer than 1m and was ended: " + Program() +
                                     " was ended by signal 15: waiting for the pager");
}

TEST_F(ExecTest, ThatEndsWellWhenItIsAskedToHasDelivered) {
    Bench bench({ExecChannel("a", MakeScript(m_Folder, "a.sh",
                                             "trap 'echo done; exit 0' TERM\necho > " + Mark() +
                                                 "\nwhile :; do sleep 0.01; done\n"))});
    bench.Add("a", "1");
    bench.Work();
    WaitForMark();
    bench.now += seconds(60);
    bench.Settle();
    EXPECT_EQ(bench.LastWords(), "done");
    EXPECT_THAT(bench.Which(What::Delivered), ElementsAre("a 1"));
}

// A shell that is deaf, a child in its group, one in a session of its own, and one whose parent has gone.
TEST_F(ExecTest, ThatIgnoresTerminationIsKilledWithAllThatItStarted) {
    Bench bench({ExecChannel("a", MakeScript(m_Folder, "a.sh",
                                             "trap '' TERM\n"
                                             "sleep 1001 &\n"
                                             "setsid sleep 1002 &\n"
                                             "(setsid sh -c 'sleep 1003 & sleep 1003' & )\n"
                                             "echo > " +
                                                 Mark() + "\nwhile :; do sleep 1000; done\n"))});
    bench.Add("a", "1");
    bench.Work();
    WaitForMark();
    const auto sleepers = [] {
        const auto all = testsupport::DescendantsOf(::getpid());
        return std::count_if(all.begin(), all.end(), [](const auto& process) {
            return process.name == "sleep" && process.state != 'Z';
        });
    };
    ASSERT_TRUE(ComesTrue([&] { return sleepers() == 5; }));
    ::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0);  // What is left comes here.
    bench.now += seconds(60);
    bench.Work();
    EXPECT_EQ(bench.courier.NextDue(), bench.now + seconds(2));
    bench.now += seconds(2);
    bench.Work();
    bench.WaitForOne();
    EXPECT_THAT(bench.LastWords(), StartsWith("it took longer than 1m and was ended"));
    EXPECT_TRUE(ComesTrue([&] { return sleepers() == 0; }));
    while (::waitpid(-1, nullptr, 0) > 0) {
    }
    ::prctl(PR_SET_CHILD_SUBREAPER, 0, 0, 0, 0);
}

// It may be on its way, as mail that is queued.
TEST_F(ExecTest, WhatAProgramLeavesRunningIsItsOwn) {
    ::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0);
    Bench bench({ExecChannel("a", MakeScript(m_Folder, "a.sh", "sleep 1000 &\necho $! > " + Mark() + "\n"))});
    bench.Add("a", "1");
    bench.Settle();
    EXPECT_THAT(bench.Which(What::Delivered), ElementsAre("a 1"));
    const pid_t left = std::stoi(m_Folder.Read("mark"));
    EXPECT_EQ(testsupport::Look(left).id, left);
    ::kill(left, SIGKILL);
    EXPECT_EQ(::waitpid(left, nullptr, 0), left);
    ::prctl(PR_SET_CHILD_SUBREAPER, 0, 0, 0, 0);
}

TEST_F(ExecTest, HasNothingOfTheService) {
    const int file = ::open("/dev/zero", O_RDONLY);  // as a library leaves one
    sigset_t blocked;
    ::sigemptyset(&blocked);
    ::sigaddset(&blocked, SIGUSR1);
    ::sigprocmask(SIG_BLOCK, &blocked, nullptr);
    ::signal(SIGPIPE, SIG_IGN);
    Run("for file in /proc/$$/fd/*; do readlink $file; done > " + Mark() + "\n" +
        "grep -E 'Sig(Blk|Ign)' /proc/$$/status >> " + Mark() + "\npwd >> " + Mark() + "\n" +
        "test $(cut -d' ' -f6 /proc/$$/stat) -ne " + std::to_string(::getsid(0)) +
        " && echo 'a session of its own' >> " + Mark() + "\n");
    ::sigprocmask(SIG_UNBLOCK, &blocked, nullptr);
    ::signal(SIGPIPE, SIG_DFL);
    ::close(file);
    const std::string seen = m_Folder.Read("mark");
    EXPECT_EQ(seen.find("/dev/zero"), std::string::npos) << seen;
    EXPECT_THAT(seen,
                HasSubstr("SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n/\na session of its own\n"));
    EXPECT_EQ(std::count(seen.begin(), seen.begin() + static_cast<std::ptrdiff_t>(seen.find("SigBlk")), '\n'),
              5)
        << seen;
}

TEST_F(ExecTest, EndsWithTheService) {
    ::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0);
    const std::string program =
        MakeScript(m_Folder, "a.sh",
                   "echo $$ > " + Mark() + ".new\nmv " + Mark() + ".new " + Mark() + "\nexec sleep 1000\n");
    const pid_t service = ::fork();
    if (service == 0) {
        Bench bench({ExecChannel("a", program)});
        bench.Add("a", "1");
        bench.Work();
        ::pause();
    }
    WaitForMark();
    const pid_t left = std::stoi(m_Folder.Read("mark"));
    ::kill(service, SIGKILL);
    while (::waitpid(-1, nullptr, 0) > 0) {  // the service, its child, and the program
    }
    EXPECT_EQ(testsupport::Look(left).id, -1);
    ::prctl(PR_SET_CHILD_SUBREAPER, 0, 0, 0, 0);
}

}  // namespace
}  // namespace telling::test
