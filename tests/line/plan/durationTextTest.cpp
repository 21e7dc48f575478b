#include "plan/durationText.h"
#include "plan/readRate.h"

#include <gtest/gtest.h>

namespace {

/// -1: the text is no duration.
qint64 msOf(const char* text)
{
    return durationMs(QString::fromUtf8(text)).value_or(-1);
}

} // namespace

TEST(DurationText, NumberAndUnitAreMilliseconds)
{
    EXPECT_EQ(1, msOf("1ms"));
    EXPECT_EQ(500, msOf("500ms"));
    EXPECT_EQ(10000, msOf("10s"));
    EXPECT_EQ(300000, msOf("5m"));
    EXPECT_EQ(0, msOf("0ms"));
    EXPECT_EQ(999999999LL * 60000, msOf("999999999m"));
}

TEST(DurationText, OnlyZeroNeedsNoUnit)
{
    EXPECT_EQ(0, msOf("0"));
    EXPECT_EQ(-1, msOf("5"));
    EXPECT_EQ(-1, msOf("00"));
}

TEST(DurationText, AnyOtherTextIsNoDuration)
{
    for (const char* const text :
         {"", "s", "ms", "-1s", "+1s", "1.5s", "1 s", " 1s", "1s ", "1S", "1h", "1min", "1ss",
          "1s\n", "0x1s", "1e3s", "1000000000s", "99999999999999999999s", "\xD9\xA5s"})
        EXPECT_EQ(-1, msOf(text)) << '"' << text << '"';
}

TEST(DurationText, TextHasTheLongestUnitOfAWholeNumber)
{
    const std::pair<qint64, const char*> expected[] = {
        {0, "0"},       {1, "1ms"},    {1500, "1500ms"}, {1000, "1s"},
        {90000, "90s"}, {60000, "1m"}, {300000, "5m"},   {3600000, "60m"},
    };
    for (const auto& [ms, text] : expected)
        EXPECT_EQ(QLatin1String(text), durationText(ms));
}

TEST(ReadRateText, FastOnceAndDurationsAreRates)
{
    ReadRate rate;
    rate.kind = ReadRate::ONCE;
    EXPECT_TRUE(takeRate(QString(), rate));
    EXPECT_EQ(ReadRate::EVERY_CYCLE, rate.kind);
    for (const char* const text : {"fast", "once", "250ms", "10s", "5m"}) {
        ASSERT_TRUE(takeRate(QLatin1String(text), rate)) << text;
        EXPECT_EQ(QLatin1String(text), rateText(rate));
    }
    EXPECT_EQ(ReadRate::INTERVAL, rate.kind);
    EXPECT_EQ(300000, rate.intervalMs);
}

TEST(ReadRateText, AnyOtherTextIsNoRate)
{
    ReadRate rate;
    for (const char* const text : {"0", "0s", "slow", "Fast", "ONCE", "5", "-1s"})
        EXPECT_FALSE(takeRate(QLatin1String(text), rate)) << text;
}
