#include "session/recentRates.h"

#include <gtest/gtest.h>

// Times are microseconds of a clock that only the tests move; the window is ten seconds.

namespace {

enum : qint64 { MS = 1000, SECOND = 1000000, REPLY = 20, LATE_REPLY = 60 };

} // namespace

class RecentRatesTest : public testing::Test
{
protected:
    /// `count` exchanges, one every 100 ms from a time on.
    void exchange(int count, qint64 from, qint64 replyTime = REPLY)
    {
        for (int i = 0; i < count; ++i)
            rates.exchanged(replyTime, from + i * 100 * MS);
    }

    RecentRates rates;
};

TEST_F(RecentRatesTest, AreNoneBeforeAnythingHappens)
{
    rates.start(SECOND);
    for (const qint64 now : {qint64(SECOND), 5 * SECOND}) {
        EXPECT_DOUBLE_EQ(0, rates.at(now).exchangesPerSecond);
        EXPECT_EQ(-1, rates.at(now).replyMedian);
        EXPECT_EQ(-1, rates.at(now).reply99);
        EXPECT_DOUBLE_EQ(-1, rates.at(now).wireShare);
    }
}

TEST_F(RecentRatesTest, AreThoseSinceTheStartWhileTheWindowIsNotYetFull)
{
    rates.start(3 * SECOND);
    exchange(20, 3 * SECOND + 100 * MS);
    rates.wireTaken(4 * SECOND, 4 * SECOND + 500 * MS);
    EXPECT_DOUBLE_EQ(10, rates.at(5 * SECOND).exchangesPerSecond);
    EXPECT_DOUBLE_EQ(0.25, rates.at(5 * SECOND).wireShare);
    EXPECT_DOUBLE_EQ(5, rates.at(7 * SECOND).exchangesPerSecond);
}

TEST_F(RecentRatesTest, ForgetWhatIsOlderThanTheWindow)
{
    rates.start(0);
    exchange(1000, 100 * MS); // ten a second, up to 100 s
    EXPECT_DOUBLE_EQ(10, rates.at(100 * SECOND).exchangesPerSecond);
    EXPECT_DOUBLE_EQ(5, rates.at(105 * SECOND).exchangesPerSecond);
}

TEST_F(RecentRatesTest, AnExchangeCountsForTenSeconds)
{
    rates.start(0);
    rates.exchanged(REPLY, 30 * SECOND);
    EXPECT_DOUBLE_EQ(0.1, rates.at(30 * SECOND).exchangesPerSecond);
    EXPECT_DOUBLE_EQ(0.1, rates.at(40 * SECOND - 1).exchangesPerSecond);
    EXPECT_DOUBLE_EQ(0, rates.at(40 * SECOND).exchangesPerSecond);
}

TEST_F(RecentRatesTest, FallToNothingWhenThePlcIsSilent)
{
    rates.start(0);
    exchange(100, 0);
    rates.wireTaken(0, 9 * SECOND);
    const LinkRates silent = rates.at(20 * SECOND);
    EXPECT_DOUBLE_EQ(0, silent.exchangesPerSecond);
    EXPECT_EQ(-1, silent.replyMedian);
    EXPECT_EQ(-1, silent.reply99);
    EXPECT_DOUBLE_EQ(0, silent.wireShare);
}

TEST_F(RecentRatesTest, PercentilesAreThoseOfTheWindow)
{
    rates.start(0);
    exchange(100, 0, LATE_REPLY); // up to 9.9 s
    exchange(60, 10 * SECOND);    // up to 15.9 s
    EXPECT_EQ(REPLY, rates.at(16 * SECOND).replyMedian);
    EXPECT_EQ(LATE_REPLY, rates.at(16 * SECOND).reply99);
    exchange(40, 16 * SECOND); // up to 19.9 s
    EXPECT_EQ(REPLY, rates.at(20 * SECOND - 1).reply99);
}

TEST_F(RecentRatesTest, AnExchangeWithoutAReplyHasNoReplyTime)
{
    rates.start(0);
    rates.exchanged(-1, SECOND);
    rates.exchanged(REPLY, 12 * SECOND);
    EXPECT_EQ(REPLY, rates.at(12 * SECOND).replyMedian);
    EXPECT_DOUBLE_EQ(0.1, rates.at(12 * SECOND).exchangesPerSecond);
}

TEST_F(RecentRatesTest, AFrameHalfWithinTheWindowCountsHalf)
{
    rates.start(0);
    rates.wireTaken(19 * SECOND, 21 * SECOND);
    EXPECT_DOUBLE_EQ(0.2, rates.at(25 * SECOND).wireShare);
    EXPECT_DOUBLE_EQ(0.1, rates.at(30 * SECOND).wireShare);
}

TEST_F(RecentRatesTest, AFrameStillBeingSentCountsAsFarAsItIsOnTheWire)
{
    rates.start(0);
    rates.wireTaken(19 * SECOND, 21 * SECOND);
    EXPECT_DOUBLE_EQ(0.1, rates.at(20 * SECOND).wireShare);
}

TEST_F(RecentRatesTest, TimesOnTheWireThatOverlapCountOnce)
{
    rates.start(0);
    rates.wireTaken(20 * SECOND, 22 * SECOND);
    rates.wireTaken(21 * SECOND, 23 * SECOND);
    rates.wireTaken(20 * SECOND, 23 * SECOND);
    EXPECT_DOUBLE_EQ(0.3, rates.at(25 * SECOND).wireShare);
}

TEST_F(RecentRatesTest, TimeOnTheWireBeforeTheStartDoesNotCount)
{
    rates.start(SECOND);
    rates.wireTaken(0, 2 * SECOND);
    EXPECT_DOUBLE_EQ(0.5, rates.at(3 * SECOND).wireShare);
}
