// What a watch knows after a restart, and the documents that it sees then. A section each: a row, its key and
// its text between them 0x1F; or a document; or an event as it was kept.

#include "watch/Watch.h"

#include "support/Input.h"
#include "support/Property.h"

#include <optional>
#include <unordered_set>
#include <vector>

namespace {

using fuzzing::Require;
using watch::Event;

constexpr watch::TimePoint kStart{std::chrono::hours(24 * 365 * 40)};

void CheckEvent(const Event& event) {
    const std::string json = JsonOf(event);
    Require(json.find('\n') == std::string::npos, "an event is a line");
    const std::optional<Event> again = watch::EventFrom(json);
    Require(again.has_value(), "an event that was kept can be read");
    Require(JsonOf(*again) == json, "an event is read as it was kept");
}

/// Ids in order, for the same events each time.
watch::Watch MakeWatch(std::size_t& ids) {
    return watch::Watch(watch::Rules(), [&ids](watch::TimePoint) { return "id" + std::to_string(++ids); });
}

void CheckRestart(const watch::Watch& one) {
    std::size_t ids = 0;
    watch::Watch other = MakeWatch(ids);
    const std::vector<watch::StateRow> rows = one.Rows();
    Require(other.Restore(rows) == 0, "what is kept can be read");
    const std::vector<watch::StateRow> again = other.Rows();
    Require(rows.size() == again.size(), "nothing is lost in a restart");
}

void CheckWatch(std::string_view input) {
    std::size_t ids = 0;
    watch::Watch watch = MakeWatch(ids);
    std::unordered_set<std::string> told;
    watch::TimePoint now = kStart;
    for (const std::string_view section : fuzzing::Split(input, fuzzing::kSectionEnd)) {
        now += std::chrono::minutes(7);
        if (const std::size_t end = section.find(fuzzing::kFieldEnd); end != std::string_view::npos) {
            (void)watch.Restore(
                {{std::string(section.substr(0, end)), std::string(section.substr(end + 1))}});
            continue;
        }
        if (const std::optional<Event> event = watch::EventFrom(section)) {
            CheckEvent(*event);
            continue;
        }
        std::vector<Event> events;
        try {
            events = watch.Take(inventory::Snapshot(inventory::Document::Read(section)), now);
        } catch (const inventory::DocumentError& error) {
            events = watch.FailedToAsk(error.what(), now);
        }
        for (const Event& event : events) {
            CheckEvent(event);
            Require(told.insert(event.id).second, "each event has an id of its own");
        }
        CheckRestart(watch);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CheckWatch(fuzzing::TextOf(data, size));
    return 0;
}
