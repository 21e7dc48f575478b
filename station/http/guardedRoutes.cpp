#include "http/guardedRoutes.h"

#include "values/strangersJson.h"

namespace {

QHostAddress addressOf(const HttpRequest& request)
{
    QString host = request.peer.left(request.peer.lastIndexOf(QLatin1Char(':')));
    host.remove(QLatin1Char('[')).remove(QLatin1Char(']'));
    return QHostAddress(host);
}

/// A browser that opens the page is shown where to log in.
HttpResponse toLoginPage(const QByteArray& page)
{
    HttpResponse response = errorResponse(303, QStringLiteral("log in first"));
    response.headers.emplace_back("Location", page);
    return response;
}

HttpResponse unauthorised(const QString& sentence)
{
    HttpResponse response = errorResponse(401, sentence);
    response.headers.emplace_back("WWW-Authenticate", "Bearer");
    return response;
}

HttpResponse withCookie(const QByteArray& cookie)
{
    HttpResponse response = jsonResponse("{}");
    if (!cookie.isEmpty()) response.headers.emplace_back("Set-Cookie", cookie);
    return response;
}

} // namespace

GuardedRoutes::GuardedRoutes(const HttpRoutes& routes, const StationClock& clock)
    : m_routes(routes), m_clock(clock), m_access(std::make_shared<const Access>())
{
    m_ownRoutes.addPublic(
        "POST", "/api/v1/login",
        [this](const HttpRequest& request, const HttpAnswer& answer) { answer(login(request)); });
    m_ownRoutes.addPublic(
        "POST", "/api/v1/logout",
        [this](const HttpRequest&, const HttpAnswer& answer) { answer(logout()); });
}

void GuardedRoutes::setAccess(const QByteArray& token, const QStringList& hostNames)
{
    auto access = std::make_shared<Access>();
    if (!token.isEmpty()) access->token.emplace(token);
    access->hostNames = hostNames;
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_access = std::move(access);
}

std::shared_ptr<const GuardedRoutes::Access> GuardedRoutes::access() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_access;
}

std::optional<HttpResponse> GuardedRoutes::refusal(const HttpRequest& withoutBody)
{
    const auto now = access();
    HttpResponse hostRefusal;
    const auto host = hostOf(withoutBody, now->hostNames, hostRefusal);
    if (!host) return hostRefusal;
    if (now->token) {
        if (auto refused = tokenRefusal(withoutBody, *now->token)) return refused;
    }
    // Elsewhere the routes say that the path is unknown, or what it takes.
    if (withoutBody.method == "POST" && routesOf(withoutBody).takesPost(withoutBody.path))
        return postRefusal(withoutBody, *host);
    return std::nullopt;
}

/// A stream is no guess: it was let in once, so nothing is counted.
bool GuardedRoutes::mayGoOn(const HttpRequest& request) const
{
    const auto now = access();
    HttpResponse hostRefusal;
    if (!hostOf(request, now->hostNames, hostRefusal)) return false;
    if (!now->token || isPublic(request)) return true;
    if (now->token->isInCookies(request.header("cookie"))) return true;
    const auto shown = bearerToken(request.header("authorization"));
    return shown && now->token->isToken(*shown);
}

void GuardedRoutes::answer(const HttpRequest& request, const HttpAnswer& answer)
{
    routesOf(request).answer(request, answer);
}

bool GuardedRoutes::isPublic(const HttpRequest& request) const
{
    return m_routes.isPublic(request.path) || m_ownRoutes.isPublic(request.path);
}

const HttpRoutes& GuardedRoutes::routesOf(const HttpRequest& request) const
{
    return m_ownRoutes.isPublic(request.path) ? m_ownRoutes : m_routes;
}

std::optional<HttpResponse> GuardedRoutes::tokenRefusal(const HttpRequest& request,
                                                        const AccessToken& token)
{
    if (isPublic(request)) return std::nullopt;
    if (token.isInCookies(request.header("cookie"))) return std::nullopt;
    if (const auto shown = bearerToken(request.header("authorization")))
        return guessRefusal(*shown, request, token);
    if (request.path == "/" && !m_routes.loginPage().isEmpty())
        return toLoginPage(m_routes.loginPage());
    return unauthorised(QStringLiteral("the station asks for its token"));
}

std::optional<HttpResponse> GuardedRoutes::guessRefusal(const QByteArray& shown,
                                                        const HttpRequest& request,
                                                        const AccessToken& token)
{
    const QHostAddress peer = addressOf(request);
    const qint64 now = m_clock.steady();
    if (const qint64 wait = m_guesses.wait(peer, now)) {
        HttpResponse response =
            errorResponse(429, QStringLiteral("too many wrong tokens came from this address"));
        response.headers.emplace_back("Retry-After", QByteArray::number((wait + 999) / 1000));
        return response;
    }
    if (token.isToken(shown)) return std::nullopt;
    m_guesses.wrong(peer, now);
    return unauthorised(QStringLiteral("the token is wrong"));
}

HttpResponse GuardedRoutes::login(const HttpRequest& request)
{
    const StrangersJson read = strangersObject(request.body);
    if (!read.problem.isEmpty())
        return errorResponse(400, QLatin1String("the body ") + read.problem);
    const QJsonValue shown = read.object.value(QLatin1String("token"));
    if (!shown.isString()) return errorResponse(400, QStringLiteral("the body has no token"));
    const auto now = access();
    if (!now->token) return withCookie(QByteArray());
    if (auto refused = guessRefusal(shown.toString().toUtf8(), request, *now->token))
        return *refused;
    return withCookie(now->token->cookieToSet(request.header("origin")));
}

HttpResponse GuardedRoutes::logout() const
{
    const auto now = access();
    return withCookie(now->token ? now->token->cookieToTakeBack() : QByteArray());
}
