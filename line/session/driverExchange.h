#ifndef DRIVER_EXCHANGE_H
#define DRIVER_EXCHANGE_H

#include "exchange/exchangeMachine.h"
#include "session/growingPause.h"
#include "session/startedDriver.h"

#include <functional>
#include <vector>

/// One attempt of a request of the driver that is over.
struct FINISHED_EXCHANGE
{
    FRAME_PRO frame;
    ExchangeEnd end = END_SILENT;
    int result = REPLY_NOTHING_PENDING; ///< what intf_dealRcvFrame said
    int exceptionCode = 0;              ///< of END_REFUSED
    bool isPointless = false; ///< not sent: its station is known to be silent, or no frame holds it
    bool wasSent = false;     ///< at this attempt or an earlier one
    qint64 replyTime = -1;    ///< from the request's end to its answer; -1: not known
};

/// What was heard of a station besides its answers to requests: a fence, or an answer too late.
struct HEARD_EXCHANGE
{
    EndedExchange ended;
    bool isOfRequest; ///< the fence went ahead of a request, as one of its attempts
};

/// Stands between the driver and the exchange machine: hands the driver's requests to the machine
/// one at a time, and tells the driver what became of each. Times are microseconds.
///
/// - A refusal is final, so it is handed in until the driver gives the request up. "Still working"
///   and "device busy" alone are asked again, after pauses that grow.
/// - A request to a silent station is given up at once.
/// - A request that a lost link cut short is offered by the driver again.
class DriverExchange
{
public:
    /// True when a request of that station would not be answered.
    using IsSilent = std::function<bool(const FRAME_PRO&)>;

    DriverExchange(StartedDriver& driver, const LineTiming& timing,
                   const ExchangeMachine::Settings& settings, IsSilent isSilent);

    /// Asks a station for a sign of life as soon as no request is under way.
    /// @param wait  for its answer; 0: as long as for any
    void probe(int station, qint64 wait);

    ExchangeMachine::Step advance(qint64 now);
    void received(const QByteArray& bytes, qint64 now);
    void linkLost();
    void linkOpened(qint64 now);

    /// The driver has no request under way, so it chooses afresh next.
    bool isBetweenRequests() const
    {
        return !m_isPending;
    }

    /// Neither a request nor a probe is under way, or waits.
    bool isFree() const
    {
        return !m_isPending && m_probes.empty() && m_machine.isFree();
    }

    std::vector<FINISHED_EXCHANGE> takeFinished();

    std::vector<HEARD_EXCHANGE> takeHeard();

    EchoMode echo() const
    {
        return m_machine.echo();
    }

private:
    struct Probe
    {
        int station;
        qint64 wait;
    };

    bool startNext(qint64 now);
    bool startRequest(qint64 now);
    bool chooseRequest();
    void takeEnded(qint64 now);
    void finish(const EndedExchange& ended, qint64 now);

    StartedDriver& m_driver;
    const IsSilent m_isSilent;
    ExchangeMachine m_machine;
    FRAME_PRO m_frame;
    bool m_isPending = false; ///< m_frame waits in the driver for its end
    bool m_isRepeat = false;  ///< m_frame was handed to the machine before
    GrowingPause m_busyPause;
    qint64 m_pauseUntil = 0;
    std::vector<Probe> m_probes;
    std::vector<FINISHED_EXCHANGE> m_finished;
    std::vector<HEARD_EXCHANGE> m_heard;
};

#endif
