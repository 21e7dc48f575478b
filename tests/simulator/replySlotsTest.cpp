#include "replySlots.h"

#include <gtest/gtest.h>

TEST(ReplySlots, ReplyStartsWhenReadyOnAFreeLine)
{
    ReplySlots slots;
    EXPECT_EQ(100, slots.take(1, 100, 10));
    EXPECT_EQ(150, slots.take(1, 150, 10));
}

TEST(ReplySlots, RepliesOfOneStationKeepTheirOrder)
{
    ReplySlots slots;
    slots.take(1, 100, 10);
    EXPECT_EQ(110, slots.earliest(1, 50));
    EXPECT_EQ(110, slots.take(1, 50, 10));
    EXPECT_EQ(120, slots.take(1, 119, 10));
}

TEST(ReplySlots, AnotherStationOvertakesALateReply)
{
    ReplySlots slots;
    slots.take(1, 100, 10);
    EXPECT_EQ(50, slots.earliest(2, 50));
    EXPECT_EQ(50, slots.take(2, 50, 10));
    EXPECT_EQ(90, slots.take(2, 90, 10)); // ends when the late reply starts
}

TEST(ReplySlots, ReplyTooLongForAGapGoesBehind)
{
    ReplySlots slots;
    slots.take(1, 100, 10);
    slots.take(1, 130, 10);
    EXPECT_EQ(110, slots.take(2, 91, 20)); // between the two
    EXPECT_EQ(140, slots.take(3, 91, 10));
    EXPECT_EQ(80, slots.take(4, 80, 20));
}

TEST(ReplySlots, RepliesWithoutDurationBlockNoOther)
{
    ReplySlots slots;
    EXPECT_EQ(100, slots.take(1, 100, 0));
    EXPECT_EQ(100, slots.take(1, 90, 0));
    EXPECT_EQ(100, slots.take(2, 100, 0));
    EXPECT_EQ(90, slots.take(3, 90, 20));
}

TEST(ReplySlots, HoldEveryoneDelaysAllStations)
{
    ReplySlots slots;
    slots.holdEveryone(200);
    slots.holdEveryone(150);
    EXPECT_EQ(200, slots.take(1, 50, 10));
    EXPECT_EQ(210, slots.take(2, 50, 10));
    EXPECT_EQ(300, slots.take(2, 300, 10));
}

TEST(ReplySlots, PastReservationsAreForgotten)
{
    ReplySlots slots;
    slots.take(1, 100, 10);
    slots.timeIs(109);
    EXPECT_EQ(110, slots.take(2, 105, 5));
    slots.timeIs(115);
    EXPECT_EQ(105, slots.take(3, 105, 5));
}

TEST(ReplySlots, ClearFreesTheLine)
{
    ReplySlots slots;
    slots.take(1, 100, 10);
    slots.holdEveryone(200);
    slots.clear();
    EXPECT_EQ(50, slots.take(1, 50, 100));
}
