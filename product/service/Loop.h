#pragma once

#include "Keeper.h"
#include "Service.h"
#include "Worker.h"
#include "basics/Descriptor.h"

#include <signal.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace service {

/// Runs a service in this process: asks the server when that is due, in worker processes, waits for children,
/// and heeds signals:
///
///     SIGTERM, SIGINT    it ends, within five seconds
///     SIGHUP             the configuration is read again
///     SIGUSR1            the server is asked at once
///
/// Sleeps in between; nothing wakes it but what is due. One thread, and one loop in a process.
class Loop final {
  public:
    struct Settings {
        std::string scenario = {};                         ///< for advice; "" for this server
        std::function<Configuration()> readConfiguration;  ///< throws what is wrong with it, in words
        Service::Log log;
    };

    /// Takes the signals from now on, and lets clients come. Throws basics::Failure where it cannot.
    Loop(Settings settings, Service& service);
    Loop(const Loop&) = delete;
    Loop& operator=(const Loop&) = delete;
    ~Loop();

    /// Until a signal ends it.
    void Run();

  private:
    [[nodiscard]] static Moment Now();
    void Wait();
    void Heed(int signal);
    void ReapChildren();
    void ReadConfigurationAgain();
    void AskWhatIsDue();
    void TakeAnswer(int status);
    void TakeAnswerOf(const Question& question, const Answer& answer);
    void TakeCalls();
    void ForgetOldCalls();
    void TellNews();
    void Ask(Question question);
    [[nodiscard]] DoorsConfiguration DoorsNow() const;
    void StayAlive();
    void End();

    Settings m_Settings;
    Service& m_Service;
    sigset_t m_MaskBefore{};
    basics::Descriptor m_Signals;
    std::optional<Worker> m_Worker;
    Keeper m_Keeper;
    std::deque<board::Call> m_Calls;          ///< what clients want, first come, first served
    std::vector<std::uint64_t> m_Refreshers;  ///< calls that wait for the server's next answer
    std::optional<std::chrono::steady_clock::time_point> m_NextAlive;
    std::optional<std::chrono::steady_clock::duration> m_AliveInterval;
    std::uint64_t m_ToldState = 0;  ///< what the doors know
    std::uint64_t m_Round = 0;      ///< of the doors whose calls those are
    bool m_IsForgotten = false;     ///< the running call is one of doors that are gone
    bool m_WasClient = false;       ///< the last inquiry was one that a client wanted
    bool m_IsEnding = false;
};

}  // namespace service
