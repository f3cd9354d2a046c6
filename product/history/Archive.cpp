#include "history/Archive.h"

#include "Calendar.h"
#include "Contents.h"
#include "FileCare.h"
#include "Ledger.h"
#include "ReadAccess.h"
#include "Retention.h"
#include "Schema.h"
#include "Store.h"

#include <filesystem>
#include <functional>
#include <system_error>
#include <utility>

namespace history {
namespace {

using Kind = DatabaseError::Kind;

// What is committed is on the disk (FULL). What was deleted need not be overwritten: it is no secret.
constexpr const char* kSettings = R"sql(
PRAGMA journal_mode = WAL;
PRAGMA synchronous = FULL;
PRAGMA secure_delete = OFF;
PRAGMA temp_store = MEMORY;
PRAGMA journal_size_limit = 4194304;
)sql";

void Restore(Database& database, Restored& restored) {
    Contents contents(database);
    restored.rows = contents.WatchRows();
    restored.document = contents.Document();
    contents.EachDebt([&restored](const std::string& channel, const watch::Event& event) {
        restored.deliveries.push_back({channel, event});
    });
}

}  // namespace

class Archive::Impl final {
  public:
    explicit Impl(std::string path) : m_Path(std::move(path)), m_Lock(m_Path) {}

    std::optional<std::string> OtherWriter();
    Outcome Open(TimePoint now, Restored& restored);
    Outcome Record(const Entry& entry);
    Outcome Settle(const std::string& channel, const std::vector<std::string>& events, TimePoint now);
    Outcome Tidy(TimePoint now, std::chrono::seconds elapsed);

  private:
    /// Everything that is there while the file is open.
    struct Opened {
        explicit Opened(Database opened)
            : database(std::move(opened)), store(database), retention(database) {}

        Database database;
        Store store;
        Retention retention;
        std::optional<FileIdentity> identity = {};
    };

    void EnsureOpen(TimePoint now);
    void OpenFile(TimePoint now);
    void GiveUp(const DatabaseError& error);
    void PutAside(const std::string& why, const std::string& words, TimePoint now);
    Outcome Write(
        TimePoint now, const std::function<void(Opened& opened)>& more,
        const std::function<void()>& beginAnew = [] {});
    void Commit(const std::function<void(Opened& opened)>& more);
    [[nodiscard]] Outcome Told(const std::string& trouble = "");

    std::string m_Path;
    WriterLock m_Lock;
    Ledger m_Ledger;
    std::unique_ptr<Opened> m_Opened;
    std::vector<std::string> m_Notes;
    std::optional<TimePoint> m_Followed;  ///< the time that ages are measured by
};

std::optional<std::string> Archive::Impl::OtherWriter() {
    try {
        std::error_code error;  // Where it cannot be made the lock cannot be either.
        std::filesystem::create_directories(std::filesystem::path(m_Path).parent_path(), error);
        return m_Lock.Take();
    } catch (const DatabaseError&) {
        return std::nullopt;  // Nobody can write there; it is told when something is to be stored.
    }
}

void Archive::Impl::EnsureOpen(TimePoint now) {
    // The file may have been taken away, or another one put in its place.
    if (m_Opened && m_Opened->identity == IdentityOf(m_Path)) {
        return;
    }
    m_Opened.reset();
    std::error_code error;
    std::filesystem::create_directories(std::filesystem::path(m_Path).parent_path(), error);
    if (const std::optional<std::string> other = m_Lock.Take()) {
        throw DatabaseError(Kind::Busy, *other + " writes it");
    }
    try {
        OpenFile(now);
    } catch (const DatabaseError& damage) {
        if (damage.WhatKind() != Kind::Damaged) {
            throw;
        }
        PutAside("damaged", std::string("was damaged (") + damage.what() + ")", now);
        OpenFile(now);
    }
}

void Archive::Impl::OpenFile(TimePoint now) {
    Database database(m_Path, Database::Mode::Write);
    database.SetTidyAtClose(false);
    const FileKind kind = KindOf(database);
    if (kind == FileKind::Newer) {
        const std::string version = std::to_string(VersionOf(database));
        database.SetTidyAtClose(true);
        // cppcheck-suppress unreadVariable; it closes the file
        database = Database::InMemory();
        PutAside("version-" + version,
                 "was written by a newer version of this service (" + version +
                     "; known are versions up to " + std::to_string(kSchemaVersion) + ")",
                 now);
        return OpenFile(now);
    }
    const std::string damage = kind == FileKind::Foreign ? "it holds something else" : DamageOf(database);
    if (!damage.empty()) {
        throw DatabaseError(Kind::Damaged, damage);
    }
    database.Run(kSettings);
    Upgrade(database);
    auto opened = std::make_unique<Opened>(std::move(database));
    opened->store.Load(m_Ledger);
    opened->identity = IdentityOf(m_Path);
    opened->database.SetTidyAtClose(true);
    m_Opened = std::move(opened);
}

void Archive::Impl::PutAside(const std::string& why, const std::string& words, TimePoint now) {
    const std::string name = SetAside(m_Path, why, now);
    m_Notes.push_back("the history " + m_Path + " " + words + "; it is set aside as " + name +
                      ", and a new one is begun");
}

void Archive::Impl::GiveUp(const DatabaseError& error) {
    if (error.WhatKind() == Kind::Unavailable || error.WhatKind() == Kind::Damaged) {
        if (m_Opened) {
            m_Opened->database.SetTidyAtClose(error.WhatKind() != Kind::Damaged);
        }
        m_Opened.reset();
    }
    m_Ledger.Trim();
}

Outcome Archive::Impl::Told(const std::string& trouble) {
    return {trouble.empty() ? "" : "the history " + m_Path + " cannot be written: " + trouble,
            std::exchange(m_Notes, {})};
}

/// Writes what waits, and more, as a whole.
void Archive::Impl::Commit(const std::function<void(Opened& opened)>& more) {
    Opened& opened = *m_Opened;
    Store::Attempt attempt(opened.store);
    Transaction transaction(opened.database);
    opened.store.Write(m_Ledger);
    more(opened);
    transaction.Commit();
    attempt.Succeed();
    m_Ledger.Settle();
    opened.database.Shrink();
}

/// A file that turns out to be damaged gives way to a new one, where all that is known now begins anew.
Outcome Archive::Impl::Write(TimePoint now, const std::function<void(Opened& opened)>& more,
                             const std::function<void()>& beginAnew) {
    std::string damage;
    try {
        EnsureOpen(now);
        Commit(more);
        return Told();
    } catch (const DatabaseError& error) {
        GiveUp(error);
        if (error.WhatKind() != Kind::Damaged) {
            return Told(error.what());
        }
        damage = error.what();
    }
    try {
        PutAside("damaged", "was damaged (" + damage + ")", now);
        EnsureOpen(now);
        beginAnew();
        Commit(more);
        return Told();
    } catch (const DatabaseError& error) {
        GiveUp(error);
        return Told(damage + "; " + error.what());
    }
}

Outcome Archive::Impl::Open(TimePoint now, Restored& restored) {
    try {
        EnsureOpen(now);
        Restore(m_Opened->database, restored);
        return Told();
    } catch (const DatabaseError& error) {
        GiveUp(error);
        try {
            ReadAccess access(m_Path);
            if (KindOf(access.Opened()) == FileKind::Ours && VersionOf(access.Opened()) == kSchemaVersion) {
                Restore(access.Opened(), restored);
            }
        } catch (const DatabaseError&) {
            restored = {};  // Nor can it be read.
        }
        for (const Delivery& delivery : restored.deliveries) {
            m_Ledger.OwnDebt(delivery.channel, delivery.event);
        }
        return Told(error.what());
    }
}

Outcome Archive::Impl::Record(const Entry& entry) {
    const auto take = [&] {
        if (entry.snapshot != nullptr) {
            m_Ledger.Take(*entry.snapshot, entry.at);
        }
    };
    try {
        EnsureOpen(entry.at);  // What stands in the file has to be known to tell what is new.
    } catch (const DatabaseError& error) {
        GiveUp(error);
    }
    take();
    for (const watch::Event& event : entry.events) {
        m_Ledger.Take(event);
    }
    for (const Delivery& delivery : entry.deliveries) {
        m_Ledger.Owe(delivery.channel, delivery.event);
    }
    return Write(
        entry.at,
        [&entry](Opened& opened) {
            if (!entry.rows.empty()) {
                opened.store.WriteRows(entry.rows);
            }
            if (!entry.document.empty()) {
                opened.store.WriteDocument(entry.document);
            }
            if (entry.snapshot != nullptr) {
                opened.store.WriteMark(kAnswered, SecondsOf(entry.at));
            }
        },
        take);
}

Outcome Archive::Impl::Settle(const std::string& channel, const std::vector<std::string>& events,
                              TimePoint now) {
    for (const std::string& event : events) {
        m_Ledger.Pay(channel, event);
    }
    return Write(now, [](Opened&) {});
}

Outcome Archive::Impl::Tidy(TimePoint now, std::chrono::seconds elapsed) {
    if (!m_Opened) {
        return {};  // What is wrong is told by what wants to store something.
    }
    std::vector<std::string> forgotten;
    Outcome outcome = Write(now, [&](Opened& opened) {
        constexpr std::chrono::hours kOften{1};
        const std::optional<std::int64_t> mark = opened.store.Mark(kTidied);
        const TimePoint stored = (mark ? TimeOf(*mark) : std::nullopt).value_or(now);
        m_Followed = FollowClock(m_Followed.value_or(stored), now, elapsed);
        if (!mark || *m_Followed - stored > kOften || stored - *m_Followed > kOften) {
            opened.store.WriteMark(kTidied, SecondsOf(*m_Followed));
        }
        forgotten = opened.retention.Step(*m_Followed).parts;
    });
    if (outcome.IsStored()) {
        for (const std::string& part : forgotten) {
            m_Ledger.Forget(part);
        }
    }
    return outcome;
}

Archive::Archive(std::string path) : m_Impl(std::make_unique<Impl>(std::move(path))) {}
Archive::~Archive() = default;
Archive::Archive(Archive&&) noexcept = default;
Archive& Archive::operator=(Archive&&) noexcept = default;

std::optional<std::string> Archive::OtherWriter() {
    return m_Impl->OtherWriter();
}

Outcome Archive::Open(TimePoint now, Restored& restored) {
    return m_Impl->Open(now, restored);
}

Outcome Archive::Record(const Entry& entry) {
    return m_Impl->Record(entry);
}

Outcome Archive::Settle(const std::string& channel, const std::vector<std::string>& events, TimePoint now) {
    return m_Impl->Settle(channel, events, now);
}

Outcome Archive::Tidy(TimePoint now, std::chrono::seconds elapsed) {
    return m_Impl->Tidy(now, elapsed);
}

}  // namespace history
