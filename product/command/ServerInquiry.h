#pragma once

#include "Options.h"
#include "Progress.h"
#include "calls/Inquiry.h"

#include <memory>

namespace command {

/// What the command line tells an inquiry.
[[nodiscard]] calls::InquiryRequest InquiryRequestFor(const Options& options);

/// Whether the work's progress is drawn on standard error.
[[nodiscard]] bool ShowsProgress(const Options& options);

/// The progress on standard error; null where it is not drawn.
[[nodiscard]] std::unique_ptr<Progress> ProgressFor(const Options& options);

/// An inquiry that draws its progress, which is gone from the terminal when this is.
class ServerInquiry final {
  public:
    explicit ServerInquiry(const Options& options);

    calls::Inquiry* operator->() { return &m_Inquiry; }

    /// For further inquiries, with the same progress; not to be used when this is gone.
    [[nodiscard]] const calls::InquiryRequest& Request() const { return m_Request; }

  private:
    std::unique_ptr<Progress> m_Progress;
    calls::InquiryRequest m_Request;
    calls::Inquiry m_Inquiry;
};

}  // namespace command
