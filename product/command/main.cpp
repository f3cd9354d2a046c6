// The command mngsrvraid: hosts the RAID provider module in a process of its own.

#include "Commands.h"
#include "Diff.h"
#include "ExitStatus.h"
#include "Judging.h"
#include "Options.h"
#include "Recall.h"
#include "ServerInquiry.h"
#include "TestAlert.h"
#include "basics/Descriptor.h"
#include "basics/DocumentTarget.h"
#include "basics/Failure.h"
#include "basics/OwnFolder.h"
#include "basics/Text.h"
#include "calls/InstallRoot.h"
#include "calls/Module.h"
#include "capture/Capture.h"
#include "capture/RedactedFolder.h"
#include "sandbox/Sandbox.h"
#include "scenario/ScenarioFolder.h"
#include "supervision/Supervisor.h"

#include "qel/CStringUtil.h"
#include "qel/portable/CTraceOutput.h"
#include "qel/portable/CVersionLog.h"

#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <memory>
#include <new>
#include <optional>
#include <string>

namespace command {
namespace {

namespace fs = std::filesystem;

// A descriptor that the caller closed must not become that of a file opened here. Opened the wrong way round,
// so that using it fails as it should.
void OccupyStandardDescriptors() noexcept {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(descriptor, F_GETFD) < 0) {
            (void)::open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

// What the module frees the command soon needs, and pages that had gone back to the kernel would be handed
// out one by one again. A small server's answer fits into what is had in one go.
void KeepFreedMemory() noexcept {
    constexpr int kMebibyte = 1 << 20;
    ::mallopt(M_TRIM_THRESHOLD, 64 * kMebibyte);
    ::mallopt(M_MMAP_THRESHOLD, 4 * kMebibyte);
    ::mallopt(M_TOP_PAD, kMebibyte / 2);
}

void Say(const std::string& line) noexcept {
    try {
        // Who cannot be told is not told: the exit status still is.
        (void)basics::WriteWhole(STDERR_FILENO, "mngsrvraid: " + basics::OneLine(line) + "\n");
    } catch (const std::bad_alloc&) {
        return;
    }
}

void ChooseInstallRoot(const Options& options) {
    // Nothing is no root, and only this one process would know of it.
    const char* const given = std::getenv("ZORBALT_INSTALL_DIR");
    if (given != nullptr && *given == '\0') {
        ::unsetenv("ZORBALT_INSTALL_DIR");
    }
    if (options.installDir) {
        const std::string root = fs::absolute(*options.installDir).lexically_normal().string();
        if (::setenv("ZORBALT_INSTALL_DIR", root.c_str(), 1) != 0) {
            basics::FailSurroundings("--install-dir cannot be used: " + basics::ErrorText(errno));
        }
    }
}

void StartTrace(const Options& options) {
    if (options.traceFile && !CTraceOutput::OpenFile(*options.traceFile)) {
        basics::FailSurroundings("the trace file " + *options.traceFile + " cannot be written: " +
                                 basics::ErrorText(errno) + "; name another file by --trace-file");
    }
    CTraceOutput::SetLevels(options.traceLevels);
}

fs::path Simulation() {
    return basics::OwnFolder().parent_path() / "vdksim";
}

void WarnOfOddParameters(const Options& options) {
    for (const Options::Parameter& parameter : options.parameters) {
        if (!IsDriveNumber(parameter.text)) {
            // Controller numbers keep their width; the other two are cut to 32 bits on their way to the tool.
            const long read = CStringUtil::TStringToNumber(parameter.text);
            const bool isController = parameter.name == std::string_view("CTRL");
            Say(std::string("warning: ") + parameter.name + " \"" + parameter.text +
                "\" is no number from 0 to 2147483647; it is passed on, and read as " +
                std::to_string(isController ? read : static_cast<std::int32_t>(read)));
        }
    }
}

/// Whether the subcommand runs the tool, here or in a scenario.
bool AsksTheServer(const Options& options) {
    return options.action != Options::Action::Redact && !options.document;
}

// In the worker: a folder for what it alone may see.
std::string StartWorker(const Options& options) {
    const bool isCapture = options.action == Options::Action::Capture;
    const bool isDiff = options.action == Options::Action::Diff;
    return supervision::Supervise(
        {.drawsProgress = ShowsProgress(options),
         .program = "mngsrvraid",
         .remains = isCapture ? "; the capture in " + basics::OneLine(options.folder) + " is incomplete" : "",
         .timeLimit = options.timeLimit,
         .overtimeStatus = static_cast<int>(isDiff ? ExitStatus::Surroundings : ExitStatus::MethodFailed),
         .tellEnd = options.action == Options::Action::Health ? TellUnknownHealth : nullptr,
         .privateFolder = "mngsrvraid",
         .otherPlaces = {calls::InstallRoot() + "/tmp", "/dev/shm"}});
}

std::string MakeRecordFolder(const fs::path& folder) {
    const fs::path records = folder / "records";
    fs::create_directory(records);
    return records.string();
}

capture::CaptureRequest CaptureRequestFor(const Options& options) {
    return {.folder = options.folder,
            .isRedacted = options.isRedacted,
            .words = options.redactWords,
            .scenario = options.scenario.value_or(""),
            .host = options.host,
            .inquiry = InquiryRequestFor(options)};
}

// What is drawn on the terminal is gone before anything is printed.
void RunCapture(capture::Capture& capture, const Options& options, const basics::DocumentTarget& target) {
    std::unique_ptr<Progress> progress = ProgressFor(options);
    const capture::Captured captured = capture.Run(progress.get());
    progress.reset();
    target.Store(captured.told);
    if (captured.failure) {
        throw basics::Failure(*captured.failure);
    }
}

/// To be opened before the view of the file system changes.
basics::DocumentTarget TargetOf(const Options& options) {
    return options.output ? basics::DocumentTarget(*options.output)
                          : basics::DocumentTarget::StandardOutput();
}

int AnswerDiff(const Options& options) {
    const basics::DocumentTarget target = TargetOf(options);
    Diff diff(options, Simulation());
    if (diff.RunsTool()) {
        calls::UsePrivateRoot(StartWorker(options));
    }
    StartTrace(options);
    return diff.Run(target);
}

int AnswerFromHistory(const Options& options) {
    const basics::DocumentTarget target = TargetOf(options);
    if (options.action == Options::Action::History) {
        TellHistory(options, target);
    } else {
        TellEvents(options, target);
    }
    return 0;
}

int Answer(const Options& options) {
    const std::string folder = AsksTheServer(options) ? StartWorker(options) : "";
    if (!folder.empty()) {
        calls::UsePrivateRoot(folder);
    }
    const basics::DocumentTarget target = TargetOf(options);
    const Surroundings surroundings{CriteriaFor(options), HistoryForPage(options)};
    StartTrace(options);
    const bool isMadeUp = options.scenario && AsksTheServer(options);
    const fs::path scenario =
        isMadeUp ? scenario::FindScenario(*options.scenario, Simulation() / "scenarios") : fs::path();
    std::optional<capture::Capture> capture;
    if (options.action == Options::Action::Capture) {
        capture.emplace(CaptureRequestFor(options), MakeRecordFolder(folder));
    }
    if (isMadeUp) {
        sandbox::EnterSandbox(Simulation() / "vdkcli", scenario);
    }
    WarnOfOddParameters(options);
    if (capture) {
        RunCapture(*capture, options, target);
        return 0;
    }
    if (options.action == Options::Action::Redact) {
        target.Store(capture::RedactFolder({options.folder, options.redactWords, options.host}));
        return 0;
    }
    return RunCommand(options, target, surroundings);
}

std::string VersionText() {
    std::string text = "mngsrvraid " COMMAND_VERSION "\n";
    try {
        const calls::Module module = calls::Module::Load(calls::Module::DefaultPath());
        for (const CVersionLog::Entry& entry : CVersionLog::Entries()) {
            text +=
                entry.fileName + " " + entry.version + " (" + entry.category + ", " + entry.vendor + ")\n";
        }
    } catch (const basics::Failure&) {
        return text;  // Without its module the command still has a version.
    }
    return text;
}

int Run(const Options& options) {
    ChooseInstallRoot(options);
    switch (options.action) {
        case Options::Action::Help:
            basics::DocumentTarget::StandardOutput().Store(options.helpText);
            return 0;
        case Options::Action::Version:
            basics::DocumentTarget::StandardOutput().Store(VersionText());
            return 0;
        case Options::Action::Diff:
            return AnswerDiff(options);
        case Options::Action::History:
        case Options::Action::Events:
            return AnswerFromHistory(options);
        case Options::Action::TestAlert:
            RunTestAlert(options);
        default:
            return Answer(options);
    }
}

int Tell(const std::string& failure, ExitStatus status, bool isHealth) noexcept {
    if (isHealth) {
        return TellUnknownHealth(failure);
    }
    Say(failure);
    return static_cast<int>(status);
}

int RunAndReport(int count, const char* const* words) {
    std::string failure;
    ExitStatus status = ExitStatus::Surroundings;
    // Of a command line that cannot be understood it is only a guess.
    bool isHealth = AsksForHealth(count, words);
    try {
        const Options options = ParseOptions(count, words);
        isHealth = options.action == Options::Action::Health;
        return Run(options);
    } catch (const basics::Failure& error) {
        failure = error.what();
        status = ExitStatusOf(error.WhatKind());
    } catch (const sandbox::SandboxError& error) {
        failure = std::string("the scenario cannot take the tool's place: ") + error.what();
    } catch (const std::exception& error) {
        failure = std::string("the command cannot go on: ") + error.what();
    }
    return Tell(failure, status, isHealth);
}

}  // namespace
}  // namespace command

int main(int count, char** words) {
    command::KeepFreedMemory();
    command::OccupyStandardDescriptors();
    return command::RunAndReport(count, words);
}
