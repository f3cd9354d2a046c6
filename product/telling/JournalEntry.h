#pragma once

#include "Message.h"
#include "telling/Channel.h"

#include <string>

namespace telling {

/// Writes a message to the journal, or to standard error: with a priority where the system's manager reads it
/// ("<2>CRITICAL began: ..."), with the time for people else. Empty, or why it could not. Does not wait for
/// whoever does not read.
[[nodiscard]] std::string Tell(const Journal& journal, const Message& message);

}  // namespace telling
