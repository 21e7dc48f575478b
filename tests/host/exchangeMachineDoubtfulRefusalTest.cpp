#include "exchangeMachineFixture.h"

// A refusal names station and function only, so one that comes while an answer to an earlier
// request is outstanding may be that one's: it counts when nothing better comes.

namespace {

enum { ECHO_WAIT = ANSWER + 2084, SOON = 3000 };

// MODBUS Application Protocol V1.1b3, 6.3, 6.6 and 7; checksums by pymodbus' computeCRC.
const QByteArray NEXT = fromHex("01060BBA00016BCB");
const QByteArray THIRD = fromHex("01060BBB00027A0A");
const QByteArray READ_WIDE_A = fromHex("01030BB8000387CA");
const QByteArray READ_WIDE_B = fromHex("01030BBC0003C60B");
const QByteArray WRITE_REFUSAL = fromHex("018602C3A1");

} // namespace

class ExchangeMachineDoubtfulRefusalTest : public ExchangeMachineTest
{
protected:
    /// The first attempt's answer is lost, the second is answered, and the next request sent.
    void answerTheSecondAttempt(const FRAME_PRO& first, const QByteArray& answer,
                                const FRAME_PRO& next)
    {
        driver.queue = {first, next};
        runUntilSent(0);
        m_attemptSent = runUntilSent(1000000) + REQUEST_TIME;
        bytesCome(answer, now + SOON);
        m_answered = now;
        runUntilSent(1000000);
        results.clear();
    }

    void answerTheSecondWrite()
    {
        answerTheSecondAttempt(frameOf(ECHO, 8), ECHO, frameOf(NEXT, 8));
        ASSERT_EQ(NEXT, sent);
    }

    /// No attempt is answered, and the next request is sent.
    void giveUpAWrite()
    {
        driver.queue = {frameOf(ECHO, 8), frameOf(NEXT, 8)};
        driver.failures = RETRY_LIMIT - 1;
        runUntilSent(0);
        runUntilSent(1000000);
        ASSERT_EQ(NEXT, sent);
        results.clear();
    }

    /// Each write is refused at its only attempt, and the next one sent.
    void refuseTen()
    {
        for (int i = 0; i < 10; ++i) {
            driver.queue.push_back(frameOf(i % 2 == 0 ? THIRD : NEXT, 8));
            thisIsTheLastAttempt();
            bytesCome(WRITE_REFUSAL, now + SOON);
            runUntilSent(1000000);
            EXPECT_EQ(2, last.exceptionCode) << i;
        }
    }

    void thisIsTheLastAttempt()
    {
        driver.failures = RETRY_LIMIT - 1;
    }

    qint64 m_attemptSent = 0; ///< the end of the attempt that was answered
    qint64 m_answered = 0;    ///< when it was
};

TEST_F(ExchangeMachineDoubtfulRefusalTest, AfterARetriedRequestCountsAtTheTimeOutOfThatAttempt)
{
    answerTheSecondWrite();
    bytesCome(WRITE_REFUSAL, now + SOON);
    EXPECT_TRUE(results.empty());
    runUntilSent(1000000);
    EXPECT_EQ(m_attemptSent + ECHO_WAIT, now);
    EXPECT_EQ(2, last.exceptionCode);
    EXPECT_EQ(WRITE_REFUSAL, driver.replies.back());
}

TEST_F(ExchangeMachineDoubtfulRefusalTest, AfterTheTimeOutOfARetriedRequestIsNoneAndCountsAtOnce)
{
    answerTheSecondWrite();
    runUntilSent(m_attemptSent + ECHO_WAIT - 1);
    bytesCome(WRITE_REFUSAL, m_attemptSent + ECHO_WAIT);
    EXPECT_EQ(std::vector<int>{REPLY_RETRY}, results);
    EXPECT_EQ(2, last.exceptionCode);
}

TEST_F(ExchangeMachineDoubtfulRefusalTest, AfterARetriedRequestYieldsToTheEcho)
{
    answerTheSecondWrite();
    bytesCome(WRITE_REFUSAL, now + SOON);
    bytesCome(NEXT, now + SOON);
    EXPECT_EQ(std::vector<int>{REPLY_ACCEPTED}, results);
    EXPECT_EQ(0, last.exceptionCode);
}

TEST_F(ExchangeMachineDoubtfulRefusalTest, DoesNotPutOffTheRefusalsOfAllRequestsAfterIt)
{
    answerTheSecondWrite();
    refuseTen();
    const qint64 start = now;
    refuseTen();
    EXPECT_EQ(std::vector<int>(20, REPLY_GIVEN_UP), results);
    EXPECT_LE(now, start + 10 * (SOON + SILENCE));
}

TEST_F(ExchangeMachineDoubtfulRefusalTest, LeavesItsOwnLateReplyToBeWaitedFor)
{
    answerTheSecondAttempt(frameOf(READ_A, 9), REPLY, frameOf(READ_WIDE_A, 11));
    ASSERT_EQ(READ_WIDE_A, sent);
    driver.queue.push_back(frameOf(READ_WIDE_B, 11));
    thisIsTheLastAttempt();
    bytesCome(REFUSAL, now + SOON);
    const qint64 next = runUntilSent(1000000);
    ASSERT_EQ(READ_WIDE_B, sent);
    ASSERT_EQ(2, last.exceptionCode);
    // What was answered is the first attempt, sent at 0: the second may take a time-out more. Then
    // come two time-outs of this one, whose 11 bytes take 2865.
    const qint64 took = m_answered - REQUEST_TIME;
    EXPECT_EQ(m_answered + took + WAIT + 2 * (ANSWER + 2865), next);
}

TEST_F(ExchangeMachineDoubtfulRefusalTest, AfterAGivenUpRequestIsAskedAgain)
{
    giveUpAWrite();
    const qint64 sentAt = now;
    bytesCome(WRITE_REFUSAL, now + SOON);
    EXPECT_EQ(sentAt + REQUEST_TIME + ECHO_WAIT, runUntilSent(1000000));
    EXPECT_EQ(NEXT, sent);
    EXPECT_EQ(std::vector<int>{REPLY_RETRY}, results);
    EXPECT_EQ(0, last.exceptionCode);
    bytesCome(NEXT, now + SOON);
    EXPECT_EQ(REPLY_ACCEPTED, last.result);
}

TEST_F(ExchangeMachineDoubtfulRefusalTest, InTheLastAttemptIsTheVerdict)
{
    giveUpAWrite();
    thisIsTheLastAttempt();
    bytesCome(WRITE_REFUSAL, now + SOON);
    EXPECT_TRUE(results.empty());
    runUntilSent(1000000);
    EXPECT_EQ(std::vector<int>{REPLY_GIVEN_UP}, results);
    EXPECT_EQ(2, last.exceptionCode);
    EXPECT_EQ(-1, last.replyTime);
}

TEST_F(ExchangeMachineDoubtfulRefusalTest, BeforeTheLastAttemptIsNoVerdictOnIt)
{
    giveUpAWrite();
    bytesCome(WRITE_REFUSAL, now + SOON);
    for (int i = 0; i < RETRY_LIMIT; ++i)
        runUntilSent(1000000);
    EXPECT_EQ((std::vector<int>{REPLY_RETRY, REPLY_RETRY, REPLY_GIVEN_UP}), results);
    EXPECT_EQ(0, last.exceptionCode);
}

TEST_F(ExchangeMachineDoubtfulRefusalTest, IsNoneOfARequestOfAnotherFunctionAndCountsAtOnce)
{
    answerTheSecondAttempt(frameOf(ECHO, 8), ECHO, frameOf(READ_A, 9));
    bytesCome(REFUSAL, now + SOON);
    EXPECT_EQ(std::vector<int>{REPLY_RETRY}, results);
    EXPECT_EQ(2, last.exceptionCode);
}

TEST_F(ExchangeMachineDoubtfulRefusalTest, IsNoneOfASecondAttemptAndCountsAtOnce)
{
    driver.queue.push_back(frameOf(ECHO, 8));
    runUntilSent(0);
    runUntilSent(1000000);
    bytesCome(WRITE_REFUSAL, now + SOON);
    EXPECT_EQ(2, last.exceptionCode);
    EXPECT_EQ(SOON - REQUEST_TIME, last.replyTime);
}

// How long answers may come, for whoever wants to leave the line.

class ExchangeMachineAnswersUntilTest : public ExchangeMachineTest
{
};

TEST_F(ExchangeMachineAnswersUntilTest, NothingSentIsNotWaitedFor)
{
    EXPECT_LT(machine.answersUntil(), 0);
}

TEST_F(ExchangeMachineAnswersUntilTest, AnAnsweredRequestIsNotWaitedFor)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    runUntilSent(0);
    EXPECT_EQ(REQUEST_TIME + 2 * WAIT, machine.answersUntil());
    bytesCome(REPLY, 5000);
    EXPECT_LT(machine.answersUntil(), 0);
}

TEST_F(ExchangeMachineAnswersUntilTest, OneThatWasGivenUpIsWaitedForOneMoreTimeOut)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    qint64 sentAt = 0;
    for (int i = 0; i < RETRY_LIMIT; ++i)
        sentAt = runUntilSent(1000000);
    runUntilSent(1000000);
    ASSERT_EQ(REPLY_GIVEN_UP, last.result);
    EXPECT_EQ(sentAt + REQUEST_TIME + 2 * WAIT, machine.answersUntil());
}

TEST_F(ExchangeMachineAnswersUntilTest, WhatWasAnsweredLateIsWaitedForAsLongForEachOtherAttempt)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    for (int i = 0; i < RETRY_LIMIT; ++i)
        runUntilSent(1000000);
    bytesCome(REPLY, now + REQUEST_TIME);
    const qint64 took = now - REQUEST_TIME;
    EXPECT_EQ(now + 2 * (took + WAIT), machine.answersUntil());
}

TEST_F(ExchangeMachineAnswersUntilTest, ABroadcastIsNotWaitedFor)
{
    driver.queue.push_back(frameOf(BROADCAST, 0));
    runUntilSent(0);
    EXPECT_LT(machine.answersUntil(), 0);
}
