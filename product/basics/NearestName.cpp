#include "basics/NearestName.h"

#include <algorithm>
#include <cstddef>

namespace basics {
namespace {

std::string_view LastPart(std::string_view name) {
    return name.substr(name.rfind('/') + 1);
}

/// How many slips make one word of the other: a letter too many, one too few, a wrong one, or two that
/// changed places.
std::size_t SlipsBetween(std::string_view one, std::string_view other) {
    std::vector<std::vector<std::size_t>> slips(one.size() + 1, std::vector<std::size_t>(other.size() + 1));
    for (std::size_t row = 0; row <= one.size(); ++row) {
        for (std::size_t column = 0; column <= other.size(); ++column) {
            if (row == 0 || column == 0) {
                slips[row][column] = row + column;
                continue;
            }
            const std::size_t wrong = one[row - 1] == other[column - 1] ? 0 : 1;
            std::size_t& least = slips[row][column];
            least = std::min(
                {slips[row - 1][column] + 1, slips[row][column - 1] + 1, slips[row - 1][column - 1] + wrong});
            if (row > 1 && column > 1 && one[row - 1] == other[column - 2] &&
                one[row - 2] == other[column - 1]) {
                least = std::min(least, slips[row - 2][column - 2] + 1);
            }
        }
    }
    return slips.back().back();
}

}  // namespace

std::string NearestName(const std::vector<std::string>& names, std::string_view word) {
    // More slips than a third of the letters make another word.
    std::size_t tooMany = std::max<std::size_t>(LastPart(word).size() / 3, 1) + 1;
    std::string nearest;
    for (const std::string& name : names) {
        const std::size_t slips = std::min(SlipsBetween(word, name), SlipsBetween(word, LastPart(name)));
        if (slips < tooMany) {
            tooMany = slips;
            nearest = name;
        }
    }
    return nearest;
}

}  // namespace basics
