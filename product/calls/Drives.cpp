#include "calls/Drives.h"

namespace calls {

std::vector<DrivePlace> DrivePlaces(const inventory::Server& server) {
    std::vector<DrivePlace> places;
    for (const inventory::Controller& controller : server.controllers) {
        for (const inventory::Drive& drive : controller.drives) {
            places.push_back({controller.number, drive.enclosure, drive.slot});
        }
    }
    return places;
}

}  // namespace calls
