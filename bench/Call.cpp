// What a whole call of the loaded module, and a whole run of the command, cost beside the tool's commands with
// nothing around them.

#include "calls/MethodCall.h"
#include "calls/Module.h"
#include "itemconv/CMSRAID_MngLib.h"
#include "support/Main.h"
#include "support/Server.h"
#include "test_support/TempFolder.h"

#include "qel/portable/CTraceOutput.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <map>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace bench {
namespace {

namespace fs = std::filesystem;

struct Shape {
    const char* name;
    std::uint32_t controllers;
    std::uint32_t drives;
};
constexpr Shape kServers[] = {
    {"1x24", 1, 24},   {"8x24", 8, 24},     {"64x24", 64, 24},     {"1x10", 1, 10},
    {"1x100", 1, 100}, {"1x1000", 1, 1000}, {"1x10000", 1, 10000}, {"1x100000", 1, 100000},
};

/// The commands that the module has the tool run.
class CommandListener final : public ITraceListener {
  public:
    CommandListener() { CTraceOutput::SetListener(this); }
    ~CommandListener() override { CTraceOutput::SetListener(nullptr); }
    CommandListener(const CommandListener&) = delete;
    CommandListener& operator=(const CommandListener&) = delete;

    void OnTrace(const TraceLine& line) noexcept override {
        constexpr std::string_view kBegin = "execute vdkcli command.(";
        if (line.text.starts_with(kBegin)) {
            const std::string_view rest = line.text.substr(kBegin.size());
            commands.emplace_back(rest.substr(0, rest.size() - 1));
        }
    }

    std::vector<std::string> commands;
};

class Bench final {
  public:
    Bench() : m_Module(calls::Module::Load(calls::Module::DefaultPath())) {
        for (const Shape& shape : kServers) {
            fs::create_directory(FolderOf(shape));
            WriteServer(FolderOf(shape), shape.controllers, shape.drives);
        }
        fs::create_directory(m_Folder.Path() / "bare");
        EnterServer(FolderOf(kServers[0]));
    }

    void Choose(const Shape& shape) {
        UseServer(FolderOf(shape));
        const CommandListener listener;
        Call();
        m_Commands = listener.commands;
    }

    void Call() {
        const calls::MethodOutcome outcome = calls::CallMethod(m_Module.Provider(), {});
        if (!outcome.document) {
            throw std::runtime_error("the call fails");
        }
    }

    // What a monitoring system does every minute.
    static void RunHealth() {
        const pid_t child = ::fork();
        if (child == 0) {
            ::dup2(::open("/dev/null", O_WRONLY | O_CLOEXEC), STDOUT_FILENO);
            ::execl(BENCH_COMMAND, BENCH_COMMAND, "health", static_cast<char*>(nullptr));
            ::_exit(127);
        }
        constexpr int kCritical = 2;  // Of the drives made up some have failed.
        int status = 0;
        if (child < 0 || ::waitpid(child, &status, 0) != child || !WIFEXITED(status) ||
            WEXITSTATUS(status) != kCritical) {
            throw std::runtime_error("mngsrvraid health fails");
        }
    }

    void RunBare() { bench::RunBare(m_Commands, m_Folder.Path() / "bare"); }
    void CleanUp() {
        fs::remove_all(m_Folder.Path() / "bare");
        fs::create_directory(m_Folder.Path() / "bare");
    }

    [[nodiscard]] std::size_t Commands() const { return m_Commands.size(); }

  private:
    [[nodiscard]] fs::path FolderOf(const Shape& shape) const { return m_Folder.Path() / shape.name; }

    testsupport::TempFolder m_Folder;
    calls::Module m_Module;
    std::vector<std::string> m_Commands;
};

double Seconds(const auto& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double Median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// The work and the bare commands by turns, so that whatever else the machine does happens to both; medians,
/// since it happens to one of them more.
void Compare(benchmark::State& state, Bench& bench, const Shape& shape, const auto& work) {
    bench.Choose(shape);
    std::vector<double> bare;
    std::vector<double> whole;
    for ([[maybe_unused]] const auto each : state) {
        bare.push_back(Seconds([&] { bench.RunBare(); }));
        bench.CleanUp();
        whole.push_back(Seconds(work));
        state.SetIterationTime(whole.back());
    }
    const double bareSeconds = Median(bare);
    const double wholeSeconds = Median(whole);
    state.counters["bare_ms"] = bareSeconds * 1e3;
    state.counters["own_ms"] = (wholeSeconds - bareSeconds) * 1e3;
    state.counters["ratio"] = wholeSeconds / bareSeconds;
    state.counters["commands"] = static_cast<double>(bench.Commands());
}

void LoadLibrary(benchmark::State& state) {
    CMSRAID_MngLib library;
    for ([[maybe_unused]] const auto each : state) {
        void* const handle = library.Load();
        if (handle == nullptr) {
            state.SkipWithError("the conversion library cannot be loaded");
            return;
        }
        library.Unload(handle);
    }
}

void RegisterComparison(const std::string& name, Bench& bench, const Shape& shape,
                        const std::function<void()>& work) {
    benchmark::RegisterBenchmark(
        name.c_str(), [&bench, shape, work](benchmark::State& state) { Compare(state, bench, shape, work); })
        ->Unit(benchmark::kMillisecond)
        ->UseManualTime();
}

void Register(Bench& bench) {
    for (const Shape& shape : kServers) {
        RegisterComparison(std::string("call/") + shape.name, bench, shape, [&bench] { bench.Call(); });
        RegisterComparison(std::string("health/") + shape.name, bench, shape, Bench::RunHealth);
    }
    benchmark::RegisterBenchmark("load", LoadLibrary)->Unit(benchmark::kMicrosecond);
}

void Run() {
    Bench bench;
    Register(bench);
    benchmark::RunSpecifiedBenchmarks();
}

}  // namespace
}  // namespace bench

int main(int count, char** words) {
    return bench::Main(count, words, bench::Run);
}
