#include "verbs/planVerb.h"

#include "exchange/fenceChoice.h"
#include "plan/durationText.h"
#include "plan/printableText.h"
#include "plan/ratedReads.h"
#include "plan/readGaps.h"
#include "verbs/blockRequests.h"
#include "wire/protocolLimits.h"
#include "wire/timeUnits.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>

namespace {

enum { SHOWN_NAMES = 3, RATE_COLUMNS = 6, PERCENT = 100 };

struct CycleView
{
    std::vector<ReadBlock> blocks;
    std::vector<BlockRequest> requests; ///< of the blocks, in the same order
    std::optional<qint64> time; ///< of a cycle in microseconds; empty: requests take no time
    size_t fences = 0;          ///< one for each station, ahead of the first cycle
    std::optional<qint64> fenceTime;
    qint64 pace = 0;                 ///< shortest time of a cycle in microseconds
    bool hasRates = false;           ///< some blocks are not read in every cycle
    size_t fastReads = 0;            ///< blocks of every cycle
    size_t ratedReads = 0;           ///< blocks with an interval
    size_t onceReads = 0;            ///< blocks that are read once
    double ratedPerSecond = 0;       ///< requests of the blocks with an interval
    std::optional<double> ratedLoad; ///< their share of the time, see averageLoad()
    size_t singleReads = 0;
    std::optional<qint64> singleTime;
    ReadGaps gaps;
    int mostGap = ANY_GAP;
};

QStringList namesIn(const ReadBlock& block, const std::vector<Tag>& tags)
{
    QStringList names;
    for (const int index : block.tags)
        names << tags[static_cast<size_t>(index)].name;
    return names;
}

QString shortList(const QStringList& names)
{
    QString list = QStringList(names.mid(0, SHOWN_NAMES)).join(QLatin1String(", "));
    const int more = int(names.size()) - SHOWN_NAMES;
    if (more > 0) list += QString(QLatin1String(" and %1 more")).arg(more);
    return list;
}

QJsonObject requestsObject(size_t requests, const char* timeName, std::optional<qint64> time)
{
    QJsonObject object;
    object[QLatin1String("requests")] = int(requests);
    object[QLatin1String(timeName)] = time ? QJsonValue(double(*time)) : QJsonValue();
    return object;
}

QJsonObject blockObject(const ReadBlock& block, const BlockRequest& request,
                        const std::vector<Tag>& tags)
{
    QJsonObject object;
    object[QLatin1String("station")] = block.station;
    object[QLatin1String("area")] = block.area;
    object[QLatin1String("number")] = block.number;
    object[QLatin1String("count")] = block.count;
    object[QLatin1String("tags")] = QJsonArray::fromStringList(namesIn(block, tags));
    object[QLatin1String("request")] = QString::fromLatin1(request.bytes.toHex());
    object[QLatin1String("replyLength")] = request.replyLength;
    object[QLatin1String("rate")] = rateText(block.rate);
    return object;
}

QJsonObject ratesObject(const CycleView& view)
{
    QJsonObject object;
    object[QLatin1String("requests")] = int(view.ratedReads);
    object[QLatin1String("requestsPerSecond")] = view.ratedPerSecond;
    object[QLatin1String("load")] = view.ratedLoad ? QJsonValue(*view.ratedLoad) : QJsonValue();
    object[QLatin1String("onceRequests")] = int(view.onceReads);
    return object;
}

QJsonObject gapsObject(const ReadGaps& gaps, int mostGap)
{
    QJsonObject object;
    object[QLatin1String("words")] = gaps.words;
    object[QLatin1String("longest")] = gaps.longest;
    object[QLatin1String("limit")] = mostGap == ANY_GAP ? QJsonValue() : QJsonValue(mostGap);
    return object;
}

void printJson(std::FILE* out, const CycleView& view, const std::vector<Tag>& tags)
{
    QJsonArray blocks;
    for (size_t i = 0; i < view.blocks.size(); ++i)
        blocks.append(blockObject(view.blocks[i], view.requests[i], tags));
    QJsonObject object;
    object[QLatin1String("blocks")] = blocks;
    object[QLatin1String("fences")] = requestsObject(view.fences, "timeUs", view.fenceTime);
    object[QLatin1String("grouped")] = requestsObject(view.fastReads, "cycleTimeUs", view.time);
    object[QLatin1String("paceMs")] = int(view.pace / MILLISECOND);
    object[QLatin1String("rates")] = ratesObject(view);
    object[QLatin1String("gaps")] = gapsObject(view.gaps, view.mostGap);
    object[QLatin1String("single")] =
        requestsObject(view.singleReads, "cycleTimeUs", view.singleTime);
    const QByteArray line = QJsonDocument(object).toJson(QJsonDocument::Compact);
    std::fprintf(out, "%s\n", line.constData());
}

QByteArray cycleText(std::optional<qint64> time)
{
    if (!time) return "no wire time";
    return QByteArray::number(double(*time) / MILLISECOND, 'f', 1) + " ms a cycle";
}

/// The time is approximate: the lengths of fences are random, so that two programs on one line
/// differ.
QByteArray fencesText(std::optional<qint64> time)
{
    if (!time) return "no wire time";
    return "about " + QByteArray::number(double(*time) / MILLISECOND, 'f', 1) + " ms once";
}

QByteArray gapsText(const ReadGaps& gaps, int mostGap)
{
    QByteArray text = "at most " + QByteArray::number(gaps.longest) + " in a row";
    if (mostGap != ANY_GAP) text += ", the limit is " + QByteArray::number(mostGap);
    return text;
}

/// The lines about the pace and the rates. A plan without them has none.
void printTurns(std::FILE* out, const CycleView& view)
{
    if (view.pace > 0)
        std::fprintf(out, "pace:             a cycle begins every %s at the earliest\n",
                     qUtf8Printable(durationText(view.pace / MILLISECOND)));
    if (!view.hasRates) return;
    std::fprintf(out, "at their rates:   %5d requests, %.2f a second", int(view.ratedReads),
                 view.ratedPerSecond);
    if (view.ratedLoad) std::fprintf(out, ", %.1f %% of the line", *view.ratedLoad * PERCENT);
    std::fprintf(out, "\nread once:        %5d requests\n", int(view.onceReads));
}

/// The column of the rates is left out when all blocks are read in every cycle.
void printBlocks(std::FILE* out, const CycleView& view, const std::vector<Tag>& tags)
{
    std::fprintf(out, "station area number count  tags %s %-23s  reply  names\n",
                 view.hasRates ? "  rate" : "", "request");
    for (size_t i = 0; i < view.blocks.size(); ++i) {
        const ReadBlock& block = view.blocks[i];
        const BlockRequest& request = view.requests[i];
        const QString rate =
            view.hasRates ? rateText(block.rate).rightJustified(RATE_COLUMNS) : QString();
        std::fprintf(out, "%7d %-4s %6d %5d %5d %s %-23s  %5d  %s\n", block.station,
                     qUtf8Printable(block.area), block.number, block.count, int(block.tags.size()),
                     qUtf8Printable(rate), request.bytes.toHex(' ').constData(),
                     request.replyLength,
                     qUtf8Printable(printableText(shortList(namesIn(block, tags)))));
    }
}

void printTable(std::FILE* out, const CycleView& view, const std::vector<Tag>& tags)
{
    printBlocks(out, view, tags);
    std::fprintf(out,
                 "grouped:          %5d requests, %s\n"
                 "without grouping: %5d requests, %s\n"
                 "fences at first:  %5d requests, %s\n"
                 "words in gaps:    %5d words, %s\n",
                 int(view.fastReads), cycleText(view.time).constData(), int(view.singleReads),
                 cycleText(view.singleTime).constData(), int(view.fences),
                 fencesText(view.fenceTime).constData(), view.gaps.words,
                 gapsText(view.gaps, view.mostGap).constData());
    printTurns(out, view);
}

/// The blocks of each rate.
void countRates(CycleView& view)
{
    for (const ReadBlock& block : view.blocks) {
        switch (block.rate.kind) {
        case ReadRate::INTERVAL:
            ++view.ratedReads;
            view.ratedPerSecond +=
                double(SECOND) / (double(MILLISECOND) * double(block.rate.intervalMs));
            break;
        case ReadRate::ONCE:
            ++view.onceReads;
            break;
        default:
            ++view.fastReads;
        }
    }
    view.hasRates = view.ratedReads + view.onceReads > 0;
}

std::vector<ReadBlock> fastOf(const std::vector<ReadBlock>& blocks)
{
    std::vector<ReadBlock> fast;
    std::copy_if(blocks.begin(), blocks.end(), std::back_inserter(fast), isReadInEveryCycle);
    return fast;
}

} // namespace

void printPlan(std::FILE* out, const std::vector<Tag>& tags, const LineTiming& timing,
               qint64 turnaround, qint64 pace, int mostGap, const DriverLibrary& driver, bool json)
{
    const WireCost cost = wireCost(timing, turnaround);
    CycleView view;
    view.mostGap = mostGap;
    std::set<int> stations;
    view.pace = pace;
    view.blocks = planRatedReads(tags, cost, MOST_READ_REGISTERS, pace, mostGap).blocks;
    countRates(view);
    view.requests = blockRequests(view.blocks, driver);
    view.gaps = readGaps(view.blocks, tags);
    for (const ReadBlock& block : view.blocks)
        stations.insert(block.station);
    view.fences = stations.size();
    const std::vector<ReadBlock> single = planSingleReads(tags);
    view.singleReads = single.size();
    if (cost.request > 0) {
        view.time = cycleTime(fastOf(view.blocks), cost);
        view.ratedLoad = averageLoad(view.blocks, cost);
        view.singleTime = cycleTime(single, cost);
        const qint64 fence = cost.request + cost.word * (FenceChoice::MOST_REGISTERS / 2);
        view.fenceTime = qint64(view.fences) * fence;
    }
    (json ? printJson : printTable)(out, view, tags);
}
