#include "api/framesRoutes.h"

#include "api/frameDocument.h"
#include "api/loggedFrames.h"
#include "api/namedLink.h"

namespace {

QByteArray framesDocument(const FrameLog& log)
{
    JsonText json;
    json.beginArray();
    for (const GatheredFrame& frame : gatheredFrames(log))
        appendFrame(json, frame);
    return json.endArray().document();
}

HttpResponse captureResponse(const FrameLog& log)
{
    HttpResponse response;
    response.contentType = QByteArrayLiteral("application/vnd.tcpdump.pcap");
    response.headers.emplace_back("Content-Disposition", "attachment; filename=\"frames.pcap\"");
    response.body = captureOf(gatheredFrames(log));
    return response;
}

} // namespace

void addFramesRoutes(HttpRoutes& routes, const StationParts& parts)
{
    routes.add("GET", "/api/v1/frames", answering([&parts](const HttpRequest& request) {
                   return jsonResponse(framesDocument(queriedLink(parts, request)->frames()));
               }));
    routes.add("GET", "/api/v1/frames.pcap", answering([&parts](const HttpRequest& request) {
                   return captureResponse(queriedLink(parts, request)->frames());
               }));
}
