#include "Parts.h"

#include <utility>

namespace watch {
namespace {

using inventory::Controller;
using inventory::Finding;
using inventory::PartKind;

std::string SlotKey(const std::string& controller, const std::string& enclosure, const std::string& slot,
                    const std::string& number) {
    return slot.empty() ? "drive-number/" + controller + "/" + number
                        : "slot/" + controller + "/" + enclosure + "/" + slot;
}

Finding AboutOf(PartKind kind, const Controller& controller, const std::string& group,
                const std::string& part) {
    Finding about;
    about.kind = kind;
    about.controller = controller.number;
    about.group = group;
    about.part = part;
    return about;
}

}  // namespace

Present::Present(const inventory::Snapshot& snapshot) {
    const std::vector<Controller>& controllers = snapshot.TheServer().controllers;
    for (const Controller& controller : controllers) {
        for (const inventory::Drive& drive : controller.drives) {
            ++m_Serials[drive.serial];
        }
    }
    for (const Controller& controller : controllers) {
        Finding about = AboutOf(PartKind::Controller, controller, "", "");
        about.product = controller.product;
        about.serial = controller.serial;
        Add({.about = about, .words = controller.status, .health = controller.health});
        for (const inventory::BackupUnit& unit : controller.backupUnits) {
            Add({.about = AboutOf(PartKind::Unit, controller, "", unit.name),
                 .words = unit.status.empty() ? unit.presence : unit.status,
                 .health = unit.health});
        }
        for (const inventory::Group& group : controller.groups) {
            Add({.about = AboutOf(PartKind::Group, controller, group.number, ""), .health = group.health});
            for (const inventory::LogicalDrive& drive : group.logicalDrives) {
                Add({.about = AboutOf(PartKind::LogicalDrive, controller, group.number, drive.number),
                     .words = drive.state,
                     .health = drive.health});
            }
        }
        AddDrives(controller);
    }
}

void Present::AddDrives(const Controller& controller) {
    for (const inventory::Drive& drive : controller.drives) {
        Finding about = AboutOf(PartKind::Drive, controller, drive.group, drive.number);
        about.enclosure = drive.enclosure;
        about.slot = drive.slot;
        about.product = drive.product;
        about.serial = drive.serial;
        Add({.about = std::move(about),
             .words = StatusOf(drive),
             .health = drive.health,
             .drive = &drive,
             .group = GroupOf(controller, drive)});
    }
}

// The first of those that nobody can tell apart is the one that is meant.
void Present::Add(SeenPart part) {
    part.key = KeyOf(part.about);
    part.place = PlaceOf(part.about);
    m_ByKey.try_emplace(part.key, parts.size());
    m_ByPlace.try_emplace(part.place, parts.size());
    parts.push_back(std::move(part));
}

const SeenPart* Present::Find(const std::string& key) const {
    const auto found = m_ByKey.find(key);
    return found == m_ByKey.end() ? nullptr : &parts[found->second];
}

const SeenPart* Present::At(const std::string& place) const {
    const auto found = m_ByPlace.find(place);
    return found == m_ByPlace.end() ? nullptr : &parts[found->second];
}

std::string Present::KeyOf(const Finding& finding) const {
    const auto told = m_Serials.find(finding.serial);
    const bool isUnique = !finding.serial.empty() && (told == m_Serials.end() || told->second == 1);
    return finding.kind == PartKind::Drive && isUnique ? "drive/" + finding.serial : PlaceOf(finding);
}

std::string Present::PlaceOf(const Finding& finding) {
    switch (finding.kind) {
        case PartKind::Drive:
            return SlotKey(finding.controller, finding.enclosure, finding.slot, finding.part);
        case PartKind::LogicalDrive:  // Its number is the controller's, whatever group it is in.
            return "logical-drive/" + finding.controller + "/" + finding.part;
        case PartKind::Group:
            return "group/" + finding.controller + "/" + finding.group;
        case PartKind::Unit:
            return "unit/" + finding.controller + "/" + finding.part;
        case PartKind::Controller:
            break;
    }
    return "controller/" + finding.controller;
}

}  // namespace watch
