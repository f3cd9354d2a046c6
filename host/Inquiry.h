#pragma once

#include "host/CallListener.h"
#include "host/MethodCall.h"
#include "host/Module.h"
#include "host/Options.h"
#include "host/Progress.h"

#include "inventory/Snapshot.h"

#include <memory>
#include <string>
#include <vector>

namespace host {

/// Asks the provider for documents, as often as wanted: loads the module, shows progress where standard error
/// is a terminal, and watches the tool's runs. One at a time in a process, and not moved. What fails is
/// thrown as HostError.
class Inquiry final {
  public:
    /// `options` must outlive it.
    explicit Inquiry(const Options& options);
    Inquiry(const Inquiry&) = delete;
    Inquiry& operator=(const Inquiry&) = delete;

    /// The XML document of the server.
    [[nodiscard]] std::string AskForServer();

    /// The XML document of one drive: CTRL, ENCL and PD.
    [[nodiscard]] std::string AskForDrive(const std::vector<Options::Parameter>& parameters);

    /// How far the work is, of which the calls are part; for the progress.
    void ShowDone(std::size_t done, std::size_t total);

    [[nodiscard]] inventory::ToolRuns Runs() const { return m_Listener.Runs(); }

  private:
    [[nodiscard]] std::string Ask(const char* method, const std::vector<Options::Parameter>& parameters);

    const Options& m_Options;
    std::unique_ptr<Progress> m_Progress;
    CallListener m_Listener;
    Module m_Module;
};

/// Whether an inquiry draws its progress on standard error.
[[nodiscard]] bool ShowsProgress(const Options& options);

/// Where the module puts result files.
[[nodiscard]] std::string ResultDirectory();

/// Where a drive is, in the words of its report; empty where that does not tell.
struct DrivePlace {
    std::string controller, enclosure, slot;
    [[nodiscard]] bool IsKnown() const { return !controller.empty() && !enclosure.empty() && !slot.empty(); }
};

/// Of all drives, in the order of the document.
[[nodiscard]] std::vector<DrivePlace> DrivePlaces(const inventory::Server& server);

/// The three parameters that name a drive to GetPDInfo.
[[nodiscard]] std::vector<Options::Parameter> DriveParameters(const std::string& controller,
                                                              const std::string& enclosure,
                                                              const std::string& slot);

/// A document as the module or a file gives it, read. Throws HostError(Surroundings) with `source` in it.
[[nodiscard]] inventory::Document ReadDocument(const std::string& xml, const std::string& source);

}  // namespace host
