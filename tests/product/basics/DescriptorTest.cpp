#include "basics/Descriptor.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/time.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <string>
#include <thread>

namespace basics::test {
namespace {

/// While there is one, this thread is interrupted a thousand times a second, and no other.
class Interruptions final {
  public:
    Interruptions() {
        struct sigaction action {};
        action.sa_handler = [](int /*signal*/) {};
        ::sigaction(SIGALRM, &action, &m_Before);
        const itimerval often{{0, 1000}, {0, 1000}};
        ::setitimer(ITIMER_REAL, &often, nullptr);
    }
    Interruptions(const Interruptions&) = delete;
    Interruptions& operator=(const Interruptions&) = delete;
    ~Interruptions() {
        const itimerval never{};
        ::setitimer(ITIMER_REAL, &never, nullptr);
        ::sigaction(SIGALRM, &m_Before, nullptr);
    }

  private:
    struct sigaction m_Before {};
};

/// What comes out of the descriptor up to its end, read slowly.
std::string ReadSlowly(int descriptor) {
    std::string text;
    std::array<char, 16384> piece{};
    for (ssize_t size = 1; size > 0;) {
        std::this_thread::sleep_for(std::chrono::milliseconds(3));
        size = ::read(descriptor, piece.data(), piece.size());
        text.append(piece.data(), size > 0 ? static_cast<std::size_t>(size) : 0);
    }
    return text;
}

TEST(WriteWhole, GoesOnWhereItIsInterrupted) {
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    const Descriptor reading(ends[0]);
    Descriptor writing(ends[1]);
    const std::string text = std::string(500'000, 'x') + "end";
    std::string read;
    std::thread reader([&] {
        sigset_t all;
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_BLOCK, &all, nullptr);
        read = ReadSlowly(reading.Number());
    });
    {
        const Interruptions interruptions;
        EXPECT_EQ(WriteWhole(writing.Number(), text), 0);
    }
    EXPECT_TRUE(writing.Close());
    reader.join();
    EXPECT_TRUE(read == text) << read.size();
}

TEST(WriteWhole, TellsTheErrorThatEndsIt) {
    const Descriptor full(::open("/dev/full", O_WRONLY | O_CLOEXEC));
    EXPECT_EQ(WriteWhole(full.Number(), "x"), ENOSPC);
    EXPECT_EQ(WriteWhole(-1, "x"), EBADF);
    EXPECT_EQ(WriteWhole(-1, ""), 0);
}

}  // namespace
}  // namespace basics::test
