#include "session/hostSession.h"

#include "exchange/replyRecogniser.h"

#include <algorithm>
#include <utility>

namespace {

enum { EXCEPTION_BYTES = 5, EXCEPTION_FLAG = 0x80, STILL_WORKING = 5, BUSY = 6 };

/// Asking again changes nothing: the station understood the request and refused it.
bool isFinalRefusal(const QByteArray& reply)
{
    if (reply.size() != EXCEPTION_BYTES) return false;
    const int function = static_cast<unsigned char>(reply.at(1));
    const int code = static_cast<unsigned char>(reply.at(2));
    return (function & EXCEPTION_FLAG) != 0 && code != STILL_WORKING && code != BUSY;
}

JobEnd::Outcome outcomeOf(const FINISHED_EXCHANGE& finished)
{
    if (finished.result == REPLY_ACCEPTED) return JobEnd::DONE;
    return finished.exceptionCode != 0 ? JobEnd::REFUSED : JobEnd::TIMED_OUT;
}

} // namespace

HostSession::HostSession(DriverSession& driver, const LineTiming& timing,
                         const ExchangeMachine::Times& times, SessionSink& sink)
    : m_driver(driver), m_sink(sink), m_machine(*this, timing, times), m_stations(times.answer)
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
    m_shown.assign(tags.size(), QByteArray());
    m_blocksSeen.clear();
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
    m_recipes.push_back(recipe);
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
    m_isProbe = result != 0 && !m_recipe && m_reads.isProbeUnderWay() && frame->itemCount != 0 &&
                frame->var.varId == DriverSession::ONE_SHOT;
    m_isPointless =
        result != 0 && !m_recipe && !m_isProbe && m_stations.isSilent(frame->var.station);
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
    feedRecipe();
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

/// What was not polled until now changed without a word of the driver, so all tags are looked at
/// again.
void HostSession::plan()
{
    m_planDue = false;
    if (!m_isPolling) return;
    m_blocksSeen.clear();
    m_driver.poll(m_polled.keys([this](int station) { return !m_stations.isSilent(station); }));
}

void HostSession::feedRecipe()
{
    if (m_recipe || m_recipes.empty()) return;
    m_recipe = m_recipes.front();
    m_recipes.pop_front();
    m_recipeBlocksDone = 0;
    if (m_driver.setRecipe(m_recipe->records, m_recipe->values) > 0) {
        m_driver.raise(m_recipe->flag);
        return;
    }
    JobEnd end;
    end.job = m_recipe->job;
    end.outcome = JobEnd::LOST;
    end.trouble = QLatin1String("the driver took none of the recipe's variables");
    m_recipe.reset();
    m_sink.jobEnded(end);
}

void HostSession::takeFinished(qint64 now)
{
    const std::set<int> changed = takeChangedTags();
    if (const std::optional<FINISHED_EXCHANGE> finished = m_machine.takeFinished())
        exchangeOver(*finished, now);
    for (const int tag : changed)
        m_sink.tagValue(tag, m_shown[size_t(tag)], now);
    reportEnded();
}

void HostSession::exchangeOver(const FINISHED_EXCHANGE& finished, qint64 now)
{
    if (!m_isPointless) m_sink.exchanged(finished, now);
    if (finished.result == REPLY_RETRY) return;
    noteStation(finished, now);
    if (m_recipe)
        recipeFrameOver(finished);
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
    } else if (m_stations.gaveUp(station, finished.heard, now)) {
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

QString HostSession::troubleOf(const FINISHED_EXCHANGE& finished) const
{
    if (finished.exceptionCode != 0)
        return QString(QLatin1String("refused by the PLC: %1 (exception %2)"))
            .arg(QLatin1String(exceptionText(finished.exceptionCode)))
            .arg(finished.exceptionCode);
    const QString text = finished.heard ? QLatin1String("station %1 gave no usable answer")
                                        : QLatin1String("station %1 does not answer");
    return text.arg(finished.frame.var.station);
}

QString HostSession::blockTroubleOf(const FINISHED_EXCHANGE& finished) const
{
    return m_driver.placesText(finished.frame.var) + QLatin1String(": ") + troubleOf(finished);
}

/// When a read has brought another value since the host wrote, the driver shows that one and does
/// not tell that the written value takes its place.
void HostSession::writeOver(const FINISHED_EXCHANGE& finished, qint64 now)
{
    const VARIABLE& var = finished.frame.var;
    const bool done = finished.result == REPLY_ACCEPTED;
    m_writes.ended(var.station, var.regName, var.addr, outcomeOf(finished),
                   done ? QString() : troubleOf(finished));
    for (const int tag : m_polled.tagsAt(var.station, var.regName, var.addr)) {
        const QByteArray shown = m_shown[size_t(tag)];
        fetch(tag);
        if (m_shown[size_t(tag)] != shown) m_sink.tagValue(tag, m_shown[size_t(tag)], now);
    }
}

void HostSession::readOver(const FINISHED_EXCHANGE& finished, qint64 now)
{
    const bool done = finished.result == REPLY_ACCEPTED;
    m_reads.ended(outcomeOf(finished), done ? QString() : blockTroubleOf(finished));
    const int block = m_polled.blockOf(finished.frame.var);
    if (done && block >= 0) blockRead(block, now);
}

void HostSession::blockOver(const FINISHED_EXCHANGE& finished, qint64 now)
{
    const int block = m_polled.blockOf(finished.frame.var);
    if (block < 0) return;
    if (finished.result == REPLY_ACCEPTED)
        blockRead(block, now);
    else
        m_sink.tagsBad(m_polled.block(block).tags, troubleOf(finished), now);
}

/// A transfer is over when the driver has cleared its flag; the block that it ended with tells how.
void HostSession::recipeFrameOver(const FINISHED_EXCHANGE& finished)
{
    if (finished.result == REPLY_ACCEPTED)
        m_sink.recipeProgress(m_recipe->job, ++m_recipeBlocksDone);
    if (m_driver.isRaised(m_recipe->flag)) return;
    JobEnd end;
    end.job = m_recipe->job;
    end.outcome = outcomeOf(finished);
    if (end.outcome != JobEnd::DONE) end.trouble = blockTroubleOf(finished);
    end.values = m_driver.recipeBytes(int(m_recipe->values.size()));
    m_recipe.reset();
    m_sink.jobEnded(end);
}

/// The driver does not report a first value of 0, so the first time every tag is looked at; and
/// each time when it reports nothing, because nothing is polled.
void HostSession::blockRead(int block, qint64 now)
{
    const bool first = m_blocksSeen.insert(block).second;
    for (const int tag : m_polled.block(block).tags) {
        if (first || !m_isPolling) fetch(tag);
        m_sink.tagRead(tag, m_shown[size_t(tag)], now);
    }
}

/// Of a block with gaps the driver reports units that no tag shows as well.
std::set<int> HostSession::takeChangedTags()
{
    std::set<int> tags;
    for (const NotedChange& change : m_driver.takeChanges()) {
        const std::vector<int>& at = m_polled.tagsAt(change.station, change.area, change.number);
        tags.insert(at.begin(), at.end());
    }
    for (const int tag : tags)
        fetch(tag);
    return tags;
}

void HostSession::fetch(int index)
{
    const Tag& tag = m_polled.tag(index);
    m_shown[size_t(index)] = m_driver.value(tag.station, tag.area, tag.number, tag.units());
}

void HostSession::reportEnded()
{
    for (const JobEnd& end : m_writes.takeEnded())
        m_sink.jobEnded(end);
    for (const JobEnd& end : m_reads.takeEnded())
        m_sink.jobEnded(end);
}
