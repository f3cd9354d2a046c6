#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace basics {

/// The text as it may be shown to people: characters that steer a terminal or turn the direction of writing
/// become U+FFFD, bytes that are no UTF-8 too, tabs and line ends become blanks.
[[nodiscard]] std::string Printable(std::string_view text);

/// The same on one line, for messages: control characters as \n, \x1b and the like.
[[nodiscard]] std::string OneLine(const std::string& text);

/// Columns that a printable text takes on a terminal: two for a wide character, none for a mark that
/// combines.
[[nodiscard]] std::size_t WidthOf(std::string_view text);

/// Bytes of the longest front of a printable text that takes at most so many columns.
[[nodiscard]] std::size_t FittingFront(std::string_view text, std::size_t width);

/// The text in at most `width` columns, with an ellipsis where something was left out.
[[nodiscard]] std::string Shortened(std::string_view text, std::size_t width);

/// The same with the mark behind the ellipsis where one of those in the text would be cut off: "PD2 PD…!".
[[nodiscard]] std::string Shortened(std::string_view text, std::size_t width, char mark);

/// The text with blanks behind it, or before it, up to `width` columns.
[[nodiscard]] std::string PadRight(std::string text, std::size_t width);
[[nodiscard]] std::string PadLeft(std::string text, std::size_t width);

}  // namespace basics
