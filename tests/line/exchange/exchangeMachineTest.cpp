#include "exchangeMachineFixture.h"

#include <algorithm>

// Single exchanges with a station in step: silent intervals, stray bytes, time-outs, broadcasts.

TEST_F(InStepTest, WholeReplyEndsTheExchangeAtOnce)
{
    EXPECT_EQ(READ_A, ask(READ_A));
    EXPECT_FALSE(isFence);
    come(REPLY);
    EXPECT_EQ(Ends{END_ANSWERED}, ends());
    EXPECT_EQ(REPLY, last().reply);
    EXPECT_TRUE(machine.isFree());
}

TEST_F(InStepTest, ReplyMayComeInPieces)
{
    ask(READ_A);
    for (int i = 0; i < REPLY.size(); ++i) {
        EXPECT_TRUE(ends().empty());
        come(REPLY.mid(i, 1), i == 0 ? int(ANSWERED) : 260);
    }
    EXPECT_EQ(REPLY, last().reply);
}

TEST_F(InStepTest, ReplyIsTakenOutOfStrayBytes)
{
    ask(READ_A);
    come(fromHex("01FF") + REPLY + fromHex("00"));
    EXPECT_EQ(Ends{END_ANSWERED}, ends());
    EXPECT_EQ(REPLY, last().reply);
}

TEST_F(InStepTest, RefusalEndsTheExchangeAtOnce)
{
    ask(READ_A);
    come(REFUSAL);
    EXPECT_EQ(Ends{END_REFUSED}, ends());
    EXPECT_EQ(REFUSAL, last().reply);
}

TEST_F(InStepTest, NextRequestKeepsTheSilentInterval)
{
    exchange(READ_A);
    const qint64 answeredAt = now;
    EXPECT_EQ(READ_LONG, ask(READ_LONG));
    EXPECT_EQ(answeredAt + SILENCE, sentAt);
}

TEST_F(InStepTest, RequestAfterALongSilenceGoesOutAtOnce)
{
    exchange(READ_A);
    now += SILENCE;
    const qint64 startedAt = now;
    ask(READ_LONG);
    EXPECT_EQ(startedAt, sentAt);
}

TEST_F(InStepTest, StrayBytesRestartTheSilentInterval)
{
    exchange(READ_A);
    machine.start(READ_LONG, false, now);
    EXPECT_TRUE(nextSent(SILENCE - 1).isEmpty());
    come(noise(), SILENCE - 1);
    const qint64 noisyAt = now;
    EXPECT_FALSE(nextSent().isEmpty());
    EXPECT_EQ(noisyAt + SILENCE, sentAt);
}

TEST_F(InStepTest, SilentIntervalBeginsAtTheEndOfTheSentFrame)
{
    ask(READ_A);
    const qint64 startedAt = now;
    machine.linkLost();
    ask(READ_A);
    EXPECT_EQ(startedAt + REQUEST_TIME + SILENCE, sentAt);
}

TEST_F(InStepTest, SilentStationEndsTheExchangeAtItsTimeOut)
{
    ask(READ_A);
    EXPECT_EQ(sentAt + REQUEST_TIME + WAIT, machine.advance(now).wakeAt);
    waitInVain();
    EXPECT_EQ(Ends{END_SILENT}, ends());
    EXPECT_EQ(sentAt + REQUEST_TIME + WAIT, now);
}

TEST_F(InStepTest, ChatterDoesNotExtendTheTimeOut)
{
    ask(READ_A);
    // The 8 bytes of the request, the wait for the answer's start, its 9 bytes, then the draining.
    const qint64 deadline = sentAt + REQUEST_TIME + WAIT;
    chatterUntilEnded(sentAt + 3000);
    EXPECT_EQ(Ends{END_UNUSABLE}, ends());
    EXPECT_GE(now, deadline);
    EXPECT_LE(now, deadline + ANSWER + 1000);
}

TEST_F(InStepTest, LostAnswerCostsOneFence)
{
    ask(READ_A);
    waitInVain();
    ask(READ_LONG);
    EXPECT_TRUE(isFence);
    answer();
    EXPECT_EQ(READ_LONG, nextSent());
    answer();
    for (int i = 0; i < 4; ++i) {
        const QByteArray request = readOf(3000, 2 + i % 2);
        EXPECT_EQ(request, ask(request));
        answer();
    }
    EXPECT_EQ(
        Ends({END_SILENT, END_ANSWERED, END_ANSWERED, END_ANSWERED, END_ANSWERED, END_ANSWERED}),
        ends());
}

TEST_F(InStepTest, BroadcastWaitsForTheTurnaroundNotForAReply)
{
    EXPECT_EQ(BROADCAST, ask(BROADCAST));
    EXPECT_FALSE(isFence);
    EXPECT_EQ(sentAt + REQUEST_TIME + TURNAROUND, machine.advance(now).wakeAt);
    waitInVain();
    EXPECT_EQ(Ends{END_BROADCAST}, ends());
    EXPECT_EQ(sentAt + REQUEST_TIME + TURNAROUND, now);
}

TEST_F(InStepTest, BroadcastLeavesAllStationsInStep)
{
    ask(BROADCAST);
    waitInVain();
    EXPECT_EQ(READ_A, ask(READ_A));
}

TEST_F(InStepTest, NothingHappensWithoutARequest)
{
    const ExchangeMachine::Step step = machine.advance(now);
    EXPECT_TRUE(step.isIdle);
    EXPECT_TRUE(step.send.isEmpty());
    EXPECT_TRUE(machine.isFree());
    machine.start(READ_A, false, now);
    EXPECT_FALSE(machine.advance(now).isIdle);
    EXPECT_FALSE(machine.isFree());
}

TEST_F(InStepTest, EndWaitsUntilItIsTaken)
{
    ask(READ_A);
    machine.received(REPLY, now + ANSWERED);
    EXPECT_FALSE(machine.advance(now + ANSWERED).isIdle);
    EXPECT_EQ(now + ANSWERED, machine.advance(now + ANSWERED).wakeAt);
    EXPECT_EQ(1u, machine.takeEnded().size());
    EXPECT_TRUE(machine.advance(now + ANSWERED).isIdle);
}
