#pragma once

#include "basics/Descriptor.h"
#include "calls/Inquiry.h"

#include <sys/types.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace calls {

/// A process that asks for one drive after another, each when it is told to. What it has to say comes through
/// a socket, as messages:
///
///     kind  size  content
///     'c'   27    vdkcli -pdinfo -pd[8:1] -a0    a command that the tool runs from now on
///     'r'   32    the tool's runs for this drive
///     'd'   4711  <?xml version="1.0" ...        its document, or
///     'f'   46    a kind of Failure, and what it says
///
/// Ended, if it has not, and waited for when this goes; the kernel ends it when this process ends.
class Job final {
  public:
    struct Message {
        char kind = '\0';
        std::string content = {};
    };

    /// Both must stay; throws basics::Failure(Surroundings) where no process can be made.
    Job(const InquiryRequest& request, const std::vector<DrivePlace>& places);
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;
    ~Job();

    /// Has it ask for the drive of that number. It must not be asking for another.
    void Ask(std::size_t number);

    /// The drive that it is asking for.
    [[nodiscard]] std::optional<std::size_t> Number() const { return m_Number; }
    void SetDone() { m_Number.reset(); }

    /// To be polled: where it can be read, there is something to `Receive`.
    [[nodiscard]] int Socket() const { return m_Socket.Number(); }

    /// Takes in what is there; false when it is lost, and nothing will come any more.
    [[nodiscard]] bool Receive();

    /// The next message that is there as a whole.
    [[nodiscard]] std::optional<Message> Next();

    /// How it ended, once it is lost: "ended by SIGSEGV".
    [[nodiscard]] std::string End();

  private:
    basics::Descriptor m_Socket;
    pid_t m_Process = -1;
    std::optional<std::size_t> m_Number;
    std::string m_Received;
};

/// The content of the messages 'r' and 'f'.
[[nodiscard]] inventory::ToolRuns RunsIn(std::string_view content);
[[noreturn]] void ThrowFailureIn(const std::string& content);

}  // namespace calls
