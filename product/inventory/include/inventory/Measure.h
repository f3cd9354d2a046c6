#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace inventory {

/// A number as reports print it, with the unit behind it: "31 C", "20411 Hours", "000000000031".
struct Measure {
    double number = 0;
    std::string unit;  ///< one word; empty without one
};

/// Nothing for a text that is more, or other, than a decimal number and a unit: "000B", "5/10", "N/A", "nan".
[[nodiscard]] std::optional<Measure> MeasureFrom(std::string_view text);

/// That of a cell in a table of SMART data; nothing in the column "Flag", whose digits are a pattern of bits.
[[nodiscard]] std::optional<Measure> MeasureFrom(std::string_view text, std::string_view column);

/// A whole number, "12"; nothing for any other text.
[[nodiscard]] std::optional<std::uint64_t> CountFrom(std::string_view text);

/// Bytes of "558.406 GB" or "64 KB". The tools count by 1024, as is seen from a drive that is sold as 600 GB
/// and told as 558.406 GB. Nothing without a unit that is known.
[[nodiscard]] std::optional<std::uint64_t> BytesFrom(std::string_view text);

/// Degrees Celsius of "31 C", "31C", "31 degrees C" or "88 F"; nothing where there is no temperature. A
/// number without a unit is taken for Celsius.
[[nodiscard]] std::optional<double> CelsiusFrom(std::string_view text);

}  // namespace inventory
