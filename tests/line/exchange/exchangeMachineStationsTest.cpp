#include "exchangeMachineFixture.h"

// Several stations behind one link: each station has its own doubt.

class ExchangeMachineStationsTest : public InStepTest
{
protected:
    ExchangeMachineStationsTest()
    {
        bringIntoStep(2);
    }
};

TEST_F(ExchangeMachineStationsTest, StrayBytesPutTheLastAskedStationInDoubt)
{
    come(noise());
    EXPECT_EQ(READ_LONG, ask(READ_LONG));
    answer();
    ask(readOf(3000, 60, 2));
    EXPECT_TRUE(isFence);
}

TEST_F(ExchangeMachineStationsTest, StrayBytesCauseADoubtEvenBeforeAnotherStationsAnswer)
{
    ask(readOf(3000, 60, 2));
    waitInVain();
    exchange(READ_A);
    come(noise());
    come(answerTo(readOf(3000, 60, 2)), 100);
    EXPECT_EQ(END_LATE, last().end);
    expectOneFence();
}

TEST_F(ExchangeMachineStationsTest, StrayBytesLeaveTheNextStationInStep)
{
    come(noise());
    exchange(READ_LONG);
    expectNoFence();
}

TEST_F(ExchangeMachineStationsTest, AnotherStationsAnswerLeavesThisStationInStep)
{
    ask(READ_A);
    come(answerTo(readOf(3000, 2, 2)));
    come(answerTo(READ_A), 1000);
    EXPECT_EQ(Ends{END_ANSWERED}, ends());
    expectNoFence();
    ask(readOf(3000, 60, 2));
    EXPECT_TRUE(isFence);
}

TEST_F(ExchangeMachineStationsTest, ReopenedLinkPutsEveryStationInDoubt)
{
    machine.linkOpened(now);
    ask(readOf(3000, 60, 2));
    EXPECT_TRUE(isFence);
    behindFences();
    answer();
    expectOneFence();
}

TEST_F(ExchangeMachineStationsTest, StalledStationCausesNoFencesToTheOther)
{
    ask(READ_A);
    waitInVain();
    for (int i = 0; i < 20; ++i) {
        const QByteArray request = readOf(3000, 10 + i, 2);
        EXPECT_EQ(request, ask(request));
        answer();
        EXPECT_EQ(END_ANSWERED, ends().back());
    }
    expectOneFence();
}

TEST_F(ExchangeMachineStationsTest, LateAnswersOfAStalledStationAreNotTheOthers)
{
    const QByteArray ofTheOther = readOf(3000, 2, 2);
    ask(READ_A);
    waitInVain();
    const QByteArray fence = askAgain(READ_A);
    waitInVain();
    ended.clear();
    EXPECT_EQ(ofTheOther, ask(ofTheOther));
    come(answerTo(READ_A) + answerTo(fence));
    EXPECT_EQ(Ends{END_LATE}, ends());
    EXPECT_EQ(Ends{END_ANSWERED}, fenceEnds());
    come(answerTo(ofTheOther), 100);
    EXPECT_EQ(END_ANSWERED, last().end);
    EXPECT_EQ(answerTo(ofTheOther), last().reply);
}

TEST_F(ExchangeMachineStationsTest, StalledStationIsInStepAfterItsFencesAnswers)
{
    ask(READ_A);
    waitInVain();
    const std::vector<QByteArray> fences = fencesInVain(READ_A);
    ask(readOf(3000, 60, 2));
    come(answerTo(READ_A));
    for (const QByteArray& fence : fences)
        come(answerTo(fence), 100);
    come(answerTo(readOf(3000, 60, 2)), 100);
    EXPECT_EQ(READ_LONG, ask(READ_LONG));
}
