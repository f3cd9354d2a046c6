#include "board/Board.h"

#include <algorithm>

namespace board {

inventory::Level LevelOf(const Board& board) {
    inventory::Level level = board.snapshot ? board.snapshot->TheHealth().level : inventory::Level::Unknown;
    for (const StandingAlarm& alarm : board.alarms) {
        level = std::max(level, alarm.finding.level);
    }
    return level;
}

}  // namespace board
