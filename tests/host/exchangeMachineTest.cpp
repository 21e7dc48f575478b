#include "exchangeMachineFixture.h"

TEST_F(ExchangeMachineTest, AWholeReplyEndsTheExchangeAtOnce)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    EXPECT_EQ(0, runUntilSent(0));
    EXPECT_EQ(READ_A, sent);
    bytesCome(REPLY, 5000);
    EXPECT_EQ(std::vector<int>{REPLY_ACCEPTED}, results);
    EXPECT_EQ(std::vector<QByteArray>{REPLY}, driver.replies);
}

TEST_F(ExchangeMachineTest, AReplyMayComeInPieces)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    runUntilSent(0);
    for (int i = 0; i < REPLY.size(); ++i)
        bytesCome(REPLY.mid(i, 1), 5000 + i * 260);
    EXPECT_EQ(std::vector<QByteArray>{REPLY}, driver.replies);
}

TEST_F(ExchangeMachineTest, StrayBytesAreKeptFromTheDriver)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    runUntilSent(0);
    bytesCome(fromHex("01FF") + REPLY + fromHex("00"), 5000);
    EXPECT_EQ(std::vector<QByteArray>{REPLY}, driver.replies);
}

TEST_F(ExchangeMachineTest, TheNextRequestKeepsTheSilentInterval)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    driver.queue.push_back(frameOf(READ_B, 9));
    runUntilSent(0);
    bytesCome(REPLY, 5000);
    EXPECT_EQ(5000 + SILENCE, runUntilSent(100000));
    EXPECT_EQ(READ_B, sent);
}

TEST_F(ExchangeMachineTest, StrayBytesInTheSilenceStartItAnew)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    driver.queue.push_back(frameOf(READ_B, 9));
    runUntilSent(0);
    bytesCome(REPLY, 5000);
    EXPECT_EQ(-1, runUntilSent(5000));
    bytesCome(fromHex("55"), 6000);
    EXPECT_EQ(6000 + SILENCE, runUntilSent(100000));
}

TEST_F(ExchangeMachineTest, ARefusalEndsTheWaitAndIsNamed)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    runUntilSent(0);
    bytesCome(REFUSAL, 4000);
    EXPECT_EQ(2, last.exceptionCode);
    EXPECT_EQ(std::vector<int>{REPLY_RETRY}, results);
}

TEST_F(ExchangeMachineTest, ChatterDoesNotExtendTheTimeOut)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    runUntilSent(0);
    // 8 bytes out, then the answer's begin, then its 9 bytes.
    const qint64 deadline = 2084 + ANSWER + 2344;
    for (qint64 at = 3000; at < deadline + 2 * ANSWER; at += 500) {
        bytesCome(fromHex("AA"), at);
        machine.advance(at);
        if (const auto finished = machine.takeFinished()) results.push_back(finished->result);
        if (!results.empty()) break;
    }
    EXPECT_EQ(std::vector<int>{REPLY_RETRY}, results);
    EXPECT_LE(now, deadline + ANSWER + 1000);
    EXPECT_TRUE(driver.replies.front().isEmpty());
}

TEST_F(ExchangeMachineTest, SilenceIsRetriedAndGivenUp)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    for (int i = 0; i < RETRY_LIMIT; ++i) {
        EXPECT_GE(runUntilSent(1000000), 0);
        EXPECT_EQ(READ_A, sent);
    }
    EXPECT_EQ(-1, runUntilSent(1000000));
    EXPECT_EQ((std::vector<int>{REPLY_RETRY, REPLY_RETRY, REPLY_GIVEN_UP}), results);
}

TEST_F(ExchangeMachineTest, AfterAGiveUpARequestOfTheSameShapeWaitsOneMoreTimeOut)
{
    driver.failures = RETRY_LIMIT - 1;
    driver.queue.push_back(frameOf(READ_A, 9));
    driver.queue.push_back(frameOf(READ_B, 9));
    runUntilSent(0);
    const qint64 wait = ANSWER + 2344;
    EXPECT_EQ(2084 + 2 * wait, runUntilSent(1000000));
}

TEST_F(ExchangeMachineTest, AfterAGiveUpARequestOfAnotherShapeGoesOutAtOnce)
{
    driver.failures = RETRY_LIMIT - 1;
    driver.queue.push_back(frameOf(READ_A, 9));
    driver.queue.push_back(frameOf(ECHO, 8));
    runUntilSent(0);
    EXPECT_EQ(2084 + ANSWER + 2344, runUntilSent(1000000));
    EXPECT_EQ(ECHO, sent);
}

TEST_F(ExchangeMachineTest, OneLostReplyHoldsBackOneRequestAndNoneAfterIt)
{
    for (int i = 0; i < 4; ++i)
        driver.queue.push_back(frameOf(i % 2 == 0 ? READ_A : READ_B, 9));
    runUntilSent(0);
    for (int i = 0; i < 2; ++i) {
        runUntilSent(now + 10 * WAIT);
        bytesCome(REPLY, now + 5000);
    }
    for (int i = 0; i < 2; ++i) {
        const qint64 answered = now;
        EXPECT_EQ(answered + SILENCE, runUntilSent(now + 10 * WAIT));
        bytesCome(REPLY, now + 5000);
    }
    EXPECT_EQ(4, int(std::count(results.begin(), results.end(), REPLY_ACCEPTED)));
}

TEST_F(ExchangeMachineTest, ABroadcastWaitsTheTurnaroundAndNoReply)
{
    driver.queue.push_back(frameOf(BROADCAST, 0));
    runUntilSent(0);
    EXPECT_EQ(2084 + TURNAROUND, machine.advance(now).wakeAt);
    EXPECT_EQ(-1, runUntilSent(100000));
    EXPECT_EQ(std::vector<int>{REPLY_ACCEPTED}, results);
    EXPECT_EQ(2084 + TURNAROUND, now);
}

TEST_F(ExchangeMachineTest, AFrameWithNothingToSendIsAnsweredWithSilence)
{
    driver.queue.push_back(frameOf(QByteArray(), 1));
    EXPECT_EQ(-1, runUntilSent(100000));
    EXPECT_EQ((std::vector<int>{REPLY_RETRY, REPLY_RETRY, REPLY_GIVEN_UP}), results);
    EXPECT_EQ(0, now);
}

TEST_F(ExchangeMachineTest, OneNothingToSendIsAskedAgain)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    driver.refusals = 1;
    EXPECT_EQ(0, runUntilSent(0));
    EXPECT_EQ(2, driver.asked);
}

TEST_F(ExchangeMachineTest, TwoNothingsToSendAreIdle)
{
    EXPECT_TRUE(machine.advance(0).idle);
    driver.queue.push_back(frameOf(READ_A, 9));
    EXPECT_FALSE(machine.advance(1).idle);
}
