#include "basics/Text.h"
#include "views/Views.h"

#include <array>

namespace views {
namespace {

using inventory::Change;

constexpr std::array<const char*, 3> kWords = {"appeared", "vanished", "changed"};

std::string Quoted(const std::string& value) {
    return '"' + basics::Printable(value) + '"';
}

std::string LineOf(const Change& change) {
    constexpr std::size_t kWordWidth = 10;
    std::string line = basics::PadRight(kWords[static_cast<std::size_t>(change.kind)], kWordWidth) +
                       basics::Printable(change.place);
    if (change.key.empty()) {
        return line + '\n';
    }
    line += ": " + basics::Printable(change.key) + ": ";
    switch (change.kind) {
        case Change::Kind::Appeared:
            return line + Quoted(change.after) + '\n';
        case Change::Kind::Vanished:
            return line + Quoted(change.before) + '\n';
        default:
            return line + Quoted(change.before) + " -> " + Quoted(change.after) + '\n';
    }
}

}  // namespace

std::string Differences(const std::vector<Change>& changes) {
    if (changes.empty()) {
        return "no difference\n";
    }
    std::array<std::size_t, kWords.size()> counts{};
    std::string text;
    for (const Change& change : changes) {
        text += LineOf(change);
        ++counts[static_cast<std::size_t>(change.kind)];
    }
    for (std::size_t kind = 0; kind < counts.size(); ++kind) {
        text += (kind == 0 ? "" : ", ") + std::to_string(counts[kind]) + " " + kWords[kind];
    }
    return text + '\n';
}

}  // namespace views
