#include "handledRequests.h"

namespace {

const char* const BUSY = "01 83 06 C1 32"; // pymodbus 3.0's RTU framer

std::vector<std::string> textsOf(const std::vector<OutgoingPiece>& pieces)
{
    std::vector<std::string> texts;
    for (const OutgoingPiece& piece : pieces)
        texts.push_back(hexOf(piece.bytes));
    return texts;
}

} // namespace

TEST_F(HandledRequests, UnpacedReplyIsDueAtOnce)
{
    expectOne(handle(WRITE, 5 * MS), WRITE, 5 * MS);
    EXPECT_EQ(1, handler().counts().requests);
    EXPECT_EQ(1, handler().counts().replies);
}

TEST_F(HandledRequests, PacedReplyIsDueAfterRequestTurnaroundAndReply)
{
    m_line.baud = 10000; // a byte takes 1 ms
    m_line.turnaroundNs = 3 * MS;
    expectOne(handle(WRITE, 100 * MS), WRITE, (100 + 8 + 3 + 8) * MS);
}

TEST_F(HandledRequests, ReplyQueuesBehindADelayedReply)
{
    m_line.baud = 10000;
    m_faults.exchanges = 1;
    m_faults.delayNs = 700 * MS;
    always(FAULT_DELAY);
    expectOne(handle(WRITE, 0), WRITE, (8 + 700 + 8) * MS);
    expectOne(handle(WRITE, 500 * MS), WRITE, (8 + 700 + 8 + 8) * MS);
    expectOne(handle(WRITE, 900 * MS), WRITE, (900 + 8 + 8) * MS);
    EXPECT_EQ(1, handler().counts().faults[FAULT_DELAY]);
}

TEST_F(HandledRequests, DelayedReplyHoldsUpOtherStations)
{
    m_faults.exchanges = 1;
    m_faults.delayNs = 700 * MS;
    always(FAULT_DELAY);
    handle(WRITE, 0);
    const char* const other = "02 06 0B B9 04 D2 D8 A5"; // pymodbus 3.0's RTU framer
    expectOne(handle(other, 100 * MS), other, 700 * MS);
    expectOne(handle(other, 800 * MS), other, 800 * MS);
}

TEST_F(HandledRequests, BroadcastIsExecutedWithoutReply)
{
    EXPECT_TRUE(handle(BROADCAST, 0).empty());
    EXPECT_EQ(77, m_stations.find(1)->holdingRegister(200));
    EXPECT_EQ(77, m_stations.find(2)->holdingRegister(200));
    EXPECT_EQ(1, handler().counts().broadcasts);
    EXPECT_EQ(0, handler().counts().replies);
    EXPECT_FALSE(handler().nextServiceAt()); // nothing is left to do later
}

TEST_F(HandledRequests, RequestOfADroppedReplyIsExecuted)
{
    always(FAULT_DROP);
    EXPECT_TRUE(handle(WRITE, 0).empty());
    EXPECT_EQ(1234, marker());
    EXPECT_EQ(1, handler().counts().faults[FAULT_DROP]);
    EXPECT_EQ(0, handler().counts().replies);
}

TEST_F(HandledRequests, DroppedRequestIsNotExecuted)
{
    always(FAULT_DROP_REQUEST);
    EXPECT_TRUE(handle(WRITE, 0).empty());
    EXPECT_EQ(0, marker());
    EXPECT_EQ(1, handler().counts().faults[FAULT_DROP_REQUEST]);
}

TEST_F(HandledRequests, RefusedRequestIsNotExecuted)
{
    always(FAULT_EXCEPTION);
    expectOne(handle(READ, 0), BUSY, 0);
    EXPECT_EQ(1u, handle(WRITE, 0).size());
    EXPECT_EQ(0, marker());
}

TEST_F(HandledRequests, SilentStationExecutesNothing)
{
    m_faults.silentStations = {{1, 1.0}};
    EXPECT_TRUE(handle(WRITE, 0).empty());
    EXPECT_EQ(0, marker());
    EXPECT_EQ(1, handler().counts().silent);
}

TEST_F(HandledRequests, SilentStationExecutesNoBroadcast)
{
    m_faults.silentStations = {{1, 1.0}};
    handle(BROADCAST, 0);
    EXPECT_EQ(0, m_stations.find(1)->holdingRegister(200));
    EXPECT_EQ(77, m_stations.find(2)->holdingRegister(200));
}

TEST_F(HandledRequests, SilentStationIgnoresItsShareOfTheExchanges)
{
    m_faults.silentStations = {{1, 0.25}};
    int answered = 0;
    for (int i = 0; i < 10000; ++i)
        answered += handle(READ, 0).empty() ? 0 : 1;
    EXPECT_NEAR(7500, answered, 250);
    EXPECT_EQ(10000 - answered, handler().counts().silent);
}

TEST_F(HandledRequests, SilenceReplacesAnyOtherFault)
{
    m_faults.silentStations = {{1, 0.25}};
    m_faults.rates[FAULT_DROP] = 0.25;
    for (int i = 0; i < 10000; ++i)
        handle(READ, 0);
    EXPECT_NEAR(2500, double(handler().counts().silent), 250);
    EXPECT_NEAR(1875, double(handler().counts().faults[FAULT_DROP]), 200);
}

// The faults are of kinds whose bytes are not random, so that each shows by its bytes alone.
TEST_F(HandledRequests, SilentExchangesDoNotShiftOtherFaults)
{
    m_faults.rates[FAULT_DROP] = 0.25;
    m_faults.rates[FAULT_DUPLICATE] = 0.25;
    m_faults.rates[FAULT_EXCEPTION] = 0.25;
    RequestHandler neverSilent(m_stations, LinePacing(m_line), m_faults, 1);
    m_faults.silentStations = {{1, 0.5}};
    for (int i = 0; i < 1000; ++i) {
        const Request request = {bytesOf(READ), i * 1000 * MS, i * 1000 * MS};
        const std::int64_t silentBefore = handler().counts().silent;
        const auto expected = textsOf(neverSilent.handle(request));
        const auto seen = textsOf(handler().handle(request));
        if (handler().counts().silent != silentBefore) continue;
        ASSERT_EQ(expected, seen) << i;
    }
    EXPECT_NEAR(500, double(handler().counts().silent), 80); // sqrt(1000 * 0.5 * 0.5) = 16
}

TEST_F(HandledRequests, SilentExchangeCountsAsAFaultExchange)
{
    m_faults.silentStations = {{1, 1.0}};
    m_faults.exchanges = 2;
    EXPECT_TRUE(handle(WRITE, 0).empty());
    EXPECT_TRUE(handle(WRITE, 0).empty());
    EXPECT_EQ(1u, handle(WRITE, 0).size());
    EXPECT_EQ(2, handler().counts().silent);
}

TEST_F(HandledRequests, RequestToAnAbsentStationCountsAsForeign)
{
    EXPECT_TRUE(handle("03 03 00 00 00 01 85 E8", 0).empty());
    EXPECT_EQ(1, handler().counts().foreign);
    EXPECT_EQ(0, handler().counts().replies);
}

TEST_F(HandledRequests, SilenceRunsFromReplyEndToNextRequest)
{
    m_line.baud = 10000;
    handle(READ, 100 * MS);
    handler().replyEnded(116 * MS);
    handle(READ, 120 * MS);
    ASSERT_EQ(1u, handler().silences().count());
    EXPECT_EQ(4 * MS, handler().silences().quantile(0));
}

TEST_F(HandledRequests, SilenceAfterABroadcastRunsFromItsEndOnTheWire)
{
    m_line.baud = 10000;
    handle(BROADCAST, 0);
    handle(READ, 108 * MS);
    EXPECT_EQ(100 * MS, handler().silences().quantile(0));
}

TEST_F(HandledRequests, LineResetFreesTheLine)
{
    m_line.baud = 10000;
    m_faults.delayNs = 60000 * MS;
    m_faults.exchanges = 1;
    always(FAULT_DELAY);
    handle(WRITE, 0);
    handler().lineReset();
    expectOne(handle(WRITE, 20 * MS), WRITE, (20 + 8 + 8) * MS);
    EXPECT_EQ(0u, handler().silences().count());
}
