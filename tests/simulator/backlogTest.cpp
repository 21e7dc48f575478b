#include "backlog.h"

#include <gtest/gtest.h>

namespace {

const std::int64_t MS = 1000000;

Exchange exchangeWith(int station, std::int64_t endMs)
{
    Exchange exchange;
    exchange.request = {static_cast<std::uint8_t>(station), 3};
    exchange.requestEnd = endMs * MS;
    return exchange;
}

/// A stall of 300 ms from 1000 ms on.
class HeldBack : public ::testing::Test
{
protected:
    Backlog& backlog()
    {
        if (!m_backlog) {
            m_settings.lengthNs = 300 * MS;
            m_backlog = std::make_unique<Backlog>(m_settings);
            m_backlog->requestSeen(0);
        }
        return *m_backlog;
    }
    bool holds(int station, std::int64_t atMs)
    {
        return backlog().holds(station, atMs * MS);
    }
    void add(int station, std::int64_t endMs)
    {
        backlog().add(exchangeWith(station, endMs));
    }
    /// Serves the first held request: its time in milliseconds and its station.
    std::pair<std::int64_t, int> taken()
    {
        const std::int64_t at = backlog().nextServiceAt().value_or(-MS);
        return {at / MS, backlog().take().request[STATION_AT]};
    }

    StallSettings m_settings;

private:
    std::unique_ptr<Backlog> m_backlog;
};

using Taken = std::pair<std::int64_t, int>;

} // namespace

TEST_F(HeldBack, RequestsWaitDuringAStall)
{
    EXPECT_FALSE(holds(1, 999));
    EXPECT_TRUE(holds(1, 1000));
    EXPECT_TRUE(holds(2, 1299));
    EXPECT_FALSE(holds(1, 1300));
}

TEST_F(HeldBack, OnlyRequestsToTheStallingStationWait)
{
    m_settings.station = 2;
    add(2, 1000);
    EXPECT_TRUE(holds(2, 1100));
    EXPECT_FALSE(holds(1, 1100));
    EXPECT_EQ(1300 * MS, backlog().replyStart(2, 1100 * MS));
    EXPECT_EQ(1100 * MS, backlog().replyStart(1, 1100 * MS));
}

TEST_F(HeldBack, RequestsAreServedInOrderAfterTheStall)
{
    EXPECT_FALSE(backlog().nextServiceAt());
    add(2, 1000);
    add(1, 1001);
    add(2, 1299);
    EXPECT_EQ(Taken(1300, 2), taken());
    EXPECT_EQ(Taken(1300, 1), taken());
    EXPECT_EQ(Taken(1300, 2), taken());
    EXPECT_FALSE(backlog().nextServiceAt());
}

TEST_F(HeldBack, EachReplyTakesTheServiceTime)
{
    m_settings.serviceNs = 50 * MS;
    add(1, 1000);
    add(2, 1001);
    add(3, 1002);
    EXPECT_EQ(Taken(1300, 1), taken());
    EXPECT_EQ(Taken(1350, 2), taken());
    EXPECT_EQ(Taken(1400, 3), taken());
    EXPECT_TRUE(holds(1, 1449));
    EXPECT_FALSE(holds(1, 1450));
}

TEST_F(HeldBack, ABroadcastTakesNoServiceTime)
{
    m_settings.serviceNs = 50 * MS;
    add(1, 1000);
    add(BROADCAST_STATION, 1001);
    add(2, 1002);
    EXPECT_EQ(Taken(1300, 1), taken());
    EXPECT_EQ(Taken(1350, 0), taken());
    EXPECT_EQ(Taken(1350, 2), taken());
}

TEST_F(HeldBack, ALaterRequestIsServedBehindWaitingRequests)
{
    add(1, 1000);
    EXPECT_TRUE(holds(2, 1310)); // the first request is not served yet
    add(2, 1310);
    EXPECT_EQ(Taken(1300, 1), taken());
    EXPECT_EQ(Taken(1310, 2), taken());
}

TEST_F(HeldBack, TheNextStallInterruptsService)
{
    m_settings.everyNs = 400 * MS;
    m_settings.serviceNs = 60 * MS;
    add(1, 400);
    add(2, 401);
    add(3, 402);
    EXPECT_EQ(Taken(700, 1), taken());
    EXPECT_EQ(Taken(760, 2), taken());
    EXPECT_EQ(Taken(1100, 3), taken()); // 820 is in the stall from 800 to 1100
}

TEST_F(HeldBack, RequestsOfAHostThatLeftHaveNoAudience)
{
    add(1, 1000);
    backlog().audienceLeft();
    add(2, 1001);
    EXPECT_EQ(AUDIENCE_NONE, backlog().take().audience);
    EXPECT_EQ(AUDIENCE_HOST, backlog().take().audience);
}
