#include "exchange/slowAnswers.h"

#include <gtest/gtest.h>

class SlowAnswersTest : public testing::Test
{
protected:
    void note(int times, qint64 took)
    {
        for (int i = 0; i < times; ++i)
            answers.note(took);
    }

    SlowAnswers answers;
};

TEST_F(SlowAnswersTest, OneIsNoneAsItMayBeChance)
{
    EXPECT_EQ(0, answers.secondSlowest());
    answers.note(500);
    EXPECT_EQ(0, answers.secondSlowest());
}

TEST_F(SlowAnswersTest, TheSecondSlowestCountsInAnyOrder)
{
    const qint64 orders[][3] = {{10, 500, 400}, {400, 10, 500}, {500, 400, 10}, {400, 500, 10}};
    for (const auto& order : orders) {
        SlowAnswers noted;
        for (const qint64 took : order)
            noted.note(took);
        EXPECT_EQ(400, noted.secondSlowest());
    }
}

TEST_F(SlowAnswersTest, TwoThatLieHalfTheMemoryApartCount)
{
    answers.note(500);
    note(SlowAnswers::FEWEST_REMEMBERED, 10);
    answers.note(400);
    EXPECT_EQ(400, answers.secondSlowest());
}

TEST_F(SlowAnswersTest, TheyAreRememberedForAWhileAndThenForgotten)
{
    note(2, 500);
    note(SlowAnswers::FEWEST_REMEMBERED, 10);
    EXPECT_EQ(500, answers.secondSlowest());
    note(SlowAnswers::FEWEST_REMEMBERED, 10);
    EXPECT_EQ(10, answers.secondSlowest());
}
