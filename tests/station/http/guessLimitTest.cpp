#include "http/guessLimit.h"

#include <gtest/gtest.h>

namespace {

const qint64 SECOND = 1000000;
const qint64 BEGIN = 3 * SECOND;
const QHostAddress PEER(QLatin1String("192.168.0.7"));

void guess(GuessLimit& limit, const QHostAddress& peer, int count, qint64 now)
{
    for (int i = 0; i < count; ++i) {
        ASSERT_EQ(0, limit.wait(peer, now)) << i;
        limit.wrong(peer, now);
    }
}

} // namespace

TEST(GuessLimit, TenWrongGuessesAreFree)
{
    GuessLimit limit;
    guess(limit, PEER, 10, BEGIN);
    EXPECT_EQ(5000, limit.wait(PEER, BEGIN));
}

TEST(GuessLimit, AProxyOnThisMachineIsNeverHeldUp)
{
    GuessLimit limit;
    guess(limit, QHostAddress(QLatin1String("127.0.0.1")), 100, BEGIN);
    guess(limit, QHostAddress(QLatin1String("::1")), 100, BEGIN);
    guess(limit, QHostAddress(QLatin1String("::ffff:127.0.0.1")), 100, BEGIN);
}

TEST(GuessLimit, OneMoreEveryFiveSeconds)
{
    GuessLimit limit;
    guess(limit, PEER, 10, BEGIN);
    for (int i = 1; i < 100; ++i) {
        const qint64 now = BEGIN + 5 * i * SECOND;
        EXPECT_EQ(1, limit.wait(PEER, now - 1));
        guess(limit, PEER, 1, now);
        EXPECT_EQ(5000, limit.wait(PEER, now));
    }
}

TEST(GuessLimit, WhoRestsHasTenAgain)
{
    GuessLimit limit;
    guess(limit, PEER, 10, BEGIN);
    guess(limit, PEER, 10, BEGIN + 50 * SECOND);
    EXPECT_EQ(5000, limit.wait(PEER, BEGIN + 50 * SECOND));
}

TEST(GuessLimit, OneAddressDoesNotHoldUpAnother)
{
    GuessLimit limit;
    guess(limit, PEER, 10, BEGIN);
    EXPECT_EQ(0, limit.wait(QHostAddress(QLatin1String("192.168.0.8")), BEGIN));
}

TEST(GuessLimit, AnIpv6NetworkIsOneGuesser)
{
    GuessLimit limit;
    guess(limit, QHostAddress(QLatin1String("2001:db8:1:2::1")), 10, BEGIN);
    EXPECT_NE(0, limit.wait(QHostAddress(QLatin1String("2001:db8:1:2:ffff::9")), BEGIN));
    EXPECT_EQ(0, limit.wait(QHostAddress(QLatin1String("2001:db8:1:3::1")), BEGIN));
}

TEST(GuessLimit, ManyAddressesDoNotSetTheWorstOneFree)
{
    GuessLimit limit;
    guess(limit, PEER, 10, BEGIN);
    for (quint32 i = 0; i < 5000; ++i)
        limit.wrong(QHostAddress(0x0a000000u + i), BEGIN);
    EXPECT_NE(0, limit.wait(PEER, BEGIN));
}
