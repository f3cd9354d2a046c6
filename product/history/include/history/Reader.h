#pragma once

#include "history/History.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace history {

/// Reads what an archive has stored: while the service writes it, and without it. It never writes, and never
/// keeps the writer waiting. Also from a folder where nothing can be written, with what a service that was
/// killed has left beside the file.
///
/// Throws basics::Failure(Surroundings) where the file is not there, holds something else, is damaged, or is
/// of another version. One thread.
class Reader final {
  public:
    explicit Reader(std::string path);
    ~Reader();
    Reader(Reader&& other) noexcept;
    Reader& operator=(Reader&& other) noexcept;
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    /// Sorted as they are in the server, those that are in no report any more behind the others.
    [[nodiscard]] Overview Parts();

    /// Everything about a part, by its key, since then. Its events are those that name it.
    [[nodiscard]] PartHistory HistoryOf(const Part& part, TimePoint since);

    /// One counter of a part.
    [[nodiscard]] std::vector<Reading> ReadingsOf(const std::string& key, const std::string& counter,
                                                  TimePoint since);

    /// All drives that are there, and all events, up to now.
    [[nodiscard]] ServerHistory HistoryOfServer(TimePoint since, TimePoint now);

    /// In the order in which they happened, whatever the clock said.
    [[nodiscard]] std::vector<NumberedEvent> EventsSince(TimePoint since);
    /// Those behind the one of that number.
    [[nodiscard]] std::vector<NumberedEvent> EventsAfter(std::int64_t number, std::size_t most = 1000);
    /// The number of the last event; 0 before the first.
    [[nodiscard]] std::int64_t LastEvent();

    [[nodiscard]] std::optional<StoredDocument> Document();

    /// Whether the file is still the one that is read: it may have been set aside, or removed.
    [[nodiscard]] bool IsCurrent() const;

    /// Whether this shows what is stored from now on; where only a copy could be read it does not.
    [[nodiscard]] bool IsLive() const;

  private:
    class Impl;
    std::unique_ptr<Impl> m_Impl;
};

}  // namespace history
