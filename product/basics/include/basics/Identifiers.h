#pragma once

#include <string_view>

namespace basics {

// Values of keys such as "Serial Number", which are to tell one piece of hardware from all others.

/// Whether all that have no such number share it: "N/A", "Unknown", "-", 0000000000000000, 0xFFFFFFFF, "Not Available". In any
/// letter case.
[[nodiscard]] bool StandsForNothing(std::string_view value);

/// Whether redaction has put it in a value's place: "serial-0001". The same word means different pieces of
/// hardware in different captures.
[[nodiscard]] bool IsRedacted(std::string_view value);

}  // namespace basics
