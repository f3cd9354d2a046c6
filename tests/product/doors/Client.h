#pragma once

#include "basics/Descriptor.h"
#include "basics/Words.h"

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

namespace doors::test {

/// A client that sends whatever it is told, and reads what comes: no library keeps it from being rude.
class Client final {
  public:
    /// At a Unix socket.
    explicit Client(const std::string& path) : m_Socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un place{};
        place.sun_family = AF_UNIX;
        std::strncpy(place.sun_path, path.c_str(), sizeof place.sun_path - 1);
        m_IsConnected =
            ::connect(m_Socket.Number(), reinterpret_cast<const sockaddr*>(&place), sizeof place) == 0;
    }
    /// At a port of this machine.
    explicit Client(std::uint16_t port) : m_Socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in place{};
        place.sin_family = AF_INET;
        place.sin_port = htons(port);
        place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        m_IsConnected =
            ::connect(m_Socket.Number(), reinterpret_cast<const sockaddr*>(&place), sizeof place) == 0;
    }
    [[nodiscard]] bool IsConnected() const { return m_IsConnected; }

    /// False where the other end has gone.
    bool Send(std::string_view text) const {
        while (!text.empty()) {
            const ssize_t sent = ::send(m_Socket.Number(), text.data(), text.size(), MSG_NOSIGNAL);
            if (sent <= 0) {
                return false;
            }
            text.remove_prefix(static_cast<std::size_t>(sent));
        }
        return true;
    }

    /// Reads on until the text is there, or the end: whether it is.
    bool ReadUntil(std::string_view text) {
        while (m_Read.find(text) == std::string::npos) {
            if (!ReadMore()) {
                return false;
            }
        }
        return true;
    }

    /// One whole answer, less what comes behind it; as much as there is where the other end goes before.
    std::string ReadAnswer() {
        if (!ReadUntil("\r\n\r\n")) {
            return std::exchange(m_Read, {});
        }
        const std::size_t head = m_Read.find("\r\n\r\n") + 4;
        std::size_t size = head;
        constexpr std::string_view kLength = "Content-Length: ";
        if (const std::size_t at = m_Read.find(kLength); at < head) {
            size += std::stoull(m_Read.substr(at + kLength.size()));
        }
        while (m_Read.size() < size && ReadMore()) {
        }
        std::string answer = m_Read.substr(0, size);
        m_Read.erase(0, size);
        return answer;
    }

    /// Whether something has come that was not read yet.
    [[nodiscard]] bool HasMore() const {
        pollfd socket = {m_Socket.Number(), POLLIN, 0};
        return ::poll(&socket, 1, 0) == 1;
    }

    /// What was read and not taken yet.
    [[nodiscard]] const std::string& Read() const { return m_Read; }

    void Forget() { m_Read.clear(); }

    /// Whether the other end closes the connection, whatever it says before.
    bool IsClosed() {
        const auto deadline = std::chrono::steady_clock::now() + kForever;
        while (std::chrono::steady_clock::now() < deadline && ReadMore()) {
        }
        return m_IsEnded;
    }

    /// A request without a body, and its answer.
    std::string Get(const std::string& path, const std::string& headers = "") {
        Send("GET " + path + " HTTP/1.1\r\nHost: localhost\r\n" + headers + "\r\n");
        return ReadAnswer();
    }
    std::string Post(const std::string& path, const std::string& body, const std::string& headers = "") {
        Send("POST " + path + " HTTP/1.1\r\nHost: localhost\r\n" + headers +
             "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
        return ReadAnswer();
    }

  private:
    bool ReadMore() {
        pollfd socket = {m_Socket.Number(), POLLIN, 0};
        if (::poll(&socket, 1, static_cast<int>(kForever.count())) != 1) {
            ADD_FAILURE() << "no answer";
            return false;
        }
        std::array<char, 65536> bytes{};
        const ssize_t count = ::recv(m_Socket.Number(), bytes.data(), bytes.size(), 0);
        m_IsEnded = m_IsEnded || count <= 0;
        m_Read.append(bytes.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
        return count > 0;
    }

    static constexpr std::chrono::milliseconds kForever{60'000};  // A test that waits that long has failed.

    basics::Descriptor m_Socket;
    std::string m_Read;
    bool m_IsConnected = false;
    bool m_IsEnded = false;
};

/// 200 of "HTTP/1.1 200 OK..."; 0 for anything else.
inline int StatusOf(const std::string& answer) {
    return answer.rfind("HTTP/1.1 ", 0) == 0 ? std::atoi(answer.c_str() + 9) : 0;
}

inline std::string BodyOf(const std::string& answer) {
    const std::size_t end = answer.find("\r\n\r\n");
    return end == std::string::npos ? "" : answer.substr(end + 4);
}

}  // namespace doors::test
