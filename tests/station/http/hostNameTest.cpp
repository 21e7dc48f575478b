#include "http/hostName.h"

#include <gtest/gtest.h>

namespace {

/// "HOST PORT", "HOST -" without a port, or "none".
QByteArray read(const char* text)
{
    const auto found = hostAndPort(text);
    if (!found) return "none";
    return found->host + " " + (found->port < 0 ? "-" : QByteArray::number(found->port));
}

HostAndPort host(const char* text)
{
    return hostAndPort(text).value();
}

} // namespace

TEST(HostName, IsReadWithAndWithoutAPort)
{
    EXPECT_EQ("panel.local -", read("panel.local"));
    EXPECT_EQ("panel.local 8480", read("Panel.LOCAL:8480"));
    EXPECT_EQ("panel.local 1", read("panel.local.:1"));
    EXPECT_EQ("192.168.0.7 80", read("192.168.0.7:80"));
    EXPECT_EQ("[::1] -", read("[::1]"));
    EXPECT_EQ("[fd00::a] 65535", read("[FD00::A]:65535"));
}

TEST(HostName, IsNotReadFromAnythingElse)
{
    for (const char* const text : {"",        ".",         ":80",         "a:",
                                   "a:65536", "a:-1",      "a:8 0",       "a:1:2",
                                   "::1",     "[::1",      "::1]",        "[]",
                                   "[::1]x",  "[::1]x:80", "[127.0.0.1]", "[fe80::1%eth0]",
                                   "a b",     "a@b",       "a/",          "a\\b",
                                   "..a",     "a..b",      "a?",          "a#",
                                   "*",       "a,b",       "\xc3\xa4",    "http://a",
                                   "a:000080"}) {
        EXPECT_EQ("none", read(text)) << text;
    }
    EXPECT_EQ("none", read(QByteArray(254, 'a').constData()));
}

TEST(HostName, NamesTheStationWhenNobodyElseCanOwnIt)
{
    const QStringList given{QLatin1String("Press7"), QLatin1String("panel.example.")};
    for (const char* const name :
         {"10.0.0.1", "[::1]", "localhost", "a.local", "press7", "panel.example"})
        EXPECT_TRUE(namesStation(name, given)) << name;
    for (const char* const name : {"example.com", "local", "press77", "127.1", "2130706433",
                                   "127.0.0.1.example.com", "localhost.example.com"})
        EXPECT_FALSE(namesStation(name, given)) << name;
}

TEST(Origin, IsThePagesWhenHostAndPortAreEqual)
{
    EXPECT_TRUE(isOwnOrigin("http://panel.local:8480", host("panel.local:8480")));
    EXPECT_TRUE(isOwnOrigin("http://panel.local", host("panel.local:80")));
    EXPECT_TRUE(isOwnOrigin("https://panel.local:443", host("panel.local")));
    EXPECT_TRUE(isOwnOrigin("http://[::1]:8480", host("[::1]:8480")));
}

TEST(Origin, IsNotThePagesOtherwise)
{
    EXPECT_FALSE(isOwnOrigin("http://panel.local:8481", host("panel.local:8480")));
    EXPECT_FALSE(isOwnOrigin("http://panel.local", host("panel.local:8480")));
    EXPECT_FALSE(isOwnOrigin("https://panel.local", host("panel.local:80")));
    EXPECT_FALSE(isOwnOrigin("http://other.local", host("panel.local")));
    for (const char* const origin :
         {"", "null", "panel.local", "file://panel.local", "http://panel.local/", "http://",
          "http:panel.local", "HTTP://panel.local", "http://panel.local http://a"})
        EXPECT_FALSE(isOwnOrigin(origin, host("panel.local"))) << origin;
}
