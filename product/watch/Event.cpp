#include "watch/Event.h"

#include "Codec.h"

#include <algorithm>
#include <array>

namespace watch {
namespace {

constexpr std::array<std::string_view, 12> kKinds = {"started",  "began",          "changed", "ended",
                                                     "reminder", "came",           "went",    "moved",
                                                     "grew",     "inquiry-failed", "trouble", "test"};

}  // namespace

std::string_view NameOf(EventKind kind) {
    return kKinds.at(static_cast<std::size_t>(kind));
}

std::optional<EventKind> EventKindFrom(std::string_view name) {
    const auto* const found = std::find(kKinds.begin(), kKinds.end(), name);
    return found == kKinds.end() ? std::nullopt
                                 : std::optional(static_cast<EventKind>(found - kKinds.begin()));
}

std::string Describe(const Event& event) {
    return std::string(NameOf(event.level)).append(" ").append(NameOf(event.kind)) + ": " + event.words;
}

std::string JsonOf(const Event& event, const std::string& host) {
    Json object = Json::object();
    object["id"] = event.id;
    Put(object, "at", std::optional(event.at));
    Put(object, "host", host);
    object["kind"] = NameOf(event.kind);
    object["level"] = NameOf(event.level);
    object["before"] = NameOf(event.before);
    Put(object, event.about);
    object["words"] = event.words;
    Put(object, "advice", event.advice);
    return TextOf(object);
}

std::optional<Event> EventFrom(std::string_view json) {
    try {
        const Json object = ObjectFrom(json);
        const std::optional<EventKind> kind = EventKindFrom(TextIn(object, "kind"));
        const std::optional<TimePoint> at = TimeIn(object, "at");
        Event event;
        event.id = TextIn(object, "id");
        if (event.id.empty() || !kind || !at) {
            return std::nullopt;
        }
        event.at = *at;
        event.kind = *kind;
        event.level = LevelIn(object, "level");
        event.before = LevelIn(object, "before");
        event.about = FindingIn(object);
        event.about.level = event.level;
        event.words = TextIn(object, "words");
        event.advice = TextIn(object, "advice");
        return event;
    } catch (const CodecError&) {
        return std::nullopt;
    }
}

}  // namespace watch
