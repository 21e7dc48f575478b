#include "session/wireUse.h"

#include <gtest/gtest.h>

TEST(WireUse, AWireNeverUsedHasNoShare)
{
    EXPECT_DOUBLE_EQ(0, WireUse(1000).share(2000));
}

TEST(WireUse, ThereIsNoShareBeforeAnyTimeHasPassed)
{
    WireUse use(1000);
    use.add(1000, 2000);
    EXPECT_DOUBLE_EQ(0, use.share(1000));
    EXPECT_DOUBLE_EQ(0, use.share(900));
}

TEST(WireUse, TheShareIsBusyTimeOfTheTimeSinceTheStart)
{
    WireUse use(1000);
    use.add(1100, 1200);
    use.add(1500, 1650);
    EXPECT_DOUBLE_EQ(0.25, use.share(2000));
}

TEST(WireUse, TheShareFallsWhileTheWireRests)
{
    WireUse use(0);
    use.add(0, 100);
    EXPECT_DOUBLE_EQ(1, use.share(100));
    EXPECT_DOUBLE_EQ(0.1, use.share(1000));
}

TEST(WireUse, OverlappingTimesCountOnce)
{
    WireUse use(0);
    use.add(0, 400);
    use.add(300, 500);
    use.add(350, 450);
    EXPECT_DOUBLE_EQ(0.5, use.share(1000));
}

TEST(WireUse, WhatLiesBeforeTheEndOfAnEarlierCallDoesNotCount)
{
    WireUse use(0);
    use.add(500, 600);
    use.add(200, 300);
    use.add(400, 700);
    EXPECT_DOUBLE_EQ(0.2, use.share(1000));
}

TEST(WireUse, TimeBeforeTheStartDoesNotCount)
{
    WireUse use(1000);
    use.add(0, 1100);
    EXPECT_DOUBLE_EQ(0.1, use.share(2000));
}

TEST(WireUse, AnEmptyOrReversedTimeDoesNotCount)
{
    WireUse use(0);
    use.add(100, 100);
    use.add(300, 200);
    EXPECT_DOUBLE_EQ(0, use.share(1000));
}

TEST(WireUse, AFrameStillBeingSentCountsAsFarAsItIsOnTheWire)
{
    WireUse use(0);
    use.add(50, 300);
    EXPECT_DOUBLE_EQ(0.5, use.share(100));
}
