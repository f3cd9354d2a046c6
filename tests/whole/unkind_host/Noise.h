#pragma once

#include "qel/portable/CTraceOutput.h"

#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace unkindhost {

/// The other threads of a busy host: from construction to destruction they take and give back memory, print
/// and trace without pause, so that they hold every lock of the libraries at any moment. SIGALRM is not for
/// them.
class Noise final {
  public:
    explicit Noise(int threads);
    ~Noise();
    Noise(const Noise&) = delete;
    Noise& operator=(const Noise&) = delete;

  private:
    // Keeps the last lines that it hears, under a lock, as a host's listener may.
    class Listener final : public ITraceListener {
      public:
        void OnTrace(const TraceLine& line) noexcept override;

      private:
        std::mutex m_Mutex;
        std::deque<std::string> m_Lines;
    };

    Listener m_Listener;
    std::vector<std::jthread> m_Threads;  ///< last, so that they end before what they use
};

}  // namespace unkindhost
