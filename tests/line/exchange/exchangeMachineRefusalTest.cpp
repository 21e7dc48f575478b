#include "exchangeMachineFixture.h"

#include "wire/exceptionText.h"

// A refusal names station and function only: 018302C0F1 refuses any read by function 3. A refusal
// is believed when it can belong to one request only.

class ExchangeMachineRefusalTest : public InStepTest
{
protected:
    enum { READ_HOLDING = 3, READ_INPUT = 4 };

    const QByteArray OTHER_WRITE = writeOf(3002, 1);
};

TEST_F(ExchangeMachineRefusalTest, RefusalOfTheOnlyRequestIsBelieved)
{
    ask(READ_A);
    come(REFUSAL);
    EXPECT_EQ(Ends{END_REFUSED}, ends());
    ask(WRITE);
    come(refusalOf(WRITE, DEVICE_BUSY));
    EXPECT_EQ(Ends({END_REFUSED, END_REFUSED}), ends());
    EXPECT_EQ(refusalOf(WRITE, DEVICE_BUSY), last().reply);
}

TEST_F(ExchangeMachineRefusalTest, RefusalOfAnotherFunctionIsNotBelieved)
{
    ask(READ_A);
    come(refusalOf(WRITE));
    EXPECT_TRUE(ends().empty());
    come(REFUSAL, 100); // not believed either: the refusal before had no request
    EXPECT_TRUE(ends().empty());
    nextSent();
    EXPECT_TRUE(isFence);
    EXPECT_EQ(READ_A, behindFences());
    come(REFUSAL);
    EXPECT_EQ(Ends{END_REFUSED}, ends());
}

// A request timed out, and a fence of the same function follows. The refusal may belong to either.

TEST_F(ExchangeMachineRefusalTest, RefusalThatMayBelongToTheFenceDoesNotEndTheRequest)
{
    ask(READ_A);
    waitInVain();
    ended.clear();
    askAgain(READ_A);
    ASSERT_TRUE(isFence);
    ASSERT_EQ(READ_HOLDING, byteOf(sent, 1));
    come(REFUSAL);
    EXPECT_TRUE(ended.empty());
    EXPECT_FALSE(machine.isFree());
}

TEST_F(ExchangeMachineRefusalTest, NextFencesAnswerClearsAnUncertainRefusal)
{
    ask(READ_A);
    waitInVain();
    const QByteArray first = askAgain(READ_A);
    come(REFUSAL);
    nextSent();
    EXPECT_TRUE(isFence);
    EXPECT_EQ(READ_INPUT, byteOf(sent, 1));
    answer();
    EXPECT_EQ(READ_A, nextSent());
    come(REFUSAL);
    EXPECT_EQ(Ends({END_SILENT, END_REFUSED}), ends());
}

TEST_F(ExchangeMachineRefusalTest, UncertainRefusalKeepsTheFencesAnswerValid)
{
    ask(READ_A);
    waitInVain();
    const QByteArray fence = askAgain(READ_A);
    come(REFUSAL);
    come(answerTo(fence), 100);
    EXPECT_EQ(READ_A, nextSent());
}

TEST_F(ExchangeMachineRefusalTest, SecondEqualRefusalDoesNotClearTheFirst)
{
    ask(READ_A);
    waitInVain();
    askAgain(READ_A);
    come(REFUSAL);
    come(REFUSAL, 100); // may be a second copy of the first refusal
    EXPECT_TRUE(nextSent(SILENCE + 100).isEmpty());
    EXPECT_EQ(Ends{END_SILENT}, ends());
    nextSent();
    EXPECT_TRUE(isFence);
    EXPECT_EQ(READ_INPUT, byteOf(sent, 1));
}

// Doubled refusals.

TEST_F(ExchangeMachineRefusalTest, SameFunctionAfterARefusalWaitsForAFence)
{
    ask(READ_A);
    come(REFUSAL);
    ask(READ_LONG);
    EXPECT_TRUE(isFence);
    answer();
    EXPECT_EQ(READ_LONG, nextSent());
}

TEST_F(ExchangeMachineRefusalTest, AnotherFunctionAfterARefusalGoesOutAtOnce)
{
    ask(READ_A);
    come(REFUSAL);
    EXPECT_EQ(WRITE, ask(WRITE));
}

TEST_F(ExchangeMachineRefusalTest, DoubledRefusalDoesNotEndTheNextRequest)
{
    ask(READ_A);
    come(REFUSAL);
    ask(READ_LONG);
    come(REFUSAL);
    EXPECT_EQ(Ends{END_REFUSED}, ends());
    EXPECT_TRUE(fenceEnds().empty());
    answer(100);
    EXPECT_EQ(READ_LONG, nextSent());
    answer();
    EXPECT_EQ(Ends({END_REFUSED, END_ANSWERED}), ends());
}

TEST_F(ExchangeMachineRefusalTest, DoubledRefusalDoesNotEndARequestOfAnotherFunction)
{
    ask(READ_A);
    come(REFUSAL);
    ask(WRITE);
    come(REFUSAL);
    come(WRITE, 100);
    EXPECT_EQ(Ends({END_REFUSED, END_ANSWERED}), ends());
    ask(READ_LONG);
    EXPECT_TRUE(isFence);
}

TEST_F(ExchangeMachineRefusalTest, BusyStationIsAskedAgainBehindAFence)
{
    ask(READ_A);
    come(refusalOf(READ_A, DEVICE_BUSY));
    askAgain(READ_A);
    EXPECT_TRUE(isFence);
    EXPECT_EQ(READ_A, behindFences());
    answer();
    EXPECT_EQ(Ends({END_REFUSED, END_ANSWERED}), ends());
}

// Late refusals.

TEST_F(ExchangeMachineRefusalTest, LateRefusalDoesNotEndTheNextRequest)
{
    ask(WRITE);
    waitInVain();
    ask(OTHER_WRITE);
    ASSERT_TRUE(isFence);
    come(refusalOf(WRITE));
    EXPECT_EQ(Ends({END_SILENT, END_LATE}), ends());
    answer(100);
    EXPECT_EQ(OTHER_WRITE, nextSent());
    answer();
    EXPECT_EQ(Ends({END_SILENT, END_LATE, END_ANSWERED}), ends());
}

TEST_F(ExchangeMachineRefusalTest, LateRefusalDoesNotHideTheReplyBehindIt)
{
    ask(WRITE);
    waitInVain();
    ask(OTHER_WRITE);
    come(refusalOf(WRITE) + answerTo(sent));
    EXPECT_EQ(OTHER_WRITE, nextSent());
}

TEST_F(ExchangeMachineRefusalTest, LateRefusalEndsTheRepeatedRequest)
{
    ask(WRITE);
    waitInVain();
    askAgain(WRITE);
    ASSERT_TRUE(isFence);
    come(refusalOf(WRITE));
    EXPECT_EQ(Ends({END_SILENT, END_REFUSED}), ends());
    EXPECT_EQ(refusalOf(WRITE), last().reply);
    EXPECT_TRUE(machine.isFree());
}

TEST_F(ExchangeMachineRefusalTest, LateRefusalDoesNotEndAnotherStationsRequest)
{
    bringIntoStep(2);
    ask(WRITE);
    waitInVain();
    ended.clear();
    const QByteArray ofTheOther = writeOf(3001, 1234, 2);
    EXPECT_EQ(ofTheOther, ask(ofTheOther));
    come(refusalOf(WRITE));
    EXPECT_EQ(Ends{END_LATE}, ends());
    come(ofTheOther, 100);
    EXPECT_EQ(Ends({END_LATE, END_ANSWERED}), ends());
}
