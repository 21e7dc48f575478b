#include "exchangeMachineFixture.h"

// Requests that wait behind unanswered fences, and fences that the caller starts.

/// The link was just opened.
class ExchangeMachineFenceEndTest : public ExchangeMachineTest
{
protected:
    ExchangeMachineFenceEndTest()
    {
        machine.linkOpened(now);
    }
};

TEST_F(ExchangeMachineFenceEndTest, OneFenceIsSentForARequestToASilentStation)
{
    ask(READ_A);
    EXPECT_EQ(0, waitInVain());
    EXPECT_EQ(Ends{END_SILENT}, ends());
    EXPECT_EQ(Ends{END_SILENT}, fenceEnds());
}

TEST_F(ExchangeMachineFenceEndTest, FourFencesAreSentWhenBytesAreHeard)
{
    ask(READ_A);
    come(noise());
    EXPECT_EQ(3, waitInVain());
    EXPECT_EQ(Ends{END_UNUSABLE}, ends());
    EXPECT_EQ(Ends({END_UNUSABLE, END_UNUSABLE, END_UNUSABLE, END_UNUSABLE}), fenceEnds());
}

TEST_F(ExchangeMachineFenceEndTest, BytesBehindEachFencesAnswerEndTheRequest)
{
    ask(READ_A);
    int fences = 0;
    for (; ends().empty() && fences < 20; ++fences) {
        ASSERT_TRUE(isFence);
        come(answerTo(sent) + noise());
        nextSent();
    }
    EXPECT_EQ(Ends{END_UNUSABLE}, ends());
    EXPECT_TRUE(machine.isFree());
    EXPECT_LT(fences, 10);
}

// Fences that the caller starts.

TEST_F(ExchangeMachineFenceEndTest, CallersFenceTellsThatTheStationIsThere)
{
    machine.startFence(5, 0, now);
    EXPECT_FALSE(machine.isFree());
    nextSent();
    EXPECT_TRUE(isFence);
    EXPECT_EQ(5, byteOf(sent, 0));
    answer();
    EXPECT_EQ(1u, ended.size());
    EXPECT_EQ(Ends{END_ANSWERED}, fenceEnds());
    EXPECT_EQ(5, last().station);
    EXPECT_TRUE(machine.isFree());
    EXPECT_EQ(readOf(3000, 70, 5), ask(readOf(3000, 70, 5)));
}

TEST_F(ExchangeMachineFenceEndTest, RefusedFenceTellsThatTheStationIsThere)
{
    machine.startFence(5, 0, now);
    nextSent();
    come(refusalOf(sent));
    EXPECT_EQ(Ends{END_REFUSED}, fenceEnds());
    EXPECT_TRUE(machine.isFree());
}

TEST_F(ExchangeMachineFenceEndTest, CallersFenceIsSentOnceToASilentStation)
{
    machine.startFence(5, 0, now);
    nextSent();
    EXPECT_EQ(0, waitInVain());
    EXPECT_EQ(1u, ended.size());
    EXPECT_EQ(Ends{END_SILENT}, fenceEnds());
}

TEST_F(ExchangeMachineFenceEndTest, CallersFenceHasTheCallersTimeOut)
{
    machine.startFence(5, 300000, now);
    nextSent();
    const qint64 answerTime = LineTiming(LineSettings()).frame(int(answerTo(sent).size()));
    EXPECT_EQ(sentAt + REQUEST_TIME + 300000 + answerTime, machine.advance(now).wakeAt);
    answer(299000);
    EXPECT_EQ(Ends{END_ANSWERED}, fenceEnds());
}

TEST_F(ExchangeMachineFenceEndTest, CallersFenceOnANeverSilentLineEndsAsAFence)
{
    come(noise());
    machine.startFence(5, 0, now);
    chatterUntilEnded(now + 500);
    EXPECT_EQ(Ends{END_UNUSABLE}, fenceEnds());
    EXPECT_EQ(5, last().station);
    EXPECT_TRUE(ends().empty());
    EXPECT_TRUE(machine.isFree());
}

// A late answer may end a request while its fence is outstanding.

TEST_F(ExchangeMachineFenceEndTest, NextRequestWaitsForTheOutstandingFence)
{
    exchange(READ_LONG);
    ask(READ_A);
    waitInVain();
    const QByteArray fence = askAgain(READ_A);
    ASSERT_TRUE(isFence);
    come(answerTo(READ_A));
    ASSERT_TRUE(machine.isFree());
    machine.start(WRITE, false, now);
    EXPECT_TRUE(nextSent(SILENCE + 100).isEmpty());
    come(answerTo(fence), SILENCE + 100);
    EXPECT_EQ(WRITE, nextSent());
}

TEST_F(ExchangeMachineFenceEndTest, RequestToAnotherStationSurvivesTheOutstandingFence)
{
    bringIntoStep(2);
    exchange(READ_LONG);
    ask(READ_A);
    waitInVain();
    askAgain(READ_A);
    ASSERT_TRUE(isFence);
    come(answerTo(READ_A));
    ended.clear();
    EXPECT_EQ(readOf(3000, 60, 2), ask(readOf(3000, 60, 2)));
    EXPECT_EQ(Ends{END_SILENT}, fenceEnds());
    EXPECT_TRUE(ends().empty());
}
