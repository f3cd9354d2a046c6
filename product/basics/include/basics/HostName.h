#pragma once

#include <string>

namespace basics {

/// What this machine calls itself: "storage7"; empty where the system does not say.
[[nodiscard]] std::string HostName();

}  // namespace basics
