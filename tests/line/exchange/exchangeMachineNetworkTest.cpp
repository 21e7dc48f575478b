#include "exchangeMachineFixture.h"

// Over a network frames take no time, and no silence separates two frames.

class ExchangeMachineNetworkTest : public ExchangeMachineTest
{
protected:
    ExchangeMachineNetworkTest() : ExchangeMachineTest(ECHO_UNKNOWN, LineTiming::network())
    {
        bringIntoStep();
    }
};

TEST_F(ExchangeMachineNetworkTest, NextRequestGoesOutWithoutASilence)
{
    exchange(READ_A);
    const qint64 answeredAt = now;
    EXPECT_EQ(READ_LONG, ask(READ_LONG));
    EXPECT_EQ(answeredAt, sentAt);
}

TEST_F(ExchangeMachineNetworkTest, TimeOutHasNoFrameTimes)
{
    ask(READ_LONG);
    waitInVain();
    EXPECT_EQ(sentAt + machine.timeOut(1), now);
    EXPECT_EQ(Ends{END_SILENT}, ends());
}

TEST_F(ExchangeMachineNetworkTest, RepeatedReadAlternatesWithALongerRead)
{
    for (int i = 0; i < 20; ++i) {
        const QByteArray before = sent;
        ask(READ_A);
        EXPECT_FALSE(isFence);
        EXPECT_NE(before, sent) << i;
        answer();
        EXPECT_EQ(answerTo(READ_A), last().reply);
    }
}

TEST_F(ExchangeMachineNetworkTest, RestOfAnAnswerAfterItsTimeOutCompletesIt)
{
    ask(READ_A);
    come(REPLY.left(5));
    waitInVain();
    EXPECT_EQ(Ends{END_UNUSABLE}, ends());
    askAgain(READ_A);
    ASSERT_TRUE(isFence);
    come(REPLY.mid(5), 100);
    EXPECT_EQ(Ends({END_UNUSABLE, END_ANSWERED}), ends());
    EXPECT_EQ(REPLY, last().reply);
}

TEST_F(ExchangeMachineNetworkTest, RestOfAnAnswerDoesNotAnswerTheNextRequest)
{
    ask(READ_A);
    come(answerTo(READ_A).left(5));
    waitInVain();
    ask(READ_B);
    ASSERT_TRUE(isFence);
    come(answerTo(READ_A).mid(5) + answerTo(sent), 100);
    EXPECT_EQ(Ends({END_UNUSABLE, END_LATE}), ends());
    EXPECT_EQ(READ_B, nextSent());
    answer();
    EXPECT_EQ(answerTo(READ_B), last().reply);
}

TEST_F(ExchangeMachineNetworkTest, TimeOfALateAnswerInPiecesIsLearnt)
{
    ask(READ_A);
    come(REPLY.left(5));
    waitInVain();
    const qint64 before = machine.timeOut(1);
    askAgain(READ_A);
    come(REPLY.mid(5), before);
    EXPECT_GT(machine.timeOut(1), before);
}
