#include "exchange/exchangeMachine.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace {

const qint64 NO_ANSWER = -1;

const int MOST_KEPT = 1024; // four times the longest frame, so that chatter takes no memory

} // namespace

ExchangeMachine::ExchangeMachine(DriverCalls& driver, const LineTiming& timing, const Times& times)
    : m_driver(driver),
      m_timing(timing),
      m_times(times),
      m_lineBusyUntil(std::numeric_limits<qint64>::min() / 2)
{
}

std::optional<FINISHED_EXCHANGE> ExchangeMachine::takeFinished()
{
    return std::exchange(m_finished, std::nullopt);
}

void ExchangeMachine::received(const QByteArray& bytes, qint64 now)
{
    m_lineBusyUntil = std::max(m_lineBusyUntil, now);
    m_heard = true;
    if (m_state != WAITING_FOR_REPLY) return;
    m_received = (m_received + bytes).right(MOST_KEPT);
    takeReply(now);
}

void ExchangeMachine::linkLost(bool answersMayFollow)
{
    if (!answersMayFollow) m_unanswered.clear();
    if (m_state == WAITING_FOR_REPLY || m_state == DRAINING) m_retrying = true;
    m_isPending = m_isPending || m_state != CHOOSING;
    m_state = CHOOSING;
    m_received.clear();
}

void ExchangeMachine::linkOpened(qint64 now)
{
    m_lineBusyUntil = std::max(m_lineBusyUntil, now);
}

void ExchangeMachine::takeReply(qint64 now)
{
    if (now >= m_deadline) return;
    RECOGNISED found = recogniseReply(m_received, m_request, m_frame.recvLen);
    while (found.exceptionCode != 0 && mayRefuseAnother(now)) {
        noteDoubtful(found, now);
        m_received.replace(found.reply, QByteArray());
        found = recogniseReply(m_received, m_request, m_frame.recvLen);
    }
    if (found.reply.isEmpty()) return;
    forgetAnswered();
    if (found.exceptionCode == 0) settle();
    // What has no line of its own may answer sooner than a wire could carry the request.
    finish(found.reply, found.exceptionCode, std::max<qint64>(now - m_sentAt, 0));
}

/// A refusal names only station and function. What the station has granted once, it hardly refuses
/// at another attempt: that is reckoned with for no longer than that attempt's time-out.
bool ExchangeMachine::mayBeRefused(const UNANSWERED& other, qint64 now) const
{
    return now < (other.settled ? other.timeOut : other.until) && other.signature != m_signature &&
           other.signature.left(2) == m_signature.left(2);
}

bool ExchangeMachine::mayRefuseAnother(qint64 now) const
{
    return std::any_of(m_unanswered.begin(), m_unanswered.end(),
                       [this, now](const UNANSWERED& u) { return mayBeRefused(u, now); });
}

/// A station that left an earlier request without any answer may be slow, and this one's answer
/// late as well. Otherwise an answer to both would have come by the time-out of the earlier
/// attempt.
void ExchangeMachine::noteDoubtful(const RECOGNISED& refusal, qint64 now)
{
    m_doubtful = refusal;
    m_isWorthAsking = false;
    qint64 latest = now;
    for (const UNANSWERED& other : m_unanswered) {
        if (!mayBeRefused(other, now)) continue;
        if (!other.settled) m_isWorthAsking = true;
        latest = std::max(latest, other.timeOut);
    }
    if (!m_isWorthAsking) m_deadline = std::min(m_deadline, latest);
}

/// A station answers in order, so what came answers the oldest request of its kind.
void ExchangeMachine::forgetAnswered()
{
    const auto oldest =
        std::find_if(m_unanswered.begin(), m_unanswered.end(),
                     [this](const UNANSWERED& u) { return u.signature == m_signature; });
    if (oldest != m_unanswered.end()) m_unanswered.erase(oldest);
}

void ExchangeMachine::settle()
{
    for (UNANSWERED& attempt : m_unanswered) {
        if (attempt.signature == m_signature) attempt.settled = true;
    }
}

/// What was waited for in vain must not be left to be taken for answered instead of a new request,
/// which then would hold back the next one, and so on for ever.
void ExchangeMachine::forgetExpired(qint64 now)
{
    m_unanswered.erase(std::remove_if(m_unanswered.begin(), m_unanswered.end(),
                                      [now](const UNANSWERED& u) { return u.until <= now; }),
                       m_unanswered.end());
}

void ExchangeMachine::finish(QByteArray reply, int exceptionCode, qint64 replyTime)
{
    FINISHED_EXCHANGE finished;
    finished.frame = m_frame;
    finished.exceptionCode = exceptionCode;
    finished.heard = m_heard;
    finished.replyTime = replyTime;
    finished.result = m_driver.dealRcvFrame(reply, finished.errorText);
    m_retrying = finished.result == REPLY_RETRY;
    m_finished = finished;
    m_state = CHOOSING;
}

/// A doubtful refusal leaves open which attempts were answered, so all are still reckoned with.
void ExchangeMachine::finishWithoutAnswer()
{
    const RECOGNISED refusal = std::exchange(m_doubtful, RECOGNISED());
    if (m_isWorthAsking)
        finish(QByteArray(), 0, NO_ANSWER);
    else
        finish(refusal.reply, refusal.exceptionCode, NO_ANSWER);
    if (refusal.exceptionCode == 0 || m_retrying) return;
    m_finished->exceptionCode = refusal.exceptionCode;
    settle();
}

qint64 ExchangeMachine::answersUntil() const
{
    qint64 latest = std::numeric_limits<qint64>::min() / 2;
    for (const UNANSWERED& unanswered : m_unanswered)
        latest = std::max(latest, unanswered.until);
    return latest;
}

/// With nothing polled, the driver answers 0 once after some writes or one-shot reads in a row, and
/// goes on when asked again.
bool ExchangeMachine::chooseRequest(qint64 now)
{
    if (m_driver.getSendFrame(&m_frame) == 0 && m_driver.getSendFrame(&m_frame) == 0) return false;
    m_request = QByteArray(reinterpret_cast<const char*>(m_frame.sendBuf), m_frame.sendLen);
    m_received.clear();
    m_doubtful = RECOGNISED();
    m_isWorthAsking = false;
    m_heard = false;
    m_isPending = false;
    if (m_request.isEmpty()) {
        finish(QByteArray(), 0, NO_ANSWER);
        return true;
    }
    m_signature = replySignature(m_request, m_frame.recvLen);
    m_deadline = std::max(now, earliestSend()) + m_times.answer;
    m_state = WAITING_FOR_SILENCE;
    return true;
}

/// The silent interval; and unless the very same request is repeated, the time in which an answer
/// to an earlier request of the same shape may still come.
qint64 ExchangeMachine::earliestSend() const
{
    qint64 earliest = m_lineBusyUntil + m_timing.silentInterval();
    if (m_retrying) return earliest;
    for (const UNANSWERED& unanswered : m_unanswered) {
        if (unanswered.signature == m_signature) earliest = std::max(earliest, unanswered.until);
    }
    return earliest;
}

void ExchangeMachine::send(qint64 now)
{
    const qint64 sent = now + m_timing.frame(int(m_request.size()));
    m_lineBusyUntil = sent;
    m_sentAt = sent;
    if (m_frame.recvLen <= 0) {
        m_deadline = sent + m_times.turnaround;
        m_state = PAUSING;
        return;
    }
    const qint64 wait = m_times.answer + m_timing.frame(m_frame.recvLen);
    m_deadline = sent + wait;
    forgetExpired(now);
    m_unanswered.push_back({m_signature, m_deadline, m_deadline + wait, false});
    m_state = WAITING_FOR_REPLY;
}

/// The time at which the present state is over.
qint64 ExchangeMachine::dueTime() const
{
    switch (m_state) {
    case WAITING_FOR_SILENCE:
        return std::min(earliestSend(), m_deadline);
    case DRAINING:
        return std::min(m_lineBusyUntil + m_timing.silentInterval(), m_deadline);
    default:
        return m_deadline;
    }
}

ExchangeMachine::Step ExchangeMachine::advance(qint64 now)
{
    Step step;
    step.wakeAt = now;
    if (m_state == CHOOSING) {
        step.idle = !chooseRequest(now);
        if (m_state == CHOOSING) return step;
    }
    if (m_state == WAITING_FOR_REPLY && now >= m_deadline) {
        m_state = DRAINING;
        m_deadline = now + m_times.answer;
    }
    if (now < dueTime()) {
        step.wakeAt = dueTime();
    } else if (m_state == WAITING_FOR_SILENCE && now >= earliestSend()) {
        send(now);
        step.send = m_request;
        step.wakeAt = m_deadline;
    } else {
        finishWithoutAnswer();
    }
    return step;
}
