#include "api/historyRoutes.h"

#include "api/historyCsv.h"
#include "api/historySpan.h"
#include "api/historyText.h"
#include "api/namedLink.h"
#include "history/history.h"
#include "http/httpServer.h"
#include "plan/tagText.h"

namespace {

History& keptHistory(const StationParts& parts)
{
    if (parts.history) return *parts.history;
    throw ApiError(ApiError::UNAVAILABLE,
                   QLatin1String("this station keeps no history: it runs with --no-history"));
}

HistoryQuery queryFor(const MachineLink& link, const Tag& tag, const HistorySpan& span)
{
    HistoryQuery query;
    query.link = link.name();
    query.tag = tag.name;
    query.from = span.from;
    query.until = span.until;
    query.points = span.points;
    return query;
}

/// @throws ApiError; otherwise the background answers
void answerBuckets(const HttpRequest& request, const HttpAnswer& answer, const StationParts& parts,
                   BackgroundWork& work)
{
    History& history = keptHistory(parts);
    const std::shared_ptr<MachineLink> link = queriedLink(parts, request);
    const QString name = queriedName(request, "tag");
    if (name.isEmpty())
        throw ApiError(ApiError::BAD_REQUEST, QLatin1String("the query names no tag"));
    const Tag tag = link->tags()[size_t(tagNamed(*link, name))];
    const HistoryQuery query = queryFor(*link, tag, historySpanOf(request, parts.clock.wall()));
    const bool isTaken = work.add([answer, &history, query, tag] {
        answer(jsonResponse(historyDocument(query, tag, history.buckets(query))));
    });
    if (isTaken) return;
    throw ApiError(ApiError::UNAVAILABLE, QLatin1String("too many queries of the history wait"));
}

/// The tags that a query names: one, or all of a link, or all.
std::vector<HistoryCsv::Series> queriedSeries(const StationParts& parts, const HttpRequest& request)
{
    const HistorySpan span = historySpanOf(request, parts.clock.wall());
    const QString name = queriedName(request, "tag");
    std::vector<HistoryCsv::Series> series;
    for (const std::shared_ptr<MachineLink>& link : queriedLinks(parts, request)) {
        for (const Tag& tag : link->tags()) {
            if (name.isEmpty() || tag.name == name)
                series.push_back({queryFor(*link, tag, span), tag});
        }
    }
    if (!name.isEmpty() && series.empty())
        throw ApiError(ApiError::NOT_FOUND, QLatin1String("there is no tag ") + quoted(name));
    return series;
}

HttpResponse csvResponse(const HttpRequest& request, const StationParts& parts,
                         const std::shared_ptr<BackgroundWork>& work)
{
    History& history = keptHistory(parts);
    HistoryCsv csv(queriedSeries(parts, request),
                   [&history](const HistoryQuery& query, qint64 after, int most) {
                       return history.rows(query, after, most);
                   });
    HttpResponse response;
    response.contentType = QByteArrayLiteral("text/csv; charset=utf-8; header=present");
    // Without a name here, a file is named by the page that offers it, else by the path.
    response.headers.emplace_back("Content-Disposition", "attachment");
    response.stream = historyCsvBody(std::move(csv), work, [&parts] {
        if (parts.server) parts.server->wake();
    });
    return response;
}

} // namespace

void addHistoryRoutes(HttpRoutes& routes, const StationParts& parts)
{
    const auto work = std::make_shared<BackgroundWork>();
    routes.add("GET", "/api/v1/history",
               [&parts, work](const HttpRequest& request, const HttpAnswer& answer) {
                   try {
                       answerBuckets(request, answer, parts, *work);
                   } catch (const ApiError& error) {
                       answer(responseTo(error));
                   }
               });
    routes.add("GET", "/api/v1/history.csv", answering([&parts, work](const HttpRequest& request) {
                   return csvResponse(request, parts, work);
               }));
}
