// Many drives asked for at a time: the same answer, and nothing left of the processes that asked.

#include "sandbox/Sandbox.h"
#include "supervision/Descendants.h"
#include "test_support/Command.h"
#include "test_support/Pattern.h"
#include "test_support/Processes.h"
#include "test_support/Waiting.h"

#include <gmock/gmock.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace command::test {
namespace {

using namespace testsupport;

namespace fs = std::filesystem;
using testing::HasSubstr;

std::vector<std::string> ShowWith(const std::string& scenario, const std::string& jobs,
                                  const std::string& format = "table") {
    return {"--scenario", scenario, "show", "--smart", "--format", format, "--jobs", jobs};
}

class SameAnswer : public testing::TestWithParam<const char*> {};

TEST_P(SameAnswer, ForAnyNumberOfJobs) {
    const std::string scenario = GetParam();
    const Ended one = RunCommand({"--scenario", scenario, "show", "--smart"});
    EXPECT_THAT(one.out, HasSubstr("PD0"));
    for (const char* const jobs : {"1", "2", "5", "64"}) {
        const Ended ended = RunCommand(ShowWith(scenario, jobs));
        EXPECT_EQ(ended.out, one.out) << jobs;
        EXPECT_EQ(ended.err, one.err) << jobs;
        EXPECT_EQ(ended.status, one.status) << jobs;
    }
}

// Of the old one two drives cannot be read, with different exit statuses.
INSTANTIATE_TEST_SUITE_P(All, SameAnswer, testing::Values("large", "old", "small"),
                         [](const auto& scenario) { return scenario.param; });

TEST(Jobs, TellTheSameOfTheToolsRuns) {
    const TempFolder folder;
    fs::copy(fs::path(COMMAND_TEST_SCENARIOS) / "small", folder.Path() / "server",
             fs::copy_options::recursive);
    folder.Write("server/pdinfo_pd252.1_a0.do", "fail-first 1\n");
    const auto runsWith = [&](const char* jobs) {
        const std::string text = RunCommand(ShowWith(folder / "server", jobs, "json")).out;
        const auto found =
            testsupport::MatchesIn(text, R"("commands": *\d+,\s*"failures": *\d+,\s*"failed_runs": *\d+)");
        return found.size() == 1 ? found.front().front() : text;
    };
    const std::string one = runsWith("1");
    EXPECT_THAT(one, HasSubstr("failed_runs"));
    EXPECT_THAT(one, testing::EndsWith("1"));
    EXPECT_EQ(runsWith("3"), one);
}

/// A server with a script in the tool's place: in front of the simulator, or instead of it.
class ScriptedServer {
  public:
    explicit ScriptedServer(const std::string& script, const std::string& conf = "drives 8\n") {
        m_Folder.Write("server.conf", conf);
        m_Folder.Write("vdkcli", "#!/bin/sh\ncd " + m_Folder.Path().string() + "\nVDKSIM_SCENARIO=$PWD\n" +
                                     "export VDKSIM_SCENARIO\n" + script + "\nexec " +
                                     COMMAND_TEST_SIMULATOR + " \"$@\"\n");
        ::chmod((m_Folder / "vdkcli").c_str(), 0755);
    }

    void Write(const std::string& name, const std::string& text) const { m_Folder.Write(name, text); }

    [[nodiscard]] Command Show(const char* jobs, std::vector<std::string> options = {}) const {
        options.insert(options.end(), {"show", "--smart", "--jobs", jobs});
        return {.words = options, .environment = m_Temporary.Environment(), .inChild = [this] {
                    ::setpgid(0, 0);
                    sandbox::EnterSandbox(m_Folder / "vdkcli", m_Folder.Path());
                }};
    }
    [[nodiscard]] const TemporaryDirectory& Temporary() const { return m_Temporary; }

  private:
    TempFolder m_Folder;
    TemporaryDirectory m_Temporary;
};

TEST(Jobs, TellTheFirstFailureInTheOrderOfTheDocument) {
    const ScriptedServer server(
        "case \"$*\" in\n"
        "*'pd[8:2]'*) until [ -e last ]; do sleep 0.01; done; echo second; exit 3;;\n"
        "*'pd[8:7]'*) echo last; : >last; exit 3;;\n"
        "esac");
    // Eight at a time: the third drive waits for the eighth to fail.
    const Ended ended = server.Show("8").Run();
    EXPECT_EQ(ended.ExitStatus(), 1);
    EXPECT_THAT(ended.err,
                testing::StartsWith(
                    "mngsrvraid: SMART data are missing: controller 0, drive in enclosure 8 slot 2: "
                    "smart failed with return value 0x000000a1: the tool's run failed (01) at "
                    "controller 0: drive 8:2 (vdkcli -pdinfo -pd[8:2] -a0): exit status 3: \"second\"; "));
    EXPECT_EQ(CountLines(ended.err), 1U);
}

/// Ends the process that hosts the module, which is above the tool's shell.
constexpr const char* kEndHost = "kill -KILL $(cut -d' ' -f4 /proc/$PPID/stat); sleep 60;;\nesac";

TEST(Jobs, AreLostWithTheDriveAlone) {
    const ScriptedServer refuses("case \"$*\" in\n*'pd[8:3]'*) echo no; exit 3;;\nesac");
    const ScriptedServer ends(std::string("case \"$*\" in\n*'pd[8:3]'*) ") + kEndHost);
    const Ended refused = refuses.Show("3").Run();
    const Ended ended = ends.Show("3").Run();
    EXPECT_EQ(ended.ExitStatus(), 3);
    EXPECT_EQ(
        ended.err,
        "mngsrvraid: SMART data are missing: controller 0, drive in enclosure 8 slot 3: the process that "
        "asked for it was lost (ended by SIGKILL); see the system's log\n");
    EXPECT_EQ(ended.out, refused.out);
    EXPECT_THAT(ended.out, HasSubstr("8:7"));
    EXPECT_TRUE(ends.Temporary().Names().empty());
}

TEST(Jobs, AreReplacedWhenAllOfThemAreLost) {
    const ScriptedServer refuses("case \"$*\" in\n*'pd[8:'[0-5]*) echo no; exit 3;;\nesac");
    const ScriptedServer ends(std::string("case \"$*\" in\n*'pd[8:'[0-5]*) ") + kEndHost);
    const Ended ended = ends.Show("2").Run();
    EXPECT_THAT(ended.err, HasSubstr("drive in enclosure 8 slot 0: the process that asked for it was lost"));
    EXPECT_EQ(ended.out, refuses.Show("2").Run().out);
}

/// A server whose drives answer when they are let.
class HeldServer : public ScriptedServer {
  public:
    HeldServer() : ScriptedServer("case \"$*\" in\n*'pd['*) until [ -e go ]; do sleep 0.01; done;;\nesac") {}
    void Release() const { Write("go", ""); }
};

std::size_t ToolsBelow(pid_t command) {
    const std::vector<Process> processes = DescendantsOf(command);
    return static_cast<std::size_t>(
        std::count_if(processes.begin(), processes.end(), [](const Process& process) {
            return process.name == "vdkcli" && process.words.find("-pd[") != std::string::npos;
        }));
}

TEST(Jobs, AreAsManyAsTheyAreTold) {
    for (const auto& [jobs, tools] : {std::pair{"1", 1U}, {"3", 3U}, {"64", 8U}}) {
        const HeldServer server;
        const auto running = server.Show(jobs).Start();
        const pid_t id = running->Process();
        EXPECT_TRUE(ComesTrue([&, most = tools] { return ToolsBelow(id) == most; })) << jobs;
        server.Release();
        const Ended ended = running->Wait();
        EXPECT_EQ(ended.err, "");
        EXPECT_EQ(ended.ExitStatus(), 0);
    }
}

TEST(Jobs, AreOneAtATimeUnlessTold) {
    const HeldServer server;
    Command command = server.Show("1");
    command.words.resize(command.words.size() - 2);
    const auto running = command.Start();
    const pid_t id = running->Process();
    EXPECT_TRUE(ComesTrue([&] { return ToolsBelow(id) == 1; }));
    // The tool's shell is a child of the worker: there is no process in between.
    const std::vector<Process> family = DescendantsOf(id);
    EXPECT_EQ(std::count_if(family.begin(), family.end(),
                            [](const Process& process) { return process.name == "mngsrvraid"; }),
              1);
    server.Release();
    EXPECT_EQ(running->Wait().ExitStatus(), 0);
}

class EndOfJobs : public testing::Test {
  protected:
    // Whoever loses his parent becomes this process's child, and can be seen.
    EndOfJobs() { EXPECT_EQ(::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0), 0); }
    ~EndOfJobs() override { (void)supervision::EndDescendants(); }

    void ExpectNothingLeft() const {
        EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
        EXPECT_EQ(errno, ECHILD);
        EXPECT_TRUE(m_Server.Temporary().Names().empty());
    }

    [[nodiscard]] std::unique_ptr<Running> StartAndHold(const std::vector<std::string>& options = {}) const {
        std::unique_ptr<Running> running = m_Server.Show("4", options).Start();
        EXPECT_TRUE(ComesTrue([&] { return ToolsBelow(running->Process()) == 4; }));
        return running;
    }

    HeldServer m_Server;
};

TEST_F(EndOfJobs, ComesWithTheInterruptionOfTheCommand) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        for (const bool isForAll : {false, true}) {
            const auto running = StartAndHold();
            ::kill(isForAll ? -running->Process() : running->Process(), signal);
            const Ended ended = running->Wait();
            EXPECT_TRUE(WIFSIGNALED(ended.status) && WTERMSIG(ended.status) == signal) << ended.status;
            EXPECT_EQ(ended.err, "mngsrvraid: interrupted\n");
            EXPECT_EQ(ended.out, "");
            ExpectNothingLeft();
        }
    }
}

TEST_F(EndOfJobs, ComesWhenTheTimeIsOver) {
    const Ended ended = m_Server.Show("4", {"--timeout", "3"}).Run();
    EXPECT_EQ(ended.ExitStatus(), 1);
    // However far it had come by then: it is not the process in between that is named.
    EXPECT_FALSE(testsupport::WholeMatch(ended.err,
                                         "mngsrvraid: (vdkcli -.*|the module) did not end within 3 s, "
                                         "and was ended\n")
                     .empty())
        << ended.err;
    ExpectNothingLeft();
}

TEST_F(EndOfJobs, ComesWithTheProcessThatEmploysThem) {
    const auto running = StartAndHold();
    const std::vector<Process> family = DescendantsOf(running->Process());
    const auto worker = std::find_if(family.begin(), family.end(), [&](const Process& process) {
        return process.parent == running->Process();
    });
    ASSERT_NE(worker, family.end());
    ::kill(worker->id, SIGKILL);
    EXPECT_EQ(WTERMSIG(running->Wait().status), SIGKILL);
    ExpectNothingLeft();
}

// Then nobody is left who could end them.
TEST_F(EndOfJobs, ComesWithTheCommandThatIsKilled) {
    const auto running = StartAndHold();
    ::kill(running->Process(), SIGKILL);
    EXPECT_EQ(WTERMSIG(running->Wait().status), SIGKILL);
    EXPECT_TRUE(ComesTrue([] {
        while (::waitpid(-1, nullptr, WNOHANG) > 0) {
        }
        return !HasDescendant(::getpid(),
                              [](const Process& process) { return process.name == "mngsrvraid"; });
    }));
}

TEST(Jobs, LeaveNothingBehind) {
    const TemporaryDirectory temporary;
    for (const char* const scenario : {"small", "old"}) {
        (void)Command{.words = ShowWith(scenario, "4"), .environment = temporary.Environment()}.Run();
        EXPECT_TRUE(temporary.Names().empty());
    }
}

}  // namespace
}  // namespace command::test
