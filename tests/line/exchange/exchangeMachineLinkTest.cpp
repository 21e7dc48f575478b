#include "exchangeMachineFixture.h"

// A link that goes away takes the request with it, and tells no end of it. What the stations were
// asked may still be answered over the next link.

class ExchangeMachineLinkTest : public InStepTest
{
protected:
    /// The request is gone without an end, now and later.
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

TEST_F(ExchangeMachineLinkTest, LostBetweenRequestsChangesNothing)
{
    machine.linkLost();
    EXPECT_EQ(READ_A, ask(READ_A));
}

TEST_F(ExchangeMachineLinkTest, LostWhileItWaitsForSilenceTheRequestIsDropped)
{
    come(noise());
    machine.start(READ_A, false, now);
    ASSERT_TRUE(machine.advance(now).send.isEmpty());
    expectDropped();
}

TEST_F(ExchangeMachineLinkTest, LostWhileItWaitsForTheReplyTheRequestIsDropped)
{
    ask(READ_A);
    now += 3000;
    expectDropped();
}

TEST_F(ExchangeMachineLinkTest, LostWhileItDrainsTheRequestIsDropped)
{
    ask(READ_A);
    come(noise(), REQUEST_TIME + WAIT);
    ASSERT_GT(machine.advance(now).wakeAt, now);
    expectDropped();
}

TEST_F(ExchangeMachineLinkTest, LostInThePauseAfterItABroadcastIsDropped)
{
    ask(BROADCAST);
    now += REQUEST_TIME + TURNAROUND / 2;
    expectDropped();
}

TEST_F(ExchangeMachineLinkTest, LostWhileAFenceIsAwaitedTheRequestIsDropped)
{
    come(noise());
    ask(READ_A);
    ASSERT_TRUE(isFence);
    expectDropped();
}

TEST_F(ExchangeMachineLinkTest, AnEndThatCameBeforeTheLossIsStillTold)
{
    ask(READ_A);
    machine.received(REPLY, now + ANSWERED);
    machine.linkLost();
    takeEnded();
    EXPECT_EQ(Ends{END_ANSWERED}, ends());
}

TEST_F(ExchangeMachineLinkTest, WhatCameBeforeTheLossIsNoPartOfAReply)
{
    ask(READ_A);
    come(REPLY.left(5), 3000);
    reopen();
    ask(READ_A);
    come(REPLY.mid(5), 3000);
    EXPECT_TRUE(ended.empty());
}

TEST_F(ExchangeMachineLinkTest, ARequestIsFreshAfterALoss)
{
    ask(READ_A);
    reopen();
    ask(READ_A);
    ASSERT_TRUE(isFence);
    waitInVain();
    EXPECT_EQ(Ends{END_SILENT}, ends());
    EXPECT_FALSE(last().wasSent);
}

TEST_F(ExchangeMachineLinkTest, TheReplyToTheRequestThatIsAskedAgainIsTaken)
{
    ask(READ_A);
    reopen();
    ask(READ_A);
    EXPECT_EQ(READ_A, behindFences());
    come(REPLY);
    EXPECT_EQ(Ends{END_ANSWERED}, ends());
    EXPECT_EQ(REPLY, last().reply);
}

TEST_F(ExchangeMachineLinkTest, AnAnswerToARequestBeforeTheLossIsLate)
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

TEST_F(ExchangeMachineLinkTest, AnAnswerToAWriteBeforeTheLossConfirmsNoOther)
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

TEST_F(ExchangeMachineLinkTest, AThousandLossesStillLeadToAnAnswer)
{
    for (int i = 0; i < 1000; ++i) {
        ASSERT_FALSE(ask(READ_A).isEmpty());
        reopen();
    }
    EXPECT_TRUE(ended.empty());
    ask(READ_A);
    const QByteArray often = sent;
    answer(); // may come as often as the fence was sent
    EXPECT_TRUE(ends().empty());
    EXPECT_NE(often, nextSent());
    EXPECT_EQ(READ_A, behindFences());
    answer();
    EXPECT_EQ(Ends{END_ANSWERED}, ends());
}

TEST_F(ExchangeMachineLinkTest, WhatIsSentFirstOverAnOpenedLinkWaitsForSilence)
{
    machine.linkLost();
    now += LONG;
    machine.linkOpened(now);
    const qint64 openedAt = now;
    ask(READ_A);
    EXPECT_EQ(openedAt + SILENCE, sentAt);
}

TEST_F(ExchangeMachineLinkTest, WhatAPeerKeptForWhoeverOpensTheLinkIsNotTaken)
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

// Another program had the line, or the request that is awaited went over another link.

TEST_F(ExchangeMachineLinkTest, AnAnswerToARequestOverAnEarlierLinkIsNotBelieved)
{
    ask(READ_A);
    machine.linkOpened(now);
    come(REPLY);
    EXPECT_TRUE(ends().empty() || ends() == Ends{END_LATE});
    EXPECT_FALSE(nextSent().isEmpty());
    EXPECT_TRUE(isFence);
}

// Whether a request may be started.

TEST_F(ExchangeMachineLinkTest, AFreshMachineIsFree)
{
    ExchangeMachine fresh(LineTiming::network(), settingsOf(ECHO_UNKNOWN));
    EXPECT_TRUE(fresh.isFree());
    EXPECT_TRUE(fresh.advance(0).isIdle);
    EXPECT_TRUE(fresh.isFree());
}

TEST_F(ExchangeMachineLinkTest, ItIsNotFreeBeforeTheReply)
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

TEST_F(ExchangeMachineLinkTest, ItIsFreeAfterATimeOut)
{
    ask(READ_A);
    waitInVain();
    EXPECT_TRUE(machine.isFree());
}

TEST_F(ExchangeMachineLinkTest, ItIsNotFreeInThePauseAfterABroadcast)
{
    ask(BROADCAST);
    now += REQUEST_TIME + TURNAROUND - 1;
    nextSent(0);
    EXPECT_FALSE(machine.isFree());
    ++now;
    nextSent(0);
    EXPECT_TRUE(machine.isFree());
}
