#include "Places.h"

#include "Identifiers.h"
#include "basics/Identifiers.h"

namespace redfish {
namespace {

using inventory::kNowhere;
using Index = std::unordered_map<std::string, std::size_t>;

const inventory::Server kNothing;

/// A text that two parts have leads to neither.
void Note(Index& index, const std::string& text, std::size_t place) {
    if (!text.empty()) {
        const auto [entry, isNew] = index.try_emplace(text, place);
        entry->second = isNew ? place : kNowhere;
    }
}

std::size_t Find(const Index& index, const std::string& text) {
    const auto found = index.find(text);
    return found == index.end() ? kNowhere : found->second;
}

bool TellsApart(const std::string& serial) {
    return !serial.empty() && !basics::StandsForNothing(serial) && !basics::IsRedacted(serial);
}

std::string SlotKey(const std::string& enclosure, const std::string& slot) {
    return slot.empty() ? "" : enclosure + '-' + slot;
}

/// The slot is where people go; a number is given by the controller.
std::string WantedIdOf(const inventory::Drive& drive) {
    if (!drive.slot.empty()) {
        return drive.enclosure.empty() ? "slot-" + drive.slot : SlotKey(drive.enclosure, drive.slot);
    }
    return drive.number.empty() ? "drive" : drive.number;
}

void PlaceDrives(const inventory::Controller& controller, StoragePlace& storage) {
    Identifiers identifiers;
    for (const inventory::Drive& drive : controller.drives) {
        const std::size_t place = storage.drives.size();
        const std::string id = identifiers.Next(WantedIdOf(drive));
        storage.drives.push_back({id, storage.path + "/Drives/" + id, {}});
        Note(storage.driveBySerial, TellsApart(drive.serial) ? drive.serial : "", place);
        Note(storage.driveBySlot, SlotKey(drive.enclosure, drive.slot), place);
        Note(storage.driveByNumber, drive.number, place);
    }
    for (std::size_t group = 0; group < controller.groups.size(); ++group) {
        for (const inventory::Member& member : controller.groups[group].members) {
            if (member.drive >= storage.drives.size()) {
                continue;
            }
            std::vector<std::size_t>& groups = storage.drives[member.drive].groups;
            if (groups.empty() || groups.back() != group) {
                groups.push_back(group);
            }
        }
    }
}

void PlaceVolumes(const inventory::Controller& controller, StoragePlace& storage) {
    Identifiers identifiers;
    for (std::size_t group = 0; group < controller.groups.size(); ++group) {
        storage.firstVolume.push_back(storage.volumes.size());
        const std::vector<inventory::LogicalDrive>& drives = controller.groups[group].logicalDrives;
        for (std::size_t drive = 0; drive < drives.size(); ++drive) {
            const std::string& number = drives[drive].number;
            Note(storage.volumeByNumber, number, storage.volumes.size());
            const std::string id = identifiers.Next(number.empty() ? "volume" : number);
            storage.volumes.push_back({id, storage.path + "/Volumes/" + id, group, drive});
        }
    }
    storage.firstVolume.push_back(storage.volumes.size());
}

const inventory::Server& ServerOf(const board::Board& board) {
    return board.snapshot ? board.snapshot->TheServer() : kNothing;
}

std::string DrivePathOf(const StoragePlace& storage, const inventory::Finding& finding) {
    std::size_t place = kNowhere;
    if (TellsApart(finding.serial)) {
        place = Find(storage.driveBySerial, finding.serial);
    } else if (!finding.slot.empty()) {
        place = Find(storage.driveBySlot, SlotKey(finding.enclosure, finding.slot));
    } else {
        place = Find(storage.driveByNumber, finding.part);
    }
    return place == kNowhere ? "" : storage.drives[place].path;
}

}  // namespace

Places::Places(const inventory::Server& server) {
    Identifiers identifiers;
    for (const inventory::Controller& controller : server.controllers) {
        StoragePlace storage;
        storage.id = identifiers.Next(controller.number.empty() ? "controller" : controller.number);
        storage.path = kStoragesPath + ("/" + storage.id);
        if (controller.item != nullptr) {
            storage.controllerPath = storage.path + "/Controllers/" + storage.id;
        }
        PlaceDrives(controller, storage);
        PlaceVolumes(controller, storage);
        Note(m_ByNumber, controller.number, m_Storages.size());
        m_Storages.push_back(std::move(storage));
    }
}

std::string Places::PathOf(const inventory::Finding& finding) const {
    using inventory::PartKind;
    const std::size_t controller = Find(m_ByNumber, finding.controller);
    if (controller == kNowhere) {
        return "";
    }
    const StoragePlace& storage = m_Storages[controller];
    switch (finding.kind) {
        case PartKind::Drive:
            return DrivePathOf(storage, finding);
        case PartKind::LogicalDrive: {
            const VolumePlace* const volume = VolumeOf(storage, finding.part);
            return volume == nullptr ? "" : volume->path;
        }
        case PartKind::Controller:
        case PartKind::Unit:
            return storage.controllerPath.empty() ? storage.path : storage.controllerPath;
        case PartKind::Group:
            break;
    }
    return storage.path;
}

const VolumePlace* Places::VolumeOf(const StoragePlace& storage, const std::string& number) {
    const std::size_t place = Find(storage.volumeByNumber, number);
    return place == kNowhere ? nullptr : &storage.volumes[place];
}

World::World(std::shared_ptr<const board::Board> shown)
    : board(std::move(shown)), server(ServerOf(*board)), places(server) {}

}  // namespace redfish
