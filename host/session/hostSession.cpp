#include "session/hostSession.h"

#include "session/exchangeVerdict.h"

#include <algorithm>
#include <utility>

HostSession::HostSession(DriverSession& driver, const LineTiming& timing,
                         const ExchangeMachine::Times& times, SessionSink& sink)
    : m_driver(driver),
      m_sink(sink),
      m_machine(*this, timing, times),
      m_stations(times.answer),
      m_values(driver, m_polled, sink),
      m_recipes(driver, sink)
{
}

void HostSession::poll(std::vector<Tag> tags, std::vector<ReadBlock> blocks)
{
    know(std::move(tags), std::move(blocks));
    m_isPolling = true;
    m_planDue = true;
}

void HostSession::know(std::vector<Tag> tags, std::vector<ReadBlock> blocks)
{
    m_values.reset(tags.size());
    m_polled.set(std::move(tags), std::move(blocks));
}

void HostSession::write(int job, const std::vector<ElementWrite>& elements)
{
    m_writes.add(job, elements);
}

void HostSession::readOnce(int job, const std::vector<ReadBlock>& blocks)
{
    m_reads.add(job, blocks);
}

void HostSession::transfer(const RecipeJob& recipe)
{
    m_recipes.add(recipe);
}

ExchangeMachine::Step HostSession::advance(qint64 now)
{
    feed(now);
    ExchangeMachine::Step step = m_machine.advance(now);
    takeFinished(now);
    const std::optional<qint64> probe = m_stations.nextProbe();
    if (step.idle && probe) {
        step.idle = false;
        step.wakeAt = std::max(*probe, now);
    }
    return step;
}

void HostSession::received(const QByteArray& bytes, qint64 now)
{
    m_machine.received(bytes, now);
    takeFinished(now);
}

void HostSession::linkLost(const QString& trouble, qint64 now, bool answersMayFollow)
{
    m_machine.linkLost(answersMayFollow);
    m_sink.tagsBad(m_polled.allTags(), trouble, now);
}

void HostSession::linkBack(qint64 now)
{
    m_machine.linkOpened(now);
    m_stations.probeAllAt(now);
}

int HostSession::getSendFrame(FRAME_PRO* frame)
{
    const int result = m_driver.getSendFrame(frame);
    const bool isRecipe = m_recipes.isUnderWay();
    m_isProbe = result != 0 && !isRecipe && m_reads.isProbeUnderWay() && frame->itemCount != 0 &&
                frame->var.varId == DriverSession::ONE_SHOT;
    m_isPointless =
        result != 0 && !isRecipe && !m_isProbe && m_stations.isSilent(frame->var.station);
    if (m_isPointless) frame->sendLen = 0;
    return result;
}

/// The driver counts attempts. Those that could not bring anything are spent at once.
int HostSession::dealRcvFrame(QByteArray& reply, QString& errorText)
{
    const bool spent = m_isPointless || m_isProbe || isFinalRefusal(reply);
    int result = m_driver.dealRcvFrame(reply, errorText);
    while (spent && result == REPLY_RETRY)
        result = m_driver.dealRcvFrame(reply, errorText);
    return result;
}

/// What is handed to the driver while it has a request under way is chosen from afterwards; only
/// the plan and the recipe flags must not change in between.
void HostSession::feed(qint64 now)
{
    feedProbes(now);
    feedWrites();
    feedReads();
    if (!m_machine.isBetweenRequests()) return;
    if (m_planDue) plan();
    m_recipes.feed();
}

void HostSession::feedProbes(qint64 now)
{
    while (const std::optional<int> station = m_stations.takeDueProbe(now))
        m_reads.addProbe(m_polled.probeOf(*station));
}

void HostSession::feedReads()
{
    const std::optional<OneShotReads::Read> read = m_reads.start();
    if (!read) return;
    KEY_ADDRESS key = PolledTags::keyOf(read->block);
    if (isBitArea(key.regName)) key.count = 1; // in groups of 16
    m_driver.readOnce(key);
}

/// The driver serves one-shot reads after its queued writes, so writes are held back meanwhile. The
/// two take turns: between two reads the writes that wait go first.
void HostSession::feedWrites()
{
    if (m_reads.isUnderWay()) return;
    while (const std::optional<ElementWrite> write = m_writes.takeNext())
        m_driver.write(write->station, write->area, write->number, write->bytes);
}

/// What was not polled until now changed without a word of the driver.
void HostSession::plan()
{
    m_planDue = false;
    if (!m_isPolling) return;
    m_values.distrust();
    m_driver.poll(m_polled.keys([this](int station) { return !m_stations.isSilent(station); }));
}

void HostSession::takeFinished(qint64 now)
{
    const std::set<int> changed = m_values.takeChanged();
    if (const std::optional<FINISHED_EXCHANGE> finished = m_machine.takeFinished())
        exchangeOver(*finished, now);
    m_values.tell(changed, now);
    reportEnded();
}

void HostSession::exchangeOver(const FINISHED_EXCHANGE& finished, qint64 now)
{
    if (!m_isPointless) m_sink.exchanged(finished, now);
    if (finished.result == REPLY_RETRY) return;
    noteStation(finished, now);
    if (m_recipes.isUnderWay())
        m_recipes.frameOver(finished);
    else if (finished.frame.itemCount == 0)
        writeOver(finished, now);
    else if (finished.frame.var.varId == DriverSession::ONE_SHOT)
        readOver(finished, now);
    else
        blockOver(finished, now);
}

void HostSession::noteStation(const FINISHED_EXCHANGE& finished, qint64 now)
{
    if (m_isPointless) return;
    const int station = finished.frame.var.station;
    if (finished.result == REPLY_ACCEPTED || finished.exceptionCode != 0) {
        if (m_stations.answered(station)) m_planDue = true;
        return;
    }
    const bool isNewlySilent = m_stations.gaveUp(station, finished.heard, now);
    m_stations.putOff(station, m_machine.heldBackUntil());
    if (isNewlySilent) {
        stationWentSilent(station, now);
    } else if (m_stations.isSilent(station)) { // its tags may have been told of a lost link since
        m_sink.tagsBad(m_polled.tagsOfStation(station), troubleOf(finished), now);
    }
}

void HostSession::stationWentSilent(int station, qint64 now)
{
    const QString trouble = QString(QLatin1String("station %1 does not answer")).arg(station);
    m_planDue = true;
    m_sink.tagsBad(m_polled.tagsOfStation(station), trouble, now);
    m_writes.failWaiting(station, trouble);
}

QString HostSession::blockTroubleOf(const FINISHED_EXCHANGE& finished) const
{
    return m_driver.placesText(finished.frame.var) + QLatin1String(": ") + troubleOf(finished);
}

void HostSession::writeOver(const FINISHED_EXCHANGE& finished, qint64 now)
{
    const VARIABLE& var = finished.frame.var;
    const bool done = finished.result == REPLY_ACCEPTED;
    m_writes.ended(var.station, var.regName, var.addr, outcomeOf(finished),
                   done ? QString() : troubleOf(finished));
    m_values.written(var, now);
}

void HostSession::readOver(const FINISHED_EXCHANGE& finished, qint64 now)
{
    const bool done = finished.result == REPLY_ACCEPTED;
    m_reads.ended(outcomeOf(finished), done ? QString() : blockTroubleOf(finished));
    const int block = m_polled.blockOf(finished.frame.var);
    if (done && block >= 0) m_values.blockRead(block, m_isPolling, now);
}

void HostSession::blockOver(const FINISHED_EXCHANGE& finished, qint64 now)
{
    const int block = m_polled.blockOf(finished.frame.var);
    if (block < 0) return;
    if (finished.result == REPLY_ACCEPTED)
        m_values.blockRead(block, m_isPolling, now);
    else
        m_sink.tagsBad(m_polled.block(block).tags, troubleOf(finished), now);
}

void HostSession::reportEnded()
{
    for (const JobEnd& end : m_writes.takeEnded())
        m_sink.jobEnded(end);
    for (const JobEnd& end : m_reads.takeEnded())
        m_sink.jobEnded(end);
}
