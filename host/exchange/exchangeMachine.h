#ifndef EXCHANGE_MACHINE_H
#define EXCHANGE_MACHINE_H

#include "exchange/lineTiming.h"
#include "exchange/replyRecogniser.h"
#include "exchange/slowAnswers.h"
#include "exchange/unansweredRequests.h"
#include "exchange/unseenLines.h"
#include "quorvane_ka_kb_plc.h"

#include <optional>

/// The two calls of the driver that an exchange is made of.
class DriverCalls
{
public:
    virtual ~DriverCalls() = default;
    virtual int getSendFrame(FRAME_PRO* frame) = 0;
    virtual int dealRcvFrame(QByteArray& reply, QString& errorText) = 0;
};

/// One exchange that is over.
struct FINISHED_EXCHANGE
{
    FRAME_PRO frame;
    int result = REPLY_NOTHING_PENDING; ///< what intf_dealRcvFrame said
    int exceptionCode = 0;              ///< nonzero: the PLC refused the request
    bool heard = false;                 ///< bytes came, be it an answer or not
    qint64 replyTime = -1; ///< from the request's end to its answer; -1: none is surely its own
    QString errorText;
};

/// The host's side of the exchange without any I/O: bytes and times go in, bytes and deadlines come
/// out, so that a serial port, a socket and a test drive the same one. Times are microseconds of
/// any clock that never goes back.
///
/// It keeps the silent intervals, picks the answer out of stray bytes, ends the wait at an
/// exception, never lets chatter extend a time-out, drains the line after one, and holds a request
/// back while a late answer to an earlier one could be taken for its own. A refusal that could be a
/// late one ends the wait only when nothing better comes. A line that is never silent counts as one
/// that does not answer.
///
/// Answers that keep coming after the time-out lengthen it. And when one came late, nothing at all
/// is sent while others may come: whatever answers would stay behind for good.
class ExchangeMachine
{
public:
    struct Times
    {
        qint64 answer = 500000;     ///< longest that a station takes to begin its answer
        qint64 turnaround = 100000; ///< pause after a broadcast
        qint64 opening = 0;         ///< silence ahead of the first request over an opened link
    };

    struct Step
    {
        QByteArray send;   ///< to be sent now; empty: nothing
        qint64 wakeAt = 0; ///< when to call advance() again, unless bytes come first
        bool idle = false; ///< the driver has nothing to send; wakeAt means nothing
    };

    ExchangeMachine(DriverCalls& driver, const LineTiming& timing, const Times& times);

    /// Does what is due, up to the next byte to send or the end of an exchange. Call it at wakeAt,
    /// and at once after received() and after the driver got new work.
    Step advance(qint64 now);

    void received(const QByteArray& bytes, qint64 now);

    /// The link is gone. The driver still has the request in flight and offers it again; nothing of
    /// it was answered or given up.
    /// @param answersMayFollow  late answers may still come over the next link, as on a wire
    void linkLost(bool answersMayFollow = true);

    /// A link was opened. What went over it until now is not known, so silence comes first.
    void linkOpened(qint64 now);

    /// When the last answer to what was sent so far is to be expected. Before now: none is.
    qint64 answersUntil() const
    {
        return m_unanswered.probablyUntil();
    }

    /// Until when a request may be held back, at most.
    qint64 heldBackUntil() const
    {
        return m_unanswered.until();
    }

    /// The driver has no request under way, so it chooses afresh next.
    bool isBetweenRequests() const
    {
        return m_state == CHOOSING && !m_retrying && !m_isPending;
    }

    /// The exchange that ended in the last call of advance() or received(), if one did.
    std::optional<FINISHED_EXCHANGE> takeFinished();

private:
    enum State { CHOOSING, WAITING_FOR_SILENCE, WAITING_FOR_REPLY, DRAINING, PAUSING };

    bool chooseRequest(qint64 now);
    qint64 silence() const;
    qint64 answerTime() const;
    qint64 earliestSend() const;
    qint64 dueTime() const;
    void send(qint64 now);
    void takeLateAnswers(qint64 now);
    void takeReply(qint64 now);
    bool mayBeRefused(const SENT_ATTEMPT& other, qint64 now) const;
    bool mayRefuseAnother(qint64 now) const;
    void noteDoubtful(const RECOGNISED& refusal, qint64 now);
    void finish(QByteArray reply, int exceptionCode, qint64 replyTime);
    void finishWithoutAnswer();

    DriverCalls& m_driver;
    const LineTiming m_timing;
    const Times m_times;
    State m_state = CHOOSING;
    FRAME_PRO m_frame;
    QByteArray m_request;
    QByteArray m_signature;
    QByteArray m_received;
    RECOGNISED m_doubtful;        ///< a refusal of this attempt, or a late one of another request
    bool m_isWorthAsking = false; ///< the next attempt tells whose it was
    qint64 m_lineBusyUntil;
    bool m_isFresh = false;  ///< nothing was sent over this link yet
    bool m_isBehind = false; ///< answers came late, and others may
    qint64 m_deadline = 0;
    qint64 m_sentAt = 0;
    bool m_retrying = false;
    bool m_isPending = false; ///< the driver has a request that a lost link cut short
    bool m_heard = false;     ///< bytes came since the request was chosen
    UnansweredRequests m_unanswered;
    SlowAnswers m_slow;
    UnseenLines m_unseen;
    std::optional<FINISHED_EXCHANGE> m_finished;
};

#endif
