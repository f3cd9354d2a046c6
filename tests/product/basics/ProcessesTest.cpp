#include "basics/Processes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>

namespace basics::test {
namespace {

using testing::Contains;
using testing::Not;
using testing::UnorderedElementsAre;

/// A child with a child of its own, both of which wait.
class ProcessesTest : public testing::Test {
  protected:
    void SetUp() override {
        std::array<int, 2> pipe{};
        ASSERT_EQ(::pipe(pipe.data()), 0);
        m_Child = ::fork();
        if (m_Child == 0) {
            const pid_t grandchild = ::fork();
            if (grandchild != 0 && ::write(pipe[1], &grandchild, sizeof grandchild) < 0) {
                ::_exit(1);
            }
            for (;;) {
                ::pause();
            }
        }
        ASSERT_EQ(::read(pipe[0], &m_Grandchild, sizeof m_Grandchild),
                  static_cast<ssize_t>(sizeof m_Grandchild));
        ::close(pipe[0]);
        ::close(pipe[1]);
    }

    void TearDown() override {
        ::kill(m_Grandchild, SIGKILL);
        ::kill(m_Child, SIGKILL);
        ::waitpid(m_Child, nullptr, 0);
    }

    pid_t m_Child = -1;
    pid_t m_Grandchild = -1;
};

TEST_F(ProcessesTest, ChildrenAreTheNextGenerationAlone) {
    EXPECT_THAT(ChildrenOf(::getpid()), Contains(m_Child));
    EXPECT_THAT(ChildrenOf(::getpid()), Not(Contains(m_Grandchild)));
    EXPECT_THAT(ChildrenOf(m_Child), UnorderedElementsAre(m_Grandchild));
    EXPECT_THAT(ChildrenOf(m_Grandchild), testing::IsEmpty());
}

TEST_F(ProcessesTest, DescendantsAreAllGenerations) {
    EXPECT_THAT(DescendantsOf(m_Child), UnorderedElementsAre(m_Grandchild));
    EXPECT_THAT(DescendantsOf(::getpid()), testing::IsSupersetOf({m_Child, m_Grandchild}));
    EXPECT_THAT(DescendantsOf(m_Grandchild), testing::IsEmpty());
}

TEST_F(ProcessesTest, EndOfAProcessCanBePolledFor) {
    const Descriptor opened = OpenProcess(m_Child);
    pollfd watched{opened.Number(), POLLIN, 0};
    EXPECT_EQ(::poll(&watched, 1, 0), 0) << "it still runs";
    ::kill(m_Child, SIGKILL);
    constexpr int kPatience = 120'000;
    EXPECT_EQ(::poll(&watched, 1, kPatience), 1);
    EXPECT_FALSE(OpenProcess(-1).IsOpen());
}

}  // namespace
}  // namespace basics::test
