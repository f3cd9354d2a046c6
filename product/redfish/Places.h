#pragma once

#include "board/Board.h"
#include "inventory/Server.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace redfish {

inline constexpr std::string_view kRootPath = "/redfish/v1";
inline constexpr const char* kSystemsPath = "/redfish/v1/Systems";
inline constexpr const char* kSystemPath = "/redfish/v1/Systems/1";
inline constexpr const char* kStoragesPath = "/redfish/v1/Systems/1/Storage";
inline constexpr const char* kLogServicesPath = "/redfish/v1/Systems/1/LogServices";
inline constexpr const char* kLogPath = "/redfish/v1/Systems/1/LogServices/Events";
inline constexpr const char* kEntriesPath = "/redfish/v1/Systems/1/LogServices/Events/Entries";
inline constexpr const char* kAllChassisPath = "/redfish/v1/Chassis";
inline constexpr const char* kChassisPath = "/redfish/v1/Chassis/1";
inline constexpr const char* kChassisDrivesPath = "/redfish/v1/Chassis/1/Drives";
inline constexpr const char* kEventServicePath = "/redfish/v1/EventService";
inline constexpr const char* kStreamPath = "/redfish/v1/EventService/SSE";
inline constexpr const char* kSessionServicePath = "/redfish/v1/SessionService";
inline constexpr const char* kSessionsPath = "/redfish/v1/SessionService/Sessions";
inline constexpr const char* kRegistriesPath = "/redfish/v1/Registries";
inline constexpr const char* kRegistryPath = "/redfish/v1/Registries/Zorbalt";
inline constexpr const char* kRegistryFilePath = "/redfish/v1/Registries/Zorbalt/Zorbalt.1.0.0.json";

struct DrivePlace {
    std::string id;                   ///< "252-4"
    std::string path;                 ///< "/redfish/v1/Systems/1/Storage/0/Drives/252-4"
    std::vector<std::size_t> groups;  ///< that name it as a member
};

struct VolumePlace {
    std::string id;    ///< "LD0"
    std::string path;  ///< "/redfish/v1/Systems/1/Storage/0/Volumes/LD0"
    std::size_t group = 0, logicalDrive = 0;
};

/// Where a controller is found with what belongs to it, in the order of the document.
struct StoragePlace {
    std::string id;              ///< "0"
    std::string path;            ///< "/redfish/v1/Systems/1/Storage/0"
    std::string controllerPath;  ///< "/redfish/v1/Systems/1/Storage/0/Controllers/0"; empty where none tells
                                 ///< of itself
    std::vector<DrivePlace> drives;
    std::vector<VolumePlace> volumes;
    std::vector<std::size_t> firstVolume;  ///< of each group; and behind the last one

    std::unordered_map<std::string, std::size_t> driveBySerial, driveBySlot, driveByNumber, volumeByNumber;
};

/// Where all parts of a server are. Names in it are the drives' own words: whatever they are, each part has a
/// path of its own.
class Places final {
  public:
    explicit Places(const inventory::Server& server);

    [[nodiscard]] const std::vector<StoragePlace>& All() const { return m_Storages; }

    /// The path of what a finding or an event is about; of a group its controller's. Empty where that is not
    /// there, or is another drive by now.
    [[nodiscard]] std::string PathOf(const inventory::Finding& finding) const;

    /// The volume of that number in a controller; null where there is none, or more than one.
    [[nodiscard]] static const VolumePlace* VolumeOf(const StoragePlace& storage, const std::string& number);

  private:
    std::vector<StoragePlace> m_Storages;
    std::unordered_map<std::string, std::size_t> m_ByNumber;
};

/// What resources are made of. Leads into the board.
struct World {
    explicit World(std::shared_ptr<const board::Board> shown);

    std::shared_ptr<const board::Board> board;
    const inventory::Server& server;  ///< one without anything before the first answer
    Places places;
};

}  // namespace redfish
