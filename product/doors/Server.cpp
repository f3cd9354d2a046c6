#include "Server.h"

#include "basics/Failure.h"
#include "http/Framing.h"
#include "http/Status.h"
#include "http/Target.h"

#include <arpa/inet.h>
#include <malloc.h>
#include <microhttpd.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

namespace doors {
namespace {

using std::chrono::steady_clock;

constexpr std::chrono::seconds kSweep{5};
constexpr std::chrono::seconds kPause{1};
constexpr std::chrono::minutes kLongestAnswer{10};
// TLS 1.2 and newer, and of 1.2 what keeps what was said secret when a key is lost later.
constexpr const char* kPriorities =
    "NORMAL:-VERS-ALL:+VERS-TLS1.3:+VERS-TLS1.2:-RSA:-ARCFOUR-128:-3DES-CBC:%SERVER_PRECEDENCE";

bool IsLoopback(const sockaddr& address) {
    if (address.sa_family == AF_INET) {
        constexpr unsigned kNetBits = 24;
        constexpr std::uint32_t kLoopbackNet = 127;
        const auto& internet = reinterpret_cast<const sockaddr_in&>(address);
        return ntohl(internet.sin_addr.s_addr) >> kNetBits == kLoopbackNet;
    }
    if (address.sa_family == AF_INET6) {
        const in6_addr& six = reinterpret_cast<const sockaddr_in6&>(address).sin6_addr;
        return IN6_IS_ADDR_LOOPBACK(&six) || (IN6_IS_ADDR_V4MAPPED(&six) && six.s6_addr[12] == 127);
    }
    return true;  // A Unix socket.
}

std::string TextOf(const sockaddr& address) {
    std::array<char, INET6_ADDRSTRLEN> text{};
    if (address.sa_family == AF_INET) {
        ::inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in&>(address).sin_addr, text.data(),
                    text.size());
    } else if (address.sa_family == AF_INET6) {
        ::inet_ntop(AF_INET6, &reinterpret_cast<const sockaddr_in6&>(address).sin6_addr, text.data(),
                    text.size());
    }
    return text.data();
}

struct Headers {
    std::vector<http::Field>& kept;
    bool isWhole = true;
};

MHD_Result KeepHeader(void* place, MHD_ValueKind /*kind*/, const char* name, std::size_t nameSize,
                      const char* value, std::size_t valueSize) {
    Headers& headers = *static_cast<Headers*>(place);
    try {
        headers.kept.emplace_back(std::string(name, nameSize),
                                  value == nullptr ? std::string() : std::string(value, valueSize));
    } catch (const std::bad_alloc&) {
        headers.isWhole = false;
        return MHD_NO;
    }
    return MHD_YES;
}

bool IsSuspended(MHD_Connection* connection) {
    const MHD_ConnectionInfo* const info =
        MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_SUSPENDED);
    return info != nullptr && info->suspended == MHD_YES;
}

/// Seen by the library as the client's end.
void End(MHD_Connection* connection) {
    (void)::shutdown(MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd,
                     SHUT_RDWR);
}

bool IsInFileSystem(const basics::Descriptor& socket) {
    sockaddr_storage address{};
    socklen_t size = sizeof address;
    return ::getsockname(socket.Number(), reinterpret_cast<sockaddr*>(&address), &size) == 0 &&
           address.ss_family == AF_UNIX;
}

struct Response {
    explicit Response(MHD_Response* made) : response(made) {}
    ~Response() {
        if (response != nullptr) {
            MHD_destroy_response(response);
        }
    }
    Response(const Response&) = delete;
    Response& operator=(const Response&) = delete;
    MHD_Response* response;
};

/// A body while the library sends it; of one that nobody else has, the bytes are counted.
class Body final {
  public:
    Body(std::shared_ptr<const std::string> text, std::size_t bytes, std::size_t& held)
        : m_Text(std::move(text)), m_Bytes(bytes), m_Held(held) {
        m_Held += m_Bytes;
    }
    ~Body() { m_Held -= m_Bytes; }
    Body(const Body&) = delete;
    Body& operator=(const Body&) = delete;

  private:
    std::shared_ptr<const std::string> m_Text;
    std::size_t m_Bytes;
    std::size_t& m_Held;
};

void FreeBody(void* body) {
    delete static_cast<Body*>(body);
}

std::size_t BytesOfItsOwn(const http::Response& answer) {
    constexpr std::size_t kLarge = 65536;
    return answer.body.use_count() == 1 && answer.body->size() >= kLarge ? answer.body->size() : 0;
}

MHD_Response* MakeResponse(const http::Response& answer, std::size_t counted, std::size_t& held) {
    if (!answer.body || answer.body->empty()) {
        return MHD_create_response_from_buffer(0, nullptr, MHD_RESPMEM_PERSISTENT);
    }
    auto body = std::make_unique<Body>(answer.body, counted, held);
    // The library reads from it and nothing else, whatever its interface says.
    MHD_Response* const response = MHD_create_response_from_buffer_with_free_callback_cls(
        answer.body->size(), const_cast<char*>(answer.body->data()), FreeBody, body.get());
    if (response != nullptr) {
        (void)body.release();
    }
    return response;
}

}  // namespace

struct Server::Listener {
    Server& server;
    basics::Descriptor socket;
    MHD_Daemon* daemon = nullptr;
    bool isEncrypted = false;
    bool isInFileSystem = false;
};

void Exchange::Reply(http::Response response) {
    m_Response = std::move(response);
    m_IsStream = m_Response->isStream && m_Request.method != "HEAD";
    if (m_IsStream) {
        m_Pending = m_Response->Text();
    }
    if (m_Connection != nullptr && std::exchange(m_IsSuspended, false)) {
        MHD_resume_connection(m_Connection);
    }
}

bool Exchange::Stream(std::string_view text) {
    constexpr std::size_t kMostPending = std::size_t(1024) * 1024;
    if (m_Connection == nullptr) {
        return false;
    }
    if (m_Pending.size() + text.size() > kMostPending) {
        EndStream();
        return false;
    }
    m_Pending += text;
    if (std::exchange(m_IsSuspended, false)) {
        MHD_resume_connection(m_Connection);
    }
    return m_IsStream;
}

void Exchange::EndStream() {
    m_IsStream = false;
    m_Pending.clear();
    if (m_Connection != nullptr) {
        End(m_Connection);  // A client that takes nothing in would never take the end of the answer.
        if (std::exchange(m_IsSuspended, false)) {
            MHD_resume_connection(m_Connection);
        }
    }
}

struct Server::Callbacks {
    static Waiting* RecordOf(MHD_Connection* connection) {
        const MHD_ConnectionInfo* const info =
            MHD_get_connection_info(connection, MHD_CONNECTION_INFO_SOCKET_CONTEXT);
        return info == nullptr ? nullptr : static_cast<Waiting*>(info->socket_context);
    }

    static void Connection(void* listener, MHD_Connection* connection, void** context,
                           MHD_ConnectionNotificationCode code) {
        Server& server = static_cast<Listener*>(listener)->server;
        if (code == MHD_CONNECTION_NOTIFY_STARTED) {
            try {
                Waiting& record = server.m_Waiting.emplace_back(Waiting{connection, steady_clock::now()});
                record.place = std::prev(server.m_Waiting.end());
                *context = &record;
            } catch (const std::bad_alloc&) {
                End(connection);
            }
        } else if (*context != nullptr) {
            server.m_Waiting.erase(static_cast<Waiting*>(std::exchange(*context, nullptr))->place);
        }
    }

    static void* Target(void* /*listener*/, const char* target, MHD_Connection* connection) {
        try {
            if (Waiting* const record = RecordOf(connection)) {
                record->target = target;
            }
        } catch (const std::bad_alloc&) {
            return nullptr;  // A request without a target is refused.
        }
        return nullptr;
    }

    // Encoded characters are decoded with the whole target; here they stay.
    static std::size_t KeepEncoded(void* /*listener*/, MHD_Connection* /*connection*/, char* text) {
        return std::strlen(text);
    }

    static MHD_Result Access(void* listener, MHD_Connection* connection, const char* /*path*/,
                             const char* method, const char* /*version*/, const char* body, std::size_t* size,
                             void** place) {
        const auto& from = *static_cast<const Listener*>(listener);
        auto* held = static_cast<std::shared_ptr<Exchange>*>(*place);
        try {
            if (held == nullptr) {
                held = new std::shared_ptr<Exchange>(std::make_shared<Exchange>());
                *place = held;
                return from.server.Begin(connection, method, **held, from) ? MHD_YES : MHD_NO;
            }
            return from.server.Continue(connection, body, size, **held) ? MHD_YES : MHD_NO;
        } catch (const std::exception&) {
            return MHD_NO;  // The connection is closed; nothing may be thrown through the library.
        }
    }

    static void Completed(void* listener, MHD_Connection* connection, void** place,
                          MHD_RequestTerminationCode /*code*/) {
        if (Waiting* const record = RecordOf(connection)) {
            record->isBusy = false;
            record->isStream = false;
            record->since = steady_clock::now();
        }
        auto* const held = static_cast<std::shared_ptr<Exchange>*>(std::exchange(*place, nullptr));
        if (held != nullptr) {
            static_cast<Listener*>(listener)->server.m_BodiesHeld -= (*held)->m_BodyTaken;
            (*held)->m_Connection = nullptr;
            (*held)->m_IsSuspended = false;
            delete held;
        }
    }

    static ssize_t Read(void* place, std::uint64_t /*position*/, char* to, std::size_t most) {
        Exchange& exchange = **static_cast<std::shared_ptr<Exchange>*>(place);
        if (!exchange.m_IsStream) {
            return MHD_CONTENT_READER_END_OF_STREAM;
        }
        const std::size_t size = std::min(most, exchange.m_Pending.size());
        if (size == 0 && exchange.m_Connection != nullptr) {
            exchange.m_IsSuspended = true;
            MHD_suspend_connection(exchange.m_Connection);
        }
        std::copy_n(exchange.m_Pending.data(), size, to);
        exchange.m_Pending.erase(0, size);
        return static_cast<ssize_t>(size);
    }

    static void Release(void* place) { delete static_cast<std::shared_ptr<Exchange>*>(place); }
};

Server::Server(Handler handler, const Limits& limits) : m_Handler(std::move(handler)), m_Limits(limits) {}

Server::~Server() {
    // What is suspended must go on before it can be ended.
    for (const Waiting& each : m_Waiting) {
        if (IsSuspended(each.connection)) {
            MHD_resume_connection(each.connection);
        }
    }
    for (const auto& listener : m_Listeners) {
        if (listener->daemon != nullptr) {
            MHD_stop_daemon(listener->daemon);
        }
    }
}

void Server::Listen(basics::Descriptor socket, const std::optional<Encryption>& encryption) {
    const bool isInFileSystem = IsInFileSystem(socket);
    auto listener = std::make_unique<Listener>(
        Listener{*this, std::move(socket), nullptr, encryption.has_value(), isInFileSystem});
    std::vector<MHD_OptionItem> options;
    if (encryption) {
        options.push_back({MHD_OPTION_HTTPS_MEM_KEY, 0, const_cast<char*>(encryption->key.c_str())});
        options.push_back({MHD_OPTION_HTTPS_MEM_CERT, 0, const_cast<char*>(encryption->certificate.c_str())});
        options.push_back({MHD_OPTION_HTTPS_PRIORITIES, 0, const_cast<char*>(kPriorities)});
    }
    options.push_back({MHD_OPTION_END, 0, nullptr});
    unsigned flags = MHD_USE_EPOLL | MHD_ALLOW_SUSPEND_RESUME | MHD_USE_NO_LISTEN_SOCKET;
    flags |= encryption ? unsigned(MHD_USE_TLS) : 0U;
    listener->daemon = MHD_start_daemon(
        flags, 0, nullptr, nullptr, &Callbacks::Access, listener.get(), MHD_OPTION_NOTIFY_CONNECTION,
        &Callbacks::Connection, listener.get(), MHD_OPTION_NOTIFY_COMPLETED, &Callbacks::Completed,
        listener.get(), MHD_OPTION_URI_LOG_CALLBACK, &Callbacks::Target, listener.get(),
        MHD_OPTION_UNESCAPE_CALLBACK, &Callbacks::KeepEncoded, listener.get(),
        MHD_OPTION_CONNECTION_MEMORY_LIMIT, m_Limits.connection, MHD_OPTION_CONNECTION_LIMIT,
        m_Limits.connections, MHD_OPTION_STRICT_FOR_CLIENT, 1, MHD_OPTION_SIGPIPE_HANDLED_BY_APP, 1,
        MHD_OPTION_ARRAY, options.data(), MHD_OPTION_END);
    if (listener->daemon == nullptr) {
        basics::FailSurroundings(encryption ? "the key or the certificate cannot be used"
                                            : "no server can be started: " + basics::ErrorText(errno));
    }
    m_Listeners.push_back(std::move(listener));
}

std::vector<int> Server::Numbers() const {
    std::vector<int> numbers;
    for (const auto& listener : m_Listeners) {
        numbers.push_back(MHD_get_daemon_info(listener->daemon, MHD_DAEMON_INFO_EPOLL_FD)->epoll_fd);
        if (MayAccept()) {
            numbers.push_back(listener->socket.Number());
        }
    }
    return numbers;
}

bool Server::MayAccept() const {
    return m_Waiting.size() < m_Limits.connections && steady_clock::now() >= m_NextAccept;
}

// The library would count those of each socket on their own.
void Server::Accept(const Listener& listener) {
    constexpr int kMostAtATime = 64;
    for (int left = kMostAtATime; left > 0 && MayAccept(); --left) {
        sockaddr_storage address{};
        socklen_t size = sizeof address;
        auto* const where = reinterpret_cast<sockaddr*>(&address);
        const int client = ::accept4(listener.socket.Number(), where, &size, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (client >= 0) {
            (void)MHD_add_connection(listener.daemon, client, where, size);  // Else it closes it.
        } else {
            // The system is short of something, or its security module lets nobody in: neither is over at
            // once.
            const bool lasts = errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM ||
                               errno == EACCES || errno == EPERM;
            m_NextAccept = lasts ? steady_clock::now() + kPause : m_NextAccept;
            return;
        }
    }
}

std::optional<std::chrono::milliseconds> Server::Work() {
    std::optional<std::chrono::milliseconds> next;
    for (const auto& listener : m_Listeners) {
        Accept(*listener);
        (void)MHD_run(listener->daemon);
        MHD_UNSIGNED_LONG_LONG left = 0;
        if (MHD_get_timeout(listener->daemon, &left) == MHD_YES) {
            const std::chrono::milliseconds due(left);
            next = std::min(next.value_or(due), due);
        }
    }
    EndTheSlow();
    GiveBackMemory();
    if (!m_Waiting.empty()) {
        next = std::min<std::chrono::milliseconds>(next.value_or(kSweep), kSweep);
    }
    if (steady_clock::now() < m_NextAccept) {
        next = std::min<std::chrono::milliseconds>(next.value_or(kPause), kPause);
    }
    return next;
}

// What a crowd took is nobody's once it has gone.
void Server::GiveBackMemory() {
    constexpr std::size_t kCrowd = 1000;
    constexpr std::size_t kMostGone = 4;
    m_Crowd = std::max(m_Crowd, m_Waiting.size());
    if (m_Crowd >= kCrowd && m_Waiting.size() < m_Crowd / kMostGone) {
        m_Crowd = m_Waiting.size();
#if defined(__GLIBC__)
        ::malloc_trim(0);
#endif
    }
}

// The library closes what it can no longer read from.
void Server::EndTheSlow() {
    const auto now = steady_clock::now();
    if (now < m_NextSweep) {
        return;
    }
    m_NextSweep = now + std::min<steady_clock::duration>(kSweep, m_Limits.patience);
    for (const Waiting& each : m_Waiting) {
        const std::chrono::steady_clock::duration patience =
            each.isBusy ? std::chrono::steady_clock::duration(kLongestAnswer) : m_Limits.patience;
        if (!each.isStream && now - each.since > patience && !IsSuspended(each.connection)) {
            End(each.connection);
        }
    }
}

bool Server::Begin(MHD_Connection* connection, const char* method, Exchange& exchange,
                   const Listener& listener) {
    exchange.m_Connection = connection;
    http::Request& request = exchange.m_Request;
    request.method = method;
    Headers headers{request.headers};
    MHD_get_connection_values_n(connection, MHD_HEADER_KIND, &KeepHeader, &headers);
    const MHD_ConnectionInfo* const info =
        MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CLIENT_ADDRESS);
    if (info != nullptr && info->client_addr != nullptr) {
        exchange.m_Client = {TextOf(*info->client_addr), IsLoopback(*info->client_addr),
                             listener.isEncrypted};
    }
    if (!headers.isWhole || (exchange.m_Client.address.empty() && !listener.isInFileSystem)) {
        return false;  // Who has no address is trusted as one who may write to the socket's file.
    }
    Waiting* const record = Callbacks::RecordOf(connection);
    std::optional<http::Target> target =
        http::TargetFrom(record == nullptr ? std::string() : std::exchange(record->target, {}));
    if (!target || http::IsAmbiguous(request)) {
        return Refuse(exchange, http::kBadRequest);
    }
    request.path = std::move(target->path);
    request.query = std::move(target->query);
    return http::LengthOf(request) <= m_Limits.body || Refuse(exchange, http::kContentTooLarge);
}

bool Server::Continue(MHD_Connection* connection, const char* body, std::size_t* size, Exchange& exchange) {
    if (*size > 0) {
        std::string& kept = exchange.m_Request.body;
        if (kept.size() + *size > m_Limits.body || m_BodiesHeld + *size > m_Limits.bodies) {
            return false;  // It told no length, and does not end; or many send at once, and do not end.
        }
        kept.append(body, *size);
        m_BodiesHeld += *size;
        exchange.m_BodyTaken += std::exchange(*size, 0);
        return true;
    }
    if (!std::exchange(exchange.m_IsHandled, true)) {
        if (Waiting* const record = Callbacks::RecordOf(connection)) {
            record->isBusy = true;
            record->since = steady_clock::now();
        }
        m_Handler(exchange.shared_from_this());
    }
    if (!exchange.m_Response) {
        exchange.m_IsSuspended = true;
        MHD_suspend_connection(connection);
        return true;
    }
    return Queue(exchange);
}

bool Server::Refuse(Exchange& exchange, int status) {
    exchange.m_IsHandled = true;
    exchange.m_Response =
        http::MakeWords(status, status == http::kContentTooLarge ? "The request is too large."
                                                                 : "The request cannot be understood.");
    exchange.m_Response->headers.emplace_back("Connection", "close");
    return Queue(exchange);
}

bool Server::Queue(Exchange& exchange) {
    if (m_AnswersHeld + BytesOfItsOwn(*exchange.m_Response) > m_Limits.answers) {
        exchange.m_Response =
            http::MakeWords(http::kServiceUnavailable, "Too many long answers are being sent.");
    }
    const http::Response& answer = *exchange.m_Response;
    MHD_Response* made = nullptr;
    if (exchange.m_IsStream) {
        constexpr std::size_t kBlock = 4096;
        if (Waiting* const record = Callbacks::RecordOf(exchange.m_Connection)) {
            record->isStream = true;
        }
        auto held = std::make_unique<std::shared_ptr<Exchange>>(exchange.shared_from_this());
        made = MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, kBlock, &Callbacks::Read, held.get(),
                                                 &Callbacks::Release);
        if (made != nullptr) {
            (void)held.release();
        }
    } else {
        made = MakeResponse(answer, BytesOfItsOwn(answer), m_AnswersHeld);
    }
    const Response response(made);
    if (made == nullptr) {
        return false;
    }
    for (const http::Field& header : answer.headers) {
        if (http::IsHeaderText(header.first) && http::IsHeaderText(header.second)) {
            (void)MHD_add_response_header(made, header.first.c_str(), header.second.c_str());
        }
    }
    return MHD_queue_response(exchange.m_Connection, static_cast<unsigned>(answer.status), made) == MHD_YES;
}

}  // namespace doors
