#include "ScriptedTool.h"

#include "Property.h"
#include "ResultFiles.h"

#include "qel/CFileUtility.h"
#include "qel/QelWindows.h"

#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>

namespace fuzzing {
namespace {

constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();
constexpr pid_t kChild = 4711;
constexpr unsigned long kThread = 4710;
constexpr int kMostAttempts = 3;
constexpr DWORD kPauseMilliseconds = 1000;
constexpr std::string_view kToolFile = "/opt/zorbalt/vdk/cli/vdkcli";
constexpr std::string_view kInvalidInput = "Error - Invalid input at or near token";

/// How one run goes, out of one section.
struct ToolRun {
    std::string_view text;
    int status = 0;  ///< as waitpid() tells it
    int interruptions = 0;
    bool cannotFork = false;
    bool cannotWait = false;
    bool leavesNoFile = false;
};

/// One command of the module: the attempts with one result file.
struct ToolCommand {
    std::string resultFile;
    std::string_view text;  ///< in the result file
    int attempts = 0;
    bool isOver = false;  ///< a good end, or a rejected command line
    bool hasSucceeded = false;
    bool hasFile = false;
};

struct State {
    const Sections* script = nullptr;
    std::size_t next = 1;
    std::size_t questions = 0;
    std::size_t installedFor = kNever;
    std::size_t commands = 0;
    std::size_t pauses = 0;
    bool isChildThere = false;
    ToolRun run;
    ToolCommand command;
};
State g_tool;
std::uint64_t g_resultFiles = 0;  // of this process so far: the number in the next one's name

void Follow(const Directive& directive, ToolRun& run) {
    constexpr int kStatusShift = 8;
    constexpr int kStopped = 0x7F;
    constexpr int kContinued = 0xFFFF;
    constexpr int kLastSignal = 0x7E;
    switch (directive.what) {
        case 'x':
            run.status = directive.value << kStatusShift;
            break;
        case 's':
            run.status = 1 + directive.value % kLastSignal;
            break;
        case 't':
            run.status = (SIGSTOP << kStatusShift) | kStopped;
            break;
        case 'c':
            run.status = kContinued;
            break;
        case 'f':
            run.cannotFork = true;
            break;
        case 'w':
            run.cannotWait = true;
            break;
        case 'i':
            run.interruptions = directive.value;
            break;
        case 'n':
            run.leavesNoFile = true;
            break;
        default:
            break;
    }
}

ToolRun NextRun() {
    ToolRun run;
    if (g_tool.next >= g_tool.script->size()) {
        Follow({'x', 1}, run);
        return run;
    }
    run.text = (*g_tool.script)[g_tool.next++];
    std::size_t printed = kNever;
    for (Directive directive; TakeDirective(run.text, directive);) {
        Follow(directive, run);
        printed = directive.what == '=' ? directive.value : printed;
    }
    if (printed < g_tool.script->size()) {
        run.text = (*g_tool.script)[printed];
        for (Directive ignored; TakeDirective(run.text, ignored);) {
        }
    }
    return run;
}

void Play(const ToolRun& run) {
    ToolCommand& command = g_tool.command;
    if (run.leavesNoFile) {
        ResultFiles::Remove(command.resultFile);
    } else if (!command.hasFile || command.text != run.text) {
        ResultFiles::Write(command.resultFile, run.text);
    }
    command.hasFile = !run.leavesNoFile;
    command.text = run.text;
    command.hasSucceeded = run.status == 0 && !run.cannotWait;
    command.isOver = command.hasSucceeded || (command.hasFile && run.text.starts_with(kInvalidInput));
}

/// The directory of the result files is asked for once for every command, just before its file is named.
void BeginCommand(const std::string& directory) {
    char name[64];
    std::snprintf(name, sizeof name, "/%08lx_%08lx_MngSrvRaid.txt", kThread,
                  static_cast<unsigned long>(g_resultFiles++));
    ++g_tool.commands;
    g_tool.command = {directory + name, {}, 0, false, false, false};
    g_tool.pauses = 0;
}

}  // namespace

void ScriptedTool::Begin(const Sections& script) {
    g_tool = State();
    g_tool.script = &script;
}

void ScriptedTool::UninstallFrom(std::size_t question) {
    g_tool.installedFor = question;
}

bool ScriptedTool::IsMissingAtFirst() {
    return g_tool.installedFor == 0;
}

std::size_t ScriptedTool::Commands() {
    return g_tool.commands;
}

bool ScriptedTool::HasLastCommandFailed() {
    return !g_tool.command.hasSucceeded;
}

bool ScriptedTool::HasLastCommandNoFile() {
    return !g_tool.command.hasFile;
}

std::string_view ScriptedTool::LastText() {
    return g_tool.command.text;
}

}  // namespace fuzzing

using fuzzing::g_tool;
using fuzzing::Require;

// In the place of the framework's and the system's own.

bool CFileUtility::IsFileExist(const std::string& path) {
    Require(path == fuzzing::kToolFile, "only the tool's file is asked for");
    return g_tool.questions++ < g_tool.installedFor;
}

extern "C" {

int _mkdir(const char* path) {
    if (std::string_view(path).ends_with("/MSRAID")) {
        fuzzing::BeginCommand(path);
    }
    return -1;  // There already.
}

unsigned long GetCurrentThreadId() {
    return fuzzing::kThread;
}

void Sleep(DWORD milliseconds) {
    ++g_tool.pauses;
    Require(milliseconds == fuzzing::kPauseMilliseconds, "a pause is a second");
    Require(static_cast<int>(g_tool.pauses) == g_tool.command.attempts, "one pause is between two attempts");
}

pid_t __wrap_fork() {
    const fuzzing::ToolCommand& command = g_tool.command;
    Require(!g_tool.isChildThere, "every child is waited for");
    Require(!command.isOver, "a command that is over is not tried again");
    Require(static_cast<int>(g_tool.pauses) == command.attempts, "one pause is between two attempts");
    Require(++g_tool.command.attempts <= fuzzing::kMostAttempts, "a command is tried three times at most");
    g_tool.run = fuzzing::NextRun();
    if (g_tool.run.cannotFork) {
        errno = EAGAIN;
        return -1;
    }
    g_tool.isChildThere = true;
    fuzzing::Play(g_tool.run);
    return fuzzing::kChild;
}

pid_t __wrap_waitpid(pid_t child, int* status, int options) {
    Require(g_tool.isChildThere && child == fuzzing::kChild, "only the child is waited for");
    Require(options == (WUNTRACED | WCONTINUED), "a child that stops is not waited for any longer");
    if (g_tool.run.interruptions-- > 0) {
        errno = EINTR;
        return -1;
    }
    g_tool.isChildThere = false;
    if (g_tool.run.cannotWait) {
        errno = ECHILD;
        return -1;
    }
    *status = g_tool.run.status;
    return child;
}
}
