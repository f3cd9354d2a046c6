#pragma once

#include <cstddef>
#include <string_view>

namespace convlib {

/// What stands at the front of a text of unknown bytes: a character, or bytes that are none.
struct Utf8Unit {
    bool isCharacter;
    char32_t character;  ///< 0 when the bytes are no character
    std::size_t length;  ///< bytes taken, at least one
};

/// Reads the front of `text`, which is not empty. Bytes that are no character (overlong forms, surrogates,
/// beyond U+10FFFF, stray or missing continuations) are taken in maximal subparts, as Unicode recommends for
/// replacement: the longest start of a well-formed sequence counts as one unit, any other byte as a unit of
/// its own.
[[nodiscard]] Utf8Unit ReadUtf8(std::string_view text);

}  // namespace convlib
