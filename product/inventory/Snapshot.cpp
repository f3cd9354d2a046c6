#include "inventory/Snapshot.h"

#include <utility>

namespace inventory {

Snapshot::Snapshot(Document document, const std::string& controller)
    : m_Document(std::move(document)), m_Server(Survey(m_Document, controller)) {}

void Snapshot::Add(DriveAnswer answer) {
    const Server told = Survey(answer.document, answer.controller);
    for (Controller& controller : m_Server.controllers) {
        if (controller.number != answer.controller || told.controllers.empty() ||
            told.controllers.front().drives.empty()) {
            continue;
        }
        for (Drive& drive : controller.drives) {
            if (drive.enclosure == answer.enclosure && drive.slot == answer.slot) {
                drive.smart = told.controllers.front().drives.front().smart;
            }
        }
    }
    m_Answers.push_back(std::move(answer));
}

}  // namespace inventory
