#include "handledRequests.h"

namespace {

const char* const OTHER = "02 06 0B B9 04 D2 D8 A5"; // pymodbus 3.0's RTU framer

/// Only the first exchange has a duplicate.
class Duplicates : public HandledRequests
{
protected:
    void SetUp() override
    {
        always(FAULT_DUPLICATE);
        m_faults.exchanges = 1;
    }
    void expectTwo(const std::vector<OutgoingPiece>& pieces, std::int64_t firstDue,
                   std::int64_t secondDue)
    {
        ASSERT_EQ(2u, pieces.size());
        for (const OutgoingPiece& piece : pieces) {
            EXPECT_EQ(WRITE, hexOf(piece.bytes));
            EXPECT_TRUE(piece.endsFrame);
        }
        EXPECT_EQ(firstDue, pieces[0].dueAt);
        EXPECT_EQ(secondDue, pieces[1].dueAt);
    }
};

} // namespace

TEST_F(Duplicates, SecondCopyFollowsAsASeparatePiece)
{
    expectTwo(handle(WRITE, 5 * MS), 5 * MS, 5 * MS);
    EXPECT_EQ(1, handler().counts().replies);
    EXPECT_EQ(1, handler().counts().faults[FAULT_DUPLICATE]);
}

TEST_F(Duplicates, SecondCopyStartsTheGivenTimeAfterTheFirstEnds)
{
    m_line.baud = 10000; // a byte takes 1 ms
    m_faults.duplicateAfterNs = 30 * MS;
    expectTwo(handle(WRITE, 0), (8 + 8) * MS, (8 + 8 + 30 + 8) * MS);
}

TEST_F(Duplicates, BothCopiesComeByteByByteWithTrickle)
{
    m_line.baud = 10000;
    m_line.byteByByte = true;
    m_faults.duplicateAfterNs = 30 * MS;
    const std::vector<OutgoingPiece> pieces = handle(WRITE, 0);
    ASSERT_EQ(16u, pieces.size());
    EXPECT_EQ(16 * MS, pieces[7].dueAt);
    EXPECT_EQ(47 * MS, pieces[8].dueAt);
    EXPECT_EQ(54 * MS, pieces[15].dueAt);
}

TEST_F(Duplicates, LaterRepliesQueueBehindTheSecondCopy)
{
    m_faults.duplicateAfterNs = 30 * MS;
    handle(WRITE, 0);
    expectOne(handle(WRITE, 1 * MS), WRITE, 30 * MS);
    expectOne(handle(OTHER, 2 * MS), OTHER, 30 * MS);
    expectOne(handle(OTHER, 31 * MS), OTHER, 31 * MS);
}

TEST_F(Duplicates, OfAStallingStationDoNotDelayOtherStations)
{
    m_faults.duplicateAfterNs = 30 * MS;
    m_faults.stall.lengthNs = 300 * MS;
    m_faults.stall.station = 1;
    m_line.turnaroundNs = 1000 * MS;
    expectTwo(handle(WRITE, 0), 1300 * MS, 1330 * MS);
    expectOne(handle(OTHER, 50 * MS), OTHER, 1050 * MS);
}
