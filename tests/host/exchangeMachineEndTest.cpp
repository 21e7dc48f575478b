#include "exchangeMachineFixture.h"

// What is told of an exchange that is over, and the waits that chatter must not keep from ending.

class ExchangeMachineEndTest : public ExchangeMachineTest
{
};

TEST_F(ExchangeMachineEndTest, AnAnswersTimeCountsFromTheRequestsEnd)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    runUntilSent(0);
    bytesCome(REPLY, 5000);
    EXPECT_EQ(5000 - REQUEST_TIME, last.replyTime);
    EXPECT_TRUE(last.heard);
    EXPECT_EQ(0, last.exceptionCode);
}

TEST_F(ExchangeMachineEndTest, AnAnswerInPiecesIsThereWithItsLastByte)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    runUntilSent(0);
    bytesCome(REPLY.left(4), 4000);
    bytesCome(REPLY.mid(4), 5500);
    EXPECT_EQ(5500 - REQUEST_TIME, last.replyTime);
}

TEST_F(ExchangeMachineEndTest, ARefusalIsAnAnswerToo)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    runUntilSent(0);
    bytesCome(REFUSAL, 4000);
    EXPECT_EQ(4000 - REQUEST_TIME, last.replyTime);
    EXPECT_TRUE(last.heard);
    EXPECT_EQ(2, last.exceptionCode);
}

TEST_F(ExchangeMachineEndTest, OfSilenceNothingIsHeard)
{
    driver.failures = RETRY_LIMIT - 1;
    driver.queue.push_back(frameOf(READ_A, 9));
    runUntilSent(0);
    runUntilSent(1000000);
    EXPECT_EQ(std::vector<int>{REPLY_GIVEN_UP}, results);
    EXPECT_FALSE(last.heard);
    EXPECT_EQ(-1, last.replyTime);
    EXPECT_EQ(0, last.exceptionCode);
}

TEST_F(ExchangeMachineEndTest, NoiseIsHeardButIsNoAnswer)
{
    driver.failures = RETRY_LIMIT - 1;
    driver.queue.push_back(frameOf(READ_A, 9));
    runUntilSent(0);
    bytesCome(REPLY.left(8), 5000);
    runUntilSent(1000000);
    EXPECT_EQ(std::vector<int>{REPLY_GIVEN_UP}, results);
    EXPECT_TRUE(last.heard);
    EXPECT_EQ(-1, last.replyTime);
}

TEST_F(ExchangeMachineEndTest, NoiseBeforeARequestIsNotHeardOfTheNextOne)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    runUntilSent(0);
    bytesCome(REPLY + fromHex("55"), 5000);
    driver.failures = RETRY_LIMIT - 1;
    driver.queue.push_back(frameOf(READ_B, 9));
    runUntilSent(1000000);
    runUntilSent(1000000);
    EXPECT_EQ((std::vector<int>{REPLY_ACCEPTED, REPLY_GIVEN_UP}), results);
    EXPECT_FALSE(last.heard);
}

TEST_F(ExchangeMachineEndTest, ABroadcastHasNoAnswer)
{
    driver.queue.push_back(frameOf(BROADCAST, 0));
    runUntilSent(0);
    runUntilSent(1000000);
    EXPECT_EQ(std::vector<int>{REPLY_ACCEPTED}, results);
    EXPECT_FALSE(last.heard);
    EXPECT_EQ(-1, last.replyTime);
}

TEST_F(ExchangeMachineEndTest, AnEndIsToldOfOnce)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    runUntilSent(0);
    machine.received(REPLY, 5000);
    EXPECT_TRUE(machine.takeFinished());
    EXPECT_FALSE(machine.takeFinished());
}

TEST_F(ExchangeMachineEndTest, AnEndNamesItsFrame)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    driver.queue.front().var.addr = 3000;
    runUntilSent(0);
    bytesCome(REPLY, 5000);
    EXPECT_EQ(3000, last.frame.var.addr);
}

TEST_F(ExchangeMachineEndTest, ChatterWithoutEndAheadOfARequestCountsAsNoAnswer)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    bytesCome(fromHex("AA"), 0);
    machine.advance(0);
    chatterUntilFinished(500);
    EXPECT_EQ(std::vector<int>{REPLY_RETRY}, results);
    EXPECT_TRUE(sent.isEmpty());
    EXPECT_GE(now, ANSWER);
    EXPECT_LE(now, ANSWER + SILENCE + 500);
    EXPECT_TRUE(last.heard);
    EXPECT_EQ(-1, last.replyTime);
}

TEST_F(ExchangeMachineEndTest, ChatterWithoutEndIsGivenUpAfterAllAttempts)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    bytesCome(fromHex("AA"), 0);
    machine.advance(0);
    for (int i = 0; i < RETRY_LIMIT; ++i)
        chatterUntilFinished(now + 500);
    EXPECT_EQ((std::vector<int>{REPLY_RETRY, REPLY_RETRY, REPLY_GIVEN_UP}), results);
    EXPECT_LE(now, RETRY_LIMIT * (ANSWER + SILENCE + 1000));
}

TEST_F(ExchangeMachineEndTest, WhenTheChatterEndsTheRequestGoesOut)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    bytesCome(fromHex("AA"), 0);
    machine.advance(0);
    for (qint64 at = 500; at <= 5000; at += 500)
        bytesCome(fromHex("AA"), at);
    EXPECT_EQ(5000 + SILENCE, runUntilSent(1000000));
    EXPECT_TRUE(results.empty());
}

TEST_F(ExchangeMachineEndTest, AReplyBehindAHundredThousandBytesOfChatterIsTaken)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    runUntilSent(0);
    for (int i = 0; i < 1000; ++i)
        bytesCome(QByteArray(100, '\xAA'), 3000 + i);
    bytesCome(REPLY, 5000);
    EXPECT_EQ(std::vector<QByteArray>{REPLY}, driver.replies);
}

TEST_F(ExchangeMachineEndTest, AReplyBehindChatterInOnePieceIsTaken)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    runUntilSent(0);
    bytesCome(QByteArray(100000, '\xAA') + REPLY, 5000);
    EXPECT_EQ(std::vector<QByteArray>{REPLY}, driver.replies);
}

TEST_F(ExchangeMachineEndTest, TheLongestReplyBehindChatterIsTakenByteByByte)
{
    // 125 registers of 0, by pymodbus' computeCRC.
    const QByteArray reply = fromHex("0103FA") + QByteArray(250, '\0') + fromHex("08E8");
    driver.queue.push_back(frameOf(fromHex("01030BB8007D07EA"), 255));
    runUntilSent(0);
    bytesCome(QByteArray(5000, '\xAA'), 3000);
    for (int i = 0; i < reply.size(); ++i)
        bytesCome(reply.mid(i, 1), 3001 + i);
    EXPECT_EQ(std::vector<QByteArray>{reply}, driver.replies);
}

TEST_F(ExchangeMachineEndTest, AReplyAtItsDeadlineComesTooLate)
{
    driver.failures = RETRY_LIMIT - 1;
    driver.queue.push_back(frameOf(READ_A, 9));
    runUntilSent(0);
    bytesCome(REPLY, REQUEST_TIME + WAIT);
    EXPECT_TRUE(results.empty());
    runUntilSent(1000000);
    EXPECT_EQ(std::vector<int>{REPLY_GIVEN_UP}, results);
}

TEST_F(ExchangeMachineEndTest, AReplyJustBeforeItsDeadlineIsTaken)
{
    driver.queue.push_back(frameOf(READ_A, 9));
    runUntilSent(0);
    bytesCome(REPLY, REQUEST_TIME + WAIT - 1);
    EXPECT_EQ(std::vector<int>{REPLY_ACCEPTED}, results);
}
