#include "http/connectionLimits.h"

#include <gtest/gtest.h>

namespace {

QHostAddress address(const char* text)
{
    return QHostAddress(QString::fromLatin1(text));
}

void open(ConnectionLimits& limits, const QHostAddress& peer, int count)
{
    for (int i = 0; i < count; ++i) {
        ASSERT_TRUE(limits.refusal(peer).isEmpty()) << i;
        limits.opened(peer);
    }
}

} // namespace

TEST(ConnectionLimits, APeerHasTenConnections)
{
    ConnectionLimits limits;
    open(limits, address("192.168.0.7"), 10);
    EXPECT_FALSE(limits.refusal(address("192.168.0.7")).isEmpty());
    EXPECT_TRUE(limits.refusal(address("192.168.0.8")).isEmpty());
    limits.closed(address("192.168.0.7"));
    EXPECT_TRUE(limits.refusal(address("192.168.0.7")).isEmpty());
}

TEST(ConnectionLimits, ThisMachineHasAllConnections)
{
    for (const char* const host : {"127.0.0.1", "127.0.0.9", "::1"}) {
        ConnectionLimits limits;
        open(limits, address(host), 64);
        EXPECT_FALSE(limits.refusal(address(host)).isEmpty()) << host;
        EXPECT_FALSE(limits.refusal(address("192.168.0.7")).isEmpty()) << host;
        EXPECT_EQ(64, limits.count());
    }
}

TEST(ConnectionLimits, AllPeersTogetherHave64)
{
    ConnectionLimits limits;
    for (int peer = 0; peer < 6; ++peer)
        open(limits, QHostAddress(0x0a000000u + quint32(peer)), 10);
    open(limits, address("fd00::7"), 4);
    EXPECT_FALSE(limits.refusal(address("10.9.9.9")).isEmpty());
    limits.closed(address("fd00::7"));
    EXPECT_TRUE(limits.refusal(address("10.9.9.9")).isEmpty());
}

TEST(ConnectionLimits, AnEndOfAnUnknownPeerCountsNothing)
{
    ConnectionLimits limits;
    limits.opened(address("10.0.0.1"));
    limits.closed(address("10.0.0.2"));
    EXPECT_EQ(1, limits.count());
}
