#include "basics/Words.h"
#include "history/History.h"

#include <algorithm>
#include <iterator>

namespace history {
namespace {

using inventory::Finding;
using inventory::PartKind;

/// In small letters, with one blank between the words and none of the marks between them.
std::string Plain(std::string_view text) {
    return basics::Joined(basics::Words(basics::InLowerCase(text), " ,\t"), " ");
}

/// Everything that the part may be called beside its place.
std::vector<std::string> TypedNamesOf(const Finding& about) {
    std::vector<std::string> names = {about.serial};
    const auto add = [&](const std::string& name) {
        if (!name.empty()) {
            names.insert(names.end(), {name, about.controller + " " + name,
                                       "controller " + about.controller + " " + name});
        }
    };
    switch (about.kind) {
        case PartKind::Controller:
            names.insert(names.end(), {about.controller, "controller " + about.controller});
            break;
        case PartKind::Group:
            add(about.group);
            break;
        case PartKind::Unit:
        case PartKind::LogicalDrive:
            add(about.part);
            break;
        case PartKind::Drive:
            add(about.part);
            if (!about.slot.empty()) {
                add(about.enclosure + ":" + about.slot);
                add(about.enclosure + " " + about.slot);
            }
            break;
    }
    return names;
}

bool IsNamed(const Part& part, const std::string& words) {
    std::vector<std::string> names = TypedNamesOf(part.about);
    names.insert(names.end(), {part.key, PlaceOf(part.about), IdentityOf(part.about)});
    return std::any_of(names.begin(), names.end(),
                       [&words](const std::string& name) { return !name.empty() && Plain(name) == words; });
}

}  // namespace

std::vector<Part> PartsNamed(const std::vector<Part>& parts, const std::string& words) {
    const std::string plain = Plain(words);
    std::vector<Part> named;
    std::copy_if(parts.begin(), parts.end(), std::back_inserter(named),
                 [&plain](const Part& part) { return IsNamed(part, plain); });
    const auto isThere = [](const Part& part) { return part.state.level.has_value(); };
    if (std::any_of(named.begin(), named.end(), isThere)) {
        std::erase_if(named, [&isThere](const Part& part) { return !isThere(part); });
    }
    return named;
}

}  // namespace history
