#include "api/planRoute.h"

#include "api/apiError.h"
#include "api/namedLink.h"
#include "driver/addressText.h"
#include "values/jsonText.h"
#include "wire/timeUnits.h"

namespace {

void appendRead(JsonText& json, const ReadBlock& block, const MachineLink& link,
                const DriverLibrary& addresses)
{
    json.beginObject().key("station").integer(block.station);
    json.key("first").text(block.area + addressText(addresses, block.area, block.number));
    json.key("count").integer(block.count);
    json.key("unit").word(isBitArea(block.area) ? "bits" : "words");
    json.key("rate").text(rateText(block.rate));
    json.key("tags").beginArray();
    for (const int tag : block.tags)
        json.text(link.tags()[size_t(tag)].name);
    json.endArray().endObject();
}

QByteArray planDocument(const MachineLink& link, const DriverLibrary& addresses)
{
    JsonText json;
    json.beginObject().key("link").text(link.name());
    json.key("cycle").number(double(link.cycleUs()) / MILLISECOND);
    json.key("bound").word(link.isPaced() ? "pace" : "line");
    json.key("reads").beginArray();
    for (const ReadBlock& block : link.plan())
        appendRead(json, block, link, addresses);
    json.endArray().endObject();
    return json.document();
}

} // namespace

void addPlanRoute(HttpRoutes& routes, const StationParts& parts)
{
    routes.add("GET", "/api/v1/plan", answering([&parts](const HttpRequest& request) {
                   return jsonResponse(
                       planDocument(*queriedLink(parts, request), *parts.addresses));
               }));
}
