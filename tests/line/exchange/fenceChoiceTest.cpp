#include "exchange/fenceChoice.h"

#include "pollingHost.h"

#include <gtest/gtest.h>

#include <set>

namespace {

enum { MOST_KEPT = 24, MARKERS = 3000, READ_HOLDING = 3, READ_INPUT = 4 };

const QByteArray NOTHING_AHEAD;

int functionOf(const QByteArray& request)
{
    return byteOf(request, 1);
}

int firstOf(const QByteArray& request)
{
    return wordOf(request, 2);
}

int registersOf(const QByteArray& request)
{
    return wordOf(request, 4);
}

QByteArray answerOf(int function, int registers)
{
    QByteArray reply(1, '\x01');
    reply.append(static_cast<char>(function)).append(static_cast<char>(2 * registers));
    return frameWith(reply + QByteArray(2 * registers, '\x33'));
}

/// The signature of the answer to a read.
QByteArray signatureTo(const QByteArray& read)
{
    return answerOf(functionOf(read), registersOf(read)).left(3);
}

class FenceChoiceTest : public testing::Test
{
protected:
    QByteArray next(const QByteArray& ahead = NOTHING_AHEAD)
    {
        return choice.next(1, order, ahead);
    }

    FenceChoice choice{0};
    AnswerOrder order;
};

} // namespace

TEST_F(FenceChoiceTest, FenceReadsRegistersOfItsStation)
{
    const QByteArray fence = choice.next(17, order, NOTHING_AHEAD);
    EXPECT_EQ(8, fence.size());
    EXPECT_EQ(17, byteOf(fence, 0));
    EXPECT_EQ(READ_HOLDING, functionOf(fence));
    EXPECT_EQ(MARKERS, firstOf(fence));
    EXPECT_GE(registersOf(fence), 1);
    EXPECT_LE(registersOf(fence), 125);
    EXPECT_EQ(frameWith(fence.left(6)), fence);
}

TEST_F(FenceChoiceTest, FenceDiffersFromOutstandingFences)
{
    std::set<int> lengths;
    for (int i = 0; i < MOST_KEPT; ++i) {
        const QByteArray fence = next();
        EXPECT_TRUE(lengths.insert(registersOf(fence)).second) << registersOf(fence);
        order.ask(fence, 0, 0);
    }
}

TEST_F(FenceChoiceTest, FenceDiffersFromTheRequestBehindIt)
{
    for (unsigned seed = 0; seed < 20; ++seed) {
        for (int registers = 1; registers <= 125; ++registers) {
            FenceChoice any(seed);
            const QByteArray ahead = readOf(4000, registers);
            ASSERT_NE(registers, registersOf(any.next(1, order, ahead))) << seed;
        }
    }
}

TEST_F(FenceChoiceTest, FenceDiffersFromTheLastAcceptedAnswer)
{
    for (int registers = 1; registers <= 48; ++registers) {
        order.ask(readOf(4000, registers), 0, 1);
        order.take(answerOf(READ_HOLDING, registers));
        ASSERT_NE(registers, registersOf(next()));
    }
}

TEST_F(FenceChoiceTest, FenceDiffersFromUnaskedLengths)
{
    std::set<int> came;
    for (int registers = 1; registers <= MOST_KEPT; ++registers) {
        order.take(answerOf(READ_HOLDING, registers));
        came.insert(registers);
        for (int i = 0; i < 48; ++i)
            ASSERT_EQ(0u, came.count(registersOf(next())));
    }
}

TEST_F(FenceChoiceTest, LengthsOfAnotherFunctionStayAvailable)
{
    const int registers = registersOf(FenceChoice(choice).next(1, order, NOTHING_AHEAD));
    EXPECT_EQ(registers, registersOf(next(readOf(0, registers))));
}

TEST_F(FenceChoiceTest, FullOrderRepeatsTheNewestFence)
{
    for (int i = 0; i < MOST_KEPT; ++i)
        order.ask(readOf(3500, 60 + i), 0, i == 0 ? 1 : 0);
    EXPECT_EQ(readOf(3500, 60 + MOST_KEPT - 1), next());
    EXPECT_EQ(readOf(3500, 60 + MOST_KEPT - 1), next());
}

TEST_F(FenceChoiceTest, FreeLengthIsFoundWithTheMostLengthsOccupied)
{
    // The most lengths that can be occupied: 23 outstanding requests, 24 unasked replies, the last
    // accepted answer and the request behind the fence. A fence may have any of these lengths.
    order.ask(readOf(4000, 48), 0, 0);
    order.take(answerOf(READ_HOLDING, 48));
    for (int registers = 1; registers <= MOST_KEPT; ++registers)
        order.take(answerOf(READ_HOLDING, registers));
    for (int registers = MOST_KEPT + 1; registers < 2 * MOST_KEPT; ++registers)
        order.ask(readOf(4000, registers), 0, 0);
    ASSERT_FALSE(order.isFull());
    const QByteArray ahead = readOf(4000, 2 * MOST_KEPT + 1);
    const QByteArray fence = next(ahead);
    EXPECT_FALSE(order.mayCome(signatureTo(fence))) << registersOf(fence);
    EXPECT_NE(signatureTo(ahead), signatureTo(fence));
}

TEST_F(FenceChoiceTest, AnotherSeedBeginsWithAnotherLength)
{
    const int registers = registersOf(FenceChoice(4).next(1, order, NOTHING_AHEAD));
    EXPECT_NE(registers, registersOf(FenceChoice(5).next(1, order, NOTHING_AHEAD)));
    EXPECT_EQ(registers, registersOf(FenceChoice(4).next(1, order, NOTHING_AHEAD)));
}

// The places that fences read from.

TEST_F(FenceChoiceTest, FailureMovesTheFenceToAnotherPlace)
{
    choice.failed();
    const QByteArray fence = next();
    EXPECT_EQ(READ_INPUT, functionOf(fence));
    EXPECT_EQ(0, firstOf(fence));
    choice.failed();
    EXPECT_EQ(READ_HOLDING, functionOf(next()));
    EXPECT_EQ(MARKERS, firstOf(next()));
}

TEST_F(FenceChoiceTest, ServedReadIsAPlaceForFences)
{
    choice.noteServed(readOf(4500, 3));
    choice.failed();
    choice.failed();
    const QByteArray fence = next();
    EXPECT_EQ(READ_HOLDING, functionOf(fence));
    EXPECT_EQ(4500, firstOf(fence));
    choice.failed();
    EXPECT_EQ(MARKERS, firstOf(next()));
}

TEST_F(FenceChoiceTest, AnsweredPlaceIsKept)
{
    choice.failed();
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(READ_INPUT, functionOf(next()));
}

TEST_F(FenceChoiceTest, WriteIsNoPlaceForFences)
{
    choice.noteServed(writeOf(4500, 3));
    for (int i = 0; i < 12; ++i) {
        const int function = functionOf(next());
        EXPECT_TRUE(function == READ_HOLDING || function == READ_INPUT) << function;
        EXPECT_NE(4500, firstOf(next()));
        choice.failed();
    }
}

TEST_F(FenceChoiceTest, WriteKeepsTheServedReadAsAPlace)
{
    choice.noteServed(readOf(4500, 3));
    choice.noteServed(writeOf(4600, 3));
    choice.failed();
    choice.failed();
    EXPECT_EQ(4500, firstOf(next()));
}

// The device has the registers 0 to 255 and 3000 to 7095, and refuses a read past their ends.
TEST_F(FenceChoiceTest, FenceStaysInTheAreaOfTheServedRead)
{
    for (const int served : {7095, 7050, 3000, 255, 200, 0}) {
        const int last = served >= MARKERS ? 7095 : 255;
        choice.noteServed(readOf(served, 1));
        choice.failed();
        choice.failed();
        AnswerOrder outstanding;
        for (int i = 0; i < MOST_KEPT; ++i) {
            const QByteArray fence = choice.next(1, outstanding, NOTHING_AHEAD);
            EXPECT_LE(firstOf(fence) + registersOf(fence) - 1, last) << served;
            EXPECT_LE(firstOf(fence), served) << served;
            outstanding.ask(fence, 0, 0);
        }
        choice.failed();
    }
}

// Another device may have registers that this one lacks.
TEST_F(FenceChoiceTest, FenceBeginsAtTheServedRegisterOutsideTheAreas)
{
    choice.noteServed(readOf(9000, 1));
    choice.failed();
    choice.failed();
    EXPECT_EQ(9000, firstOf(next()));
}
