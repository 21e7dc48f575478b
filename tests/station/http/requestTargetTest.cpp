#include "http/requestTarget.h"

#include <gtest/gtest.h>

namespace {

/// "PATH" or "PATH KEY=VALUE KEY=VALUE", or "none".
QByteArray read(const QByteArray& text)
{
    const auto target = requestTarget(text);
    if (!target) return "none";
    QByteArray shown = target->path;
    for (const auto& pair : target->query)
        shown += " " + pair.first + "=" + pair.second;
    return shown;
}

} // namespace

TEST(RequestTarget, HasAPathAndAQuery)
{
    EXPECT_EQ("/", read("/"));
    EXPECT_EQ("/a/b", read("/a/b?"));
    EXPECT_EQ("/a k=v l= m=", read("/a?k=v&l=&m"));
    EXPECT_EQ("/a k=v=w", read("/a?k=v=w"));
    EXPECT_EQ("/a k=?", read("/a?k=?"));
    EXPECT_EQ("/a k=1 k=2", read("/a?k=1&&k=2&"));
    EXPECT_EQ("/a =v", read("/a?=v"));
}

TEST(RequestTarget, IsDecodedOnce)
{
    EXPECT_EQ("/a b", read("/a%20b"));
    EXPECT_EQ("/a+b", read("/a+b"));
    EXPECT_EQ("/a k=x y", read("/a?k=x+y"));
    EXPECT_EQ("/a k=x+y", read("/a?k=x%2By"));
    EXPECT_EQ("/%41", read("/%2541"));
    EXPECT_EQ("/a k=1&l=2", read("/a?k=1%26l%3D2"));
    EXPECT_EQ("/\xc3\xa4 \xc3\xb6=\xe2\x82\xac", read("/%c3%A4?%C3%b6=%e2%82%ac"));
}

TEST(RequestTarget, IsNotReadFromAnythingElse)
{
    for (const char* const text :
         {"", "a", "*", "http://a/", "/%", "/%4", "/%4g", "/%g4", "/?k=%", "/%00", "/%0a",
          "/?k=%1f", "/?%7f", "/%ff", "/%c3", "/?k=%c0%80", "/%ed%a0%80", "/\x01", "/?a=\xff"})
        EXPECT_EQ("none", read(text)) << text;
}
