#include "program/listenAddress.h"

#include <gtest/gtest.h>

namespace {

/// The page's address of a text; "none" when the text is no address.
std::string urlOf(const char* text)
{
    const std::optional<ListenAddress> listen = listenAddress(QLatin1String(text));
    return listen ? pageUrl(listen->address, listen->port).toStdString() : "none";
}

} // namespace

TEST(ListenAddress, HasAnAddressAndAPort)
{
    EXPECT_EQ("http://127.0.0.1:8480/", urlOf("127.0.0.1:8480"));
    EXPECT_EQ("http://0.0.0.0:1/", urlOf("0.0.0.0:1"));
    EXPECT_EQ("http://192.168.0.10:65535/", urlOf("192.168.0.10:65535"));
}

TEST(ListenAddress, AnIpv6AddressStandsInBrackets)
{
    EXPECT_EQ("http://[::1]:8480/", urlOf("[::1]:8480"));
    EXPECT_EQ("http://[2001:db8::7]:80/", urlOf("[2001:DB8::7]:80"));
    EXPECT_EQ("none", urlOf("::1:8480"));
    EXPECT_EQ("none", urlOf("[127.0.0.1]:8480"));
}

TEST(ListenAddress, PortZeroAsksForAnyFreePort)
{
    EXPECT_EQ("http://127.0.0.1:0/", urlOf("127.0.0.1:0"));
}

TEST(ListenAddress, OtherTextsAreNone)
{
    for (const char* const text :
         {"", "8480", ":8480", "127.0.0.1", "127.0.0.1:", "127.0.0.1:65536", "127.0.0.1:-1",
          "127.0.0.1:8480 ", "127.0.0.1:8480\n", "localhost:8480", "1.2.3:80", "256.0.0.1:80",
          "127.0.0.1:123456", "[::1]", "[::1%lo]:80"}) {
        EXPECT_EQ("none", urlOf(text)) << text;
        EXPECT_FALSE(listenProblem(QLatin1String(text)).isEmpty()) << text;
    }
    EXPECT_EQ("", listenProblem(QLatin1String("127.0.0.1:8480")).toStdString());
}

TEST(ListenAddress, OnlyLoopbackAddressesAreOfThisMachineAlone)
{
    for (const char* const text : {"127.0.0.1:1", "127.9.9.9:1", "[::1]:1"})
        EXPECT_TRUE(listenAddress(QLatin1String(text))->isLoopback()) << text;
    for (const char* const text : {"0.0.0.0:1", "[::]:1", "10.0.0.1:1", "[fe80::1]:1"})
        EXPECT_FALSE(listenAddress(QLatin1String(text))->isLoopback()) << text;
}
