#include "exchangeMachineFixture.h"

// Each event that puts a station in doubt, so that a fence goes ahead of the next request to it.
// The answer to the request in flight is believed as long as it differs from all other possible
// replies.

class ExchangeMachineDoubtTest : public InStepTest
{
};

TEST_F(ExchangeMachineDoubtTest, NoFenceInStep)
{
    for (int i = 0; i < 10; ++i) {
        const QByteArray request = readOf(3000, 10 + i);
        EXPECT_EQ(request, ask(request));
        answer();
    }
}

TEST_F(ExchangeMachineDoubtTest, FenceAfterTimeOut)
{
    ask(READ_A);
    waitInVain();
    expectOneFence();
}

TEST_F(ExchangeMachineDoubtTest, FenceAfterTimeOutInTheMiddleOfAnAnswer)
{
    ask(READ_A);
    come(REPLY.left(7));
    waitInVain();
    expectOneFence();
}

TEST_F(ExchangeMachineDoubtTest, NoFenceAfterALateAnswer)
{
    ask(READ_A);
    waitInVain();
    come(answerTo(READ_A));
    EXPECT_EQ(Ends({END_SILENT, END_LATE}), ends());
    expectNoFence();
}

TEST_F(ExchangeMachineDoubtTest, LateAnswerEndsTheRepeatedRequest)
{
    ask(READ_A);
    waitInVain();
    askAgain(READ_A);
    come(answerTo(READ_A));
    EXPECT_EQ(Ends({END_SILENT, END_ANSWERED}), ends());
    EXPECT_EQ(answerTo(READ_A), last().reply);
    EXPECT_TRUE(machine.isFree());
}

TEST_F(ExchangeMachineDoubtTest, LateAnswerDoesNotAnswerTheNextRequest)
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

TEST_F(ExchangeMachineDoubtTest, LostRequestIsSentAgainAfterTheFencesAnswer)
{
    ask(READ_A);
    waitInVain();
    askAgain(READ_A);
    EXPECT_EQ(READ_A, behindFences());
    answer();
    EXPECT_EQ(Ends({END_SILENT, END_ANSWERED}), ends());
}

// Bytes that come while no answer is awaited.

TEST_F(ExchangeMachineDoubtTest, FenceAfterBytesBetweenExchanges)
{
    come(noise());
    expectOneFence();
}

TEST_F(ExchangeMachineDoubtTest, FenceAfterBytesInTheSilenceBeforeARequest)
{
    exchange(READ_A);
    machine.start(READ_LONG, false, now);
    EXPECT_TRUE(nextSent(100).isEmpty());
    come(noise(), 100);
    expectOneFence();
}

TEST_F(ExchangeMachineDoubtTest, FenceAfterBytesBehindAnAnswer)
{
    ask(READ_A);
    come(REPLY + noise());
    EXPECT_EQ(Ends{END_ANSWERED}, ends());
    expectOneFence();
}

TEST_F(ExchangeMachineDoubtTest, SecondFenceAfterBytesBehindTheFencesAnswer)
{
    machine.linkOpened(now);
    ask(READ_LONG);
    come(answerTo(sent) + noise());
    expectOneFence();
}

// Bytes ahead of an answer. Bytes that begin before the station can have answered are no noise
// around the answer: they may be the rest of an earlier reply.

TEST_F(ExchangeMachineDoubtTest, FenceAfterBytesTooEarlyForAnAnswer)
{
    ask(READ_A);
    come(noise(), REQUEST_TIME + SILENCE - 1);
    come(REPLY, 1000);
    EXPECT_EQ(Ends{END_ANSWERED}, ends());
    expectOneFence();
}

TEST_F(ExchangeMachineDoubtTest, NoFenceAfterStrayBytesBeforeAReply)
{
    ask(READ_A);
    come(noise(), REQUEST_TIME + SILENCE);
    come(REPLY, 1000);
    EXPECT_EQ(Ends{END_ANSWERED}, ends());
    expectNoFence();
}

// Whole answers without a request.

TEST_F(ExchangeMachineDoubtTest, AnswerBehindAnUnaskedLengthIsNotBelieved)
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

TEST_F(ExchangeMachineDoubtTest, RequestEndsUnusableWhenNoAnswerIsEverSure)
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

TEST_F(ExchangeMachineDoubtTest, FenceAfterAnAnswerWithoutARequest)
{
    come(answerTo(readOf(3000, 7)));
    EXPECT_TRUE(ended.empty());
    expectOneFence();
}

TEST_F(ExchangeMachineDoubtTest, FenceAfterTheEchoOfAnUnsentWrite)
{
    come(WRITE);
    EXPECT_TRUE(ended.empty());
    expectOneFence();
}

TEST_F(ExchangeMachineDoubtTest, AnswerOfAnotherFunctionPutsTheStationInDoubt)
{
    ask(READ_A);
    come(answerTo(readOf(0, 2)));
    EXPECT_TRUE(ends().empty());
    come(answerTo(READ_A), 1000);
    EXPECT_TRUE(ends().empty());
}

// Doubled answers.

TEST_F(ExchangeMachineDoubtTest, FenceAfterADoubledAnswer)
{
    exchange(READ_A);
    come(answerTo(READ_A), 100);
    expectOneFence();
}

TEST_F(ExchangeMachineDoubtTest, FenceAfterADoubledAnswerInOnePiece)
{
    ask(READ_A);
    come(REPLY + REPLY);
    EXPECT_EQ(Ends{END_ANSWERED}, ends());
    expectOneFence();
}

TEST_F(ExchangeMachineDoubtTest, DoubledAnswerDoesNotAnswerTheNextRequest)
{
    exchange(READ_A);
    EXPECT_NE(READ_B,
              ask(READ_B)); // READ_B is as long as READ_A, so the machine reads one register more
    come(answerTo(READ_A));
    EXPECT_EQ(1u, ends().size());
    answer(1000);
    EXPECT_EQ(Ends({END_ANSWERED, END_ANSWERED}), ends());
    EXPECT_EQ(answerTo(READ_B), last().reply);
    expectOneFence();
}

TEST_F(ExchangeMachineDoubtTest, FencesDoubledAnswerDoesNotAnswerTheNextFence)
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
