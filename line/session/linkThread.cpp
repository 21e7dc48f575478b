#include "session/linkThread.h"

#include "links/descriptorBytes.h"
#include "wire/timeUnits.h"

#include <algorithm>
#include <utility>

namespace {

const qint64 FOR_EVER = -1;
const qint64 LONGEST_BLIND = 100 * MILLISECOND; // see LinkThread::look()

enum { SHORTEST_SILENCE_MS = 2000, SILENT_TIME_OUTS = 10 };

/// The silence after which a connection is opened anew when all stations are silent.
int firstSilenceMs(const LinkThread::Settings& settings)
{
    return std::max(int(SHORTEST_SILENCE_MS),
                    int(SILENT_TIME_OUTS * settings.exchange.answer / MILLISECOND));
}

std::optional<qint64> longestProbePause(const LinkThread::Settings& settings)
{
    if (!settings.longestPauseMs) return std::nullopt;
    return qint64(*settings.longestPauseMs) * MILLISECOND;
}

QString lostText(const QString& trouble)
{
    return QLatin1String("link lost: ") + trouble;
}

} // namespace

LinkThread::LinkThread(const DriverLibrary& driver, const Settings& settings, LinkSink& sink)
    : m_driver(driver),
      m_settings(settings),
      m_sink(sink),
      m_pause(settings.firstPauseMs,
              settings.longestPauseMs.value_or(int(GrowingPause::LONGEST_MS))),
      m_longestSilence(firstSilenceMs(settings))
{
    m_reopenAfter = qint64(m_longestSilence.take()) * MILLISECOND;
}

LinkThread::~LinkThread()
{
    stop(QLatin1String("the host stopped"));
}

void LinkThread::askToStop(const QString& why)
{
    {
        const std::lock_guard<std::mutex> lock(m_workMutex);
        if (m_stopReason.isEmpty()) m_stopReason = why;
    }
    m_stop = true;
    m_wait.wake();
}

void LinkThread::stop(const QString& why)
{
    askToStop(why);
    wait();
    // The thread sanitizer does not see Qt's wait for a thread that has already ended. This load
    // shows it that the thread's accesses come before the destruction.
    (void)m_hasEnded.load();
}

void LinkThread::start()
{
    QThread::start();
}

qint64 LinkThread::now() const
{
    return steadyTime() - m_startedAt;
}

void LinkThread::poll(const std::vector<Tag>& tags, const std::vector<ReadBlock>& blocks,
                      qint64 pace)
{
    post([tags, blocks, pace](DriverFeeder& feeder) { feeder.poll(tags, blocks, pace); });
}

void LinkThread::know(const std::vector<Tag>& tags, const std::vector<ReadBlock>& blocks)
{
    post([tags, blocks](DriverFeeder& feeder) { feeder.know(tags, blocks); });
}

void LinkThread::write(int job, const std::vector<ElementWrite>& elements)
{
    post([job, elements](DriverFeeder& feeder) { feeder.addWrite(job, elements); });
}

void LinkThread::read(int job, const std::vector<ReadBlock>& blocks)
{
    post([job, blocks](DriverFeeder& feeder) { feeder.addRead(job, blocks); });
}

void LinkThread::transfer(const RecipeJob& recipe)
{
    post([recipe](DriverFeeder& feeder) { feeder.addRecipe(recipe); });
}

void LinkThread::post(Work work)
{
    {
        const std::lock_guard<std::mutex> lock(m_workMutex);
        m_work.push_back(std::move(work));
    }
    m_wait.wake();
}

void LinkThread::takeWork(DriverFeeder& feeder)
{
    std::vector<Work> work;
    {
        const std::lock_guard<std::mutex> lock(m_workMutex);
        std::swap(work, m_work);
    }
    for (const Work& one : work)
        one(feeder);
}

QString LinkThread::stopReason()
{
    const std::lock_guard<std::mutex> lock(m_workMutex);
    return m_stopReason;
}

void LinkThread::run()
{
    WakeableWait::makePunctual();
    runUntilStopped();
    m_hasEnded = true;
}

void LinkThread::runUntilStopped()
{
    StartedDriver driver(m_driver, m_settings.attempts);
    DriverFeeder feeder(driver, m_settings.timing, m_settings.exchange, m_sink, m_settings.hold,
                        longestProbePause(m_settings));
    while (!m_stop)
        runOnce(feeder);
    takeWork(feeder); // jobs that were handed in meanwhile end, too
    feeder.dropJobs(stopReason());
}

/// Opens the link and runs it until its loss.
void LinkThread::runOnce(DriverFeeder& feeder)
{
    takeWork(feeder); // the feeder must know the tags to mark them when the opening fails
    try {
        m_emptyAt = now();
        const std::unique_ptr<Link> link = m_settings.openLink();
        m_lossTold = false;
        m_lastHeard = now();
        m_sink.linkChanged(true, QString(), now());
        feeder.linkBack(now());
        exchange(feeder, *link);
    } catch (const LinkError& error) {
        const QString trouble = QString::fromUtf8(error.what());
        if (!std::exchange(m_lossTold, true)) {
            const qint64 lostAt = now();
            feeder.linkLost(lostText(trouble), lostAt);
            m_sink.linkChanged(false, trouble, lostAt);
        }
        pauseAfterLoss(feeder, trouble);
    }
}

/// New jobs wake the wait; they stay in the queue until the pause is over, or end at once.
void LinkThread::pauseAfterLoss(DriverFeeder& feeder, const QString& trouble)
{
    const qint64 end = now() + qint64(m_pause.take()) * MILLISECOND;
    while (!m_stop && now() < end) {
        takeWork(feeder);
        if (m_settings.jobsAtLoss == JOBS_END) feeder.endJobs(lostText(trouble), now());
        m_wait.wait(-1, end - now());
    }
}

void LinkThread::exchange(DriverFeeder& feeder, Link& link)
{
    look(feeder, link);
    while (!m_stop) {
        takeWork(feeder);
        const ExchangeMachine::Step step = feeder.advance(now());
        if (!step.send.isEmpty()) send(link, step);
        const qint64 from = now();
        qint64 left = step.isIdle ? FOR_EVER : std::max<qint64>(step.wakeAt - from, 0);
        if (feeder.hasRequest()) left = left < 0 ? LONGEST_BLIND : std::min(left, LONGEST_BLIND);
        if (m_wait.wait(link.descriptor(), left))
            receive(feeder, link);
        else
            m_emptyAt = from;
        look(feeder, link);
        if (m_settings.reopensWhenSilent) reopenWhenSilent(feeder);
    }
}

/// Looks whether bytes have come, when the last look is long ago. A process that was stopped cannot
/// tell when the bytes came that it then finds, only that they came after its last look. So a look
/// goes ahead of every request, and a wait for an answer looks again and again:
///
///     looks       |         |    |                          |
///     request     |         | R  |                          |
///     bytes       |         |      rrr                      |
///     process     [ waits   ]  [ waits ]      stopped       [ reads rrr: they are as old as that
///                                ^                            time, or younger
///                                m_emptyAt
///
/// A wake-up that the look takes is not lost: the work and the stop are looked at next.
void LinkThread::look(DriverFeeder& feeder, Link& link)
{
    const qint64 from = now();
    if (from - m_emptyAt <= LONGEST_BLIND) return;
    if (m_wait.wait(link.descriptor(), 0))
        receive(feeder, link);
    else
        m_emptyAt = from;
}

/// A new connection may help when the peer keeps the old connection but sends nothing. A peer that
/// is only late loses its answers, so the permitted silence grows with each new connection.
void LinkThread::reopenWhenSilent(const DriverFeeder& feeder)
{
    if (!feeder.areAllSilent() || now() < m_lastHeard + m_reopenAfter) return;
    m_reopenAfter = qint64(m_longestSilence.take()) * MILLISECOND;
    throw LinkError("no station answers any more; it is connected anew");
}

void LinkThread::send(Link& link, const ExchangeMachine::Step& step)
{
    const qint64 start = now();
    link.write(step.send);
    m_sink.frame(step.isFence ? FrameRecord::SENT_FENCE : FrameRecord::SENT, step.send, start);
    takeWire(start, start + m_settings.timing.frame(int(step.send.size())));
}

void LinkThread::receive(DriverFeeder& feeder, Link& link)
{
    const qint64 from = now();
    const QByteArray bytes = link.read();
    if (bytes.isEmpty()) return;
    const qint64 end = now();
    m_sink.bytesCame(m_emptyAt, end);
    if (bytes.size() < MOST_READ_AT_ONCE) m_emptyAt = from;
    m_pause.startAnew();
    m_longestSilence.startAnew();
    m_lastHeard = end;
    m_reopenAfter = qint64(m_longestSilence.take()) * MILLISECOND;
    m_sink.frame(FrameRecord::RECEIVED, bytes, end);
    takeWire(end - m_settings.timing.frame(int(bytes.size())), end);
    feeder.received(bytes, end);
}

/// Tells the sink of a frame on the wire and the silence ahead of it. A network has no wire of its
/// own.
void LinkThread::takeWire(qint64 from, qint64 until)
{
    const qint64 silence = m_settings.timing.silentInterval();
    if (silence > 0) m_sink.wireTaken(from - silence, until);
}
