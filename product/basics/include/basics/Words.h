#pragma once

#include <charconv>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace basics {

// Texts taken apart and put together. Letters are those of ASCII, whatever the locale is.

[[nodiscard]] constexpr bool IsDigit(char character) {
    return '0' <= character && character <= '9';
}
[[nodiscard]] constexpr bool IsLetter(char character) {
    return ('a' <= character && character <= 'z') || ('A' <= character && character <= 'Z');
}
[[nodiscard]] constexpr bool IsAlphanumeric(char character) {
    return IsDigit(character) || IsLetter(character);
}

[[nodiscard]] std::string InLowerCase(std::string_view text);

/// Whether two texts differ in nothing but the case of letters; without the locale, in which some letters
/// have no other case.
[[nodiscard]] bool IsSameWord(std::string_view one, std::string_view other);

/// The text without white space at its ends.
[[nodiscard]] std::string_view Trimmed(std::string_view text);

/// What stands between the characters of `between`, without what is empty.
[[nodiscard]] std::vector<std::string_view> Words(std::string_view text, std::string_view between = " ");

/// The number that the whole text is; nothing for any other text.
template <typename Number>
[[nodiscard]] std::optional<Number> NumberFrom(std::string_view text) {
    Number number = 0;
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    return read.ec == std::errc() && read.ptr == end ? std::optional(number) : std::nullopt;
}

/// The number with zeros before it up to that many digits: "0x000000a1" without its front.
[[nodiscard]] std::string Digits(std::size_t number, std::size_t width, int base = 10);

/// "one, two, three": what `textOf` gives for each of them, with `between` behind the first that is not
/// empty.
template <typename Parts, typename TextOf = std::identity>
[[nodiscard]] std::string Joined(const Parts& parts, std::string_view between = ", ", TextOf textOf = {}) {
    std::string joined;
    for (const auto& part : parts) {
        joined += joined.empty() ? "" : between;
        joined += std::invoke(textOf, part);
    }
    return joined;
}

}  // namespace basics
