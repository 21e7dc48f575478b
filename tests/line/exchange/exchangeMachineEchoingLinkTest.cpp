#include "echoFixture.h"

// The caller knows whether the link echoes.

/// The caller knows that the link echoes.
class EchoingLinkTest : public EchoTest
{
protected:
    EchoingLinkTest() : EchoTest(ECHO_PRESENT)
    {
        bringIntoStep();
    }
};

TEST_F(EchoingLinkTest, FirstCopyDoesNotConfirmAWrite)
{
    EXPECT_EQ(WRITE, ask(WRITE));
    copyComes();
    EXPECT_TRUE(ended.empty());
    answerComes();
    EXPECT_EQ(Ends{END_ANSWERED}, ends());
}

TEST_F(EchoingLinkTest, CopyAndAnswerMayComeInOnePiece)
{
    ask(WRITE);
    come(WRITE + WRITE);
    EXPECT_EQ(Ends{END_ANSWERED}, ends());
    EXPECT_EQ(OTHER_WRITE, ask(OTHER_WRITE));
}

TEST_F(EchoingLinkTest, WriteOfSeveralRegistersIsConfirmedBehindItsCopy)
{
    ask(LONG_WRITE);
    copyComes();
    EXPECT_TRUE(ended.empty());
    answerComes();
    EXPECT_EQ(Ends{END_ANSWERED}, ends());
    EXPECT_EQ(OTHER_WRITE, ask(OTHER_WRITE));
}

TEST_F(EchoingLinkTest, CopyAloneDoesNotConfirmAWrite)
{
    ask(WRITE);
    copyComes();
    waitInVain();
    EXPECT_EQ(1u, ends().size());
    EXPECT_NE(END_ANSWERED, ends().back());
}

TEST_F(EchoingLinkTest, FirstWholeEchoBehindADamagedCopyDoesNotConfirmAWrite)
{
    ask(WRITE);
    come(damaged(WRITE), REQUEST_TIME);
    answerComes();
    EXPECT_TRUE(ended.empty());
    waitInVain();
    EXPECT_EQ(Ends{END_UNUSABLE}, ends());
    askAgain(WRITE);
    ASSERT_TRUE(isFence);
    copyComes();
    answerComes();
    EXPECT_EQ(WRITE, nextSent());
}

TEST_F(EchoingLinkTest, RefusalBehindTheCopyEndsTheWrite)
{
    ask(WRITE);
    copyComes();
    come(refusalOf(WRITE));
    EXPECT_EQ(Ends{END_REFUSED}, ends());
}

TEST_F(EchoingLinkTest, CopyOfAReadCausesNoDoubt)
{
    for (int i = 0; i < 10; ++i) {
        const QByteArray request = readOf(3000, 10 + i);
        EXPECT_EQ(request, ask(request));
        copyComes();
        answerComes();
        EXPECT_EQ(END_ANSWERED, last().end);
    }
}

TEST_F(EchoingLinkTest, StationWithoutAnswerBehindTheCopyIsSilent)
{
    for (const QByteArray& request : {READ_LONG, LONG_WRITE, WRITE}) {
        bringIntoStep();
        EXPECT_EQ(request, ask(request));
        copyComes();
        waitInVain();
        EXPECT_EQ(Ends{END_SILENT}, ends());
    }
}

TEST_F(EchoingLinkTest, FenceToASilentStationIsSentOnceDespiteItsCopy)
{
    machine.linkOpened(now);
    ask(READ_LONG);
    copyComes();
    EXPECT_EQ(0, waitInVain());
    EXPECT_EQ(Ends{END_SILENT}, fenceEnds());
    EXPECT_EQ(Ends{END_SILENT}, ends());
}

TEST_F(EchoingLinkTest, NoiseBehindTheCopyIsNotSilence)
{
    ask(READ_LONG);
    copyComes();
    come(noise(), 3000);
    waitInVain();
    EXPECT_EQ(Ends{END_UNUSABLE}, ends());
}

// A link that stalls returns the copy of a request after the request has timed out.

TEST_F(EchoingLinkTest, CopyBehindTheNextFenceDoesNotConfirmAWrite)
{
    ask(WRITE);
    waitInVain();
    askAgain(WRITE);
    ASSERT_TRUE(isFence);
    come(WRITE);
    EXPECT_EQ(Ends{END_SILENT}, ends());
    EXPECT_FALSE(machine.isFree());
    come(sent, 100);
    come(answerTo(sent), 100);
    EXPECT_EQ(WRITE, nextSent());
    copyComes();
    EXPECT_EQ(1u, ends().size());
    answerComes();
    EXPECT_EQ(Ends({END_SILENT, END_ANSWERED}), ends());
}

TEST_F(EchoingLinkTest, CopyInTheSilentIntervalDoesNotConfirmAWrite)
{
    ask(WRITE);
    waitInVain();
    machine.start(WRITE, true, now);
    come(WRITE, 0);
    EXPECT_EQ(Ends{END_SILENT}, ends());
    nextSent();
    EXPECT_TRUE(isFence);
}

TEST_F(EchoingLinkTest, LateEchoBehindTheCopyConfirmsAWrite)
{
    ask(WRITE);
    copyComes();
    waitInVain();
    askAgain(WRITE);
    ASSERT_TRUE(isFence);
    copyComes();
    come(WRITE, 1000);
    EXPECT_EQ(END_ANSWERED, ends().back());
}

TEST_F(EchoingLinkTest, LateCopyDoesNotCountAsTheStationsAnswer)
{
    bringIntoStep(2);
    ask(WRITE);
    waitInVain();
    ended.clear();
    ask(readOf(3000, 60, 2));
    come(WRITE);
    EXPECT_TRUE(ended.empty());
    come(answerTo(sent), 100);
    EXPECT_NE(OTHER_WRITE, ask(OTHER_WRITE)); // a refusal of WRITE may still come
    EXPECT_TRUE(isFence);
}

/// The caller knows that the link does not echo.
class EcholessLinkTest : public EchoTest
{
protected:
    EcholessLinkTest() : EchoTest(ECHO_ABSENT)
    {
        bringIntoStep();
    }
};

TEST_F(EcholessLinkTest, FirstCopyOfAWriteIsItsAnswer)
{
    ask(WRITE);
    come(WRITE);
    EXPECT_EQ(Ends{END_ANSWERED}, ends());
}

TEST_F(EcholessLinkTest, CopyOfAReadHasNoEffect)
{
    ask(READ_LONG);
    copyComes();
    EXPECT_EQ(ECHO_ABSENT, machine.echo());
    answerComes();
    EXPECT_EQ(Ends{END_ANSWERED}, ends());
    machine.linkOpened(now);
    EXPECT_EQ(ECHO_ABSENT, machine.echo());
}
