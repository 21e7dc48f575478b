#include "api/healthRoute.h"

#include "api/apiError.h"
#include "history/history.h"
#include "plan/tagText.h"
#include "values/jsonText.h"

namespace {

QString linkReason(const QString& name, const LinkState& state)
{
    QString reason = QString(QLatin1String("link %1 is %2"))
                         .arg(quoted(name), QLatin1String(linkStandingText(state.standing)));
    if (!state.trouble.isEmpty()) reason += QLatin1String(": ") + state.trouble;
    return reason;
}

/// The stations of a link that is not up cannot be judged.
QStringList linkReasons(const MachineLink& link)
{
    const LinkState state = link.values().state();
    if (state.standing != LINK_UP) return {linkReason(link.name(), state)};
    QStringList reasons;
    for (const StationStanding& station : state.stations) {
        if (station.answers) continue;
        reasons << QString(QLatin1String("station %1 of link %2 is silent"))
                       .arg(QString::number(station.station), quoted(link.name()));
    }
    return reasons;
}

QStringList stationReasons(const StationParts& parts)
{
    QStringList reasons;
    for (const std::shared_ptr<MachineLink>& link : parts.links.all())
        reasons << linkReasons(*link);
    const QString trouble = parts.history ? parts.history->standing().trouble : QString();
    if (!trouble.isEmpty()) reasons << QLatin1String("the history is not written: ") + trouble;
    return reasons;
}

HttpResponse healthResponse(const QStringList& reasons)
{
    JsonText json;
    json.beginObject().key("healthy").boolean(reasons.isEmpty());
    json.key("reasons").beginArray();
    for (const QString& reason : reasons)
        json.text(reason);
    HttpResponse response = jsonResponse(json.endArray().endObject().document());
    if (!reasons.isEmpty()) response.status = ApiError::UNAVAILABLE;
    return response;
}

} // namespace

void addHealthRoute(HttpRoutes& routes, const StationParts& parts)
{
    routes.add("GET", "/healthz", answering([&parts](const HttpRequest&) {
                   return healthResponse(stationReasons(parts));
               }));
}
