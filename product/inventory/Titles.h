#pragma once

#include <string_view>

namespace inventory {

// Titles of the document's sections that are known in more than one place.
inline constexpr std::string_view kGeneral = "### General Information ###";
inline constexpr std::string_view kEnclosure = "### Enclosure Properties Information ###";
inline constexpr std::string_view kSmart = "### SMART Information ###";

}  // namespace inventory
