#pragma once

#include "host/CaptureFolder.h"
#include "host/ExitStatus.h"
#include "host/Inquiry.h"
#include "host/Options.h"
#include "host/Recording.h"
#include "host/Redaction.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace host {

/// Records what the tool answers to all that the module asks, through both methods and for every drive that
/// the server's document names, as a scenario that answers in the same way.
///
/// A method that fails does not end it: such servers are what it is for. Nothing is written but a mark before
/// all is asked and, where that is wanted, redacted.
class Capture final {
  public:
    /// Makes the folder. To be called before the view of the file system changes; `options` must outlive it.
    /// `records` is an empty private folder for the time being.
    Capture(const Options& options, const std::string& records);

    /// Asks and writes; what was recorded, in one line. Where a method failed HostError is thrown, when all
    /// is written.
    [[nodiscard]] std::string Run();

  private:
    struct MethodFailure {
        std::string call;  ///< "drive 0 252 3: "; "" where it is the server
        HostError error;
    };

    void Ask();
    void AskForDrives(Inquiry& inquiry, const std::string& document);
    [[nodiscard]] std::optional<std::string> Call(const std::string& name,
                                                  const std::function<std::string()>& method);
    void Write();
    [[nodiscard]] std::string Readme() const;
    [[nodiscard]] std::string Answers(const std::string& arguments) const;
    void TellFailure() const;

    const Options& m_Options;
    CaptureFolder m_Folder;
    Recording m_Recording;
    Redaction m_Redaction;
    std::vector<MethodFailure> m_Failures;
    std::vector<std::string> m_Notes;
    std::size_t m_DriveCount = 0;
};

}  // namespace host
