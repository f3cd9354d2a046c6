#pragma once

#include "basics/Descriptor.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace doors {

/// Where work is done that takes long and must not keep the clients of others waiting: one thread, one piece
/// of work after the other. What is to be done with it then is done by whoever looks after the descriptor.
class Backroom final {
  public:
    using Work = std::function<void()>;

    /// Throws basics::Failure(Surroundings).
    Backroom();
    /// What has not begun is not done.
    ~Backroom();
    Backroom(const Backroom&) = delete;
    Backroom& operator=(const Backroom&) = delete;

    /// False where too much waits already. `work` must not throw.
    [[nodiscard]] bool Do(Work work, Work then);

    /// To be polled for reading, and then: `then` of all that is done.
    [[nodiscard]] int Number() const { return m_News.Number(); }
    void TellWhatIsDone();

  private:
    void Run();

    static constexpr std::size_t kMostWaiting = 64;

    basics::Descriptor m_News;
    std::mutex m_Mutex;
    std::condition_variable m_Wanted;
    std::deque<std::pair<Work, Work>> m_Waiting;
    std::deque<Work> m_Done;
    bool m_IsEnding = false;
    std::thread m_Thread;
};

}  // namespace doors
