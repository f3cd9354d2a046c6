#pragma once

#include <string>

namespace msraid {

/// Whether the text has a decimal digit there. Does not depend on the locale; beyond the end there is none.
[[nodiscard]] inline bool IsDigitAt(const std::string& text, std::size_t at) {
    return at < text.size() && text[at] >= '0' && text[at] <= '9';
}

}  // namespace msraid
