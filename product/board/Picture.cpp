#include "board/Picture.h"

#include <algorithm>
#include <string>
#include <unordered_map>
#include <utility>

namespace board {
namespace {

using inventory::DriveAnswer;

std::string KeyOf(const std::string& controller, const std::string& enclosure, const std::string& slot) {
    return controller + '\n' + enclosure + '\n' + slot;
}

/// Serial numbers by place.
std::unordered_map<std::string, std::string> DrivesOf(const inventory::Document& document) {
    std::unordered_map<std::string, std::string> drives;
    const inventory::Server server = inventory::Survey(document);
    for (const inventory::Controller& controller : server.controllers) {
        for (const inventory::Drive& drive : controller.drives) {
            drives.try_emplace(KeyOf(controller.number, drive.enclosure, drive.slot), drive.serial);
        }
    }
    return drives;
}

const inventory::Drive* DriveIn(const inventory::Server& server) {
    const bool isThere = !server.controllers.empty() && !server.controllers.front().drives.empty();
    return isThere ? &server.controllers.front().drives.front() : nullptr;
}

}  // namespace

void Picture::SeeDrive(DriveAnswer answer) {
    const inventory::Server told = inventory::Survey(answer.document, answer.controller);
    if (DriveIn(told) != nullptr) {
        m_News.push_back(std::move(answer));
    }
}

const inventory::Snapshot& Picture::SeeServer(inventory::Document document,
                                              const inventory::Criteria& criteria,
                                              std::chrono::system_clock::time_point now) {
    std::vector<DriveAnswer> answers =
        m_Latest ? std::move(*m_Latest).TakeAnswers() : std::vector<DriveAnswer>();
    m_Latest.reset();
    for (DriveAnswer& news : std::exchange(m_News, {})) {
        const auto old = std::find_if(answers.begin(), answers.end(), [&news](const DriveAnswer& each) {
            return each.controller == news.controller && each.enclosure == news.enclosure &&
                   each.slot == news.slot;
        });
        if (old != answers.end()) {
            *old = std::move(news);
        } else {
            answers.push_back(std::move(news));
        }
    }
    const std::unordered_map<std::string, std::string> drives = DrivesOf(document);
    std::erase_if(answers, [&drives](const DriveAnswer& each) {
        const auto drive = drives.find(KeyOf(each.controller, each.enclosure, each.slot));
        const inventory::Server told = inventory::Survey(each.document, each.controller);
        return drive == drives.end() || DriveIn(told)->serial != drive->second;
    });
    m_Latest = std::make_shared<inventory::Snapshot>(std::move(document), "", std::move(answers), criteria);
    m_Latest->takenAt = now;
    return *m_Latest;
}

}  // namespace board
