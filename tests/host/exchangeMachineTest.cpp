#include "exchange/exchangeMachine.h"

#include <gtest/gtest.h>

#include <deque>
#include <map>
#include <random>

// Times are microseconds of a clock that only the tests move. At 38400 baud a byte takes 260.4, the
// silent interval is 1750; the station begins its answer within 10000.

namespace {

enum { RETRY_LIMIT = 3, ANSWER = 10000, TURNAROUND = 4000, SILENCE = 1750 };

QByteArray fromHex(const char* text)
{
    return QByteArray::fromHex(text);
}

// MODBUS Application Protocol V1.1b3, 6.3 and 6.6; checksums by pymodbus' computeCRC.
const QByteArray READ_A = fromHex("01030BB80002460A");
const QByteArray READ_B = fromHex("01030BBA0002E7CA");
const QByteArray REPLY = fromHex("010304123456788107");
const QByteArray REFUSAL = fromHex("018302C0F1");
const QByteArray ECHO = fromHex("01060BB904D2D896");

FRAME_PRO frameOf(const QByteArray& request, int replyLength)
{
    FRAME_PRO frame;
    std::copy(request.begin(), request.end(), frame.sendBuf);
    frame.sendLen = int(request.size());
    frame.recvLen = replyLength;
    return frame;
}

/// Hands out queued frames and retries as the driver does, and notes what it is given.
class ScriptedDriver : public DriverCalls
{
public:
    int getSendFrame(FRAME_PRO* frame) override
    {
        ++asked;
        if (queue.empty() || refusals-- > 0) return 0;
        *frame = queue.front();
        return 1;
    }

    int dealRcvFrame(QByteArray& reply, QString&) override
    {
        replies.push_back(reply);
        if (reply.size() == queue.front().recvLen) {
            failures = 0;
            queue.pop_front();
            return REPLY_ACCEPTED;
        }
        if (++failures < RETRY_LIMIT) return REPLY_RETRY;
        failures = 0;
        queue.pop_front();
        return REPLY_GIVEN_UP;
    }

    std::deque<FRAME_PRO> queue;
    std::vector<QByteArray> replies;
    int failures = 0;
    int refusals = 0;
    int asked = 0;
};

} // namespace

class ExchangeMachineTest : public testing::Test
{
protected:
    ExchangeMachineTest() : machine(driver, LineTiming(LineSettings()), times()) {}

    static ExchangeMachine::Times times()
    {
        ExchangeMachine::Times made;
        made.answer = ANSWER;
        made.turnaround = TURNAROUND;
        return made;
    }

    /// Lets the machine do what is due until it sends or `end` has come.
    /// @return when it sent, or -1
    qint64 runUntilSent(qint64 end)
    {
        while (now <= end) {
            const ExchangeMachine::Step step = machine.advance(now);
            if (const auto finished = machine.takeFinished()) results.push_back(finished->result);
            if (!step.send.isEmpty()) {
                sent = step.send;
                return now;
            }
            if (step.idle) return -1;
            now = std::max(now, step.wakeAt);
        }
        return -1;
    }

    void bytesCome(const QByteArray& bytes, qint64 at)
    {
        now = at;
        machine.received(bytes, now);
        if (const auto finished = machine.takeFinished()) {
            results.push_back(finished->result);
            exceptionCode = finished->exceptionCode;
        }
    }

    ScriptedDriver driver;
    ExchangeMachine machine;
    qint64 now = 0;
    QByteArray sent;
    std::vector<int> results;
    int exceptionCode = 0;
};

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
    EXPECT_EQ(2, exceptionCode);
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

TEST_F(ExchangeMachineTest, ABroadcastWaitsTheTurnaroundAndNoReply)
{
    driver.queue.push_back(frameOf(fromHex("00060BB904D2D947"), 0));
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

namespace {

QByteArray closed(QByteArray frame)
{
    unsigned remainder = 0xFFFF;
    for (int i = 0; i < frame.size(); ++i) {
        remainder ^= static_cast<unsigned char>(frame.at(i));
        for (int bit = 0; bit < 8; ++bit)
            remainder = (remainder & 1u) ? (remainder >> 1) ^ 0xA001u : remainder >> 1;
    }
    frame.append(static_cast<char>(remainder & 0xFFu));
    frame.append(static_cast<char>(remainder >> 8));
    return frame;
}

/// Polls registers 0 to 9 one by one, all requests of one shape; register n holds n.
class PollingDriver : public DriverCalls
{
public:
    int getSendFrame(FRAME_PRO* frame) override
    {
        const char body[] = {1, 3, 0, static_cast<char>(wanted), 0, 1};
        *frame = frameOf(closed(QByteArray(body, sizeof body)), 7);
        return 1;
    }

    int dealRcvFrame(QByteArray& reply, QString&) override
    {
        const bool good = reply.size() == 7;
        if (good && reply.at(4) != wanted) ++wrong;
        if (good) ++accepted;
        if (!good && ++failures < RETRY_LIMIT) return REPLY_RETRY;
        failures = 0;
        wanted = (wanted + 1) % 10;
        return good ? REPLY_ACCEPTED : REPLY_GIVEN_UP;
    }

    int wanted = 0;
    int failures = 0;
    int wrong = 0;
    int accepted = 0;
};

} // namespace

TEST(ExchangeMachineLateReplies, NoneIsTakenForTheNextRequests)
{
    const int exchanges = 1000000;
    ExchangeMachine::Times times;
    times.answer = ANSWER;
    const LineTiming timing((LineSettings()));
    const qint64 timeout = ANSWER + timing.frame(7);
    PollingDriver driver;
    ExchangeMachine machine(driver, timing, times);
    std::mt19937 random(4);
    std::multimap<qint64, QByteArray> onTheWay;
    qint64 now = 0;
    qint64 lastAnswer = 0;
    for (int done = 0; done < exchanges;) {
        const ExchangeMachine::Step step = machine.advance(now);
        if (machine.takeFinished()) ++done;
        if (!step.send.isEmpty() && random() % 20 != 0) {
            const bool late = random() % 4 == 0;
            const qint64 most = late ? timeout * 19 / 10 : timeout / 2;
            const qint64 delay = 1000 + qint64(random()) % (most - 1000);
            const char body[] = {1, 3, 2, 0, step.send.at(3)};
            // A station answers in the order of the requests.
            lastAnswer = std::max(lastAnswer + 1, now + timing.frame(8) + delay);
            onTheWay.emplace(lastAnswer, closed(QByteArray(body, sizeof body)));
        }
        if (!onTheWay.empty() && onTheWay.begin()->first <= step.wakeAt) {
            now = std::max(now, onTheWay.begin()->first);
            machine.received(onTheWay.begin()->second, now);
            onTheWay.erase(onTheWay.begin());
            if (machine.takeFinished()) ++done;
        } else {
            now = step.wakeAt;
        }
    }
    EXPECT_EQ(0, driver.wrong);
    EXPECT_GT(driver.accepted, exchanges / 2);
}
