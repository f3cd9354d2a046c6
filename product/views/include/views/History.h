#pragma once

#include "history/History.h"
#include "views/Views.h"

#include <string>
#include <vector>

namespace views {

// What is remembered of a server in different clothes, as the functions of Views.h do it. Times are UTC.

/// The parts with the states that they are in, and since when.
[[nodiscard]] std::string HistoryTable(const history::Overview& overview, const TerminalStyle& style);
/// A part: its states, its counters with a line of each, its events.
[[nodiscard]] std::string HistoryTable(const history::PartHistory& part, const TerminalStyle& style);

/// JSON as docs/history.schema.json describes it. `host` is what the server is called, here and below; it may
/// be empty.
[[nodiscard]] std::string HistoryJson(const history::Overview& overview, const std::string& host);
[[nodiscard]] std::string HistoryJson(const history::PartHistory& part, const std::string& host);

/// Pages that need nothing from elsewhere. Where parts have pages of their own, `linkTo` leads to them with
/// the part's key behind it: "/history?part=".
[[nodiscard]] std::string HistoryHtml(const history::Overview& overview, const std::string& host,
                                      const std::string& linkTo = "");
[[nodiscard]] std::string HistoryHtml(const history::PartHistory& part, const std::string& host);

/// The line above those of events.
[[nodiscard]] std::string EventsTitle(const TerminalStyle& style);

/// An event in a line, or as many as a terminal of that width needs:
///
///     2031-04-05 06:07:08  CRITICAL  began           controller 0, RG1, PD9 in enclosure 16 slot 1: FAILED
[[nodiscard]] std::string EventLine(const watch::Event& event, const TerminalStyle& style);

}  // namespace views
