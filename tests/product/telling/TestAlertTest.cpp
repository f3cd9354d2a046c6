#include "telling/TestAlert.h"

#include "Bench.h"

namespace telling::test {
namespace {

class TestAlertTest : public testing::Test {
  protected:
    const watch::Event m_Event = MakeTestEvent("storage7", *basics::TimeFromUtcText("2031-04-05T06:07:08Z"));
    TempFolder m_Folder;
};

TEST_F(TestAlertTest, SaysThatItIsATest) {
    EXPECT_EQ(m_Event.kind, watch::EventKind::Test);
    EXPECT_EQ(m_Event.level, Level::Ok);
    EXPECT_EQ(watch::Describe(m_Event), "OK test: a test of the channels of storage7");
    EXPECT_THAT(m_Event.id, StartsWith("20310405T060708Z-"));
}

TEST_F(TestAlertTest, TellsWhatEachChannelSaid) {
    Channel good = ExecChannel("good", MakeScript(m_Folder, "good", "echo paged $MNGSRVRAID_KIND; exit 0\n"));
    good.least = Level::Critical;
    const Channel bad = ExecChannel("bad", MakeScript(m_Folder, "bad", "echo no pager; exit 4\n"));
    std::vector<std::string> heard;
    const auto answers = TestAlert({bad, good, ExecChannel("missing", "/no/such")}, m_Event, "storage7",
                                   [&heard](const TestAnswer& answer) { heard.push_back(answer.channel); });
    ASSERT_EQ(answers.size(), 3U);
    EXPECT_EQ(answers[0].channel, "bad");
    EXPECT_FALSE(answers[0].isDelivered);
    EXPECT_EQ(answers[0].words, (m_Folder / "bad") + " ended with status 4: no pager");
    EXPECT_TRUE(answers[1].isDelivered);
    EXPECT_EQ(answers[1].words, "paged test");
    EXPECT_EQ(answers[2].words, "/no/such cannot be run: No such file or directory");
    EXPECT_THAT(heard, testing::UnorderedElementsAre("bad", "good", "missing"));
}

TEST_F(TestAlertTest, TellsHowLongEachTook) {
    const auto answers =
        TestAlert({ExecChannel("slow", MakeScript(m_Folder, "slow", "sleep 0.2\n"))}, m_Event, "");
    ASSERT_EQ(answers.size(), 1U);
    EXPECT_GE(answers[0].taken, std::chrono::milliseconds(200));
}

TEST_F(TestAlertTest, EndsWhatTakesTooLong) {
    const Channel hanging{
        .name = "a", .way = Exec{.program = "/bin/sleep", .arguments = {"1000"}, .timeLimit = seconds(1)}};
    const auto answers = TestAlert({hanging}, m_Event, "");
    ASSERT_EQ(answers.size(), 1U);
    EXPECT_EQ(answers[0].words, "it took longer than 1s and was ended: /bin/sleep was ended by signal 15");
    EXPECT_THAT(testsupport::DescendantsOf(::getpid()), IsEmpty());
}

TEST_F(TestAlertTest, NeedsNoChild) {
    testing::internal::CaptureStderr();
    const auto answers =
        TestAlert({{.name = "log", .way = Journal{.usesStandardError = true}}}, m_Event, "storage7");
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                StartsWith("2031-04-05T06:07:08Z OK test: a test of the channels of storage7"));
    ASSERT_EQ(answers.size(), 1U);
    EXPECT_TRUE(answers[0].isDelivered);
}

TEST_F(TestAlertTest, OfNoChannelsAsksNobody) {
    EXPECT_THAT(TestAlert({}, m_Event, ""), IsEmpty());
}

}  // namespace
}  // namespace telling::test
