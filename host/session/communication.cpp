#include "session/communication.h"

#include "wire/timeUnits.h"

#include <algorithm>
#include <utility>

namespace {

const qint64 FOR_EVER = -1;

enum { SHORTEST_SILENCE_MS = 2000, SILENT_TIME_OUTS = 10 };

/// Before a connection whose stations are all silent is made anew.
int firstSilenceMs(const Communication::Settings& settings)
{
    return std::max(int(SHORTEST_SILENCE_MS),
                    int(SILENT_TIME_OUTS * settings.exchange.answer / MILLISECOND));
}

} // namespace

Communication::Communication(const DriverLibrary& driver, const Settings& settings,
                             HostBoard& board)
    : m_driver(driver),
      m_settings(settings),
      m_board(board),
      m_pause(settings.firstPauseMs),
      m_longestSilence(firstSilenceMs(settings))
{
    m_reopenAfter = qint64(m_longestSilence.take()) * MILLISECOND;
    m_clock.start();
}

Communication::~Communication()
{
    m_stop = true;
    m_wait.wake();
    wait();
    // A thread that had ended before is waited for inside Qt alone, which the thread sanitizer does
    // not see; this it does.
    (void)m_hasEnded.load();
}

void Communication::start()
{
    QThread::start();
}

qint64 Communication::now() const
{
    return m_clock.nsecsElapsed() / NANOSECONDS_PER_MICROSECOND;
}

void Communication::poll(const std::vector<Tag>& tags, const std::vector<ReadBlock>& blocks)
{
    post([tags, blocks](HostSession& session) { session.poll(tags, blocks); });
}

void Communication::know(const std::vector<Tag>& tags, const std::vector<ReadBlock>& blocks)
{
    post([tags, blocks](HostSession& session) { session.know(tags, blocks); });
}

void Communication::write(int job, const std::vector<ElementWrite>& elements)
{
    post([job, elements](HostSession& session) { session.write(job, elements); });
}

void Communication::readOnce(int job, const std::vector<ReadBlock>& blocks)
{
    post([job, blocks](HostSession& session) { session.readOnce(job, blocks); });
}

void Communication::transfer(const RecipeJob& recipe)
{
    post([recipe](HostSession& session) { session.transfer(recipe); });
}

void Communication::post(Work work)
{
    {
        const std::lock_guard<std::mutex> lock(m_workMutex);
        m_work.push_back(std::move(work));
    }
    m_wait.wake();
}

void Communication::takeWork(HostSession& session)
{
    std::vector<Work> work;
    {
        const std::lock_guard<std::mutex> lock(m_workMutex);
        std::swap(work, m_work);
    }
    for (const Work& one : work)
        one(session);
}

void Communication::run()
{
    WakeableWait::makePunctual();
    runUntilStopped();
    m_hasEnded = true;
}

void Communication::runUntilStopped()
{
    DriverSession driver(m_driver, m_settings.attempts);
    HostSession session(driver, m_settings.timing, m_settings.exchange, m_board);
    takeWork(session); // the tags: a first opening that fails marks them
    while (!m_stop)
        runOnce(session);
}

/// From one opening of the link to its loss.
void Communication::runOnce(HostSession& session)
{
    try {
        const std::unique_ptr<Link> link = m_settings.openLink();
        m_lossTold = false;
        m_lastHeard = now();
        m_board.linkChanged(true, QString(), now());
        session.linkBack(now());
        exchange(session, *link);
    } catch (const LinkError& error) {
        if (!std::exchange(m_lossTold, true)) {
            const QString trouble = QString::fromUtf8(error.what());
            const qint64 lostAt = now();
            session.linkLost(QLatin1String("link lost: ") + trouble, lostAt);
            m_board.linkChanged(false, trouble, lostAt);
        }
        pauseAfterLoss(session);
    }
}

/// Jobs that come meanwhile only queue up.
void Communication::pauseAfterLoss(HostSession& session)
{
    const qint64 end = now() + qint64(m_pause.take()) * MILLISECOND;
    while (!m_stop && now() < end) {
        takeWork(session);
        m_wait.wait(-1, end - now());
    }
}

void Communication::exchange(HostSession& session, Link& link)
{
    while (!m_stop) {
        takeWork(session);
        const ExchangeMachine::Step step = session.advance(now());
        if (!step.send.isEmpty()) send(link, step);
        const qint64 left = step.isIdle ? FOR_EVER : std::max<qint64>(step.wakeAt - now(), 0);
        if (m_wait.wait(link.descriptor(), left)) receive(session, link);
        if (m_settings.reopensWhenSilent) reopenWhenSilent(session);
    }
}

/// A peer that keeps the connection and says nothing may be mended by a new one. One that is only
/// late loses its answers by that, so each time it may be silent for longer.
void Communication::reopenWhenSilent(const HostSession& session)
{
    if (!session.areAllSilent() || now() < m_lastHeard + m_reopenAfter) return;
    m_reopenAfter = qint64(m_longestSilence.take()) * MILLISECOND;
    throw LinkError("no station answers any more; it is connected anew");
}

void Communication::send(Link& link, const ExchangeMachine::Step& step)
{
    const qint64 start = now();
    link.write(step.send);
    m_board.frame(step.isFence ? FrameRecord::SENT_FENCE : FrameRecord::SENT, step.send, start);
    takeWire(start, start + m_settings.timing.frame(int(step.send.size())));
}

void Communication::receive(HostSession& session, Link& link)
{
    const QByteArray bytes = link.read();
    if (bytes.isEmpty()) return;
    const qint64 end = now();
    m_pause.startAnew();
    m_longestSilence.startAnew();
    m_lastHeard = end;
    m_reopenAfter = qint64(m_longestSilence.take()) * MILLISECOND;
    m_board.frame(FrameRecord::RECEIVED, bytes, end);
    takeWire(end - m_settings.timing.frame(int(bytes.size())), end);
    session.received(bytes, end);
}

/// A frame on a wire, with the silence ahead of it. A network has no wire of its own.
void Communication::takeWire(qint64 from, qint64 until)
{
    const qint64 silence = m_settings.timing.silentInterval();
    if (silence > 0) m_board.wireTaken(from - silence, until);
}
