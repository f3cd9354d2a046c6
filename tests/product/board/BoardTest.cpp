#include "board/Board.h"

#include <gtest/gtest.h>

namespace {

using board::Board;
using inventory::Level;

std::shared_ptr<const inventory::Snapshot> Answer() {
    return std::make_shared<const inventory::Snapshot>(inventory::Document::Read("<RAID version=\"1\"/>"));
}

TEST(LevelOfTheBoard, IsThatOfTheAnswerOrOfTheWorstAlarm) {
    Board board;
    EXPECT_EQ(LevelOf(board), Level::Unknown);
    board.snapshot = Answer();
    EXPECT_EQ(LevelOf(board), board.snapshot->TheHealth().level);
    board.alarms = {{{}, {.level = Level::Critical}}, {{}, {.level = Level::Warning}}};
    EXPECT_EQ(LevelOf(board), Level::Critical) << "of a drive that was pulled, say";
}

}  // namespace
