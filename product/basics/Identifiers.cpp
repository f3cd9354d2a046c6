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

// Fronts of words; no other word ends so, or else one must not go on there: "ghost-0001" is somebody's own.
constexpr std::string_view kRedactedKinds[] = {"serial-", "wwn-", "uuid-", "licence-"};
constexpr std::string_view kRedactedEverydayKinds[] = {"tag-", "host-", "ip-", "mac-", "mail-", "word-"};
constexpr std::size_t kFewestDigits = 4;

bool HoldsWord(std::string_view text, std::string_view kind, bool mayGoOn) {
    for (std::size_t at = text.find(kind); at != std::string_view::npos; at = text.find(kind, at + 1)) {
        const std::string_view number = text.substr(at + kind.size());
        const auto end = std::find_if_not(number.begin(), number.end(), IsDigit);
        if (static_cast<std::size_t>(end - number.begin()) >= kFewestDigits &&
            (mayGoOn || at == 0 || !IsLetter(text[at - 1]))) {
            return true;
        }
    }
    return false;
}

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
    return std::any_of(std::begin(kRedactedKinds), std::end(kRedactedKinds),
                       [value](std::string_view kind) { return HoldsWord(value, kind, true); }) ||
           std::any_of(std::begin(kRedactedEverydayKinds), std::end(kRedactedEverydayKinds),
                       [value](std::string_view kind) { return HoldsWord(value, kind, false); });
}

}  // namespace basics
