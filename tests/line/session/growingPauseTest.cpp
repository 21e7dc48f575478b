#include "session/growingPause.h"

#include <gtest/gtest.h>

TEST(GrowingPause, EachIsTwiceAsLongAsThePauseBefore)
{
    GrowingPause pause(500);
    for (const int ms : {500, 1000, 2000, 4000, 8000, 16000})
        EXPECT_EQ(ms, pause.take());
}

TEST(GrowingPause, NoneIsLongerThanThirtySeconds)
{
    GrowingPause pause(16000);
    for (const int ms : {16000, 30000, 30000, 30000})
        EXPECT_EQ(ms, pause.take());
}

TEST(GrowingPause, LongestOneIsNeverShorterThanTheFirst)
{
    GrowingPause pause(5000, 8000);
    for (const int ms : {5000, 8000, 8000})
        EXPECT_EQ(ms, pause.take());
    GrowingPause first(9000, 8000);
    for (const int ms : {9000, 9000})
        EXPECT_EQ(ms, first.take());
}

TEST(GrowingPause, SuccessRestartsWithTheFirstPause)
{
    GrowingPause pause(500);
    pause.take();
    pause.take();
    pause.startAnew();
    EXPECT_EQ(500, pause.take());
    EXPECT_EQ(1000, pause.take());
}
