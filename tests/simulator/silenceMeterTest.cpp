#include "silenceMeter.h"

#include <gtest/gtest.h>

TEST(SilenceMeter, MeasuresFromFrameEndToNextRequestStart)
{
    SilenceMeter meter;
    meter.frameEnded(1000);
    meter.requestBegan(2750);
    EXPECT_EQ(1u, meter.silences().count());
    EXPECT_EQ(1750, meter.silences().quantile(0.5));
}

TEST(SilenceMeter, MeasuresNothingAheadOfTheFirstFrame)
{
    SilenceMeter meter;
    meter.requestBegan(2750);
    EXPECT_EQ(0u, meter.silences().count());
    EXPECT_EQ(0, meter.silences().quantile(0));
}

TEST(SilenceMeter, MeasuresFromTheEndOfAnUnansweredRequest)
{
    SilenceMeter meter;
    meter.requestBegan(0);
    meter.frameEnded(800);
    meter.requestBegan(5000);
    EXPECT_EQ(4200, meter.silences().quantile(0));
}

TEST(SilenceMeter, OverlappingRequestIsANegativeSilence)
{
    SilenceMeter meter;
    meter.frameEnded(5000);
    meter.requestBegan(4000);
    EXPECT_EQ(-1000, meter.silences().quantile(0));
}

TEST(SilenceMeter, MeasuresFromTheLatestFrameEnd)
{
    SilenceMeter meter;
    meter.frameEnded(5000);
    meter.frameEnded(4500);
    meter.requestBegan(6000);
    EXPECT_EQ(1000, meter.silences().quantile(0));
}

TEST(SilenceMeter, MeasuresNothingAfterALineReset)
{
    SilenceMeter meter;
    meter.frameEnded(5000);
    meter.lineReset();
    meter.requestBegan(6000);
    EXPECT_EQ(0u, meter.silences().count());
}

TEST(Durations, QuantileIsTheSmallestDurationThatItsShareDoesNotExceed)
{
    Durations durations;
    for (int i = 100; i >= 1; --i)
        durations.add(i);
    EXPECT_EQ(1, durations.quantile(0));
    EXPECT_EQ(50, durations.quantile(0.5));
    EXPECT_EQ(99, durations.quantile(0.99));
    EXPECT_EQ(100, durations.quantile(1));
}
