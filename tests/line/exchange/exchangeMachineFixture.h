#ifndef EXCHANGE_MACHINE_FIXTURE_H
#define EXCHANGE_MACHINE_FIXTURE_H

#include "exchange/exchangeMachine.h"
#include "pollingHost.h"

#include <gtest/gtest.h>

#include <vector>

// Times are microseconds of a clock that only the tests move. At 38400 baud a byte takes 260.4, the
// silent interval is 1750; a station begins its answer within 10000.

enum { ANSWER = 10000, TURNAROUND = 4000, SILENCE = 1750 };

enum {
    REQUEST_TIME = 2084,  ///< 8 bytes
    WAIT = ANSWER + 2344, ///< for an answer of 9 bytes
    ANSWERED = 5000,      ///< from the begin of a request to its answer
    LONG = 1000000
};

// MODBUS Application Protocol V1.1b3, 6.3, 6.6 and 7; checksums by pymodbus' computeCRC.
const QByteArray READ_A = QByteArray::fromHex("01030BB80002460A");
const QByteArray READ_B = QByteArray::fromHex("01030BBA0002E7CA");
const QByteArray REPLY = QByteArray::fromHex("010304123456788107"); ///< to either
const QByteArray REFUSAL = QByteArray::fromHex("018302C0F1");
const QByteArray WRITE = QByteArray::fromHex("01060BB904D2D896"); ///< and its answer
const QByteArray BROADCAST = QByteArray::fromHex("00060BB904D2D947");

const QByteArray READ_LONG = readOf(3200, 60); ///< of a length that no other request has, no fence

QByteArray fromHex(const char* text);

/// What an orderly station answers: register n holds n. The checksum is worked out bit by bit.
QByteArray answerTo(const QByteArray& request);

/// Bytes that are no frame and no begin of one.
QByteArray noise(int bytes = 1);

class ExchangeMachineTest : public testing::Test
{
protected:
    explicit ExchangeMachineTest(EchoMode echo = ECHO_UNKNOWN,
                                 const LineTiming& timing = LineTiming(LineSettings()));

    static ExchangeMachine::Settings settingsOf(EchoMode echo);

    /// Lets the machine do what is due until it sends something.
    /// @return what it sends; empty: nothing within that time
    QByteArray nextSent(qint64 within = LONG);

    /// Nothing is answered any more: the request and the fences ahead of it run out of time.
    /// @return how many more fences were sent
    int waitInVain();

    /// What is awaited does not come: a fence goes out, at this attempt or the next one.
    QByteArray nextFence();

    void come(const QByteArray& bytes, qint64 after = ANSWERED);

    /// What was sent last is answered.
    void answer(qint64 after = ANSWERED)
    {
        come(answerTo(sent), after);
    }

    /// The fences ahead of a request, with nothing answered, at one attempt.
    std::vector<QByteArray> fencesInVain(const QByteArray& request);

    /// @return what is sent first: the request or a fence
    QByteArray ask(const QByteArray& request);
    QByteArray askAgain(const QByteArray& request);

    /// The fences ahead of the request are answered.
    /// @return what is sent behind them
    QByteArray behindFences();

    /// The request is answered at once, and the fences ahead of it.
    void exchange(const QByteArray& request);

    /// A fence is answered, so that nothing is outstanding, and then a read of 70 registers.
    void bringIntoStep(int station = 1);

    /// How the caller's requests ended.
    std::vector<ExchangeEnd> ends() const;
    std::vector<ExchangeEnd> fenceEnds() const;

    /// Bytes that never leave a silent interval, until an exchange is over.
    void chatterUntilEnded(qint64 from);

    void takeEnded();

    /// What ended last; of no station when nothing did.
    EndedExchange last() const;

    ExchangeMachine machine;
    QByteArray asked; ///< the request that was started last
    qint64 now = 0;
    QByteArray sent;      ///< last
    bool isFence = false; ///< what was sent last
    qint64 sentAt = 0;    ///< begin of what was sent last
    std::vector<EndedExchange> ended;
};

/// A machine whose station 1 is in step.
class InStepTest : public ExchangeMachineTest
{
protected:
    explicit InStepTest(EchoMode echo = ECHO_UNKNOWN);

    /// A fence goes ahead of what is asked next, and is enough.
    void expectOneFence();

    /// What is asked next goes out at once.
    void expectNoFence();
};

using Ends = std::vector<ExchangeEnd>;

#endif
