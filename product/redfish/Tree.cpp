#include "Tree.h"

namespace redfish {

Service::Tree::Tree(std::shared_ptr<const board::Board> board) : m_World(std::move(board)) {
    AddFixed();
    for (std::size_t controller = 0; controller < m_World.places.All().size(); ++controller) {
        AddStorage(controller);
    }
    for (std::size_t event = 0; event < m_World.board->events.size(); ++event) {
        Add(Kind::LogEntry, EntryPathOf(m_World.board->events[event]), MakeEntry, 0, event);
    }
}

const Service::Tree::Node* Service::Tree::Find(const std::string& path) const {
    const auto found = m_Nodes.find(path);
    return found == m_Nodes.end() ? nullptr : &found->second;
}

void Service::Tree::Add(Kind kind, const std::string& path, Make make, std::size_t controller,
                        std::size_t part) {
    m_Nodes.try_emplace(path, Subject{kind, path, controller, part}, make);
}

void Service::Tree::AddFixed() {
    Add(Kind::Versions, std::string(kPrefix), MakeVersions);
    Add(Kind::Odata, "/redfish/v1/odata", MakeOdata);
    Add(Kind::Metadata, "/redfish/v1/$metadata", nullptr);
    Add(Kind::ServiceRoot, std::string(kRootPath), MakeServiceRoot);
    Add(Kind::ComputerSystemCollection, kSystemsPath, MakeSystems);
    Add(Kind::ComputerSystem, kSystemPath, MakeSystem);
    Add(Kind::StorageCollection, kStoragesPath, MakeStorages);
    Add(Kind::LogServiceCollection, kLogServicesPath, MakeLogServices);
    Add(Kind::LogService, kLogPath, MakeLog);
    Add(Kind::LogEntryCollection, kEntriesPath, MakeEntries);
    Add(Kind::ChassisCollection, kAllChassisPath, MakeAllChassis);
    Add(Kind::Chassis, kChassisPath, MakeChassis);
    Add(Kind::DriveCollection, kChassisDrivesPath, MakeChassisDrives);
    Add(Kind::EventService, kEventServicePath, MakeEventService);
    Add(Kind::SessionService, kSessionServicePath, MakeSessionService);
    Add(Kind::MessageRegistryFileCollection, kRegistriesPath, MakeRegistries);
    Add(Kind::MessageRegistryFile, kRegistryPath, MakeRegistryFile);
    Add(Kind::MessageRegistry, kRegistryFilePath, MakeRegistry);
}

void Service::Tree::AddStorage(std::size_t controller) {
    const StoragePlace& storage = m_World.places.All()[controller];
    Add(Kind::Storage, storage.path, MakeStorage, controller);
    Add(Kind::StorageControllerCollection, storage.path + "/Controllers", MakeControllers, controller);
    Add(Kind::VolumeCollection, storage.path + "/Volumes", MakeVolumes, controller);
    if (!storage.controllerPath.empty()) {
        Add(Kind::StorageController, storage.controllerPath, MakeController, controller);
    }
    for (std::size_t volume = 0; volume < storage.volumes.size(); ++volume) {
        Add(Kind::Volume, storage.volumes[volume].path, MakeVolume, controller, volume);
    }
    for (std::size_t place = 0; place < storage.drives.size(); ++place) {
        const std::string& path = storage.drives[place].path;
        const inventory::Drive& drive = m_World.server.controllers[controller].drives[place];
        Add(Kind::Drive, path, MakeDrive, controller, place);
        if (HasEnvironment(drive)) {
            Add(Kind::EnvironmentMetrics, path + "/EnvironmentMetrics", MakeEnvironment, controller, place);
        }
        if (HasMetrics(drive)) {
            Add(Kind::DriveMetrics, path + "/Metrics", MakeDriveMetrics, controller, place);
        }
    }
}

const Service::Tree::Written& Service::Tree::Node::WrittenIn(const World& world) const {
    std::call_once(m_Once, [&] {
        const bool isXml = m_Subject.kind == Kind::Metadata;
        std::string text = isXml ? MetadataText() : TextOf(ValueIn(world));
        m_Written.etag = http::EtagOf(text);
        m_Written.text = std::make_shared<const std::string>(std::move(text));
    });
    return m_Written;
}

}  // namespace redfish
