#ifndef EXCHANGE_MACHINE_FIXTURE_H
#define EXCHANGE_MACHINE_FIXTURE_H

#include "exchange/exchangeMachine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <vector>

// Times are microseconds of a clock that only the tests move. At 38400 baud a byte takes 260.4, the
// silent interval is 1750; the station begins its answer within 10000.

enum { RETRY_LIMIT = 3, ANSWER = 10000, TURNAROUND = 4000, SILENCE = 1750 };

enum {
    REQUEST_TIME = 2084, ///< 8 bytes
    WAIT = ANSWER + 2344 ///< for an answer of 9 bytes
};

inline QByteArray fromHex(const char* text)
{
    return QByteArray::fromHex(text);
}

// MODBUS Application Protocol V1.1b3, 6.3, 6.6 and 7; checksums by pymodbus' computeCRC.
const QByteArray READ_A = fromHex("01030BB80002460A");
const QByteArray READ_B = fromHex("01030BBA0002E7CA");
const QByteArray REPLY = fromHex("010304123456788107");
const QByteArray REFUSAL = fromHex("018302C0F1");
const QByteArray ECHO = fromHex("01060BB904D2D896");
const QByteArray BROADCAST = fromHex("00060BB904D2D947");

inline FRAME_PRO frameOf(const QByteArray& request, int replyLength)
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
            noteFinished();
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
        noteFinished();
    }

    /// Bytes that never leave a silent interval, until an exchange is over.
    void chatterUntilFinished(qint64 from)
    {
        const size_t before = results.size();
        for (qint64 at = from; results.size() == before && at < from + 100 * ANSWER; at += 500) {
            bytesCome(fromHex("AA"), at);
            sent = machine.advance(at).send;
            noteFinished();
        }
    }

    void noteFinished()
    {
        const auto finished = machine.takeFinished();
        if (!finished) return;
        results.push_back(finished->result);
        last = *finished;
    }

    ScriptedDriver driver;
    ExchangeMachine machine;
    qint64 now = 0;
    QByteArray sent;
    std::vector<int> results;
    FINISHED_EXCHANGE last;
};

#endif
