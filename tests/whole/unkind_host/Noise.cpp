#include "Noise.h"

#include "qel/CTraceUtility.h"

#include <csignal>
#include <cstdio>
#include <ctime>
#include <memory>
#include <string>

namespace unkindhost {
namespace {

using File = std::unique_ptr<std::FILE, decltype([](std::FILE* file) { std::fclose(file); })>;

constexpr int kShortLines = 50;
constexpr std::size_t kKeptLines = 1000;

void MakeNoise(const std::stop_token& stop) {
    const File nowhere(std::fopen("/dev/null", "we"));
    std::size_t size = 1;
    std::vector<std::string> texts(16);
    while (!stop.stop_requested()) {
        size = size * 7 % 50'021;  // beyond what the C library keeps for a thread alone
        texts[size % texts.size()] = std::string(size, 'n');
        std::fprintf(nowhere.get(), "%zu %s\n", size, texts[0].c_str());
        CTraceUtility::WriteDebug("noise", 4, "%zu %s", size, texts[size % texts.size()].c_str());
        for (int line = 0; line < kShortLines; ++line) {
            CTraceUtility::WriteDebug("noise", 1, "line %d of a thread that is in no way concerned", line);
        }
        const std::time_t now = std::time(nullptr);
        std::tm local{};
        ::localtime_r(&now, &local);
    }
}

}  // namespace

void Noise::Listener::OnTrace(const TraceLine& line) noexcept {
    const std::lock_guard lock(m_Mutex);
    m_Lines.emplace_back(line.text);
    if (m_Lines.size() > kKeptLines) {
        m_Lines.pop_front();
    }
}

Noise::Noise(int threads) {
    CTraceOutput::SetListener(&m_Listener);
    sigset_t alarm;
    ::sigemptyset(&alarm);
    ::sigaddset(&alarm, SIGALRM);
    ::pthread_sigmask(SIG_BLOCK, &alarm, nullptr);
    for (int number = 0; number < threads; ++number) {
        m_Threads.emplace_back(MakeNoise);
    }
    ::pthread_sigmask(SIG_UNBLOCK, &alarm, nullptr);
}

Noise::~Noise() {
    m_Threads.clear();
    CTraceOutput::SetListener(nullptr);
}

}  // namespace unkindhost
