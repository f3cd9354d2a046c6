#include "Recall.h"

#include "Screen.h"
#include "basics/Duration.h"
#include "basics/Failure.h"
#include "basics/NearestName.h"
#include "basics/Text.h"
#include "basics/Time.h"
#include "basics/Words.h"
#include "history/Reader.h"
#include "views/History.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <unordered_set>
#include <utility>

namespace command {
namespace {

using basics::Failure;
using history::Part;
using history::Reader;
using history::TimePoint;

views::TerminalStyle StyleFor(const Options& options) {
    return options.output ? views::TerminalStyle() : StyleOfStandardOutput();
}

[[noreturn]] void RejectPart(const std::string& what) {
    throw Failure(Failure::Kind::Use, what + "; mngsrvraid history shows them all");
}

Part PartNamed(const std::vector<Part>& parts, const std::string& words) {
    std::vector<Part> named = history::PartsNamed(parts, words);
    if (named.size() == 1) {
        return std::move(named.front());
    }
    constexpr std::size_t kMostNamed = 5;
    if (named.size() > kMostNamed) {
        RejectPart(std::to_string(named.size()) + " parts are called \"" + words + '"');
    }
    if (!named.empty()) {
        RejectPart("\"" + words + "\" may be any of " + basics::Joined(named, "; ", [](const Part& part) {
                       const std::string identity = IdentityOf(part.about);
                       return PlaceOf(part.about) + (identity.empty() ? "" : " (" + identity + ")");
                   }));
    }
    std::vector<std::string> serials;
    serials.reserve(parts.size());
    for (const Part& part : parts) {
        serials.push_back(part.about.serial);
    }
    const std::string nearest = basics::NearestName(serials, words);
    RejectPart("no part is called \"" + words + "\"" +
               (nearest.empty() ? "" : " (did you mean " + nearest + "?)"));
}

template <typename Told>
std::string InFormat(const Told& told, const Options& options) {
    switch (options.format) {
        case Options::Format::Json:
            return views::HistoryJson(told, options.host);
        case Options::Format::Html:
            return views::HistoryHtml(told, options.host);
        default:
            return views::HistoryTable(told, StyleFor(options));
    }
}

std::string LineOf(const watch::Event& event, const Options& options) {
    return options.format == Options::Format::Json ? JsonOf(event, options.host) + '\n'
                                                   : views::EventLine(event, StyleFor(options));
}

std::string LinesOf(const std::vector<history::NumberedEvent>& events, const Options& options) {
    std::string text;
    for (const history::NumberedEvent& each : events) {
        text += LineOf(each.event, options);
    }
    return text;
}

/// Waits for a while, or until nobody reads standard output any more: whether somebody does.
bool IsStillRead() {
    constexpr int kPause = 1000;  // milliseconds
    pollfd output{STDOUT_FILENO, 0, 0};
    const int count = ::poll(&output, 1, kPause);
    return count == 0 || (count < 0 && errno == EINTR);
}

/// Events as they come, from where another one was read to.
class Following final {
  public:
    Following(const Options& options, Reader reader, std::int64_t last)
        : m_Options(options), m_Reader(std::move(reader)), m_Last(last) {}

    /// What there is since the last time.
    std::string News() {
        const bool isAnother = !m_Reader.IsCurrent();
        if ((isAnother || !m_Reader.IsLive()) && !Reopen()) {
            return "";
        }
        m_Last = isAnother ? 0 : m_Last;  // Another file numbers its events anew.
        std::string text;
        for (std::vector<history::NumberedEvent> events = m_Reader.EventsAfter(m_Last); !events.empty();
             events = m_Reader.EventsAfter(m_Last)) {
            for (const history::NumberedEvent& each : events) {
                m_Last = each.number;
                text += m_Known.insert(each.event.id).second ? LineOf(each.event, m_Options) : "";
            }
        }
        return text;
    }

    /// Those that have been printed already.
    void Know(const std::vector<history::NumberedEvent>& events) {
        for (const history::NumberedEvent& each : events) {
            m_Known.insert(each.event.id);
        }
    }

  private:
    bool Reopen() {
        try {
            m_Reader = Reader(*m_Options.history);
        } catch (const Failure&) {
            return false;  // It may be there again in a moment.
        }
        return true;
    }

    const Options& m_Options;
    Reader m_Reader;
    std::int64_t m_Last;
    std::unordered_set<std::string> m_Known;  ///< with which another file may begin
};

}  // namespace

void TellHistory(const Options& options, const basics::DocumentTarget& target) {
    Reader reader(*options.history);
    const history::Overview overview = reader.Parts();
    target.Store(
        options.part.empty()
            ? InFormat(overview, options)
            : InFormat(reader.HistoryOf(PartNamed(overview.parts, options.part), *options.since), options));
}

void TellEvents(const Options& options, const basics::DocumentTarget& target) {
    Reader reader(*options.history);
    const std::int64_t last = reader.LastEvent();
    std::vector<history::NumberedEvent> events = reader.EventsSince(*options.since);
    std::erase_if(events, [last](const history::NumberedEvent& each) { return each.number > last; });
    const bool isTable = options.format == Options::Format::Table;
    const bool isNone = isTable && events.empty() && !options.isFollowing;
    std::string text = isNone    ? "no events since " + basics::UtcText(*options.since) + "\n"
                       : isTable ? views::EventsTitle(StyleFor(options))
                                 : "";
    text += LinesOf(events, options);
    target.Store(text);
    if (!options.isFollowing) {
        return;
    }
    Following following(options, std::move(reader), last);
    following.Know(std::exchange(events, {}));
    while (IsStillRead()) {
        if (const std::string news = following.News(); !news.empty()) {
            target.Store(news);
        }
    }
}

std::optional<history::ServerHistory> HistoryForPage(const Options& options) {
    if (options.action != Options::Action::Show || !options.history) {
        return std::nullopt;
    }
    return Reader(*options.history).HistoryOfServer(*options.since, std::chrono::system_clock::now());
}

std::optional<TimePoint> SinceFrom(std::string_view text, TimePoint now) {
    if (const std::optional<std::chrono::seconds> duration = basics::DurationFrom(text)) {
        return now - *duration;
    }
    const std::optional<TimePoint> day = basics::TimeFromUtcText(std::string(text) + "T00:00:00Z");
    return day ? day : basics::TimeFromUtcText(text);
}

}  // namespace command
