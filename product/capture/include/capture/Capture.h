#pragma once

#include "calls/Inquiry.h"

#include <memory>
#include <string>

namespace capture {

/// What is to be captured, and where to.
struct CaptureRequest {
    std::string folder;         ///< new, or empty
    bool isRedacted = false;    ///< serial numbers and world-wide names become words
    std::string scenario = {};  ///< what is captured in this server's place; "" for the server
    calls::InquiryRequest inquiry = {};
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
    ~Capture();

    /// Asks and writes; what was recorded, in one line. `progress` may be null. Where a method failed Failure
    /// is thrown, when all is written.
    [[nodiscard]] std::string Run(calls::ProgressReceiver* progress);

  private:
    class Work;
    std::unique_ptr<Work> m_Work;
};

}  // namespace capture
