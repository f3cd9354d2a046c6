#include "inventory/Finding.h"

#include <array>

namespace inventory {

std::string_view NameOf(PartKind kind) {
    constexpr std::array<std::string_view, 5> kNames = {"controller", "unit", "group", "logical-drive",
                                                        "drive"};
    return kNames.at(static_cast<std::size_t>(kind));
}

std::string_view NameOf(Rule rule) {
    constexpr std::array<std::string_view, 9> kNames = {
        "state",       "repetition",   "presence",           "place", "use",
        "temperature", "media-errors", "media-error-growth", "spares"};
    return kNames.at(static_cast<std::size_t>(rule));
}

std::string PlaceOf(const Finding& finding) {
    std::string place;
    const auto add = [&place](const std::string& before, const std::string& text) {
        if (!text.empty()) {
            place += (place.empty() ? "" : ", ") + before + text;
        }
    };
    add("controller ", finding.controller);
    add("", finding.group);
    add("", finding.part);
    if (!finding.enclosure.empty() || !finding.slot.empty()) {
        place += " in";
        place += finding.enclosure.empty() ? "" : " enclosure " + finding.enclosure;
        place += finding.slot.empty() ? "" : " slot " + finding.slot;
    }
    return place.empty() ? "a part without a name" : place;
}

std::string IdentityOf(const Finding& finding) {
    const std::string serial = finding.serial.empty() ? "" : "serial number " + finding.serial;
    return finding.product + (finding.product.empty() || serial.empty() ? "" : ", ") + serial;
}

std::string AcceptanceNoteOf(const Finding& finding) {
    if (finding.until.empty()) {
        return "";
    }
    return (finding.isAccepted ? "accepted until " : "not accepted any more since ") + finding.until + ": " +
           finding.reason;
}

std::string Describe(const Finding& finding) {
    std::string text = PlaceOf(finding) + ": " + finding.what;
    for (const std::string& more : {IdentityOf(finding), AcceptanceNoteOf(finding)}) {
        text += more.empty() ? "" : " (" + more + ")";
    }
    return text;
}

std::string_view NameOfLevel(const Finding& finding) {
    return finding.isAccepted ? "ACCEPTED" : NameOf(finding.level);
}

}  // namespace inventory
