#include "exchange/exchangeMachine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <random>
#include <vector>

// Stray bytes around a good reply: whatever they are and however the bytes are cut, the driver must
// get the reply alone, in the same exchange. Frames of the MODBUS Application Protocol V1.1b3 (6.3,
// 6.6); checksums by pymodbus' computeCRC.

namespace {

enum { BYTE_VALUES = 256, SAMPLES = 10000, MOST_TRAILING = 3, ANSWER = 10000 };

struct ReplyTo
{
    QByteArray request;
    QByteArray reply;
};

const std::vector<ReplyTo> EXCHANGES = {
    {QByteArray::fromHex("01030BB80002460A"), QByteArray::fromHex("010304123456788107")},
    {QByteArray::fromHex("01060BB904D2D896"), QByteArray::fromHex("01060BB904D2D896")}};

/// Always has the same request to send, and counts what it gets.
class OneRequestDriver : public DriverCalls
{
public:
    explicit OneRequestDriver(const ReplyTo& exchange) : m_expected(exchange.reply)
    {
        std::copy(exchange.request.begin(), exchange.request.end(), m_frame.sendBuf);
        m_frame.sendLen = int(exchange.request.size());
        m_frame.recvLen = int(exchange.reply.size());
    }

    int getSendFrame(FRAME_PRO* frame) override
    {
        *frame = m_frame;
        return 1;
    }

    int dealRcvFrame(QByteArray& reply, QString&) override
    {
        ++(reply == m_expected ? right : reply.isEmpty() ? missed : wrong);
        return REPLY_ACCEPTED;
    }

    int right = 0;
    int wrong = 0;
    int missed = 0;

private:
    FRAME_PRO m_frame;
    const QByteArray m_expected;
};

/// Runs one exchange after the other over a line with stray bytes.
class StrayLine
{
public:
    explicit StrayLine(const ReplyTo& exchange)
        : driver(exchange),
          m_reply(exchange.reply),
          m_machine(driver, LineTiming(LineSettings()), times())
    {
    }

    /// One exchange each for bytes that come whole, halved, and one by one.
    void exchangeWith(const QByteArray& ahead, const QByteArray& behind)
    {
        const QByteArray all = ahead + m_reply + behind;
        const int length = int(all.size());
        for (const int piece : {length, (length + 1) / 2, 1}) {
            sendRequest();
            m_now += ANSWER / 2;
            for (int at = 0; at < length; at += piece)
                m_machine.received(all.mid(at, piece), ++m_now);
            ++cases;
        }
    }

    OneRequestDriver driver;
    int cases = 0;

private:
    static ExchangeMachine::Times times()
    {
        ExchangeMachine::Times made;
        made.answer = ANSWER;
        return made;
    }

    void sendRequest()
    {
        while (true) {
            const ExchangeMachine::Step step = m_machine.advance(m_now);
            if (!step.send.isEmpty()) return;
            m_now = std::max(m_now, step.wakeAt);
        }
    }

    const QByteArray m_reply;
    ExchangeMachine m_machine;
    qint64 m_now = 0;
};

QByteArray oneByte(int value)
{
    return QByteArray(1, static_cast<char>(value));
}

QByteArray noise(std::mt19937& random, int length)
{
    QByteArray bytes(length, '\0');
    for (int i = 0; i < length; ++i)
        bytes[i] = static_cast<char>(random() & 0xFFu);
    return bytes;
}

void runAll(StrayLine& line)
{
    std::mt19937 random(20);
    for (int first = 0; first < BYTE_VALUES; ++first) {
        for (int trailing = 0; trailing <= MOST_TRAILING; ++trailing)
            line.exchangeWith(oneByte(first), noise(random, trailing));
        line.exchangeWith(QByteArray(), oneByte(first));
        for (int second = 0; second < BYTE_VALUES; ++second)
            line.exchangeWith(oneByte(first) + oneByte(second), noise(random, second % 4));
    }
    for (int i = 0; i < SAMPLES; ++i)
        line.exchangeWith(noise(random, 3), noise(random, i % (MOST_TRAILING + 1)));
}

} // namespace

TEST(StrayBytes, NoneKeepAReplyFromTheDriverOrReachIt)
{
    int cases = 0;
    int right = 0;
    int wrong = 0;
    for (const ReplyTo& exchange : EXCHANGES) {
        StrayLine line(exchange);
        runAll(line);
        cases += line.cases;
        right += line.driver.right;
        wrong += line.driver.wrong;
        EXPECT_EQ(0, line.driver.missed);
    }
    std::printf("stray bytes: %d cases, %d right, %d wrong\n", cases, right, wrong);
    EXPECT_EQ(2 * 3 * (256 * 5 + 65536 + 10000), cases);
    EXPECT_EQ(cases, right);
    EXPECT_EQ(0, wrong);
}
