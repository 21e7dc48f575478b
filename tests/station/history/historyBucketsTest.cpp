// What the buckets of a span tell.
#include "historyRoom.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

/// A second in which the value is read.
void secondWith(HistoryRoom& room, double value)
{
    room.answer(0, value);
    room.second();
}

} // namespace

TEST(HistoryBuckets, TellAValueThatHeldWhereNoRowCame)
{
    HistoryRoom room(historyTags(1));
    for (const double value : {5, 5, 5, 7, 7, 7})
        secondWith(room, value);
    EXPECT_EQ("5 5 5 7 7 7", room.lasts(0, 6000, 6));
    EXPECT_EQ("5 7", room.lasts(500, 4500, 2));
}

TEST(HistoryBuckets, HoldTheLeastTheLargestAndTheLastValue)
{
    HistoryRoom room(historyTags(1));
    for (const double value : {5, 9, -3, 4})
        secondWith(room, value);
    const HistoryBucket bucket = room.buckets(500, 4000, 1).at(0);
    EXPECT_EQ(room.begin + 500, bucket.time);
    EXPECT_EQ(-3, bucket.minimum);
    EXPECT_EQ(9, bucket.maximum); // 5 held when the bucket began
    EXPECT_EQ(4, bucket.last);
    EXPECT_EQ(5, room.buckets(500, 2500, 2).at(0).minimum);
    EXPECT_EQ(-3, room.buckets(2000, 4000, 1).at(0).minimum); // 9 was over at its begin
    EXPECT_EQ(4, room.buckets(2000, 4000, 1).at(0).maximum);
}

TEST(HistoryBuckets, AreNullBeforeTheFirstRowAndBehindTheLastCommit)
{
    HistoryRoom room(historyTags(1));
    room.second();
    secondWith(room, 5);
    EXPECT_EQ("- 5 - -", room.lasts(0, 4000, 4));
    EXPECT_EQ("-", room.lasts(-100000, 0, 1));
}

TEST(HistoryBuckets, AreNullWhereTheQualityWasNotGood)
{
    HistoryRoom room(historyTags(1));
    secondWith(room, 5);
    room.bad(0, QLatin1String("no answer"));
    room.seconds(2);
    secondWith(room, 6);
    EXPECT_EQ("5 - - 6", room.lasts(0, 4000, 4));
}

TEST(HistoryBuckets, TellTheGoodPartOfABucketThatIsPartlyGood)
{
    HistoryRoom room(historyTags(1));
    secondWith(room, 5);
    room.clock.passMs(500);
    room.bad(0, QLatin1String("no answer"));
    room.clock.passMs(500);
    room.second();
    EXPECT_EQ("5 5 -", room.lasts(0, 3000, 3));
}

TEST(HistoryBuckets, AreNullWhereAValueWasStale)
{
    HistoryRoom room(historyTags(1));
    secondWith(room, 5);
    room.seconds(4);
    EXPECT_EQ("5 5 - - -", room.lasts(0, 5000, 5));
}

TEST(HistoryBuckets, AreNullWhileTheStationDidNotRun)
{
    HistoryRoom room(historyTags(1));
    secondWith(room, 5);
    secondWith(room, 5);
    room.kill();
    room.clock.passMs(3000);
    room.startStation();
    secondWith(room, 6);
    EXPECT_EQ("5 5 - - - 6", room.lasts(0, 6000, 6));
}

TEST(HistoryBuckets, AreNullWhileTheProcessWasStopped)
{
    HistoryRoom room(historyTags(1));
    secondWith(room, 5);
    room.clock.passMs(60000);
    secondWith(room, 5);
    EXPECT_EQ("5 - - - - 5", room.lasts(0, 72000, 6));
}

TEST(HistoryBuckets, TellOfTheTimeBehindAClockThatWasSetForward)
{
    HistoryRoom room(historyTags(1));
    secondWith(room, 5);
    room.clock.setWall(room.clock.wall() + 100000);
    secondWith(room, 5);
    secondWith(room, 5);
    EXPECT_EQ("5 - 5", room.lasts(0, 1000, 1) + " " + room.lasts(1001, 101000, 1) + " " +
                           room.lasts(102000, 103000, 1));
}

TEST(HistoryBuckets, TellOfTheLaterTimeWhenTheClockWasSetBack)
{
    HistoryRoom room(historyTags(1));
    for (const double value : {1, 2, 3, 4, 5, 6})
        secondWith(room, value);
    room.clock.setWall(room.begin + 2000);
    for (const double value : {7, 8})
        secondWith(room, value);
    EXPECT_EQ("1 2 7 8 5 6", room.lasts(0, 6000, 6));
    EXPECT_EQ("0 1 good, 1000 2 good, 2000 7 good, 3000 8 good, 4000 5 good, 5000 6 good, "
              "6000 none bad",
              room.rows());
}

TEST(HistoryBuckets, KeepTheHistoryWhenAMachineBeginsInThePast)
{
    HistoryRoom room(historyTags(1));
    for (const double value : {1, 2, 3})
        secondWith(room, value);
    room.kill();
    room.clock.setWall(1000);
    room.startStation();
    secondWith(room, 8);
    room.clock.setWall(room.begin + 5000);
    secondWith(room, 9);
    EXPECT_EQ("1 2 3 - - 9", room.lasts(0, 6000, 6));
}

TEST(HistoryBuckets, StayInOrderWhenTheClockIsSlowedABit)
{
    HistoryRoom room(historyTags(1));
    secondWith(room, 1);
    room.clock.passMs(900);
    room.answer(0, 2);
    room.clock.setWall(room.clock.wall() - 400);
    room.answer(0, 3);
    room.second();
    EXPECT_EQ("0 1 good, 1900 2 good, 1900 3 good", room.rows());
    EXPECT_EQ("1 3", room.lasts(1000, 2400, 2));
}

TEST(HistoryBuckets, LeaveANanOutOfTheLeastAndTheLargest)
{
    HistoryRoom room(historyTags(1, Tag::FLOAT32));
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const double value : {nan, 2.0, nan})
        secondWith(room, value);
    const HistoryBucket all = room.buckets(0, 3000, 1).at(0);
    EXPECT_EQ(2, all.minimum);
    EXPECT_EQ(2, all.maximum);
    EXPECT_TRUE(std::isnan(all.last));
    const HistoryBucket first = room.buckets(0, 1000, 1).at(0);
    EXPECT_TRUE(first.isGood);
    EXPECT_TRUE(std::isnan(first.minimum));
}

TEST(HistoryBuckets, BearAnyQuery)
{
    HistoryRoom room(historyTags(1));
    secondWith(room, 5);
    HistoryReader reader(room.fileName());
    HistoryQuery query{QLatin1String("plc"), QLatin1String("tag0"),
                       std::numeric_limits<qint64>::min(), std::numeric_limits<qint64>::max(),
                       std::numeric_limits<int>::max()};
    EXPECT_EQ(100000u, reader.buckets(query).size());
    query.points = 0;
    EXPECT_TRUE(reader.buckets(query).empty());
    query.points = 10;
    query.until = query.from;
    EXPECT_TRUE(reader.buckets(query).empty());
    query.from = room.begin;
    query.until = room.begin + 3;
    EXPECT_EQ(3u, reader.buckets(query).size());
    query.tag = QLatin1String("x' OR 1=1 --");
    EXPECT_FALSE(reader.buckets(query).at(0).isGood);
}
