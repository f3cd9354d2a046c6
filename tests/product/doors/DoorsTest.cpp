// The doors as people find them: the service as a process, on made-up servers, and the clients that they use.

#include "Service.h"
#include "test_support/Command.h"
#include "test_support/Pattern.h"
#include "test_support/Waiting.h"

#include <gmock/gmock.h>
#include <grp.h>
#include <linux/capability.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <filesystem>

namespace doors::test {
namespace {

using namespace testsupport;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

Ended RunProgram(const std::string& program, std::vector<std::string> words) {
    return Command{.words = std::move(words), .program = program}.Run();
}

TEST_F(Doors, ShowWhatTheCommandPrints) {
    Start("small");
    EXPECT_EQ(BodyOf(Get("/raid.xml")), RunCommand({"--scenario", "small", "get-info"}).out);
    const std::string page = Get("/");
    EXPECT_THAT(page, HasSubstr("Content-Type: text/html; charset=utf-8"));
    EXPECT_THAT(page, HasSubstr("<script src=\"/live.js\" defer=\"defer\">"));
    EXPECT_THAT(BodyOf(Get("/metrics")), HasSubstr("\nraid_last_inquiry_success 1\n"));
    EXPECT_THAT(BodyOf(Get("/raid.json")), HasSubstr("\"schema_version\""));
    EXPECT_THAT(BodyOf(Get("/redfish/v1/Systems/1/Storage")), HasSubstr("\"Members@odata.count\""));
    EXPECT_EQ(StatusOf(Get("/nothing")), 404);
    Client client(Socket());
    const std::string refused = client.Post("/raid.json", "x");
    EXPECT_EQ(StatusOf(refused), 405);
    EXPECT_THAT(refused, HasSubstr("Allow: GET, HEAD"));
}

TEST_F(Doors, CountTheRunsOfTheTool) {
    const std::string server = m_Folder / "server";
    std::filesystem::copy(SMALL_SERVER, server, std::filesystem::copy_options::recursive);
    m_Folder.Write("server/v.do", "exit 3\n");
    Start(server);
    const std::string metrics = Get("/metrics");
    EXPECT_THAT(metrics, HasSubstr("\nraid_tool_failed_commands 1\n"));
    EXPECT_THAT(metrics, HasSubstr("\nraid_tool_failed_runs 3\n"));
    EXPECT_THAT(BodyOf(Get("/raid.json")), HasSubstr("\"failed_runs\": 3"));
}

TEST_F(Doors, ExpandWhatBelongsToAResource) {
    Start("small");
    const std::string systems = Get("/redfish/v1/Systems?$expand=.");
    EXPECT_EQ(StatusOf(systems), 200);
    EXPECT_THAT(BodyOf(systems), HasSubstr(BodyOf(Get("/redfish/v1/Systems/1"))));
    EXPECT_EQ(StatusOf(Get("/redfish/v1/Systems?$expand=all")), 400);
    Client client(Socket());
    client.Send("HEAD /redfish/v1/Systems?$expand=. HTTP/1.1\r\nHost: x\r\n\r\n");
    ASSERT_TRUE(client.ReadUntil("\r\n\r\n"));
    EXPECT_EQ(StatusOf(client.Read()), 200);
}

TEST_F(Doors, SpareWhoeverKnowsItTheBody) {
    Start("small");
    const std::string first = Get("/raid.json");
    const std::string etag = MatchesIn(first, "ETag: (\"[0-9a-f]+\")").at(0).at(1);
    EXPECT_EQ(StatusOf(Get("/raid.json", "If-None-Match: " + etag + "\r\n")), 304);
    EXPECT_EQ(StatusOf(Get("/raid.json", "If-None-Match: \"x\"\r\n")), 200);
}

// A browser takes from the page what the policy names, and nothing else.
TEST_F(Doors, PageKeepsToItsPolicy) {
    Start("small");
    const std::string page = Get("/");
    EXPECT_THAT(
        page, HasSubstr("Content-Security-Policy: default-src 'none'; script-src 'self'; connect-src 'self'; "
                        "style-src 'sha256-"));
    EXPECT_THAT(MatchesIn(BodyOf(page), " (style|on[a-z]+)=\""), IsEmpty());
    EXPECT_THAT(MatchesIn(BodyOf(page), "<style"), testing::SizeIs(1));
    for (const char* const path : {"/", "/metrics", "/nothing", "/redfish/v1/", "/live.js"}) {
        EXPECT_THAT(Get(path), HasSubstr("X-Content-Type-Options: nosniff")) << path;
        EXPECT_THAT(Get(path), HasSubstr("Content-Security-Policy: default-src 'none'")) << path;
    }
}

TEST_F(Doors, NewsComesByItself) {
    Start("watch/loses-drive/by-inquiry");
    Client live(Socket());
    live.Send("GET /live HTTP/1.1\r\nHost: x\r\n\r\n");
    ASSERT_TRUE(live.ReadUntil("retry: "));
    Client events(Socket());
    events.Send("GET /redfish/v1/EventService/SSE HTTP/1.1\r\nHost: x\r\n\r\n");
    ASSERT_TRUE(events.ReadUntil("\r\n\r\n"));
    const auto asksAgain = [&] {
        ::kill(m_Service->Process(), SIGUSR1);
        return BodyOf(Get("/metrics")).find("raid_health 0\n") == std::string::npos;
    };
    ASSERT_TRUE(ComesTrue(asksAgain));
    EXPECT_TRUE(live.ReadUntil("event: board\n"));
    EXPECT_TRUE(events.ReadUntil("\"@odata.type\":\"#Event."));
}

TEST_F(Doors, AreOpenedAgainWhenTheirProcessIsKilled) {
    Start("small");
    const std::string before = BodyOf(Get("/raid.xml"));
    for (int time = 0; time < 3; ++time) {
        const pid_t doors = ProcessOfDoors();
        ASSERT_GT(doors, 0);
        ::kill(doors, SIGKILL);
        EXPECT_TRUE(
            ComesTrue([&] { return ProcessOfDoors() != doors && StatusOf(Get("/raid.xml")) == 200; }));
        EXPECT_EQ(BodyOf(Get("/raid.xml")), before);
    }
}

TEST_F(Doors, LeaveNoSocketBehind) {
    Start("small");
    ASSERT_TRUE(std::filesystem::exists(Socket()));
    const pid_t doors = ProcessOfDoors();
    ::kill(doors, SIGTERM);  // As a whole group of processes gets it.
    ::kill(m_Service->Process(), SIGTERM);
    const Ended ended = m_Service->Wait();
    m_Service.reset();
    EXPECT_EQ(ended.ExitStatus(), 0);
    EXPECT_THAT(ended.err, Not(HasSubstr("faces the network")));
    EXPECT_FALSE(std::filesystem::exists(Socket()));
}

TEST_F(Doors, AreClosedWithTheService) {
    Start("small");
    const pid_t doors = ProcessOfDoors();
    ::kill(m_Service->Process(), SIGKILL);
    EXPECT_TRUE(ComesTrue([&] { return HasEnded(doors); }));
    EXPECT_EQ(Get("/healthz"), "");
}

#if !defined(__SANITIZE_ADDRESS__)
TEST_F(Doors, ProcessHasNoRights) {
    Start("small");
    const std::string status = ReadFile("/proc/" + std::to_string(ProcessOfDoors()) + "/status");
    EXPECT_THAT(status, HasSubstr("NoNewPrivs:\t1"));
    EXPECT_THAT(status, HasSubstr("Seccomp:\t2"));
    EXPECT_THAT(status, HasSubstr("CapEff:\t0000000000000000"));
    if (::geteuid() == 0) {
        EXPECT_THAT(status, Not(HasSubstr("Uid:\t0")));
        EXPECT_THAT(status, HasSubstr("Groups:\t \n"));
    }
}
#endif

/// As AmbientCapabilities= of systemd does for a service that is not root.
void BecomeNobodyWithRights() {
    constexpr unsigned kNobody = 65534;
    ::prctl(PR_SET_KEEPCAPS, 1, 0, 0, 0);
    if (::setgroups(0, nullptr) != 0 || ::setresgid(kNobody, kNobody, kNobody) != 0 ||
        ::setresuid(kNobody, kNobody, kNobody) != 0) {
        ::_exit(1);
    }
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    constexpr unsigned kRights = 1U << unsigned(CAP_DAC_OVERRIDE) | 1U << unsigned(CAP_NET_RAW);
    const std::array<__user_cap_data_struct, 2> sets = {{{kRights, kRights, kRights}, {}}};
    ::syscall(SYS_capset, &header, sets.data());
    for (const int right : {CAP_DAC_OVERRIDE, CAP_NET_RAW}) {
        ::prctl(PR_CAP_AMBIENT, PR_CAP_AMBIENT_RAISE, right, 0, 0);
    }
}

TEST_F(Doors, ProcessHasNoRightsThatTheServiceWasGiven) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can give rights away";
    }
    // Not on a made-up server, which would be shown in a user's namespace, with other rights.
    m_Folder.Write("service.toml", "listen = [\"unix:" + Socket() + "\"]\n");
    m_Service =
        Command{.words = {"--config", m_Folder / "service.toml", "--history", m_Folder / "history.db"},
                .inChild = BecomeNobodyWithRights,
                .program = DOORS_TEST_SERVICE}
            .Start();
    ASSERT_TRUE(ComesTrue([&] { return StatusOf(Get("/live.js")) == 200; }));
    const std::string ambient = "CapAmb:\t0000000000002002\n";
    const auto statusOf = [](const std::string& process) { return ReadFile("/proc/" + process + "/status"); };
    ASSERT_THAT(statusOf(std::to_string(m_Service->Process())), HasSubstr(ambient));
    const std::filesystem::path threads = "/proc/" + std::to_string(ProcessOfDoors()) + "/task";
    std::size_t count = 0;
    for (const auto& thread : std::filesystem::directory_iterator(threads)) {
        ++count;
        const std::string status = ReadFile(thread.path() / "status");
        for (const char* const set : {"CapInh", "CapPrm", "CapEff", "CapAmb"}) {
            EXPECT_THAT(status, HasSubstr(std::string(set) + ":\t0000000000000000\n"));
        }
    }
    EXPECT_GE(count, 2U) << "the one that checks passwords is there, too";
}

std::string MethodCallOf(const std::string& method, const std::string& parameters) {
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?><CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE "
           "ID=\"7\" "
           "PROTOCOLVERSION=\"1.0\"><SIMPLEREQ><METHODCALL NAME=\"" +
           method +
           "\"><LOCALCLASSPATH><LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"zorbalt\"/>"
           "</LOCALNAMESPACEPATH><CLASSNAME NAME=\"ZORBALT_MngSrvRaid\"/></LOCALCLASSPATH>" +
           parameters + "</METHODCALL></SIMPLEREQ></MESSAGE></CIM>";
}

std::string MethodHeadersOf(const std::string& method) {
    return "Content-Type: application/xml; charset=utf-8\r\nCIMOperation: MethodCall\r\nCIMProtocolVersion: "
           "1.0\r\nCIMMethod: " +
           method + "\r\nCIMObject: root%2Fzorbalt%3AZORBALT_MngSrvRaid\r\n";
}

std::string Parameter(const std::string& name, const std::string& value) {
    return "<PARAMVALUE NAME=\"" + name + "\"><VALUE>" + value + "</VALUE></PARAMVALUE>";
}

TEST_F(Doors, MakeCallsForClientsOfWbem) {
    Start("small");
    Client client(Socket());
    const std::string answer = client.Post("/cimom", MethodCallOf("GetInfo", ""), MethodHeadersOf("GetInfo"));
    EXPECT_THAT(answer, HasSubstr("<RETURNVALUE PARAMTYPE=\"uint32\"><VALUE>0</VALUE></RETURNVALUE>"));
    EXPECT_THAT(answer, HasSubstr("&lt;RAID version="));
}

// What the module says of a drive that is named in part, it says to this client as to any other.
TEST_F(Doors, LeaveOutWhatAClientDoesNotGive) {
    Start("small");
    Client client(Socket());
    const std::string whole = Parameter("CtrlNo", "0") + Parameter("EnclNo", "252") + Parameter("PDNo", "0");
    EXPECT_THAT(client.Post("/cimom", MethodCallOf("GetPDInfo", whole), MethodHeadersOf("GetPDInfo")),
                HasSubstr("<VALUE>0</VALUE></RETURNVALUE>"));
    const std::string part = Parameter("CtrlNo", "0") + Parameter("EnclNo", "252");
    EXPECT_THAT(client.Post("/cimom", MethodCallOf("GetPDInfo", part), MethodHeadersOf("GetPDInfo")),
                Not(HasSubstr("<VALUE>0</VALUE></RETURNVALUE>")));
}

class SpoiledAnswers : public Doors, public testing::WithParamInterface<const char*> {};

// What a module does to its process is nothing to the service that asked.
TEST_P(SpoiledAnswers, FailTheirCallAndNothingElse) {
    const InstallRoot root;
    root.UseFakeModule();
    m_Folder.Write("service.toml", "interval = \"1d\"\nlisten = [\"unix:" + Socket() + "\"]\n");
    m_Service =
        Command{.words = {"--config", m_Folder / "service.toml", "--history", m_Folder / "history.db"},
                .environment = {{"ZORBALT_INSTALL_DIR", root.Path()},
                                {"FAKE_MODULE", std::string("spoil:") + GetParam()}},
                .program = DOORS_TEST_SERVICE}
            .Start();
    ASSERT_TRUE(ComesTrue([&] { return Get("/healthz").find("could not be asked") != std::string::npos; }));
    const pid_t doors = ProcessOfDoors();
    for (int time = 0; time < 2; ++time) {
        Client client(Socket());
        const std::string answer =
            client.Post("/cimom", MethodCallOf("GetInfo", ""), MethodHeadersOf("GetInfo"));
        EXPECT_EQ(StatusOf(answer), 200);
        EXPECT_THAT(answer, HasSubstr("<METHODRESPONSE NAME=\"GetInfo\"><ERROR CODE=\"1\" DESCRIPTION=\""));
        EXPECT_THAT(answer, HasSubstr("the answer was spoiled"));
    }
    EXPECT_EQ(StatusOf(Get("/history")), 200) << "the service goes on";
    EXPECT_EQ(ProcessOfDoors(), doors) << "and so do its doors";
}

INSTANTIATE_TEST_SUITE_P(Each, SpoiledAnswers,
                         testing::Values("", "of no kind",
                                         "\x01\x02\x03\x04\x05\x06\x07\x08\xff\xff\xff\xff"));

TEST_F(Doors, AskTheServerAgainForWhoeverWantsThat) {
    Start("small");
    const std::string before = BodyOf(Get("/metrics"));
    Client client(Socket());
    const std::string answer = client.Post("/refresh", "");
    EXPECT_EQ(StatusOf(answer), 303);
    EXPECT_THAT(answer, HasSubstr("Location: /"));
    EXPECT_EQ(StatusOf(client.Post("/refresh", "", "Origin: https://elsewhere.example\r\n")), 403);
    EXPECT_EQ(StatusOf(client.Post("/refresh", "", "Sec-Fetch-Site: cross-site\r\n")), 403);
    EXPECT_EQ(StatusOf(client.Get("/refresh")), 405);
}

TEST_F(Doors, TellWhatIsRemembered) {
    Start("small");
    const std::string page = Get("/history");
    EXPECT_EQ(StatusOf(page), 200);
    EXPECT_THAT(page, HasSubstr("Content-Security-Policy: default-src 'none'"));
    const auto links = MatchesIn(page, "href=\"(/history[?]part=drive/[^\"]+)\"");
    ASSERT_THAT(links, testing::SizeIs(testing::Ge(1U)));
    EXPECT_THAT(BodyOf(Get(links.front().at(1))), HasSubstr("RAID history of controller 0"));
    EXPECT_THAT(BodyOf(Get("/history.json")), HasSubstr("\"parts\""));
    EXPECT_EQ(StatusOf(Get("/history?part=nothing")), 404);
    EXPECT_THAT(BodyOf(Get("/")), HasSubstr("<a href=\"/history\">History</a>"));
}

TEST_F(Doors, SayThatTheServerCannotBeAsked) {
    m_Folder.Write("service.toml", "");
    const std::string socket = Socket();
    m_Folder.Write("service.toml",
                   "interval = \"1d\"\nsmart_interval = \"0\"\nlisten = [\"unix:" + socket + "\"]\n");
    m_Service = Command{.words = {"--config", m_Folder / "service.toml", "--scenario", "faults/dead",
                                  "--history", m_Folder / "history.db"},
                        .program = DOORS_TEST_SERVICE}
                    .Start();
    ASSERT_TRUE(ComesTrue([&] { return Get("/healthz").find("could not be asked") != std::string::npos; }));
    EXPECT_EQ(StatusOf(Get("/healthz")), 503);
    EXPECT_EQ(StatusOf(Get("/raid.json")), 503);
    EXPECT_THAT(BodyOf(Get("/")), StartsWith("The server has not answered: "));
    EXPECT_THAT(BodyOf(Get("/redfish/v1/Systems/1")), Not(HasSubstr("\"Health\":\"OK\"")));
}

class Refusing : public testing::TestWithParam<std::pair<const char*, const char*>> {};

TEST_P(Refusing, WhatIsOpenToAllIsEncryptedAndHasAccounts) {
    const TempFolder folder;
    folder.Write("service.toml", GetParam().first);
    const Ended ended =
        RunProgram(DOORS_TEST_SERVICE, {"--config", folder / "service.toml", "--scenario", "small"});
    EXPECT_EQ(ended.ExitStatus(), 2);
    EXPECT_THAT(ended.err, HasSubstr(GetParam().second));
}

INSTANTIATE_TEST_SUITE_P(
    Configurations, Refusing,
    testing::Values(
        std::pair("listen = [\"0.0.0.0:8443\"]\naccounts = \"/a\"\n", "needs tls_certificate and tls_key"),
        std::pair("listen = [\"[::]:8443\"]\ntls_certificate = \"/c\"\ntls_key = \"/k\"\n", "needs accounts"),
        std::pair("listen = [\"http://192.0.2.1:80\"]\n",
                  "beyond this machine there is no http without encryption"),
        std::pair("listen = [\"localhost:80\"]\n", "is no address"),
        std::pair("listen = [\"127.0.0.1:0\"]\n", "is no address"),
        std::pair("listen = [\"127.0.0.1\"]\n", "is no address"),
        std::pair("listen = [\"unix:relative\"]\n", "is no address"),
        std::pair("listen = \"127.0.0.1:8282\"\n", "it is a list of texts")));

}  // namespace
}  // namespace doors::test
