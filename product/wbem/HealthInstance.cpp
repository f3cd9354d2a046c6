#include "HealthInstance.h"

#include "basics/Text.h"
#include "basics/Time.h"
#include "inventory/Health.h"

namespace wbem {
namespace {

Values One(std::string value) {
    return std::vector<std::string>{std::move(value)};
}

Values Known(const std::string& value) {
    return value.empty() ? std::nullopt : One(value);
}

Values TimeOf(const std::optional<board::TimePoint>& time) {
    return time ? One(basics::UtcText(*time, "%Y%m%d%H%M%S.000000+000")) : std::nullopt;
}

std::string Told(const inventory::Finding& finding) {
    return std::string(NameOfLevel(finding)) + ": " + basics::OneLine(Describe(finding));
}

Values Findings(const inventory::Snapshot& snapshot) {
    std::vector<std::string> lines;
    for (const inventory::Finding& finding : snapshot.TheHealth().findings) {
        lines.push_back(Told(finding));
    }
    return lines;
}

Values Alarms(const board::Board& board) {
    std::vector<std::string> lines;
    for (const board::StandingAlarm& alarm : board.alarms) {
        lines.push_back(Told(alarm.finding));
    }
    return lines;
}

}  // namespace

Class HealthClass() {
    return {kHealthClass,
            {{"InstanceID", Type::String, false, true},
             {"Host", Type::String},
             {"Health", Type::String},
             {"Summary", Type::String},
             {"Findings", Type::String, true},
             {"Alarms", Type::String, true},
             {"Controllers", Type::Uint32},
             {"Groups", Type::Uint32},
             {"LogicalDrives", Type::Uint32},
             {"Drives", Type::Uint32},
             {"AnsweredAt", Type::DateTime},
             {"AskedAt", Type::DateTime},
             {"Failure", Type::String}},
            {}};
}

std::vector<Values> HealthValues(const board::Board& board) {
    const inventory::Snapshot* const snapshot = board.snapshot.get();
    const auto told = [&](auto valueOf) { return snapshot != nullptr ? valueOf(*snapshot) : Values(); };
    const auto count = [&](std::size_t inventory::Counts::*which) {
        return told([&](const auto& known) { return One(std::to_string(known.TheHealth().counts.*which)); });
    };
    using inventory::Counts;
    return {One(kInstanceId),
            Known(board.host),
            One(std::string(NameOf(LevelOf(board)))),
            told([](const auto& known) { return One(Headline(known.TheHealth())); }),
            told(Findings),
            Alarms(board),
            count(&Counts::controllers),
            count(&Counts::groups),
            count(&Counts::logicalDrives),
            count(&Counts::drives),
            told([](const auto& known) { return TimeOf(known.takenAt); }),
            board.inquiry ? TimeOf(board.inquiry->at) : std::nullopt,
            board.inquiry ? Known(basics::OneLine(board.inquiry->failure)) : std::nullopt};
}

}  // namespace wbem
