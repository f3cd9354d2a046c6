#include "Backroom.h"

#include "basics/Failure.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <system_error>
#include <utility>

namespace doors {

Backroom::Backroom() : m_News(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!m_News.IsOpen()) {
        basics::FailSurroundings("no event can be made: " + basics::ErrorText(errno));
    }
    try {
        m_Thread = std::thread([this] { Run(); });
    } catch (const std::system_error& error) {
        basics::FailSurroundings(std::string("no thread can be made: ") + error.what());
    }
}

Backroom::~Backroom() {
    {
        const std::lock_guard lock(m_Mutex);
        m_IsEnding = true;
        m_Waiting.clear();
    }
    m_Wanted.notify_all();
    m_Thread.join();
}

bool Backroom::Do(Work work, Work then) {
    {
        const std::lock_guard lock(m_Mutex);
        if (m_Waiting.size() >= kMostWaiting) {
            return false;
        }
        m_Waiting.emplace_back(std::move(work), std::move(then));
    }
    m_Wanted.notify_one();
    return true;
}

void Backroom::TellWhatIsDone() {
    std::uint64_t count = 0;
    (void)!::read(m_News.Number(), &count, sizeof count);
    std::deque<Work> done;
    {
        const std::lock_guard lock(m_Mutex);
        done.swap(m_Done);
    }
    for (const Work& then : done) {
        then();
    }
}

void Backroom::Run() {
    std::unique_lock lock(m_Mutex);
    while (true) {
        m_Wanted.wait(lock, [this] { return m_IsEnding || !m_Waiting.empty(); });
        if (m_IsEnding) {
            return;
        }
        auto [work, then] = std::move(m_Waiting.front());
        m_Waiting.pop_front();
        lock.unlock();
        work();
        lock.lock();
        m_Done.push_back(std::move(then));
        const std::uint64_t one = 1;
        (void)!::write(m_News.Number(), &one, sizeof one);
    }
}

}  // namespace doors
