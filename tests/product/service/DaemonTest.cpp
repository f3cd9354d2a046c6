// The service as a process: mngsrvraidd, on made-up servers.

#include "test_support/Command.h"
#include "test_support/Processes.h"
#include "test_support/Waiting.h"

#include <gmock/gmock.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <sstream>

namespace service::test {
namespace {

using namespace testsupport;

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

Ended RunService(std::vector<std::string> words) {
    return Command{.words = std::move(words), .program = SERVICE_TEST_PROGRAM}.Run();
}

class Daemon : public testing::Test {
  protected:
    Daemon() { Configure(""); }

    // A channel that keeps what it is told in a file.
    void Configure(const std::string& more) const {
        WriteFile(m_Folder / "service.toml", more +
                                                 "\ninterval = \"1d\"\nsmart_interval = \"0\"\ncalm = "
                                                 "\"0s\"\n[[channel]]\nkind = \"exec\"\nlevel = \"ok\"\n"
                                                 "program = \"/bin/sh\"\narguments = [\"-c\", \"cat >> " +
                                                 (m_Folder / "events") + "\"]\n");
    }

    [[nodiscard]] std::unique_ptr<Running> Start(const std::string& scenario) const {
        return Command{.words = {"--config", m_Folder / "service.toml", "--scenario", scenario, "--history",
                                 m_Folder / "history.db"},
                       .program = SERVICE_TEST_PROGRAM}
            .Start();
    }

    [[nodiscard]] bool HasTold(const std::string& words) const {
        return std::filesystem::exists(m_Folder / "events") &&
               ReadFile(m_Folder / "events").find(words) != std::string::npos;
    }

    const TempFolder m_Folder;
};

TEST_F(Daemon, TellsHowAServerLosesADriveAndRecovers) {
    const auto running = Start("watch/loses-drive/by-inquiry");
    ASSERT_TRUE(ComesTrue([&] { return HasTold("\"kind\":\"started\""); }));
    EXPECT_TRUE(ComesTrue([&] {
        ::kill(running->Process(), SIGUSR1);
        ::usleep(20'000);
        return HasTold("\"kind\":\"ended\",\"level\":\"OK\",\"before\":\"WARNING\"") &&
               HasTold("LD1: DEGRADED, being rebuilt: well again");
    }));
    ::kill(running->Process(), SIGTERM);
    const Ended ended = running->Wait();
    EXPECT_EQ(ended.ExitStatus(), 0);
    EXPECT_EQ(ended.err, "");
    const std::string told = ReadFile(m_Folder / "events");
    for (const char* const words : {"\"kind\":\"started\"", "failure predicted (1)", "\"rule\":\"state\"",
                                    "LD1: DEGRADED, nothing is being rebuilt", "is in no report any more",
                                    "LD1: DEGRADED, being rebuilt"}) {
        EXPECT_THAT(told, HasSubstr(words));
    }
}

TEST_F(Daemon, EndsWhateverTheToolDoes) {
    const auto running = Start("faults/slow");
    ASSERT_TRUE(ComesTrue([&] { return HasTold("\"kind\":\"started\""); }));
    const auto start = std::chrono::steady_clock::now();
    ::kill(running->Process(), SIGTERM);
    EXPECT_EQ(running->Wait().ExitStatus(), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
}

/// What becomes of asking such a tool, and what is told of it.
struct BadTool {
    const char* name;
    const char* scenario;
    const char* timeout;
    const char* words;
};

class BadTools : public Daemon, public testing::WithParamInterface<BadTool> {};

TEST_P(BadTools, AreToldInWords) {
    Configure(std::string("failures_to_tell = 1\ntimeout = ") + GetParam().timeout);
    const auto running = Start(GetParam().scenario);
    ASSERT_TRUE(ComesTrue([&] { return HasTold("\"kind\":\"began\""); }));
    EXPECT_THAT(ReadFile(m_Folder / "events"), HasSubstr(GetParam().words));
    ::kill(running->Process(), SIGTERM);
    const Ended ended = running->Wait();
    EXPECT_EQ(ended.ExitStatus(), 0);
    EXPECT_EQ(ended.err, "");
}

INSTANTIATE_TEST_SUITE_P(
    Each, BadTools,
    testing::Values(
        // Which report it is at depends on the machine.
        BadTool{"Hangs", "faults/endless", "\"1s\"",
                " did not end within 1 s, and was ended; it has never answered\""},
        BadTool{"Dies", "faults/killed", "\"1h\"",
                "\"words\":\"the server: cannot be asked: get-info failed with return value 0x000000a1: the "
                "tool's run failed (01) at controller 0: logical drives (vdkcli -ldpdinfo -a0): exit status "
                "139 (SIGSEGV): \\\"Segmentation fault\\\"; "
                "look at the scenario faults/killed, and at what --trace 1,2 shows; it has never answered\""},
        BadTool{"Fails", "faults/dead", "\"1h\"",
                "\"words\":\"the server: cannot be asked: get-info failed with return value 0x000000a1: the "
                "tool's run failed (01) at all controllers: controller data (vdkcli -ctrlinfo -aAll): exit "
                "status 127, nothing printed; "
                "look at the scenario faults/dead, and at what --trace 1,2 shows; it has never answered\""},
        BadTool{"AnswersNonsense", "faults/one-line", "\"1h\"",
                "\"words\":\"a controller: its own report is missing\""}),
    [](const auto& tool) { return tool.param.name; });

/// What whoever started the service hears.
class Manager final {
  public:
    explicit Manager(const std::string& path) : m_Socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
        struct sockaddr_un address {};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        EXPECT_EQ(::bind(m_Socket, reinterpret_cast<struct sockaddr*>(&address), sizeof address), 0);
    }
    Manager(const Manager&) = delete;
    Manager& operator=(const Manager&) = delete;
    ~Manager() { ::close(m_Socket); }

    [[nodiscard]] bool Hears(const std::string& words) {
        return ComesTrue([&] {
            char message[4096];
            for (ssize_t size = 0; (size = ::recv(m_Socket, message, sizeof message, MSG_DONTWAIT)) > 0;) {
                m_Heard.append(message, static_cast<std::size_t>(size)).append("\n");
            }
            const std::size_t at = m_Heard.find(words);
            m_Heard.erase(0, at == std::string::npos ? 0 : at + words.size());
            return at != std::string::npos;
        });
    }

  private:
    int m_Socket;
    std::string m_Heard;
};

TEST_F(Daemon, TellsItsManagerHowItIs) {
    Manager manager(m_Folder / "notify");
    const auto running =
        Command{.words = {"--config", m_Folder / "service.toml", "--scenario", "small", "--history",
                          m_Folder / "history.db"},
                .environment = {{"NOTIFY_SOCKET", m_Folder / "notify"}, {"WATCHDOG_USEC", "20000"}},
                .program = SERVICE_TEST_PROGRAM}
            .Start();
    EXPECT_TRUE(manager.Hears("READY=1\nSTATUS=not asked yet, 0 alarms\n"));
    EXPECT_TRUE(manager.Hears("WATCHDOG=1\n"));
    EXPECT_TRUE(manager.Hears("STATUS=OK at "));
    EXPECT_TRUE(manager.Hears("WATCHDOG=1\n"));
    ::kill(running->Process(), SIGHUP);
    EXPECT_TRUE(manager.Hears("RELOADING=1\nMONOTONIC_USEC="));
    EXPECT_TRUE(manager.Hears("READY=1\n"));
    ::kill(running->Process(), SIGTERM);
    EXPECT_TRUE(manager.Hears("STOPPING=1\n"));
    EXPECT_EQ(running->Wait().ExitStatus(), 0);
}

TEST_F(Daemon, KeepsItsConfigurationWhenTheNewOneIsWrong) {
    const auto running = Start("small");
    ASSERT_TRUE(ComesTrue([&] { return HasTold("\"kind\":\"started\""); }));
    Configure("nothing = 1");
    ::kill(running->Process(), SIGHUP);
    EXPECT_TRUE(ComesTrue([&] { return HasTold("the new configuration is not taken up: "); }));
    EXPECT_TRUE(HasTold("line 1: nothing: there is no such key"));
    ::kill(running->Process(), SIGINT);
    EXPECT_EQ(running->Wait().ExitStatus(), 0);
}

TEST_F(Daemon, IsTheOnlyOneOfItsHistory) {
    const auto running = Start("small");
    ASSERT_TRUE(ComesTrue([&] { return HasTold("\"kind\":\"started\""); }));
    const Ended second = Start("small")->Wait();
    EXPECT_EQ(second.ExitStatus(), 4);
    EXPECT_THAT(second.err, HasSubstr(m_Folder / "history.db"));
    ::kill(running->Process(), SIGTERM);
    EXPECT_EQ(running->Wait().ExitStatus(), 0);
}

TEST_F(Daemon, LosesNoEventWhenItIsKilled) {
    for (int times = 0; times < 3; ++times) {
        const auto running = Start("levels/raid5-gone");
        ASSERT_TRUE(ComesTrue([&] { return HasTold("\"kind\":\"began\""); }));
        ::kill(running->Process(), SIGKILL);
        (void)running->Wait();
    }
    std::istringstream lines(ReadFile(m_Folder / "events"));
    std::size_t began = 0;
    for (std::string line; std::getline(lines, line);) {
        began += line.find("\"kind\":\"began\"") != std::string::npos && line.find("LD0") != std::string::npos
                     ? 1U
                     : 0U;
    }
    EXPECT_LE(began, 1U);
}

TEST_F(Daemon, ChecksItsConfiguration) {
    const std::string file = m_Folder / "service.toml";
    const Ended well = RunService({"--check-config", "--config", file});
    EXPECT_EQ(well.ExitStatus(), 0) << well.out;
    EXPECT_EQ(well.out, file + ": all well\n");
    WriteFile(file, "intervall = \"5m\"\n[[channel]]\nkind = \"pigeon\"\n[[channel]]\nkind = \"mail\"\n");
    const Ended wrong = RunService({"--check-config", "--config", file});
    EXPECT_EQ(wrong.ExitStatus(), 1);
    EXPECT_THAT(wrong.out,
                HasSubstr(file + ": line 1: intervall: there is no such key; did you mean interval?\n"));
    EXPECT_THAT(
        wrong.out,
        HasSubstr(file + ": line 3: channel.kind: it is \"journal\", \"exec\", \"mail\" or \"http\"\n"));
    EXPECT_THAT(wrong.out, HasSubstr("channel.to: "));
    const Ended started = RunService({"--config", file, "--scenario", "small"});
    EXPECT_EQ(started.ExitStatus(), 2);
    EXPECT_THAT(started.err, StartsWith("mngsrvraidd: " + file + ": line 1: "));
}

TEST_F(Daemon, SendsATestThroughAllChannels) {
    const Ended ended = RunService({"--test-alert", "--config", m_Folder / "service.toml"});
    EXPECT_EQ(ended.ExitStatus(), 0) << ended.err;
    EXPECT_THAT(ended.out, StartsWith("exec: delivered"));
    EXPECT_TRUE(HasTold("\"kind\":\"test\""));
}

TEST(DaemonUse, IsToldInWords) {
    EXPECT_EQ(RunService({"--version"}).out.substr(0, 12), "mngsrvraidd ");
    EXPECT_THAT(RunService({"--help"}).out, HasSubstr("--check-config"));
    const Ended wrong = RunService({"--nothing"});
    EXPECT_EQ(wrong.ExitStatus(), 2);
    EXPECT_THAT(wrong.err, HasSubstr("; see mngsrvraidd --help\n"));
    const Ended missing = RunService({"--config", "/nowhere"});
    EXPECT_EQ(missing.ExitStatus(), 4);
    EXPECT_EQ(missing.err, "mngsrvraidd: /nowhere cannot be read: No such file or directory\n");
}

}  // namespace
}  // namespace service::test
