#include "session/driverFeeder.h"

#include "session/exchangeVerdict.h"
#include "wire/frameShape.h"

#include <algorithm>
#include <utility>

namespace {

QString silenceOf(int station)
{
    return QString(QLatin1String("station %1 does not answer")).arg(station);
}

} // namespace

DriverFeeder::DriverFeeder(StartedDriver& driver, const LineTiming& timing,
                           const ExchangeMachine::Settings& settings, SessionSink& sink)
    : m_driver(driver),
      m_sink(sink),
      m_exchange(driver, timing, settings,
                 [this](const FRAME_PRO& frame) { return isPointless(frame); }),
      m_stations(settings.answer),
      m_values(driver, m_polled, sink),
      m_recipes(driver, sink),
      m_isEchoTold(settings.echo == ECHO_PRESENT)
{
}

void DriverFeeder::poll(std::vector<Tag> tags, std::vector<ReadBlock> blocks)
{
    know(std::move(tags), std::move(blocks));
    m_stationsToLayOut = m_polled.stations();
    m_isPolling = true;
    m_planDue = true;
    m_areStationsNew = true;
}

void DriverFeeder::know(std::vector<Tag> tags, std::vector<ReadBlock> blocks)
{
    m_values.reset(tags.size());
    m_polled.set(std::move(tags), std::move(blocks));
}

/// The driver keeps the units when the next station's blocks replace the blocks, so plan() finds
/// them there.
bool DriverFeeder::layOutNext()
{
    if (m_stationsToLayOut.empty()) return false;
    const int next = *m_stationsToLayOut.begin();
    m_stationsToLayOut.erase(next);
    m_driver.poll(m_polled.keys([next](int station) { return station == next; }));
    return true;
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
    ExchangeMachine::Step step = m_exchange.advance(now);
    takeFinished(now);
    const std::optional<qint64> probe = m_stations.nextProbe();
    if (step.isIdle && probe) {
        step.isIdle = false;
        step.wakeAt = std::max(*probe, now);
    }
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
    m_planDue = true;
}

/// A recipe's frames are always sent: a recipe is transferred as a whole, or the driver ends it.
bool DriverFeeder::isPointless(const FRAME_PRO& frame) const
{
    return !m_recipes.isUnderWay() && m_stations.isSilent(frame.var.station);
}

/// Writes and reads may be queued while the driver has a request under way. The plan and the recipe
/// flags may change only between two requests. The plan waits for the probes, which go ahead of all
/// requests: at the start every station's answer changes the plan.
void DriverFeeder::feed(qint64 now)
{
    if (std::exchange(m_areStationsNew, false)) expectStations(now);
    feedProbes(now);
    feedWrites();
    feedReads();
    if (!m_exchange.isBetweenRequests()) return;
    if (m_planDue && m_exchange.isFree()) plan();
    m_recipes.feed();
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
void DriverFeeder::feedWrites()
{
    if (m_reads.isUnderWay()) return;
    while (const std::optional<ElementWrite> write = m_writes.takeNext())
        m_driver.queueWrite(write->station, write->area, write->number, write->bytes);
}

/// A block that was not polled may have changed without a change callback, so all shown values are
/// fetched again.
void DriverFeeder::plan()
{
    m_planDue = false;
    if (!m_isPolling) return;
    m_values.distrust();
    m_driver.poll(m_polled.keys([this](int station) { return m_stations.isPolled(station); }));
}

void DriverFeeder::takeFinished(qint64 now)
{
    const std::set<int> changed = m_values.takeChanged();
    for (const FINISHED_EXCHANGE& finished : m_exchange.takeFinished())
        exchangeOver(finished, now);
    m_values.tell(changed, now);
    for (const HEARD_EXCHANGE& heard : m_exchange.takeHeard())
        noteHeard(heard, now);
    if (m_exchange.echo() == ECHO_PRESENT && !std::exchange(m_isEchoTold, true)) m_sink.echoFound();
    reportEnded();
}

void DriverFeeder::exchangeOver(const FINISHED_EXCHANGE& finished, qint64 now)
{
    if (!finished.isPointless) m_sink.exchanged(finished, now);
    if (finished.result == REPLY_RETRY) return;
    noteStation(finished, now);
    if (m_recipes.isUnderWay())
        recipeOver(finished);
    else if (finished.frame.itemCount == 0)
        writeOver(finished, now);
    else if (finished.frame.var.varId == StartedDriver::ONE_SHOT)
        readOver(finished, now);
    else
        blockOver(finished, now);
}

/// Reads the words of a downloaded recipe: the driver's cache does not take up a recipe's values.
void DriverFeeder::recipeOver(const FINISHED_EXCHANGE& finished)
{
    const std::optional<RecipeJob> written = m_recipes.frameOver(finished);
    if (!written || !m_isPolling) return;
    for (const _RCP_VAR_PRO& record : written->records) {
        if (isBitArea(record.regName)) continue;
        ReadBlock block;
        block.station = record.station;
        block.area = record.regName;
        block.number = record.addr;
        block.count = record.count;
        m_reads.add(OneShotReads::NO_JOB, {block});
    }
}

void DriverFeeder::noteStation(const FINISHED_EXCHANGE& finished, qint64 now)
{
    const int station = finished.frame.var.station;
    if (finished.isPointless || station == BROADCAST_STATION) return;
    if (finished.result == REPLY_ACCEPTED || finished.end == END_REFUSED)
        return stationAnswered(station);
    if (m_stations.gaveUp(station, finished.end == END_UNUSABLE, now))
        stationWentSilent(station, now);
}

void DriverFeeder::noteHeard(const HEARD_EXCHANGE& exchange, qint64 now)
{
    const EndedExchange& heard = exchange.ended;
    if (heard.isFence) m_sink.fenced(heard, now);
    if (heard.end == END_ANSWERED || heard.end == END_REFUSED || heard.end == END_LATE)
        return stationAnswered(heard.station);
    if (exchange.isOfRequest || m_stations.isPolled(heard.station)) return;
    if (m_stations.gaveUp(heard.station, heard.end == END_UNUSABLE, now))
        stationWentSilent(heard.station, now);
    else if (m_stations.isSilent(heard.station)) // tags may still name an earlier loss of the link
        m_sink.tagsBad(m_polled.tagsOfStation(heard.station), silenceOf(heard.station), now);
}

void DriverFeeder::stationAnswered(int station)
{
    if (m_stations.answered(station)) m_planDue = true;
}

void DriverFeeder::stationWentSilent(int station, qint64 now)
{
    const QString trouble = silenceOf(station);
    m_planDue = true;
    m_sink.tagsBad(m_polled.tagsOfStation(station), trouble, now);
    m_writes.failWaiting(station, trouble);
}

QString DriverFeeder::blockTroubleOf(const FINISHED_EXCHANGE& finished) const
{
    return m_driver.placesText(finished.frame.var) + QLatin1String(": ") + troubleOf(finished);
}

/// After the write of a bit that is shown through its word, the word is read.
void DriverFeeder::writeOver(const FINISHED_EXCHANGE& finished, qint64 now)
{
    const VARIABLE& var = finished.frame.var;
    const bool done = finished.result == REPLY_ACCEPTED;
    m_writes.ended(var.station, var.regName, var.addr, outcomeOf(finished),
                   done ? QString() : troubleOf(finished));
    m_values.written(var, now);
    if (!done || !m_isPolling) return;
    if (const std::optional<ReadBlock> word = m_polled.wordOfBit(var)) m_reads.addAfterWrite(*word);
}

void DriverFeeder::readOver(const FINISHED_EXCHANGE& finished, qint64 now)
{
    const bool done = finished.result == REPLY_ACCEPTED;
    m_reads.ended(outcomeOf(finished), done ? QString() : blockTroubleOf(finished));
    const int block = m_polled.blockOf(finished.frame.var);
    if (block < 0) return;
    if (done)
        m_values.blockRead(block, m_isPolling, now);
    else if (!m_isPolling) // else the tags show the result of their own polls
        m_sink.tagsBad(m_polled.block(block).tags, troubleOf(finished), now);
}

void DriverFeeder::blockOver(const FINISHED_EXCHANGE& finished, qint64 now)
{
    const int block = m_polled.blockOf(finished.frame.var);
    if (block < 0) return;
    // The PLC may have refused only the spare word behind the tags.
    if (finished.end == END_REFUSED && m_polled.dropSpare(block)) {
        m_planDue = true;
        return;
    }
    if (finished.result == REPLY_ACCEPTED)
        m_values.blockRead(block, m_isPolling, now);
    else
        m_sink.tagsBad(m_polled.block(block).tags, troubleOf(finished), now);
}

void DriverFeeder::reportEnded()
{
    for (const JobEnd& end : m_writes.takeEnded())
        m_sink.jobEnded(end);
    for (const JobEnd& end : m_reads.takeEnded())
        m_sink.jobEnded(end);
}
