#pragma once

#include <string_view>

namespace inventory {

/// How well something is, from well to bad: the worst of a server's parts is how well the server is. The
/// rules stand in docs/health.md.
enum class Level { Ok, Unknown, Warning, Critical };

/// "OK", "UNKNOWN", "WARNING", "CRITICAL".
[[nodiscard]] std::string_view NameOf(Level level);

/// The number that monitoring plug-ins have for a level: 0 well, 1 warning, 2 critical, 3 unknown.
[[nodiscard]] int PlugInStatusOf(Level level);

}  // namespace inventory
