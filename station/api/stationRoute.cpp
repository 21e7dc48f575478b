#include "api/stationRoute.h"

#include "api/apiError.h"
#include "values/jsonText.h"
#include "wire/timeUnits.h"

namespace {

/// @param value  negative: there is none
void appendFigure(JsonText& json, const char* key, double value)
{
    json.key(key);
    if (value < 0)
        json.null();
    else
        json.number(value);
}

/// @param time  microseconds; negative: no reply came
void appendReplyTime(JsonText& json, const char* key, qint64 time)
{
    appendFigure(json, key, double(time) / MILLISECOND);
}

void appendFigures(JsonText& json, const LinkFigures& figures)
{
    json.key("exchanges").integer(figures.exchanges).key("retries").integer(figures.retries);
    json.key("giveUps").integer(figures.giveUps).key("refused").integer(figures.refusals);
    json.key("losses").integer(figures.losses);
    appendReplyTime(json, "replyP50", figures.lately.replyMedian);
    appendReplyTime(json, "replyP99", figures.lately.reply99);
    appendFigure(json, "wire", figures.lately.wireShare);
}

void appendStations(JsonText& json, const std::vector<StationStanding>& stations)
{
    json.key("stations").beginArray();
    for (const StationStanding& station : stations) {
        json.beginObject().key("station").integer(station.station);
        json.key("state").word(station.answers ? "answers" : "silent");
        json.key("since").integer(station.since);
        json.key("trouble").textOrNull(station.trouble).endObject();
    }
    json.endArray();
}

void appendLink(JsonText& json, const MachineLink& link)
{
    const LinkState state = link.values().state();
    json.beginObject().key("name").text(link.name()).key("link").text(link.config().link);
    json.key("state").word(linkStandingText(state.standing));
    json.key("since").integer(state.since).key("trouble").textOrNull(state.trouble);
    appendFigures(json, state.figures);
    appendStations(json, state.stations);
    json.endObject();
}

QByteArray stationDocument(const StationParts& parts)
{
    JsonText json;
    json.beginObject().key("name").text(parts.name).key("version").word(KAKB_PROJECT_VERSION);
    json.key("started").integer(parts.started).key("writes").boolean(parts.areWritesAllowed);
    json.key("links").beginArray();
    for (const std::shared_ptr<MachineLink>& link : parts.links.all())
        appendLink(json, *link);
    json.endArray().endObject();
    return json.document();
}

} // namespace

void addStationRoute(HttpRoutes& routes, const StationParts& parts)
{
    routes.add("GET", "/api/v1/station", answering([&parts](const HttpRequest&) {
                   return jsonResponse(stationDocument(parts));
               }));
}
