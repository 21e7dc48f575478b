// Receiving: the part of the exchange machine that finds frames among the received bytes and
// decides which frame answers the request.

#include "exchange/exchangeMachine.h"

#include "exchange/longerRead.h"
#include "wire/exceptionText.h"
#include "wire/frameShape.h"
#include "wire/replyFrames.h"
#include "wire/unfitBytes.h"

namespace {

enum {
    MOST_HELD = 1024, // bytes, four times the longest frame: chatter must not fill the memory
    MOST_ROUNDS = 3,  // answers that do not end the job, in one attempt
    SHORTEST_COPY = 4 // bytes that remain of a copy that was damaged on its way
};

} // namespace

void ExchangeMachine::received(const QByteArray& bytes, qint64 now)
{
    m_lineBusyUntil = qMax(m_lineBusyUntil, now);
    m_heard += bytes.size();
    if (m_received.isEmpty()) m_firstAt = now;
    m_received += bytes;
    const int tooMany = qMax(int(m_received.size()) - MOST_HELD, 0);
    noteDropped(m_received.left(tooMany).mid(m_oldBytes));
    m_received.remove(0, tooMany);
    m_oldBytes = qMax(m_oldBytes - tooMany, 0);
    sortOut(now);
}

/// Takes whole frames out of the received bytes. Bytes ahead of a frame are noise.
void ExchangeMachine::sortOut(qint64 now)
{
    for (int at = 0; at + SHORTEST_FRAME <= m_received.size();) {
        const int copy = copyLengthAt(at);
        const int length = copy > 0 ? copy : replyLengthAt(m_received, at);
        if (length == 0 && isBegunAt(at)) return;
        if (length == 0) {
            ++at;
            continue;
        }
        const QByteArray frame = m_received.mid(at, length);
        if (at > 0) noteJunk(m_firstAt < m_sentAt + m_timing.silentInterval());
        m_noise = qMin(m_noise + at, int(MOST_HELD));
        noteDropped(m_received.left(at).mid(m_oldBytes));
        m_received.remove(0, at + length);
        m_oldBytes = qMax(m_oldBytes - at - length, 0);
        m_firstAt = now;
        if (copy > 0) {
            m_isCopyDue = false;
            m_echo = ECHO_PRESENT;
            m_heard -= copy;
        } else {
            takeReply(frame, now);
        }
        at = 0;
    }
    if (m_state != AWAITING && m_state != DRAINING && !m_received.isEmpty()) noteJunk(true);
}

/// True when the awaited answer begins at `at` and is not whole yet. The bytes behind are its data,
/// so a frame that begins among them must not be taken.
bool ExchangeMachine::isBegunAt(int at) const
{
    return (m_state == AWAITING || m_state == DRAINING) &&
           m_received.size() - at < dueReplyLength(m_sent) &&
           m_received.mid(at).startsWith(answerSignature(m_sent));
}

/// The length of the sent frame's copy that begins at `at`; 0: no copy begins there. No reply to a
/// read looks like the read itself, so such a copy shows that the link echoes. The copy of a write
/// of one register or coil looks like its answer: AnswerOrder tells the two apart, because the copy
/// may come after another frame was sent.
int ExchangeMachine::copyLengthAt(int at) const
{
    if (!m_isCopyDue || (!isRead(m_sent) && m_echo != ECHO_PRESENT)) return 0;
    if (isAnsweredByItself(m_sent)) return 0;
    return m_received.mid(at, m_sent.size()) == m_sent ? int(m_sent.size()) : 0;
}

/// Notes bytes that are part of no frame. Around an awaited answer they may be noise of the line.
/// At any other time they may be the rest of an answer that the host did not expect.
/// @param isUnasked  the bytes came at another time, so they put the station in doubt
void ExchangeMachine::noteJunk(bool isUnasked)
{
    if (!isUnasked || m_sent.isEmpty()) return;
    const std::map<int, Station>::iterator last = m_stations.find(frameByte(m_sent, 0));
    if (last != m_stations.end()) last->second.order.doubt(AnswerOrder::CAME_AGAIN);
}

/// Notes bytes that are no answer, for the description of the end.
void ExchangeMachine::noteDropped(const QByteArray& bytes)
{
    m_dropped = (m_dropped + bytes).left(MOST_HELD);
}

/// The wait for the answer to m_sent is over: describes the bytes that came instead. Without any
/// bytes the description of an earlier frame of this job stays.
void ExchangeMachine::noteUnfit()
{
    const QString unfit = describeUnfit(m_sent, m_dropped + m_received.mid(m_oldBytes));
    if (!unfit.isEmpty()) m_unfit = unfit;
}

bool ExchangeMachine::isAwaited(int number, bool isFence) const
{
    return (m_state == AWAITING || m_state == DRAINING) && m_isFenceSent == isFence &&
           frameByte(m_sent, 0) == number;
}

void ExchangeMachine::takeReply(const QByteArray& reply, qint64 now)
{
    const int number = frameByte(reply, 0);
    const std::map<int, Station>::iterator found = m_stations.find(number);
    if (found == m_stations.end()) return noteDropped(reply);
    Station& from = found->second;
    const AnswerOrder::Taken taken = from.order.take(reply);
    if (taken.isCopy) m_heard -= reply.size();
    if (!taken.isAsked && !taken.isCopy) noteDropped(reply);
    if (!taken.isAsked) return;
    if (taken.asked.times == 1 && taken.isSure)
        from.time.note(qMax<qint64>(now - taken.asked.at - m_timing.frame(int(reply.size())), 0));
    if (taken.asked.isFence())
        takeFenceAnswer(taken, reply, now);
    else
        takeRequestAnswer(taken, reply, now);
}

/// The answer to an earlier fence shows that the station is there, so the machine goes on waiting
/// for the answer to the newest fence.
void ExchangeMachine::takeFenceAnswer(const AnswerOrder::Taken& taken, const QByteArray& reply,
                                      qint64 now)
{
    const int number = frameByte(reply, 0);
    Station& from = station(number);
    const bool isRefused = exceptionCodeOf(reply) >= 0;
    if (isRefused) from.fences.failed();
    tell(true, number, isRefused ? END_REFUSED : END_ANSWERED, isRefused ? reply : QByteArray());
    const bool isAwaitedHere = isAwaited(number, true);
    const bool isNewest = taken.asked.sent == m_sent;
    if (isAwaitedHere && !isNewest) m_deadline = qMax(m_deadline, now + from.time.timeOut());
    if (from.order.isClean()) from.differedAt = now;
    if (!isAwaitedHere || !isNewest) return;
    learnEcho();
    m_state = IDLE;
    if (!m_hasJob) return;
    if (m_job.request.isEmpty() && m_job.station == number)
        m_hasJob = false; // if not in step, the next request sends a fence of its own
    else if (++m_job.rounds <= 2 * MOST_ROUNDS)
        enterQuiet(now);
    else
        endJob(END_UNUSABLE);
}

/// The station answered a fence, and no copy of the fence came: the link does not echo. Noise may
/// have been a damaged copy, so SHORTEST_COPY or more bytes of noise leave the question open.
void ExchangeMachine::learnEcho()
{
    if (m_echo == ECHO_UNKNOWN && m_isCopyDue && m_noise < SHORTEST_COPY) m_echo = ECHO_ABSENT;
}

/// An answer that may belong to another request only updates the order; the machine asks the
/// request again behind a fence. It also asks again when the station refused the longer form of the
/// request.
void ExchangeMachine::takeRequestAnswer(const AnswerOrder::Taken& taken, const QByteArray& reply,
                                        qint64 now)
{
    const int number = frameByte(reply, 0);
    if (!m_hasJob || m_job.number != taken.asked.request) return tell(false, number, END_LATE);
    const bool isRefused = exceptionCodeOf(reply) >= 0;
    const bool isInFlight = isAwaited(number, false);
    if (isInFlight) m_state = IDLE;
    if (isRefused && taken.asked.sent != m_job.request)
        station(number).takesLonger = isAskedAgain(exceptionCodeOf(reply));
    else if (taken.isSure) {
        if (!isRefused) station(number).fences.noteServed(taken.asked.sent);
        const bool isOfOneSending = taken.asked.times == 1;
        return endJob(isRefused ? END_REFUSED : END_ANSWERED,
                      cutReply(reply, taken.asked.sent, m_job.request),
                      isOfOneSending ? qMax<qint64>(now - taken.asked.at, 0) : qint64(NOT_KNOWN),
                      isInFlight && isOfOneSending ? now : qMin(taken.asked.firstAt, now));
    }
    if (!isInFlight) return;
    m_unfit = QLatin1String("an answer that may belong to an earlier request");
    if (++m_job.rounds <= MOST_ROUNDS)
        enterQuiet(now);
    else
        endJob(END_UNUSABLE);
}
