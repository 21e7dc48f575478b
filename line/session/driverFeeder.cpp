#include "session/driverFeeder.h"

#include "plan/refusedBlock.h"
#include "session/exchangeVerdict.h"
#include "wire/frameShape.h"

#include <algorithm>
#include <utility>

namespace {

enum { PROBES_IN_A_HOLD = 4 };

/// Not for the frames of recipes.
bool isOfPolledBlock(const FRAME_PRO& frame)
{
    return frame.itemCount != 0 && frame.var.varId != StartedDriver::ONE_SHOT;
}

/// Of a write it is empty.
ReadBlock blockReadBy(const FRAME_PRO& frame)
{
    ReadBlock block;
    block.station = frame.var.station;
    block.area = frame.var.regName;
    block.number = frame.var.addr;
    block.count = frame.itemCount == 0 ? 0 : frame.var.count;
    return block;
}

bool isWrite(const FRAME_PRO& frame)
{
    return frame.itemCount == 0;
}

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
                           qint64 hold)
    : m_driver(driver),
      m_sink(sink),
      m_exchange(driver, timing, settings,
                 [this](const FRAME_PRO& frame) { return isPointless(frame); }),
      m_stations(settings.answer),
      m_held(hold),
      m_probePause(std::min(settings.answer, hold / PROBES_IN_A_HOLD)),
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

/// A request of the driver has begun. The schedule counts from the begin of a polled block.
void DriverFeeder::noteBegun(qint64 now)
{
    if (m_recipes.isUnderWay() || !isOfPolledBlock(m_exchange.frame())) return;
    m_hasBegun = true;
    m_cyclic.begun(now);
}

void DriverFeeder::takeFinished(qint64 now)
{
    const std::vector<FINISHED_EXCHANGE> over = m_exchange.takeFinished();
    const ReadBlock read = over.empty() ? ReadBlock() : blockReadBy(over.back().frame);
    const std::set<int> changed = m_values.takeChanged(&read);
    for (const FINISHED_EXCHANGE& finished : over)
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
    else if (isWrite(finished.frame))
        writeOver(finished, now);
    else if (isOfPolledBlock(finished.frame))
        blockOver(finished, now);
    else
        readOver(finished, now);
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
        block = m_polled.withWholeTags(block);
        block.tags = m_polled.tagsIn(block);
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
        stationWentSilent(station, noAnswerOf(station, finished.unfit), now);
}

void DriverFeeder::noteHeard(const HEARD_EXCHANGE& exchange, qint64 now)
{
    const EndedExchange& heard = exchange.ended;
    if (heard.isFence) m_sink.fenced(heard, now);
    if (heard.end == END_ANSWERED || heard.end == END_REFUSED || heard.end == END_LATE)
        return stationAnswered(heard.station);
    if (exchange.isOfRequest || m_stations.isPolled(heard.station)) return;
    if (m_stations.gaveUp(heard.station, heard.end == END_UNUSABLE, now))
        stationWentSilent(heard.station, noAnswerOf(heard.station, heard.unfit), now);
    else if (m_stations.isSilent(heard.station)) // tags may still name an earlier loss of the link
        m_sink.tagsBad(m_polled.tagsOfStation(heard.station),
                       noAnswerOf(heard.station, heard.unfit), now);
}

void DriverFeeder::stationAnswered(int station)
{
    m_held.answered(station);
    if (!m_stations.answered(station)) return;
    m_cyclic.stationCameBack(station);
    m_values.distrust();
}

void DriverFeeder::stationWentSilent(int station, const QString& trouble, qint64 now)
{
    m_sink.tagsBad(m_polled.tagsOfStation(station), trouble, now);
    m_held.silent(station, now);
    if (!m_held.isHeld(station)) failWaitingWrites(station);
}

void DriverFeeder::failWaitingWrites(int station)
{
    m_writes.failWaiting(station, unsentToSilent(station));
    m_recipes.failWaiting(station);
}

QString DriverFeeder::blockTroubleOf(const FINISHED_EXCHANGE& finished) const
{
    return m_driver.placesText(finished.frame.var) + QLatin1String(": ") + troubleOf(finished);
}

/// After the write of a bit that is shown through its word, the word is read.
void DriverFeeder::writeOver(const FINISHED_EXCHANGE& finished, qint64 now)
{
    const VARIABLE& var = finished.frame.var;
    const bool isUnsent = finished.isPointless && finished.timesSent == 0;
    const bool waits = m_held.isHeld(var.station) || m_writes.isComingBack(var.station);
    if (isUnsent && waits)
        m_writes.putBack(var.station, var.regName, var.addr);
    else
        m_writes.ended(var.station, var.regName, var.addr, writeEndOf(finished));
    m_values.written(var, now);
    if (finished.result != REPLY_ACCEPTED || !m_isPolling) return;
    const std::optional<ReadBlock> word = m_polled.wordOfBit(var);
    if (word) m_reads.addAfterWrite(*word);
}

/// The blocks to read instead of a refused block; empty: the refusal stands.
std::vector<ReadBlock> DriverFeeder::partsInstead(const ReadBlock& block,
                                                  const FINISHED_EXCHANGE& finished) const
{
    if (finished.result == REPLY_ACCEPTED || finished.end != END_REFUSED) return {};
    if (!isSplitByException(finished.exceptionCode) && block.spare == 0) return {};
    return partsOfRefused(block, m_polled.tags());
}

/// The read also brings units of tags that it does not read as a whole.
void DriverFeeder::readOver(const FINISHED_EXCHANGE& finished, qint64 now)
{
    if (!m_reads.isUnderWay()) return;
    const ReadBlock block = *m_reads.block();
    const std::vector<ReadBlock> parts = partsInstead(block, finished);
    if (!parts.empty()) return m_reads.split(parts);
    const bool done = finished.result == REPLY_ACCEPTED;
    m_reads.ended(outcomeOf(finished), done ? QString() : blockTroubleOf(finished));
    if (done) {
        m_values.read(block.tags, false, now);
        m_values.readBesides(block, now);
    } else if (!m_isPolling) { // else the tags show the result of their own polls
        m_sink.tagsBad(block.tags, troubleOf(finished), now);
    }
}

void DriverFeeder::blockOver(const FINISHED_EXCHANGE& finished, qint64 now)
{
    if (m_cyclic.block() == nullptr) return;
    if (!std::exchange(m_hasBegun, false)) m_cyclic.begun(now); // no frame holds it
    const ReadBlock block = *m_cyclic.block();
    const std::vector<ReadBlock> parts = partsInstead(block, finished);
    if (!parts.empty()) return m_cyclic.split(parts);
    if (finished.result == REPLY_ACCEPTED || finished.end == END_REFUSED) m_cyclic.answered();
    if (finished.result == REPLY_ACCEPTED)
        m_values.read(block.tags, true, now);
    else
        m_sink.tagsBad(block.tags, troubleOf(finished), now);
}

void DriverFeeder::reportEnded()
{
    for (const JobEnd& end : m_writes.takeEnded())
        m_sink.jobEnded(end);
    for (const JobEnd& end : m_reads.takeEnded())
        m_sink.jobEnded(end);
}
