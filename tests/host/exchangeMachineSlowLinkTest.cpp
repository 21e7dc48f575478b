#include "exchangeMachineFixture.h"

// Links whose answers come after the time-out.

namespace {

enum { REPLY_TIME = 2344, ECHO_WAIT = ANSWER + 2084, LATE = 15000 };

// MODBUS Application Protocol V1.1b3, 6.6; checksum by pymodbus' computeCRC.
const QByteArray NEXT = fromHex("01060BBA00016BCB");

} // namespace

class ExchangeMachineSlowLinkTest : public ExchangeMachineTest
{
protected:
    /// A request is given up after one attempt, and its answer comes later.
    void beAnsweredLate(qint64 after)
    {
        driver.queue.push_back(frameOf(READ_A, 9));
        driver.failures = RETRY_LIMIT - 1;
        const qint64 sentAt = runUntilSent(now + 1000000);
        ASSERT_EQ(-1, runUntilSent(sentAt + REQUEST_TIME + after));
        bytesCome(REPLY, sentAt + REQUEST_TIME + after);
    }

    /// How long the answer to the next request is waited for, from the request's end.
    qint64 nextWait()
    {
        driver.queue.push_back(frameOf(READ_A, 9));
        while (true) {
            const ExchangeMachine::Step step = machine.advance(now);
            if (!step.send.isEmpty()) return step.wakeAt - now - REQUEST_TIME;
            now = step.wakeAt;
        }
    }

    /// All attempts of a read.
    void giveUp()
    {
        driver.queue.push_back(frameOf(READ_A, 9));
        for (int i = 0; i < RETRY_LIMIT; ++i)
            runUntilSent(1000000);
    }
};

TEST_F(ExchangeMachineSlowLinkTest, TwoLateAnswersLengthenTheTimeOutToAQuarterMoreThanTheyTook)
{
    beAnsweredLate(LATE);
    beAnsweredLate(LATE);
    EXPECT_EQ((LATE - REPLY_TIME) * 5 / 4 + REPLY_TIME, nextWait());
}

TEST_F(ExchangeMachineSlowLinkTest, OneLateAnswerLeavesTheTimeOutAsItIs)
{
    beAnsweredLate(LATE);
    EXPECT_EQ(WAIT, nextWait());
}

TEST_F(ExchangeMachineSlowLinkTest, TheTimeOutBecomesEightTimesAsLongAtMost)
{
    beAnsweredLate(100 * ANSWER);
    beAnsweredLate(100 * ANSWER);
    EXPECT_EQ(8 * ANSWER + REPLY_TIME, nextWait());
}

TEST_F(ExchangeMachineSlowLinkTest, AnswersInTimeBringTheTimeOutBack)
{
    beAnsweredLate(LATE);
    beAnsweredLate(LATE);
    for (int i = 0; i < 2 * SlowAnswers::FEWEST_REMEMBERED; ++i) {
        driver.queue.push_back(frameOf(READ_A, 9));
        runUntilSent(now + 1000000);
        bytesCome(REPLY, now + REQUEST_TIME + 5000);
    }
    EXPECT_EQ(WAIT, nextWait());
}

TEST_F(ExchangeMachineSlowLinkTest, ALateAnswerPutsOffARequestThatIsHeldBack)
{
    giveUp();
    driver.queue.push_back(frameOf(READ_B, 9));
    const qint64 until = REQUEST_TIME + RETRY_LIMIT * 2 * WAIT;
    ASSERT_EQ(-1, runUntilSent(until - 1000));
    ASSERT_EQ(REPLY_GIVEN_UP, last.result);
    bytesCome(REPLY, until - 1000);
    const qint64 took = now - REQUEST_TIME;
    const qint64 putOff = now + 2 * (took + WAIT);
    EXPECT_EQ(putOff, runUntilSent(1000000));
    EXPECT_EQ(READ_B, sent);
    EXPECT_EQ((std::vector<int>{REPLY_RETRY, REPLY_RETRY, REPLY_GIVEN_UP}), results);
}

TEST_F(ExchangeMachineSlowLinkTest, AfterALateAnswerNothingIsSentWhileAnotherMayCome)
{
    giveUp();
    driver.queue.push_back(frameOf(ECHO, 8));
    driver.queue.push_back(frameOf(NEXT, 8));
    runUntilSent(1000000);
    ASSERT_EQ(ECHO, sent);
    driver.failures = RETRY_LIMIT - 1;
    bytesCome(REPLY, now + REQUEST_TIME + 1000);
    const qint64 until = machine.heldBackUntil();
    EXPECT_GT(until, now + ECHO_WAIT);
    EXPECT_EQ(until, runUntilSent(10000000));
    EXPECT_EQ(NEXT, sent);
}

TEST_F(ExchangeMachineSlowLinkTest, WhenNoOtherMayComeAnyMoreALateAnswerIsForgotten)
{
    beAnsweredLate(WAIT + 1000);
    now = machine.heldBackUntil();
    driver.queue.push_back(frameOf(READ_A, 9));
    runUntilSent(now);
    bytesCome(REPLY, now + 5000);
    giveUp();
    driver.queue.push_back(frameOf(ECHO, 8));
    const qint64 sentAt = now;
    EXPECT_EQ(sentAt + REQUEST_TIME + WAIT, runUntilSent(1000000));
    EXPECT_EQ(ECHO, sent);
}

TEST_F(ExchangeMachineSlowLinkTest, WithoutALateAnswerARequestOfAnotherShapeGoesOutAtOnce)
{
    giveUp();
    driver.queue.push_back(frameOf(ECHO, 8));
    driver.queue.push_back(frameOf(NEXT, 8));
    const qint64 sentAt = runUntilSent(1000000);
    ASSERT_EQ(ECHO, sent);
    driver.failures = RETRY_LIMIT - 1;
    EXPECT_EQ(sentAt + REQUEST_TIME + ECHO_WAIT, runUntilSent(10000000));
    EXPECT_EQ(NEXT, sent);
}

TEST_F(ExchangeMachineSlowLinkTest, ARefusalOfARepeatedRequestHoldsBackAllAsTheOthersLookAlike)
{
    driver.queue = {frameOf(READ_A, 9), frameOf(ECHO, 8)};
    runUntilSent(0);
    runUntilSent(1000000);
    driver.failures = RETRY_LIMIT - 1;
    bytesCome(REFUSAL, now + REQUEST_TIME + 1000);
    ASSERT_EQ(REPLY_GIVEN_UP, last.result);
    const qint64 took = now - REQUEST_TIME;
    const qint64 heldBack = now + took + WAIT;
    EXPECT_EQ(heldBack, runUntilSent(1000000));
    EXPECT_EQ(ECHO, sent);
}

TEST_F(ExchangeMachineSlowLinkTest, AnAnswerToOneEndsTheWaitForAnEarlierOneOfItsStation)
{
    driver.queue = {frameOf(READ_A, 9), frameOf(ECHO, 8), frameOf(READ_B, 9)};
    runUntilSent(0);
    runUntilSent(1000000);
    bytesCome(REPLY, now + REQUEST_TIME + 1000);
    runUntilSent(1000000);
    ASSERT_EQ(ECHO, sent);
    bytesCome(ECHO, now + REQUEST_TIME + 1000);
    const qint64 answered = now;
    EXPECT_EQ(answered + SILENCE, runUntilSent(1000000));
    EXPECT_EQ(READ_B, sent);
}

TEST_F(ExchangeMachineSlowLinkTest, AnAnswerThatATimeOutCutsInTwoEndsTheExchangeAllTheSame)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    runUntilSent(0);
    bytesCome(REPLY.left(4), REQUEST_TIME + WAIT - 1);
    machine.advance(REQUEST_TIME + WAIT);
    bytesCome(REPLY.mid(4), REQUEST_TIME + WAIT + 1000);
    EXPECT_EQ(std::vector<int>{REPLY_ACCEPTED}, results);
}

TEST_F(ExchangeMachineSlowLinkTest, AnAnswerThatARetryCutsInTwoIsTaken)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    runUntilSent(0);
    bytesCome(REPLY.left(4), REQUEST_TIME + WAIT - 1);
    ASSERT_EQ(REQUEST_TIME + WAIT - 1 + SILENCE, runUntilSent(1000000));
    bytesCome(REPLY.mid(4), now + 1000);
    EXPECT_EQ((std::vector<int>{REPLY_RETRY, REPLY_ACCEPTED}), results);
}

TEST_F(ExchangeMachineSlowLinkTest, WhatCameBeforeAnotherRequestIsNoPartOfItsAnswer)
{
    driver.queue = {frameOf(READ_A, 9), frameOf(READ_B, 9)};
    runUntilSent(0);
    bytesCome(REPLY, 5000);
    bytesCome(REPLY.left(4), 5500);
    runUntilSent(1000000);
    ASSERT_EQ(READ_B, sent);
    bytesCome(REPLY.mid(4), now + 5000);
    EXPECT_EQ(std::vector<int>{REPLY_ACCEPTED}, results);
}

// Behind a network link there may be a slow line that is not seen.

class ExchangeMachineUnseenLineTest : public ExchangeMachineTest
{
protected:
    enum {
        UNSEEN = 155834 ///< 17 bytes of 11 bits at 1200 baud
    };

    ExchangeMachineUnseenLineTest() : m_network(driver, LineTiming::network(), times()) {}

    qint64 nextSent()
    {
        while (true) {
            const ExchangeMachine::Step step = m_network.advance(now);
            if (!step.send.isEmpty()) return now;
            now = step.wakeAt;
        }
    }

    void answerAfter(qint64 time)
    {
        now += time;
        m_network.received(REPLY, now);
    }

    ExchangeMachine m_network;
};

TEST_F(ExchangeMachineUnseenLineTest, AFirstAnswerIsWaitedForAsLongAsThatMayTake)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    const qint64 sentAt = nextSent();
    EXPECT_EQ(sentAt + 2 * ANSWER + UNSEEN, m_network.heldBackUntil());
}

TEST_F(ExchangeMachineUnseenLineTest, AnAnswerTellsHowLongItTakes)
{
    driver.queue = {frameOf(READ_A, 9), frameOf(READ_B, 9)};
    nextSent();
    answerAfter(3000);
    const qint64 sentAt = nextSent();
    EXPECT_EQ(sentAt + 2 * ANSWER + 3000, m_network.heldBackUntil());
}

TEST_F(ExchangeMachineUnseenLineTest, AnAnswerToOneOfTwoAttemptsTellsNothing)
{
    driver.queue = {frameOf(READ_A, 9), frameOf(READ_B, 9)};
    nextSent();
    nextSent();
    answerAfter(10);
    const qint64 sentAt = nextSent();
    EXPECT_EQ(sentAt + 2 * ANSWER + UNSEEN, m_network.heldBackUntil());
}

TEST_F(ExchangeMachineUnseenLineTest, TheTimeOutIsLengthenedByAsMuch)
{
    for (int i = 0; i < 2; ++i) {
        driver.queue.push_back(frameOf(READ_A, 9));
        driver.failures = RETRY_LIMIT - 1;
        nextSent();
        m_network.advance(now + ANSWER);
        answerAfter(1000000);
    }
    driver.queue.push_back(frameOf(READ_A, 9));
    const qint64 sentAt = nextSent();
    EXPECT_EQ(sentAt + 1250000, m_network.advance(sentAt).wakeAt);
}
