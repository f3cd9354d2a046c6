#pragma once

#include "basics/Descriptor.h"
#include "board/Messages.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace board {

/// A message as it came.
struct Message {
    MessageKind kind = MessageKind::Call;
    std::string bytes;
};

/// One end of what lies between the service and the process that faces the network: a pair of sockets, along
/// which packets go. A packet to the doors is 16 bytes, a kind and a size, with a file in memory that holds
/// the message; one to the service is a kind and a size with the message itself, of at most `kMostToService`
/// bytes, and no file. Neither end ever waits for the other. One thread.
class Link final {
  public:
    static constexpr std::size_t kMostToService = 1024;

    enum class End { Service, Doors };

    Link(basics::Descriptor socket, End end) : m_Socket(std::move(socket)), m_End(end) {}

    /// The service's end and that of the doors, which a program that is started does not inherit. Throws
    /// basics::Failure(Surroundings).
    [[nodiscard]] static std::pair<Link, basics::Descriptor> MakePair();

    /// False where the other end is gone, or takes nothing any more.
    [[nodiscard]] bool Send(MessageKind kind, std::string_view bytes);

    /// The next message; nothing where there is none yet. Throws WireError where the other end is gone, or
    /// has sent what is no message.
    [[nodiscard]] std::optional<Message> Receive();

    /// To be polled.
    [[nodiscard]] int Number() const { return m_Socket.Number(); }

  private:
    basics::Descriptor m_Socket;
    End m_End;
};

}  // namespace board
