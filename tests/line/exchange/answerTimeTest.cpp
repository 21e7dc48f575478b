#include "exchange/answerTime.h"

#include <gtest/gtest.h>

// RFC 6298, 2. The first time R makes the mean R and the deviation R / 2. Each further time R'
// makes the deviation 3/4 of itself plus 1/4 of the distance of R' from the mean, then the mean 7/8
// of itself plus 1/8 of R'. The time-out is the mean plus four deviations.

namespace {

enum { SHORTEST = 1000, SECOND = 1000000 };

/// Notes the same time several times.
void noteOften(AnswerTime& time, qint64 took, int times)
{
    for (int i = 0; i < times; ++i)
        time.note(took);
}

} // namespace

TEST(AnswerTime, TimeOutBeforeTheFirstAnswerIsTheShortest)
{
    EXPECT_EQ(SHORTEST, AnswerTime(SHORTEST).timeOut());
}

TEST(AnswerTime, FirstAnswerMakesTheTimeOutThreeTimesItsTime)
{
    AnswerTime time(SHORTEST);
    time.note(8000); // mean 8000, deviation 4000
    EXPECT_EQ(24000, time.timeOut());
}

TEST(AnswerTime, FurtherAnswersAreSmoothed)
{
    AnswerTime time(SHORTEST);
    time.note(8000);
    time.note(16000); // deviation 3000 + 2000, mean 7000 + 2000
    EXPECT_EQ(9000 + 4 * 5000, time.timeOut());
    time.note(1000); // deviation 3750 + 2000, mean 7875 + 125
    EXPECT_EQ(8000 + 4 * 5750, time.timeOut());
}

TEST(AnswerTime, QuickAnswersKeepTheShortestTimeOut)
{
    AnswerTime time(SHORTEST);
    noteOften(time, 10, 50);
    EXPECT_EQ(SHORTEST, time.timeOut());
    noteOften(time, 0, 50);
    EXPECT_EQ(SHORTEST, time.timeOut());
}

TEST(AnswerTime, ConstantTimeBringsTheTimeOutCloseToIt)
{
    // The deviation falls by a quarter each time: 3/4 to the 40th is 0.00001.
    AnswerTime time(SHORTEST);
    noteOften(time, 64000, 40);
    EXPECT_GE(time.timeOut(), 64000);
    EXPECT_LE(time.timeOut(), 64000 + 4 * 4); // integers: a deviation below 4 does not fall further
}

TEST(AnswerTime, OneStallIsForgottenWithinFortyAnswers)
{
    AnswerTime time(SHORTEST);
    noteOften(time, 2000, 20);
    const qint64 before = time.timeOut();
    time.note(100000);
    EXPECT_GT(time.timeOut(), 100000);
    noteOften(time, 2000, 40); // 7/8 to the 40th is 0.005, of 12250 that the mean rose by
    EXPECT_LT(time.timeOut(), before + 1000);
}

TEST(AnswerTime, TheTimeOutGrowsTo128TimesTheShortest)
{
    AnswerTime time(SHORTEST);
    time.note(10 * SECOND);
    EXPECT_EQ(128 * SHORTEST, time.timeOut());
}

TEST(AnswerTime, TheTimeOutGrowsToTenSecondsWhereThatIsLess)
{
    AnswerTime time(SECOND / 2);
    time.note(100 * qint64(SECOND));
    EXPECT_EQ(10 * SECOND, time.timeOut());
}

TEST(AnswerTime, ALongShortestTimeOutGrowsEightfold)
{
    AnswerTime time(2 * SECOND);
    time.note(100 * qint64(SECOND));
    EXPECT_EQ(16 * SECOND, time.timeOut());
}
