#ifndef ECHO_FIXTURE_H
#define ECHO_FIXTURE_H

#include "exchangeMachineFixture.h"

// Two-wire adapters return what is sent ahead of the answer. The answer to a write of one register
// or coil has the same bytes, so that the first copy proves nothing there.

const QByteArray OTHER_WRITE = writeOf(3002, 1);

/// Of several registers: it is longer than its answer.
const QByteArray LONG_WRITE = frameWith(QByteArray::fromHex("01100001000204000A0102"));

/// A copy with a wrong bit.
inline QByteArray damaged(QByteArray copy)
{
    copy[3] = static_cast<char>(byteOf(copy, 3) ^ 4);
    return copy;
}

/// What an echoing link returns, in addition to what the stations answer.
class EchoTest : public ExchangeMachineTest
{
protected:
    explicit EchoTest(EchoMode echo) : ExchangeMachineTest(echo) {}

    void copyComes()
    {
        come(sent, REQUEST_TIME);
    }

    /// Behind the copy, where there is one.
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
