#pragma once

#include "views/Views.h"

#include <cstddef>

namespace command {

/// What the terminal says itself; what most have where it says nothing.
[[nodiscard]] std::size_t ColumnsOf(int terminal) noexcept;

/// How tables are to look on standard output: as wide as the terminal (COLUMNS goes before what it says
/// itself) and in colours; neither where it is none, or where NO_COLOR or a dumb terminal forbid them.
[[nodiscard]] views::TerminalStyle StyleOfStandardOutput();

}  // namespace command
