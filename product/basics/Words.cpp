#include "basics/Words.h"

#include <algorithm>
#include <array>
#include <limits>

namespace basics {

namespace {

char LowerOf(char character) {
    return 'A' <= character && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

}  // namespace

std::string InLowerCase(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), LowerOf);
    return lower;
}

bool IsSameWord(std::string_view one, std::string_view other) {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](char left, char right) { return LowerOf(left) == LowerOf(right); });
}

std::string_view Trimmed(std::string_view text) {
    constexpr std::string_view kWhite = " \t\r\n\v\f";
    text.remove_prefix(std::min(text.find_first_not_of(kWhite), text.size()));
    return text.substr(0, text.find_last_not_of(kWhite) + 1);
}

std::vector<std::string_view> Words(std::string_view text, std::string_view between) {
    std::vector<std::string_view> words;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find_first_of(between), text.size());
        if (end > 0) {
            words.push_back(text.substr(0, end));
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return words;
}

std::string Digits(std::size_t number, std::size_t width, int base) {
    std::array<char, std::numeric_limits<std::size_t>::digits> digits{};
    const char* const end = std::to_chars(digits.begin(), digits.end(), number, base).ptr;
    const auto count = static_cast<std::size_t>(end - digits.data());
    return std::string(width > count ? width - count : 0, '0').append(digits.data(), count);
}

}  // namespace basics
