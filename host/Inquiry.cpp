#include "host/Inquiry.h"

#include "host/ExitStatus.h"
#include "host/FailureText.h"

#include "qel/CFileUtility.h"

#include <unistd.h>

#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

namespace host {
namespace {

namespace fs = std::filesystem;

std::unique_ptr<Progress> ProgressFor(const Options& options) {
    return ShowsProgress(options) ? std::make_unique<Progress>(STDERR_FILENO) : nullptr;
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

/// The subcommand that fails when the method does; of those that call both, the one that would call it alone.
std::string SubcommandFor(bool isOfOneDrive, const Options& options) {
    switch (options.action) {
        case Options::Action::Capture:
            return isOfOneDrive ? "get-pd-info" : "get-info";
        case Options::Action::Show:
            return isOfOneDrive ? "smart" : "show";
        default:
            return options.subcommand;
    }
}

}  // namespace

Inquiry::Inquiry(const Options& options)
    : m_Options(options),
      m_Progress(ProgressFor(options)),
      m_Listener(m_Progress.get()),
      m_Module(Module::Load(Module::DefaultPath())) {}

std::string Inquiry::AskForServer() {
    return Ask("GetInfo", {});
}

std::string Inquiry::AskForDrive(const std::vector<Options::Parameter>& parameters) {
    return Ask("GetPDInfo", parameters);
}

std::string Inquiry::Ask(const char* method, const std::vector<Options::Parameter>& parameters) {
    const bool isOfOneDrive = !parameters.empty();
    FailureSetting setting = {SubcommandFor(isOfOneDrive, m_Options), isOfOneDrive,
                              m_Options.scenario.value_or(""), UnwritableResultDirectory()};
    m_Listener.Forget();
    MethodOutcome outcome = CallMethod(m_Module.Provider(), {method, parameters, m_Options.appKey});
    setting.command = m_Listener.LastCommand();
    if (outcome.status == WBEM_S_NO_ERROR && outcome.returnValue.value_or(0) != 0) {
        throw HostError(ExitStatus::MethodFailed,
                        DescribeMethodFailure(*outcome.returnValue, m_Listener.Reasons(), setting));
    }
    if (!outcome.document) {
        throw HostError(ExitStatus::StatusFailed, DescribeCallFailure(outcome, setting));
    }
    return std::move(*outcome.document);
}

void Inquiry::ShowDone(std::size_t done, std::size_t total) {
    if (m_Progress) {
        m_Progress->ShowDone(done, total);
    }
}

bool ShowsProgress(const Options& options) {
    const bool isTraceOnStandardError = options.traceLevels != 0 && !options.traceFile;
    return ::isatty(STDERR_FILENO) == 1 && !isTraceOnStandardError;
}

std::string ResultDirectory() {
    return CFileUtility::GetInstallPath(INSTALLPATH_ROOT) + "/tmp/MSRAID";
}

std::vector<DrivePlace> DrivePlaces(const inventory::Server& server) {
    std::vector<DrivePlace> places;
    for (const inventory::Controller& controller : server.controllers) {
        for (const inventory::Drive& drive : controller.drives) {
            places.push_back({controller.number, drive.enclosure, drive.slot});
        }
    }
    return places;
}

std::vector<Options::Parameter> DriveParameters(const std::string& controller, const std::string& enclosure,
                                                const std::string& slot) {
    return {{"CTRL", "CtrlNo", controller}, {"ENCL", "EnclNo", enclosure}, {"PD", "PDNo", slot}};
}

inventory::Document ReadDocument(const std::string& xml, const std::string& source) {
    try {
        return inventory::Document::Read(xml);
    } catch (const inventory::DocumentError& error) {
        throw HostError(ExitStatus::Surroundings, source + " is no RAID document: " + error.what());
    }
}

}  // namespace host
