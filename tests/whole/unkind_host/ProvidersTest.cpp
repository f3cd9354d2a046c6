// Hosts with many providers, many loads, and a second host beside them.
#include "Remains.h"
#include "UnkindHostTest.h"
#include "Usage.h"
#include "test_support/InChild.h"

#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <set>
#include <thread>

namespace unkindhost {
namespace {

using ProvidersTest = UnkindHostTest;

constexpr int kCalls = kHasAddressSanitizer ? 6 : 25;  // A fork is slow there.

constexpr const char* kModuleFile = "libqelp_ZORBALT_MngSrvRaid.so";

TEST_F(ProvidersTest, ManyOfThemMayBeCalledInAnyOrder) {
    const std::string seen = InHost([](Host& host) {
        constexpr std::size_t kCount = kHasAddressSanitizer ? 16 : 60;
        host.UseStandIn();
        std::vector<std::unique_ptr<LoadedProvider>> providers;
        std::set<std::string> answers;
        for (std::size_t number = 0; number < kCount; ++number) {
            providers.push_back(std::make_unique<LoadedProvider>());
            answers.insert(providers[number / 2]->GetInfo() + "\n" + providers[number / 3]->GetPDInfo());
            if (number % 2 == 1) {
                providers[number].reset();
                providers[number] = std::make_unique<LoadedProvider>();
            }
        }
        providers.erase(providers.begin(), providers.begin() + kCount / 2);
        answers.insert(providers.front()->GetInfo() + "\n" + providers.back()->GetPDInfo());
        return std::to_string(answers.size()) + "\n" + *answers.begin();
    });
    EXPECT_EQ(seen, "1\n" + KindAnswer());
}

TEST_F(ProvidersTest, TwoOfThemMayWorkAtTheSameTime) {
    const std::string expected = KindAnswer();
    const std::string seen = InHost([&](Host& host) {
        const StandIn& standIn = host.UseStandIn();
        standIn.TakeNotes();
        const auto work = [&](int& right) {
            const LoadedProvider provider;
            for (int call = 0; call < kCalls; ++call) {
                right += provider.GetInfo() + "\n" + provider.GetPDInfo() == expected ? 1 : 0;
            }
        };
        int one = 0;
        int other = 0;
        {
            const std::jthread beside([&] { work(other); });
            work(one);
        }
        std::set<std::string> files;
        for (const StandIn::Note& note : standIn.Notes()) {
            files.insert(note.output);
        }
        EXPECT_EQ(files.size(), standIn.Notes().size()) << "two runs wrote to one file";
        EXPECT_GE(files.size(), 2U * kCalls * 7U);
        return std::to_string(one) + " " + std::to_string(other);
    });
    EXPECT_EQ(seen, std::to_string(kCalls) + " " + std::to_string(kCalls));
}

TEST_F(ProvidersTest, TwoHostsMayShareAnInstallRoot) {
    const std::string expected = KindAnswer();
    const std::string seen = InHost([&](Host& host) {
        host.UseStandIn();
        const auto work = [&] {
            int right = 0;
            for (int call = 0; call < kCalls; ++call) {
                right += host.Ask() == expected ? 1 : 0;
            }
            return right;
        };
        const pid_t second = ::fork();
        if (second == 0) {
            ::_exit(work());
        }
        const int right = work();
        int status = -1;
        ::waitpid(second, &status, 0);
        return std::to_string(right) + " " + std::to_string(WEXITSTATUS(status));
    });
    EXPECT_EQ(seen, std::to_string(kCalls) + " " + std::to_string(kCalls));
}

TEST_F(ProvidersTest, LoadingTheModuleAgainAndAgainTakesNothing) {
    constexpr int kRounds = kHasAddressSanitizer ? 30 : 1000;
    constexpr int kWarmUp = kRounds / 3;  // The heap settles only after some hundred loads.
    const std::string seen = testsupport::InChild([&] {
        const StandIn standIn(m_Root.Path());
        Usage before;
        for (int round = 0; round < kRounds; ++round) {
            if (round == kWarmUp) {
                before = Usage::Now(m_Root.Path());
            }
            if (LoadedProvider().GetPDInfo().find("<?xml") != 0) {
                return std::string("a call failed");
            }
            if (IsMapped(kModuleFile)) {
                return std::string("the module was not unloaded");
            }
        }
        return Usage::Now(m_Root.Path()).GrowthSince(before);
    });
    EXPECT_EQ(seen, "");
}

// Its handler was there before the module was, and so runs behind everything that the module's own code has
// at the end of a process.
TEST_F(ProvidersTest, AHostMayAskOnceMoreWhileItExits) {
#ifdef __clang__
    GTEST_SKIP() << "this compiler has static objects end before such a handler runs";
#endif
    static const std::string answer = m_Root / "answer";
    static LoadedProvider* provider = nullptr;
    const std::string seen = testsupport::InChild([&] {
        const StandIn standIn(m_Root.Path());
        const pid_t host = ::fork();
        if (host == 0) {
            ::mallopt(M_PERTURB, 0xA5);  // What was freed does not look as it was.
            std::atexit([] {
                testsupport::WriteFile(answer, provider->GetInfo() + "\n" + provider->GetPDInfo());
                delete provider;
            });
            provider = new LoadedProvider;
            std::exit(0);
        }
        int status = -1;
        ::waitpid(host, &status, 0);
        return std::to_string(status) + "\n" + testsupport::ReadFile(answer);
    });
    EXPECT_EQ(seen, "0\n" + KindAnswer());
}

}  // namespace
}  // namespace unkindhost
