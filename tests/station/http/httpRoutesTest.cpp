#include "http/httpRoutes.h"

#include <gtest/gtest.h>

namespace {

HttpFunction answering(const char* text)
{
    return [text](const HttpRequest&, const HttpAnswer& answer) { answer(jsonResponse(text)); };
}

HttpRoutes someRoutes()
{
    HttpRoutes routes;
    routes.add("GET", "/read", answering("read"));
    routes.add("POST", "/both", answering("posted"));
    routes.add("GET", "/both", answering("got"));
    routes.addPublic("GET", "/login.html", answering("login"));
    return routes;
}

HttpResponse answerTo(const char* method, const char* path)
{
    HttpRequest request;
    request.method = method;
    request.path = path;
    HttpResponse given;
    int calls = 0;
    someRoutes().answer(request, [&](const HttpResponse& response) {
        given = response;
        ++calls;
    });
    EXPECT_EQ(1, calls);
    return given;
}

} // namespace

TEST(HttpRoutes, AnswerByPathAndMethod)
{
    EXPECT_EQ("read", answerTo("GET", "/read").body);
    EXPECT_EQ("read", answerTo("HEAD", "/read").body);
    EXPECT_EQ("got", answerTo("GET", "/both").body);
    EXPECT_EQ("posted", answerTo("POST", "/both").body);
}

TEST(HttpRoutes, APathIsTakenAsAWhole)
{
    for (const char* const path : {"", "/", "/rea", "/read/", "/read/x", "/READ", "//read"})
        EXPECT_EQ(404, answerTo("GET", path).status) << path;
}

TEST(HttpRoutes, AnotherMethodIsToldTheRightOnes)
{
    const HttpResponse response = answerTo("DELETE", "/both");
    EXPECT_EQ(405, response.status);
    ASSERT_EQ(1u, response.headers.size());
    EXPECT_EQ("Allow", response.headers[0].first);
    EXPECT_EQ("GET, HEAD, POST", response.headers[0].second);
}

TEST(HttpRoutes, OnlyWhatIsAddedAsPublicIs)
{
    const HttpRoutes routes = someRoutes();
    EXPECT_TRUE(routes.isPublic("/login.html"));
    EXPECT_FALSE(routes.isPublic("/read"));
    EXPECT_FALSE(routes.isPublic("/none"));
}

TEST(HttpMessages, AnErrorIsOneSentenceAsJson)
{
    const HttpResponse response = errorResponse(418, QStringLiteral("a \"b\""));
    EXPECT_EQ(418, response.status);
    EXPECT_EQ("{\"error\":\"a \\\"b\\\"\"}", response.body);
    EXPECT_EQ("application/json", response.contentType);
}
