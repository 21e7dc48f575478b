#include "http/accessToken.h"

#include <gtest/gtest.h>

namespace {

/// "NAME=VALUE" of what sets a cookie.
QByteArray pairOf(const QByteArray& setCookie)
{
    return setCookie.left(setCookie.indexOf(';'));
}

} // namespace

TEST(AccessToken, IsOnlyItself)
{
    const AccessToken token("secret");
    EXPECT_TRUE(token.isToken("secret"));
    for (const char* const other : {"", "secre", "secretx", "Secret", "secret "})
        EXPECT_FALSE(token.isToken(other)) << other;
    EXPECT_FALSE(token.isToken(QByteArray("secret\0", 7)));
}

TEST(AccessToken, ItsCookieIsFoundAmongOthers)
{
    const AccessToken token("secret");
    const QByteArray cookie = pairOf(token.cookieToSet(""));
    EXPECT_TRUE(token.isInCookies(cookie));
    EXPECT_TRUE(token.isInCookies("a=b; " + cookie + ";c"));
    EXPECT_TRUE(token.isInCookies(cookie.left(cookie.indexOf('=')) + "=stale; " + cookie));
    for (const QByteArray& cookies :
         {QByteArray(), QByteArray(";"), QByteArray("="), cookie + "0", cookie.left(30),
          "x" + cookie, cookie.left(cookie.indexOf('=')) + "=secret"})
        EXPECT_FALSE(token.isInCookies(cookies)) << cookies.constData();
}

TEST(AccessToken, ItsCookieIsNotThatOfAnotherToken)
{
    EXPECT_FALSE(AccessToken("secret").isInCookies(pairOf(AccessToken("other").cookieToSet(""))));
    // After a restart the token is the same.
    EXPECT_TRUE(AccessToken("secret").isInCookies(pairOf(AccessToken("secret").cookieToSet(""))));
    EXPECT_FALSE(AccessToken("secret").cookieToSet("").contains("secret"));
}

TEST(AccessToken, ItsCookieKeepsToTlsWhenTheBrowserCameSo)
{
    const AccessToken token("secret");
    EXPECT_TRUE(token.cookieToSet("https://panel.local").contains("; Secure"));
    EXPECT_FALSE(token.cookieToSet("http://panel.local").contains("Secure"));
    EXPECT_TRUE(token.cookieToSet("").contains("; HttpOnly; SameSite=Strict"));
}

TEST(BearerToken, IsReadFromItsHeader)
{
    EXPECT_EQ(QByteArray("abc"), bearerToken("Bearer abc").value());
    EXPECT_EQ(QByteArray("abc"), bearerToken("bEARER   abc ").value());
    EXPECT_EQ(QByteArray(""), bearerToken("Bearer ").value());
    for (const char* const text : {"", "Bearer", "abc", "Basic abc", " Bearer abc", "Bearerx abc"})
        EXPECT_FALSE(bearerToken(text)) << text;
}
