#ifndef EXCHANGE_MACHINE_H
#define EXCHANGE_MACHINE_H

#include "exchange/answerOrder.h"
#include "exchange/answerTime.h"
#include "exchange/fenceChoice.h"
#include "wire/lineTiming.h"

#include <map>
#include <vector>

/// How an exchange ended.
enum ExchangeEnd {
    END_ANSWERED,
    END_REFUSED,   ///< the station answered with an exception
    END_UNUSABLE,  ///< bytes came, but no answer to believe; or the line was never quiet
    END_SILENT,    ///< nothing came
    END_BROADCAST, ///< sent to all stations, which answer nothing
    END_LATE,      ///< an answer to a request that had ended before: the station is there
};

struct EndedExchange
{
    bool isFence; ///< of the machine's own, or of startFence()
    int station;  ///< 0 to 255
    ExchangeEnd end;
    bool wasSent;     ///< the request itself went out, be it at an earlier attempt
    QByteArray reply; ///< of the caller's request, with END_ANSWERED or END_REFUSED: the whole
                      ///< reply, cut to what the request asks for; else empty
    qint64
        replyTime; ///< microseconds from the request's end to the end of its reply; -1: not known
};

/// Whether the link returns what is sent ahead of the answer, as two-wire adapters do.
enum EchoMode { ECHO_UNKNOWN, ECHO_ABSENT, ECHO_PRESENT };

/// The exchange of requests and replies without any I/O: bytes and times go in, bytes and deadlines
/// come out, so that a serial port, a socket and a test drive the same one. Times are microseconds
/// of any clock that never goes back. One thread calls it.
///
/// It keeps the silent intervals, picks answers out of stray bytes, lets no chatter extend a
/// time-out, and believes an answer only when it can be nothing else.
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
/// DRAINING goes back to QUIET when bytes came though the fence was not answered, up to 4 fences an
/// attempt. AWAITING does when an answer may be another's, or a longer read was refused.
///
/// The machine chooses at the end of QUIET what to send: the request, when the station is in step
/// and the answer cannot be mistaken; else a fence, a read whose length no other expected reply
/// has. A station answers in order. So when it answers the fence, each earlier request is answered
/// or lost.
///
/// Timelines. R, S: requests of the caller; F: a fence; r, s, f: their answers.
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
/// - A request is sent only to a station of which nothing is outstanding. Its answer has another
///   signature than the answer taken last; else one register more is read, or a fence goes first.
///   One exception is a read that repeats the request answered last: it may go out unchanged for
///   0.1 s on a line, and for 1 s where no longer read is possible. Its value may be older by that
///   time, but never another address's.
/// - No fence has the signature of anything that may still come, nor of the request behind it.
/// - Where the link echoes, or may, no write is confirmed by the first copy of itself.
/// - A request of the caller ends once; linkLost() alone drops it without an end.
class ExchangeMachine
{
public:
    struct Settings
    {
        qint64 answer;     ///< longest that a station takes to begin its answer, as far as is known
        qint64 turnaround; ///< pause after a broadcast
        EchoMode echo;     ///< ECHO_UNKNOWN: the fences find out
        unsigned seed;     ///< see FenceChoice

        Settings() : answer(500000), turnaround(100000), echo(ECHO_UNKNOWN), seed(0) {}
    };

    struct Step
    {
        QByteArray send; ///< to be sent now, in one piece; empty: nothing
        bool isFence;    ///< what is to be sent is a fence
        bool isIdle;     ///< nothing happens before a call of start(), startFence() or received()
        qint64 wakeAt;   ///< when to call advance() again; means nothing when idle
    };

    ExchangeMachine(const LineTiming& timing, const Settings& settings);

    /// True when start() and startFence() may be called. A call at any other time replaces the
    /// request under way, which then has no end. advance() goes on either way.
    bool isFree() const
    {
        return !m_hasJob;
    }

    /// One attempt of a request: a read or write of the driver with its checksum, 8 bytes or more,
    /// functions 3 to 6, 15 or 16. A write to station 0 is a broadcast.
    /// @param isRepeat  the same bytes as at the last start(), whose end was no answer: an answer
    /// to
    ///                  an earlier attempt serves as well
    void start(const QByteArray& request, bool isRepeat, qint64 now);

    /// Asks whether a station is there; its answer usually brings it into step. It ends with an
    /// entry that has isFence and the station, as fences ahead of a request do.
    /// @param number   of the station, 1 to 247
    /// @param wait  for its answer; 0: as long as for any
    void startFence(int number, qint64 wait, qint64 now);

    /// Does what is due, up to the next bytes to send. Call it at wakeAt, and after each other
    /// call. As long as takeEnded() has something, wakeAt is now.
    Step advance(qint64 now);

    void received(const QByteArray& bytes, qint64 now);

    /// The link is gone. The request under way is dropped without an end: the driver, which is told
    /// nothing, offers it again. Start it as no repeat after linkOpened().
    void linkLost();

    /// A link was opened, or another program had the line: no station is in step, and whether the
    /// link echoes is not known. A request under way goes on behind a fence.
    void linkOpened(qint64 now);

    /// What has ended since the last call, oldest first.
    std::vector<EndedExchange> takeEnded();

    EchoMode echo() const
    {
        return m_echo;
    }

    /// The time-out that fits a station's answers.
    qint64 timeOut(int number);

private:
    enum State { IDLE, QUIET, AWAITING, DRAINING, PAUSING };
    enum { NOT_KNOWN = -1 }; ///< a time

    struct Station
    {
        AnswerOrder order;
        AnswerTime time;
        FenceChoice fences;
        bool takesLonger;  ///< reads of one register more than asked for
        qint64 differedAt; ///< when it was asked last what cannot be mistaken for the answer before
    };

    struct Job
    {
        int station;
        QByteArray request; ///< empty: the fence alone
        quint64 number;
        qint64 wait; ///< for a fence alone; 0: as long as for any
        bool wasSent;
        int rounds; ///< what was answered, and led to no end
        int fences; ///< that were not answered, at this attempt
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
    void takeReply(const QByteArray& reply, qint64 now);
    void takeFenceAnswer(const AnswerOrder::Taken& taken, const QByteArray& reply, qint64 now);
    void learnEcho();
    void takeRequestAnswer(const AnswerOrder::Taken& taken, const QByteArray& reply, qint64 now);
    bool isAwaited(int number, bool isFence) const;

    void runOut(qint64 now);
    void giveUpWaiting(qint64 now);
    void endJob(ExchangeEnd end, const QByteArray& reply = QByteArray(),
                qint64 replyTime = NOT_KNOWN);
    void tell(bool isFence, int station, ExchangeEnd end);

    const LineTiming m_timing;
    const Settings m_settings;
    EchoMode m_echo;
    std::map<int, Station> m_stations;

    State m_state;
    bool m_hasJob;
    Job m_job;
    quint64 m_lastNumber; ///< of the caller's requests

    QByteArray m_sent; ///< what is awaited
    bool m_isFenceSent;
    bool m_isCopyDue; ///< the link may return m_sent
    int m_noise;      ///< bytes since then that were part of no frame
    qint64 m_sentAt;  ///< when it had ended on the line
    qint64 m_deadline;

    QByteArray m_received; ///< what makes no whole frame yet
    qint64 m_firstAt;      ///< when its first byte came, unless what that means is noted
    qint64 m_heard;        ///< bytes that came since the job began, but for copies of what was sent
    qint64 m_lineBusyUntil;
    std::vector<EndedExchange> m_ended;
};

#endif
