#include "handledRequests.h"

namespace {

// pymodbus 3.0's RTU framer
const char* const READ_MARKER = "01 03 0B B9 00 01 57 CB"; // MW 3001
const char* const MARKER_WRITTEN = "01 03 02 04 D2 3A D9"; // 1234
const char* const MARKER_EMPTY = "01 03 02 00 00 B8 44";
const char* const READ_OTHER = "02 03 0B B9 00 01 57 F8"; // of station 2
const char* const OTHER_EMPTY = "02 03 02 00 00 FC 44";
const char* const READ_ALL = "02 03 00 C8 00 01 05 C7"; // QW 200, which BROADCAST writes
const char* const ALL_WRITTEN = "02 03 02 00 4D 3C 71";

using Texts = std::vector<std::string>;

/// A stall of 300 ms from 1000 ms on.
class StalledRequests : public HandledRequests
{
protected:
    void SetUp() override
    {
        m_faults.stall.lengthNs = 300 * MS;
    }
    /// The request that starts the clock.
    void begin()
    {
        expectOne(handle(READ_OTHER, 0), OTHER_EMPTY, 0);
    }
    void expectHeld(const char* hex, std::int64_t at)
    {
        EXPECT_TRUE(handle(hex, at).empty());
    }
    Texts servedAt(std::int64_t at)
    {
        Texts all;
        for (const OutgoingPiece& piece : handler().serveHeld(at)) {
            EXPECT_EQ(at, piece.dueAt);
            all.push_back(hexOf(piece.bytes));
        }
        return all;
    }
};

} // namespace

TEST_F(StalledRequests, AreAnsweredInOrderAfterTheStall)
{
    begin();
    expectHeld(READ_MARKER, 1000 * MS);
    expectHeld(WRITE, 1001 * MS);
    expectHeld(READ_MARKER, 1100 * MS);
    expectHeld(READ_OTHER, 1299 * MS);
    EXPECT_EQ(1300 * MS, handler().nextServiceAt());
    EXPECT_EQ(Texts{}, servedAt(1299 * MS));
    EXPECT_EQ((Texts{MARKER_EMPTY, WRITE, MARKER_WRITTEN, OTHER_EMPTY}), servedAt(1300 * MS));
    EXPECT_FALSE(handler().nextServiceAt());
    EXPECT_EQ(5, handler().counts().replies);
    EXPECT_EQ(4, handler().counts().stalled);
}

TEST_F(StalledRequests, AreExecutedAfterTheStall)
{
    begin();
    expectHeld(WRITE, 1000 * MS);
    expectHeld(READ_OTHER, 1001 * MS);
    EXPECT_EQ(0, marker());
    m_stations.find(2)->setHoldingRegister(3001, 1234);
    EXPECT_EQ((Texts{WRITE, "02 03 02 04 D2 7E D9"}), servedAt(1300 * MS));
    EXPECT_EQ(1234, marker());
}

TEST_F(StalledRequests, AreServedOneServiceTimeApart)
{
    m_faults.stall.serviceNs = 50 * MS;
    begin();
    expectHeld(WRITE, 1000 * MS);
    expectHeld(READ_MARKER, 1001 * MS);
    EXPECT_EQ(Texts{WRITE}, servedAt(1300 * MS));
    expectHeld(READ_OTHER, 1310 * MS);
    EXPECT_EQ(1350 * MS, handler().nextServiceAt());
    EXPECT_EQ(Texts{MARKER_WRITTEN}, servedAt(1350 * MS));
    EXPECT_EQ(Texts{OTHER_EMPTY}, servedAt(1400 * MS));
    EXPECT_EQ(3, handler().counts().stalled);
    expectOne(handle(WRITE, 1450 * MS), WRITE, 1450 * MS);
    EXPECT_EQ(3, handler().counts().stalled);
}

TEST_F(StalledRequests, OfOneStationDoNotDelayOtherStations)
{
    m_faults.stall.station = 2;
    begin();
    expectHeld(READ_OTHER, 1000 * MS);
    expectOne(handle(WRITE, 1100 * MS), WRITE, 1100 * MS);
    expectHeld(READ_OTHER, 1200 * MS);
    EXPECT_EQ((Texts{OTHER_EMPTY, OTHER_EMPTY}), servedAt(1300 * MS));
    EXPECT_EQ(2, handler().counts().stalled);
}

TEST_F(StalledRequests, KeepTheirOrderWithABroadcast)
{
    begin();
    expectHeld(READ_ALL, 1000 * MS);
    expectHeld(BROADCAST, 1001 * MS);
    expectHeld(READ_ALL, 1002 * MS);
    EXPECT_EQ(0, m_stations.find(1)->holdingRegister(200));
    EXPECT_EQ((Texts{OTHER_EMPTY, ALL_WRITTEN}), servedAt(1300 * MS));
    EXPECT_EQ(77, m_stations.find(1)->holdingRegister(200));
    EXPECT_EQ(1, handler().counts().broadcasts);
    EXPECT_EQ(2, handler().counts().stalled);
}

TEST_F(StalledRequests, BroadcastIsExecutedLaterByTheStallingStation)
{
    m_faults.stall.station = 2;
    begin();
    handle(BROADCAST, 1000 * MS);
    EXPECT_EQ(77, m_stations.find(1)->holdingRegister(200));
    EXPECT_EQ(0, m_stations.find(2)->holdingRegister(200));
    m_stations.find(1)->setHoldingRegister(200, 5);
    EXPECT_EQ(Texts{}, servedAt(1300 * MS));
    EXPECT_EQ(77, m_stations.find(2)->holdingRegister(200));
    EXPECT_EQ(5, m_stations.find(1)->holdingRegister(200)); // not executed twice
}

TEST_F(StalledRequests, SilentStationExecutesNoBroadcastAfterTheStall)
{
    m_faults.silentStations = {{1, 1.0}};
    begin();
    handle(BROADCAST, 1000 * MS);
    expectHeld(WRITE, 1001 * MS);
    servedAt(1300 * MS);
    EXPECT_EQ(0, m_stations.find(1)->holdingRegister(200));
    EXPECT_EQ(77, m_stations.find(2)->holdingRegister(200));
    EXPECT_EQ(0, marker());
}

TEST_F(StalledRequests, ReplyDueInTheStallStartsAtItsEnd)
{
    m_line.turnaroundNs = 200 * MS;
    handle(READ_OTHER, 0);
    expectOne(handle(WRITE, 799 * MS), WRITE, 999 * MS);
    expectOne(handle(WRITE, 800 * MS), WRITE, 1300 * MS);
    EXPECT_EQ(1, handler().counts().stalled);
    expectHeld(READ_MARKER, 1000 * MS);
    EXPECT_EQ(Texts{MARKER_WRITTEN}, servedAt(1300 * MS));
}

TEST_F(StalledRequests, PacedReplyStartsAtTheEndOfTheStall)
{
    m_line.baud = 10000; // a byte takes 1 ms
    handle(READ_OTHER, 0);
    expectHeld(WRITE, 995 * MS); // is there at 1003 ms
    EXPECT_EQ(1300 * MS, handler().nextServiceAt());
    const std::vector<OutgoingPiece> pieces = handler().serveHeld(1300 * MS);
    expectOne(pieces, WRITE, 1308 * MS);
}

TEST_F(StalledRequests, OfAHostThatLeftAreExecutedWithoutReply)
{
    begin();
    expectHeld(WRITE, 1000 * MS);
    handler().lineReset();
    expectHeld(READ_MARKER, 1100 * MS);
    EXPECT_EQ(Texts{MARKER_WRITTEN}, servedAt(1300 * MS));
    EXPECT_EQ(1, handler().counts().stalled);
}

TEST_F(StalledRequests, KeepTheFaultsDrawnWhenTheyCame)
{
    m_faults.rates[FAULT_DROP] = 1;
    m_faults.exchanges = 2;
    handle(WRITE, 0);
    expectHeld(WRITE, 1000 * MS);
    expectHeld(READ_MARKER, 1001 * MS);
    EXPECT_EQ(Texts{MARKER_WRITTEN}, servedAt(1300 * MS));
    EXPECT_EQ(2, handler().counts().faults[FAULT_DROP]);
}

TEST_F(StalledRequests, DroppedRequestIsNotHeld)
{
    always(FAULT_DROP_REQUEST);
    handle(WRITE, 0);
    handle(WRITE, 1000 * MS);
    EXPECT_FALSE(handler().nextServiceAt());
}

TEST_F(StalledRequests, OrderOfServiceChangesNoRandomByte)
{
    always(FAULT_CORRUPT);
    m_faults.stall.station = 2;
    RequestHandler unstalled(
        m_stations, LinePacing(m_line),
        [this] {
            FaultSettings faults = m_faults;
            faults.stall = StallSettings();
            return faults;
        }(),
        1);
    std::multiset<std::string> expected;
    std::multiset<std::string> seen;
    for (const char* hex : {READ_OTHER, READ_OTHER, READ_MARKER, READ_OTHER, READ_MARKER}) {
        const std::int64_t at = expected.empty() ? 0 : 1000 * MS;
        const Request request = {bytesOf(hex), at, at};
        expected.insert(hexOf(unstalled.handle(request).at(0).bytes));
        for (const OutgoingPiece& piece : handler().handle(request))
            seen.insert(hexOf(piece.bytes));
    }
    EXPECT_EQ(3u, seen.size()); // two requests to the stalling station wait
    for (const std::string& text : servedAt(1300 * MS))
        seen.insert(text);
    EXPECT_EQ(expected, seen);
}
