#include "session/growingPause.h"

#include <gtest/gtest.h>

TEST(GrowingPause, EachIsTwiceTheOneBefore)
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

TEST(GrowingPause, AfterASuccessTheFirstComesAgain)
{
    GrowingPause pause(500);
    pause.take();
    pause.take();
    pause.startAnew();
    EXPECT_EQ(500, pause.take());
    EXPECT_EQ(1000, pause.take());
}
