#pragma once

#include "Look.h"
#include "history/History.h"

#include <string>
#include <vector>

namespace views {

// Words that the formats of the history share.

/// "2031-04-05 06:07:08".
[[nodiscard]] std::string TimeText(history::TimePoint time);

/// "FAILED"; the level where the part tells no state, "not reported" while it is in no report.
[[nodiscard]] std::string StateText(const history::State& state);
[[nodiscard]] Look LookOf(const history::State& state);

/// Counters that are shown also where they do not change.
[[nodiscard]] bool IsMain(const history::Series& series);

/// Those first, and the others in their order. Leads into the list.
[[nodiscard]] std::vector<const history::Series*> MainFirst(const std::vector<history::Series>& all);

/// "31 parts, 2 of them in no report any more".
[[nodiscard]] std::string CountsOf(const history::Overview& overview);

}  // namespace views
