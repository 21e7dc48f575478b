#ifndef ECHO_FIXTURE_H
#define ECHO_FIXTURE_H

#include "exchangeMachineFixture.h"

// Two-wire adapters return each request ahead of its answer. The answer to a write of one register
// or coil has the same bytes as the write, so the first copy does not prove that the station
// answered.

const QByteArray OTHER_WRITE = writeOf(3002, 1);

/// A write of several registers: the request is longer than its answer.
const QByteArray LONG_WRITE = frameWith(QByteArray::fromHex("01100001000204000A0102"));

/// A copy with a wrong bit.
inline QByteArray damaged(QByteArray copy)
{
    copy[3] = static_cast<char>(byteOf(copy, 3) ^ 4);
    return copy;
}

/// A link that echoes: copies of the requests come in addition to the answers.
class EchoTest : public ExchangeMachineTest
{
protected:
    explicit EchoTest(EchoMode echo) : ExchangeMachineTest(echo) {}

    void copyComes()
    {
        come(sent, REQUEST_TIME);
    }

    /// The answer to the sent frame comes. Call copyComes() before, where the link echoes.
    void answerComes()
    {
        come(answerTo(sent), ANSWERED - REQUEST_TIME);
    }

    void exchangeWithCopies(const QByteArray& request)
    {
        ask(request);
        ASSERT_TRUE(isFence);
        copyComes();
        answerComes();
        ASSERT_EQ(request, nextSent());
        copyComes();
        answerComes();
        ASSERT_EQ(END_ANSWERED, last().end);
    }
};

#endif
