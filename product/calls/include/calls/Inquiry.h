#pragma once

#include "calls/Drives.h"
#include "calls/Module.h"
#include "calls/ProgressReceiver.h"
#include "inventory/Snapshot.h"

#include <memory>
#include <optional>
#include <string>

namespace calls {

class CallListener;

/// What an inquiry has to know of whoever asks.
struct InquiryRequest {
    std::optional<std::string> appKey = {};  ///< that the caller carries, if any
    std::string serverCall = "get-info";     ///< what is said to fail when GetInfo does
    std::string driveCall = "get-pd-info";   ///< and when GetPDInfo does
    std::string scenario = {};               ///< for advice: what answers in this server's place; "" for none
    ProgressReceiver* progress = nullptr;    ///< not owned, must outlive the inquiry; null: nobody
};

/// Asks the provider for documents, as often as wanted: loads the module and watches the tool's runs. One at
/// a time in a process, and not moved. What fails is thrown as Failure.
class Inquiry final {
  public:
    explicit Inquiry(InquiryRequest request);
    Inquiry(const Inquiry&) = delete;
    Inquiry& operator=(const Inquiry&) = delete;
    ~Inquiry();

    /// The XML document of the server.
    [[nodiscard]] std::string AskForServer();

    /// The XML document of one drive.
    [[nodiscard]] std::string AskForDrive(const DrivePlace& drive);

    /// How far the work is, of which the calls are part; for the progress.
    void ShowDone(std::size_t done, std::size_t total);

    [[nodiscard]] inventory::ToolRuns Runs() const;

  private:
    [[nodiscard]] std::string Ask(const std::optional<DrivePlace>& drive);

    const InquiryRequest m_Request;
    std::unique_ptr<CallListener> m_Listener;
    Module m_Module;
};

/// A document as the module or a file gives it, read. Throws Failure(Surroundings) with `source` in it.
[[nodiscard]] inventory::Document ReadDocument(const std::string& xml, const std::string& source);

}  // namespace calls
