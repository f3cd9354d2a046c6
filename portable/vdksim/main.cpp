// The simulator of the RAID tool: plays one run of it from a scenario folder. See docs/scenarios.md.

#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <ostream>
#include <streambuf>
#include <string>
#include <thread>
#include <variant>
#include <vector>

#include "Instructions.h"
#include "Output.h"
#include "Scenario.h"
#include "ScenarioError.h"
#include "State.h"
#include "Timeline.h"
#include "vdksim/Command.h"

namespace vdksim {

namespace {

namespace fs = std::filesystem;

constexpr const char* kMarker = "Error - Invalid input at or near token ";
constexpr const char* kBusy = "Error - The controller is busy. Try again later.\n";
constexpr const char* kFiller = "...............................................................\n";

// The variable's folder, else the one of this name beside the folder that the program stands in.
fs::path FolderFor(const char* variable, const char* name) {
    if (const char* value = std::getenv(variable)) {
        return value;
    }
    std::error_code error;
    return fs::read_symlink("/proc/self/exe", error).parent_path().parent_path() / name;
}

State FindState() {
    const fs::path folder = FolderFor("VDKSIM_STATE", "state");
    std::error_code error;
    return State(fs::is_directory(folder, error) ? std::optional(folder) : std::nullopt);
}

void WriteRefusal(std::ostream& out, const Command& command) {
    out << "Error - ";
    if (command.drive) {
        out << "Drive [" << command.drive->enclosure << ':' << command.drive->slot
            << "] is not present on controller " << *command.controller << ".\n";
    } else {
        out << "Controller " << *command.controller << " is not present.\n";
    }
}

// A text that is to be printed for ever must get somewhere.
Scenario::Text NeverEmpty(const Scenario::Text& text) {
    class Counter final : public std::streambuf {
      public:
        bool sawText = false;

      protected:
        int_type overflow(int_type) override { return sawText = true, traits_type::eof(); }
        std::streamsize xsputn(const char*, std::streamsize count) override {
            sawText = sawText || count > 0;
            return 0;
        }
    } counter;
    std::ostream probe(&counter);
    text(probe);
    return counter.sawText ? text : [](std::ostream& out) { out << kFiller; };
}

// Whoever started the shell that started this process.
class Caller final {
  public:
    // Looks at one of many calls: the look costs more than a short text.
    [[nodiscard]] bool IsThere() const {
        constexpr unsigned kCallsPerLook = 256;
        return ++m_Calls % kCallsPerLook != 0 || Find() == m_Process;
    }

  private:
    [[nodiscard]] static pid_t Find() {
        std::ifstream status("/proc/" + std::to_string(::getppid()) + "/status");
        for (std::string word; status >> word;) {
            if (word == "PPid:") {
                pid_t parent = 0;
                return status >> parent ? parent : 0;
            }
        }
        return 0;
    }

    pid_t m_Process = Find();
    mutable unsigned m_Calls = 0;
};

// Prints what the instructions make of the report; an errno value when it cannot be written, else 0.
int Print(const Scenario::Text& text, const Instructions& instructions, const std::string& lastWord) {
    const int descriptor = instructions.toStandardError ? STDERR_FILENO : STDOUT_FILENO;
    std::optional<std::uint64_t> limit = instructions.bytes;
    if (instructions.truncate) {
        limit = std::min(*instructions.truncate, limit.value_or(*instructions.truncate));
    }
    if (instructions.marker) {
        Output output(descriptor, std::nullopt);
        std::ostream out(&output);
        out << kMarker << (instructions.marker->empty() ? lastWord : *instructions.marker) << '\n'
            << std::flush;
        if (output.Error() != 0) {
            return output.Error();
        }
    }
    Output output(descriptor, limit);
    std::ostream out(&output);
    if (instructions.endless || instructions.bytes) {
        const Caller caller;
        for (const Scenario::Text endless = NeverEmpty(text); out && (limit || caller.IsThere());) {
            endless(out);
        }
    } else {
        for (std::uint64_t time = 0; time < instructions.repeat && out; ++time) {
            text(out);
        }
    }
    out.flush();
    return output.Error();
}

// A grandchild of the caller that keeps the output open and does nothing else.
void HoldOutput(Instructions::Seconds time) {
    if (::fork() == 0) {
        std::this_thread::sleep_for(time);
        ::_exit(0);
    }
}

// A grandchild of the caller that goes on printing when the tool has ended.
void KeepWriting(int descriptor, Instructions::Seconds time) {
    if (::fork() != 0) {
        return;
    }
    const auto end = std::chrono::steady_clock::now() + time;
    while (std::chrono::steady_clock::now() < end && ::write(descriptor, kFiller, std::strlen(kFiller)) > 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));  // Gentle with the disk.
    }
    ::_exit(0);
}

// A process that would never end by itself must not outlive whoever started it.
void EndWithParent() {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
}

// The tool is started through a shell, and not every shell becomes the command that it runs. One that waits
// instead tells what has happened to the tool in its own way, or not at all.
void SignalShell(int signal) {
    std::ifstream name("/proc/" + std::to_string(::getppid()) + "/comm");
    std::string parent;
    if (std::getline(name, parent) && parent == "sh") {
        const rlimit noCore{};
        ::prlimit(::getppid(), RLIMIT_CORE, &noCore, nullptr);
        ::kill(::getppid(), signal);
    }
}

void DieBy(int signal) {
    const rlimit noCore{};
    ::setrlimit(RLIMIT_CORE, &noCore);
    ::signal(signal, SIG_DFL);
    sigset_t only;
    ::sigemptyset(&only);
    ::sigaddset(&only, signal);
    ::sigprocmask(SIG_UNBLOCK, &only, nullptr);
    ::raise(signal);
}

int Play(const Scenario::Text& text, int status, const Instructions& instructions,
         const std::string& lastWord) {
    if (instructions.endless || instructions.stop) {
        EndWithParent();
    }
    if (instructions.holdOutput.count() > 0) {
        HoldOutput(instructions.holdOutput);
    }
    if (instructions.closeOutput) {
        ::close(STDOUT_FILENO);
    }
    std::this_thread::sleep_for(instructions.delay);
    if (!instructions.closeOutput || instructions.toStandardError) {
        if (const int error = Print(text, instructions, lastWord); error != 0) {
            throw ScenarioError(kExitOutputFailed,
                                std::string("the report cannot be written: ") + std::strerror(error));
        }
    }
    if (instructions.keepWriting.count() > 0) {
        KeepWriting(instructions.toStandardError ? STDERR_FILENO : STDOUT_FILENO, instructions.keepWriting);
    }
    if (instructions.stop) {
        SignalShell(SIGSTOP);
        ::raise(SIGSTOP);
    }
    if (instructions.signal != 0) {
        if (instructions.takesShellAlong) {
            SignalShell(instructions.signal);
        }
        DieBy(instructions.signal);
    }
    return instructions.exitStatus.value_or(instructions.marker ? kExitRejected : status);
}

int Run(const std::vector<std::string>& arguments) {
    const State state = FindState();
    state.LogRun(arguments);
    const bool beginsInquiry = arguments == std::vector<std::string>{"-v"};
    const Scenario scenario(FoldersOf(FolderFor("VDKSIM_SCENARIO", "scenario"), state, beginsInquiry));
    const auto parsed = ParseCommand(arguments, VersionTakesNoSmart(scenario.Version()));
    if (const auto* rejected = std::get_if<Rejected>(&parsed)) {
        std::cout << kMarker << rejected->token << std::endl;
        return kExitRejected;
    }
    const Command& command = std::get<Command>(parsed);
    Instructions instructions = scenario.InstructionsFor(command);
    if (instructions.passFirst > 0 || instructions.failFirst > 0) {
        const std::uint64_t run = state.CountRun(command.FileStem());
        if (run <= instructions.passFirst) {
            instructions = {};
        } else if (run - instructions.passFirst <= instructions.failFirst) {
            std::cout << kBusy << std::flush;
            return instructions.failStatus;
        }
    }
    if (const auto text = scenario.TextOf(command)) {
        return Play(*text, kExitGood, instructions, arguments.back());
    }
    const auto refusal = [&command](std::ostream& out) { WriteRefusal(out, command); };
    return Play(refusal, kExitNotPresent, instructions, arguments.back());
}

}  // namespace

}  // namespace vdksim

int main(int count, char** words) {
    try {
        return vdksim::Run({words + std::min(count, 1), words + count});
    } catch (const vdksim::ScenarioError& error) {
        std::fprintf(stderr, "vdkcli simulator: %s\n", error.what());
        return error.Status();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vdkcli simulator: %s\n", error.what());
        return vdksim::kExitNoScenario;
    }
}
