#include "http/requestGate.h"

#include <algorithm>

namespace {

enum { LONGEST_SHOWN = 60 };

int countOf(const HttpRequest& request, const QByteArray& name)
{
    return int(std::count_if(request.headers.begin(), request.headers.end(),
                             [&name](const auto& header) { return header.first == name; }));
}

bool isJson(const HttpRequest& request)
{
    if (countOf(request, "content-type") != 1) return false;
    const QByteArray type = request.header("content-type");
    const int semicolon = int(type.indexOf(';'));
    return (semicolon < 0 ? type : type.left(semicolon)).trimmed().toLower() == "application/json";
}

bool isFromOwnPage(const HttpRequest& request, const HostAndPort& host)
{
    const int origins = countOf(request, "origin");
    return origins == 0 || (origins == 1 && isOwnOrigin(request.header("origin"), host));
}

} // namespace

std::optional<HostAndPort> hostOf(const HttpRequest& request, const QStringList& hostNames,
                                  HttpResponse& refusal)
{
    const int hosts = countOf(request, "host");
    if (hosts != 1) {
        refusal = errorResponse(400, hosts == 0 ? QStringLiteral("the request has no Host")
                                                : QStringLiteral("the request has several Hosts"));
        return std::nullopt;
    }
    const auto host = hostAndPort(request.header("host"));
    if (!host) {
        refusal = errorResponse(400, QStringLiteral("the Host is not well formed"));
        return std::nullopt;
    }
    if (!namesStation(host->host, hostNames)) {
        refusal = errorResponse(
            421, QStringLiteral("the station is not called %1; see the option --host-name")
                     .arg(QString::fromLatin1(host->host.left(LONGEST_SHOWN))));
        return std::nullopt;
    }
    return host;
}

std::optional<HttpResponse> postRefusal(const HttpRequest& request, const HostAndPort& host)
{
    if (!isJson(request))
        return errorResponse(415, QStringLiteral("the Content-Type must be application/json"));
    if (request.header("x-kakb") != "1")
        return errorResponse(403, QStringLiteral("the header X-Kakb: 1 is missing"));
    if (!isFromOwnPage(request, host))
        return errorResponse(403, QStringLiteral("the request comes from another site's page"));
    return std::nullopt;
}
