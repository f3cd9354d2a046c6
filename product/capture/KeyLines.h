#pragma once

#include "basics/Words.h"

#include <algorithm>
#include <string_view>

namespace capture {

/// Calls `see(key, value)` for every line such as " Product Name : Gate SR-8e" of what the tool printed; both
/// are trimmed and lead into the text.
template <typename See>
void ForEachKeyLine(std::string_view text, See see) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        if (const std::size_t colon = line.find(':'); colon != std::string_view::npos) {
            see(basics::Trimmed(line.substr(0, colon)), basics::Trimmed(line.substr(colon + 1)));
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

}  // namespace capture
