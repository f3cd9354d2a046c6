// Calls both methods of the module's file over and over, and shows that nothing grows:
//
//     endurance [--every N] [--noise THREADS] [--trace FILE] CALLS
//
// prints what the process holds after every N calls. With noise, other threads are busy while the module
// forks, and behind each call comes one that fails in the child process. With a trace file, all levels are
// written. Exit status 1: a call was answered in another way than the first, or something grew; 124: a call
// did not come back.

#include "LoadedProvider.h"
#include "Noise.h"
#include "StandIn.h"
#include "Usage.h"
#include "Watchdog.h"
#include "sandbox/Sandbox.h"

#include "qel/portable/CTraceOutput.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>

namespace fs = std::filesystem;

namespace unkindhost {
namespace {

struct Options {
    long calls = 0;
    long every = 5000;
    int noise = 0;
    std::string trace;
};

Options ParseOptions(int count, char** words) {
    Options options;
    for (int at = 1; at < count; ++at) {
        const std::string word = words[at];
        if (at + 1 == count) {
            options.calls = std::atol(word.c_str());
        } else if (word == "--every") {
            options.every = std::max(1L, std::atol(words[++at]));
        } else if (word == "--noise") {
            options.noise = std::atoi(words[++at]);
        } else if (word == "--trace") {
            options.trace = words[++at];
        } else {
            break;
        }
    }
    if (options.calls <= 0) {
        throw std::runtime_error("usage: endurance [--every N] [--noise THREADS] [--trace FILE] CALLS");
    }
    return options;
}

/// The calls, one after the other.
class Caller final {
  public:
    Caller() : m_Info(m_Provider.GetInfo()), m_PDInfo(m_Provider.GetPDInfo()) {
        if (!m_Info.starts_with("<?xml") || !m_PDInfo.starts_with("<?xml")) {
            throw std::runtime_error("no document to begin with: " + m_Info + "; " + m_PDInfo);
        }
    }

    void Call(long number) const {
        const bool isWhole = number % 2 == 0;
        if ((isWhole ? m_Provider.GetInfo() : m_Provider.GetPDInfo()) != (isWhole ? m_Info : m_PDInfo)) {
            throw std::runtime_error("another answer to call " + std::to_string(number));
        }
    }

    /// A call whose tool runs all end between fork and the shell.
    void CallWithoutShell() const {
        ::setenv("PATH", "/no/such/folder", 1);
        const std::string answer = m_Provider.GetPDInfo();
        ::setenv("PATH", m_Path.c_str(), 1);
        if (answer != "status 00000000, return value 000000a1") {
            throw std::runtime_error("without a shell there was an answer: " + answer);
        }
    }

  private:
    StandIn m_StandIn{std::filesystem::temp_directory_path()};
    std::string m_Path = std::getenv("PATH");
    LoadedProvider m_Provider;
    std::string m_Info;
    std::string m_PDInfo;
};

void PrintRow(long calls, const Usage& usage) {
    std::printf("%8ld %13zu %10zu %12zu %9zu %8zu %13zu %13zu\n", calls, usage.resident, usage.heap,
                usage.descriptors, usage.children, usage.threads, usage.libraries, usage.resultFiles);
    std::fflush(stdout);
}

// What grew between the end of the warm-up, a tenth of all calls, and the end.
std::string Run(const Options& options, const fs::path& installRoot) {
    const Caller caller;
    const Watchdog watchdog{std::chrono::minutes(1)};
    std::optional<Noise> noise;
    if (options.noise > 0) {
        noise.emplace(options.noise);
    }
    std::printf(
        "   calls  resident KiB  heap byte  descriptors  children  threads  mapped files  result files\n");
    Usage before;
    Usage now;
    for (long call = 0; call <= options.calls; ++call) {
        if (call % options.every == 0 || call == options.calls || call == options.calls / 10) {
            now = Usage::Now(installRoot);
            PrintRow(call, now);
            before = call == options.calls / 10 ? now : before;
        }
        caller.Call(call);
        if (noise) {
            caller.CallWithoutShell();
        }
        watchdog.Moved();
    }
    if (noise) {  // Its memory comes and goes.
        now.resident = now.heap = 0;
    }
    return now.GrowthSince(before);
}

void OpenTrace(const Options& options) {
    const std::string trace = options.noise > 0 && options.trace.empty() ? "/dev/null" : options.trace;
    if (trace.empty()) {
        return;
    }
    if (!CTraceOutput::OpenFile(trace)) {
        throw std::runtime_error("the trace file cannot be opened: " + trace);
    }
    CTraceOutput::SetLevels(CTraceOutput::ALL_LEVELS);
}

}  // namespace
}  // namespace unkindhost

int main(int count, char** words) try {
    using namespace unkindhost;
    const Options options = ParseOptions(count, words);
    const testsupport::TempFolder root;
    fs::create_directory_symlink(UNKIND_HOST_CIM, root.Path() / "cim");
    ::setenv("ZORBALT_INSTALL_DIR", root.Path().c_str(), 1);
    OpenTrace(options);
    sandbox::EnterSandbox(UNKIND_HOST_SIMULATOR, UNKIND_HOST_SCENARIO);
    const std::string growth = Run(options, root.Path());
    std::fputs(growth.c_str(), stderr);
    return growth.empty() ? EXIT_SUCCESS : EXIT_FAILURE;
} catch (const std::exception& exception) {
    std::fprintf(stderr, "endurance: %s\n", exception.what());
    return EXIT_FAILURE;
}
