#include "inventory/Snapshot.h"

#include <utility>

namespace inventory {
namespace {

/// Hangs the SMART data of an answer at the drive that it is about.
void Hang(const DriveAnswer& answer, Server& server) {
    const Server told = Survey(answer.document, answer.controller);
    if (told.controllers.empty() || told.controllers.front().drives.empty()) {
        return;
    }
    for (Controller& controller : server.controllers) {
        for (Drive& drive : controller.drives) {
            if (controller.number == answer.controller && drive.enclosure == answer.enclosure &&
                drive.slot == answer.slot) {
                drive.smart = told.controllers.front().drives.front().smart;
            }
        }
    }
}

}  // namespace

Snapshot::Snapshot(Document document, const std::string& controller, std::vector<DriveAnswer> answers,
                   const Criteria& criteria)
    : m_Document(std::move(document)),
      m_Answers(std::move(answers)),
      m_Server(Survey(m_Document, controller)) {
    for (const DriveAnswer& answer : m_Answers) {
        Hang(answer, m_Server);
    }
    m_Health = Judge(m_Server, criteria);
}

}  // namespace inventory
