#include "ServerInquiry.h"

#include <unistd.h>

namespace command {
namespace {

calls::InquiryRequest RequestWith(const Options& options, calls::ProgressReceiver* progress) {
    calls::InquiryRequest request = InquiryRequestFor(options);
    request.progress = progress;
    return request;
}

}  // namespace

// Of the subcommands that call both methods, each is told by the one that would call it alone.
calls::InquiryRequest InquiryRequestFor(const Options& options) {
    calls::InquiryRequest request;
    request.appKey = options.appKey;
    request.scenario = options.scenario.value_or("");
    if (options.action == Options::Action::Show) {
        request.serverCall = "show";
        request.driveCall = "smart";
    } else if (options.action != Options::Action::Capture) {
        request.serverCall = request.driveCall = options.subcommand;
    }
    return request;
}

bool ShowsProgress(const Options& options) {
    const bool isTraceOnStandardError = options.traceLevels != 0 && !options.traceFile;
    return ::isatty(STDERR_FILENO) == 1 && !isTraceOnStandardError;
}

std::unique_ptr<Progress> ProgressFor(const Options& options) {
    return ShowsProgress(options) ? std::make_unique<Progress>(STDERR_FILENO) : nullptr;
}

ServerInquiry::ServerInquiry(const Options& options)
    : m_Progress(ProgressFor(options)),
      m_Request(RequestWith(options, m_Progress.get())),
      m_Inquiry(m_Request) {}

}  // namespace command
