#include "driverExchangeFixture.h"

#include <gtest/gtest.h>

// Probes, fences and late answers: the news of stations that end no request.

class DriverExchangeProbesTest : public DriverExchangeTest
{
};

TEST_F(DriverExchangeProbesTest, ProbeIsAFenceAndEndsNoDriverRequest)
{
    exchange.probe(STATION, 0);
    run(SECOND);
    EXPECT_EQ(1, fencesTo(STATION));
    EXPECT_TRUE(finished.empty());
    ASSERT_EQ(1u, heard.size());
    EXPECT_TRUE(heard[0].ended.isFence);
    EXPECT_FALSE(heard[0].isOfRequest);
    EXPECT_EQ(int(STATION), heard[0].ended.station);
    EXPECT_EQ(END_ANSWERED, heard[0].ended.end);
}

TEST_F(DriverExchangeProbesTest, ProbeWaitsForTheGivenTime)
{
    plc.station(STATION).silent = true;
    exchange.probe(STATION, 5 * MS);
    while (heard.empty())
        ASSERT_TRUE(stepUntil(SECOND));
    EXPECT_EQ(END_SILENT, heard[0].ended.end);
    EXPECT_EQ(5 * MS, now);
}

TEST_F(DriverExchangeProbesTest, ProbeIsSentBetweenTwoRequests)
{
    write(STATION, NUMBER, 7);
    write(STATION, NUMBER + 1, 8);
    while (timesOf(WRITE).empty())
        ASSERT_TRUE(stepUntil(SECOND));
    exchange.probe(OTHER_STATION, 0);
    run(SECOND);
    std::vector<int> order;
    for (const SentFrame& frame : sent) {
        if (!frame.isFence || frame.bytes.at(0) == OTHER_STATION)
            order.push_back(frame.bytes.at(0));
    }
    EXPECT_EQ((std::vector<int>{STATION, OTHER_STATION, STATION}), order);
}

TEST_F(DriverExchangeProbesTest, LostLinkDropsWaitingProbes)
{
    exchange.probe(STATION, 0);
    exchange.probe(OTHER_STATION, 0);
    stepUntil(SECOND);
    exchange.linkLost();
    line.cut();
    exchange.linkOpened(now);
    run(SECOND);
    EXPECT_EQ(1, fencesTo(STATION));
    EXPECT_EQ(0, fencesTo(OTHER_STATION));
}

TEST_F(DriverExchangeProbesTest, UnansweredFenceUsesUpAnAttemptOfItsUnsentRequest)
{
    plc.station(STATION).silent = true;
    write(STATION, NUMBER, 7);
    run(SECOND);
    ASSERT_EQ(size_t(ATTEMPTS), heard.size());
    for (const HEARD_EXCHANGE& fence : heard) {
        EXPECT_TRUE(fence.isOfRequest);
        EXPECT_EQ(END_SILENT, fence.ended.end);
    }
    ASSERT_EQ(size_t(ATTEMPTS), finished.size());
    EXPECT_EQ(int(REPLY_GIVEN_UP), finished.back().result);
    EXPECT_EQ(0, finished.back().timesSent);
}

TEST_F(DriverExchangeProbesTest, AnswerAfterGiveUpIsHeardAndEndsNoRequest)
{
    line.stall = {STATION, 0, 10 * SECOND};
    write(STATION, NUMBER, 7);
    run(9 * SECOND);
    ASSERT_EQ(size_t(ATTEMPTS), finished.size());
    EXPECT_EQ(int(REPLY_GIVEN_UP), finished.back().result);
    heard.clear();
    run(2 * SECOND);
    ASSERT_FALSE(heard.empty());
    EXPECT_EQ(int(STATION), heard[0].ended.station);
    EXPECT_EQ(size_t(ATTEMPTS), finished.size());
}
