#include "inventory/Measure.h"

#include "basics/Words.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace inventory {
namespace {

using basics::IsDigit;
using basics::IsLetter;
using basics::Trimmed;

constexpr std::string_view kDegreeSign = "\xC2\xB0";
constexpr std::string_view kDegreeWords[] = {kDegreeSign, "degrees", "deg"};

/// Takes a decimal number off the front of a text; nothing, and the text as it was, where there is none.
std::optional<double> TakeNumber(std::string_view& text) {
    const std::size_t digits = text.starts_with('-') ? 1 : 0;
    if (text.size() <= digits || !IsDigit(text[digits])) {  // from_chars would take "inf" and "nan", too.
        return std::nullopt;
    }
    double number = 0;
    const auto [end, error] =
        std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
    if (error != std::errc()) {
        return std::nullopt;
    }
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return number;
}

std::string_view WithoutDegreeWord(std::string_view unit) {
    for (const std::string_view word : kDegreeWords) {
        if (unit.starts_with(word)) {
            return Trimmed(unit.substr(word.size()));
        }
    }
    return unit;
}

}  // namespace

std::optional<Measure> MeasureFrom(std::string_view text) {
    text = Trimmed(text);
    const std::optional<double> number = TakeNumber(text);
    const bool isEnd = text.empty() || text.starts_with(' ') || text.starts_with('%');
    const std::string_view unit = Trimmed(text);
    if (!number || !isEnd || (unit != "%" && !std::all_of(unit.begin(), unit.end(), IsLetter))) {
        return std::nullopt;
    }
    return Measure{*number, std::string(unit)};
}

std::optional<Measure> MeasureFrom(std::string_view text, std::string_view column) {
    constexpr std::string_view kBits = "Flag";
    return basics::IsSameWord(column, kBits) ? std::nullopt : MeasureFrom(text);
}

std::optional<std::uint64_t> CountFrom(std::string_view text) {
    return basics::NumberFrom<std::uint64_t>(Trimmed(text));
}

std::optional<std::uint64_t> BytesFrom(std::string_view text) {
    constexpr std::string_view kUnits[] = {"B", "KB", "MB", "GB", "TB", "PB"};
    constexpr double kStep = 1024;
    constexpr double kMost = 1e18;
    const std::optional<Measure> measure = MeasureFrom(text);
    if (!measure || measure->number < 0) {
        return std::nullopt;
    }
    double bytes = measure->number;
    for (const std::string_view unit : kUnits) {
        if (basics::IsSameWord(measure->unit, unit)) {
            return bytes < kMost ? std::optional(static_cast<std::uint64_t>(std::llround(bytes)))
                                 : std::nullopt;
        }
        bytes *= kStep;
    }
    return std::nullopt;
}

std::optional<double> CelsiusFrom(std::string_view text) {
    text = Trimmed(text);
    const std::optional<double> number = TakeNumber(text);
    const std::string_view unit = WithoutDegreeWord(Trimmed(text));
    const bool isWord = unit.size() > 1 && IsLetter(unit[1]);
    if (!number) {
        return std::nullopt;
    }
    if (unit.empty() || (unit.starts_with('C') && !isWord) || unit.starts_with("Celsius")) {
        return number;
    }
    if ((unit.starts_with('F') && !isWord) || unit.starts_with("Fahrenheit")) {
        constexpr double kHundredths = 100;
        return std::round((*number - 32) / 1.8 * kHundredths) / kHundredths;
    }
    return std::nullopt;
}

}  // namespace inventory
