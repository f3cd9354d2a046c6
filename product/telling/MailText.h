#pragma once

#include "Message.h"
#include "telling/Channel.h"

#include <string>
#include <string_view>

namespace telling {

/// "storage@example.org", "root": one mailbox without a name, comment or quotes.
[[nodiscard]] bool IsMailAddress(std::string_view address);

/// The whole mail as sendmail -t reads it, in lines that end with a line feed alone. The same message gives
/// the same text whenever it is tried, with the same Message-ID:
///
///     To: storage@example.org
///     Subject: storage7: CRITICAL began: controller 0, RG1, PD9 in enclosure 16 slot 1: FAILED
///     Date: Sat, 05 Apr 2031 06:07:08 +0000
///     Message-ID: <20310405T060708Z-3f2a9c41@storage7>
[[nodiscard]] std::string MailTextOf(const Mail& mail, const Message& message);

}  // namespace telling
