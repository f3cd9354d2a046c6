#pragma once

#include "Configuration.h"
#include "basics/Descriptor.h"
#include "board/Link.h"

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace service {

/// A program that lies beside this one.
[[nodiscard]] std::string ProgramBeside(const char* name);

/// Keeps the process that faces the network: makes the sockets on which clients come, starts it, tells it
/// what it is to show, hears what clients want, and starts it anew when it is gone. What it shows is asked
/// for when it begins. One thread.
class Keeper final {
  public:
    using TimePoint = std::chrono::steady_clock::time_point;

    struct Sources {
        std::function<std::vector<board::DriveReport>()> drives;
        std::function<board::Report()> report;
        std::function<void(const std::string&)> log;
    };

    explicit Keeper(Sources sources) : m_Sources(std::move(sources)) {}
    ~Keeper();
    Keeper(const Keeper&) = delete;
    Keeper& operator=(const Keeper&) = delete;

    /// From now on it is so. Throws basics::Failure for an address that cannot be had, or a file that cannot
    /// be read; then nothing has changed.
    void Configure(const DoorsConfiguration& doors, std::chrono::seconds interval, TimePoint now);

    /// Starts the process when that is due.
    void Work(TimePoint now);
    [[nodiscard]] std::optional<TimePoint> NextDue() const;

    /// A child has ended; false where it is another one.
    bool Ended(pid_t process, int status, TimePoint now);

    void TellDrive(board::DriveReport drive);
    void TellReport();
    void TellOutcome(const board::Outcome& outcome);

    /// To be polled for reading; -1: nothing.
    [[nodiscard]] int Number() const { return m_Link ? m_Link->Number() : -1; }
    /// At most some at a time, however many are sent.
    [[nodiscard]] std::vector<board::Call> TakeCalls();

    /// How many processes there were: what one has asked for is nothing to the next.
    [[nodiscard]] std::uint64_t Round() const { return m_Round; }

    /// Ends the process.
    void End();

  private:
    struct Socket {
        basics::Descriptor descriptor;
        Address address;
    };

    void Start(TimePoint now);
    void Leave(const std::vector<Socket>& kept) const;
    void Send(board::MessageKind kind, const std::string& bytes);
    [[nodiscard]] std::vector<Socket> Listen(const std::vector<Address>& addresses);

    Sources m_Sources;
    std::vector<Socket> m_Sockets;
    board::Settings m_Settings;
    std::optional<board::Link> m_Link;
    pid_t m_Process = -1;
    std::uint64_t m_Round = 0;
    std::optional<TimePoint> m_Due;
    TimePoint m_Started{};
    std::chrono::milliseconds m_Pause{0};
};

}  // namespace service
