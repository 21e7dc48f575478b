#ifndef POLLING_DRIVER_H
#define POLLING_DRIVER_H

#include "exchange/exchangeMachine.h"

#include <functional>
#include <map>
#include <vector>

/// Words of station 1 that are read with one request; word n holds n.
struct PolledBlock
{
    int first;
    int words;
};

/// Polls blocks in turn and looks at every answer that it is given.
class PollingDriver : public DriverCalls
{
public:
    PollingDriver(const std::vector<PolledBlock>& blocks, int attempts)
        : m_blocks(blocks), m_attempts(attempts)
    {
    }

    int getSendFrame(FRAME_PRO* frame) override;
    int dealRcvFrame(QByteArray& reply, QString& errorText) override;

    int wrong = 0; ///< answers with another block's words
    int accepted = 0;
    int givenUp = 0;

private:
    const PolledBlock& block() const
    {
        return m_blocks[m_next];
    }

    const std::vector<PolledBlock> m_blocks;
    const int m_attempts;
    size_t m_next = 0;
    int m_failures = 0;
};

/// What the station answers to a read; blocks from `firstRefused` on it refuses.
QByteArray answerTo(const QByteArray& request, int firstRefused = 65536);

/// A machine, what it polls, and a clock that jumps from one event to the next.
class PollingWorld
{
public:
    using Answer = std::function<void(const QByteArray& request, qint64 wait)>;

    PollingWorld(PollingDriver& driver, const LineTiming& timing,
                 const ExchangeMachine::Times& times);

    /// Until so many exchanges are over.
    /// @param answer  is told of every request and how long it is waited for, and lets come() what
    ///                the link makes of it
    void run(int exchanges, const Answer& answer);

    /// Bytes come at a time from now on; those of the same time in the order of the calls.
    void come(qint64 at, const QByteArray& bytes)
    {
        m_onTheWay.emplace(at, bytes);
    }

    /// The link is lost and back. What is on its way still comes.
    void reconnect(qint64 downTime);

    qint64 now = 0;
    int sent = 0; ///< requests
    std::function<void(const FINISHED_EXCHANGE&)> onFinished;

private:
    bool takeFinished();

    ExchangeMachine m_machine;
    std::multimap<qint64, QByteArray> m_onTheWay;
};

#endif
