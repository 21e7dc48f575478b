#include "http/guardedRoutes.h"

#include "values/testClock.h"

#include <gtest/gtest.h>

namespace {

const HttpRequest::Pairs POST_HEADERS{
    {"host", "panel.local"}, {"x-kakb", "1"}, {"content-type", "application/json"}};

HttpRequest::Pairs with(HttpRequest::Pairs headers, const char* name, const char* value)
{
    headers.emplace_back(name, value);
    return headers;
}

HttpRequest::Pairs without(HttpRequest::Pairs headers, const QByteArray& name)
{
    for (size_t i = 0; i < headers.size(); ++i) {
        if (headers[i].first == name) headers.erase(headers.begin() + qptrdiff(i));
    }
    return headers;
}

/// The routes "/", "/page" and "/login.html" behind the checks.
class GuardedRoute : public testing::Test
{
protected:
    GuardedRoute() : guarded(routes, clock)
    {
        const HttpFunction answering = [](const HttpRequest&, const HttpAnswer& answer) {
            answer(jsonResponse("{}"));
        };
        routes.add("GET", "/", answering);
        routes.add("GET", "/page", answering);
        routes.addPublic("GET", "/login.html", answering);
        routes.setLoginPage("/login.html");
    }

    static HttpRequest request(const char* method, const char* path,
                               const HttpRequest::Pairs& headers = {{"host", "panel.local"}})
    {
        HttpRequest made;
        made.method = method;
        made.path = path;
        made.headers = headers;
        made.peer = QStringLiteral("192.168.0.7:40000");
        return made;
    }

    /// The status of the refusal, or that of the answer.
    int status(const HttpRequest& asked)
    {
        if (const auto refusal = guarded.refusal(asked)) return refusal->status;
        int given = 0;
        guarded.answer(asked, [&given](const HttpResponse& response) { given = response.status; });
        return given;
    }

    int post(const HttpRequest::Pairs& headers)
    {
        return status(request("POST", "/api/v1/logout", headers));
    }

    int page(const char* header, const char* value)
    {
        return status(request("GET", "/page", {{"host", "panel.local"}, {header, value}}));
    }

    HttpResponse login(const QByteArray& body)
    {
        HttpRequest asked = request("POST", "/api/v1/login", POST_HEADERS);
        asked.body = body;
        HttpResponse given;
        guarded.answer(asked, [&given](const HttpResponse& response) { given = response; });
        return given;
    }

    TestClock clock;
    HttpRoutes routes;
    GuardedRoutes guarded;
};

} // namespace

TEST_F(GuardedRoute, HasOneHostOfItsOwn)
{
    EXPECT_EQ(200, status(request("GET", "/page")));
    EXPECT_EQ(400, status(request("GET", "/page", {})));
    EXPECT_EQ(400, status(request("GET", "/page", {{"host", ""}})));
    EXPECT_EQ(400, status(request("GET", "/page", {{"host", "a.local"}, {"host", "a.local"}})));
    EXPECT_EQ(421, status(request("GET", "/page", {{"host", "example.com"}})));
    guarded.setAccess("", {QLatin1String("example.com")});
    EXPECT_EQ(200, status(request("GET", "/page", {{"host", "example.com"}})));
}

TEST_F(GuardedRoute, TakesOnlyThePostsOfItsOwnPage)
{
    EXPECT_EQ(200, post(POST_HEADERS));
    EXPECT_EQ(200, post(with(POST_HEADERS, "origin", "http://panel.local")));
    EXPECT_EQ(403, post(with(POST_HEADERS, "origin", "http://example.com")));
    EXPECT_EQ(403, post(with(with(POST_HEADERS, "origin", "http://panel.local"), "origin",
                             "http://example.com")));
    EXPECT_EQ(403, post(without(POST_HEADERS, "x-kakb")));
    EXPECT_EQ(415, post(without(POST_HEADERS, "content-type")));
    EXPECT_EQ(415, post(with(POST_HEADERS, "content-type", "application/json")));
    const auto typed = [](const char* type) {
        return with(without(POST_HEADERS, "content-type"), "content-type", type);
    };
    EXPECT_EQ(200, post(typed("APPLICATION/json ; charset=utf-8")));
    EXPECT_EQ(415, post(typed("text/plain")));
    EXPECT_EQ(415, post(typed("text/plain;application/json")));
}

TEST_F(GuardedRoute, IsSoughtBeforeThePostIsJudged)
{
    EXPECT_EQ(405, status(request("POST", "/page")));
    EXPECT_EQ(404, status(request("POST", "/none")));
    guarded.setAccess("secret", {});
    EXPECT_EQ(401, status(request("POST", "/page")));
    EXPECT_EQ(401, status(request("POST", "/none")));
}

TEST_F(GuardedRoute, NeedsTheTokenOnceThereIsOne)
{
    EXPECT_EQ(200, page("authorization", "Bearer other"));
    guarded.setAccess("secret", {});
    EXPECT_EQ(401, status(request("GET", "/page")));
    EXPECT_EQ(401, status(request("GET", "/none")));
    EXPECT_EQ(303, status(request("GET", "/")));
    EXPECT_EQ(200, status(request("GET", "/login.html")));
    EXPECT_EQ(401, page("authorization", "Bearer other"));
    EXPECT_EQ(200, page("authorization", "Bearer secret"));
    guarded.setAccess("", {});
    EXPECT_EQ(200, status(request("GET", "/page")));
}

TEST_F(GuardedRoute, TakesTheCookieOfALogin)
{
    guarded.setAccess("secret", {});
    EXPECT_EQ(400, login("[]").status);
    EXPECT_EQ(400, login("{\"token\":1}").status);
    EXPECT_EQ(401, login("{\"token\":\"other\"}").status);
    const HttpResponse response = login("{\"token\":\"secret\"}");
    ASSERT_EQ(200, response.status);
    const QByteArray cookie = response.headers.at(0).second;
    EXPECT_EQ(200, page("cookie", cookie.left(cookie.indexOf(';')).constData()));
    EXPECT_EQ(401, page("cookie", "kakb=secret"));
}

TEST_F(GuardedRoute, GoesOnForWhoWouldBeLetInNow)
{
    const auto goesOn = [this](const char* path, const char* header, const char* value) {
        return guarded.mayGoOn(request("GET", path, {{"host", "press7"}, {header, value}}));
    };
    EXPECT_FALSE(goesOn("/page", "accept", "*/*")) << "of a host name that is not the station's";
    guarded.setAccess("", {QLatin1String("press7")});
    EXPECT_TRUE(goesOn("/page", "authorization", "Bearer other"));
    guarded.setAccess("secret", {QLatin1String("press7")});
    EXPECT_FALSE(goesOn("/page", "accept", "*/*"));
    EXPECT_FALSE(goesOn("/page", "authorization", "Bearer other"));
    EXPECT_TRUE(goesOn("/page", "authorization", "Bearer secret"));
    EXPECT_TRUE(goesOn("/login.html", "accept", "*/*"));
    const QByteArray cookie = login("{\"token\":\"secret\"}").headers.at(0).second;
    EXPECT_TRUE(goesOn("/page", "cookie", cookie.left(cookie.indexOf(';')).constData()));
    guarded.setAccess("next", {QLatin1String("press7")});
    EXPECT_FALSE(goesOn("/page", "cookie", cookie.left(cookie.indexOf(';')).constData()));
}

TEST_F(GuardedRoute, CountsNoStreamAsAGuess)
{
    guarded.setAccess("secret", {});
    for (int i = 0; i < 20; ++i) {
        EXPECT_FALSE(guarded.mayGoOn(
            request("GET", "/page", {{"host", "panel.local"}, {"authorization", "Bearer other"}})));
    }
    EXPECT_EQ(200, page("authorization", "Bearer secret"));
}

TEST_F(GuardedRoute, HoldsUpWhoGuessesAndNobodyElse)
{
    guarded.setAccess("secret", {});
    const QByteArray cookie = login("{\"token\":\"secret\"}").headers.at(0).second;
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(401, page("authorization", "Bearer guess"));
    EXPECT_EQ(429, page("authorization", "Bearer secret"));
    EXPECT_EQ(429, login("{\"token\":\"secret\"}").status);
    EXPECT_EQ(200, page("cookie", cookie.left(cookie.indexOf(';')).constData()));
    HttpRequest fromElsewhere =
        request("GET", "/page", {{"host", "panel.local"}, {"authorization", "Bearer secret"}});
    fromElsewhere.peer = QStringLiteral("[fd00::7]:40000");
    EXPECT_EQ(200, status(fromElsewhere));
    clock.passMs(5000);
    EXPECT_EQ(200, page("authorization", "Bearer secret"));
}
