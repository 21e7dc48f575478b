#include "session/replyTimes.h"

#include <gtest/gtest.h>

#include <limits>

TEST(ReplyTimes, ThereAreNoneAtFirst)
{
    const ReplyTimes times;
    EXPECT_EQ(0, times.count());
    EXPECT_EQ(0, times.percentile(50));
}

TEST(ReplyTimes, CountsEachReply)
{
    ReplyTimes times;
    times.add(1200);
    times.add(1200);
    times.add(0);
    EXPECT_EQ(3, times.count());
}

TEST(ReplyTimes, AReplyThatNeverCameDoesNotCount)
{
    ReplyTimes times;
    times.add(-1);
    EXPECT_EQ(0, times.count());
}

TEST(ReplyTimes, ShortTimesAreExact)
{
    for (qint64 time = 0; time < 64; ++time) {
        ReplyTimes times;
        times.add(time);
        EXPECT_EQ(time, times.percentile(50));
    }
}

TEST(ReplyTimes, LongTimesAreWithinTwoPercent)
{
    for (qint64 time = 64; time < 4000000000000; time += 1 + time / 1000) {
        ReplyTimes times;
        times.add(time);
        ASSERT_NEAR(double(time), double(times.percentile(50)), double(time) * 0.02);
    }
}

TEST(ReplyTimes, TheLongestTimeThereIsFits)
{
    const qint64 longest = std::numeric_limits<qint64>::max();
    ReplyTimes times;
    times.add(longest);
    EXPECT_NEAR(double(longest), double(times.percentile(50)), double(longest) * 0.02);
}

TEST(ReplyTimes, APercentileIsTheTimeWithinWhichSoManyCame)
{
    // Of the times 1 to 60 in any order, half came within 30, and 59.4 of them, so 60, within 60.
    ReplyTimes times;
    for (int i = 0; i < 60; ++i)
        times.add((i * 7) % 60 + 1);
    const struct
    {
        double percent;
        qint64 time;
    } rows[] = {{0, 1}, {1, 1}, {5, 3}, {50, 30}, {51, 31}, {99, 60}, {100, 60}};
    for (const auto& row : rows)
        EXPECT_EQ(row.time, times.percentile(row.percent)) << row.percent;
}

TEST(ReplyTimes, OneSlowReplyInAHundredIsPastThe99thPercentile)
{
    ReplyTimes times;
    for (int i = 0; i < 99; ++i)
        times.add(20);
    times.add(500000);
    EXPECT_EQ(20, times.percentile(99));
    EXPECT_NEAR(500000, double(times.percentile(99.5)), 10000);
}

TEST(ReplyTimes, ATimeTakenBackNoLongerCounts)
{
    ReplyTimes times;
    for (const qint64 time : {20, 500000, 500000})
        times.add(time);
    times.remove(500000);
    times.remove(500000);
    times.remove(-1);
    EXPECT_EQ(1, times.count());
    EXPECT_EQ(20, times.percentile(100));
}
