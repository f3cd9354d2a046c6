#pragma once

#include "Errand.h"
#include "Message.h"
#include "telling/Channel.h"

#include <string>
#include <vector>

namespace telling {

/// Why a line is no header that may be sent along; empty where it is one.
[[nodiscard]] std::string WrongWithHeader(const std::string& line);

/// Those of the configuration and of the file, which is read anew. Throws basics::Failure.
[[nodiscard]] std::vector<std::string> HeadersOf(const Http& http);

/// The work of an errand: posts a message, with no rights left. True for any status of 200 to 299; what is
/// said is "HTTP 204", or what went wrong, also how far it came when it is ended.
[[nodiscard]] bool Post(const Http& http, const Message& message, const Errand::Say& say);

}  // namespace telling
