#include "Boards.h"

namespace redfish::test {
namespace {

// 2031-04-05 06:07:08 UTC
constexpr board::TimePoint kTime{std::chrono::seconds{1933135628}};

board::NumberedEvent EventOf(const inventory::Finding& finding, std::int64_t number) {
    return {number,
            {.id = "20310405T060708Z-" + std::to_string(number),
             .at = kTime,
             .kind = watch::EventKind::Began,
             .level = finding.level,
             .about = finding,
             .words = Describe(finding),
             .advice = "look at it"}};
}

}  // namespace

std::shared_ptr<board::Board> EmptyBoard() {
    auto board = std::make_shared<board::Board>();
    board->startedAt = kTime - std::chrono::hours(1);
    board->host = "storage7";
    return board;
}

std::shared_ptr<board::Board> BoardOfXml(const std::string& xml) {
    std::shared_ptr<board::Board> board = EmptyBoard();
    auto snapshot = std::make_shared<inventory::Snapshot>(inventory::Document::Read(xml));
    snapshot->takenAt = kTime;
    snapshot->host = board->host;
    board->document = std::make_shared<const std::string>(xml);
    board->inquiry = {.at = kTime};
    for (const inventory::Finding& finding : snapshot->TheHealth().findings) {
        board->alarms.push_back({kTime, finding});
        board->events.push_back(EventOf(finding, static_cast<std::int64_t>(board->events.size()) + 1));
    }
    board->snapshot = std::move(snapshot);
    return board;
}

}  // namespace redfish::test
