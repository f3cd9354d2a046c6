// The command mngsrvraid: hosts the RAID provider module in a process of its own.

#include "host/CallListener.h"
#include "host/DocumentTarget.h"
#include "host/ExitStatus.h"
#include "host/FailureText.h"
#include "host/MethodCall.h"
#include "host/Module.h"
#include "host/Options.h"
#include "host/Progress.h"
#include "host/Sandbox.h"
#include "host/ScenarioFolder.h"
#include "host/Supervisor.h"

#include "qel/CFileUtility.h"
#include "qel/CStringUtil.h"
#include "qel/portable/CTraceOutput.h"
#include "qel/portable/CVersionLog.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <memory>
#include <new>
#include <string>
#include <system_error>

namespace host {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void FailSurroundings(const std::string& line) {
    throw HostError(ExitStatus::Surroundings, line);
}

std::string LastSystemError() {
    return std::generic_category().message(errno);
}

// A descriptor that the caller closed must not become that of a file opened here. Opened the wrong way round,
// so that using it fails as it should.
void OccupyStandardDescriptors() noexcept {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(descriptor, F_GETFD) < 0) {
            (void)::open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

void Say(const std::string& line) noexcept {
    try {
        const std::string text = "mngsrvraid: " + OneLine(line) + "\n";
        // Who cannot be told is not told: the exit status still is.
        [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, text.data(), text.size());
    } catch (const std::bad_alloc&) {
        return;
    }
}

void ChooseInstallRoot(const Options& options) {
    if (options.installDir) {
        const std::string root = fs::absolute(*options.installDir).lexically_normal().string();
        if (::setenv("ZORBALT_INSTALL_DIR", root.c_str(), 1) != 0) {
            FailSurroundings("--install-dir cannot be used: " + LastSystemError());
        }
    }
}

void StartTrace(const Options& options) {
    if (options.traceFile && !CTraceOutput::OpenFile(*options.traceFile)) {
        FailSurroundings("the trace file " + *options.traceFile + " cannot be written: " + LastSystemError() +
                         "; name another file by --trace-file");
    }
    CTraceOutput::SetLevels(options.traceLevels);
}

fs::path OwnDirectory() {
    return fs::read_symlink("/proc/self/exe").parent_path();
}

void UseSimulator(const std::string& scenario) {
    const fs::path simulation = OwnDirectory().parent_path() / "vdksim";
    EnterSandbox(simulation / "vdkcli", FindScenario(scenario, simulation / "scenarios"));
}

std::string ResultDirectory() {
    return CFileUtility::GetInstallPath(INSTALLPATH_ROOT) + "/tmp/MSRAID";
}

// The directory that result files go to, or its nearest one that there is, when it cannot be written.
std::optional<std::string> UnwritableResultDirectory() {
    fs::path directory = ResultDirectory();
    std::error_code ignored;
    while (!fs::exists(directory, ignored) && directory.has_relative_path()) {
        directory = directory.parent_path();
    }
    if (::access(directory.c_str(), W_OK | X_OK) == 0) {
        return std::nullopt;
    }
    return directory.string();
}

bool WantsProgress(const Options& options) {
    const bool isTraceOnStandardError = options.traceLevels != 0 && !options.traceFile;
    return ::isatty(STDERR_FILENO) == 1 && !isTraceOnStandardError;
}

FailureSetting SettingOf(const Options& options) {
    const bool isDrive = options.action == Options::Action::GetPDInfo;
    return {isDrive ? "get-pd-info" : "get-info", options.scenario.value_or(""), UnwritableResultDirectory()};
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

// The document, or HostError.
std::string FetchDocument(const Options& options) {
    const FailureSetting setting = SettingOf(options);
    const std::unique_ptr<Progress> progress =
        WantsProgress(options) ? std::make_unique<Progress>(STDERR_FILENO) : nullptr;
    const CallListener listener(progress.get());
    const Module module = Module::Load(Module::DefaultPath());
    const bool isDrive = options.action == Options::Action::GetPDInfo;
    MethodOutcome outcome = CallMethod(
        module.Provider(), {isDrive ? "GetPDInfo" : "GetInfo", options.parameters, options.appKey});
    if (outcome.status == WBEM_S_NO_ERROR && outcome.returnValue.value_or(0) != 0) {
        throw HostError(ExitStatus::MethodFailed,
                        DescribeMethodFailure(*outcome.returnValue, listener.Reasons(), setting));
    }
    if (!outcome.document) {
        throw HostError(ExitStatus::StatusFailed, DescribeCallFailure(outcome, setting));
    }
    return std::move(*outcome.document);
}

void Answer(const Options& options) {
    const DocumentTarget target =
        options.output ? DocumentTarget(*options.output) : DocumentTarget::StandardOutput();
    StartTrace(options);
    if (options.scenario) {
        UseSimulator(*options.scenario);
    }
    WarnOfOddParameters(options);
    target.Store(FetchDocument(options));
}

std::string VersionText() {
    std::string text = "mngsrvraid " HOST_VERSION "\n";
    try {
        const Module module = Module::Load(Module::DefaultPath());
        for (const CVersionLog::Entry& entry : CVersionLog::Entries()) {
            text +=
                entry.fileName + " " + entry.version + " (" + entry.category + ", " + entry.vendor + ")\n";
        }
    } catch (const HostError&) {
        return text;  // Without its module the command still has a version.
    }
    return text;
}

void Run(const Options& options) {
    ChooseInstallRoot(options);
    switch (options.action) {
        case Options::Action::Help:
            DocumentTarget::StandardOutput().Store(options.helpText);
            return;
        case Options::Action::Version:
            DocumentTarget::StandardOutput().Store(VersionText());
            return;
        case Options::Action::GetInfo:
        case Options::Action::GetPDInfo:
            Supervise({.resultDirectory = ResultDirectory(), .drawsProgress = WantsProgress(options)});
            Answer(options);
            return;
    }
}

ExitStatus RunAndReport(int count, const char* const* words) {
    try {
        Run(ParseOptions(count, words));
        return ExitStatus::Success;
    } catch (const HostError& error) {
        Say(error.what());
        return error.Status();
    } catch (const SandboxError& error) {
        Say(std::string("the scenario cannot take the tool's place: ") + error.what());
    } catch (const std::exception& error) {
        Say(std::string("the command cannot go on: ") + error.what());
    }
    return ExitStatus::Surroundings;
}

}  // namespace
}  // namespace host

int main(int count, char** words) {
    host::OccupyStandardDescriptors();
    return static_cast<int>(host::RunAndReport(count, words));
}
