#include "exchangeMachineFixture.h"

#include <set>
#include <string>

// Fences bring a station into step. A fence is a read. Its length differs from the length of every
// reply that may still come. So its answer shows that each earlier request is answered or lost.

namespace {

enum { READ_HOLDING = 3, READ_INPUT = 4, MOST_OUTSTANDING = 24, MOST_REGISTERS = 125 };

bool isReadRequest(const QByteArray& request)
{
    const int function = byteOf(request, 1);
    return function == READ_HOLDING || function == READ_INPUT;
}

/// The signature of the answer to a read: station, function and number of data bytes.
std::string lengthOf(const QByteArray& request)
{
    return answerTo(request).left(3).toHex().toStdString();
}

} // namespace

/// The link was just opened.
class ExchangeMachineFenceTest : public ExchangeMachineTest
{
protected:
    ExchangeMachineFenceTest()
    {
        machine.linkOpened(now);
    }
};

TEST_F(ExchangeMachineFenceTest, FirstFrameOnAnOpenedLinkIsAFence)
{
    EXPECT_NE(READ_A, ask(READ_A));
    EXPECT_TRUE(isFence);
    EXPECT_EQ(1, byteOf(sent, 0));
    EXPECT_TRUE(isReadRequest(sent));
    EXPECT_EQ(frameWith(sent.left(6)), sent);
}

TEST_F(ExchangeMachineFenceTest, RequestFollowsTheFencesAnswer)
{
    ask(READ_A);
    answer();
    const qint64 answeredAt = now;
    EXPECT_EQ(READ_A, nextSent());
    EXPECT_FALSE(isFence);
    EXPECT_EQ(answeredAt + SILENCE, sentAt);
    answer();
    EXPECT_EQ(Ends{END_ANSWERED}, ends());
    EXPECT_EQ(Ends{END_ANSWERED}, fenceEnds());
}

TEST_F(ExchangeMachineFenceTest, NoFurtherFenceAfterTheFirstFencesAnswer)
{
    exchange(READ_A);
    EXPECT_EQ(READ_LONG, ask(READ_LONG));
    answer();
    EXPECT_EQ(WRITE, ask(WRITE));
}

TEST_F(ExchangeMachineFenceTest, EachStationHasItsOwnFence)
{
    exchange(READ_A);
    ask(readOf(3000, 70, 2));
    EXPECT_TRUE(isFence);
    EXPECT_EQ(2, byteOf(sent, 0));
    behindFences();
    answer();
    EXPECT_EQ(READ_LONG, ask(READ_LONG));
}

TEST_F(ExchangeMachineFenceTest, FenceDiffersFromTheRequestBehindIt)
{
    for (int registers : {1, 2, 7, 30, 48, int(MOST_REGISTERS)}) {
        const QByteArray request = readOf(4000, registers);
        for (int opened = 0; opened < 60; ++opened) {
            exchange(READ_LONG);
            machine.linkOpened(now);
            ask(request);
            ASSERT_TRUE(isFence);
            ASSERT_NE(lengthOf(request), lengthOf(sent)) << registers;
            ASSERT_EQ(request, behindFences());
            answer();
        }
    }
}

TEST_F(ExchangeMachineFenceTest, FenceDiffersFromOutstandingLengths)
{
    exchange(READ_LONG);
    ask(READ_A);
    std::set<std::string> lengths = {lengthOf(READ_LONG), lengthOf(READ_A)};
    for (int i = 1; i < MOST_OUTSTANDING; ++i) {
        nextFence();
        EXPECT_TRUE(lengths.insert(lengthOf(sent)).second) << lengthOf(sent);
    }
}

TEST_F(ExchangeMachineFenceTest, FenceDiffersFromUnaskedLengths)
{
    exchange(READ_A);
    for (int registers = 1; registers <= 8; ++registers) {
        come(answerTo(readOf(4000, registers)));
        come(answerTo(readOf(0, registers)));
    }
    for (int i = 0; i < 5; ++i) {
        for (const QByteArray& fence : fencesInVain(READ_LONG))
            EXPECT_GT(wordOf(fence, 4), 8);
    }
}

TEST_F(ExchangeMachineFenceTest, FullOrderSendsTheNewestFenceAgain)
{
    std::vector<QByteArray> fences = {ask(READ_A)};
    while (fences.size() < MOST_OUTSTANDING + 5)
        fences.push_back(nextFence());
    const QByteArray newest = fences[MOST_OUTSTANDING - 1];
    EXPECT_NE(fences[MOST_OUTSTANDING - 2], newest);
    for (size_t i = MOST_OUTSTANDING; i < fences.size(); ++i)
        EXPECT_EQ(newest, fences[i]) << i;
}

TEST_F(ExchangeMachineFenceTest, AnswerToARepeatedFenceFreesTheOrder)
{
    for (int i = 0; i < MOST_OUTSTANDING; ++i) {
        ask(READ_A);
        waitInVain();
    }
    const QByteArray often = ask(READ_A);
    answer();
    EXPECT_NE(often, nextSent());
    EXPECT_TRUE(isFence);
    answer();
    EXPECT_EQ(READ_A, nextSent());
}

TEST_F(ExchangeMachineFenceTest, UnansweredFenceIsFollowedByAnotherLength)
{
    const QByteArray first = ask(WRITE);
    const QByteArray second = nextFence();
    EXPECT_NE(lengthOf(first), lengthOf(second));
}

TEST_F(ExchangeMachineFenceTest, AnswerToAnEarlierFenceDoesNotReleaseTheRequest)
{
    const QByteArray first = ask(READ_A);
    const QByteArray second = nextFence();
    come(answerTo(first));
    EXPECT_TRUE(nextSent(ANSWER / 2).isEmpty());
    come(answerTo(second), 100);
    EXPECT_EQ(READ_A, nextSent());
    EXPECT_EQ(Ends({END_SILENT, END_ANSWERED, END_ANSWERED}), fenceEnds());
}

TEST_F(ExchangeMachineFenceTest, AnswerToAnEarlierFenceExtendsTheWaitForTheNewest)
{
    const QByteArray first = ask(READ_A);
    const QByteArray second = nextFence();
    const qint64 deadline = machine.advance(now).wakeAt;
    come(answerTo(first), deadline - now - 1);
    EXPECT_EQ(now + machine.timeOut(1), machine.advance(now).wakeAt);
    come(answerTo(second), machine.timeOut(1) - 1);
    EXPECT_EQ(READ_A, nextSent());
}

TEST_F(ExchangeMachineFenceTest, AnswerToTheNewestFenceReleasesTheRequest)
{
    ask(READ_A);
    nextFence();
    nextFence();
    answer();
    EXPECT_EQ(READ_A, nextSent());
}

TEST_F(ExchangeMachineFenceTest, FenceIsAlwaysARead)
{
    exchange(WRITE);
    exchange(frameWith(fromHex("0110000100020400"
                               "0A0102")));
    machine.linkOpened(now);
    for (int i = 0; i < 12; ++i) {
        for (const QByteArray& fence : fencesInVain(WRITE))
            EXPECT_TRUE(isReadRequest(fence)) << fence.toHex().toStdString();
    }
}

// The place that a fence reads from.

TEST_F(ExchangeMachineFenceTest, RefusedFenceBringsTheStationIntoStep)
{
    ask(WRITE);
    come(refusalOf(sent));
    EXPECT_EQ(Ends{END_REFUSED}, fenceEnds());
    EXPECT_EQ(WRITE, nextSent());
}

TEST_F(ExchangeMachineFenceTest, RefusedFenceIsFollowedByAnotherPlace)
{
    const QByteArray first = ask(READ_A);
    ASSERT_EQ(READ_HOLDING, byteOf(first, 1));
    come(refusalOf(first)); // may come again, and would look like a refusal of READ_A
    nextSent();
    EXPECT_TRUE(isFence);
    EXPECT_EQ(READ_INPUT, byteOf(sent, 1));
    answer();
    EXPECT_EQ(READ_A, nextSent());
}

TEST_F(ExchangeMachineFenceTest, StationThatRefusesEveryFenceStillGetsTheRequest)
{
    ask(READ_A);
    int fences = 0;
    for (; isFence && fences < 5; ++fences) {
        come(refusalOf(sent));
        nextSent();
    }
    EXPECT_EQ(2, fences);
    EXPECT_EQ(READ_A, sent);
}

TEST_F(ExchangeMachineFenceTest, FenceReadsFromAServedPlaceAfterTwoFailures)
{
    exchange(readOf(4500, 3));
    machine.linkOpened(now);
    ask(READ_LONG);
    nextFence();
    nextFence();
    EXPECT_EQ(READ_HOLDING, byteOf(sent, 1));
    EXPECT_EQ(4500, wordOf(sent, 2));
}
