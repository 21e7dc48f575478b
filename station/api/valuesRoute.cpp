#include "api/valuesRoute.h"

#include "api/namedLink.h"
#include "api/valueDocument.h"

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
    const QString linkName = queriedName(request, "link");
    const QString tagName = queriedName(request, "tag");
    bool isLinkKnown = linkName.isEmpty();
    int count = 0;
    JsonText json;
    json.beginArray();
    for (const std::shared_ptr<MachineLink>& link : parts.links.all()) {
        if (!linkName.isEmpty() && link->name() != linkName) continue;
        isLinkKnown = true;
        count += appendValues(json, *link, tagName, parts.areWritesAllowed);
    }
    if (!isLinkKnown) return unknownLink(linkName);
    if (!tagName.isEmpty() && count == 0) return unknownTag(tagName);
    return jsonResponse(json.endArray().document());
}

} // namespace

void addValuesRoute(HttpRoutes& routes, const StationParts& parts)
{
    routes.add("GET", "/api/v1/values",
               [&parts](const HttpRequest& request, const HttpAnswer& answer) {
                   answer(valuesResponse(request, parts));
               });
}
