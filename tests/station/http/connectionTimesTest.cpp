#include "http/connectionTimes.h"

#include <gtest/gtest.h>

namespace {

const qint64 SECOND = 1000000;
const qint64 OPENED = 7 * SECOND;

using End = std::optional<qint64>;

} // namespace

TEST(ConnectionTimes, AConnectionThatSendsNothingIsCutAfter30Seconds)
{
    EXPECT_EQ(End(OPENED + 30 * SECOND), ConnectionTimes(OPENED).end());
}

TEST(ConnectionTimes, AHeadHas10SecondsFromItsFirstByte)
{
    ConnectionTimes times(OPENED);
    times.bytesCame(OPENED + 25 * SECOND);
    EXPECT_EQ(End(OPENED + 35 * SECOND), times.end());
}

TEST(ConnectionTimes, MoreBytesGiveNoMoreTime)
{
    ConnectionTimes times(OPENED);
    for (int second = 0; second < 9; ++second)
        times.bytesCame(OPENED + second * SECOND);
    EXPECT_EQ(End(OPENED + 10 * SECOND), times.end());
    times.headEnded(OPENED + 9 * SECOND);
    for (int second = 9; second < 38; ++second)
        times.bytesCame(OPENED + second * SECOND);
    EXPECT_EQ(End(OPENED + 39 * SECOND), times.end());
}

TEST(ConnectionTimes, AnAnswerMayTakeAndLast)
{
    ConnectionTimes times(OPENED);
    times.bytesCame(OPENED);
    times.headEnded(OPENED);
    times.bodyEnded();
    EXPECT_EQ(End(), times.end());
    times.bytesCame(OPENED + SECOND); // of the next request
    EXPECT_EQ(End(), times.end());
}

TEST(ConnectionTimes, AfterAnAnswerTheConnectionIsIdleAgain)
{
    ConnectionTimes times(OPENED);
    times.bytesCame(OPENED);
    times.headEnded(OPENED);
    times.bodyEnded();
    times.answered(OPENED + 50 * SECOND);
    EXPECT_EQ(End(OPENED + 80 * SECOND), times.end());
    times.bytesCame(OPENED + 60 * SECOND);
    EXPECT_EQ(End(OPENED + 70 * SECOND), times.end());
}

TEST(ConnectionTimes, AConnectionIsCutOnce)
{
    ConnectionTimes times(OPENED);
    times.cut();
    EXPECT_EQ(End(), times.end());
}
