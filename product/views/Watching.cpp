#include "views/Views.h"

#include <algorithm>

namespace views {

inventory::Level LevelOf(const inventory::Health& health, const Watching* watching) {
    inventory::Level level = health.level;
    if (watching != nullptr) {
        for (const inventory::Finding& finding : watching->standing) {
            level = std::max(level, finding.level);
        }
        if (!watching->failure.empty()) {
            level = std::max(level, inventory::Level::Unknown);
        }
    }
    return level;
}

std::string HeadlineOf(const inventory::Health& health, const Watching* watching) {
    std::string headline = Headline(health);
    if (watching == nullptr) {
        return headline;
    }
    if (const std::size_t standing = watching->standing.size(); standing > 0) {
        headline =
            std::to_string(standing) + " not well and in no report any more; what is reported: " + headline;
    }
    return watching->failure.empty() ? headline : "could not be asked; before that: " + headline;
}

}  // namespace views
