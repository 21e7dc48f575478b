// The end of a station with very many fresh rows: it does not wait until they are in order.
#include "historyRoom.h"

#include "history/historySchema.h"
#include "history/rowPacking.h"

#include <gtest/gtest.h>

namespace {

enum { ROWS = 2000 }; // more than the smallest cap leaves fresh

qint64 numberIn(const HistoryRoom& room, const char* query)
{
    return openHistoryFile(room.fileName())->number(query);
}

void answerOften(HistoryRoom& room)
{
    for (int i = 0; i < ROWS; ++i)
        room.answer(0, i);
}

} // namespace

TEST(HistoryEnd, WritesAllRowsAndLeavesTheirOrderToTheNextRun)
{
    HistoryRoom room(historyTags(1));
    answerOften(room);
    room.writer->hurry();
    room.turn();
    EXPECT_EQ(ROWS, numberIn(room, "SELECT count(*) FROM fresh"));
    EXPECT_EQ(0, numberIn(room, "SELECT count(*) FROM packs"));
    room.kill();
    room.startStation();
    room.second();
    EXPECT_EQ(0, numberIn(room, "SELECT count(*) FROM fresh"));
    const int ofNextRun = 1; // from its first look
    EXPECT_EQ(ROWS + ofNextRun, numberIn(room, "SELECT sum(rows) FROM packs"));
}

TEST(HistoryEnd, UndoesAPackingThatSomebodyWaitsFor)
{
    HistoryRoom room(historyTags(1));
    answerOften(room);
    room.writer->hurry();
    room.turn();
    const std::string rows = room.rows();
    const std::atomic<bool> isHurried{true};
    EXPECT_FALSE(packFreshRows(*openHistoryFile(room.fileName()), isHurried));
    EXPECT_EQ(ROWS, numberIn(room, "SELECT count(*) FROM fresh"));
    EXPECT_EQ(0, numberIn(room, "SELECT count(*) FROM packings"));
    EXPECT_EQ(rows, room.rows());
    EXPECT_TRUE(packFreshRows(*openHistoryFile(room.fileName())));
    EXPECT_EQ(rows, room.rows());
}
