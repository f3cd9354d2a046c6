#include "Identifiers.h"

#include "basics/Words.h"
#include "http/Message.h"

#include <algorithm>

namespace redfish {
namespace {

bool IsSafe(char character) {
    return basics::IsAlphanumeric(character) || character == '-' || character == '_' || character == '.';
}

/// What was lost in the cleaning must not make two different texts alike for good: a part of the text's hash
/// follows it. "." and ".." would be something else in a path.
std::string SafeOf(std::string_view wanted) {
    constexpr std::size_t kLongest = 40;
    constexpr std::size_t kHashDigits = 8;
    std::string safe(wanted.substr(0, kLongest));
    std::replace_if(
        safe.begin(), safe.end(), [](char each) { return !IsSafe(each); }, '-');
    if (safe.empty() || safe.front() == '.') {
        safe.insert(0, 1, '_');
    }
    if (safe != wanted) {
        safe += '-' + http::EtagOf(wanted).substr(1, kHashDigits);
    }
    return safe;
}

}  // namespace

std::string Identifiers::Next(std::string_view wanted) {
    const std::string safe = SafeOf(wanted);
    std::string next = safe;
    std::size_t& count = m_Counts.try_emplace(safe, 1).first->second;
    while (!m_Taken.insert(next).second) {
        next = safe + '-' + std::to_string(++count);
    }
    return next;
}

}  // namespace redfish
