#include "verbs/planVerb.h"

#include "exchange/fenceChoice.h"
#include "output/columnText.h"
#include "plan/readGaps.h"
#include "verbs/blockRequests.h"
#include "wire/protocolLimits.h"
#include "wire/timeUnits.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <optional>
#include <set>

namespace {

enum { SHOWN_NAMES = 3 };

struct CycleView
{
    std::vector<ReadBlock> blocks;
    std::vector<BlockRequest> requests; ///< of the blocks, in the same order
    std::optional<qint64> time; ///< of a cycle in microseconds; empty: requests take no time
    size_t fences = 0;          ///< one for each station, ahead of the first cycle
    std::optional<qint64> fenceTime;
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

QJsonObject cycleObject(size_t requests, std::optional<qint64> time)
{
    QJsonObject object;
    object[QLatin1String("requests")] = int(requests);
    object[QLatin1String("cycleTime")] = time ? QJsonValue(double(*time)) : QJsonValue();
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
    object[QLatin1String("fences")] = cycleObject(view.fences, view.fenceTime);
    object[QLatin1String("grouped")] = cycleObject(view.blocks.size(), view.time);
    object[QLatin1String("gaps")] = gapsObject(view.gaps, view.mostGap);
    object[QLatin1String("single")] = cycleObject(view.singleReads, view.singleTime);
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

void printTable(std::FILE* out, const CycleView& view, const std::vector<Tag>& tags)
{
    std::fprintf(out, "station area number count  tags  %-23s  reply  names\n", "request");
    for (size_t i = 0; i < view.blocks.size(); ++i) {
        const ReadBlock& block = view.blocks[i];
        const BlockRequest& request = view.requests[i];
        std::fprintf(out, "%7d %-4s %6d %5d %5d  %-23s  %5d  %s\n", block.station,
                     qUtf8Printable(block.area), block.number, block.count, int(block.tags.size()),
                     request.bytes.toHex(' ').constData(), request.replyLength,
                     qUtf8Printable(printableText(shortList(namesIn(block, tags)))));
    }
    std::fprintf(out,
                 "grouped:          %5d requests, %s\n"
                 "without grouping: %5d requests, %s\n"
                 "fences at first:  %5d requests, %s\n"
                 "words in gaps:    %5d words, %s\n",
                 int(view.blocks.size()), cycleText(view.time).constData(), int(view.singleReads),
                 cycleText(view.singleTime).constData(), int(view.fences),
                 fencesText(view.fenceTime).constData(), view.gaps.words,
                 gapsText(view.gaps, view.mostGap).constData());
}

} // namespace

void printPlan(std::FILE* out, const std::vector<Tag>& tags, const LineTiming& timing,
               qint64 turnaround, int mostGap, const DriverLibrary& driver, bool json)
{
    const WireCost cost = wireCost(timing, turnaround);
    CycleView view;
    view.mostGap = mostGap;
    std::set<int> stations;
    view.blocks = planReads(tags, cost, MOST_READ_REGISTERS, mostGap);
    view.requests = blockRequests(view.blocks, driver);
    view.gaps = readGaps(view.blocks, tags);
    for (const ReadBlock& block : view.blocks)
        stations.insert(block.station);
    view.fences = stations.size();
    const std::vector<ReadBlock> single = planSingleReads(tags);
    view.singleReads = single.size();
    if (cost.request > 0) {
        view.time = cycleTime(view.blocks, cost);
        view.singleTime = cycleTime(single, cost);
        const qint64 fence = cost.request + cost.word * (FenceChoice::MOST_REGISTERS / 2);
        view.fenceTime = qint64(view.fences) * fence;
    }
    (json ? printJson : printTable)(out, view, tags);
}
