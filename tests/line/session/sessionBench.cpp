#include "sessionBench.h"

#include "plan/ratedReads.h"
#include "wire/protocolLimits.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace {

enum { LOW_BYTES = 2 };

// The driver does not tell the length of its queue, so the writes that enter and leave it are
// counted. The counts are global, because the driver's functions have no argument for the host's
// data.
decltype(&intf_setData) realSetData = nullptr;
int outstandingWrites = 0;
int mostOutstandingWrites = 0;

int countedSetData(int station, QString area, int number, int count, unsigned char* values, int id)
{
    outstandingWrites += count;
    mostOutstandingWrites = std::max(mostOutstandingWrites, outstandingWrites);
    return realSetData(station, std::move(area), number, count, values, id);
}

} // namespace

void RecordingSink::tagRead(int tag, const QByteArray& bytes, qint64)
{
    told[tag] = QByteArray(bytes.constData(), bytes.size());
    if (onRead) onRead(tag, bytes);
}

void RecordingSink::tagShown(int tag, const QByteArray& bytes, qint64)
{
    TagNote& note = tags[tag];
    note.bytes = bytes;
    if (onValue) onValue(tag, bytes);
    note.good = true;
    note.trouble.clear();
    ++note.reads;
}

void RecordingSink::tagValue(int tag, const QByteArray& bytes, qint64)
{
    tags[tag].bytes = bytes;
    if (onValue) onValue(tag, bytes);
    ++tags[tag].changes;
}

void RecordingSink::tagsBad(const std::vector<int>& bad, const QString& trouble, qint64)
{
    for (const int tag : bad) {
        const bool isNews = tags[tag].good || tags[tag].trouble != trouble;
        badCounts[tag] += isNews ? 1 : 0;
        tags[tag].good = false;
        tags[tag].trouble = trouble;
    }
}

void RecordingSink::tagsUnanswered(const std::vector<int>& unanswered, const QString& trouble,
                                   qint64 now)
{
    tagsBad(unanswered, trouble, now);
}

void RecordingSink::stationChanged(int station, bool answers, const QString&, qint64)
{
    stations.emplace_back(station, answers);
}

void RecordingSink::jobEnded(const JobEnd& end)
{
    if (!ends.emplace(end.job, end).second) ++endedTwice;
}

void RecordingSink::recipeProgress(int, int done)
{
    progress.push_back(done);
}

void RecordingSink::exchanged(const FINISHED_EXCHANGE& finished, qint64 now)
{
    const bool isWrite = finished.frame.itemCount == 0;
    exchanges.push_back(
        {now, finished.frame.var.station, finished.result, finished.exceptionCode, isWrite});
    if (isWrite && finished.result != REPLY_RETRY) --outstandingWrites;
}

void RecordingSink::fenced(const EndedExchange& fence, qint64)
{
    fences.push_back(fence);
}

void RecordingSink::echoFound()
{
    ++echoesFound;
}

JobEnd::Outcome RecordingSink::outcome(int job) const
{
    const auto found = ends.find(job);
    EXPECT_NE(ends.end(), found) << "job " << job << " has not ended";
    return found == ends.end() ? JobEnd::LOST : found->second.outcome;
}

int RecordingSink::changes() const
{
    int sum = 0;
    for (const auto& [tag, note] : tags)
        sum += note.changes;
    return sum;
}

static ExchangeMachine::Settings settingsOf(qint64 answer)
{
    ExchangeMachine::Settings settings;
    settings.answer = answer;
    return settings;
}

DriverLibrary& SessionBench::library()
{
    static DriverLibrary loaded(QString::fromLatin1(KAKB_DRIVER_FILE));
    if (realSetData == nullptr) realSetData = loaded.setData;
    loaded.setData = countedSetData;
    return loaded;
}

SessionBench::SessionBench(qint64 answer, const LineTiming& timing, qint64 hold)
    : m_timing(timing),
      m_driver(library(), ATTEMPTS),
      line(plc, timing),
      feeder(m_driver, m_timing, settingsOf(answer), sink, hold)
{
    outstandingWrites = 0;
    mostOutstandingWrites = 0;
    plc.station(1);
    feeder.linkBack(now);
}

int SessionBench::mostOutstanding()
{
    return mostOutstandingWrites;
}

void SessionBench::poll(const std::vector<Tag>& tags, qint64 pace)
{
    blocks =
        planRatedReads(tags, wireCost(m_timing, ModelLine::TURNAROUND), MOST_READ_REGISTERS, pace)
            .blocks;
    feeder.poll(tags, blocks, pace);
}

void SessionBench::pollTwoStations(int number)
{
    plc.station(2);
    poll({tagOf("MW", number), tagOf("MW", number, Tag::UINT16, 2)});
    run(SECOND);
}

void SessionBench::know(const std::vector<Tag>& tags)
{
    blocks = planReads(tags, wireCost(m_timing, ModelLine::TURNAROUND), MOST_READ_REGISTERS);
    feeder.know(tags, blocks);
}

/// Does the next step. Without a step before `end` it only moves the clock to `end`.
/// @return false when the clock is at `end`
bool SessionBench::stepUntil(qint64 end)
{
    if (!m_bound.allowsStepAt(now)) {
        now = end;
        return false;
    }
    qint64 next = std::numeric_limits<qint64>::max();
    if (m_linkIsUp) {
        const ExchangeMachine::Step step = feeder.advance(now);
        if (!step.send.isEmpty()) {
            (step.isFence ? fences : sent).push_back(step.send);
            line.send(step.send, now);
            return true;
        }
        if (!step.isIdle) next = std::max(step.wakeAt, now);
    }
    if (!line.isQuiet() && line.nextAt() <= std::min(next, end)) {
        now = std::max(now, line.nextAt());
        feeder.received(line.takeNext(), now);
        return true;
    }
    now = std::min(next, end);
    return next < end;
}

void SessionBench::run(qint64 duration)
{
    const qint64 end = now + duration;
    while (stepUntil(end)) {
    }
}

bool SessionBench::runUntil(const std::function<bool()>& isSo, qint64 most)
{
    const qint64 end = now + most;
    while (!isSo()) {
        if (!stepUntil(end)) return isSo();
    }
    return true;
}

void SessionBench::loseLink(const QString& trouble)
{
    m_linkIsUp = false;
    line.cut();
    feeder.linkLost(trouble, now);
}

void SessionBench::bringLinkBack()
{
    m_linkIsUp = true;
    feeder.linkBack(now);
}

void SessionBench::writeWord(int job, int number, int value, int station)
{
    feeder.addWrite(job, {wordWriteOf(number, value, station)});
}

qint64 SessionBench::shown(int tag) const
{
    const auto found = sink.tags.find(tag);
    if (found == sink.tags.end() || found->second.bytes.isEmpty()) return -1;
    qint64 value = 0;
    for (int i = int(found->second.bytes.size()); i-- > 0;)
        value = value << 8 | static_cast<unsigned char>(found->second.bytes.at(i));
    return value;
}

int SessionBench::sentWith(int station, int function) const
{
    return int(std::count_if(sent.begin(), sent.end(), [=](const QByteArray& request) {
        return request.at(0) == static_cast<char>(station) &&
               request.at(1) == static_cast<char>(function);
    }));
}

Tag tagOf(const char* area, int number, Tag::Type type, int station)
{
    Tag tag;
    tag.area = QLatin1String(area);
    tag.number = number;
    tag.type = type;
    tag.station = station;
    return tag;
}

ElementWrite wordWriteOf(int number, int value, int station)
{
    ElementWrite write;
    write.station = station;
    write.area = QLatin1String(number < 3000 ? "QW" : "MW");
    write.number = number;
    write.bytes = QByteArray(LOW_BYTES, '\0');
    write.bytes[0] = static_cast<char>(value & 255);
    write.bytes[1] = static_cast<char>(value >> 8);
    write.label = write.area + QString::number(number);
    return write;
}

ElementWrite bitWriteOf(const char* area, int number, bool on, int station)
{
    ElementWrite write;
    write.station = station;
    write.area = QLatin1String(area);
    write.number = number;
    write.bytes = QByteArray(1, on ? 1 : 0);
    write.label = write.area + QString::number(number);
    return write;
}
