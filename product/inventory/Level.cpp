#include "inventory/Level.h"

#include <cstddef>

namespace inventory {

std::string_view NameOf(Level level) {
    constexpr std::string_view kNames[] = {"OK", "UNKNOWN", "WARNING", "CRITICAL"};
    return kNames[static_cast<std::size_t>(level)];
}

int PlugInStatusOf(Level level) {
    constexpr int kStatuses[] = {0, 3, 1, 2};
    return kStatuses[static_cast<std::size_t>(level)];
}

}  // namespace inventory
