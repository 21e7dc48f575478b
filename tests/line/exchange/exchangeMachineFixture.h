#ifndef EXCHANGE_MACHINE_FIXTURE_H
#define EXCHANGE_MACHINE_FIXTURE_H

#include "exchange/exchangeMachine.h"
#include "pollingHost.h"

#include <gtest/gtest.h>

#include <vector>

// Times are microseconds of a clock that only the tests move. At 38400 baud a byte takes 260.4 and
// the silent interval is 1750. A station begins its answer within 10000.

enum { ANSWER = 10000, TURNAROUND = 4000, SILENCE = 1750 };

enum {
    REQUEST_TIME = 2084,  ///< a frame of 8 bytes
    WAIT = ANSWER + 2344, ///< the time-out of an answer of 9 bytes
    ANSWERED = 5000,      ///< from the start of a request to its answer
    LONG = 1000000
};

// MODBUS Application Protocol V1.1b3, 6.3, 6.6 and 7; checksums by pymodbus' computeCRC.
const QByteArray READ_A = QByteArray::fromHex("01030BB80002460A");
const QByteArray READ_B = QByteArray::fromHex("01030BBA0002E7CA");
const QByteArray REPLY = QByteArray::fromHex("010304123456788107"); ///< to READ_A and READ_B
const QByteArray REFUSAL = QByteArray::fromHex("018302C0F1");
const QByteArray WRITE = QByteArray::fromHex("01060BB904D2D896"); ///< and its answer
const QByteArray BROADCAST = QByteArray::fromHex("00060BB904D2D947");

const QByteArray READ_LONG = readOf(3200, 60); ///< its length differs from all other reads' lengths

QByteArray fromHex(const char* text);

/// The answer of a station whose register n holds n. The checksum is worked out bit by bit.
QByteArray answerTo(const QByteArray& request);

/// Bytes that are no frame and no start of a frame.
QByteArray noise(int bytes = 1);

class ExchangeMachineTest : public testing::Test
{
protected:
    explicit ExchangeMachineTest(EchoMode echo = ECHO_UNKNOWN,
                                 const LineTiming& timing = LineTiming(LineSettings()));

    static ExchangeMachine::Settings settingsOf(EchoMode echo);

    /// Advances the clock until the machine sends a frame.
    /// @return the frame; empty: the machine sent none within the time
    QByteArray nextSent(qint64 within = LONG);

    /// The station answers no longer: the request and the fences ahead of it time out.
    /// @return number of fences that were sent meanwhile
    int waitInVain();

    /// The awaited answer does not come. Asks again if the attempt ends by that.
    /// @return the next fence
    QByteArray nextFence();

    void come(const QByteArray& bytes, qint64 after = ANSWERED);

    /// The frame that was sent last is answered.
    void answer(qint64 after = ANSWERED)
    {
        come(answerTo(sent), after);
    }

    /// The fences of one attempt of a request that the station does not answer.
    std::vector<QByteArray> fencesInVain(const QByteArray& request);

    /// Starts a request.
    /// @return the first frame that the machine sends: the request or a fence
    QByteArray ask(const QByteArray& request);

    /// Starts a repeat of the request, like ask().
    QByteArray askAgain(const QByteArray& request);

    /// Answers the fences ahead of the request.
    /// @return the frame that the machine sends behind them
    QByteArray behindFences();

    /// Starts a request, and answers it and the fences ahead of it.
    void exchange(const QByteArray& request);

    /// Answers a fence, so that no request is outstanding, and then a read of 70 registers.
    void bringIntoStep(int station = 1);

    /// The ends of the caller's requests, without fences.
    std::vector<ExchangeEnd> ends() const;
    std::vector<ExchangeEnd> fenceEnds() const;

    /// Bytes without a silent interval between them come until an exchange has ended.
    void chatterUntilEnded(qint64 from);

    void takeEnded();

    /// The last entry of `ended`; from an empty list an entry with station -1.
    EndedExchange last() const;

    ExchangeMachine machine;
    QByteArray asked; ///< the request that was started last
    qint64 now = 0;
    QByteArray sent;      ///< the frame that was sent last
    bool isFence = false; ///< `sent` is a fence
    qint64 sentAt = 0;    ///< time at which `sent` began
    std::vector<EndedExchange> ended;
};

/// A machine whose station 1 is in step.
class InStepTest : public ExchangeMachineTest
{
protected:
    explicit InStepTest(EchoMode echo = ECHO_UNKNOWN);

    /// Exactly one fence goes ahead of the next request.
    void expectOneFence();

    /// The next request goes out at once.
    void expectNoFence();
};

using Ends = std::vector<ExchangeEnd>;

#endif
