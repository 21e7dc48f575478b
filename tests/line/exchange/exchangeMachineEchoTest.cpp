#include "echoFixture.h"

// The fences find out whether the link echoes. Until then the machine sends no write except
// broadcasts.

/// The caller does not know whether the link echoes.
class UnknownEchoTest : public EchoTest
{
protected:
    UnknownEchoTest() : EchoTest(ECHO_UNKNOWN) {}

    const QByteArray LONG_BROADCAST = frameWith(fromHex("00100001000204000A0102"));
};

TEST_F(UnknownEchoTest, EchoIsUnknownBeforeTheFirstFencesAnswer)
{
    EXPECT_EQ(ECHO_UNKNOWN, machine.echo());
    ask(WRITE);
    EXPECT_TRUE(isFence);
    EXPECT_EQ(ECHO_UNKNOWN, machine.echo());
}

TEST_F(UnknownEchoTest, AnswerWithoutCopyMeansNoEcho)
{
    ask(WRITE);
    answer();
    EXPECT_EQ(ECHO_ABSENT, machine.echo());
    EXPECT_EQ(WRITE, nextSent());
    come(WRITE);
    EXPECT_EQ(Ends{END_ANSWERED}, ends());
}

TEST_F(UnknownEchoTest, CopyBeforeTheAnswerMeansEcho)
{
    ask(WRITE);
    copyComes();
    EXPECT_EQ(ECHO_PRESENT, machine.echo());
    EXPECT_TRUE(ended.empty());
    answerComes();
    EXPECT_EQ(WRITE, nextSent());
    copyComes();
    EXPECT_TRUE(ends().empty());
    answerComes();
    EXPECT_EQ(Ends{END_ANSWERED}, ends());
}

TEST_F(UnknownEchoTest, CopyMayComeInPiecesAndWithTheAnswer)
{
    ask(READ_LONG);
    come(sent.left(3), 1000);
    come(sent.mid(3) + answerTo(sent), 1000);
    EXPECT_EQ(ECHO_PRESENT, machine.echo());
    EXPECT_EQ(READ_LONG, nextSent());
}

TEST_F(UnknownEchoTest, CopyWithoutAnswerMeansEcho)
{
    ask(WRITE);
    copyComes();
    waitInVain();
    EXPECT_EQ(ECHO_PRESENT, machine.echo());
    EXPECT_FALSE(last().wasSent);
}

TEST_F(UnknownEchoTest, SilentStationLeavesTheEchoUnknown)
{
    ask(WRITE);
    waitInVain();
    EXPECT_EQ(ECHO_UNKNOWN, machine.echo());
    EXPECT_FALSE(last().wasSent);
}

TEST_F(UnknownEchoTest, RefusalBehindACopyMeansEcho)
{
    ask(WRITE);
    copyComes();
    come(refusalOf(sent));
    EXPECT_EQ(ECHO_PRESENT, machine.echo());
    EXPECT_EQ(WRITE, nextSent());
    copyComes();
    EXPECT_TRUE(ends().empty());
    come(refusalOf(WRITE));
    EXPECT_EQ(Ends{END_REFUSED}, ends());
}

TEST_F(UnknownEchoTest, RefusalWithoutCopyMeansNoEcho)
{
    ask(WRITE);
    come(refusalOf(sent));
    EXPECT_EQ(ECHO_ABSENT, machine.echo());
    EXPECT_EQ(WRITE, nextSent());
    come(WRITE);
    EXPECT_EQ(Ends{END_ANSWERED}, ends());
}

// Damaged copies.

TEST_F(UnknownEchoTest, DamagedCopyLeavesTheEchoUnknown)
{
    ask(WRITE);
    come(damaged(sent), REQUEST_TIME);
    answerComes();
    EXPECT_EQ(ECHO_UNKNOWN, machine.echo());
    nextSent();
    EXPECT_TRUE(isFence);
    copyComes();
    EXPECT_EQ(ECHO_PRESENT, machine.echo());
    answerComes();
    EXPECT_EQ(WRITE, nextSent());
}

TEST_F(UnknownEchoTest, ShortenedCopyLeavesTheEchoUnknown)
{
    for (int left = 4; left < 8; ++left) {
        machine.linkOpened(now);
        ask(WRITE);
        come(sent.left(left), REQUEST_TIME);
        answerComes();
        EXPECT_EQ(ECHO_UNKNOWN, machine.echo()) << left;
        machine.linkLost();
    }
}

TEST_F(UnknownEchoTest, FewStrayBytesAreNoDamagedCopy)
{
    ask(WRITE);
    come(noise(3), REQUEST_TIME);
    answerComes();
    EXPECT_EQ(ECHO_ABSENT, machine.echo());
}

TEST_F(UnknownEchoTest, DamagedCopyLeavesTheEchoUnknownWhateverFollows)
{
    exchangeWithCopies(READ_LONG);
    const QByteArray doubled = answerTo(READ_LONG);
    machine.linkOpened(now);
    ask(WRITE);
    come(damaged(sent), REQUEST_TIME);
    come(doubled, 100);
    answerComes();
    EXPECT_EQ(ECHO_UNKNOWN, machine.echo());
    nextSent();
    EXPECT_TRUE(isFence);
}

TEST_F(UnknownEchoTest, DamagedCopiesAllowReadsButNoWrite)
{
    ask(READ_LONG);
    come(damaged(sent) + answerTo(sent));
    EXPECT_EQ(READ_LONG, nextSent());
    come(damaged(sent) + answerTo(sent));
    EXPECT_EQ(Ends{END_ANSWERED}, ends());
    machine.start(WRITE, false, now);
    for (int i = 0; i < 20 && !machine.isFree(); ++i) {
        nextSent();
        if (!machine.isFree()) {
            EXPECT_TRUE(isFence);
            come(damaged(sent) + answerTo(sent));
        }
    }
    EXPECT_EQ(Ends({END_ANSWERED, END_UNUSABLE}), ends());
    EXPECT_FALSE(last().wasSent);
    EXPECT_EQ(ECHO_UNKNOWN, machine.echo());
}

// A link that is opened anew.

TEST_F(UnknownEchoTest, OpeningALinkMakesTheEchoUnknownAgain)
{
    exchangeWithCopies(READ_LONG);
    EXPECT_EQ(ECHO_PRESENT, machine.echo());
    machine.linkLost();
    machine.linkOpened(now);
    EXPECT_EQ(ECHO_UNKNOWN, machine.echo());
    ask(WRITE);
    answer();
    EXPECT_EQ(ECHO_ABSENT, machine.echo());
}

TEST_F(UnknownEchoTest, LaterCopyStillMeansEcho)
{
    bringIntoStep();
    ASSERT_EQ(ECHO_ABSENT, machine.echo());
    ask(READ_A);
    copyComes();
    answerComes();
    EXPECT_EQ(ECHO_PRESENT, machine.echo());
    EXPECT_EQ(WRITE, ask(WRITE));
    copyComes();
    EXPECT_EQ(1u, ends().size());
    answerComes();
    EXPECT_EQ(2u, ends().size());
}

// Broadcasts have no answer, so their copy cannot be mistaken for one.

TEST_F(UnknownEchoTest, BroadcastIsSentAtOnceAndItsCopyIsIgnored)
{
    for (const QByteArray& broadcast : {BROADCAST, LONG_BROADCAST}) {
        ended.clear();
        EXPECT_EQ(broadcast, ask(broadcast));
        copyComes();
        EXPECT_TRUE(ended.empty());
        waitInVain();
        EXPECT_EQ(Ends{END_BROADCAST}, ends());
        EXPECT_EQ(ECHO_UNKNOWN, machine.echo());
    }
}

TEST_F(UnknownEchoTest, CopyOfABroadcastLeavesAllStationsInStep)
{
    bringIntoStep();
    for (const QByteArray& broadcast : {BROADCAST, LONG_BROADCAST}) {
        ask(broadcast);
        copyComes();
        waitInVain();
        EXPECT_EQ(READ_LONG, ask(READ_LONG));
        answer();
        exchange(readOf(3000, 70));
    }
}
