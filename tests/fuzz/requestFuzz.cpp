// The head of an HTTP request and the body of a login, through all checks of the station: whatever
// is let in has one Host that names the station, shows the token, and could not have been sent by
// another site's page.

#include "http/guardedRoutes.h"
#include "http/requestFraming.h"

#include <QList>

#include <cstdio>
#include <cstdlib>

namespace {

const char* const TOKEN = "t0";
const char* const HOST_NAME = "press7";

/// A clock that does not move.
class StoppedClock : public StationClock
{
public:
    qint64 steady() const override
    {
        return 1;
    }
    qint64 wall() const override
    {
        return 1;
    }
};

void require(bool isKept, const char* rule)
{
    if (isKept) return;
    std::fprintf(stderr, "rule broken: %s\n", rule);
    std::abort();
}

/// The lines METHOD, TARGET, VERSION and headers up to an empty line, without carriage returns.
RequestHead headOf(QList<QByteArray>& lines)
{
    const auto next = [&lines] { return lines.isEmpty() ? QByteArray() : lines.takeFirst(); };
    RequestHead head;
    head.method = next();
    head.target = next();
    head.version = next();
    for (QByteArray line = next(); !line.isEmpty(); line = next()) {
        const int colon = int(line.indexOf(':'));
        head.headers.emplace_back(line.left(colon).toLower(),
                                  colon < 0 ? QByteArray() : line.mid(colon + 1).trimmed());
    }
    return head;
}

std::vector<QByteArray> valuesOf(const HttpRequest& request, const char* name)
{
    std::vector<QByteArray> values;
    for (const auto& header : request.headers) {
        if (header.first == name) values.push_back(header.second);
    }
    return values;
}

/// Told in another way than the server does: by what a foreign name must have.
bool mayNameStation(const QByteArray& host)
{
    const QByteArray lower = host.toLower();
    const bool isNumeric =
        lower.contains('[') ||
        !std::any_of(lower.begin(), lower.end(), [](char c) { return c >= 'a' && c <= 'z'; });
    return isNumeric || lower.startsWith("localhost") || lower.contains(".local") ||
           lower.startsWith(HOST_NAME);
}

/// Of the cookie that a login gives.
const QByteArray& cookieValue()
{
    static const QByteArray value =
        AccessToken(TOKEN).cookieToSet(QByteArray()).split(';')[0].split('=')[1];
    return value;
}

void checkLetIn(const HttpRequest& request)
{
    const auto hosts = valuesOf(request, "host");
    require(hosts.size() == 1 && mayNameStation(hosts[0]), "a foreign Host was let in");
    require(request.path.startsWith('/'), "a path that is none was let in");
    require(QString::fromUtf8(request.path).toUtf8() == request.path, "a path is no UTF-8");
    if (request.method == "POST") {
        require(request.header("x-kakb") == "1", "a POST without X-Kakb was let in");
        require(request.header("content-type").toLower().contains("application/json"),
                "a POST without JSON was let in");
        const auto origins = valuesOf(request, "origin");
        require(origins.empty() || origins[0].toLower().startsWith("http"),
                "a POST of no page was let in");
    }
    const bool isLogin = request.path == "/api/v1/login" || request.path == "/api/v1/logout";
    const bool isShown = request.header("authorization").contains(TOKEN) ||
                         request.header("cookie").contains(cookieValue());
    require(isLogin || isShown, "a request without the token was let in");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const StoppedClock clock;
    const HttpRoutes routes;
    GuardedRoutes guarded(routes, clock);
    guarded.setAccess(TOKEN, {QLatin1String(HOST_NAME)});

    QList<QByteArray> lines =
        QByteArray(reinterpret_cast<const char*>(data), int(size)).split('\n');
    const RequestHead head = headOf(lines);
    JudgedHead judged = judgedHead(head, QStringLiteral("192.168.0.7:1"), guarded);
    if (judged.refusal) {
        require(judged.refusal->status >= 300, "a refusal is none");
        return 0;
    }
    checkLetIn(judged.request);
    judged.request.body = lines.join('\n');
    int answers = 0;
    guarded.answer(judged.request, [&](const HttpResponse& response) {
        ++answers;
        const bool isCookieSet = !response.headers.empty() &&
                                 response.headers[0].first == "Set-Cookie" &&
                                 !response.headers[0].second.contains("Max-Age=0");
        require(!isCookieSet || judged.request.body.contains('t') ||
                    judged.request.body.contains('\\'),
                "a login without the token gave a cookie");
    });
    require(answers == 1, "a request has one answer");
    return 0;
}
