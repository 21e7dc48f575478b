#include "exchange/exchangeMachine.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace {

const qint64 NO_ANSWER = -1;

const int MOST_KEPT = 1024; // four times the longest frame, so that chatter takes no memory

const int MOST_STRETCHED = 8; // the time-out, by answers that come after it

const int LONGEST_EXCHANGE = 264; // bytes: a request and its answer of 125 words

} // namespace

ExchangeMachine::ExchangeMachine(DriverCalls& driver, const LineTiming& timing, const Times& times)
    : m_driver(driver),
      m_timing(timing),
      m_times(times),
      m_lineBusyUntil(std::numeric_limits<qint64>::min() / 2),
      m_unseen(timing)
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
    m_received = (m_received + bytes).right(MOST_KEPT);
    takeLateAnswers(now);
    if (m_state == WAITING_FOR_REPLY || m_state == DRAINING) takeReply(now);
}

void ExchangeMachine::linkLost(bool answersMayFollow)
{
    if (!answersMayFollow) m_unanswered.forgetAll();
    if (m_state == WAITING_FOR_REPLY || m_state == DRAINING) m_retrying = true;
    m_isPending = m_isPending || m_state != CHOOSING;
    m_state = CHOOSING;
    m_received.clear();
}

void ExchangeMachine::linkOpened(qint64 now)
{
    m_lineBusyUntil = std::max(m_lineBusyUntil, now);
    m_isFresh = true;
    m_unanswered.forgetExpired(now);
}

/// Those to earlier requests. Others may follow them, so the wait for silence begins anew.
void ExchangeMachine::takeLateAnswers(qint64 now)
{
    const bool isAsking = m_state == WAITING_FOR_REPLY || m_state == DRAINING;
    const QByteArray asked = isAsking ? m_signature : QByteArray();
    while (const auto late = m_unanswered.takeLate(m_received, asked, now)) {
        m_slow.note(late->took - m_timing.frame(late->length));
        m_isBehind = true;
        if (m_state == WAITING_FOR_SILENCE)
            m_deadline = std::max(m_deadline, earliestSend() + m_times.answer);
    }
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
    m_received.clear();
    if (m_unanswered.isAlone(m_signature))
        m_unseen.note(m_request.at(0), int(m_request.size() + found.reply.size()), now - m_sentAt);
    if (found.exceptionCode == 0) m_unanswered.forgetBefore(m_signature);
    m_slow.note(m_unanswered.answered(m_signature, now) - m_timing.frame(int(found.reply.size())));
    if (found.exceptionCode == 0)
        m_unanswered.settle(m_signature);
    else if (m_unanswered.until(m_signature) > now)
        m_isBehind = true; // the other attempts are refused as well, and refusals look alike
    // What has no line of its own may answer sooner than a wire could carry the request.
    finish(found.reply, found.exceptionCode, std::max<qint64>(now - m_sentAt, 0));
}

/// A refusal names only station and function. What the station has granted once, it hardly refuses
/// at another attempt: that is reckoned with for no longer than that attempt's time-out.
bool ExchangeMachine::mayBeRefused(const SENT_ATTEMPT& other, qint64 now) const
{
    return now < (other.settled ? other.timeOut : other.until) && other.signature != m_signature &&
           other.signature.left(2) == m_signature.left(2);
}

bool ExchangeMachine::mayRefuseAnother(qint64 now) const
{
    const std::vector<SENT_ATTEMPT>& all = m_unanswered.attempts();
    return std::any_of(all.begin(), all.end(),
                       [this, now](const SENT_ATTEMPT& u) { return mayBeRefused(u, now); });
}

/// A station that left an earlier request without any answer may be slow, and this one's answer
/// late as well. Otherwise an answer to both would have come by the time-out of the earlier
/// attempt.
void ExchangeMachine::noteDoubtful(const RECOGNISED& refusal, qint64 now)
{
    m_doubtful = refusal;
    m_isWorthAsking = false;
    qint64 latest = now;
    for (const SENT_ATTEMPT& other : m_unanswered.attempts()) {
        if (!mayBeRefused(other, now)) continue;
        if (!other.settled) m_isWorthAsking = true;
        latest = std::max(latest, other.timeOut);
    }
    if (!m_isWorthAsking) m_deadline = std::min(m_deadline, latest);
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
    m_unanswered.settle(m_signature);
}

/// With nothing polled, the driver answers 0 once after some writes or one-shot reads in a row, and
/// goes on when asked again.
bool ExchangeMachine::chooseRequest(qint64 now)
{
    if (m_driver.getSendFrame(&m_frame) == 0 && m_driver.getSendFrame(&m_frame) == 0) return false;
    m_request = QByteArray(reinterpret_cast<const char*>(m_frame.sendBuf), m_frame.sendLen);
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

qint64 ExchangeMachine::silence() const
{
    return m_isFresh ? std::max(m_timing.silentInterval(), m_times.opening)
                     : m_timing.silentInterval();
}

/// How long an answer's begin is waited for: a quarter more than slow ones took lately.
qint64 ExchangeMachine::answerTime() const
{
    const qint64 longest = MOST_STRETCHED * m_times.answer + m_timing.unseenFrame(LONGEST_EXCHANGE);
    return std::clamp(m_slow.secondSlowest() * 5 / 4, m_times.answer, longest);
}

/// The silence; and unless the very same request is repeated, the time in which an answer to an
/// earlier request of the same shape may still come.
qint64 ExchangeMachine::earliestSend() const
{
    const qint64 quiet = m_lineBusyUntil + silence();
    if (m_retrying) return quiet;
    return std::max(quiet, m_isBehind ? m_unanswered.until() : m_unanswered.until(m_signature));
}

void ExchangeMachine::send(qint64 now)
{
    const qint64 sent = now + m_timing.frame(int(m_request.size()));
    m_lineBusyUntil = sent;
    m_sentAt = sent;
    // An answer to this request that a time-out cut in two is still wanted.
    if (!m_retrying || m_isFresh) m_received.clear();
    m_isFresh = false;
    if (m_unanswered.until() <= now) m_isBehind = false;
    if (m_frame.recvLen <= 0) {
        m_deadline = sent + m_times.turnaround;
        m_state = PAUSING;
        return;
    }
    const qint64 wait = answerTime() + m_timing.frame(m_frame.recvLen);
    m_deadline = sent + wait;
    if (!m_retrying) m_unanswered.forgetExpired(now);
    m_unanswered.add(m_request, m_frame.recvLen, sent, wait,
                     m_unseen.frame(m_request.at(0), int(m_request.size()) + m_frame.recvLen));
    m_state = WAITING_FOR_REPLY;
}

/// The time at which the present state is over.
qint64 ExchangeMachine::dueTime() const
{
    switch (m_state) {
    case WAITING_FOR_SILENCE:
        return std::min(earliestSend(), m_deadline);
    case DRAINING:
        return std::min(m_lineBusyUntil + silence(), m_deadline);
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
