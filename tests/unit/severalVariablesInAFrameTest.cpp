#include "driverFixture.h"
#include "replyCheck.h"

#include <climits>

class SeveralVariablesInAFrame : public DriverTest
{
};

namespace {

void appendFrame(int dataStart)
{
    FRAME_PRO frame;
    frame.dataStart = dataStart;
    driver.frameQueue.append(frame);
}

void prepareSeveralVariables(int varsInFrame, int elements)
{
    appendFrame(3);
    appendFrame(10);
    driver.varsInFrame = varsInFrame;
    for (int i = 0; i < elements; ++i)
        driver.curReadList.append(variable(1, "MW", 3000 + i, 1));
}

int startPosition(int n)
{
    return allMix_GetDataStartPosition(QByteArray(), driver.curReadList, n);
}

} // namespace

TEST_F(SeveralVariablesInAFrame, StartPositionMovesFourBytesForEachVariableBefore)
{
    struct
    {
        int varsInFrame;
        int elements;
        int frameIndex;
        int n;
        int position;
    } const rows[] = {
        {3, 3, 0, 0, 3},
        {3, 3, 1, 0, 10},
        {3, 3, 0, 1, 7},
        {3, 3, 0, 2, 11},
        {3, 3, 0, 3, 15},
        {3, 3, 1, 2, 18},
        // It stops at the variables of the frame.
        {2, 3, 0, 1, 7},
        {2, 3, 0, 2, 11},
        {2, 3, 0, 3, 11},
        {2, 3, 0, INT_MAX, 11},
        // It stops at the variables that there are.
        {9, 2, 0, 1, 7},
        {9, 2, 0, 2, 11},
        {9, 2, 0, 3, 11},
        {9, 2, 0, 9, 11},
        {9, 0, 0, 9, 3},
        // It stays without variables in the frame, and for a number below zero.
        {0, 3, 0, 2, 3},
        {-1, 3, 0, 2, 3},
        {3, 3, 0, -1, 3},
        {3, 3, 0, INT_MIN, 3},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.n << " of " << row.varsInFrame << ", "
                                        << row.elements << " there, frame " << row.frameIndex);
        driver.frameQueue.clear();
        driver.curReadList.clear();
        prepareSeveralVariables(row.varsInFrame, row.elements);
        driver.frameIndex = row.frameIndex;
        EXPECT_EQ(row.position, startPosition(row.n));
    }
}

TEST_F(SeveralVariablesInAFrame, StartPositionOfNoFrameIsZero)
{
    EXPECT_EQ(0, startPosition(1));
    prepareSeveralVariables(3, 3);
    driver.frameIndex = 1;
    EXPECT_EQ(14, startPosition(1));
    for (int index : {-1, 2, INT_MAX}) {
        driver.frameIndex = index;
        EXPECT_EQ(0, startPosition(1)) << index;
    }
}

TEST_F(SeveralVariablesInAFrame, LengthOfAReadListIsZero)
{
    EXPECT_EQ(0, allMix_GetRecvLenFromReadList(QList<VARIABLE>()));
    EXPECT_EQ(0, allMix_GetRecvLenFromReadList(QList<VARIABLE>() << variable(1, "MW", 3000, 5)
                                                                 << variable(1, "IX", 0, 40)));
}
