#include "basics/Identifiers.h"

#include "basics/Words.h"

#include <algorithm>
#include <iterator>

namespace basics {
namespace {

constexpr std::string_view kFillers[] = {"none",          "null",         "unknown",     "not available",
                                         "not supported", "unavailable",  "unsupported", "not present",
                                         "not installed", "unspecified",  "absent",      "default string",
                                         "n/a",           "not reported", "empty",       "invalid"};

constexpr std::string_view kRedactedKinds[] = {"serial-", "wwn-"};
constexpr std::size_t kFewestDigits = 4;

}  // namespace

bool StandsForNothing(std::string_view value) {
    const std::string lower = InLowerCase(Trimmed(value));
    std::string_view digits = lower;
    if (digits.starts_with("0x")) {
        digits.remove_prefix(2);
    }
    return std::all_of(digits.begin(), digits.end(), [&](char each) { return each == digits.front(); }) ||
           std::find(std::begin(kFillers), std::end(kFillers), lower) != std::end(kFillers);
}

bool IsRedacted(std::string_view value) {
    return std::any_of(std::begin(kRedactedKinds), std::end(kRedactedKinds), [&](std::string_view kind) {
        const std::string_view number = value.substr(std::min(kind.size(), value.size()));
        return value.starts_with(kind) && number.size() >= kFewestDigits &&
               std::all_of(number.begin(), number.end(), IsDigit);
    });
}

}  // namespace basics
