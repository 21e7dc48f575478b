#include "session/driverFeeder.h"

#include "plan/refusedBlock.h"
#include "session/exchangeVerdict.h"
#include "wire/frameShape.h"

#include <utility>

// The part of DriverFeeder that takes the ends of exchanges.

namespace {

/// Not for the frames of recipes.
bool isOfPolledBlock(const FRAME_PRO& frame)
{
    return !isWrite(frame) && frame.var.varId != StartedDriver::ONE_SHOT;
}

/// Of a write it is empty.
ReadBlock blockReadBy(const FRAME_PRO& frame)
{
    ReadBlock block;
    block.station = frame.var.station;
    block.area = frame.var.regName;
    block.number = frame.var.addr;
    block.count = isWrite(frame) ? 0 : frame.var.count;
    return block;
}

} // namespace

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
    m_answered.tell(finished);
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
    readBack(finished);
    const std::optional<RecipeJob> written = m_recipes.frameOver(finished);
    if (!written || !m_isPolling) return;
    for (const _RCP_VAR_PRO& record : written->records) {
        if (isBitArea(record.regName)) continue;
        VARIABLE words;
        words.station = record.station;
        words.regName = record.regName;
        words.addr = record.addr;
        words.count = record.count;
        m_reads.addAfterWrite(m_polled.wordsOf(words));
    }
}

void DriverFeeder::noteStation(const FINISHED_EXCHANGE& finished, qint64 now)
{
    const int station = finished.frame.var.station;
    if (finished.isPointless || station == BROADCAST_STATION) return;
    if (finished.result == REPLY_ACCEPTED || finished.end == END_REFUSED)
        return stationAnswered(station, now);
    if (m_stations.gaveUp(station, finished.end == END_UNUSABLE, now))
        stationWentSilent(station, noAnswerOf(station, finished.unfit), now);
}

void DriverFeeder::noteHeard(const HEARD_EXCHANGE& exchange, qint64 now)
{
    const EndedExchange& heard = exchange.ended;
    if (heard.isFence) m_sink.fenced(heard, now);
    if (heard.end == END_ANSWERED || heard.end == END_REFUSED || heard.end == END_LATE)
        return stationAnswered(heard.station, now);
    if (exchange.isOfRequest || m_stations.isPolled(heard.station)) return;
    if (m_stations.gaveUp(heard.station, heard.end == END_UNUSABLE, now))
        stationWentSilent(heard.station, noAnswerOf(heard.station, heard.unfit), now);
    else if (m_stations.isSilent(heard.station)) // tags may still name an earlier loss of the link
        m_sink.tagsBad(m_polled.tagsOfStation(heard.station),
                       noAnswerOf(heard.station, heard.unfit), now);
}

void DriverFeeder::stationAnswered(int station, qint64 now)
{
    m_held.answered(station);
    if (!m_stations.answered(station)) return;
    m_sink.stationChanged(station, true, QString(), now);
    m_cyclic.stationCameBack(station);
    m_values.distrust();
}

void DriverFeeder::stationWentSilent(int station, const QString& trouble, qint64 now)
{
    m_sink.stationChanged(station, false, trouble, now);
    m_sink.tagsBad(m_polled.tagsOfStation(station), trouble, now);
    m_held.silent(station, now);
    if (!m_held.isHeld(station)) failWaitingWrites(station);
}

void DriverFeeder::failWaitingWrites(int station)
{
    m_writes.failWaiting(station, unsentToSilent(station));
    m_recipes.failWaiting(station);
}

/// Reads the words of a write when its end does not tell the tags' values: when it wrote a part of
/// a tag, and when the PLC may have executed a write that failed. A tag of the rate once would show
/// its old value for ever. A bit that is shown through its word is read with the word.
void DriverFeeder::readBack(const FINISHED_EXCHANGE& finished)
{
    if (!m_isPolling) return;
    const AnsweredTags::Touched touched = m_answered.touchedBy(finished.frame);
    if (touched == AnsweredTags::NO_TAG) return;
    const VARIABLE& var = finished.frame.var;
    const bool isDone = finished.result == REPLY_ACCEPTED;
    const bool isOpen = !isDone && writeEndOf(finished).execution == JobEnd::MAYBE_EXECUTED;
    const bool isPart =
        isDone && (touched == AnsweredTags::PARTS_OF_TAGS || m_polled.wordOfBit(var));
    if (isOpen || isPart) m_reads.addAfterWrite(m_polled.wordsOf(var));
}

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
    readBack(finished);
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
    if (finished.result == REPLY_ACCEPTED) {
        m_reads.done(value(block.station, block.area, block.number, block.count));
        m_values.read(block.tags, false, now);
        m_values.readBesides(block, now);
        return;
    }
    m_reads.failed(outcomeOf(finished), m_driver.placesText(finished.frame.var),
                   troubleOf(finished));
    if (!m_isPolling) // else the tags show the result of their own polls
        m_sink.tagsBad(block.tags, troubleOf(finished), now);
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
    else if (finished.end == END_REFUSED || m_stations.isSilent(block.station))
        m_sink.tagsBad(block.tags, troubleOf(finished), now);
    else
        m_sink.tagsUnanswered(block.tags, troubleOf(finished), now);
}

void DriverFeeder::reportEnded()
{
    for (const JobEnd& end : m_writes.takeEnded())
        m_sink.jobEnded(end);
    for (const JobEnd& end : m_reads.takeEnded())
        m_sink.jobEnded(end);
}
