#include "Server.h"

#include "sandbox/Sandbox.h"
#include "vdksim/MadeUpServer.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <stdexcept>

namespace bench {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void BecomeTool(const std::string& commandLine, const std::string& file) {
    constexpr mode_t kModeBeforeUmask = 0666;
    const int out = ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, kModeBeforeUmask);
    ::dup2(out, STDOUT_FILENO);
    ::dup2(out, STDERR_FILENO);
    ::execlp("sh", "sh", "-c", commandLine.c_str(), static_cast<char*>(nullptr));
    ::_exit(1);
}

}  // namespace

void WriteServer(const fs::path& folder, std::uint32_t controllers, std::uint32_t drives) {
    const vdksim::MadeUpServer server({.version = "4.1", .controllers = controllers, .drives = drives});
    const auto write = [&folder](const std::string& arguments, const auto& report) {
        std::ofstream out(folder / arguments);
        report(out);
    };
    write("-v", [&](std::ostream& out) { server.WriteVersion(out); });
    write("-ctrlinfo -aAll", [&](std::ostream& out) { server.WriteAllControllers(out); });
    for (std::uint32_t number = 0; number < controllers; ++number) {
        const std::string address = " -a" + std::to_string(number);
        write("-ctrlinfo" + address, [&](std::ostream& out) { server.WriteController(out, number); });
        write("-ldpdinfo" + address, [&](std::ostream& out) { server.WriteLogicalDrives(out, number); });
        write("-pdinfo -nosmart" + address,
              [&](std::ostream& out) { server.WriteDrives(out, number, false); });
    }
}

void EnterServer(const fs::path& folder) {
    sandbox::EnterSandbox(BENCH_TOOL, folder);
}

void UseServer(const fs::path& folder) {
    sandbox::UseScenario(folder);
}

void RunBare(const std::vector<std::string>& commands, const fs::path& folder) {
    int number = 0;
    for (const std::string& command : commands) {
        const std::string commandLine = "/opt/zorbalt/vdk/cli/" + command;
        const std::string file = folder / std::to_string(number++);
        const pid_t child = ::fork();
        if (child == 0) {
            BecomeTool(commandLine, file);
        }
        int status = 0;
        if (child < 0 || ::waitpid(child, &status, 0) != child || status != 0) {
            throw std::runtime_error(commandLine + " fails");
        }
    }
}

}  // namespace bench
