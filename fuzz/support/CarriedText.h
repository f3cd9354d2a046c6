#pragma once

#include <string_view>

namespace fuzzing {

/// Whether `carried` is what a parser must give back for a text of any bytes: the text itself, with U+FFFD
/// for what is no UTF-8 (one for each maximal subpart) or no character of XML 1.0.
[[nodiscard]] bool IsCarriedAs(std::string_view text, std::string_view carried);

}  // namespace fuzzing
