#include "board/Board.h"

#include <algorithm>

namespace board {

inventory::Level LevelOf(const Board& board) {
    inventory::Level level = board.snapshot ? board.snapshot->TheHealth().level : inventory::Level::Unknown;
    for (const StandingAlarm& alarm : board.alarms) {
        level = std::max(level, alarm.finding.level);
    }
    const bool isOld = board.inquiry && !board.inquiry->failure.empty();
    return isOld ? std::max(level, inventory::Level::Unknown) : level;
}

}  // namespace board
