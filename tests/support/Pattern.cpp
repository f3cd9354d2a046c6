#include "test_support/Pattern.h"

#include <regex>

namespace testsupport {

Match WholeMatch(const std::string& text, const std::string& pattern) {
    std::smatch match;
    return std::regex_match(text, match, std::regex(pattern)) ? Match(match.begin(), match.end()) : Match();
}

std::vector<Match> MatchesIn(const std::string& text, const std::string& pattern) {
    const std::regex regex(pattern);
    std::vector<Match> matches;
    for (std::sregex_iterator at(text.begin(), text.end(), regex), end; at != end; ++at) {
        matches.emplace_back(at->begin(), at->end());
    }
    return matches;
}

std::string Replaced(const std::string& text, const std::string& pattern, const std::string& replacement) {
    return std::regex_replace(text, std::regex(pattern), replacement);
}

}  // namespace testsupport
