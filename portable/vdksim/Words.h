#pragma once

#include <charconv>
#include <concepts>
#include <optional>
#include <string_view>
#include <system_error>
#include <vector>

// Helpers for the simulator's small languages: words separated by blanks, and plain decimal numbers.
namespace vdksim {

constexpr std::string_view kBlanks = " \t\r\n";

[[nodiscard]] inline std::string_view Trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// The words of one line, up to a '#' that starts a word. The views live as long as the line.
[[nodiscard]] inline std::vector<std::string_view> WordsOf(std::string_view line) {
    std::vector<std::string_view> words;
    for (line = Trimmed(line); !line.empty() && line.front() != '#';) {
        const auto length = line.find_first_of(kBlanks);
        words.push_back(line.substr(0, length));
        line = length == std::string_view::npos ? std::string_view{} : Trimmed(line.substr(length));
    }
    return words;
}

// A whole number made of digits only; nothing for a sign, a blank, no digit, or one that does not fit.
template <std::unsigned_integral Number>
[[nodiscard]] std::optional<Number> WholeNumber(std::string_view text) {
    Number number{};
    const char* end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, number);
    if (text.empty() || error != std::errc{} || stopped != end) {
        return std::nullopt;
    }
    return number;
}

}  // namespace vdksim
