#pragma once

#include "views/Views.h"

namespace command {

/// How tables are to look on standard output: as wide as the terminal (COLUMNS goes before what it says
/// itself) and in colours; neither where it is none, or where NO_COLOR or a dumb terminal forbid them.
[[nodiscard]] views::TerminalStyle StyleOfStandardOutput();

}  // namespace command
