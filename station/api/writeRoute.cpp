#include "api/writeRoute.h"

#include "api/namedLink.h"
#include "api/writeConsent.h"
#include "api/writeRequest.h"
#include "values/jsonText.h"
#include "values/valueJson.h"
#include "values/writtenValue.h"

namespace {

QByteArray bytesFor(const Tag& tag, const QJsonValue& value)
{
    const std::variant<QByteArray, UnfitValue> bytes = writtenBytes(tag, value);
    if (const auto* const unfit = std::get_if<UnfitValue>(&bytes))
        throw ApiError(ApiError::UNPROCESSABLE, unfit->problem);
    return std::get<QByteArray>(bytes);
}

HttpResponse writeResponse(const WriteEnd& end, const Tag& tag)
{
    JsonText json;
    json.beginObject().key("id").integer(qint64(end.id));
    writeOutcome(json, end.outcome, end.reason);
    json.key("value").raw(valueJson(tag, end.held.bytes)).endObject();
    return jsonResponse(json.document());
}

/// What is not allowed is on the record, too.
void mustAllow(const HttpRequest& request, const MachineLink& link, const Tag& tag,
               const StationParts& parts)
{
    try {
        mustBeWritable(tag, parts);
    } catch (const ApiError& error) {
        JobAudit& audit = parts.links.audit();
        audit.writeRefused({audit.nextId(), link.name(), request.peer}, tag.name,
                           QString::fromUtf8(error.what()));
        throw;
    }
}

/// @throws ApiError when the write is not handed to the link; otherwise the link's thread answers
void write(const HttpRequest& request, const HttpAnswer& answer, const StationParts& parts)
{
    const WriteRequest wanted = writeRequestOf(request.body);
    const std::shared_ptr<MachineLink> link = linkNamed(parts, wanted.link);
    const int tagIndex = tagNamed(*link, wanted.tag);
    const Tag tag = link->tags()[size_t(tagIndex)];
    mustAllow(request, *link, tag, parts);
    link->write(tagIndex, bytesFor(tag, wanted.value), request.peer,
                [answer, tag](const WriteEnd& end) { answer(writeResponse(end, tag)); });
}

} // namespace

void addWriteRoute(HttpRoutes& routes, const StationParts& parts)
{
    routes.add("POST", "/api/v1/write",
               [&parts](const HttpRequest& request, const HttpAnswer& answer) {
                   try {
                       write(request, answer, parts);
                   } catch (const ApiError& error) {
                       answer(responseTo(error));
                   }
               });
}
