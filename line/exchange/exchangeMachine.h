#ifndef EXCHANGE_MACHINE_H
#define EXCHANGE_MACHINE_H

#include "exchange/answerOrder.h"
#include "exchange/answerTime.h"
#include "exchange/fenceChoice.h"
#include "wire/lineTiming.h"

#include <QString>

#include <map>
#include <vector>

/// The end of an exchange.
enum ExchangeEnd {
    END_ANSWERED,  ///< the station answered
    END_REFUSED,   ///< the station answered with an exception
    END_UNUSABLE,  ///< bytes came, but no answer that is sure; or the line was never quiet
    END_SILENT,    ///< no byte came
    END_BROADCAST, ///< the request went to all stations; no station answers it
    END_LATE,      ///< an answer came to a request that had ended before: the station is there
};

/// An entry of takeEnded().
struct EndedExchange
{
    bool isFence; ///< a fence ended: the machine's own fence, or the fence of startFence()
    int station;  ///< 0 to 255
    ExchangeEnd end;
    bool wasSent;     ///< the request itself went out, in this attempt or an earlier one
    QByteArray reply; ///< to the caller's request, with END_ANSWERED or END_REFUSED: the whole
                      ///< reply, without the registers that the request did not ask for. To a
                      ///< fence with END_REFUSED: the refusal. Else empty
    qint64 replyTime; ///< microseconds from the end of the request to the end of its reply; -1: not
                      ///< known
    QString unfit;    ///< with END_UNUSABLE: what came in place of the answer, in words, see
                      ///< describeUnfit(); empty: nothing came that could not be explained
    qint64 asOf; ///< with END_ANSWERED: the time of the reply. A reply that came too late, or that
                 ///< may answer an earlier sending of the request: the time at which the first
                 ///< sending had left. What it tells is as old as this, or younger
};

/// Whether the link returns each request ahead of its answer, as two-wire adapters do.
enum EchoMode { ECHO_UNKNOWN, ECHO_ABSENT, ECHO_PRESENT };

/// The exchange of requests and replies on one link, without I/O. Bytes and times go in, bytes and
/// deadlines come out. So a serial port, a socket and a test drive the same code. Times are
/// microseconds of a clock that never goes back. One thread makes all calls.
///
/// The machine keeps the silent intervals and picks answers out of stray bytes. No chatter extends
/// a time-out. The machine believes an answer only when it can answer no other request.
///
/// How a host uses it
///
///     machine.linkOpened(now);
///     machine.start(request, false, now);
///     repeat: step = machine.advance(now); send step.send; look at machine.takeEnded();
///             wait until step.wakeAt, or for bytes, and pass them to machine.received()
///
/// Words
/// - A station is in step while it has answered every request; otherwise it is in doubt.
/// - A fence is a read that the machine adds to bring a station into step, see FenceChoice.
/// - A signature is the part of a reply that identifies its request, see replyFrames.h.
/// - A job is the request or the fence that the caller started.
///
/// States
///
///     start()          quiet long enough             answered in step
///   IDLE -----> QUIET -------------------> AWAITING -----------------> IDLE
///                ^ |                        |   ^ |
///                | | never quiet            |   | | too late
///                | +----------> IDLE        |   | v            quiet
///                +--------------------------+  DRAINING ---------------> IDLE
///                  a fence was answered: now the request
///                QUIET ---> PAUSING ---> IDLE        a broadcast, then its turnaround
///
/// - QUIET waits for the silent interval before a frame. AWAITING waits for the answer. After a
///   time-out DRAINING waits until the line is quiet. PAUSING is the pause after a broadcast.
/// - DRAINING goes back to QUIET when bytes came although the station did not answer the fence.
///   This happens for up to 4 fences in one attempt.
/// - AWAITING goes back to QUIET also when an answer may belong to another request, and when the
///   station refused a longer read.
///
/// At the end of QUIET the machine chooses the frame to send. It sends the request when the station
/// is in step and the answer cannot be mistaken. Otherwise it sends a fence: a read whose length no
/// other expected reply has. A station answers in order. So when it answers the fence, each earlier
/// request is answered or lost.
///
/// Timelines. R, S, T, A, B: requests of the caller; F: a fence; small letters: their answers; x:
/// no answer in time; !: a refusal.
///
///   a late answer      host  R--------F1------------S---        r is the answer to R when R is
///   behind one retry   PLC         x     r  f1         s        asked again, and dropped otherwise
///
///   a stall of ten     host  R--F1--F2-  -F3-   -F9-     S--    each fence has another length;
///   requests           PLC   (silent)            r f1..f9  s    the last one ends the doubt
///
///   a doubled answer   host  R---S------F---T--                 the second r has not the length
///                      PLC     r   r s    f   t                 that S asks for
///
///   two stations,      host  A--Fa--B--B--B---B--Fa2--A--       stations are in doubt one by one
///   one stalled        PLC          b  b  b a fa b   fa2 a
///
///   a refusal that     host  R-----F1---F2---S--                !R and !F1 look alike: only the
///   may be another's   PLC        !R     f2    s                answer f2 tells that all is over
///
/// Invariants
/// - A request goes only to a station without outstanding requests. The signature of its answer
///   differs from the signature of the last accepted answer. Where it would not differ, the machine
///   reads one register more, or sends a fence first.
/// - One exception: a read that repeats the last answered request may go out unchanged for 0.1 s
///   on a line, and for 1 s where no longer read is possible. Its value may be older by that time.
///   It is never the value of another address.
/// - The signature of a fence's answer differs from the signature of every reply that may still
///   come, and of the answer to the request behind the fence.
/// - On a link that echoes, or may echo, the first copy of a write does not confirm the write.
/// - Each request of the caller ends once. Two calls drop the request under way without an end:
///   linkLost(), and a start while the machine is not free.
class ExchangeMachine
{
public:
    /// Times are in microseconds.
    struct Settings
    {
        qint64 answer; ///< longest time that a station takes to begin its answer; over a network,
                       ///< to finish it. The time-out before answers have been measured, and its
                       ///< lower limit afterwards.
        qint64 turnaround; ///< pause after a broadcast
        EchoMode echo;     ///< with ECHO_UNKNOWN the fences find out whether the link echoes
        unsigned seed;     ///< see FenceChoice

        Settings() : answer(500000), turnaround(100000), echo(ECHO_UNKNOWN), seed(0) {}
    };

    /// The result of advance().
    struct Step
    {
        QByteArray send; ///< bytes to send now, in one piece; empty: send nothing
        bool isFence;    ///< the bytes to send are a fence
        bool isIdle;     ///< no deadline is pending: wait for start(), startFence() or received()
        qint64 wakeAt;   ///< time of the next call of advance(); means nothing when idle
    };

    ExchangeMachine(const LineTiming& timing, const Settings& settings);

    /// True when start() and startFence() may be called. A call at any other time replaces the
    /// request under way, which then has no end. Go on calling advance() in both cases.
    bool isFree() const
    {
        return !m_hasJob;
    }

    /// Starts one attempt of a request.
    /// @param request   a read or write of the driver with its checksum: 8 bytes or more,
    ///                  functions 3 to 6, 15 or 16. A write to station 0 is a broadcast.
    /// @param isRepeat  the request has the same bytes as at the last start(), and that attempt
    ///                  had no answer. Then an answer to an earlier attempt serves as well.
    void start(const QByteArray& request, bool isRepeat, qint64 now);

    /// Sends a fence to find out whether a station is there. The answer usually brings the station
    /// into step. The end is an entry of takeEnded() with isFence and the station, as for a fence
    /// ahead of a request.
    /// @param number  number of the station, 1 to 247
    /// @param wait    time-out in microseconds; 0: the station's usual time-out
    void startFence(int number, qint64 wait, qint64 now);

    /// Does the work that is due at `now`, up to the next bytes to send. Call it at wakeAt, and
    /// after each call of another function. While takeEnded() has entries, wakeAt is now.
    Step advance(qint64 now);

    /// Takes received bytes, in pieces of any size. Call it as soon as the bytes arrive: `now` is
    /// the time of their arrival.
    void received(const QByteArray& bytes, qint64 now);

    /// Call it when a read or write of the port has failed. The request under way is dropped
    /// without an end. The driver learns nothing of this and offers the request again: start it
    /// with isRepeat false after linkOpened().
    void linkLost();

    /// Call it after the port was opened, and when another program may have used the line. All
    /// stations are in doubt then, and the echo is what Settings say. A request under way goes on
    /// behind a fence.
    void linkOpened(qint64 now);

    /// The exchanges that ended since the last call, oldest first.
    std::vector<EndedExchange> takeEnded();

    /// Whether the link echoes, as far as it is known.
    EchoMode echo() const
    {
        return m_echo;
    }

    /// The present time-out of a station: microseconds from the end of a request to the latest
    /// start of its answer.
    qint64 timeOut(int number);

private:
    enum State { IDLE, QUIET, AWAITING, DRAINING, PAUSING };
    enum { NOT_KNOWN = -1 }; ///< in place of a time

    struct Station
    {
        AnswerOrder order;
        AnswerTime time;
        FenceChoice fences;
        bool takesLonger;  ///< the station accepts reads with one register more
        qint64 differedAt; ///< time of the last request whose answer differs from the last answer
    };

    struct Job
    {
        int station;
        QByteArray request; ///< empty: the job is a fence alone
        quint64 number;     ///< of the caller's request; 0: the job is a fence alone
        qint64 wait;        ///< time-out of a fence alone; 0: the station's usual time-out
        bool wasSent;       ///< the request itself went out
        int rounds;         ///< answers in this attempt that did not end the job
        int fences;         ///< fences in this attempt that were not answered
    };

    Station& station(int number);
    void begin(const Job& job, qint64 now);
    void enterQuiet(qint64 now);
    qint64 quietAt() const;
    qint64 dueTime() const;

    QByteArray requestFor(const Job& job, Station& station, qint64 now) const;
    bool mayBeAlike(const Job& job, const Station& station, qint64 now, qint64 longest) const;
    void sendNext(qint64 now, Step& step);
    void sendFence(qint64 now, Step& step);
    void put(const QByteArray& bytes, qint64 wait, qint64 now, Step& step);

    void sortOut(qint64 now);
    bool isBegunAt(int at) const;
    int copyLengthAt(int at) const;
    void noteJunk(bool isUnasked);
    void noteDropped(const QByteArray& bytes);
    void noteUnfit();
    void takeReply(const QByteArray& reply, qint64 now);
    void takeFenceAnswer(const AnswerOrder::Taken& taken, const QByteArray& reply, qint64 now);
    void learnEcho();
    void takeRequestAnswer(const AnswerOrder::Taken& taken, const QByteArray& reply, qint64 now);
    bool isAwaited(int number, bool isFence) const;

    void runOut(qint64 now);
    void giveUpWaiting(qint64 now);
    void endJob(ExchangeEnd end, const QByteArray& reply = QByteArray(),
                qint64 replyTime = NOT_KNOWN, qint64 asOf = 0);
    void tell(bool isFence, int station, ExchangeEnd end, const QByteArray& refusal = QByteArray());

    const LineTiming m_timing;
    const Settings m_settings;
    EchoMode m_echo;
    std::map<int, Station> m_stations;

    State m_state;
    bool m_hasJob;
    Job m_job;
    quint64 m_lastNumber; ///< of the caller's requests

    QByteArray m_sent;  ///< the last frame sent; AWAITING and DRAINING wait for its answer
    bool m_isFenceSent; ///< m_sent is a fence
    bool m_isCopyDue;   ///< the link may return m_sent
    int m_noise;        ///< bytes since m_sent that were part of no frame
    qint64 m_sentAt;    ///< time at which the last byte of m_sent has left
    qint64 m_deadline;  ///< latest end of the present state

    QByteArray m_received; ///< bytes that make no whole frame yet
    int m_oldBytes;        ///< of m_received: they came before m_sent went out
    QByteArray m_dropped;  ///< bytes since m_sent that answer nothing, without those of m_received
    QString m_unfit;       ///< what came in this job in place of answers, in words
    qint64 m_firstAt;      ///< arrival of the first byte of m_received; NOTED: the doubt that these
                           ///< bytes cause is already noted
    qint64 m_heard;        ///< bytes received since the job began, without copies of sent frames
    qint64 m_lineBusyUntil; ///< the line carries bytes until then, as far as is known

    std::vector<EndedExchange> m_ended; ///< for takeEnded()
};

#endif
