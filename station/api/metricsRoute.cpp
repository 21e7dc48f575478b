#include "api/metricsRoute.h"

#include "api/apiError.h"
#include "api/openMetricsText.h"
#include "api/plantMetrics.h"
#include "history/history.h"
#include "http/httpServer.h"
#include "wire/timeUnits.h"

#include <map>

namespace {

using Text = OpenMetricsText;

/// What the metrics tell of a link, of one moment.
struct LinkFacts
{
    QString name;
    LinkState state;
    std::map<std::pair<int, Quality>, int> tags; ///< counts by station and quality
};

LinkFacts factsOf(const MachineLink& link)
{
    LinkFacts facts;
    facts.name = link.name();
    facts.state = link.values().state();
    const std::vector<TagReading> readings = link.values().readings();
    for (size_t tag = 0; tag < readings.size(); ++tag) {
        const int station = link.tags()[tag].station;
        for (const Quality quality : {GOOD, STALE, BAD})
            facts.tags[{station, quality}] += readings[tag].quality == quality ? 1 : 0;
    }
    return facts;
}

using AllFacts = std::vector<LinkFacts>;

void addCounter(Text& text, const AllFacts& links, const char* name, const char* help,
                qint64 LinkFigures::*count)
{
    text.beginFamily(name, Text::COUNTER, help);
    for (const LinkFacts& link : links)
        text.add({{"link", link.name}}, double(link.state.figures.*count));
}

void addCounters(Text& text, const AllFacts& links)
{
    addCounter(text, links, "exchanges", "Requests that were answered or given up.",
               &LinkFigures::exchanges);
    addCounter(text, links, "retries", "Further attempts of requests.", &LinkFigures::retries);
    addCounter(text, links, "give_ups", "Requests given up without an answer.",
               &LinkFigures::giveUps);
    addCounter(text, links, "refusals", "Exception replies of the PLC.", &LinkFigures::refusals);
    addCounter(text, links, "losses", "Losses of the link.", &LinkFigures::losses);
}

void addLinkGauges(Text& text, const AllFacts& links)
{
    text.beginFamily("link_up", Text::GAUGE, "Whether the link is up.");
    for (const LinkFacts& link : links)
        text.add({{"link", link.name}}, link.state.standing == LINK_UP ? 1 : 0);
    text.beginFamily("wire_share", Text::GAUGE,
                     "Share of the last ten seconds in which the wire was taken, 0 to 1.");
    for (const LinkFacts& link : links) {
        const double share = link.state.figures.lately.wireShare;
        if (share >= 0) text.add({{"link", link.name}}, share);
    }
}

/// OpenMetrics asks for a point in the bounds of a histogram.
QString boundText(double seconds)
{
    const QString text = QString::number(seconds);
    return text.contains(QLatin1Char('.')) ? text : text + QLatin1String(".0");
}

void addReplyTimes(Text& text, const AllFacts& links)
{
    text.beginFamily("reply_time_seconds", Text::HISTOGRAM,
                     "Time from the end of a request to the end of its reply.", "seconds");
    for (const LinkFacts& link : links) {
        const ReplyHistogram& replies = link.state.replies;
        for (size_t at = 0; at < replies.within.size(); ++at) {
            const double bound = double(ReplyHistogram::bounds()[at]) / SECOND;
            text.addPart("_bucket", {{"link", link.name}, {"le", boundText(bound)}},
                         double(replies.within[at]));
        }
        text.addPart("_bucket", {{"link", link.name}, {"le", QLatin1String("+Inf")}},
                     double(replies.count));
        text.addPart("_count", {{"link", link.name}}, double(replies.count));
        text.addPart("_sum", {{"link", link.name}}, double(replies.sum) / SECOND);
    }
}

Text::Labels stationLabels(const LinkFacts& link, int station)
{
    return {{"link", link.name}, {"station", QString::number(station)}};
}

void addStationGauges(Text& text, const AllFacts& links)
{
    text.beginFamily("station_answers", Text::GAUGE, "Whether the station answers.");
    for (const LinkFacts& link : links) {
        for (const StationStanding& station : link.state.stations)
            text.add(stationLabels(link, station.station), station.answers ? 1 : 0);
    }
    text.beginFamily("tags", Text::GAUGE, "Tags of a station by the quality of their values.");
    for (const LinkFacts& link : links) {
        for (const auto& count : link.tags) {
            Text::Labels labels = stationLabels(link, count.first.first);
            labels.emplace_back("quality", QLatin1String(qualityText(count.first.second)));
            text.add(labels, count.second);
        }
    }
}

void addWrites(Text& text, const StationLinks& links)
{
    text.beginFamily("writes", Text::COUNTER, "Writes that have ended, by their outcome.");
    for (const WriteEnd::Outcome outcome :
         {WriteEnd::CONFIRMED, WriteEnd::REFUSED, WriteEnd::FAILED})
        text.add({{"outcome", QLatin1String(writeOutcomeText(outcome))}},
                 double(links.writes(outcome)));
}

void addHistory(Text& text, const History& history)
{
    const History::Standing standing = history.standing();
    text.beginFamily("history_rows", Text::GAUGE, "Rows in the history.");
    text.add({}, double(standing.rows));
    text.beginFamily("history_dropped_rows", Text::COUNTER,
                     "Rows that the history dropped or could not keep.");
    text.add({}, double(standing.dropped));
}

QByteArray metricsText(const StationParts& parts)
{
    AllFacts links;
    for (const std::shared_ptr<MachineLink>& link : parts.links.all())
        links.push_back(factsOf(*link));
    Text text;
    text.beginFamily("build", Text::INFO, "The program.");
    text.add({{"version", QLatin1String(KAKB_PROJECT_VERSION)}}, 1);
    addCounters(text, links);
    addReplyTimes(text, links);
    addLinkGauges(text, links);
    addStationGauges(text, links);
    addWrites(text, parts.links);
    text.beginFamily("clients", Text::GAUGE, "Open HTTP connections.");
    text.add({}, parts.server ? parts.server->clients() : 0);
    if (parts.history) addHistory(text, *parts.history);
    if (parts.plant) addPlantMetrics(text, parts.plant());
    return text.document();
}

} // namespace

void addMetricsRoute(HttpRoutes& routes, const StationParts& parts)
{
    routes.add("GET", "/metrics", answering([&parts](const HttpRequest&) {
                   HttpResponse response;
                   response.contentType = Text::CONTENT_TYPE;
                   response.body = metricsText(parts);
                   return response;
               }));
}
