#include "Sight.h"

#include "inventory/Document.h"

#include <utility>

namespace doors {

bool Sight::Take(const board::Message& message) {
    switch (message.kind) {
        case board::MessageKind::Drives:
            for (const board::DriveReport& drive : board::UnpackDrives(message.bytes)) {
                TakeDrive(drive);
            }
            return false;
        case board::MessageKind::Report:
            TakeReport(board::UnpackReport(message.bytes));
            return true;
        default:
            return false;
    }
}

void Sight::TakeDrive(const board::DriveReport& drive) {
    try {
        m_Picture.SeeDrive(
            {drive.controller, drive.enclosure, drive.slot, inventory::Document::Read(drive.document)});
    } catch (const inventory::DocumentError&) {
        return;  // What the module said of it is nothing, here as for the service.
    }
}

void Sight::TakeReport(board::Report report) {
    auto next = std::make_shared<board::Board>();
    next->number = report.number;
    next->host = std::move(report.host);
    next->startedAt = report.startedAt;
    next->inquiry = std::move(report.inquiry);
    next->alarms = std::move(report.alarms);
    next->events = std::move(report.events);
    const bool isSameAnswer = m_Board && m_Board->snapshot && m_Board->snapshot->takenAt == report.takenAt;
    if (isSameAnswer) {
        next->snapshot = m_Board->snapshot;
        next->document = m_Board->document;
    } else if (!report.document.empty()) {
        m_Picture.SeeServer(inventory::Document::Read(report.document), report.criteria, report.takenAt);
        m_Picture.Latest()->host = next->host;
        m_Picture.Latest()->runs = report.runs;
        next->snapshot = m_Picture.Latest();
        next->document = std::make_shared<const std::string>(std::move(report.document));
    }
    m_Board = std::move(next);
}

}  // namespace doors
