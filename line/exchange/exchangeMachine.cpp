#include "exchange/exchangeMachine.h"

#include "exchange/longerRead.h"
#include "wire/frameShape.h"
#include "wire/replyFrames.h"
#include "wire/timeUnits.h"

#include <limits>

namespace {

const qint64 LONG_AGO = std::numeric_limits<qint64>::min() / 2;
const qint64 NOTED = std::numeric_limits<qint64>::max();
// A plan of one block repeats the same read. One register more costs two bytes on a line, and
// nothing on a network; a fence costs a whole exchange. So the same read may be repeated for these
// times.
const qint64 ALIKE_FOR = 100 * MILLISECOND;
const qint64 ALIKE_WITHOUT_FENCE = SECOND;

enum { MOST_FENCES = 4 }; // ahead of one attempt of a request

ExchangeMachine::Step nothingToSend()
{
    ExchangeMachine::Step step;
    step.isFence = false;
    step.isIdle = false;
    step.wakeAt = 0;
    return step;
}

} // namespace

ExchangeMachine::ExchangeMachine(const LineTiming& timing, const Settings& settings)
    : m_timing(timing),
      m_settings(settings),
      m_echo(settings.echo),
      m_state(IDLE),
      m_hasJob(false),
      m_job(),
      m_lastNumber(0),
      m_isFenceSent(false),
      m_isCopyDue(false),
      m_noise(0),
      m_sentAt(LONG_AGO),
      m_deadline(0),
      m_oldBytes(0),
      m_firstAt(0),
      m_heard(0),
      m_lineBusyUntil(LONG_AGO)
{
}

ExchangeMachine::Station& ExchangeMachine::station(int number)
{
    const std::map<int, Station>::iterator found = m_stations.find(number);
    if (found != m_stations.end()) return found->second;
    const Station made = {AnswerOrder(), AnswerTime(m_settings.answer),
                          FenceChoice(m_settings.seed + unsigned(number)), true, LONG_AGO};
    return m_stations.insert(std::make_pair(number, made)).first->second;
}

qint64 ExchangeMachine::timeOut(int number)
{
    return station(number).time.timeOut();
}

std::vector<EndedExchange> ExchangeMachine::takeEnded()
{
    std::vector<EndedExchange> ended;
    ended.swap(m_ended);
    return ended;
}

void ExchangeMachine::start(const QByteArray& request, bool isRepeat, qint64 now)
{
    const bool wasSent = isRepeat && m_job.wasSent;
    if (!isRepeat) ++m_lastNumber;
    const Job job = {frameByte(request, 0), request, m_lastNumber, 0, wasSent, 0, 0};
    begin(job, now);
}

/// Keeps wasSent: a fence may go out between two attempts of a request.
void ExchangeMachine::startFence(int number, qint64 wait, qint64 now)
{
    const Job job = {number, QByteArray(), 0, wait, m_job.wasSent, 0, 0};
    begin(job, now);
}

/// When the machine is not IDLE, it still waits for the answer to a fence: the request behind the
/// fence was answered by an earlier attempt. The new job begins after the end of that wait.
void ExchangeMachine::begin(const Job& job, qint64 now)
{
    m_job = job;
    m_hasJob = true;
    m_heard = 0;
    m_unfit.clear();
    if (m_state == IDLE) enterQuiet(now);
}

void ExchangeMachine::enterQuiet(qint64 now)
{
    m_state = QUIET;
    m_deadline = qMax(now, quietAt()) + m_settings.answer;
}

qint64 ExchangeMachine::quietAt() const
{
    return m_lineBusyUntil + m_timing.silentInterval();
}

void ExchangeMachine::linkLost()
{
    m_state = IDLE;
    m_hasJob = false;
    m_received.clear();
    m_oldBytes = 0;
}

void ExchangeMachine::linkOpened(qint64 now)
{
    m_lineBusyUntil = qMax(m_lineBusyUntil, now);
    m_echo = m_settings.echo;
    ++m_lastNumber;
    for (std::map<int, Station>::iterator at = m_stations.begin(); at != m_stations.end(); ++at)
        at->second.order.doubt(AnswerOrder::UNEXPLAINED);
}

// Sending

/// The form in which the request may go out now: unchanged, or with one register more. Empty: a
/// fence must go first.
QByteArray ExchangeMachine::requestFor(const Job& job, Station& station, qint64 now) const
{
    if (job.request.isEmpty() || !station.order.isClean()) return QByteArray();
    if (!isRead(job.request) && m_echo == ECHO_UNKNOWN) return QByteArray();
    if (station.order.mayCome(refusalSignature(job.request))) return QByteArray();
    if (!station.order.mayCome(answerSignature(job.request))) return job.request;
    if (mayBeAlike(job, station, now, m_timing.frame(1) > 0 ? ALIKE_FOR : 0)) return job.request;
    const QByteArray longer = station.takesLonger ? longerRead(job.request) : QByteArray();
    if (!longer.isEmpty()) return longer;
    return mayBeAlike(job, station, now, ALIKE_WITHOUT_FENCE) ? job.request : QByteArray();
}

/// True when the answer may look like the answer before. This is safe for up to `longest`
/// microseconds: both answer the same request, so they differ only in their age.
bool ExchangeMachine::mayBeAlike(const Job& job, const Station& station, qint64 now,
                                 qint64 longest) const
{
    return isRead(job.request) && station.order.isLast(job.request) &&
           now < station.differedAt + longest;
}

/// Sends a fence or the request of the job. Received bytes that make no frame are kept: they may be
/// the start of an answer whose rest comes late. The doubt that they cause is noted here.
void ExchangeMachine::sendNext(qint64 now, Step& step)
{
    if (!m_received.isEmpty()) noteJunk(true);
    m_firstAt = NOTED;
    if (m_job.station == BROADCAST_STATION) {
        put(m_job.request, 0, now, step);
        m_job.wasSent = true;
        m_deadline = m_sentAt + m_settings.turnaround;
        m_state = PAUSING;
        return;
    }
    Station& asked = station(m_job.station);
    const QByteArray request = requestFor(m_job, asked, now);
    if (request.isEmpty()) return sendFence(now, step);
    if (!asked.order.mayCome(answerSignature(request))) asked.differedAt = now;
    put(request, asked.time.timeOut(), now, step);
    asked.order.ask(request, m_sentAt, m_job.number,
                    m_echo == ECHO_PRESENT && isAnsweredByItself(request));
    m_job.wasSent = true;
}

void ExchangeMachine::sendFence(qint64 now, Step& step)
{
    Station& asked = station(m_job.station);
    const QByteArray fence = asked.fences.next(m_job.station, asked.order, m_job.request);
    put(fence, m_job.wait > 0 ? m_job.wait : asked.time.timeOut(), now, step);
    asked.order.ask(fence, m_sentAt, 0);
    m_isFenceSent = step.isFence = true;
}

/// Hands a frame to the caller for sending, and sets the deadline for its answer.
/// @param wait  longest time until the answer begins
void ExchangeMachine::put(const QByteArray& bytes, qint64 wait, qint64 now, Step& step)
{
    step.send = m_sent = bytes;
    m_isFenceSent = false;
    m_isCopyDue = m_settings.echo != ECHO_ABSENT;
    m_noise = 0;
    m_oldBytes = int(m_received.size());
    m_dropped.clear();
    m_sentAt = m_lineBusyUntil = now + m_timing.frame(int(bytes.size()));
    m_deadline = m_sentAt + wait + m_timing.frame(dueReplyLength(bytes));
    m_state = AWAITING;
}

// Ends

qint64 ExchangeMachine::dueTime() const
{
    return m_state == QUIET || m_state == DRAINING ? qMin(quietAt(), m_deadline) : m_deadline;
}

ExchangeMachine::Step ExchangeMachine::advance(qint64 now)
{
    Step step = nothingToSend();
    if (m_state == QUIET && now >= quietAt())
        sendNext(now, step);
    else if (m_state != IDLE && now >= dueTime())
        runOut(now);
    step.isIdle = m_state == IDLE && m_ended.empty();
    step.wakeAt = m_state == IDLE || !m_ended.empty() ? now : dueTime();
    return step;
}

/// The present state has reached its deadline.
void ExchangeMachine::runOut(qint64 now)
{
    switch (m_state) {
    case QUIET:
        m_state = IDLE;
        m_unfit = QLatin1String("the line is never quiet");
        return endJob(END_UNUSABLE);
    case AWAITING:
        m_state = DRAINING;
        m_deadline = now + m_settings.answer;
        return;
    case PAUSING:
        m_state = IDLE;
        return endJob(END_BROADCAST);
    default:
        return giveUpWaiting(now);
    }
}

/// When the station did not answer a fence and no byte came, the attempt ends. When bytes came, the
/// station or noise is there: the attempt goes on with another fence.
void ExchangeMachine::giveUpWaiting(qint64 now)
{
    m_state = IDLE;
    const int number = frameByte(m_sent, 0);
    const ExchangeEnd end = m_heard > 0 ? END_UNUSABLE : END_SILENT;
    noteUnfit();
    if (m_isFenceSent) {
        station(number).fences.failed();
        tell(true, number, end);
    }
    if (!m_hasJob) return;
    if (m_job.station != number) return enterQuiet(now);
    if (m_job.request.isEmpty())
        m_hasJob = false;
    else if (m_isFenceSent && m_heard > 0 && ++m_job.fences < MOST_FENCES)
        enterQuiet(now);
    else
        endJob(end);
}

void ExchangeMachine::endJob(ExchangeEnd end, const QByteArray& reply, qint64 replyTime,
                             qint64 asOf)
{
    const EndedExchange ended = {m_job.request.isEmpty(),
                                 m_job.station,
                                 end,
                                 m_job.wasSent,
                                 reply,
                                 replyTime,
                                 end == END_UNUSABLE ? m_unfit : QString(),
                                 asOf};
    m_ended.push_back(ended);
    m_hasJob = false;
    if (m_state == QUIET) m_state = IDLE;
}

void ExchangeMachine::tell(bool isFence, int station, ExchangeEnd end, const QByteArray& refusal)
{
    const EndedExchange ended = {
        isFence, station, end, true, refusal, NOT_KNOWN, end == END_UNUSABLE ? m_unfit : QString(),
        0};
    m_ended.push_back(ended);
}
