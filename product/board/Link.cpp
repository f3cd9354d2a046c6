#include "board/Link.h"

#include "basics/Failure.h"
#include "board/Wire.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

namespace board {
namespace {

using basics::Descriptor;

struct Header {
    std::uint64_t kind = 0;
    std::uint64_t size = 0;
};

// What nobody may change any more once it is sent: the other end need not fear that it shrinks under its
// hands.
Descriptor MakeFile(std::string_view bytes) {
    Descriptor file(::memfd_create("message", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    if (!file.IsOpen() || basics::WriteWhole(file.Number(), bytes) != 0 ||
        ::fcntl(file.Number(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL) != 0) {
        return {};
    }
    return file;
}

std::string ContentOf(const Descriptor& file, std::uint64_t size) {
    constexpr std::uint64_t kMost = std::uint64_t(1) << 30;
    if (size > kMost || ::lseek(file.Number(), 0, SEEK_END) != static_cast<off_t>(size)) {
        throw WireError("the message is not as large as it says");
    }
    std::string content(static_cast<std::size_t>(size), '\0');
    std::size_t done = 0;
    while (done < content.size()) {
        const ssize_t count =
            ::pread(file.Number(), content.data() + done, content.size() - done, static_cast<off_t>(done));
        if (count == 0 || (count < 0 && errno != EINTR)) {
            throw WireError("the message cannot be read");
        }
        done += count < 0 ? 0 : static_cast<std::size_t>(count);
    }
    return content;
}

/// A packet with room for one descriptor beside it.
struct Packet {
    Packet(void* first, std::size_t firstSize, void* second, std::size_t secondSize)
        : parts{{{first, firstSize}, {second, secondSize}}} {
        header.msg_iov = parts.data();
        header.msg_iovlen = secondSize == 0 ? 1 : 2;
    }
    void Attach(int descriptor) {
        header.msg_control = control.data();
        header.msg_controllen = control.size();
        cmsghdr* const beside = CMSG_FIRSTHDR(&header);
        beside->cmsg_level = SOL_SOCKET;
        beside->cmsg_type = SCM_RIGHTS;
        beside->cmsg_len = CMSG_LEN(sizeof descriptor);
        std::memcpy(CMSG_DATA(beside), &descriptor, sizeof descriptor);
    }
    void MakeRoom() {
        header.msg_control = control.data();
        header.msg_controllen = control.size();
    }
    [[nodiscard]] Descriptor Attached() {
        const cmsghdr* const beside = CMSG_FIRSTHDR(&header);
        if (beside == nullptr || beside->cmsg_level != SOL_SOCKET || beside->cmsg_type != SCM_RIGHTS) {
            return {};
        }
        int descriptor = -1;
        std::memcpy(&descriptor, CMSG_DATA(beside), sizeof descriptor);
        return Descriptor(descriptor);
    }

    std::array<iovec, 2> parts;
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
    msghdr header{};
};

}  // namespace

std::pair<Link, Descriptor> Link::MakePair() {
    std::array<int, 2> sockets{};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, sockets.data()) != 0) {
        basics::FailSurroundings("no sockets can be made: " + basics::ErrorText(errno));
    }
    return {Link(Descriptor(sockets[0]), End::Service), Descriptor(sockets[1])};
}

bool Link::Send(MessageKind kind, std::string_view bytes) {
    Header header{static_cast<std::uint32_t>(kind), bytes.size()};
    std::string inside;
    Descriptor file;
    if (m_End == End::Service) {
        file = MakeFile(bytes);
        if (!file.IsOpen()) {
            return false;
        }
    } else if (bytes.size() > kMostToService) {
        return false;
    } else {
        inside = bytes;
    }
    Packet packet(&header, sizeof header, inside.data(), inside.size());
    if (file.IsOpen()) {
        packet.Attach(file.Number());
    }
    ssize_t sent = -1;
    do {
        sent = ::sendmsg(m_Socket.Number(), &packet.header, MSG_NOSIGNAL | MSG_DONTWAIT);
    } while (sent < 0 && errno == EINTR);
    return sent == static_cast<ssize_t>(sizeof header + inside.size());
}

std::optional<Message> Link::Receive() {
    Header header;
    std::array<char, kMostToService> inside{};
    Packet packet(&header, sizeof header, inside.data(), m_End == End::Service ? inside.size() : 0);
    if (m_End == End::Doors) {
        packet.MakeRoom();  // The service takes no descriptor: what is sent along is closed by the system.
    }
    ssize_t count = -1;
    do {
        count = ::recvmsg(m_Socket.Number(), &packet.header, MSG_DONTWAIT | MSG_CMSG_CLOEXEC);
    } while (count < 0 && errno == EINTR);
    if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
        return std::nullopt;
    }
    const Descriptor file = m_End == End::Doors && count > 0 ? packet.Attached() : Descriptor();
    const auto size = static_cast<std::size_t>(count);
    if (count < static_cast<ssize_t>(sizeof header) || (packet.header.msg_flags & MSG_TRUNC) != 0) {
        throw WireError(count <= 0 ? "the other end is gone" : "the packet is no message");
    }
    const bool isToService = header.kind == static_cast<std::uint32_t>(MessageKind::Call);
    if (header.kind < static_cast<std::uint32_t>(MessageKind::Settings) ||
        header.kind > static_cast<std::uint32_t>(MessageKind::Call) ||
        isToService != (m_End == End::Service)) {
        throw WireError("the message is of no kind that is known");
    }
    Message message{static_cast<MessageKind>(header.kind), {}};
    if (m_End == End::Doors) {
        message.bytes = ContentOf(file, header.size);
    } else if (size - sizeof header == header.size) {
        message.bytes.assign(inside.data(), static_cast<std::size_t>(header.size));
    } else {
        throw WireError("the message is not as large as it says");
    }
    return message;
}

}  // namespace board
