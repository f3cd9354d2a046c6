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

}  // namespace views
