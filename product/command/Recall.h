#pragma once

#include "Options.h"
#include "basics/DocumentTarget.h"
#include "history/History.h"

#include <chrono>
#include <optional>
#include <string_view>

namespace command {

/// The subcommand history: the parts with their states, or what happened to one of them. Throws
/// basics::Failure: where the history cannot be read, and (Use) for a part that nobody knows.
void TellHistory(const Options& options, const basics::DocumentTarget& target);

/// The subcommand events. With --follow it prints new ones as they come, and returns when nobody reads them
/// any more.
void TellEvents(const Options& options, const basics::DocumentTarget& target);

/// What `show` adds to its page; nothing where it is not asked to. To be called before the view of the file
/// system changes.
[[nodiscard]] std::optional<history::ServerHistory> HistoryForPage(const Options& options);

/// The time that is meant by what people type: "30d" or "12h" before now, "2031-04-05",
/// "2031-04-05T06:07:08Z". Nothing for any other text.
[[nodiscard]] std::optional<history::TimePoint> SinceFrom(std::string_view text, history::TimePoint now);

}  // namespace command
