// wbemcli, a client that nobody here wrote, against what the command prints.

#include "test_support/Command.h"
#include "test_support/Waiting.h"

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <sstream>

namespace {

using testsupport::Command;
using testsupport::Ended;

/// The server of Server.cpp, for one scenario.
class Server final {
  public:
    explicit Server(const std::string& scenario) {
        std::array<int, 2> ends{};
        EXPECT_EQ(::pipe(ends.data()), 0);
        m_Process = ::fork();
        if (m_Process == 0) {
            ::dup2(ends[1], STDOUT_FILENO);
            ::execl(WBEM_TEST_SERVER, WBEM_TEST_SERVER, COMMAND_TEST_PROGRAM, scenario.c_str(), nullptr);
            ::_exit(127);
        }
        ::close(ends[1]);
        std::string line;
        for (char letter = '\0'; ::read(ends[0], &letter, 1) == 1 && letter != '\n';) {
            line += letter;
        }
        ::close(ends[0]);
        EXPECT_FALSE(line.empty()) << "the server does not start";
        m_Place = "127.0.0.1:" + line + "/root/zorbalt";
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    ~Server() {
        ::kill(m_Process, SIGKILL);
        ::waitpid(m_Process, nullptr, 0);
    }

    /// "gc", then what is asked for: ":ZORBALT_MngSrvRaid".
    [[nodiscard]] Ended Ask(std::vector<std::string> words, const std::string& what,
                            const std::vector<std::string>& more = {}) const {
        words.push_back("http://" + m_Place + what);
        words.insert(words.end(), more.begin(), more.end());
        return Command{.words = words, .program = "/usr/bin/wbemcli"}.Run();
    }
    [[nodiscard]] const std::string& Place() const { return m_Place; }

  private:
    pid_t m_Process = -1;
    std::string m_Place;
};

constexpr const char* kRaid = ":ZORBALT_MngSrvRaid";
constexpr const char* kHealth = ":ZORBALT_MngSrvRaidHealth";
constexpr const char* kInstance = ":ZORBALT_MngSrvRaidHealth.InstanceID=\"ZORBALT:RAID\"";

std::string Printed(const std::vector<std::string>& words) {
    const Ended ended = testsupport::RunCommand(words);
    EXPECT_EQ(ended.ExitStatus(), 0) << ended.err;
    return ended.out;
}

class Wbemcli : public testing::Test {
  protected:
    [[nodiscard]] std::string Told(const std::vector<std::string>& words, const std::string& what,
                                   const std::vector<std::string>& more = {}) const {
        const Ended ended = m_Server.Ask(words, what, more);
        EXPECT_EQ(ended.ExitStatus(), 0) << ended.err;
        return ended.out;
    }
    [[nodiscard]] std::string Place(const std::string& what) const { return m_Server.Place() + what; }

    const Server m_Server{"large"};  // for each test: what one leaves behind is ended with it
};

TEST_F(Wbemcli, GetsTheDocumentThatTheCommandPrints) {
    EXPECT_EQ(Told({"cm"}, kRaid, {"GetInfo"}), Place(kRaid) + " GetInfo: 0, XmlData (string): " +
                                                    Printed({"--scenario", "large", "get-info"}) + "\n");
}

TEST_F(Wbemcli, GetsTheDriveThatTheCommandPrints) {
    EXPECT_EQ(Told({"cm"}, kRaid, {"GetPDInfo.CtrlNo=0,EnclNo=252,PDNo=3"}),
              Place(kRaid) + " GetPDInfo: 0, XmlData (string): " +
                  Printed({"--scenario", "large", "get-pd-info", "0", "252", "3"}) + "\n");
}

TEST_F(Wbemcli, GetsTheReturnValueOfAFailure) {
    EXPECT_EQ(Told({"cm"}, kRaid, {"GetPDInfo.CtrlNo=0,EnclNo=252,PDNo=99"}),
              Place(kRaid) + " GetPDInfo: 161, XmlData (string): \n");
}

TEST_F(Wbemcli, SeesTheClasses) {
    EXPECT_EQ(Told({"gc"}, kRaid), Place(kRaid) + " \n");
    EXPECT_EQ(Told({"ecn"}, ""), Place(kRaid) + "\n" + Place(kHealth) + "\n");
    EXPECT_EQ(Told({"ec"}, ""), Told({"gc"}, kRaid) + Told({"gc"}, kHealth));
    EXPECT_EQ(Told({"ecn"}, kRaid), "");
    const std::string declaration = Told({"gcd"}, kRaid);
    EXPECT_NE(
        declaration.find(R"(<METHOD NAME="GetPDInfo" TYPE="uint32"><PARAMETER NAME="CtrlNo" TYPE="string">)"),
        std::string::npos)
        << declaration;
}

TEST_F(Wbemcli, SeesTheHealthThatTheCommandTells) {
    EXPECT_EQ(Told({"ein"}, kHealth), Place(kInstance) + "\n");
    EXPECT_EQ(Told({"ein"}, kRaid), "");
    EXPECT_EQ(Told({"ei"}, kRaid), "");
    EXPECT_EQ(Told({"ei"}, kHealth), Told({"gi"}, kInstance));
    const std::string instance = Told({"-nl", "gi"}, kInstance);
    std::istringstream told(testsupport::RunCommand({"--scenario", "large", "health", "--verbose"}).out);
    std::string line;
    std::getline(told, line);  // "RAID CRITICAL - 2 critical, ... | ..."
    const std::string summary = line.substr(line.find(" - ") + 3, line.find(" | ") - line.find(" - ") - 3);
    EXPECT_NE(instance.find("-Summary=\"" + summary + "\"\n"), std::string::npos) << instance;
    EXPECT_NE(instance.find("-Health=\"CRITICAL\"\n"), std::string::npos) << instance;
    std::string findings;
    while (std::getline(told, line)) {
        findings += (findings.empty() ? "\"" : ",\"") + line + "\"";
    }
    EXPECT_NE(instance.find("-Findings=" + findings + "\n"), std::string::npos) << instance << findings;
    EXPECT_EQ(Told({"gp"}, kInstance, {"Health"}), "CRITICAL\n");
}

TEST_F(Wbemcli, IsToldWhatIsNotThere) {
    const std::pair<std::vector<std::string>, std::string> errors[] = {
        {{"gc", ":A"}, "(6) CIM_ERR_NOT_FOUND: there is no class A"},
        {{"ei", ":A"}, "(5) CIM_ERR_INVALID_CLASS: there is no class A"},
        {{"gi", ":ZORBALT_MngSrvRaidHealth.InstanceID=\"A\""},
         "(6) CIM_ERR_NOT_FOUND: there is no such instance of ZORBALT_MngSrvRaidHealth"},
        {{"di", kInstance}, "(7) CIM_ERR_NOT_SUPPORTED: the operation DeleteInstance is not served"},
        {{"cm", kRaid, "SetInfo"}, "(17) CIM_ERR_METHOD_NOT_FOUND: ZORBALT_MngSrvRaid has no method SetInfo"},
        {{"ein", "x:A"},
         "(3) CIM_ERR_INVALID_NAMESPACE: there is no namespace root/zorbaltx; it is root/zorbalt"}};
    for (const auto& [words, error] : errors) {
        const Ended ended =
            m_Server.Ask({words.front()}, words[1], std::vector(words.begin() + 2, words.end()));
        EXPECT_EQ(ended.ExitStatus(), 16) << error;
        EXPECT_EQ(ended.err, "*\n* /usr/bin/wbemcli: Cim: " + error + "\n*\n");
    }
}

TEST_F(Wbemcli, IsToldWhatIsNotWellFormed) {
    const Ended ended = m_Server.Ask({"cm"}, kRaid, {"GetPDInfo.CtrlNo=<,EnclNo=252,PDNo=3"});
    EXPECT_EQ(ended.ExitStatus(), 16);
    EXPECT_EQ(ended.err, "*\n* /usr/bin/wbemcli: Http Exception: HTTP response code said error\n*\n");
}

}  // namespace
