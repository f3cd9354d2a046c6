#pragma once

#include <algorithm>
#include <cctype>
#include <string>
#include <string_view>

namespace capture {

/// The text without blanks at its ends.
[[nodiscard]] inline std::string_view Trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\n\v\f";
    const std::size_t first = std::min(text.find_first_not_of(kBlanks), text.size());
    text.remove_prefix(first);
    return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

[[nodiscard]] inline std::string InLowerCase(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char character) { return static_cast<char>(std::tolower(character)); });
    return lower;
}

/// Calls `see(key, value)` for every line such as " Product Name : Gate SR-8e" of what the tool printed; both
/// are trimmed and lead into the text.
template <typename See>
void ForEachKeyLine(std::string_view text, See see) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        if (const std::size_t colon = line.find(':'); colon != std::string_view::npos) {
            see(Trimmed(line.substr(0, colon)), Trimmed(line.substr(colon + 1)));
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

}  // namespace capture
