#include "exchangeMachineFixture.h"

// The driver still has the request in flight when the link goes: it must get it again, with none of
// its attempts spent.

class ExchangeMachineLinkTest : public ExchangeMachineTest
{
protected:
    /// The request goes out again as soon as the line was silent, and is answered.
    void expectOfferedAgain(const QByteArray& request)
    {
        const qint64 lostAt = now;
        machine.linkLost();
        noteFinished();
        EXPECT_TRUE(results.empty());
        EXPECT_TRUE(driver.replies.empty());
        const qint64 sentAt = runUntilSent(lostAt + 100 * ANSWER);
        EXPECT_GE(sentAt, lostAt);
        EXPECT_LE(sentAt, lostAt + REQUEST_TIME + SILENCE);
        EXPECT_EQ(request, sent);
        EXPECT_EQ(0, driver.failures);
    }

    /// The first request is answered on the new link.
    /// @return by how much more than the silent interval READ_B waits behind the answer
    qint64 extraWaitOfTheNext()
    {
        runUntilSent(now + ANSWER);
        bytesCome(REPLY, now + 4000);
        const qint64 answered = now;
        const qint64 sentAt = runUntilSent(now + 4 * WAIT);
        EXPECT_EQ(READ_B, sent);
        return sentAt - answered - SILENCE;
    }
};

TEST_F(ExchangeMachineLinkTest, LostBetweenRequestsChangesNothing)
{
    machine.linkLost();
    driver.queue.push_back(frameOf(READ_A, 9));
    EXPECT_EQ(0, runUntilSent(0));
    EXPECT_EQ(READ_A, sent);
}

TEST_F(ExchangeMachineLinkTest, LostWhileItWaitsForSilenceTheRequestIsOfferedAgain)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    bytesCome(fromHex("55"), 0);
    ASSERT_TRUE(machine.advance(0).send.isEmpty());
    expectOfferedAgain(READ_A);
}

TEST_F(ExchangeMachineLinkTest, LostWhileItWaitsForTheReplyTheRequestIsOfferedAgain)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    runUntilSent(0);
    now = 3000;
    expectOfferedAgain(READ_A);
}

TEST_F(ExchangeMachineLinkTest, LostWhileItDrainsTheRequestIsOfferedAgain)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    runUntilSent(0);
    now = REQUEST_TIME + WAIT;
    machine.received(fromHex("55"), now);
    ASSERT_GT(machine.advance(now).wakeAt, now);
    expectOfferedAgain(READ_A);
}

TEST_F(ExchangeMachineLinkTest, LostInThePauseAfterABroadcastItIsOfferedAgain)
{
    driver.queue.push_back(frameOf(BROADCAST, 0));
    runUntilSent(0);
    now = REQUEST_TIME + TURNAROUND / 2;
    expectOfferedAgain(BROADCAST);
}

TEST_F(ExchangeMachineLinkTest, LostBeforeARetryTheRequestIsStillOfferedWithoutHoldingBack)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    runUntilSent(0);
    bytesCome(REFUSAL, 4000);
    ASSERT_EQ(std::vector<int>{REPLY_RETRY}, results);
    machine.linkLost();
    EXPECT_EQ(4000 + SILENCE, runUntilSent(1000000));
    EXPECT_EQ(READ_A, sent);
}

TEST_F(ExchangeMachineLinkTest, WhatCameBeforeTheLossIsNoPartOfTheReply)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    runUntilSent(0);
    bytesCome(REPLY.left(5), 3000);
    machine.linkLost();
    runUntilSent(1000000);
    bytesCome(REPLY.mid(5), now + 3000);
    EXPECT_TRUE(results.empty());
}

TEST_F(ExchangeMachineLinkTest, TheReplyToTheRequestThatWasOfferedAgainIsTaken)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    runUntilSent(0);
    machine.linkLost();
    runUntilSent(1000000);
    bytesCome(REPLY, now + 4000);
    EXPECT_EQ(std::vector<int>{REPLY_ACCEPTED}, results);
    EXPECT_EQ(std::vector<QByteArray>{REPLY}, driver.replies);
}

TEST_F(ExchangeMachineLinkTest, AThousandLossesSpendNoAttempt)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    for (int i = 0; i < 1000; ++i) {
        ASSERT_GE(runUntilSent(now + ANSWER), 0);
        machine.linkLost();
    }
    EXPECT_TRUE(driver.replies.empty());
    runUntilSent(now + ANSWER);
    bytesCome(REPLY, now + 4000);
    EXPECT_EQ(std::vector<int>{REPLY_ACCEPTED}, results);
}

TEST_F(ExchangeMachineLinkTest, AFreshMachineIsBetweenRequests)
{
    EXPECT_TRUE(machine.isBetweenRequests());
    machine.advance(0);
    EXPECT_TRUE(machine.isBetweenRequests());
}

TEST_F(ExchangeMachineLinkTest, ItIsNotBetweenRequestsBeforeTheReply)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    bytesCome(fromHex("55"), 0);
    machine.advance(0);
    EXPECT_FALSE(machine.isBetweenRequests());
    runUntilSent(SILENCE);
    EXPECT_FALSE(machine.isBetweenRequests());
    bytesCome(REPLY, 6000);
    EXPECT_TRUE(machine.isBetweenRequests());
}

TEST_F(ExchangeMachineLinkTest, ItIsNotBetweenRequestsBeforeARetry)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    runUntilSent(0);
    bytesCome(REFUSAL, 4000);
    EXPECT_FALSE(machine.isBetweenRequests());
}

TEST_F(ExchangeMachineLinkTest, ItIsBetweenRequestsAfterAGiveUp)
{
    driver.failures = RETRY_LIMIT - 1;
    driver.queue.push_back(frameOf(READ_A, 9));
    runUntilSent(0);
    bytesCome(REFUSAL, 4000);
    EXPECT_TRUE(machine.isBetweenRequests());
}

TEST_F(ExchangeMachineLinkTest, ItIsNotBetweenRequestsAfterALossInTheMiddleOfOne)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    runUntilSent(0);
    machine.linkLost();
    EXPECT_FALSE(machine.isBetweenRequests());
}

// An answer to the request that the loss cut short may still come over a wire.

TEST_F(ExchangeMachineLinkTest, OnAWireTheNextRequestOfTheShapeIsHeldBackAfterALoss)
{
    driver.queue = {frameOf(READ_A, 9), frameOf(READ_B, 9)};
    runUntilSent(0);
    machine.linkLost(true);
    EXPECT_GT(extraWaitOfTheNext(), 0);
}

TEST_F(ExchangeMachineLinkTest, AfterALongLossNothingOfBeforeIsReckonedWith)
{
    driver.queue = {frameOf(READ_A, 9), frameOf(READ_B, 9)};
    runUntilSent(0);
    machine.linkLost();
    now = REQUEST_TIME + 2 * WAIT;
    machine.linkOpened(now);
    EXPECT_EQ(0, extraWaitOfTheNext());
}

TEST_F(ExchangeMachineLinkTest, WhereNoAnswerFollowsNothingIsHeldBack)
{
    driver.queue = {frameOf(READ_A, 9), frameOf(READ_B, 9)};
    runUntilSent(0);
    machine.linkLost(false);
    EXPECT_EQ(0, extraWaitOfTheNext());
}

TEST_F(ExchangeMachineLinkTest, ARequestThatWasHeldBackIsStillHeldBackAfterALoss)
{
    driver.failures = RETRY_LIMIT - 1;
    driver.queue = {frameOf(READ_A, 9), frameOf(READ_B, 9)};
    const qint64 sentAt = runUntilSent(0);
    runUntilSent(now + REQUEST_TIME + WAIT + SILENCE);
    machine.linkLost(true);
    EXPECT_EQ(sentAt + REQUEST_TIME + 2 * WAIT, runUntilSent(now + 4 * WAIT));
    EXPECT_EQ(READ_B, sent);
}

TEST_F(ExchangeMachineLinkTest, TheFirstRequestOverAnOpenedLinkWaitsForSilence)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    machine.linkOpened(1000);
    EXPECT_EQ(1000 + SILENCE, runUntilSent(1000 + WAIT));
}

// A peer may have kept answers for whoever connects next.

class ExchangeMachineOpeningTest : public testing::Test
{
protected:
    enum { OPENING = 5000, OPENED = 1000 };

    ExchangeMachineOpeningTest()
    {
        driver.queue = {frameOf(READ_A, 9), frameOf(READ_B, 9)};
        machine.linkOpened(OPENED);
    }

    static ExchangeMachine::Times times()
    {
        ExchangeMachine::Times made;
        made.answer = ANSWER;
        made.opening = OPENING;
        return made;
    }

    /// When the next request goes out.
    qint64 nextSent()
    {
        while (true) {
            const ExchangeMachine::Step step = machine.advance(now);
            if (!step.send.isEmpty()) return now;
            now = step.wakeAt;
        }
    }

    ScriptedDriver driver;
    ExchangeMachine machine{driver, LineTiming::network(), times()};
    qint64 now = OPENED;
};

TEST_F(ExchangeMachineOpeningTest, TheFirstRequestWaitsForItsSilenceAndTheNextOneNot)
{
    EXPECT_EQ(OPENED + OPENING, nextSent());
    now += 100;
    machine.received(REPLY, now);
    EXPECT_EQ(OPENED + OPENING + 100, nextSent());
}

TEST_F(ExchangeMachineOpeningTest, WhatComesFirstIsDroppedAndTheSilenceBeginsAnew)
{
    machine.advance(OPENED);
    now = OPENED + 2000;
    machine.received(REPLY, now);
    EXPECT_EQ(OPENED + 2000 + OPENING, nextSent());
    machine.received(fromHex("55"), now + 100);
    EXPECT_FALSE(machine.takeFinished());
}

TEST_F(ExchangeMachineOpeningTest, WhatWasKeptForARequestOfTheLastLinkIsDroppedToo)
{
    nextSent();
    machine.linkLost();
    machine.linkOpened(now + ANSWER);
    now += ANSWER + 100;
    machine.received(REPLY, now);
    EXPECT_EQ(OPENED + OPENING + ANSWER + 100 + OPENING, nextSent());
    machine.received(fromHex("55"), now + 100);
    EXPECT_FALSE(machine.takeFinished());
}
