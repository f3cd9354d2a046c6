#include "Bench.h"
#include "Receiver.h"
#include "watch/Event.h"

#include <arpa/inet.h>
#include <sys/socket.h>

namespace telling::test {
namespace {

using testsupport::ComesTrue;

class HttpTest : public testing::Test {
  protected:
    static void SetUpTestSuite() { s_Receiver = new Receiver; }
    static void TearDownTestSuite() { delete s_Receiver; }

    void SetUp() override { m_Before = s_Receiver->Requests().size(); }

    // Those of this test.
    [[nodiscard]] std::vector<nlohmann::json> Requests() const {
        std::vector<nlohmann::json> requests = s_Receiver->Requests();
        requests.erase(requests.begin(), requests.begin() + static_cast<std::ptrdiff_t>(m_Before));
        return requests;
    }

    static Channel Web(const Http& http) { return {.name = "web", .way = http}; }

    static Outcome Post(const Http& http) {
        Bench bench({Web(http)});
        bench.Add("web", "20310405T060708Z-3f2a9c41");
        bench.Settle();
        EXPECT_EQ(bench.outcomes.size(), 1U);
        return bench.outcomes.empty() ? Outcome() : bench.outcomes.front();
    }

    static Outcome PostSecurely(const std::string& certificate) {
        return Post({.url = s_Receiver->Secure(certificate), .authorityFile = s_Receiver->Authority()});
    }

    static inline Receiver* s_Receiver = nullptr;
    std::size_t m_Before = 0;
};

TEST_F(HttpTest, PostsTheEvent) {
    const Outcome outcome =
        Post({.url = s_Receiver->Plain("/hook?for=storage%207"), .headers = {"X-Team: storage"}});
    EXPECT_EQ(outcome.what, What::Delivered) << outcome.words;
    EXPECT_EQ(outcome.words, "HTTP 204");
    ASSERT_EQ(Requests().size(), 1U);
    const nlohmann::json request = Requests().front();
    EXPECT_EQ(request["path"], "/hook?for=storage%207");
    EXPECT_EQ(request["body"], watch::JsonOf(MakeEvent("20310405T060708Z-3f2a9c41"), "storage7"));
    EXPECT_EQ(request["headers"]["Content-Type"], "application/json");
    EXPECT_EQ(request["headers"]["Idempotency-Key"], "20310405T060708Z-3f2a9c41");
    EXPECT_EQ(request["headers"]["X-Team"], "storage");
    EXPECT_EQ(request["headers"]["User-Agent"], "mngsrvraidd");
}

TEST_F(HttpTest, TriesAgainWithTheSameKeyAndBody) {
    s_Receiver->Unset("up");
    Bench bench({Web({.url = s_Receiver->Plain("/flaky")})});
    bench.Add("web", "1");
    bench.Settle();
    EXPECT_EQ(bench.LastWords(), "HTTP 503");
    bench.now += seconds(10);
    bench.Settle();
    s_Receiver->Set("up");
    bench.now += seconds(20);
    bench.Settle();
    EXPECT_THAT(bench.Which(What::Delivered), ElementsAre("web 1"));
    const std::vector<nlohmann::json> requests = Requests();
    ASSERT_EQ(requests.size(), 3U);
    EXPECT_EQ(requests[0], requests[1]);
    EXPECT_EQ(requests[0], requests[2]);
}

TEST_F(HttpTest, HeadersMayComeFromAFileThatIsReadAnew) {
    const TempFolder folder;
    folder.Write("token", "Authorization: Bearer 9999\n");
    const Http http{.url = s_Receiver->Plain("/token"), .headersFile = folder / "token"};
    const Outcome refused = Post(http);
    EXPECT_EQ(refused.what, What::Failed);
    EXPECT_EQ(refused.words, "HTTP 401: who are you?");
    folder.Write("token", "# renewed\nAuthorization: Bearer 0123\n");
    const Outcome taken = Post(http);
    EXPECT_EQ(taken.what, What::Delivered);
    EXPECT_EQ(taken.words, "HTTP 200");
}

TEST_F(HttpTest, FileOfHeadersThatIsMissingIsToldOf) {
    const Outcome outcome = Post({.url = s_Receiver->Plain("/ok"), .headersFile = "/no/such"});
    EXPECT_EQ(outcome.what, What::Failed);
    EXPECT_THAT(outcome.words, StartsWith("/no/such cannot be read"));
    EXPECT_THAT(Requests(), IsEmpty());
}

TEST_F(HttpTest, StatusThatIsNotGoodIsAFailure) {
    const Outcome outcome = Post({.url = s_Receiver->Plain("/fails")});
    EXPECT_EQ(outcome.what, What::Failed);
    EXPECT_EQ(outcome.words, "HTTP 500: the database is full");
    EXPECT_EQ(Post({.url = s_Receiver->Plain("/wordless")}).words, "HTTP 404");
}

TEST_F(HttpTest, RedirectionIsNotFollowed) {
    const Outcome outcome = Post({.url = s_Receiver->Plain("/moved")});
    EXPECT_EQ(outcome.what, What::Failed);
    EXPECT_EQ(outcome.words, "HTTP 307, which is a redirection to " + s_Receiver->Plain("/ok") +
                                 "; name the address that is meant");
    EXPECT_EQ(Requests().size(), 1U);
}

TEST_F(HttpTest, AnswerThatIsCutOffIsAFailure) {
    EXPECT_EQ(Post({.url = s_Receiver->Plain("/cut")}).what, What::Failed);
}

TEST_F(HttpTest, AnswerWithoutEndIsNotReadToIt) {
    const Outcome outcome = Post({.url = s_Receiver->Plain("/endless")});
    EXPECT_EQ(outcome.what, What::Delivered);
    EXPECT_EQ(outcome.words, "HTTP 200");
}

TEST_F(HttpTest, SlowAnswerIsWaitedFor) {
    Bench bench({Web({.url = s_Receiver->Plain("/slow")})});
    bench.Add("web", "1");
    bench.Work();
    ASSERT_TRUE(ComesTrue([&] { return Requests().size() == 1; }));
    bench.now += seconds(29);
    bench.Work();
    s_Receiver->Set("go");
    bench.Settle();
    EXPECT_THAT(bench.Which(What::Delivered), ElementsAre("web 1"));
}

TEST_F(HttpTest, ServerThatNeverAnswersIsGivenUp) {
    Bench bench({Web({.url = s_Receiver->Plain("/silent")})});
    bench.Add("web", "1");
    bench.Work();
    ASSERT_TRUE(ComesTrue([&] { return Requests().size() == 1; }));
    bench.now += seconds(30);
    bench.Settle();
    EXPECT_EQ(bench.LastWords(),
              "it took longer than 30s and was ended: connected to 127.0.0.1, but it did not answer");
    EXPECT_THAT(bench.Which(What::Failed), ElementsAre("web 1"));
}

/// Something that takes connections and says nothing; the kernel does it alone.
class DeafServer final {
  public:
    DeafServer() : m_Socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        EXPECT_EQ(::bind(m_Socket, reinterpret_cast<sockaddr*>(&address), size), 0);
        EXPECT_EQ(::getsockname(m_Socket, reinterpret_cast<sockaddr*>(&address), &size), 0);
        m_Port = std::to_string(ntohs(address.sin_port));
    }
    DeafServer(const DeafServer&) = delete;
    DeafServer& operator=(const DeafServer&) = delete;
    ~DeafServer() { ::close(m_Socket); }

    void Listen() const { EXPECT_EQ(::listen(m_Socket, 5), 0); }
    [[nodiscard]] int Accept() const { return ::accept(m_Socket, nullptr, nullptr); }
    [[nodiscard]] const std::string& Port() const { return m_Port; }

  private:
    int m_Socket;
    std::string m_Port;
};

TEST_F(HttpTest, ServerThatNeverGreetsIsGivenUp) {
    const DeafServer server;
    server.Listen();
    Bench bench({Web({.url = "https://localhost:" + server.Port()})});
    bench.Add("web", "1");
    bench.Work();
    const int client = server.Accept();
    bench.now += seconds(30);
    bench.Settle();
    ::close(client);
    EXPECT_EQ(bench.LastWords(), "it took longer than 30s and was ended: no connection came about");
}

TEST_F(HttpTest, ServerThatIsNotThereIsAFailure) {
    const DeafServer server;  // It does not listen.
    const Outcome outcome = Post({.url = "http://127.0.0.1:" + server.Port()});
    EXPECT_EQ(outcome.what, What::Failed);
    EXPECT_THAT(outcome.words, HasSubstr("127.0.0.1 port " + server.Port()));
}

TEST_F(HttpTest, CertificateOfAnAuthorityThatIsTrustedIsGood) {
    const Outcome outcome = PostSecurely("good");
    EXPECT_EQ(outcome.what, What::Delivered) << outcome.words;
    EXPECT_EQ(Requests().size(), 1U);
}

TEST_F(HttpTest, CertificateThatIsNotGoodIsRefused) {
    for (const char* const certificate : {"expired", "elsewhere", "unknown"}) {
        const Outcome outcome = PostSecurely(certificate);
        EXPECT_EQ(outcome.what, What::Failed) << certificate;
        EXPECT_THAT(outcome.words, HasSubstr("certificate")) << certificate;
    }
    EXPECT_THAT(Requests(), IsEmpty()) << "it was sent after all";
}

// The authority is one of this test's alone.
TEST_F(HttpTest, TrustsThoseThatTheSystemTrusts) {
    const Outcome outcome = Post({.url = s_Receiver->Secure("good")});
    EXPECT_EQ(outcome.what, What::Failed);
    EXPECT_THAT(outcome.words, HasSubstr("certificate"));
}

TEST_F(HttpTest, FileOfAuthoritiesMayBeForRootAlone) {
    const TempFolder folder;
    std::filesystem::copy(s_Receiver->Authority(), folder / "ca.pem");
    std::filesystem::permissions(folder / "ca.pem", std::filesystem::perms::owner_read);
    EXPECT_EQ(Post({.url = s_Receiver->Secure("good"), .authorityFile = folder / "ca.pem"}).what,
              What::Delivered);
    EXPECT_THAT(Post({.url = s_Receiver->Secure("good"), .authorityFile = "/no/such"}).words,
                StartsWith("/no/such cannot be read"));
}

// Where the system's own settings would allow it.
TEST_F(HttpTest, OldTlsIsRefused) {
    const TempFolder folder;
    folder.Write("openssl.cnf",
                 "openssl_conf=a\n[a]\nssl_conf=b\n[b]\nsystem_default=c\n[c]\nMinProtocol=TLSv1\n"
                 "CipherString=DEFAULT@SECLEVEL=0\n");
    ::setenv("OPENSSL_CONF", (folder / "openssl.cnf").c_str(), 1);
    const Outcome outcome = PostSecurely("old");
    ::unsetenv("OPENSSL_CONF");
    EXPECT_EQ(outcome.what, What::Failed);
    EXPECT_THAT(Requests(), IsEmpty());
}

TEST_F(HttpTest, WhatIsNotEncryptedGoesThroughNoProxy) {
    const DeafServer server;
    ::setenv("http_proxy", ("http://127.0.0.1:" + server.Port()).c_str(), 1);
    EXPECT_EQ(Post({.url = s_Receiver->Plain("/ok")}).what, What::Delivered);
    ::unsetenv("http_proxy");
}

TEST_F(HttpTest, ProcessThatPostsIsNobody) {
    Bench bench({Web({.url = s_Receiver->Plain("/silent")})});
    bench.Add("web", "1");
    bench.Work();
    ASSERT_TRUE(ComesTrue([&] { return Requests().size() == 1; }));
    const std::string status =
        testsupport::ReadFile("/proc/" + std::to_string(bench.courier.Processes().front()) + "/status");
    EXPECT_THAT(status, HasSubstr("CapPrm:\t0000000000000000\nCapEff:\t0000000000000000\n"));
    EXPECT_THAT(status, HasSubstr("NoNewPrivs:\t1\n"));
    if (::getuid() == 0) {
        EXPECT_THAT(status,
                    HasSubstr("Uid:\t65534\t65534\t65534\t65534\nGid:\t65534\t65534\t65534\t65534\n"));
        EXPECT_THAT(status, HasSubstr("Groups:\t \n"));
    }
}

TEST_F(HttpTest, ProcessThatPostsEndsWithTheService) {
    ::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0);
    const pid_t service = ::fork();
    if (service == 0) {
        Bench bench({Web({.url = s_Receiver->Plain("/silent")})});
        bench.Add("web", "1");
        bench.Work();
        ::pause();
    }
    ASSERT_TRUE(ComesTrue([&] { return Requests().size() == 1; }));
    const pid_t left = testsupport::DescendantsOf(service).front().id;
    ::kill(service, SIGKILL);
    EXPECT_EQ(::waitpid(service, nullptr, 0), service);
    EXPECT_EQ(::waitpid(left, nullptr, 0), left);
    ::prctl(PR_SET_CHILD_SUBREAPER, 0, 0, 0, 0);
}

// It takes more memory than all the rest.
TEST_F(HttpTest, LibraryIsInTheChildAlone) {
    EXPECT_EQ(Post({.url = s_Receiver->Plain("/ok")}).what, What::Delivered);
    EXPECT_EQ(testsupport::ReadFile("/proc/self/maps").find("libcurl"), std::string::npos);
}

}  // namespace
}  // namespace telling::test
