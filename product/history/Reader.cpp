#include "history/Reader.h"

#include "Contents.h"
#include "FileCare.h"
#include "ReadAccess.h"
#include "Schema.h"
#include "basics/Failure.h"
#include "basics/Words.h"

#include <algorithm>
#include <functional>
#include <tuple>
#include <type_traits>
#include <unordered_map>
#include <utility>

namespace history {
namespace {

using inventory::Finding;
using inventory::PartKind;

[[noreturn]] void Refuse(const std::string& path, const std::string& what) {
    basics::FailSurroundings("the history " + path + " " + what);
}

[[noreturn]] void Refuse(const std::string& path, const DatabaseError& error) {
    Refuse(path,
           error.WhatKind() == DatabaseError::Kind::Damaged
               ? std::string("is damaged (") + error.what() + "); the service sets it aside when it writes"
               : std::string("cannot be read: ") + error.what());
}

ReadAccess OpenedAt(const std::string& path) {
    if (!IdentityOf(path)) {
        Refuse(path,
               "is not there, or cannot be reached; mngsrvraidd makes it, or --history FILE names another");
    }
    try {
        return ReadAccess(path);
    } catch (const DatabaseError& error) {
        Refuse(path, error);
    }
}

void CheckVersion(const std::string& path, Database& database) {
    const FileKind kind = KindOf(database);
    const std::int64_t version = VersionOf(database);
    if (kind == FileKind::New) {
        Refuse(path, "holds nothing yet");
    }
    if (kind == FileKind::Foreign) {
        Refuse(path, "is no history: it holds something else");
    }
    if (version != kSchemaVersion) {
        Refuse(path, "is of version " + std::to_string(version) + ", known is version " +
                         std::to_string(kSchemaVersion) +
                         (version < kSchemaVersion ? "; it is brought up to date when mngsrvraidd starts"
                                                   : "; use the command that belongs to its mngsrvraidd"));
    }
}

/// Numbers by their size, whatever stands before them.
std::pair<std::string, std::uint64_t> OrderOf(const std::string& name) {
    const std::size_t digits = name.find_last_not_of("0123456789") + 1;
    return {name.substr(0, digits),
            basics::NumberFrom<std::uint64_t>(std::string_view(name).substr(digits)).value_or(0)};
}

auto OrderOf(const Part& part) {
    const Finding& about = part.about;
    return std::tuple(!part.state.level.has_value(), OrderOf(about.controller), about.kind,
                      OrderOf(about.enclosure), OrderOf(about.slot), OrderOf(about.group),
                      OrderOf(about.part), part.key);
}

bool IsAbout(const Finding& event, const Finding& part) {
    if (event.kind == PartKind::Drive && part.kind == PartKind::Drive && !part.serial.empty()) {
        return event.serial == part.serial;
    }
    const bool isInGroup = part.kind == PartKind::Group && event.kind == PartKind::LogicalDrive;
    return event.controller == part.controller && (event.kind == part.kind || isInGroup) &&
           (part.kind != PartKind::Group || event.group == part.group) &&
           (isInGroup || event.part == part.part) && event.enclosure == part.enclosure &&
           event.slot == part.slot;
}

bool TellsOfPart(watch::EventKind kind) {
    switch (kind) {
        case watch::EventKind::Started:
        case watch::EventKind::InquiryFailed:
        case watch::EventKind::Trouble:
        case watch::EventKind::Test:
            return false;
        default:
            return true;
    }
}

}  // namespace

class Reader::Impl final {
  public:
    /// As of one moment, whatever is written meanwhile.
    template <typename Work>
    auto Read(const Work& work) {
        try {
            m_Access.Opened().Run("BEGIN");
            const Ending ending(m_Access.Opened());
            return work(m_Contents);
        } catch (const DatabaseError& error) {
            Refuse(m_Path, error);
        }
    }

    explicit Impl(std::string path)
        : m_Path(std::move(path)),
          m_Identity(IdentityOf(m_Path)),
          m_Access(OpenedAt(m_Path)),
          m_Contents(m_Access.Opened()) {
        Read([this](Contents&) { CheckVersion(m_Path, m_Access.Opened()); });
    }

    std::int64_t IdOf(const std::string& key) {
        return m_Access.Opened().Prepare("SELECT id FROM parts WHERE key = ?").Integer(key).value_or(0);
    }

    [[nodiscard]] bool IsCurrent() const { return m_Identity == IdentityOf(m_Path); }
    [[nodiscard]] bool IsLive() const { return m_Access.IsLive(); }

  private:
    class Ending final {
      public:
        explicit Ending(Database& database) : m_Database(database) {}
        ~Ending() {
            try {
                m_Database.Run("ROLLBACK");
            } catch (const std::exception&) {
                return;  // Nothing was to be changed.
            }
        }
        Ending(const Ending&) = delete;
        Ending& operator=(const Ending&) = delete;

      private:
        Database& m_Database;
    };

    std::string m_Path;
    std::optional<FileIdentity> m_Identity;
    ReadAccess m_Access;
    Contents m_Contents;
};

Reader::Reader(std::string path) : m_Impl(std::make_unique<Impl>(std::move(path))) {}
Reader::~Reader() = default;
Reader::Reader(Reader&&) noexcept = default;
Reader& Reader::operator=(Reader&&) noexcept = default;

namespace {

// Every part is looked at in every answer, so that its latest state stood then.
void Extend(State& state, std::optional<TimePoint> answered) {
    state.seen = std::max(state.seen, answered.value_or(state.seen));
}

}  // namespace

Overview Reader::Parts() {
    Overview overview = m_Impl->Read([](Contents& contents) {
        Overview read{contents.Answered()};
        contents.EachPart([&read](const Part& part, std::int64_t, std::int64_t state) {
            if (state != 0) {
                read.parts.push_back(part);
                Extend(read.parts.back().state, read.answered);
            }
        });
        return read;
    });
    std::sort(overview.parts.begin(), overview.parts.end(),
              [](const Part& one, const Part& other) { return OrderOf(one) < OrderOf(other); });
    return overview;
}

PartHistory Reader::HistoryOf(const Part& part, TimePoint since) {
    return m_Impl->Read([&](Contents& contents) {
        const std::int64_t id = m_Impl->IdOf(part.key);
        PartHistory told{part,
                         since,
                         contents.Answered(),
                         contents.StatesOf(id, since),
                         contents.SeriesOf(id, since),
                         contents.EventsSince(since)};
        if (!told.states.empty()) {
            Extend(told.states.back(), told.answered);
        }
        std::erase_if(told.events, [&part](const NumberedEvent& each) {
            return !TellsOfPart(each.event.kind) || !IsAbout(each.event.about, part.about);
        });
        return told;
    });
}

std::vector<Reading> Reader::ReadingsOf(const std::string& key, const std::string& counter, TimePoint since) {
    return m_Impl->Read(
        [&](Contents& contents) { return contents.ReadingsOf(m_Impl->IdOf(key), counter, since); });
}

ServerHistory Reader::HistoryOfServer(TimePoint since, TimePoint now) {
    return m_Impl->Read([&](Contents& contents) {
        ServerHistory told{since, now, {}, contents.EventsSince(since)};
        std::vector<std::pair<std::string, std::int64_t>> drives;
        contents.EachPart([&drives](const Part& part, std::int64_t id, std::int64_t) {
            if (part.about.kind == PartKind::Drive && part.state.level) {
                drives.emplace_back(part.key, id);
            }
        });
        for (const auto& [key, id] : drives) {
            told.drives.emplace(key, DriveLines{contents.ReadingsOf(id, kTemperature, since),
                                                contents.ReadingsOf(id, kMediaErrors, since),
                                                contents.ReadingsOf(id, kOtherErrors, since)});
        }
        return told;
    });
}

std::vector<NumberedEvent> Reader::EventsSince(TimePoint since) {
    return m_Impl->Read([since](Contents& contents) { return contents.EventsSince(since); });
}

std::vector<NumberedEvent> Reader::EventsAfter(std::int64_t number, std::size_t most) {
    return m_Impl->Read([=](Contents& contents) { return contents.EventsAfter(number, most); });
}

std::int64_t Reader::LastEvent() {
    return m_Impl->Read([](Contents& contents) { return contents.LastEvent(); });
}

std::optional<StoredDocument> Reader::Document() {
    return m_Impl->Read([](Contents& contents) { return contents.Document(); });
}

bool Reader::IsCurrent() const {
    return m_Impl->IsCurrent();
}

bool Reader::IsLive() const {
    return m_Impl->IsLive();
}

}  // namespace history
