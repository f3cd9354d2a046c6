#include "Server.h"

#include "Client.h"
#include "test_support/TempFolder.h"
#include "test_support/Waiting.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <atomic>
#include <thread>

namespace doors::test {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::Not;

basics::Descriptor ListenAt(const std::string& path) {
    basics::Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    sockaddr_un place{};
    place.sun_family = AF_UNIX;
    std::strncpy(place.sun_path, path.c_str(), sizeof place.sun_path - 1);
    EXPECT_EQ(::bind(socket.Number(), reinterpret_cast<const sockaddr*>(&place), sizeof place), 0);
    EXPECT_EQ(::listen(socket.Number(), 64), 0);
    return socket;
}

/// A server that says what it was asked, in a thread of its own.
class ServerTest : public testing::Test {
  protected:
    void Start(Server::Limits limits = {}) {
        m_Thread = std::thread([this, limits] {
            Server server([this](const std::shared_ptr<Exchange>& exchange) { Handle(exchange); }, limits);
            server.Listen(ListenAt(m_Path), std::nullopt);
            server.Listen(ListenAt(m_OtherPath), std::nullopt);
            m_IsReady = true;
            while (!m_IsEnding) {
                if (!m_HoldsBack) {
                    for (const auto& late : std::exchange(m_Late, {})) {
                        late->Reply(http::MakeWords(200, "late"));
                    }
                }
                const auto due = server.Work();
                m_Connections = server.Connections();
                m_MostConnections = std::max(m_MostConnections.load(), m_Connections.load());
                std::vector<pollfd> news;
                for (const int number : server.Numbers()) {
                    news.push_back({number, POLLIN, 0});
                }
                (void)::poll(news.data(), news.size(),
                             std::min(20, due ? static_cast<int>(due->count()) : 20));
            }
        });
        EXPECT_TRUE(testsupport::ComesTrue([this] { return m_IsReady.load(); }));
    }
    ~ServerTest() override {
        m_IsEnding = true;
        if (m_Thread.joinable()) {
            m_Thread.join();
        }
    }
    void Handle(const std::shared_ptr<Exchange>& exchange) {
        ++m_Asked;
        const http::Request& request = exchange->Request();
        if (request.path == "/throws") {
            throw std::runtime_error("of no use");
        }
        if (request.path == "/large") {
            exchange->Reply(http::MakeResponse(200, "text/plain", std::string(kLarge, 'x')));
        } else if (request.path == "/shared") {
            exchange->Reply({.body = m_Shared});
        } else if (request.path == "/late") {
            m_Late.push_back(exchange);
        } else if (request.path == "/stream") {
            http::Response response = http::MakeResponse(200, "text/event-stream", "data: first\n\n");
            response.isStream = true;
            exchange->Reply(std::move(response));
            m_Streams.push_back(exchange);
        } else if (request.path == "/more") {
            std::size_t read = 0;
            for (const auto& stream : m_Streams) {
                read += stream->Stream("data: " + std::string(request.query.size() * 100'000, 'x') + "\n\n")
                            ? 1U
                            : 0U;
            }
            exchange->Reply(http::MakeWords(200, std::to_string(read) + " read"));
        } else {
            http::Response response =
                http::MakeWords(200, request.method + ' ' + request.path + ' ' + request.body);
            response.headers.emplace_back("X-Safe", "yes");
            response.headers.emplace_back("X-Drive", "PD0\r\nX-Injected: yes");
            exchange->Reply(std::move(response));
        }
    }

    static constexpr std::size_t kLarge = 1'000'000;  // More than a socket keeps.

    testsupport::TempFolder m_Folder;
    const std::shared_ptr<const std::string> m_Shared = std::make_shared<std::string>(kLarge, 'y');
    const std::string m_Path = m_Folder / "socket", m_OtherPath = m_Folder / "other";
    std::atomic<bool> m_IsReady = false, m_IsEnding = false, m_HoldsBack = false;
    std::atomic<std::size_t> m_Asked = 0, m_Connections = 0, m_MostConnections = 0;
    std::vector<std::shared_ptr<Exchange>> m_Late, m_Streams;
    std::thread m_Thread;
};

TEST_F(ServerTest, HandsOnWhatIsAskedOneAfterTheOther) {
    Start();
    Client client(m_Path);
    EXPECT_EQ(BodyOf(client.Get("/a%20b?c=d")), "GET /a b \n");
    EXPECT_EQ(BodyOf(client.Post("/post", "hello")), "POST /post hello\n");
    EXPECT_EQ(BodyOf(client.Get("/late")), "late\n");
    client.Send("HEAD /head HTTP/1.1\r\nHost: x\r\n\r\n");
    ASSERT_TRUE(client.ReadUntil("\r\n\r\n"));
    EXPECT_EQ(m_Asked, 4U);
}

TEST_F(ServerTest, AnswersRequestsThatComeTogether) {
    Start();
    Client client(m_Path);
    client.Send("GET /1 HTTP/1.1\r\nHost: x\r\n\r\nGET /2 HTTP/1.1\r\nHost: x\r\n\r\n");
    EXPECT_EQ(BodyOf(client.ReadAnswer()), "GET /1 \n");
    EXPECT_EQ(BodyOf(client.ReadAnswer()), "GET /2 \n");
}

TEST_F(ServerTest, LetsNoTextOfADriveBecomeAHeader) {
    Start();
    const std::string answer = Client(m_Path).Get("/");
    EXPECT_THAT(answer, HasSubstr("X-Safe: yes"));
    EXPECT_THAT(answer, Not(HasSubstr("Injected")));
}

TEST_F(ServerTest, RefusesWhatCanBeReadInTwoWays) {
    Start();
    const std::string post = "POST /p HTTP/1.1\r\nHost: x\r\n";
    for (const std::string& request :
         {post + "Content-Length: 4\r\nContent-Length: 5\r\n\r\nabcde",
          post + "Content-Length: 4\r\nContent-Length: 4\r\n\r\nabcd",
          post + "Content-Length: 4\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n",
          post + "Transfer-Encoding: chunked\r\nTransfer-Encoding: identity\r\n\r\n0\r\n\r\n",
          post + "Transfer-Encoding: gzip, chunked\r\n\r\n0\r\n\r\n", post + "Content-Length: -1\r\n\r\n",
          post + "Content-Length: 4x\r\n\r\nabcd", post + "Content-Length: +4\r\n\r\nabcd",
          post + "Content-Length: 99999999999999999999\r\n\r\n",
          std::string("GET / HTTP/1.1\r\nHost: x\r\nHost: y\r\n\r\n"), std::string("GET / HTTP/1.1\r\n\r\n"),
          std::string("GET http://x/ HTTP/1.1\r\nHost: x\r\n\r\n"),
          std::string("GET /%0d%0aX:y HTTP/1.1\r\nHost: x\r\n\r\n"),
          std::string("GET /%zz HTTP/1.1\r\nHost: x\r\n\r\n"), std::string("nonsense\r\n\r\n")}) {
        Client client(m_Path);
        client.Send(request + "GET /smuggled HTTP/1.1\r\nHost: x\r\n\r\n");
        const std::string answer = client.ReadAnswer();
        EXPECT_TRUE(answer.empty() || (StatusOf(answer) >= 400 && StatusOf(answer) < 506))
            << request << answer;
        EXPECT_TRUE(client.IsClosed()) << request;
    }
    EXPECT_EQ(m_Asked, 0U) << "nothing of it was handed on";
    EXPECT_EQ(StatusOf(Client(m_Path).Get("/")), 200);
}

TEST_F(ServerTest, RefusesWhatIsTooLarge) {
    Start({.body = 1000});
    Client body(m_Path);
    body.Send("POST /p HTTP/1.1\r\nHost: x\r\nContent-Length: 1001\r\n\r\n");
    EXPECT_EQ(StatusOf(body.ReadAnswer()), 413);
    EXPECT_TRUE(body.IsClosed());
    Client chunks(m_Path);
    chunks.Send("POST /p HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\n\r\n");
    while (chunks.Send("100\r\n" + std::string(256, 'x') + "\r\n")) {
    }
    EXPECT_TRUE(chunks.IsClosed());
    Client target(m_Path);
    target.Send("GET /" + std::string(100'000, 'x') + " HTTP/1.1\r\nHost: x\r\n\r\n");
    EXPECT_GE(StatusOf(target.ReadAnswer()), 400);
    Client headers(m_Path);
    headers.Send("GET / HTTP/1.1\r\nHost: x\r\n");
    for (int number = 0; number < 10'000 && headers.Send("X-" + std::to_string(number) + ": y\r\n");
         ++number) {
    }
    EXPECT_GE(StatusOf(headers.ReadAnswer()), 400);
    EXPECT_EQ(m_Asked, 0U);
    EXPECT_EQ(BodyOf(Client(m_Path).Post("/p", std::string(1000, 'x'))),
              "POST /p " + std::string(1000, 'x') + "\n");
}

TEST_F(ServerTest, EndsWhoeverTakesTooLong) {
    Start({.patience = 0s});
    Client slow(m_Path);
    slow.Send("GET / HTTP/1.1\r\nHo");
    EXPECT_TRUE(slow.IsClosed());
    Client idle(m_Path);
    EXPECT_TRUE(idle.IsClosed());
    EXPECT_TRUE(testsupport::ComesTrue([this] { return m_Connections == 0; }));
}

TEST_F(ServerTest, SlowClientsKeepNobodyWaiting) {
    Start();
    std::vector<std::unique_ptr<Client>> slow;
    for (int number = 0; number < 200; ++number) {
        slow.push_back(std::make_unique<Client>(m_Path));
        slow.back()->Send("GET / HTTP/1.1\r\nX: ");
    }
    EXPECT_TRUE(testsupport::ComesTrue([this] { return m_Connections >= 200; }));
    EXPECT_EQ(StatusOf(Client(m_Path).Get("/")), 200);
    for (const auto& each : slow) {
        each->Send("y\r\nHost: x\r\n\r\n");
        EXPECT_EQ(StatusOf(each->ReadAnswer()), 200);
    }
}

TEST_F(ServerTest, WhoIsTooManyWaitsWhereverHeComes) {
    Start({.connections = 2});
    auto first = std::make_unique<Client>(m_Path);
    EXPECT_EQ(StatusOf(first->Get("/")), 200);
    auto second = std::make_unique<Client>(m_OtherPath);
    EXPECT_EQ(StatusOf(second->Get("/")), 200);
    Client third(m_Path);
    Client fourth(m_OtherPath);
    third.Send("GET /third HTTP/1.1\r\nHost: x\r\n\r\n");
    fourth.Send("GET /fourth HTTP/1.1\r\nHost: x\r\n\r\n");
    for (int time = 0; time < 20; ++time) {  // Each time the server could let somebody in.
        EXPECT_EQ(StatusOf(first->Get("/")), 200);
        EXPECT_EQ(StatusOf(second->Get("/")), 200);
    }
    EXPECT_EQ(m_Asked, 42U);
    first.reset();
    EXPECT_TRUE(testsupport::ComesTrue([this] { return m_Asked == 43; })) << "somebody is let in";
    second.reset();
    EXPECT_EQ(StatusOf(third.ReadAnswer()), 200);
    EXPECT_EQ(StatusOf(fourth.ReadAnswer()), 200);
    EXPECT_EQ(m_MostConnections, 2U);
}

TEST_F(ServerTest, StreamsGetWhatHappens) {
    Start();
    Client stream(m_Path);
    Client other(m_Path);
    stream.Send("GET /stream HTTP/1.1\r\nHost: x\r\n\r\n");
    ASSERT_TRUE(stream.ReadUntil("data: first"));
    EXPECT_EQ(BodyOf(other.Get("/more?x")), "1 read\n");
    ASSERT_TRUE(stream.ReadUntil("xxx\n\n"));
}

TEST_F(ServerTest, AStreamThatNobodyReadsIsEnded) {
    Start();
    Client stream(m_Path);
    Client other(m_Path);
    stream.Send("GET /stream HTTP/1.1\r\nHost: x\r\n\r\n");
    ASSERT_TRUE(stream.ReadUntil("data: first"));
    std::string read = "1 read\n";
    for (int times = 0; times < 1000 && read == "1 read\n"; ++times) {
        read = BodyOf(other.Get("/more?1&2&3&4&5"));
    }
    EXPECT_EQ(read, "0 read\n");
    EXPECT_TRUE(testsupport::ComesTrue([this] { return m_Connections == 1; })) << "with its connection";
    EXPECT_EQ(StatusOf(other.Get("/")), 200);
}

TEST_F(ServerTest, AnAnswerThatNobodyWaitsForIsDropped) {
    m_HoldsBack = true;
    Start();
    {
        Client gone(m_Path);
        gone.Send("GET /late HTTP/1.1\r\nHost: x\r\n\r\n");
        ASSERT_TRUE(testsupport::ComesTrue([this] { return m_Asked == 1; }));
    }
    m_HoldsBack = false;
    EXPECT_TRUE(testsupport::ComesTrue([this] { return m_Connections == 0; }));
    EXPECT_EQ(StatusOf(Client(m_Path).Get("/")), 200);
}

// Only what goes on for ever may.
TEST_F(ServerTest, AStreamThatIsNoneDoesNotKeepItsConnection) {
    Start({.patience = 0s});
    Client client(m_Path);
    client.Send("HEAD /stream HTTP/1.1\r\nHost: x\r\n\r\n");
    EXPECT_TRUE(client.IsClosed());
    EXPECT_TRUE(testsupport::ComesTrue([this] { return m_Connections == 0; }));
}

TEST_F(ServerTest, KeepsNoMoreOfAllBodiesThanThereIsRoomFor) {
    Start({.body = 1000, .bodies = 1500});
    const std::string post = "POST /p HTTP/1.1\r\nHost: x\r\nContent-Length: 1000\r\n\r\n";
    Client slow(m_Path);
    slow.Send(post + std::string(999, 'x'));
    EXPECT_TRUE(testsupport::ComesTrue([&] {
        Client other(m_Path);
        other.Send(post + std::string(1000, 'x'));
        return other.ReadAnswer().empty();
    }));
    slow.Send("x");
    EXPECT_EQ(StatusOf(slow.ReadAnswer()), 200);
    EXPECT_EQ(StatusOf(Client(m_Path).Post("/p", std::string(1000, 'x'))), 200) << "there is room again";
}

TEST_F(ServerTest, KeepsNoMoreLongAnswersThanThereIsRoomFor) {
    Start({.answers = 2 * kLarge});
    const std::string ask = "GET /large HTTP/1.1\r\nHost: x\r\n\r\n";
    Client first(m_Path);
    Client second(m_Path);
    for (Client* const client : {&first, &second}) {
        client->Send(ask);
    }
    ASSERT_TRUE(testsupport::ComesTrue([this] { return m_Asked == 2; }));
    EXPECT_EQ(StatusOf(Client(m_Path).Get("/large")), 503);
    EXPECT_EQ(BodyOf(Client(m_Path).Get("/shared")), *m_Shared) << "what all get costs nothing";
    EXPECT_EQ(StatusOf(Client(m_Path).Get("/")), 200);
    EXPECT_EQ(BodyOf(first.ReadAnswer()).size(), kLarge);
    EXPECT_TRUE(testsupport::ComesTrue([this] { return StatusOf(Client(m_Path).Get("/large")) == 200; }));
    EXPECT_EQ(BodyOf(second.ReadAnswer()).size(), kLarge);
}

TEST_F(ServerTest, WhatAnswersMayFail) {
    Start();
    Client client(m_Path);
    EXPECT_EQ(client.Get("/throws"), "");
    EXPECT_EQ(StatusOf(Client(m_Path).Get("/")), 200);
}

}  // namespace
}  // namespace doors::test
