// Hosts that call from threads of all kinds.
#include "UnkindHostTest.h"

#include <pthread.h>

#include <functional>
#include <stdexcept>
#include <thread>

namespace unkindhost {
namespace {

using ThreadTest = UnkindHostTest;

void* Run(void* work) {
    (*static_cast<std::function<void()>*>(work))();
    return nullptr;
}

void RunWithStack(std::size_t bytes, std::function<void()> work) {
    pthread_attr_t attributes;
    ::pthread_attr_init(&attributes);
    pthread_t thread{};
    if (::pthread_attr_setstacksize(&attributes, bytes) != 0 ||
        ::pthread_create(&thread, &attributes, Run, &work) != 0) {
        throw std::runtime_error("no thread with such a stack");
    }
    ::pthread_join(thread, nullptr);
    ::pthread_attr_destroy(&attributes);
}

TEST_F(ThreadTest, ASmallStackIsEnough) {
    // The address sanitizer surrounds everything on the stack.
    constexpr std::size_t kStack = (kHasAddressSanitizer ? 8U : 1U) * 64U * 1024U;
    const std::string seen = InHost([](Host& host) {
        std::string text;
        RunWithStack(kStack, [&] { text = host.Ask(); });
        return text;
    });
    EXPECT_EQ(seen, KindAnswer());
}

TEST_F(ThreadTest, ThreadsMayTakeTurns) {
    constexpr int kThreads = kHasAddressSanitizer ? 12 : 50;
    const std::string expected = KindAnswer();
    const std::string seen = InHost([&](Host& host) {
        host.UseStandIn();
        int right = 0;
        for (int number = 0; number < kThreads; ++number) {
            std::thread([&] { right += host.Ask() == expected ? 1 : 0; }).join();
        }
        return std::to_string(right);
    });
    EXPECT_EQ(seen, std::to_string(kThreads));
}

}  // namespace
}  // namespace unkindhost
