#include "api/valuesRoute.h"

#include "api/namedLink.h"
#include "api/valueDocument.h"
#include "plan/tagText.h"

namespace {

/// @param name  of the tags; empty: all
/// @return the number of values
int appendValues(JsonText& json, const MachineLink& link, const QString& name,
                 bool areWritesAllowed)
{
    const std::vector<TagReading> readings = link.values().readings();
    int count = 0;
    for (size_t tag = 0; tag < readings.size(); ++tag) {
        const Tag& known = link.tags()[tag];
        if (!name.isEmpty() && known.name != name) continue;
        appendValue(json, link.name(), known, readings[tag], isWritable(known, areWritesAllowed));
        ++count;
    }
    return count;
}

HttpResponse valuesResponse(const HttpRequest& request, const StationParts& parts)
{
    const QString tagName = queriedName(request, "tag");
    int count = 0;
    JsonText json;
    json.beginArray();
    for (const std::shared_ptr<MachineLink>& link : queriedLinks(parts, request))
        count += appendValues(json, *link, tagName, parts.areWritesAllowed);
    if (!tagName.isEmpty() && count == 0)
        throw ApiError(ApiError::NOT_FOUND, QLatin1String("there is no tag ") + quoted(tagName));
    return jsonResponse(json.endArray().document());
}

} // namespace

void addValuesRoute(HttpRoutes& routes, const StationParts& parts)
{
    routes.add("GET", "/api/v1/values", answering([&parts](const HttpRequest& request) {
                   return valuesResponse(request, parts);
               }));
}
