#include "exchangeMachineFixture.h"

// The time-out of a station follows the times of its answers.

class ExchangeMachineTimeOutTest : public testing::Test
{
protected:
    enum { LEARNT = 10, QUICK = 1000, SLOW = 3 * ANSWER };

    ExchangeMachineTimeOutTest()
    {
        host.poll(wordsApart());
    }

    static ExchangeMachine::Settings settings()
    {
        ExchangeMachine::Settings made;
        made.answer = ANSWER;
        return made;
    }

    /// Exchanges several requests. Each answer comes `lateness` after the end of its request.
    /// @return number of frames that were sent
    int run(int requests, qint64 lateness)
    {
        peer.habits.service = lateness;
        const int before = host.figures.sent;
        host.run(requests);
        return host.figures.sent - before;
    }

    OrderlyPeer peer{Habits(), 1};
    PollingHost host{peer, LineTiming::network(), settings()};
};

TEST_F(ExchangeMachineTimeOutTest, TimeOutBeforeTheFirstAnswerIsTheCallers)
{
    EXPECT_EQ(ANSWER, host.machine.timeOut(1));
    EXPECT_EQ(ANSWER, host.machine.timeOut(247));
}

TEST_F(ExchangeMachineTimeOutTest, QuickAnswersKeepTheCallersTimeOut)
{
    run(50, QUICK);
    EXPECT_EQ(ANSWER, host.machine.timeOut(1));
}

TEST_F(ExchangeMachineTimeOutTest, TimeOutGrowsForAnAlwaysLateGateway)
{
    run(LEARNT, SLOW);
    EXPECT_GT(host.machine.timeOut(1), SLOW);
    EXPECT_EQ(100, run(100, SLOW)); // each request once, no fence
    EXPECT_EQ(LEARNT + 100, host.figures.answered + host.figures.givenUp);
    EXPECT_LE(host.figures.givenUp, 2);
}

TEST_F(ExchangeMachineTimeOutTest, TimeOutGrowsForAGatewayThatBecomesLate)
{
    run(50, QUICK);
    run(LEARNT, SLOW);
    EXPECT_EQ(100, run(100, SLOW));
}

TEST_F(ExchangeMachineTimeOutTest, SingleStallIsForgotten)
{
    run(50, QUICK);
    run(1, SLOW);
    EXPECT_GT(host.machine.timeOut(1), ANSWER);
    run(50, QUICK);
    EXPECT_EQ(ANSWER, host.machine.timeOut(1));
}

TEST_F(ExchangeMachineTimeOutTest, SlowStationKeepsTheOthersTimeOut)
{
    run(LEARNT, SLOW);
    EXPECT_EQ(ANSWER, host.machine.timeOut(2));
}

TEST_F(ExchangeMachineTimeOutTest, TimeOutGrowsTo128TimesTheCallersAtMost)
{
    run(200, 200 * ANSWER);
    EXPECT_EQ(128 * ANSWER, host.machine.timeOut(1));
}

// The time learnt from a late answer. By RFC 6298, 2 the first time makes a time-out of three times
// it.

class ExchangeMachineLearningTest : public ExchangeMachineTest
{
protected:
    /// The answer comes in one piece. It began `lateness` after the end of its request.
    void answerLate(const QByteArray& request, qint64 requestAt, qint64 lateness)
    {
        const QByteArray reply = answerTo(request);
        const qint64 length = LineTiming(LineSettings()).frame(int(reply.size()));
        come(reply, requestAt + REQUEST_TIME + lateness + length - now);
    }
};

TEST_F(ExchangeMachineLearningTest, LearntTimeEndsAtTheStartOfTheAnswer)
{
    ask(READ_LONG);
    answerLate(sent, sentAt, 8000);
    EXPECT_EQ(3 * 8000, machine.timeOut(1));
}

TEST_F(ExchangeMachineLearningTest, LateAnswerCountsFromItsOwnRequest)
{
    const QByteArray first = ask(READ_LONG);
    const qint64 firstAt = sentAt;
    nextFence();
    answerLate(first, firstAt, 20000);
    EXPECT_EQ(3 * 20000, machine.timeOut(1));
}

TEST_F(ExchangeMachineLearningTest, UnaskedAnswerIsNotLearnt)
{
    ask(READ_LONG);
    answerLate(readOf(3000, 70), sentAt, 9000);
    EXPECT_EQ(ANSWER, machine.timeOut(1));
}

TEST_F(ExchangeMachineLearningTest, AnswerToARepeatedFrameIsNotLearnt)
{
    ask(READ_LONG);
    QByteArray before;
    for (int i = 0; i < 30; ++i) {
        before = sent;
        nextFence();
    }
    ASSERT_EQ(before, sent);
    answerLate(sent, sentAt, 9000);
    EXPECT_EQ(Ends{END_ANSWERED}, Ends{fenceEnds().back()});
    EXPECT_EQ(ANSWER, machine.timeOut(1));
}

TEST_F(ExchangeMachineLearningTest, NextRequestHasTheLearntTimeOut)
{
    ask(READ_LONG);
    answerLate(sent, sentAt, 8000);
    EXPECT_EQ(READ_LONG, nextSent());
    const qint64 length = LineTiming(LineSettings()).frame(int(answerTo(READ_LONG).size()));
    EXPECT_EQ(sentAt + REQUEST_TIME + 3 * 8000 + length, machine.advance(now).wakeAt);
}
