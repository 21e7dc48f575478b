#include "session/driverFeeder.h"

#include <algorithm>
#include <utility>

namespace {

enum { PROBES_IN_A_HOLD = 4 };

/// Brings the next call forward to `due`; empty: nothing is due.
void wakeBy(const std::optional<qint64>& due, qint64 now, ExchangeMachine::Step& step)
{
    if (!due) return;
    const qint64 wakeAt = std::max(*due, now);
    step.wakeAt = step.isIdle ? wakeAt : std::min(step.wakeAt, wakeAt);
    step.isIdle = false;
}

} // namespace

DriverFeeder::DriverFeeder(StartedDriver& driver, const LineTiming& timing,
                           const ExchangeMachine::Settings& settings, SessionSink& sink,
                           qint64 hold, std::optional<qint64> longestPause)
    : m_driver(driver),
      m_sink(sink),
      m_exchange(driver, timing, settings,
                 [this](const FRAME_PRO& frame) { return isPointless(frame); }),
      m_stations(settings.answer, longestPause),
      m_held(hold),
      m_probePause(std::min(settings.answer, hold / PROBES_IN_A_HOLD)),
      m_answered(sink),
      m_cyclic(driver, [this](int station) { return m_stations.isPolled(station); }),
      m_values(driver, m_polled, sink),
      m_recipes(driver, sink),
      m_isEchoTold(settings.echo == ECHO_PRESENT)
{
}

void DriverFeeder::poll(std::vector<Tag> tags, std::vector<ReadBlock> blocks, qint64 pace)
{
    m_cyclic.start(blocks, pace);
    know(std::move(tags), std::move(blocks));
    m_isPolling = true;
    m_areStationsNew = true;
}

void DriverFeeder::know(std::vector<Tag> tags, std::vector<ReadBlock> blocks)
{
    m_values.reset(tags.size());
    m_answered.set(tags);
    m_polled.set(std::move(tags), std::move(blocks));
}

void DriverFeeder::addWrite(int job, const std::vector<ElementWrite>& elements)
{
    m_writes.add(job, elements);
}

void DriverFeeder::addRead(int job, const std::vector<ReadBlock>& blocks)
{
    m_reads.add(job, blocks);
}

void DriverFeeder::addRecipe(const RecipeJob& recipe)
{
    m_recipes.add(recipe);
}

ExchangeMachine::Step DriverFeeder::advance(qint64 now)
{
    feed(now);
    const bool wasBetweenRequests = m_exchange.isBetweenRequests();
    ExchangeMachine::Step step = m_exchange.advance(now);
    if (wasBetweenRequests && !m_exchange.isBetweenRequests()) noteBegun(now);
    takeFinished(now);
    const bool isIdle = step.isIdle;
    wakeBy(m_held.nextEnd(), now, step);
    if (!isIdle) return step;
    wakeBy(m_stations.nextProbe(), now, step);
    wakeBy(m_cyclic.nextAt(), now, step);
    return step;
}

void DriverFeeder::received(const QByteArray& bytes, qint64 now)
{
    m_exchange.received(bytes, now);
    takeFinished(now);
}

void DriverFeeder::linkLost(const QString& trouble, qint64 now)
{
    m_exchange.linkLost();
    m_sink.tagsBad(m_polled.allTags(), trouble, now);
}

void DriverFeeder::linkBack(qint64 now)
{
    m_exchange.linkOpened(now);
    m_stations.startAnew(now);
    m_held.clear();
    m_cyclic.startAnew();
    m_values.distrust();
}

void DriverFeeder::endJobs(const QString& why, qint64 now)
{
    const std::vector<ElementWrite> unfinished = m_writes.outstandingWrites();
    dropJobs(why);
    m_exchange.giveUpAll();
    m_cyclic.givenUp();
    m_hasBegun = false;
    m_values.tell(m_values.takeChanged(nullptr), now);
    for (const ElementWrite& write : unfinished)
        m_values.givenUp(write.station, write.area, write.number, now);
}

void DriverFeeder::dropJobs(const QString& why)
{
    const FRAME_PRO* frame = m_exchange.isBetweenRequests() ? nullptr : &m_exchange.frame();
    const int timesSent = frame != nullptr ? m_exchange.timesSent() : 0;
    const bool isOfJob = frame != nullptr && !m_recipes.isUnderWay() && isWrite(*frame);
    m_recipes.dropAll(why, frame, timesSent);
    m_writes.dropAll(why, [=](int station, const QString& area, int number) {
        const bool isOfFrame = isOfJob && frame->var.station == station &&
                               frame->var.regName == area && frame->var.addr == number;
        return isOfFrame ? timesSent : 0;
    });
    m_reads.dropAll(why);
    reportEnded();
}

/// A recipe's frames are always sent: a recipe is transferred as a whole, or the driver ends it.
bool DriverFeeder::isPointless(const FRAME_PRO& frame) const
{
    if (m_recipes.isUnderWay()) return false;
    const int station = frame.var.station;
    return m_stations.isSilent(station) || (isWrite(frame) && m_writes.isComingBack(station));
}

/// Writes and reads may be queued while the driver has a request under way. The polled block and
/// the recipe flags may change only between two requests.
void DriverFeeder::feed(qint64 now)
{
    if (std::exchange(m_areStationsNew, false)) expectStations(now);
    feedHeldWrites(now);
    feedProbes(now);
    feedWrites(now);
    feedReads();
    if (!m_exchange.isBetweenRequests()) return;
    if (m_isPolling) m_cyclic.handIn(now);
    m_recipes.feed([this](int station) { return m_held.isHeld(station); });
}

/// Ends the writes whose hold is over. Probes the stations for which writes still wait.
void DriverFeeder::feedHeldWrites(qint64 now)
{
    for (const int station : m_held.takeOver(now))
        failWaitingWrites(station);
    for (const int station : m_held.stations()) {
        if (m_writes.hasWaiting(station) || m_recipes.hasWaiting(station))
            m_stations.hurry(station, now + m_probePause);
    }
}

void DriverFeeder::expectStations(qint64 now)
{
    for (const int station : m_polled.stations())
        m_stations.expect(station, now);
}

/// Starts one probe at a time: the result of a probe decides when the next probe is due.
void DriverFeeder::feedProbes(qint64 now)
{
    if (!m_exchange.isFree()) return;
    if (const std::optional<StationWatch::Probe> probe = m_stations.takeDueProbe(now))
        m_exchange.probe(probe->station, probe->wait);
}

void DriverFeeder::feedReads()
{
    const std::optional<OneShotReads::Read> read = m_reads.start();
    if (read) m_driver.queueRead(PolledTags::oneShotKeyOf(read->block));
}

/// Writes are held back while a one-shot read is under way, because the driver serves its queued
/// writes first and the read would wait. Between two reads the waiting writes go first.
void DriverFeeder::feedWrites(qint64 now)
{
    if (m_reads.isUnderWay()) return;
    const auto isHeld = [this](int station) { return m_held.isHeld(station); };
    while (const std::optional<ElementWrite> write = m_writes.takeNext(isHeld)) {
        m_driver.queueWrite(write->station, write->area, write->number, write->bytes);
        m_values.toBeWritten(write->station, write->area, write->number, now);
    }
}
