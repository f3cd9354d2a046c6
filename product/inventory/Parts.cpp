#include "Parts.h"

#include "Labels.h"
#include "basics/Identifiers.h"
#include "inventory/Health.h"

#include <string_view>
#include <unordered_set>
#include <utility>

namespace inventory {
namespace {

std::string NumberOr(const std::string& number, const char* unnamed) {
    return number.empty() ? unnamed : number;
}

ChangedPart WordsOf(const Drive& drive, const std::string& controller) {
    Finding finding;
    finding.controller = controller;
    finding.part = drive.slot.empty() ? NumberOr(drive.number, "a drive") : "the drive";
    finding.enclosure = drive.enclosure;
    finding.slot = drive.slot;
    finding.product = drive.product;
    finding.serial = drive.serial;
    return {PlaceOf(finding), IdentityOf(finding), controller,    drive.group, drive.number,
            drive.enclosure,  drive.slot,          drive.product, drive.serial};
}

/// Whether the serial number tells this drive from all others.
bool IsKnownBySerial(const Part& part) {
    return part.isDrive && !basics::StandsForNothing(part.words->serial) &&
           !basics::IsRedacted(part.words->serial);
}

using Numbers = std::unordered_map<std::string_view, std::size_t>;

/// Drives by their serial numbers; nowhere for a number that several have.
Numbers DrivesBySerial(const std::vector<Part>& parts) {
    Numbers drives;
    for (std::size_t number = 0; number < parts.size(); ++number) {
        if (IsKnownBySerial(parts[number])) {
            const auto [place, isFirst] = drives.try_emplace(parts[number].words->serial, number);
            place->second = isFirst ? number : kNowhere;
        }
    }
    return drives;
}

void Join(std::vector<Part>& before, std::size_t old, std::vector<Part>& after, std::size_t now) {
    before[old].partner = now;
    after[now].partner = old;
}

void PairBySerial(std::vector<Part>& before, std::vector<Part>& after) {
    const Numbers drives = DrivesBySerial(after);
    for (const auto& [serial, old] : DrivesBySerial(before)) {
        const auto now = drives.find(serial);
        if (old != kNowhere && now != drives.end() && now->second != kNowhere) {
            Join(before, old, after, now->second);
        }
    }
}

/// The first without a partner with the first of the same name, and so on.
void PairByName(std::vector<Part>& before, std::vector<Part>& after) {
    std::unordered_map<std::string_view, std::vector<std::size_t>> waiting;
    for (std::size_t now = after.size(); now-- > 0;) {
        if (after[now].partner == kNowhere) {
            waiting[after[now].name].push_back(now);
        }
    }
    for (std::size_t old = 0; old < before.size(); ++old) {
        const auto found = before[old].partner == kNowhere ? waiting.find(before[old].name) : waiting.end();
        if (found != waiting.end() && !found->second.empty()) {
            Join(before, old, after, found->second.back());
            found->second.pop_back();
        }
    }
}

/// What is not told on one side may be the same.
bool AreDifferent(const std::string& before, const std::string& after) {
    return !before.empty() && !after.empty() && before != after;
}

}  // namespace

Parts::Parts(const Document& document) {
    const Server server = Survey(document);
    for (const Controller& controller : server.controllers) {
        AddController(controller);
    }
    std::unordered_set<const Item*> known;
    for (const Part& part : m_Parts) {
        known.insert(part.root);
    }
    for (const Item& root : document.Roots()) {
        if (!known.contains(&root)) {
            const std::string label = LabelOf(root);
            Add(root, {.place = "document, " + label, .part = label});
        }
    }
}

std::size_t Parts::DriveOfMember(const Item& member) const {
    const auto found = m_DriveOfMember.find(&member);
    return found == m_DriveOfMember.end() ? kNowhere : found->second;
}

void Parts::Add(const Item& root, ChangedPart words, bool isDrive) {
    std::string name = words.place;
    if (const std::size_t occurrence = ++m_Occurrences[name]; occurrence > 1) {
        words.place += " (" + std::to_string(occurrence) + ")";
    }
    m_Parts.push_back(
        {std::make_shared<const ChangedPart>(std::move(words)), std::move(name), &root, isDrive});
}

void Parts::AddController(const Controller& controller) {
    Finding place;
    place.controller = controller.number;
    if (controller.item != nullptr) {
        place.part = controller.number.empty() ? "a controller" : "";
        Add(*controller.item, {.place = PlaceOf(place), .controller = controller.number});
    }
    for (const Group& group : controller.groups) {
        place.part = NumberOr(group.number, "a group");
        Add(*group.item, {.place = PlaceOf(place), .controller = controller.number, .group = group.number});
    }
    const std::size_t firstDrive = m_Parts.size();
    for (const Drive& drive : controller.drives) {
        Add(*drive.item, WordsOf(drive, controller.number), true);
    }
    for (const Group& group : controller.groups) {
        for (const Member& member : group.members) {
            if (DriveOf(controller, member) != nullptr) {
                m_DriveOfMember.emplace(member.item, firstDrive + member.drive);
            }
        }
    }
}

void Pair(Parts& before, Parts& after) {
    PairBySerial(before.All(), after.All());
    PairByName(before.All(), after.All());
}

bool HasMoved(const Part& before, const Part& after) {
    const ChangedPart& old = *before.words;
    const ChangedPart& now = *after.words;
    return after.isDrive && (AreDifferent(old.controller, now.controller) ||
                             AreDifferent(old.enclosure, now.enclosure) || AreDifferent(old.slot, now.slot));
}

bool IsReplacement(const Part& before, const Part& after) {
    return IsKnownBySerial(before) && IsKnownBySerial(after) && before.words->serial != after.words->serial;
}

}  // namespace inventory
