#pragma once

#include "basics/Descriptor.h"
#include "http/Message.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct MHD_Connection;
struct MHD_Daemon;

namespace doors {

/// Who asks, as far as the network tells.
struct Client {
    std::string address;      ///< "192.0.2.7", "2001:db8::7"; empty for one on a Unix socket
    bool isLoopback = false;  ///< or on a Unix socket
    bool isEncrypted = false;
};

/// A request, and the way back to whoever waits for its answer. It may be kept, and answered later; where the
/// client has gone meanwhile, the answer is dropped.
class Exchange final : public std::enable_shared_from_this<Exchange> {
  public:
    [[nodiscard]] const http::Request& Request() const { return m_Request; }
    [[nodiscard]] http::Request& Request() { return m_Request; }
    [[nodiscard]] const Client& Who() const { return m_Client; }

    /// Once.
    void Reply(http::Response response);

    /// More of an answer that is a stream. What a client does not take in is dropped with the client: false.
    bool Stream(std::string_view text);

    /// No more of it, whatever of it is still to be sent; its connection goes, too.
    void EndStream();

    /// Whether anybody waits for it.
    [[nodiscard]] bool IsWanted() const { return m_Connection != nullptr; }

  private:
    friend class Server;

    MHD_Connection* m_Connection = nullptr;
    http::Request m_Request;
    Client m_Client;
    std::optional<http::Response> m_Response;
    std::string m_Pending;        ///< of a stream
    std::size_t m_BodyTaken = 0;  ///< bytes that count for the server's limit
    bool m_IsHandled = false, m_IsSuspended = false, m_IsStream = false;
};

/// What a key and a certificate are for; both in PEM.
struct Encryption {
    std::string key, certificate;
};

/// Speaks HTTP/1.1 on sockets that somebody has made. What is not HTTP, too large or too slow is refused
/// here; everything else is handed on. One thread.
class Server final {
  public:
    struct Limits {
        std::size_t body = 65536;           ///< bytes
        std::size_t bodies = 16U << 20U;    ///< bytes, of all that are there at a time
        std::size_t answers = 64U << 20U;   ///< bytes, of large ones that only one client gets, until it has
        std::size_t connection = 16384;     ///< bytes for the first lines of a request, and to write from
        unsigned connections = 12000;       ///< at a time, on all sockets; later ones wait to be accepted
        std::chrono::seconds patience{75};  ///< in which a request has to be whole
    };

    /// Gets every request once.
    using Handler = std::function<void(const std::shared_ptr<Exchange>&)>;

    Server(Handler handler, const Limits& limits);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// Throws basics::Failure(Surroundings).
    void Listen(basics::Descriptor socket, const std::optional<Encryption>& encryption);

    /// To be polled for reading.
    [[nodiscard]] std::vector<int> Numbers() const;

    /// Does what there is to do. To be called when one of those can be read, when an exchange was answered,
    /// and after the time that it returned before; nothing: nothing is due.
    std::optional<std::chrono::milliseconds> Work();

    [[nodiscard]] std::size_t Connections() const { return m_Waiting.size(); }

  private:
    struct Listener;
    /// A connection.
    struct Waiting {
        MHD_Connection* connection;
        std::chrono::steady_clock::time_point since;  ///< it waits for its request, or its answer
        bool isBusy = false;                          ///< its answer is being made, or sent
        bool isStream = false;
        std::string target{};  ///< of the request that it begins with
        std::list<Waiting>::iterator place{};
    };

    struct Callbacks;  ///< what the library calls

    // False: the connection is to be closed.
    [[nodiscard]] bool Begin(MHD_Connection* connection, const char* method, Exchange& exchange,
                             const Listener& listener);
    [[nodiscard]] bool Continue(MHD_Connection* connection, const char* body, std::size_t* size,
                                Exchange& exchange);
    [[nodiscard]] bool Refuse(Exchange& exchange, int status);
    [[nodiscard]] bool Queue(Exchange& exchange);
    [[nodiscard]] bool MayAccept() const;
    void Accept(const Listener& listener);
    void EndTheSlow();
    void GiveBackMemory();

    Handler m_Handler;
    Limits m_Limits;
    std::vector<std::unique_ptr<Listener>> m_Listeners;
    std::list<Waiting> m_Waiting;
    std::size_t m_BodiesHeld = 0, m_AnswersHeld = 0;
    std::chrono::steady_clock::time_point m_NextSweep{}, m_NextAccept{};
    std::size_t m_Crowd = 0;  ///< the most connections since memory was given back
};

}  // namespace doors
