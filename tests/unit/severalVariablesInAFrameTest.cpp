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

TEST_F(SeveralVariablesInAFrame, StartPositionIsThatOfTheFrameAtTheIndex)
{
    prepareSeveralVariables(3, 3);
    EXPECT_EQ(3, startPosition(0));
    driver.frameIndex = 1;
    EXPECT_EQ(10, startPosition(0));
}

TEST_F(SeveralVariablesInAFrame, StartPositionMovesFourBytesForEachVariableBefore)
{
    prepareSeveralVariables(3, 3);
    EXPECT_EQ(7, startPosition(1));
    EXPECT_EQ(11, startPosition(2));
    EXPECT_EQ(15, startPosition(3));
    driver.frameIndex = 1;
    EXPECT_EQ(18, startPosition(2));
}

TEST_F(SeveralVariablesInAFrame, StartPositionStopsAtTheVariablesOfTheFrame)
{
    prepareSeveralVariables(2, 3);
    EXPECT_EQ(7, startPosition(1));
    EXPECT_EQ(11, startPosition(2));
    EXPECT_EQ(11, startPosition(3));
    EXPECT_EQ(11, startPosition(INT_MAX));
}

TEST_F(SeveralVariablesInAFrame, StartPositionStopsAtTheVariablesThatThereAre)
{
    prepareSeveralVariables(9, 2);
    EXPECT_EQ(7, startPosition(1));
    EXPECT_EQ(11, startPosition(2));
    EXPECT_EQ(11, startPosition(3));
    EXPECT_EQ(11, startPosition(9));
    driver.curReadList.clear();
    EXPECT_EQ(3, startPosition(9));
}

TEST_F(SeveralVariablesInAFrame, StartPositionStaysWithoutVariablesInTheFrame)
{
    prepareSeveralVariables(0, 3);
    EXPECT_EQ(3, startPosition(2));
    driver.varsInFrame = -1;
    EXPECT_EQ(3, startPosition(2));
}

TEST_F(SeveralVariablesInAFrame, StartPositionStaysForANumberBelowZero)
{
    prepareSeveralVariables(3, 3);
    EXPECT_EQ(3, startPosition(-1));
    EXPECT_EQ(3, startPosition(INT_MIN));
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
