// A framework whose trace throws, where it does not go well anyway; tests/whole/faults lets every line of a
// call that does go well throw.
#include "CallBench.h"
#include "test_support/TraceHook.h"

#include <functional>
#include <stdexcept>
#include <string_view>

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

void ThrowNumber() {
    throw 42;
}

void ThrowStandardException() {
    throw std::runtime_error("no trace");
}

constexpr int kException = 8;

class ThrowingTraceTest : public testsupport::CallTest {
  protected:
    ~ThrowingTraceTest() override { testsupport::ResetTrace(); }

    /// From now on every line that holds the text throws, and every line of a handler.
    static void ThrowAt(const std::string& text, const std::function<void()>& how = ThrowNumber) {
        testsupport::OnTrace([=](int level, std::string_view line) {
            if (level == kException || line.find(text) != std::string_view::npos) {
                how();
            }
        });
    }

    void ExpectNothingIsLeft() {
        EXPECT_EQ(m_Library.ItemsAlive(), 0U);
        EXPECT_FALSE(IsLibraryOpen());
        EXPECT_THAT(m_Root.ResultFiles(), IsEmpty());
    }

    void ExpectSuccess() {
        EXPECT_EQ(Call("GetInfo"), 0U);
        EXPECT_THAT(m_Sink.m_Calls, ElementsAre("Indicate", "SetStatus 00000000"));
        EXPECT_EQ(ReturnValue(), 0U);
        EXPECT_TRUE(HasXml());
        ExpectNothingIsLeft();
    }

    /// From then on the trace is well again.
    void ExpectException() {
        EXPECT_EQ(Call("GetInfo"), 0x80041001U);
        EXPECT_EQ(m_Sink.m_Calls.back(), "SetStatus 80041001");
        EXPECT_EQ(ReturnValue(), 0x80000002U);
        ExpectNothingIsLeft();
        testsupport::ResetTrace();
    }
};

class FailureLineTest : public ThrowingTraceTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(FailureLineTest, OfACallThatFailsMakesItAnException) {
    AnswerEmptyReports(1);
    m_Tool.Answer("ctrlinfo_a0.txt", "RAID Controller : 0\nA : 1\n### Controller Settings Information ###");
    ThrowAt(GetParam());
    ExpectException();
    EXPECT_THAT(Trace(), Not(Contains("4 CZORBALT_MngSrvRaid::GetInfo [END]")));

    EXPECT_EQ(Call("GetInfo"), 0U);
    EXPECT_EQ(ReturnValue(), 0x80000001U);
    EXPECT_THAT(Messages(), ElementsAre("MSGID_MNGSRV_RAID_0001_F 06"));
    ExpectNothingIsLeft();
}

INSTANTIATE_TEST_SUITE_P(Each, FailureLineTest,
                         ::testing::Values("Invalid Arg.", "CreateRAIDItem is FAILED",
                                           "Failed to parse RAID Information",
                                           "CMSRAID_CtrlInfoGetter::GetInfo is FAILED", "Error[reason:06]",
                                           "MSGID_MNGSRV_RAID_0001_F"),
                         [](const auto& line) { return "Line" + std::to_string(line.index); });

TEST_F(ThrowingTraceTest, NoEndLineIsMissed) {
    AnswerEmptyReports(2);
    ThrowAt("[END]");
    ExpectSuccess();
    EXPECT_THAT(Trace(), Not(Contains(::testing::HasSubstr("[END]"))));
}

TEST_F(ThrowingTraceTest, NeitherTheResultNorTheStatusOfTheCallIsMissed) {
    m_Tool.Uninstall();
    ThrowAt("ExecMethodAsync mr=");
    EXPECT_EQ(Call("GetInfo"), 0U);
    ThrowAt("ExecMethodAsync hr=");
    EXPECT_EQ(Call("GetWeather"), 0x8004102EU);
    EXPECT_THAT(m_Sink.m_Calls, ElementsAre("SetStatus 8004102e"));
}

TEST_F(ThrowingTraceTest, AReaderThatIsOverIsDestroyedInSilence) {
    AnswerEmptyReports(1);
    ThrowAt("::~");
    ExpectSuccess();
    m_Provider.reset();
}

/// What is thrown, by the trace as well as by the sink.
class HandlerTest : public ThrowingTraceTest, public ::testing::WithParamInterface<void (*)()> {};

TEST_P(HandlerTest, WithoutItsLineTheCallComesToItsStatus) {
    AnswerEmptyReports(1);
    m_Sink.m_OnIndicate = GetParam();
    ThrowAt("no line but the handler's", GetParam());
    ExpectException();

    m_Sink.m_OnIndicate = [] {};
    ExpectSuccess();
}

TEST_P(HandlerTest, WithoutItsLineAProviderIsMadeThatHasNoWrapper) {
    ThrowAt("CMSRAID_MngLib::CMSRAID_MngLib [START]", GetParam());
    m_Provider = std::make_unique<CZORBALT_MngSrvRaid>();
    testsupport::ResetTrace();
    EXPECT_EQ(Call("GetInfo"), 0U);
    EXPECT_THAT(Messages(), ElementsAre("MSGID_MNGSRV_RAID_0001_F 05"));
}

INSTANTIATE_TEST_SUITE_P(Of, HandlerTest, ::testing::Values(ThrowNumber, ThrowStandardException),
                         [](const auto& how) {
                             return how.param == ThrowNumber ? "AnyException" : "AStandardException";
                         });

}  // namespace
