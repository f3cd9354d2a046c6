#include "basics/Text.h"
#include "basics/Words.h"
#include "views/Views.h"

#include <vector>

namespace views {
namespace {

using inventory::Change;
using inventory::ChangedPart;

std::string InBrackets(const std::string& identity) {
    return identity.empty() ? "" : " (" + identity + ")";
}

/// Where a drive has gone: "controller 0, enclosure 252 slot 7".
std::string PlaceAlone(const ChangedPart& drive) {
    std::string place;
    const auto add = [&place](const char* before, const std::string& name, const std::string& number) {
        if (!number.empty()) {
            place += (place.empty() ? "" : before) + name + number;
        }
    };
    add("", "controller ", drive.controller);
    add(", ", "enclosure ", drive.enclosure);
    add(drive.enclosure.empty() ? ", " : " ", "slot ", drive.slot);
    return place;
}

std::string Shown(const std::optional<std::string>& value) {
    return value ? '"' + basics::Printable(*value) + '"' : "(not told)";
}

std::string AboutItem(const Change& change) {
    const std::string item = basics::Printable(change.part->place + ": " + change.key + ": ");
    switch (change.kind) {
        case Change::Kind::Appeared:
            return item + Shown(change.after);
        case Change::Kind::Vanished:
            return item + Shown(change.before);
        default:
            return item + Shown(change.before) + " -> " + Shown(change.after);
    }
}

std::string AboutPart(const Change& change) {
    const ChangedPart& part = *change.part;
    switch (change.kind) {
        case Change::Kind::Moved:
            return change.from->place + InBrackets(part.identity) + " -> " + PlaceAlone(part);
        case Change::Kind::Replaced:
            return part.place + ": " + change.from->identity + " -> " + part.identity;
        default:
            return part.place + InBrackets(part.identity);
    }
}

std::string LineOf(const Change& change) {
    constexpr std::size_t kWordWidth = 10;
    return basics::PadRight(std::string(NameOf(change.kind)), kWordWidth) +
           (change.key.empty() ? basics::Printable(AboutPart(change)) : AboutItem(change)) + '\n';
}

/// What there is to say where nothing is told.
std::string WithoutChanges(const inventory::Changes& changes) {
    std::vector<std::string> leftOut;
    if (changes.movements > 0) {
        leftOut.emplace_back("always moves");
    }
    if (changes.redactions > 0) {
        leftOut.emplace_back("is redacted");
    }
    return leftOut.empty()
               ? "no difference\n"
               : "no difference but in what " + basics::Joined(leftOut, " or ") + "; --all shows it\n";
}

}  // namespace

std::string Differences(const inventory::Changes& changes) {
    if (changes.list.empty()) {
        return WithoutChanges(changes);
    }
    std::string text;
    for (const Change& change : changes.list) {
        text += LineOf(change);
    }
    std::vector<std::string> counts;
    for (const Change::Kind kind : inventory::kChangeKinds) {
        if (const std::size_t count = CountOf(changes, kind); count > 0) {
            counts.push_back(std::to_string(count) + " " + std::string(NameOf(kind)));
        }
    }
    return text + basics::Joined(counts) + '\n';
}

}  // namespace views
