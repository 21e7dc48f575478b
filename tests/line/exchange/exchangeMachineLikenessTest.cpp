#include "exchangeMachineFixture.h"

#include "wire/exceptionText.h"

#include <algorithm>

// The answers to two successive reads of equal length differ only in their order. So one of the
// reads asks for one register more. Where this is not possible, a fence goes between the two reads.

class ExchangeMachineLikenessTest : public InStepTest
{
protected:
    enum { SECOND = 1000000, ALIKE_FOR = 100000 };

    /// The last request was answered with exactly its own registers.
    void expectAnsweredAs(const QByteArray& request)
    {
        ASSERT_FALSE(ended.empty());
        EXPECT_EQ(END_ANSWERED, last().end);
        EXPECT_EQ(answerTo(request), last().reply);
    }

    /// Polls for the given time, and answers every request.
    void poll(const std::vector<QByteArray>& requests, qint64 duration)
    {
        const qint64 end = now + duration;
        for (size_t i = 0; now < end; ++i) {
            const QByteArray& request = requests[i % requests.size()];
            ask(request);
            if (isFence) {
                longestWithout = std::max(longestWithout, now - lastFence);
                lastFence = now;
                ++fences;
                behindFences();
            }
            answer();
            ++polled;
            expectAnsweredAs(request);
        }
    }

    int polled = 0;
    int fences = 0;
    qint64 lastFence = now;
    qint64 longestWithout = 0;
};

TEST_F(ExchangeMachineLikenessTest, SecondReadOfEqualLengthAsksForOneRegisterMore)
{
    exchange(readOf(3000, 2));
    EXPECT_EQ(readOf(3010, 3), ask(readOf(3010, 2)));
    EXPECT_FALSE(isFence);
    answer();
    expectAnsweredAs(readOf(3010, 2));
}

TEST_F(ExchangeMachineLikenessTest, ThirdReadOfEqualLengthIsUnchanged)
{
    exchange(readOf(3000, 2));
    exchange(readOf(3010, 2));
    EXPECT_EQ(readOf(3020, 2), ask(readOf(3020, 2)));
    answer();
    expectAnsweredAs(readOf(3020, 2));
}

TEST_F(ExchangeMachineLikenessTest, NeighbourWithOneRegisterMoreIsUnchanged)
{
    exchange(readOf(3000, 2));
    exchange(readOf(3010, 2)); // three registers
    EXPECT_EQ(readOf(3020, 4), ask(readOf(3020, 3)));
    answer();
    expectAnsweredAs(readOf(3020, 3));
}

TEST_F(ExchangeMachineLikenessTest, BlocksOfEqualLengthNeedNoFences)
{
    poll({readOf(3000, 2), readOf(3010, 2), readOf(3020, 2)}, 5 * SECOND);
    EXPECT_GT(polled, 500);
    EXPECT_EQ(0, fences);
}

TEST_F(ExchangeMachineLikenessTest, LongerReadAtTheEndOfAnAreaTakesTheRegisterAhead)
{
    exchange(readOf(3000, 2));
    EXPECT_EQ(readOf(7093, 3), ask(readOf(7094, 2)));
    answer();
    expectAnsweredAs(readOf(7094, 2));
    exchange(readOf(0, 1));
    EXPECT_EQ(readOf(254, 2), ask(readOf(255, 1)));
    answer();
    expectAnsweredAs(readOf(255, 1));
}

TEST_F(ExchangeMachineLikenessTest, ReadsOfDifferentFunctionsAreUnchanged)
{
    exchange(readOf(3000, 2));
    EXPECT_EQ(readOf(0, 2), ask(readOf(0, 2)));
}

TEST_F(ExchangeMachineLikenessTest, ReadsOfDifferentStationsAreUnchanged)
{
    bringIntoStep(2);
    exchange(readOf(3000, 2));
    EXPECT_EQ(readOf(3000, 2, 2), ask(readOf(3000, 2, 2)));
}

TEST_F(ExchangeMachineLikenessTest, DoubledAnswerDoesNotAnswerTheNeighbour)
{
    exchange(readOf(3000, 2));
    ask(readOf(3010, 2));
    come(answerTo(readOf(3000, 2)));
    EXPECT_EQ(1u, ends().size());
    answer(100);
    expectAnsweredAs(readOf(3010, 2));
}

// A station that refuses reads with one register more.

TEST_F(ExchangeMachineLikenessTest, RefusedLongerReadFallsBackToTheRequest)
{
    exchange(readOf(3000, 2));
    ask(readOf(3010, 2));
    ASSERT_EQ(readOf(3010, 3), sent);
    come(refusalOf(sent));
    EXPECT_EQ(1u, ends().size());
    nextSent();
    EXPECT_TRUE(isFence);
    EXPECT_EQ(readOf(3010, 2), behindFences());
    answer();
    expectAnsweredAs(readOf(3010, 2));
}

TEST_F(ExchangeMachineLikenessTest, RefusalOfTheRequestIsReportedAfterThatOfTheLongerRead)
{
    exchange(readOf(3000, 2));
    ask(readOf(3010, 2));
    come(refusalOf(sent));
    nextSent();
    EXPECT_EQ(readOf(3010, 2), behindFences());
    come(refusalOf(sent));
    EXPECT_EQ(END_REFUSED, last().end);
}

TEST_F(ExchangeMachineLikenessTest, FencesReplaceLongerReadsAfterARefusal)
{
    exchange(readOf(3000, 2));
    ask(readOf(3010, 2));
    come(refusalOf(sent));
    nextSent();
    behindFences();
    answer();
    ask(readOf(3020, 2));
    EXPECT_TRUE(isFence);
    EXPECT_EQ(readOf(3020, 2), behindFences());
}

TEST_F(ExchangeMachineLikenessTest, BusyStationStillGetsLongerReads)
{
    for (int code : {DEVICE_BUSY, STILL_WORKING}) {
        exchange(readOf(3000, 2));
        ask(readOf(3010, 2));
        ASSERT_EQ(readOf(3010, 3), sent);
        come(refusalOf(sent, code));
        nextSent();
        EXPECT_EQ(readOf(3010, 2), behindFences());
        answer();
        expectAnsweredAs(readOf(3010, 2));
        EXPECT_EQ(readOf(3020, 3), ask(readOf(3020, 2)));
        answer();
        exchange(READ_LONG);
    }
}

TEST_F(ExchangeMachineLikenessTest, LateAnswerToALongerReadIsCut)
{
    exchange(readOf(3000, 2));
    const QByteArray longer = ask(readOf(3010, 2));
    ASSERT_EQ(readOf(3010, 3), longer);
    waitInVain();
    askAgain(readOf(3010, 2));
    come(answerTo(longer));
    expectAnsweredAs(readOf(3010, 2));
}

// Two answers to the same request differ only in their age. On a line they may look alike for a
// tenth of a second.

TEST_F(ExchangeMachineLikenessTest, RepeatedReadIsUnchangedForATenthOfASecond)
{
    const QByteArray request = readOf(3000, 2);
    exchange(request);
    const qint64 differedAt = sentAt;
    for (int i = 0; i < 100 && now + SILENCE < differedAt + ALIKE_FOR; ++i) {
        ASSERT_EQ(request, ask(request));
        answer();
        expectAnsweredAs(request);
    }
    EXPECT_EQ(readOf(3000, 3), ask(request));
    answer();
    expectAnsweredAs(request);
}

TEST_F(ExchangeMachineLikenessTest, LongerReadRestartsTheTenthOfASecond)
{
    const QByteArray request = readOf(3000, 2);
    exchange(request);
    now += ALIKE_FOR;
    EXPECT_EQ(readOf(3000, 3), ask(request));
    answer();
    EXPECT_EQ(request, ask(request));
    answer();
    EXPECT_EQ(request, ask(request));
}

TEST_F(ExchangeMachineLikenessTest, DifferentReadsOfEqualLengthAlternateInLength)
{
    for (int i = 0; i < 20; ++i) {
        const QByteArray request = readOf(3000 + 10 * i, 2);
        const QByteArray before = sent;
        ask(request);
        EXPECT_FALSE(isFence);
        EXPECT_NE(wordOf(before, 4), wordOf(sent, 4));
        answer();
        expectAnsweredAs(request);
    }
}

// A read of 125 registers has no longer form: 125 is the limit of one request.

TEST_F(ExchangeMachineLikenessTest, FenceBetweenTwoFullBlocks)
{
    exchange(readOf(3000, 125));
    ask(readOf(3125, 125));
    EXPECT_TRUE(isFence);
    EXPECT_EQ(readOf(3125, 125), behindFences());
    answer();
    expectAnsweredAs(readOf(3125, 125));
}

TEST_F(ExchangeMachineLikenessTest, SingleFullBlockIsPolledWithOneFenceASecond)
{
    poll({readOf(3000, 125)}, 20 * SECOND);
    EXPECT_GT(polled, 500);
    EXPECT_GE(fences, 18);
    EXPECT_LE(fences, 21);
    EXPECT_LE(longestWithout, SECOND + 3 * ANSWER);
}

TEST_F(ExchangeMachineLikenessTest, DoubledAnswerOfAFullBlockLeadsToAFence)
{
    bringIntoStep();
    exchange(readOf(3000, 125));
    EXPECT_EQ(readOf(3000, 125), ask(readOf(3000, 125)));
    answer();
    come(answerTo(readOf(3000, 125)), 100);
    ask(readOf(3000, 125));
    EXPECT_TRUE(isFence);
}

TEST_F(ExchangeMachineLikenessTest, BlockOf124RegistersHasALongerRead)
{
    exchange(readOf(3000, 124));
    EXPECT_EQ(readOf(3124, 125), ask(readOf(3124, 124)));
    answer();
    expectAnsweredAs(readOf(3124, 124));
    EXPECT_EQ(readOf(6972, 124), ask(readOf(6972, 124)));
}
