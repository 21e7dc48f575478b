#include "exchangeMachineFixture.h"

// Of what time an answer tells: a host must not show a value as younger than it is.

namespace {

using AnswerAge = InStepTest;

} // namespace

TEST_F(AnswerAge, AnswerInTimeTellsOfItsOwnTime)
{
    exchange(READ_A);
    ASSERT_EQ(END_ANSWERED, last().end);
    EXPECT_EQ(now, last().asOf);
}

TEST_F(AnswerAge, LateAnswerTellsOfTheTimeOfItsRequest)
{
    ASSERT_EQ(READ_A, ask(READ_A));
    const qint64 left = sentAt + REQUEST_TIME;
    nextFence();
    come(REPLY);
    ASSERT_EQ(END_ANSWERED, last().end);
    EXPECT_EQ(left, last().asOf);
    EXPECT_GT(now, left + WAIT);
}

TEST_F(AnswerAge, RequestThatWasLostAndIsAskedAgainTellsOfItsOwnTime)
{
    ASSERT_EQ(READ_A, ask(READ_A));
    nextFence();
    answer(); // no answer to an earlier request comes behind it
    ASSERT_EQ(READ_A, nextSent());
    come(REPLY);
    ASSERT_EQ(END_ANSWERED, last().end);
    EXPECT_EQ(now, last().asOf);
}
