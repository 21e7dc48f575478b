#include "verbs/planVerb.h"

#include "exchange/fenceChoice.h"
#include "output/columnText.h"
#include "plan/readPlan.h"
#include "session/polledTags.h"
#include "session/startedDriver.h"
#include "wire/protocolLimits.h"
#include "wire/timeUnits.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <map>
#include <optional>
#include <set>
#include <tuple>

namespace {

enum { ATTEMPTS = 1, SHOWN_NAMES = 3 };

/// The driver's request for a block.
struct Request
{
    QByteArray bytes;
    int replyLength = 0;
};

struct CycleView
{
    std::vector<ReadBlock> blocks;
    std::vector<Request> requests; ///< of the blocks, in the same order
    std::optional<qint64> time;    ///< of a cycle in microseconds; empty: requests take no time
    size_t fences = 0;             ///< one for each station, ahead of the first cycle
    std::optional<qint64> fenceTime;
    size_t singleReads = 0;
    std::optional<qint64> singleTime;
};

using Place = std::tuple<int, QString, int>;

/// Lets the driver poll each block once; every request is given up without an answer. The driver
/// has its own order of polling, so each request is assigned to its block by station, area and
/// number.
std::vector<Request> requestsFor(const std::vector<ReadBlock>& blocks, const DriverLibrary& driver)
{
    StartedDriver started(driver, ATTEMPTS);
    QList<KEY_ADDRESS> keys;
    for (const ReadBlock& block : blocks)
        keys << PolledTags::keyOf(block);

    std::map<Place, Request> byPlace;
    for (int left = started.poll(keys); left > 0; --left) {
        FRAME_PRO frame;
        if (started.getSendFrame(&frame) == 0) break;
        const char* const bytes = reinterpret_cast<const char*>(frame.sendBuf);
        byPlace[Place(frame.var.station, frame.var.regName, frame.var.addr)] = {
            QByteArray(bytes, frame.sendLen), frame.recvLen};
        QByteArray silence;
        QString errorText;
        started.dealRcvFrame(silence, errorText);
    }

    std::vector<Request> requests;
    for (const ReadBlock& block : blocks)
        requests.push_back(byPlace[Place(block.station, block.area, block.number)]);
    return requests;
}

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

QJsonObject blockObject(const ReadBlock& block, const Request& request,
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

void printJson(std::FILE* out, const CycleView& view, const std::vector<Tag>& tags)
{
    QJsonArray blocks;
    for (size_t i = 0; i < view.blocks.size(); ++i)
        blocks.append(blockObject(view.blocks[i], view.requests[i], tags));
    QJsonObject object;
    object[QLatin1String("blocks")] = blocks;
    object[QLatin1String("fences")] = requestsObject(view.fences, "timeUs", view.fenceTime);
    object[QLatin1String("grouped")] = requestsObject(view.blocks.size(), "cycleTimeUs", view.time);
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

void printTable(std::FILE* out, const CycleView& view, const std::vector<Tag>& tags)
{
    std::fprintf(out, "station area number count  tags  %-23s  reply  names\n", "request");
    for (size_t i = 0; i < view.blocks.size(); ++i) {
        const ReadBlock& block = view.blocks[i];
        const Request& request = view.requests[i];
        std::fprintf(out, "%7d %-4s %6d %5d %5d  %-23s  %5d  %s\n", block.station,
                     qUtf8Printable(block.area), block.number, block.count, int(block.tags.size()),
                     request.bytes.toHex(' ').constData(), request.replyLength,
                     qUtf8Printable(printableText(shortList(namesIn(block, tags)))));
    }
    std::fprintf(out,
                 "grouped:          %5d requests, %s\n"
                 "without grouping: %5d requests, %s\n"
                 "fences at first:  %5d requests, %s\n",
                 int(view.blocks.size()), cycleText(view.time).constData(), int(view.singleReads),
                 cycleText(view.singleTime).constData(), int(view.fences),
                 fencesText(view.fenceTime).constData());
}

} // namespace

void printPlan(std::FILE* out, const std::vector<Tag>& tags, const LineTiming& timing,
               qint64 turnaround, const DriverLibrary& driver, bool json)
{
    const WireCost cost = wireCost(timing, turnaround);
    CycleView view;
    std::set<int> stations;
    view.blocks = planReads(tags, cost, MOST_READ_REGISTERS);
    view.requests = requestsFor(view.blocks, driver);
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
