#include "api/plantRoute.h"

#include "api/apiError.h"
#include "values/jsonText.h"

namespace {

void appendRows(JsonText& json, const char* key, std::optional<qint64> rows)
{
    json.key(key);
    if (rows)
        json.integer(*rows);
    else
        json.null();
}

void appendStanding(JsonText& json, const PlantStanding& standing)
{
    json.beginObject().key("dialect").text(standing.dialect);
    json.key("state").word(plantStateText(standing.state));
    json.key("server").text(standing.server).key("since").integer(standing.since);
    json.key("trouble").textOrNull(standing.trouble);
    appendRows(json, "behind", standing.behind);
    appendRows(json, "dropped", standing.dropped);
    json.key("sessions").integer(qint64(standing.sessions));
    json.key("sent").integer(qint64(standing.sent));
    json.key("historical").integer(qint64(standing.historical));
    json.key("commands").integer(qint64(standing.commands));
    json.key("refusedCommands").integer(qint64(standing.refusedCommands));
    json.endObject();
}

} // namespace

QByteArray plantDocument(const std::vector<PlantStanding>& standings)
{
    JsonText json;
    json.beginArray();
    for (const PlantStanding& standing : standings)
        appendStanding(json, standing);
    return json.endArray().document();
}

void addPlantRoute(HttpRoutes& routes, const StationParts& parts)
{
    routes.add("GET", "/api/v1/plant", answering([&parts](const HttpRequest&) {
                   return jsonResponse(
                       plantDocument(parts.plant ? parts.plant() : std::vector<PlantStanding>()));
               }));
}
