#include "exchangeMachineFixture.h"

// A lost link drops the request under way without an end. The stations may still answer it over the
// next link.

class ExchangeMachineLinkTest : public InStepTest
{
protected:
    /// The request was dropped, and no end of it ever comes.
    void expectDropped()
    {
        machine.linkLost();
        takeEnded();
        EXPECT_TRUE(machine.isFree());
        EXPECT_TRUE(nextSent().isEmpty());
        now += LONG;
        EXPECT_TRUE(nextSent().isEmpty());
        EXPECT_TRUE(ended.empty());
    }

    void reopen()
    {
        machine.linkLost();
        now += 100;
        machine.linkOpened(now);
    }
};

TEST_F(ExchangeMachineLinkTest, LossBetweenRequestsHasNoEffect)
{
    machine.linkLost();
    EXPECT_EQ(READ_A, ask(READ_A));
}

TEST_F(ExchangeMachineLinkTest, LossInTheSilentIntervalDropsTheRequest)
{
    come(noise());
    machine.start(READ_A, false, now);
    ASSERT_TRUE(machine.advance(now).send.isEmpty());
    expectDropped();
}

TEST_F(ExchangeMachineLinkTest, LossBeforeTheReplyDropsTheRequest)
{
    ask(READ_A);
    now += 3000;
    expectDropped();
}

TEST_F(ExchangeMachineLinkTest, LossWhileDrainingDropsTheRequest)
{
    ask(READ_A);
    come(noise(), REQUEST_TIME + WAIT);
    ASSERT_GT(machine.advance(now).wakeAt, now);
    expectDropped();
}

TEST_F(ExchangeMachineLinkTest, LossInTheTurnaroundDropsTheBroadcast)
{
    ask(BROADCAST);
    now += REQUEST_TIME + TURNAROUND / 2;
    expectDropped();
}

TEST_F(ExchangeMachineLinkTest, LossBeforeTheFencesAnswerDropsTheRequest)
{
    come(noise());
    ask(READ_A);
    ASSERT_TRUE(isFence);
    expectDropped();
}

TEST_F(ExchangeMachineLinkTest, EndBeforeTheLossIsStillReported)
{
    ask(READ_A);
    machine.received(REPLY, now + ANSWERED);
    machine.linkLost();
    takeEnded();
    EXPECT_EQ(Ends{END_ANSWERED}, ends());
}

TEST_F(ExchangeMachineLinkTest, BytesBeforeTheLossAreNoPartOfAReply)
{
    ask(READ_A);
    come(REPLY.left(5), 3000);
    reopen();
    ask(READ_A);
    come(REPLY.mid(5), 3000);
    EXPECT_TRUE(ended.empty());
}

TEST_F(ExchangeMachineLinkTest, RequestAfterALossCountsAsNotSent)
{
    ask(READ_A);
    reopen();
    ask(READ_A);
    ASSERT_TRUE(isFence);
    waitInVain();
    EXPECT_EQ(Ends{END_SILENT}, ends());
    EXPECT_FALSE(last().wasSent);
}

TEST_F(ExchangeMachineLinkTest, ReplyToTheRequestAfterALossIsTaken)
{
    ask(READ_A);
    reopen();
    ask(READ_A);
    EXPECT_EQ(READ_A, behindFences());
    come(REPLY);
    EXPECT_EQ(Ends{END_ANSWERED}, ends());
    EXPECT_EQ(REPLY, last().reply);
}

TEST_F(ExchangeMachineLinkTest, AnswerToARequestBeforeTheLossIsLate)
{
    ask(READ_A);
    reopen();
    ask(READ_A);
    come(answerTo(READ_A));
    EXPECT_EQ(Ends{END_LATE}, ends());
    EXPECT_EQ(READ_A, behindFences());
    come(REPLY);
    EXPECT_EQ(Ends({END_LATE, END_ANSWERED}), ends());
    EXPECT_EQ(REPLY, last().reply);
}

TEST_F(ExchangeMachineLinkTest, EchoOfAWriteBeforeTheLossConfirmsNoLaterWrite)
{
    ask(WRITE);
    reopen();
    ask(WRITE);
    ASSERT_TRUE(isFence);
    come(WRITE);
    EXPECT_EQ(Ends{END_LATE}, ends());
    EXPECT_EQ(WRITE, behindFences());
    answer();
    EXPECT_EQ(Ends({END_LATE, END_ANSWERED}), ends());
}

TEST_F(ExchangeMachineLinkTest, AnswerComesAfterAThousandLosses)
{
    for (int i = 0; i < 1000; ++i) {
        ASSERT_FALSE(ask(READ_A).isEmpty());
        reopen();
    }
    EXPECT_TRUE(ended.empty());
    ask(READ_A);
    const QByteArray often = sent;
    answer(); // the answer may come as often as the fence was sent
    EXPECT_TRUE(ends().empty());
    EXPECT_NE(often, nextSent());
    EXPECT_EQ(READ_A, behindFences());
    answer();
    EXPECT_EQ(Ends{END_ANSWERED}, ends());
}

TEST_F(ExchangeMachineLinkTest, FirstFrameOnAnOpenedLinkWaitsForSilence)
{
    machine.linkLost();
    now += LONG;
    machine.linkOpened(now);
    const qint64 openedAt = now;
    ask(READ_A);
    EXPECT_EQ(openedAt + SILENCE, sentAt);
}

TEST_F(ExchangeMachineLinkTest, RepliesKeptByThePeerAreNotTaken)
{
    reopen();
    come(REPLY, 10);
    machine.start(READ_A, false, now);
    come(REPLY, 10);
    ASSERT_FALSE(nextSent().isEmpty());
    ASSERT_TRUE(isFence);
    come(REPLY, ANSWERED);
    EXPECT_TRUE(ended.empty());
    EXPECT_EQ(READ_A, behindFences());
    answer();
    EXPECT_EQ(answerTo(READ_A), last().reply);
}

// Another program used the line, or the request went over an earlier link.

TEST_F(ExchangeMachineLinkTest, AnswerToARequestOfAnEarlierLinkIsNotBelieved)
{
    ask(READ_A);
    machine.linkOpened(now);
    come(REPLY);
    EXPECT_TRUE(ends().empty() || ends() == Ends{END_LATE});
    EXPECT_FALSE(nextSent().isEmpty());
    EXPECT_TRUE(isFence);
}

// isFree(): a request may be started.

TEST_F(ExchangeMachineLinkTest, NewMachineIsFree)
{
    ExchangeMachine fresh(LineTiming::network(), settingsOf(ECHO_UNKNOWN));
    EXPECT_TRUE(fresh.isFree());
    EXPECT_TRUE(fresh.advance(0).isIdle);
    EXPECT_TRUE(fresh.isFree());
}

TEST_F(ExchangeMachineLinkTest, IsNotFreeBeforeTheReply)
{
    come(noise());
    machine.start(READ_A, false, now);
    EXPECT_FALSE(machine.isFree());
    nextSent();
    EXPECT_FALSE(machine.isFree());
    EXPECT_EQ(READ_A, behindFences());
    EXPECT_FALSE(machine.isFree());
    come(REPLY);
    EXPECT_TRUE(machine.isFree());
}

TEST_F(ExchangeMachineLinkTest, IsFreeAfterATimeOut)
{
    ask(READ_A);
    waitInVain();
    EXPECT_TRUE(machine.isFree());
}

TEST_F(ExchangeMachineLinkTest, IsNotFreeInTheTurnaroundAfterABroadcast)
{
    ask(BROADCAST);
    now += REQUEST_TIME + TURNAROUND - 1;
    nextSent(0);
    EXPECT_FALSE(machine.isFree());
    ++now;
    nextSent(0);
    EXPECT_TRUE(machine.isFree());
}
