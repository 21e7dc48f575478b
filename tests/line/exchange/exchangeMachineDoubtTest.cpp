#include "exchangeMachineFixture.h"

// Each thing that leaves a doubt of what a station may still answer, and so brings a fence ahead of
// the next request to it. The request in flight is believed as long as it can be told from all
// else.

class ExchangeMachineDoubtTest : public InStepTest
{
};

TEST_F(ExchangeMachineDoubtTest, WithoutADoubtThereIsNoFence)
{
    for (int i = 0; i < 10; ++i) {
        const QByteArray request = readOf(3000, 10 + i);
        EXPECT_EQ(request, ask(request));
        answer();
    }
}

TEST_F(ExchangeMachineDoubtTest, AfterATimeOutAFenceGoesFirst)
{
    ask(READ_A);
    waitInVain();
    expectOneFence();
}

TEST_F(ExchangeMachineDoubtTest, AfterATimeOutAnAnswerThatIsHalfThereMakesNoDifference)
{
    ask(READ_A);
    come(REPLY.left(7));
    waitInVain();
    expectOneFence();
}

TEST_F(ExchangeMachineDoubtTest, ALateAnswerLeavesNothingOutstanding)
{
    ask(READ_A);
    waitInVain();
    come(answerTo(READ_A));
    EXPECT_EQ(Ends({END_SILENT, END_LATE}), ends());
    expectNoFence();
}

TEST_F(ExchangeMachineDoubtTest, ALateAnswerEndsTheRequestThatIsAskedAgain)
{
    ask(READ_A);
    waitInVain();
    askAgain(READ_A);
    come(answerTo(READ_A));
    EXPECT_EQ(Ends({END_SILENT, END_ANSWERED}), ends());
    EXPECT_EQ(answerTo(READ_A), last().reply);
    EXPECT_TRUE(machine.isFree());
}

TEST_F(ExchangeMachineDoubtTest, ALateAnswerIsNotTheNextRequests)
{
    ask(READ_A);
    waitInVain();
    ask(READ_B);
    come(answerTo(READ_A));
    EXPECT_EQ(Ends({END_SILENT, END_LATE}), ends());
    EXPECT_EQ(READ_B, behindFences());
    answer();
    EXPECT_EQ(answerTo(READ_B), last().reply);
}

TEST_F(ExchangeMachineDoubtTest, ARequestThatTheFenceShowedToBeLostIsSentAgain)
{
    ask(READ_A);
    waitInVain();
    askAgain(READ_A);
    EXPECT_EQ(READ_A, behindFences());
    answer();
    EXPECT_EQ(Ends({END_SILENT, END_ANSWERED}), ends());
}

// Bytes at a time when no answer is awaited.

TEST_F(ExchangeMachineDoubtTest, BehindBytesBetweenExchangesAFenceGoesFirst)
{
    come(noise());
    expectOneFence();
}

TEST_F(ExchangeMachineDoubtTest, BehindBytesInTheSilenceAheadOfARequestAFenceGoesFirst)
{
    exchange(READ_A);
    machine.start(READ_LONG, false, now);
    EXPECT_TRUE(nextSent(100).isEmpty());
    come(noise(), 100);
    expectOneFence();
}

TEST_F(ExchangeMachineDoubtTest, BehindBytesThatFollowAnAnswerAFenceGoesFirst)
{
    ask(READ_A);
    come(REPLY + noise());
    EXPECT_EQ(Ends{END_ANSWERED}, ends());
    expectOneFence();
}

TEST_F(ExchangeMachineDoubtTest, BehindBytesThatFollowTheFencesAnswerAnotherFenceGoesFirst)
{
    machine.linkOpened(now);
    ask(READ_LONG);
    come(answerTo(sent) + noise());
    expectOneFence();
}

// Bytes ahead of an answer. What begins before the station can have answered is no noise of the
// line's that the answer had to pass.

TEST_F(ExchangeMachineDoubtTest, BehindBytesThatBeganTooEarlyForAnAnswerAFenceGoesFirst)
{
    ask(READ_A);
    come(noise(), REQUEST_TIME + SILENCE - 1);
    come(REPLY, 1000);
    EXPECT_EQ(Ends{END_ANSWERED}, ends());
    expectOneFence();
}

TEST_F(ExchangeMachineDoubtTest, BytesAheadOfAnAnswerAreNoiseOtherwise)
{
    ask(READ_A);
    come(noise(), REQUEST_TIME + SILENCE);
    come(REPLY, 1000);
    EXPECT_EQ(Ends{END_ANSWERED}, ends());
    expectNoFence();
}

// Whole answers that nobody asked for.

TEST_F(ExchangeMachineDoubtTest, ALengthThatWasNotAskedLeavesTheAnswerBehindItUnbelieved)
{
    ask(READ_A);
    come(answerTo(readOf(3000, 7)));
    come(answerTo(READ_A), 1000);
    EXPECT_TRUE(ends().empty());
    nextSent();
    EXPECT_TRUE(isFence);
    EXPECT_NE(7, wordOf(sent, 4));
    EXPECT_EQ(READ_A, behindFences());
    answer();
    EXPECT_EQ(Ends{END_ANSWERED}, ends());
    expectNoFence();
}

TEST_F(ExchangeMachineDoubtTest, ARequestWhoseAnswersAreNeverBelievedEndsAsUnusable)
{
    machine.start(READ_A, false, now);
    for (int i = 0; i < 10 && ends().empty(); ++i) {
        nextSent();
        behindFences();
        ASSERT_EQ(READ_A, sent);
        come(answerTo(readOf(3000, 7)));
        come(answerTo(READ_A), 1000);
    }
    EXPECT_EQ(Ends{END_UNUSABLE}, ends());
    EXPECT_TRUE(machine.isFree());
}

TEST_F(ExchangeMachineDoubtTest, BehindAnAnswerWhenNothingWasAskedAFenceGoesFirst)
{
    come(answerTo(readOf(3000, 7)));
    EXPECT_TRUE(ended.empty());
    expectOneFence();
}

TEST_F(ExchangeMachineDoubtTest, BehindTheEchoOfAWriteThatNobodySentAFenceGoesFirst)
{
    come(WRITE);
    EXPECT_TRUE(ended.empty());
    expectOneFence();
}

TEST_F(ExchangeMachineDoubtTest, AnAnswerOfAnotherFunctionIsNotAskedFor)
{
    ask(READ_A);
    come(answerTo(readOf(0, 2)));
    EXPECT_TRUE(ends().empty());
    come(answerTo(READ_A), 1000);
    EXPECT_TRUE(ends().empty());
}

// Answers that come twice.

TEST_F(ExchangeMachineDoubtTest, BehindAnAnswerThatCameTwiceAFenceGoesFirst)
{
    exchange(READ_A);
    come(answerTo(READ_A), 100);
    expectOneFence();
}

TEST_F(ExchangeMachineDoubtTest, BehindAnAnswerThatCameTwiceAtOnceAFenceGoesFirst)
{
    ask(READ_A);
    come(REPLY + REPLY);
    EXPECT_EQ(Ends{END_ANSWERED}, ends());
    expectOneFence();
}

TEST_F(ExchangeMachineDoubtTest, AnAnswerThatComesAgainIsNotTheNextRequests)
{
    exchange(READ_A);
    EXPECT_NE(READ_B, ask(READ_B)); // two registers as well, so it asks for one more
    come(answerTo(READ_A));
    EXPECT_EQ(1u, ends().size());
    answer(1000);
    EXPECT_EQ(Ends({END_ANSWERED, END_ANSWERED}), ends());
    EXPECT_EQ(answerTo(READ_B), last().reply);
    expectOneFence();
}

TEST_F(ExchangeMachineDoubtTest, AFencesAnswerThatComesTwiceDoesNotAnswerTheNextFence)
{
    machine.linkOpened(now);
    const QByteArray first = ask(READ_LONG);
    answer();
    come(answerTo(first), 100);
    const QByteArray second = nextSent();
    EXPECT_TRUE(isFence);
    EXPECT_NE(wordOf(first, 4), wordOf(second, 4));
    come(answerTo(first), ANSWERED);
    EXPECT_TRUE(nextSent(SILENCE + 100).isEmpty());
    come(answerTo(second), 100 + SILENCE);
    EXPECT_EQ(READ_LONG, nextSent());
}
