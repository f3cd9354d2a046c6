#pragma once

#include "history/History.h"
#include "inventory/Snapshot.h"
#include "watch/Watch.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace history {

/// An event that is to be told to somebody.
struct Delivery {
    std::string channel;
    watch::Event event;
};

/// What was remembered when a service starts.
struct Restored {
    std::vector<watch::StateRow> rows = {};       ///< of the watch
    std::vector<Delivery> deliveries = {};        ///< that are still to be made, in the order of their events
    std::optional<StoredDocument> document = {};  ///< the server's latest answer
};

/// What an inquiry has brought. What is empty was not brought.
struct Entry {
    TimePoint at;
    const inventory::Snapshot* snapshot = nullptr;  ///< null: there was no answer
    std::string_view document = {};                 ///< the answer's XML
    std::vector<watch::Event> events = {};
    std::vector<Delivery> deliveries = {};   ///< that are to be made from now on, of these events mostly
    std::vector<watch::StateRow> rows = {};  ///< all of the watch; none: they are as before
};

/// How it went, in words for people.
struct Outcome {
    /// Why nothing could be stored; empty where everything is. "the history /var/lib/mngsrvraid/history.db
    /// cannot be written: disk I/O error (No space left on device)".
    std::string trouble = {};
    /// What else happened to the file: one that was damaged is set aside, and a new one begun. Told once.
    std::vector<std::string> notes = {};

    [[nodiscard]] bool IsStored() const { return trouble.empty(); }
};

/// The memory of the service, in a file: what the server told, what happened, what is still to be told, and
/// what the watch knows. The only writer of that file, which readers may read meanwhile (Reader.h).
///
/// What is handed over is stored when the operation returns without trouble, whatever happens to the process
/// or the power after that, and as a whole or not at all. Where it could not be stored it is kept in memory,
/// bounded, and stored by the next operation that can. Nothing but std::bad_alloc is thrown.
///
/// One thread, and one archive of a file in a process.
class Archive final {
  public:
    /// Touches nothing yet.
    explicit Archive(std::string path);
    ~Archive();
    Archive(Archive&& other) noexcept;
    Archive& operator=(Archive&& other) noexcept;
    Archive(const Archive&) = delete;
    Archive& operator=(const Archive&) = delete;

    /// Who else writes the file, a process; nothing where nobody does, and from then on nobody can until this
    /// archive is gone. To be asked first: what is stored in spite of another writer gets lost.
    [[nodiscard]] std::optional<std::string> OtherWriter();

    /// What is remembered, also where it can only be read. To be called once, before anything is recorded.
    [[nodiscard]] Outcome Open(TimePoint now, Restored& restored);

    [[nodiscard]] Outcome Record(const Entry& entry);

    /// The channel was told of these events, by their ids, or is not to be told of them any more.
    [[nodiscard]] Outcome Settle(const std::string& channel, const std::vector<std::string>& events,
                                 TimePoint now);

    /// Takes away a little of what is older than it is to get. To be called with each inquiry; `elapsed` is
    /// the steady time since the last call.
    [[nodiscard]] Outcome Tidy(TimePoint now, std::chrono::seconds elapsed);

  private:
    class Impl;
    std::unique_ptr<Impl> m_Impl;
};

}  // namespace history
