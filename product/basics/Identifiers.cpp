#include "basics/Identifiers.h"

#include "basics/Words.h"

#include <algorithm>
#include <iterator>

namespace basics {
namespace {

constexpr std::string_view kFillers[] = {
    "none",       "null",      "unknown",     "unavailable",    "unsupported",
    "unassigned", "undefined", "unspecified", "absent",         "n/a",
    "empty",      "invalid",   "default",     "default string", "system serial number"};
constexpr std::string_view kFillerFronts[] = {"not ", "no ", "to be filled"};

constexpr std::string_view kRedactedKinds[] = {"serial-", "wwn-"};
constexpr std::size_t kFewestDigits = 4;

}  // namespace

bool StandsForNothing(std::string_view value) {
    const std::string lower = InLowerCase(Trimmed(value));
    std::string_view rest = lower;
    if (rest.starts_with("0x")) {
        rest.remove_prefix(2);
    }
    // "00:00:00:00" too; but "7" may be somebody's.
    const bool isOneOfSome = rest.size() == 1 && IsAlphanumeric(rest.front()) && rest != "0";
    const bool isOneCharacter = !isOneOfSome && std::all_of(rest.begin(), rest.end(), [rest](char each) {
        return each == rest.front() || !IsAlphanumeric(each);
    });
    return isOneCharacter ||
           std::find(std::begin(kFillers), std::end(kFillers), lower) != std::end(kFillers) ||
           std::any_of(std::begin(kFillerFronts), std::end(kFillerFronts),
                       [&lower](std::string_view front) { return lower.starts_with(front); });
}

bool IsRedacted(std::string_view value) {
    return std::any_of(std::begin(kRedactedKinds), std::end(kRedactedKinds), [&](std::string_view kind) {
        const std::string_view number = value.substr(std::min(kind.size(), value.size()));
        return value.starts_with(kind) && number.size() >= kFewestDigits &&
               std::all_of(number.begin(), number.end(), IsDigit);
    });
}

}  // namespace basics
