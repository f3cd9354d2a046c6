// Hosts without standard streams.
#include "UnkindHostTest.h"

#include "qel/portable/CTraceOutput.h"

#include <fcntl.h>
#include <unistd.h>

namespace unkindhost {
namespace {

// Bit 0 stands for standard input, bit 1 for standard output, bit 2 for standard error.
class ClosedStreamsTest : public UnkindHostTest, public testing::WithParamInterface<unsigned> {
  protected:
    static void CloseStreams() {
        for (int stream = 0; stream < 3; ++stream) {
            if ((GetParam() >> static_cast<unsigned>(stream) & 1U) != 0) {
                ::close(stream);
            }
        }
    }
};

TEST_P(ClosedStreamsTest, LoseNothingOfTheToolsOutput) {
    const std::string seen = InHost([](Host& host) {
        CloseStreams();
        return host.Ask();
    });
    EXPECT_EQ(seen, KindAnswer());
}

TEST_P(ClosedStreamsTest, LoseNothingOfWhatTheToolSaysOnStandardErrorEither) {
    const std::string seen = InHost([](Host& host) {
        host.UseStandIn();
        CloseStreams();
        return host.Ask();
    });
    EXPECT_EQ(seen, KindAnswer());
}

TEST_P(ClosedStreamsTest, DoNotMixTheTraceWithTheReports) {
    const std::string seen = InHost([](Host& host) {
        const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);  // Nobody need read the trace.
        ::dup2(nowhere, STDERR_FILENO);
        ::close(nowhere);
        CloseStreams();
        CTraceOutput::UseStandardError();
        CTraceOutput::SetLevels(CTraceOutput::ALL_LEVELS);
        std::string text = host.Ask();
        CTraceOutput::SetLevels(0);
        return text;
    });
    EXPECT_EQ(seen, KindAnswer());
}

std::string NameOf(const testing::TestParamInfo<unsigned>& closed) {
    std::string name;
    for (unsigned stream = 0; stream < 3; ++stream) {
        name += (closed.param >> stream & 1U) != 0 ? std::to_string(stream) : "";
    }
    return name;
}
INSTANTIATE_TEST_SUITE_P(Streams, ClosedStreamsTest, testing::Range(1U, 8U), NameOf);

}  // namespace
}  // namespace unkindhost
