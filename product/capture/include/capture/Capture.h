#pragma once

#include "basics/Failure.h"
#include "calls/Inquiry.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace capture {

/// What is to be captured, and where to.
struct CaptureRequest {
    std::string folder;       ///< new, or empty, or of a capture that was interrupted
    bool isRedacted = false;  ///< what names hardware, hosts, addresses and the like becomes words
    std::vector<std::string> words = {};  ///< and so do these
    std::string scenario = {};            ///< what is captured in this server's place; "" for the server
    std::string host = {};                ///< what the server is called; "" where that is not known
    calls::InquiryRequest inquiry = {};
};

/// What came of it.
struct Captured {
    std::string told;                             ///< what was recorded, in lines for people
    std::optional<basics::Failure> failure = {};  ///< of a method; what was recorded is there all the same
};

/// Records what the tool answers to all that the module asks, through both methods and for every drive that
/// the server's document names, as a scenario that answers in the same way.
///
/// A method that fails does not end it: such servers are what it is for. Nothing is written but a mark before
/// all is asked and, where that is wanted, redacted.
class Capture final {
  public:
    /// Makes the folder. To be called before the view of the file system changes. `records` is an empty
    /// private folder for the time being.
    Capture(CaptureRequest request, const std::string& records);

    /// Removes the folder if it was made for this capture and nothing was recorded.
    ~Capture();

    /// Asks and writes. `progress` may be null. Throws basics::Failure where nothing was recorded or it
    /// cannot be written.
    [[nodiscard]] Captured Run(calls::ProgressReceiver* progress);

  private:
    class Work;
    std::unique_ptr<Work> m_Work;
};

}  // namespace capture
