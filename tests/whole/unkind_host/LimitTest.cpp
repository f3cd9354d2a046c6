// Hosts that the system gives little: whatever a call runs short of, it fails as it must, leaves nothing
// behind, and works again when there is enough.
#include "UnkindHostTest.h"

#include "qel/portable/CTraceOutput.h"

#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

namespace unkindhost {
namespace {

using testing::HasSubstr;

using LimitTest = UnkindHostTest;

/// A lower limit while it stands.
class Limit final {
  public:
    Limit(decltype(RLIMIT_AS) resource, rlim_t value) : m_Resource(resource) {
        ::getrlimit(m_Resource, &m_Before);
        const rlimit lower{value, m_Before.rlim_max};
        EXPECT_EQ(::setrlimit(m_Resource, &lower), 0);
    }
    ~Limit() { EXPECT_EQ(::setrlimit(m_Resource, &m_Before), 0); }
    Limit(const Limit&) = delete;
    Limit& operator=(const Limit&) = delete;

  private:
    decltype(RLIMIT_AS) m_Resource;
    rlimit m_Before{};
};

std::string AskUnder(Host& host, decltype(RLIMIT_AS) resource, rlim_t value) {
    std::string text;
    {
        const Limit limit(resource, value);
        text = host.Ask();
    }
    return text + "\n" + host.Ask();
}

TEST_F(LimitTest, WithoutAnotherProcessNoToolRuns) {
    if (!OrdinaryUserMayLook()) {
        GTEST_SKIP() << "the build tree is closed to ordinary users";
    }
    const std::string seen = InHost([](Host& host) {
        host.UseStandIn();
        BecomeOrdinary();
        return AskUnder(host, RLIMIT_NPROC, 0);
    });
    EXPECT_EQ(seen, kNoToolRuns + "\n" + KindAnswer());
}

TEST_F(LimitTest, WhereNoFileMayGrowNoToolRuns) {
    const std::string seen = InHost([](Host& host) {
        const Limit noCore(RLIMIT_CORE, 0);
        return AskUnder(host, RLIMIT_FSIZE, 0);
    });
    EXPECT_EQ(seen, kNoToolRuns + "\n" + KindAnswer());
}

TEST_F(LimitTest, WhereFilesEndEarlyNoReportIsTakenForWhole) {
    const std::string seen = InHost([](Host& host) {
        const Limit noCore(RLIMIT_CORE, 0);
        host.UseStandIn();
        return AskUnder(host, RLIMIT_FSIZE, 700);
    });
    EXPECT_EQ(seen, kNoToolRuns + "\n" + KindAnswer());
}

TEST_F(LimitTest, AToolThatUsesUpItsProcessorTimeIsRunAgain) {
    const std::string seen = InHost([](Host& host) {
        const Limit noCore(RLIMIT_CORE, 0);
        const StandIn& standIn = host.UseStandIn();
        std::string text;
        {
            const Limit oneSecond(RLIMIT_CPU, 1);
            standIn.SpinOnce("-ldpdinfo -a0");
            text = host.Ask();
        }
        return text;
    });
    EXPECT_EQ(seen, KindAnswer());
}

// The size of this process's memory.
rlim_t AddressSpace() {
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages * static_cast<rlim_t>(::sysconf(_SC_PAGESIZE));
}

TEST_F(LimitTest, WithoutMemoryACallFailsAndLaterOnesWork) {
    if (kHasAddressSanitizer) {
        GTEST_SKIP() << "the address sanitizer's own memory is beyond every limit";
    }
    const std::string seen = InHost([](Host& host) {
        constexpr rlim_t kSteps[] = {0, 100'000, 200'000, 400'000, 800'000, 1'600'000, 3'200'000, 6'400'000};
        const Limit noCore(RLIMIT_CORE, 0);
        host.UseStandIn();
        const std::string document = host.m_Provider.GetInfo();
        int failures = 0;
        for (const rlim_t more : kSteps) {
            std::string answer;
            {
                const Limit memory(RLIMIT_AS, AddressSpace() + more);
                answer = host.m_Provider.GetInfo();
            }
            failures += answer.starts_with("status ") ? 1 : 0;
            EXPECT_THAT(answer, testing::AnyOf(document, testing::StartsWith("status ")));
        }
        EXPECT_GT(failures, 0) << "every step had enough memory";
        return host.Ask();
    });
    EXPECT_EQ(seen, KindAnswer());
}

class LargeEnvironmentTest : public UnkindHostTest {
  protected:
    // What the trace file says about failures.
    [[nodiscard]] std::string Failures() const { return m_Root.Read("trace"); }

    void TraceFailures() const {
        EXPECT_TRUE(CTraceOutput::OpenFile(m_Root / "trace"));
        CTraceOutput::SetLevels(2);
    }
};

TEST_F(LargeEnvironmentTest, WithAVariableTooLongForTheSystemNoToolRuns) {
    const std::string seen = InHost([](Host& host) {
        ::setenv("LARGE", std::string(200'000, 'x').c_str(), 1);
        const std::string text = host.Ask();
        ::unsetenv("LARGE");
        return text + "\n" + host.Ask();
    });
    EXPECT_EQ(seen, kNoToolRuns + "\n" + KindAnswer());
}

TEST_F(LargeEnvironmentTest, WithMoreVariablesThanTheSystemTakesNoToolRuns) {
    const std::string value(100'000, 'x');
    const auto nameOf = [](int number) { return "LARGE" + std::to_string(number); };
    const std::string seen = InHost([&](Host& host) {
        constexpr int kCount = 70;  // the system takes six megabytes at most
        for (int number = 0; number < kCount; ++number) {
            ::setenv(nameOf(number).c_str(), value.c_str(), 1);
        }
        const std::string text = host.Ask();
        for (int number = 0; number < kCount; ++number) {
            ::unsetenv(nameOf(number).c_str());
        }
        return text + "\n" + host.Ask();
    });
    EXPECT_EQ(seen, kNoToolRuns + "\n" + KindAnswer());
}

TEST_F(LargeEnvironmentTest, TheTraceSaysWhatIsWrong) {
    (void)InHost([this](Host& host) {
        ::setenv("LARGE", std::string(200'000, 'x').c_str(), 1);
        TraceFailures();
        std::string text = host.m_Provider.GetPDInfo();
        CTraceOutput::SetLevels(0);
        CTraceOutput::UseStandardError();
        return text;
    });
    EXPECT_THAT(Failures(), HasSubstr("\tmsraid\t2\tExecForeignModule execlp Error 00000007."));
}

TEST_F(LargeEnvironmentTest, OneMegabyteIsNoMatter) {
    const std::string seen = InHost([](Host& host) {
        for (int number = 0; number < 1100; ++number) {
            ::setenv(("LARGE" + std::to_string(number)).c_str(), std::string(1000, 'x').c_str(), 1);
        }
        return host.Ask();
    });
    EXPECT_EQ(seen, KindAnswer());
}

}  // namespace
}  // namespace unkindhost
