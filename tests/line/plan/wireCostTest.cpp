#include "plan/wireCost.h"

#include "wire/lineTiming.h"

#include <gtest/gtest.h>

namespace {

LineTiming lineAt(int baud)
{
    LineSettings settings;
    settings.baud = baud;
    return LineTiming(settings);
}

} // namespace

// MODBUS over Serial Line V1.02, 2.5.1.1: characters of 10 bits here, 3.5 of them silent up to
// 19200 baud, 1750 microseconds above.
TEST(WireCost, OfARequestIsItsBytesBothSilencesAndTheTurnaround)
{
    EXPECT_EQ(13542 + 2 * 3646 + 4000, wireCost(lineAt(9600), 4000).request);
    EXPECT_EQ(3386 + 2 * 1750, wireCost(lineAt(38400), 0).request);
}

TEST(WireCost, OfAWordIsTwoBytesRoundedToTheNearest)
{
    EXPECT_EQ(2083, wireCost(lineAt(9600), 0).word);  // 2083.33
    EXPECT_EQ(521, wireCost(lineAt(38400), 0).word);  // 520.83
    EXPECT_EQ(174, wireCost(lineAt(115200), 0).word); // 173.61
}

TEST(WireCost, OfANetworkIsTheTurnaroundAlone)
{
    EXPECT_EQ(5000, wireCost(LineTiming::network(), 5000).request);
    EXPECT_EQ(0, wireCost(LineTiming::network(), 0).request);
    EXPECT_EQ(0, wireCost(LineTiming::network(), 0).word);
}
