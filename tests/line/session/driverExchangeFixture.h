#ifndef DRIVER_EXCHANGE_FIXTURE_H
#define DRIVER_EXCHANGE_FIXTURE_H

#include "builtDriver.h"
#include "modelLine.h"
#include "session/driverExchange.h"
#include "stepBound.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

/// Sends the real driver's requests through the exchange machine to a model PLC, on a virtual
/// clock. The link is a network without echo; bytes take no time on it. A time-out is 40 ms.
class DriverExchangeTest : public testing::Test
{
protected:
    enum {
        NUMBER = 3010,
        MS = 1000,
        SECOND = 1000000,
        TIME_OUT = 40 * MS,
        ATTEMPTS = 3,
        STATION = 1,
        OTHER_STATION = 2,
        STILL_WORKING_CODE = 5,
        BUSY_CODE = 6,
        WRITE = 6
    };

    struct SentFrame
    {
        qint64 time;
        QByteArray bytes;
        bool isFence;
    };

    DriverExchangeTest()
        : started(driver(), ATTEMPTS),
          line(plc, LineTiming::network()),
          exchange(started, LineTiming::network(), settings(),
                   [this](const FRAME_PRO& frame) { return silent.count(frame.var.station) != 0; })
    {
        plc.station(STATION);
        plc.station(OTHER_STATION);
        exchange.linkOpened(now);
    }

    static ExchangeMachine::Settings settings()
    {
        ExchangeMachine::Settings made;
        made.answer = TIME_OUT;
        made.echo = ECHO_ABSENT;
        return made;
    }

    void write(int station, int number, int value)
    {
        QByteArray bytes(2, '\0');
        bytes[0] = static_cast<char>(value);
        started.queueWrite(station, QLatin1String("MW"), number, bytes);
    }

    /// Does the next step. Without a step before `end` it only moves the clock to `end`.
    /// @return false when the clock is at `end`
    bool stepUntil(qint64 end)
    {
        if (!bound.allowsStepAt(now)) {
            now = end;
            return false;
        }
        const ExchangeMachine::Step step = exchange.advance(now);
        for (const FINISHED_EXCHANGE& one : exchange.takeFinished())
            finished.push_back(one);
        for (const HEARD_EXCHANGE& one : exchange.takeHeard())
            heard.push_back(one);
        if (!step.send.isEmpty()) {
            sent.push_back({now, step.send, step.isFence});
            line.send(step.send, now);
            return true;
        }
        const qint64 next = step.isIdle ? end : std::min(step.wakeAt, end);
        if (!line.isQuiet() && line.nextAt() <= next) {
            now = std::max(now, line.nextAt());
            exchange.received(line.takeNext(), now);
            return true;
        }
        now = std::max(now, next);
        return next < end;
    }

    void run(qint64 duration)
    {
        const qint64 end = now + duration;
        while (stepUntil(end)) {
        }
    }

    /// The times at which requests with the function were sent.
    std::vector<qint64> timesOf(int function) const
    {
        std::vector<qint64> times;
        for (const SentFrame& frame : sent) {
            if (!frame.isFence && frame.bytes.at(1) == function) times.push_back(frame.time);
        }
        return times;
    }

    int fencesTo(int station) const
    {
        return int(std::count_if(sent.begin(), sent.end(), [station](const SentFrame& frame) {
            return frame.isFence && frame.bytes.at(0) == station;
        }));
    }

    /// Makes the PLC refuse the write of a word `times` times; negative: always.
    void refuses(int code, int times = -1)
    {
        plc.station(STATION).refusals[NUMBER] = code;
        if (times >= 0) plc.station(STATION).refusalsDue[NUMBER] = times;
    }

    PlcModel plc;
    StartedDriver started;
    ModelLine line;
    std::set<int> silent;
    DriverExchange exchange;
    qint64 now = 0;
    StepBound bound;
    std::vector<SentFrame> sent;
    std::vector<FINISHED_EXCHANGE> finished;
    std::vector<HEARD_EXCHANGE> heard;
};

#endif
