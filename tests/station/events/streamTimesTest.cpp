#include "events/streamTimes.h"

#include <gtest/gtest.h>

namespace {

enum { MS = 1000 };
const StreamTimes::Wanted NO_NEWS = StreamTimes::NOT_WANTED;
const StreamTimes::Wanted NEWS = StreamTimes::WANTED;
const StreamTimes::Wanted LOSS = StreamTimes::URGENT;
const qint64 BEGIN = 50000000;

/// Times of a stream that has looked and sent at BEGIN.
StreamTimes sentAtBegin()
{
    StreamTimes times;
    times.begin(BEGIN);
    times.looked(BEGIN, true);
    return times;
}

} // namespace

TEST(StreamTimes, LookAtOnceWhenTheFirstClientWaits)
{
    StreamTimes times;
    times.begin(BEGIN);
    EXPECT_TRUE(times.isLookDue(BEGIN, NEWS));
}

TEST(StreamTimes, HoldAChangeToTheEndOfTheLastMessagesWindow)
{
    const StreamTimes times = sentAtBegin();
    EXPECT_FALSE(times.isLookDue(BEGIN + 99 * MS, NEWS));
    EXPECT_EQ(BEGIN + 100 * MS, times.next(NEWS));
    EXPECT_TRUE(times.isLookDue(BEGIN + 100 * MS, NEWS));
}

TEST(StreamTimes, LookAtOnceAtALossAndMakeUpForIt)
{
    StreamTimes times = sentAtBegin();
    EXPECT_TRUE(times.isLookDue(BEGIN + 3 * MS, LOSS));
    times.looked(BEGIN + 3 * MS, true);
    EXPECT_FALSE(times.isLookDue(BEGIN + 99 * MS, LOSS));
    EXPECT_EQ(BEGIN + 100 * MS, times.next(LOSS));
    EXPECT_TRUE(times.isLookDue(BEGIN + 100 * MS, LOSS));
    EXPECT_FALSE(times.isLookDue(BEGIN + 199 * MS, NEWS));
    EXPECT_EQ(BEGIN + 200 * MS, times.next(NEWS));
    EXPECT_TRUE(times.isLookDue(BEGIN + 200 * MS, NEWS));
}

TEST(StreamTimes, TellNoMoreThanTenMessagesASecondHoweverManyLossesThereAre)
{
    StreamTimes times = sentAtBegin();
    int messages = 1;
    for (qint64 now = BEGIN + MS; now < BEGIN + 1000 * MS; now += MS) {
        if (!times.isLookDue(now, LOSS)) continue;
        times.looked(now, true);
        ++messages;
    }
    // One goes ahead of its turn. All others have theirs.
    EXPECT_EQ(11, messages);
}

TEST(StreamTimes, LookAtOnceAtAChangeAfterQuiet)
{
    StreamTimes times = sentAtBegin();
    times.looked(BEGIN + 100 * MS, false);
    EXPECT_TRUE(times.isLookDue(BEGIN + 101 * MS, NEWS));
}

TEST(StreamTimes, LookEachHundredMillisecondsWithoutNews)
{
    StreamTimes times = sentAtBegin();
    EXPECT_FALSE(times.isLookDue(BEGIN + 99 * MS, NO_NEWS));
    EXPECT_TRUE(times.isLookDue(BEGIN + 100 * MS, NO_NEWS));
    times.looked(BEGIN + 100 * MS, false);
    EXPECT_FALSE(times.isLookDue(BEGIN + 199 * MS, NO_NEWS));
    EXPECT_EQ(BEGIN + 200 * MS, times.next(NO_NEWS));
}

TEST(StreamTimes, BeatEachSecondWithoutDrift)
{
    StreamTimes times = sentAtBegin();
    EXPECT_FALSE(times.isBeatDue(BEGIN + 999 * MS));
    EXPECT_TRUE(times.isBeatDue(BEGIN + 1000 * MS));
    times.beaten(BEGIN + 1030 * MS);
    EXPECT_FALSE(times.isBeatDue(BEGIN + 1999 * MS));
    EXPECT_TRUE(times.isBeatDue(BEGIN + 2000 * MS));
}

TEST(StreamTimes, BeatOnceAfterAStopOfTheProcess)
{
    StreamTimes times = sentAtBegin();
    times.beaten(BEGIN + 7500 * MS);
    EXPECT_FALSE(times.isBeatDue(BEGIN + 8499 * MS));
    EXPECT_TRUE(times.isBeatDue(BEGIN + 8500 * MS));
}

TEST(StreamTimes, TellTheBeatWhenItComesBeforeTheNextLook)
{
    StreamTimes times = sentAtBegin();
    times.looked(BEGIN + 950 * MS, true);
    EXPECT_EQ(BEGIN + 1000 * MS, times.next(NEWS));
}
