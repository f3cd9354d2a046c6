#pragma once

#include "history/History.h"
#include "inventory/Changes.h"
#include "inventory/Snapshot.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace views {

// One server in different clothes. Every function takes a snapshot with whatever texts a report may hold and
// gives a whole text in UTF-8 that ends with a line feed; nothing but std::bad_alloc is thrown. Any thread.

/// How a terminal wants it.
struct TerminalStyle {
    std::size_t columns = 0;  ///< 0: as wide as it takes
    bool hasColors = false;
};

/// Aligned tables for people: the headline, what needs attention, then each controller with its groups and
/// drives. A document about one drive: the drive, its SMART keys and its table.
[[nodiscard]] std::string Table(const inventory::Snapshot& snapshot, const TerminalStyle& style);

/// Every item of the document, indented, with its value:
///
///     Controller Information
///       ### General Information ###
///         Controller No. = 0
[[nodiscard]] std::string Tree(const inventory::Snapshot& snapshot);

/// JSON as docs/schema.json describes it: the roll-up, the parts, and, unless it is to be compact, every item
/// of the documents.
[[nodiscard]] std::string Json(const inventory::Snapshot& snapshot, bool isCompact = false);

/// What a service knows of a server beside its latest answer.
struct Watching {
    /// What is not well still, as far as anybody knows, and is in no report any more: a failed drive that was
    /// pulled.
    std::vector<inventory::Finding> standing{};
    std::optional<std::chrono::system_clock::time_point> askedAt{};  ///< for the last time
    std::string failure{};  ///< why there was no answer then; empty: there was one
    unsigned failuresInARow = 0;
    std::string script{};  ///< of the page; "/live.js" say
};

/// How well the server is, as far as anybody knows: by its answer, and what the service, if any, knows beside
/// it. A server that could not be asked is unknown at least.
[[nodiscard]] inventory::Level LevelOf(const inventory::Health& health, const Watching* watching);

/// The same in words, which never say that all is well where it is not: "could not be asked; before that: 2
/// controllers, ..., all well".
[[nodiscard]] std::string HeadlineOf(const inventory::Health& health, const Watching* watching);

/// One page that needs nothing from elsewhere. With a history it shows a line of each drive's past, and what
/// happened; with a service what that knows, too.
[[nodiscard]] std::string Html(const inventory::Snapshot& snapshot,
                               const history::ServerHistory* history = nullptr,
                               const Watching* watching = nullptr);

/// Series for the node exporter's textfile collector, or for whoever asks a service.
[[nodiscard]] std::string Prometheus(const inventory::Snapshot& snapshot, const Watching* watching = nullptr);

/// What a monitoring system wants: one line with the level, the findings (no more than fit; all, a line each,
/// when `isVerbose`), and the figures behind a bar:
///
///     RAID WARNING - 1 warning in 1 controller, 3 drives; controller 0, PD1 in ...: REBUILD | drives=3
///     critical=0 ...
[[nodiscard]] std::string MonitoringLine(const inventory::Health& health, bool isVerbose);

/// Where one of two documents that were compared comes from.
struct Source {
    std::string name;  ///< as it was typed; "-" for standard input
    bool isScenario = false;
};

/// The differences, one a line, and what they come to.
[[nodiscard]] std::string Differences(const inventory::Changes& changes);

/// The same as JSON, as docs/diff.schema.json describes it.
[[nodiscard]] std::string DifferencesJson(const inventory::Changes& changes, const Source& before,
                                          const Source& after);

}  // namespace views
