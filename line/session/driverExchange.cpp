#include "session/driverExchange.h"

#include "wire/exceptionText.h"
#include "wire/frameShape.h"
#include "wire/replyFrames.h"
#include "wire/timeUnits.h"

#include <algorithm>
#include <utility>

namespace {

enum { FIRST_BUSY_PAUSE_MS = 100 };

QByteArray requestOf(const FRAME_PRO& frame)
{
    return QByteArray(reinterpret_cast<const char*>(frame.sendBuf), frame.sendLen);
}

} // namespace

DriverExchange::DriverExchange(StartedDriver& driver, const LineTiming& timing,
                               const ExchangeMachine::Settings& settings, IsSilent isSilent)
    : m_driver(driver),
      m_isSilent(std::move(isSilent)),
      m_machine(timing, settings),
      m_busyPause(FIRST_BUSY_PAUSE_MS)
{
}

void DriverExchange::probe(int station, qint64 wait)
{
    m_probes.push_back({station, wait});
}

std::vector<FINISHED_EXCHANGE> DriverExchange::takeFinished()
{
    return std::exchange(m_finished, {});
}

std::vector<HEARD_EXCHANGE> DriverExchange::takeHeard()
{
    return std::exchange(m_heard, {});
}

ExchangeMachine::Step DriverExchange::advance(qint64 now)
{
    const bool isPaused = now < m_pauseUntil;
    const bool isWaiting = m_machine.isFree() && (isPaused || !startNext(now));
    ExchangeMachine::Step step = m_machine.advance(now);
    if (!step.send.isEmpty() && !step.isFence) ++m_timesSent;
    takeEnded(now);
    if (!m_finished.empty() || !m_heard.empty()) {
        step.isIdle = false;
        step.wakeAt = now;
    } else if (isWaiting && isPaused && step.isIdle) {
        step.isIdle = false;
        step.wakeAt = m_pauseUntil;
    }
    return step;
}

/// @return false when no probe and no request waits
bool DriverExchange::startNext(qint64 now)
{
    if (m_isPending || m_probes.empty()) return startRequest(now);
    m_machine.startFence(m_probes.front().station, m_probes.front().wait, now);
    m_probes.erase(m_probes.begin());
    return true;
}

bool DriverExchange::startRequest(qint64 now)
{
    if (!m_driver.nextRequest(&m_frame)) return false;
    m_isPending = true;
    const QByteArray request = requestOf(m_frame);
    const bool isPointless = m_isSilent(m_frame);
    if (!request.isEmpty() && !isPointless) {
        m_machine.start(request, std::exchange(m_isRepeat, true), now);
        return true;
    }
    EndedExchange ended = {};
    ended.end = END_SILENT;
    ended.replyTime = -1;
    finish(ended, now);
    m_finished.back().isPointless = true;
    return true;
}

void DriverExchange::received(const QByteArray& bytes, qint64 now)
{
    m_machine.received(bytes, now);
    takeEnded(now);
}

void DriverExchange::linkLost()
{
    m_machine.linkLost();
    m_probes.clear();
    m_isRepeat = false;
}

void DriverExchange::giveUpAll()
{
    m_driver.giveUpAll();
    m_isPending = m_isRepeat = false;
    m_timesSent = m_refusals = 0;
}

void DriverExchange::linkOpened(qint64 now)
{
    m_machine.linkOpened(now);
}

void DriverExchange::takeEnded(qint64 now)
{
    for (const EndedExchange& ended : m_machine.takeEnded()) {
        if (ended.isFence || ended.end == END_LATE)
            m_heard.push_back({ended, m_isPending});
        else
            finish(ended, now);
    }
}

/// The driver counts attempts. When a further attempt cannot succeed, the remaining attempts are
/// used up at once by handing the same reply in again.
void DriverExchange::finish(const EndedExchange& ended, qint64 now)
{
    FINISHED_EXCHANGE finished;
    finished.frame = m_frame;
    finished.end = ended.end;
    finished.timesSent = m_timesSent;
    finished.openBefore = std::max(m_timesSent - 1 - m_refusals, 0);
    finished.reply = ended.reply;
    finished.unfit = ended.unfit;
    finished.replyTime = ended.replyTime;
    finished.asOf = ended.asOf;
    if (ended.end == END_REFUSED) finished.exceptionCode = exceptionCodeOf(ended.reply);
    const bool isNotSent = ended.station == BROADCAST_STATION && ended.end == END_SILENT;
    const bool isRefused = ended.end == END_REFUSED && !isAskedAgain(finished.exceptionCode);
    const bool isSpent = isNotSent || isRefused;
    QByteArray reply = ended.reply;
    QString errorText;
    do
        finished.result = m_driver.dealRcvFrame(reply, errorText);
    while (isSpent && finished.result == REPLY_RETRY);
    if (ended.end == END_REFUSED && !leavesOpen(finished.exceptionCode)) ++m_refusals;
    m_isRepeat = m_isPending = finished.result == REPLY_RETRY;
    if (!m_isPending) m_timesSent = m_refusals = 0;
    if (m_isPending && ended.end == END_REFUSED)
        m_pauseUntil = now + qint64(m_busyPause.take()) * MILLISECOND;
    else
        m_busyPause.startAnew();
    m_finished.push_back(finished);
}
