#pragma once

#include <string>
#include <vector>

namespace testsupport {

// Regular expressions, as std::regex has them; compiled in one place, since they take longer to compile than
// the tests that use them.

/// A match and what its groups are.
using Match = std::vector<std::string>;

/// The match of the whole text; empty when it has none.
[[nodiscard]] Match WholeMatch(const std::string& text, const std::string& pattern);

/// Every match in the text.
[[nodiscard]] std::vector<Match> MatchesIn(const std::string& text, const std::string& pattern);

[[nodiscard]] std::string Replaced(const std::string& text, const std::string& pattern,
                                   const std::string& replacement);

}  // namespace testsupport
