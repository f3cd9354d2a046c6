#include "watch/SeenPart.h"

#include "Parts.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace watch {
namespace {

using inventory::Finding;
using inventory::PartKind;

/// A part that cannot be found belongs to nothing: a drive that its group names and nobody reports.
SeenPart* Find(std::unordered_map<std::string, SeenPart*>& parts, const std::string& key) {
    const auto found = parts.find(key);
    return found == parts.end() ? nullptr : found->second;
}

}  // namespace

std::vector<SeenPart> PartsOf(const inventory::Snapshot& snapshot) {
    Present present(snapshot);
    std::unordered_set<std::string> keys;
    std::erase_if(present.parts, [&keys](const SeenPart& part) { return !keys.insert(part.key).second; });
    std::unordered_map<std::string, SeenPart*> parts;
    for (SeenPart& part : present.parts) {
        parts.emplace(part.key, &part);
    }
    for (const Finding& finding : snapshot.TheHealth().findings) {
        if (finding.rule != inventory::Rule::State) {
            continue;
        }
        if (SeenPart* const part = Find(parts, present.KeyOf(finding))) {
            part->level = std::max(part->level, finding.level);
            part->words = finding.kind == PartKind::Group ? "" : finding.what;
        }
        Finding group = finding;
        group.kind = PartKind::Group;
        if (SeenPart* const part = finding.group.empty() ? nullptr : Find(parts, Present::PlaceOf(group))) {
            part->level = std::max(part->level, finding.level);
        }
    }
    return std::move(present.parts);
}

}  // namespace watch
