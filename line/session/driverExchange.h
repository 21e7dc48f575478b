#ifndef DRIVER_EXCHANGE_H
#define DRIVER_EXCHANGE_H

#include "exchange/exchangeMachine.h"
#include "session/growingPause.h"
#include "session/startedDriver.h"

#include <functional>
#include <vector>

/// The end of one attempt of a driver's request.
struct FINISHED_EXCHANGE
{
    FRAME_PRO frame;
    ExchangeEnd end = END_SILENT;
    int result = REPLY_NOTHING_PENDING; ///< return value of intf_dealRcvFrame
    int exceptionCode = 0;              ///< of END_REFUSED; otherwise 0
    bool isPointless = false; ///< not sent: the station is known to be silent, or no frame holds it
    int timesSent = 0;        ///< times that the request went out: in all attempts, on all links
    int openBefore =
        0;            ///< of timesSent without the last: the station may have executed the request
    QByteArray reply; ///< of END_ANSWERED and END_REFUSED: see EndedExchange::reply
    QString unfit;    ///< of END_UNUSABLE: what came instead, see EndedExchange::unfit
    qint64 replyTime = -1; ///< microseconds from the request's end to its answer; -1: not known
    qint64 asOf = 0;       ///< of END_ANSWERED: what the answer tells is as old as this, or younger
};

/// An event that ends no request of the driver but says something about a station: the end of a
/// fence, or an answer that came too late.
struct HEARD_EXCHANGE
{
    EndedExchange ended;
    bool isOfRequest; ///< a fence that went ahead of a request counts as an attempt of the request
};

/// Stands between the driver and the exchange machine. It hands the driver's requests to the
/// machine, one at a time, and hands the result of each request back to the driver. Times are
/// microseconds. One thread calls it.
///
/// - A refusal is final: the exception reply is handed to the driver until it gives the request up.
///   Only the exceptions "still working" and "device busy" lead to a retry, after growing pauses.
/// - A request to a silent station is given up at once.
/// - After the loss of a link the driver offers the interrupted request again.
/// - The times that a request went out are counted here, not in the machine: a lost link makes the
///   machine forget its request, but the station may have executed it.
class DriverExchange
{
public:
    /// True when the station of the frame is not expected to answer.
    using IsSilent = std::function<bool(const FRAME_PRO&)>;

    DriverExchange(StartedDriver& driver, const LineTiming& timing,
                   const ExchangeMachine::Settings& settings, IsSilent isSilent);

    /// Sends a fence to the station as a probe, as soon as no request is under way.
    /// @param wait  longest wait for the answer; 0: the wait of every request
    void probe(int station, qint64 wait);

    ExchangeMachine::Step advance(qint64 now);
    void received(const QByteArray& bytes, qint64 now);
    void linkLost();
    void linkOpened(qint64 now);

    /// Makes the driver give up all its requests. Only behind linkLost(). No end is told.
    void giveUpAll();

    /// The driver has no request under way. It chooses its next request afresh.
    bool isBetweenRequests() const
    {
        return !m_isPending;
    }

    /// The request under way, and the times that it went out. Not between two requests.
    const FRAME_PRO& frame() const
    {
        return m_frame;
    }
    int timesSent() const
    {
        return m_timesSent;
    }

    /// No request or probe is under way, and none waits.
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
    void takeEnded(qint64 now);
    void finish(const EndedExchange& ended, qint64 now);

    StartedDriver& m_driver;
    const IsSilent m_isSilent;
    ExchangeMachine m_machine;
    FRAME_PRO m_frame;
    bool m_isPending = false; ///< the driver waits for the result of m_frame
    bool m_isRepeat = false;  ///< the machine had m_frame before
    int m_timesSent = 0;      ///< of m_frame
    int m_refusals = 0;       ///< answers that say that the station did not execute m_frame
    GrowingPause m_busyPause;
    qint64 m_pauseUntil = 0;
    std::vector<Probe> m_probes;
    std::vector<FINISHED_EXCHANGE> m_finished;
    std::vector<HEARD_EXCHANGE> m_heard;
};

#endif
