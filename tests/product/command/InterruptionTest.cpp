// What is left when the command is ended in the middle of a call: nothing.

#include "basics/Descriptor.h"
#include "sandbox/Sandbox.h"
#include "supervision/Descendants.h"
#include "test_support/Command.h"
#include "test_support/Processes.h"
#include "test_support/Waiting.h"
#include "test_support/XmlLint.h"

#include <fcntl.h>
#include <gtest/gtest.h>
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

/// A server that takes its time, in the middle of which the command is to be ended.
struct Moment {
    const char* name;
    std::map<std::string, std::string> instructions;  ///< name and content of .do files
    const char* tool = "";                            ///< a script in the simulator's place
    int run = 0;         ///< which run of the tool to wait for, by the number of its result file
    bool prints = true;  ///< and whether that prints something
    char state = '\0';   ///< of the tool then: 'S' at rest, 'T' stopped, '-' gone; any where it is not given
};

const std::vector<Moment>& Moments() {
    static const std::vector<Moment> moments = {
        {.name = "SlowRun", .instructions = {{"any.do", "sleep 60"}}, .prints = false, .state = 'S'},
        {.name = "EndlessRun", .instructions = {{"any.do", "endless"}}},
        {.name = "RetryPause", .instructions = {{"v.do", "exit 1"}}, .state = '-'},
        {.name = "ToolThatIgnoresTheSignals",
         .instructions = {},
         .tool = "#!/bin/sh\ntrap '' HUP INT QUIT TERM\necho ready\nsleep 60\nsleep 60\n"},
        {.name = "ProcessLeftBehindByTheTool",
         .instructions = {{"v.do", "spawn-holder 60"}, {"ctrlinfo_aAll.do", "sleep 60"}},
         .run = 1,
         .prints = false,
         .state = 'S'},
        {.name = "StoppedTool", .instructions = {{"any.do", "stop"}}, .state = 'T'},
    };
    return moments;
}

// A command in the middle of a call, in a process group of its own.
class MiddleOfACall final {
  public:
    explicit MiddleOfACall(
        const Moment& moment, const std::function<void()>& inChild = [] {},
        const std::vector<std::string>& options = {}) {
        // Whoever loses his parent becomes this process's child, and can be seen.
        EXPECT_EQ(::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0), 0);
        fs::create_directory(m_Server / "mine");
        WriteFile(m_Server / "mine/server.conf", "");
        for (const auto& [name, text] : moment.instructions) {
            WriteFile(m_Server / ("mine/" + name), text);
        }
        WriteFile(m_Server / "vdkcli", moment.tool);
        ::chmod((m_Server / "vdkcli").c_str(), 0700);
        Command command{.words = {"--install-dir", m_Root.Path(), "--output", m_Output / "raid.xml"},
                        .environment = m_Temporary.Environment()};
        const bool hasTool = *moment.tool != '\0';
        if (!hasTool) {
            command.words.insert(command.words.end(), {"--scenario", m_Server / "mine"});
        }
        command.words.insert(command.words.end(), options.begin(), options.end());
        command.words.emplace_back("get-info");
        command.inChild = [&, hasTool] {
            ::setpgid(0, 0);
            inChild();
            if (hasTool) {
                sandbox::EnterSandbox(m_Server / "vdkcli", m_Server / "mine");
            }
        };
        m_Running = command.Start();
        EXPECT_TRUE(ComesTrue([&] { return IsReached(moment) && IsToolIn(moment.state); }));
    }

    [[nodiscard]] pid_t Id() const { return m_Running->Process(); }
    [[nodiscard]] std::vector<std::string> Stored() const { return m_Output.Names(); }
    [[nodiscard]] std::string Document() const { return m_Output.Read("raid.xml"); }
    [[nodiscard]] std::vector<std::string> ResultFiles() const { return m_Temporary.ResultFiles(); }
    [[nodiscard]] std::string ResultFolder() const { return m_Temporary.ResultFolder(); }
    /// Neither a private folder nor anything in the install root is left.
    [[nodiscard]] bool LeavesNothing() const { return m_Temporary.Names().empty() && m_Root.IsUntouched(); }
    [[nodiscard]] Ended Wait() const { return m_Running->Wait(); }

  private:
    [[nodiscard]] bool IsReached(const Moment& moment) const {
        const std::string number = "_0000000" + std::to_string(moment.run) + "_";
        const std::vector<std::string> files = ResultFiles();
        return std::any_of(files.begin(), files.end(), [&](const std::string& file) {
            std::error_code ignored;
            return file.find(number) != std::string::npos &&
                   (!moment.prints || fs::file_size(fs::path(ResultFolder()) / file, ignored) > 0);
        });
    }

    // A process that the tool has left behind bears its name too, and stands below this process by then.
    [[nodiscard]] bool IsToolIn(char state) const {
        const std::vector<Process> processes = DescendantsOf(Id());
        const auto tool = std::find_if(processes.begin(), processes.end(),
                                       [](const auto& process) { return process.name == "vdkcli"; });
        return state == '\0' || (tool == processes.end() ? '-' : tool->state) == state;
    }

    InstallRoot m_Root;
    TemporaryDirectory m_Temporary;
    TempFolder m_Server;
    TempFolder m_Output;
    std::unique_ptr<Running> m_Running;
};

void ExpectNoChild() {
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

// So that what one test leaves does not make others fail.
void EndWhatIsLeft() {
    (void)supervision::EndDescendants();
}

using Case = std::tuple<Moment, int, bool>;
class Interruption : public testing::TestWithParam<Case> {
  protected:
    Interruption() { EndWhatIsLeft(); }
    ~Interruption() override { EndWhatIsLeft(); }
};

std::string NameOf(const testing::TestParamInfo<Case>& info) {
    const auto& [moment, signal, isForAll] = info.param;
    return std::string(moment.name) + "_SIG" + ::sigabbrev_np(signal) + (isForAll ? "_ToTheGroup" : "");
}

TEST_P(Interruption, LeavesNothingBehind) {
    const auto& [moment, signal, isForAll] = GetParam();
    const MiddleOfACall call(moment);
    EXPECT_FALSE(call.ResultFiles().empty());
    ::kill(isForAll ? -call.Id() : call.Id(), signal);
    const Ended ended = call.Wait();
    EXPECT_TRUE(WIFSIGNALED(ended.status) && WTERMSIG(ended.status) == signal) << ended.status;
    EXPECT_EQ(ended.err, "mngsrvraid: interrupted\n");
    EXPECT_TRUE(call.LeavesNothing());
    EXPECT_EQ(call.Stored(), std::vector<std::string>{});
    ExpectNoChild();
}

INSTANTIATE_TEST_SUITE_P(All, Interruption,
                         testing::Combine(testing::ValuesIn(Moments()),
                                          testing::Values(SIGINT, SIGTERM, SIGHUP, SIGQUIT), testing::Bool()),
                         NameOf);

// However the tool takes a signal, and whatever it has started.
class TimeLimit : public testing::TestWithParam<Moment> {
  protected:
    TimeLimit() { EndWhatIsLeft(); }
    ~TimeLimit() override { EndWhatIsLeft(); }
};

TEST_P(TimeLimit, EndsTheToolWithAllThatItStarted) {
    const MiddleOfACall call(GetParam(), [] {}, {"--timeout", "2"});
    const Ended ended = call.Wait();
    EXPECT_EQ(ended.ExitStatus(), 1);
    const bool isBetweenRuns = GetParam().state == '-';
    const std::string command = isBetweenRuns         ? "the module"
                                : GetParam().run == 1 ? "vdkcli -ctrlinfo -aAll"
                                                      : "vdkcli -v";
    EXPECT_EQ(ended.err, "mngsrvraid: " + command + " did not end within 2 s, and was ended\n");
    EXPECT_TRUE(call.LeavesNothing());
    EXPECT_EQ(call.Stored(), std::vector<std::string>{});
    ExpectNoChild();
}

INSTANTIATE_TEST_SUITE_P(All, TimeLimit, testing::ValuesIn(Moments()),
                         [](const auto& moment) { return moment.param.name; });

class Supervised : public testing::Test {
  protected:
    ~Supervised() override { EndWhatIsLeft(); }
};

// The worker of a command.
pid_t WorkerOf(pid_t command) {
    const std::vector<Process> family = DescendantsOf(command);
    const auto worker = std::find_if(family.begin(), family.end(),
                                     [command](const Process& process) { return process.parent == command; });
    return worker == family.end() ? -1 : worker->id;
}

TEST_F(Supervised, PrivateViewOfTheFileSystemGoesWithTheWorker) {
    const MiddleOfACall call(Moments().front());
    const auto viewOf = [](const fs::path& process) {
        std::error_code gone;
        return fs::read_symlink(process / "ns/mnt", gone).string();
    };
    const std::string worker = "/proc/" + std::to_string(WorkerOf(call.Id()));
    const std::string view = viewOf(worker);
    // For as long as it is open nobody else's view gets its number.
    const basics::Descriptor open(::open((worker + "/ns/mnt").c_str(), O_RDONLY | O_CLOEXEC));
    EXPECT_TRUE(open.IsOpen());
    EXPECT_NE(view, "");
    EXPECT_NE(view, viewOf("/proc/self"));
    ::kill(call.Id(), SIGINT);
    (void)call.Wait();
    for (const auto& entry : fs::directory_iterator("/proc")) {
        EXPECT_NE(viewOf(entry.path()), view) << entry.path();
    }
}

TEST_F(Supervised, CommandThatIgnoresHangupsGoesOn) {
    const MiddleOfACall call({.name = "", .instructions = {{"v.do", "sleep 1"}}, .prints = false},
                             [] { ::signal(SIGHUP, SIG_IGN); });
    ::kill(-call.Id(), SIGHUP);
    ::kill(call.Id(), SIGHUP);
    const Ended ended = call.Wait();
    EXPECT_EQ(ended.ExitStatus(), 0);
    EXPECT_EQ(ended.err, "");
    EXPECT_EQ(testsupport::ValidateAgainstSchema(call.Document()), "");
}

TEST_F(Supervised, SignalsThatAreIgnoredOrBlockedStaySo) {
    const Moment looks{
        .name = "", .instructions = {}, .tool = "#!/bin/sh\ngrep SigIgn /proc/$$/status\nsleep 60\n"};
    const MiddleOfACall call(looks, [] {
        ::signal(SIGHUP, SIG_IGN);
        sigset_t blocked;
        ::sigemptyset(&blocked);
        ::sigaddset(&blocked, SIGQUIT);
        ::sigprocmask(SIG_BLOCK, &blocked, nullptr);
    });
    EXPECT_EQ(ReadFile(call.ResultFolder() + "/" + call.ResultFiles().front()),
              "SigIgn:\t0000000000000001\n");
    ::kill(call.Id(), SIGQUIT);  // Put off for as long as it is blocked, which is for ever.
    ::kill(call.Id(), SIGHUP);
    ::kill(call.Id(), SIGTERM);
    EXPECT_EQ(WTERMSIG(call.Wait().status), SIGTERM);
}

TEST_F(Supervised, WorkerGoesWithTheParentThatIsKilled) {
    const MiddleOfACall call({.name = "", .instructions = {{"any.do", "endless"}}});
    const pid_t worker = WorkerOf(call.Id());
    EXPECT_GT(worker, 0);
    ::kill(call.Id(), SIGKILL);
    EXPECT_EQ(WTERMSIG(call.Wait().status), SIGKILL);
    EXPECT_TRUE(ComesTrue([&] { return ::waitpid(worker, nullptr, WNOHANG) == worker; }));
}

TEST_F(Supervised, WorkerThatIsKilledTakesAllWithIt) {
    const MiddleOfACall call(Moments().front());
    ::kill(WorkerOf(call.Id()), SIGKILL);
    EXPECT_EQ(WTERMSIG(call.Wait().status), SIGKILL);
    EXPECT_TRUE(call.LeavesNothing());
    ExpectNoChild();
}

TEST_F(Supervised, ProcessThatTheToolLeavesBehindOutlivesACallThatEnds) {
    const MiddleOfACall call({.name = "",
                              .instructions = {{"v.do", "spawn-holder 60"}, {"ctrlinfo_aAll.do", "sleep 1"}},
                              .run = 1,
                              .prints = false});
    EXPECT_EQ(call.Wait().ExitStatus(), 0);
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), 0);
}

}  // namespace
}  // namespace command::test
