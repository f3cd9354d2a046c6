// What starting the tool costs a host process that has much memory resident.

#include "report/CMSRAID_VDK.h"
#include "support/InChild.h"
#include "support/Main.h"
#include "support/Server.h"
#include "test_support/TempFolder.h"

#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <stdexcept>

namespace bench {
namespace {

constexpr std::int64_t kSizes[] = {10, 100, 1000, 8000};  // MB
constexpr std::size_t kMegabyte = 1 << 20;
constexpr std::int64_t kTries = 20;  // Told, lest the memory be filled anew for each guess at their number.

/// Memory of that size, all of it resident, in pages of the usual size, as those of a heap are, or large
/// ones.
class Ballast final {
  public:
    Ballast(std::size_t size, bool hasLargePages) : m_Size(size) {
        m_Memory = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (m_Memory == MAP_FAILED) {
            throw std::bad_alloc();
        }
        ::madvise(m_Memory, size, hasLargePages ? MADV_HUGEPAGE : MADV_NOHUGEPAGE);
        std::memset(m_Memory, 1, size);
    }
    ~Ballast() { ::munmap(m_Memory, m_Size); }
    Ballast(const Ballast&) = delete;
    Ballast& operator=(const Ballast&) = delete;

  private:
    std::size_t m_Size;
    void* m_Memory;
};

void Wait(pid_t child) {
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child || status != 0) {
        throw std::runtime_error("a child fails");
    }
}

/// As the module starts the tool.
void RunTool(const std::string& resultFile) {
    if (!CMSRAID_VDK::ExecCli("vdkcli -v", resultFile)) {
        throw std::runtime_error("the tool fails");
    }
}

void Fork(const std::string& /*resultFile*/) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::_exit(0);
    }
    Wait(child);
}

/// The same command by a child that shares the host's memory until it becomes the shell. Not what the module
/// does: for comparison.
void Spawn(const std::string& resultFile) {
    const std::string commandLine = "/opt/zorbalt/vdk/cli/vdkcli -v > " + resultFile;
    char* const words[] = {const_cast<char*>("sh"), const_cast<char*>("-c"),
                           const_cast<char*>(commandLine.c_str()), nullptr};
    pid_t child = -1;
    Wait(::posix_spawnp(&child, "sh", nullptr, nullptr, words, environ) == 0 ? child : -1);
}

struct Case {
    const char* name;
    void (*start)(const std::string& resultFile);
    bool hasLargePages = false;
};
constexpr Case kCases[] = {
    {"tool-run", RunTool}, {"tool-run-large-pages", RunTool, true}, {"fork", Fork}, {"spawn", Spawn}};

void Measure(benchmark::State& state, const Case& what) {
    const testsupport::TempFolder folder;
    const std::string resultFile = folder / "result";
    const Ballast ballast(static_cast<std::size_t>(state.range(0)) * kMegabyte, what.hasLargePages);
    for ([[maybe_unused]] const auto each : state) {
        what.start(resultFile);
    }
}

void Run() {
    const testsupport::TempFolder server;
    WriteServer(server.Path(), 1, 1);
    EnterServer(server.Path());
    for (const Case& each : kCases) {
        auto* const registered = benchmark::RegisterBenchmark(each.name, Measure, each);
        for (const std::int64_t size : kSizes) {
            registered->Arg(size);
        }
        registered->Iterations(kTries)->Unit(benchmark::kMicrosecond)->UseRealTime();
    }
    benchmark::RunSpecifiedBenchmarks();
}

}  // namespace
}  // namespace bench

int main(int count, char** words) {
    return bench::Main(count, words, bench::Run);
}
