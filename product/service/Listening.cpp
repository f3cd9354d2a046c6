#include "Listening.h"

#include "basics/Failure.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace service {
namespace {

using basics::Descriptor;

[[noreturn]] void Fail(const Address& address) {
    basics::FailSurroundings("nobody can be let in at " + address.text + ": " + basics::ErrorText(errno));
}

Descriptor Open(int family, const Address& address) {
    Descriptor socket(::socket(family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!socket.IsOpen()) {
        Fail(address);
    }
    return socket;
}

/// Whether nobody answers there any more.
bool IsLeftBehind(const sockaddr_un& place) {
    const Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    return ::connect(socket.Number(), reinterpret_cast<const sockaddr*>(&place), sizeof place) != 0 &&
           errno == ECONNREFUSED;
}

Descriptor ListenInFileSystem(const Address& address) {
    Descriptor socket = Open(AF_UNIX, address);
    sockaddr_un place{};
    place.sun_family = AF_UNIX;
    std::memcpy(place.sun_path, address.path.c_str(), address.path.size() + 1);
    std::error_code ignored;
    std::filesystem::create_directory(std::filesystem::path(address.path).parent_path(), ignored);
    if (IsLeftBehind(place)) {
        (void)::unlink(address.path.c_str());
    }
    // Whoever may write to it may ask: its owner and group, until the administrator says something else.
    const mode_t before = ::umask(S_IXUSR | S_IXGRP | S_IRWXO);
    const bool isBound =
        ::bind(socket.Number(), reinterpret_cast<const sockaddr*>(&place), sizeof place) == 0;
    ::umask(before);
    if (!isBound) {
        Fail(address);
    }
    return socket;
}

Descriptor ListenOnNetwork(const Address& address) {
    const bool isSix = address.host.find(':') != std::string::npos;
    Descriptor socket = Open(isSix ? AF_INET6 : AF_INET, address);
    const int yes = 1;
    (void)::setsockopt(socket.Number(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    int result = -1;
    if (isSix) {
        (void)::setsockopt(socket.Number(), IPPROTO_IPV6, IPV6_V6ONLY, &yes, sizeof yes);
        sockaddr_in6 place{};
        place.sin6_family = AF_INET6;
        place.sin6_port = htons(address.port);
        ::inet_pton(AF_INET6, address.host.c_str(), &place.sin6_addr);
        result = ::bind(socket.Number(), reinterpret_cast<const sockaddr*>(&place), sizeof place);
    } else {
        sockaddr_in place{};
        place.sin_family = AF_INET;
        place.sin_port = htons(address.port);
        ::inet_pton(AF_INET, address.host.c_str(), &place.sin_addr);
        result = ::bind(socket.Number(), reinterpret_cast<const sockaddr*>(&place), sizeof place);
    }
    if (result != 0) {
        Fail(address);
    }
    return socket;
}

}  // namespace

Descriptor ListenOn(const Address& address) {
    constexpr int kWaiting = 1024;
    Descriptor socket = address.path.empty() ? ListenOnNetwork(address) : ListenInFileSystem(address);
    if (::listen(socket.Number(), kWaiting) != 0) {
        Fail(address);
    }
    return socket;
}

}  // namespace service
