#include "exchangeMachineFixture.h"

// The entries of takeEnded(), and the deadlines that chatter must not extend.

class ExchangeMachineEndTest : public InStepTest
{
};

TEST_F(ExchangeMachineEndTest, ReplyTimeCountsFromTheEndOfTheRequest)
{
    ask(READ_A);
    come(REPLY, 5000);
    EXPECT_EQ(5000 - REQUEST_TIME, last().replyTime);
}

TEST_F(ExchangeMachineEndTest, ReplyTimeOfAnAnswerInPiecesEndsWithItsLastByte)
{
    ask(READ_A);
    come(REPLY.left(4), 4000);
    come(REPLY.mid(4), 1500);
    EXPECT_EQ(5500 - REQUEST_TIME, last().replyTime);
}

TEST_F(ExchangeMachineEndTest, RefusalHasAReplyTime)
{
    ask(READ_A);
    come(REFUSAL, 4000);
    EXPECT_EQ(4000 - REQUEST_TIME, last().replyTime);
    EXPECT_EQ(REFUSAL, last().reply);
}

TEST_F(ExchangeMachineEndTest, SilentEndHasNoReplyAndNoTime)
{
    ask(READ_A);
    waitInVain();
    EXPECT_EQ(END_SILENT, last().end);
    EXPECT_EQ(-1, last().replyTime);
    EXPECT_TRUE(last().reply.isEmpty());
}

TEST_F(ExchangeMachineEndTest, NoiseWithoutAnswerEndsUnusable)
{
    ask(READ_A);
    come(REPLY.left(8));
    waitInVain();
    EXPECT_EQ(END_UNUSABLE, last().end);
    EXPECT_EQ(-1, last().replyTime);
    EXPECT_TRUE(last().reply.isEmpty());
}

TEST_F(ExchangeMachineEndTest, NoiseBeforeARequestDoesNotCountForIt)
{
    ask(READ_A);
    come(REPLY + noise());
    ask(READ_LONG);
    waitInVain();
    EXPECT_EQ(Ends({END_ANSWERED, END_SILENT}), ends());
}

TEST_F(ExchangeMachineEndTest, BroadcastEndHasNoReply)
{
    ask(BROADCAST);
    waitInVain();
    EXPECT_EQ(END_BROADCAST, last().end);
    EXPECT_EQ(-1, last().replyTime);
    EXPECT_TRUE(last().wasSent);
}

TEST_F(ExchangeMachineEndTest, EachEndIsTakenOnce)
{
    ask(READ_A);
    machine.received(REPLY, now + ANSWERED);
    EXPECT_EQ(1u, machine.takeEnded().size());
    EXPECT_TRUE(machine.takeEnded().empty());
    machine.received(REPLY, now + ANSWERED + 1);
    EXPECT_TRUE(machine.takeEnded().empty());
}

TEST_F(ExchangeMachineEndTest, EndNamesItsStation)
{
    bringIntoStep(247);
    exchange(readOf(3000, 2, 247));
    EXPECT_EQ(247, last().station);
    exchange(READ_A);
    EXPECT_EQ(1, last().station);
    ask(BROADCAST);
    waitInVain();
    EXPECT_EQ(0, last().station);
}

// wasSent: the request itself went out, in this attempt or an earlier one.

TEST_F(ExchangeMachineEndTest, AnsweredRequestWasSent)
{
    exchange(READ_A);
    EXPECT_TRUE(last().wasSent);
}

TEST_F(ExchangeMachineEndTest, RequestBehindUnansweredFencesWasNotSent)
{
    come(noise());
    ask(READ_A);
    ASSERT_TRUE(isFence);
    waitInVain();
    EXPECT_EQ(Ends{END_SILENT}, ends());
    EXPECT_FALSE(last().wasSent);
}

TEST_F(ExchangeMachineEndTest, RequestOfAnEarlierAttemptWasSent)
{
    ask(READ_A);
    waitInVain();
    EXPECT_TRUE(last().wasSent);
    askAgain(READ_A);
    ASSERT_TRUE(isFence);
    waitInVain();
    EXPECT_TRUE(last().wasSent);
}

TEST_F(ExchangeMachineEndTest, EarlierRequestDoesNotMakeThisOneSent)
{
    ask(READ_A);
    waitInVain();
    ask(READ_A);
    waitInVain();
    EXPECT_FALSE(last().wasSent);
}

TEST_F(ExchangeMachineEndTest, CallersFenceBetweenAttemptsKeepsWasSent)
{
    ask(READ_A);
    waitInVain();
    machine.startFence(1, 0, now);
    nextSent();
    waitInVain();
    askAgain(READ_A);
    waitInVain();
    EXPECT_TRUE(last().wasSent);
}

TEST_F(ExchangeMachineEndTest, EndlessChatterBeforeARequestEndsUnusable)
{
    come(noise());
    const qint64 startedAt = now;
    machine.start(READ_A, false, now);
    chatterUntilEnded(startedAt + 500);
    EXPECT_EQ(Ends{END_UNUSABLE}, ends());
    EXPECT_GE(now, startedAt + ANSWER);
    EXPECT_LE(now, startedAt + ANSWER + SILENCE + 1000);
    EXPECT_EQ(-1, last().replyTime);
    EXPECT_FALSE(last().wasSent);
}

TEST_F(ExchangeMachineEndTest, EndlessChatterEndsEachAttempt)
{
    come(noise());
    const qint64 startedAt = now;
    for (int i = 0; i < 3; ++i) {
        machine.start(READ_A, i > 0, now);
        chatterUntilEnded(now + 500);
    }
    EXPECT_EQ(Ends({END_UNUSABLE, END_UNUSABLE, END_UNUSABLE}), ends());
    EXPECT_LE(now, startedAt + 3 * (ANSWER + SILENCE + 1500));
}

TEST_F(ExchangeMachineEndTest, RequestGoesOutWhenTheChatterEnds)
{
    machine.start(READ_A, false, now);
    for (int i = 0; i < 10; ++i) {
        come(noise(), 500);
        EXPECT_TRUE(nextSent(0).isEmpty());
    }
    const qint64 quietSince = now;
    EXPECT_FALSE(nextSent().isEmpty());
    EXPECT_EQ(quietSince + SILENCE, sentAt);
    EXPECT_TRUE(ends().empty());
}

TEST_F(ExchangeMachineEndTest, ReplyBehindAHundredThousandBytesOfChatterIsTaken)
{
    ask(READ_A);
    for (int i = 0; i < 1000; ++i)
        come(noise(100), i == 0 ? 3000 : 1);
    come(REPLY, 1000);
    EXPECT_EQ(REPLY, last().reply);
}

TEST_F(ExchangeMachineEndTest, ReplyBehindChatterInOnePieceIsTaken)
{
    ask(READ_A);
    come(noise(100000) + REPLY);
    EXPECT_EQ(REPLY, last().reply);
}

TEST_F(ExchangeMachineEndTest, LongestReplyBehindChatterIsTakenByteByByte)
{
    // 125 registers of 0, by pymodbus' computeCRC.
    const QByteArray reply = fromHex("0103FA") + QByteArray(250, '\0') + fromHex("08E8");
    ask(fromHex("01030BB8007D07EA"));
    come(noise(5000), 3000);
    for (int i = 0; i < reply.size(); ++i) {
        EXPECT_TRUE(ends().empty());
        come(reply.mid(i, 1), 1);
    }
    EXPECT_EQ(reply, last().reply);
}

TEST_F(ExchangeMachineEndTest, ReplyJustBeforeItsDeadlineIsTaken)
{
    ask(READ_A);
    come(REPLY, REQUEST_TIME + WAIT - 1);
    EXPECT_EQ(Ends{END_ANSWERED}, ends());
}

TEST_F(ExchangeMachineEndTest, ReplyAfterItsDeadlineIsLate)
{
    ask(READ_A);
    waitInVain();
    come(REPLY, 1);
    EXPECT_EQ(Ends({END_SILENT, END_LATE}), ends());
    EXPECT_TRUE(last().reply.isEmpty());
}

// At its deadline an answer may have come in part. The machine waits as long as its bytes follow.

TEST_F(ExchangeMachineEndTest, ReplyThatBeganBeforeItsDeadlineIsTakenWhole)
{
    ask(READ_A);
    come(REPLY.left(6), REQUEST_TIME + WAIT - 100);
    EXPECT_TRUE(nextSent(100).isEmpty());
    come(REPLY.mid(6), SILENCE - 1);
    EXPECT_EQ(Ends{END_ANSWERED}, ends());
    EXPECT_EQ(REPLY, last().reply);
}

TEST_F(ExchangeMachineEndTest, ReplyThatBreaksOffAtItsDeadlineEndsAfterASilence)
{
    ask(READ_A);
    come(REPLY.left(6), REQUEST_TIME + WAIT - 100);
    const qint64 brokeOffAt = now;
    waitInVain();
    EXPECT_EQ(Ends{END_UNUSABLE}, ends());
    EXPECT_EQ(brokeOffAt + SILENCE, now);
}

TEST_F(ExchangeMachineEndTest, NothingIsSentDuringTheRestOfAnAnswer)
{
    ask(READ_A);
    come(REPLY.left(6), REQUEST_TIME + WAIT - 100);
    waitInVain();
    come(REPLY.mid(6), 100);
    const qint64 restAt = now;
    EXPECT_FALSE(askAgain(READ_A).isEmpty());
    EXPECT_EQ(restAt + SILENCE, sentAt);
}
